// Times the exported functions beside the field's own and ends with a table of ratios; see README.md.
//
// Without arguments of Google Benchmark's own, seven interleaved repetitions.
#include <unistd.h>

#include <filesystem>

#include "Bench.h"
#include "Decisive.h"
#include "ModelFile.h"
#include "Patterns.h"
#include "Ratios.h"
#include "TextFile.h"

namespace
{
// The model as the builder writes it without decisive states, in a folder of its own, removed at the end.
class CEveryByteModel
{
public:
    CEveryByteModel()
        : m_folder(std::filesystem::temp_directory_path() / ("codetrans-bench-" + std::to_string(getpid())))
    {
        std::filesystem::create_directories(m_folder / "Data");
        const std::string data = CODETRANS_SOURCE_DIRECTORY "/Data";
        States states = ReadPatterns(data + "/Patterns.txt");
        DropDecisiveStates(states);
        WriteFile(m_folder / "Data/CodeTrans.model", ModelContent(CEncoder(data + "/Mappings"), states));
    }
    ~CEveryByteModel() { std::filesystem::remove_all(m_folder); }

    std::string Folder() const { return m_folder; }

private:
    std::filesystem::path m_folder;
};
}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> arguments{"--benchmark_repetitions=7",
                                       "--benchmark_enable_random_interleaving=true",
                                       "--benchmark_min_time=0.02"};
    std::vector<char*> all{argv[0]};
    for (std::string& argument : arguments) all.push_back(argument.data());
    all.insert(all.end(), argv + 1, argv + argc);
    int count = static_cast<int>(all.size());
    benchmark::Initialize(&count, all.data());

    const CEveryByteModel everyByte;
    const std::string folder = everyByte.Folder();
    RegisterDetection(CODETRANS_SOURCE_DIRECTORY, folder.c_str());
    RegisterConversions();
    CRatios ratios;
    benchmark::RunSpecifiedBenchmarks(&ratios);
    ratios.PrintTable();
    return 0;
}
