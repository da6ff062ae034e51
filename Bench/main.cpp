// Times the exported functions beside the field's own and ends with a table of ratios; see README.md.
//
// Without arguments of Google Benchmark's own, seven interleaved repetitions.
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "Bench.h"
#include "Ratios.h"
#include "STLCodeTrans.h"

namespace
{
// A copy of the model without decisive nodes in a folder of its own, removed at the end.
class CEveryByteModel
{
public:
    CEveryByteModel()
        : m_folder(std::filesystem::temp_directory_path() / ("codetrans-bench-" + std::to_string(getpid())))
    {
        std::filesystem::create_directories(m_folder / "Data");
        std::ifstream in(CODETRANS_SOURCE_DIRECTORY "/Data/CodeTrans.model", std::ios::binary);
        std::string model(std::istreambuf_iterator<char>(in), {});
        constexpr size_t NODES_AT = 4 * MAPPING_ENTRIES + sizeof(int);
        for (size_t at = NODES_AT; at + sizeof(TrieNode) <= model.size(); at += sizeof(TrieNode)) {
            TrieNode node;
            memcpy(&node, model.data() + at, sizeof node);
            node.nValue &= 0xFFFFF;
            memcpy(model.data() + at, &node, sizeof node);
        }
        std::ofstream(m_folder / "Data/CodeTrans.model", std::ios::binary) << model;
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
