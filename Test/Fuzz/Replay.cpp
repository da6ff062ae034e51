// In the place of libFuzzer: runs a fuzz target over files, and over those of folders.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "Fuzz.h"

namespace fs = std::filesystem;

namespace
{
void Replay(const fs::path& path)
{
    // For the log of a run that ends here.
    fprintf(stderr, "%s\n", path.c_str());
    std::ifstream file(path, std::ios::binary);
    const std::vector<unsigned char> bytes{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}
}  // namespace

int main(int argc, char** argv)
{
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        const fs::path path = fs::absolute(argv[i]);
        if (fs::is_directory(path))
            std::copy(fs::directory_iterator(path), {}, std::back_inserter(inputs));
        else
            inputs.push_back(path);
    }
    for (const fs::path& input : inputs) Replay(input);
    fprintf(stderr, "%zu inputs replayed\n", inputs.size());
    return inputs.empty() ? 1 : 0;
}
