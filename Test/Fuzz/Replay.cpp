// In the place of libFuzzer: runs a fuzz target over the files of a folder, and for a moment over what
// becomes of them when they are cut, joined and changed at random.
#include <algorithm>
#include <chrono>

#include "Fuzz.h"

namespace
{
using Clock = std::chrono::steady_clock;
constexpr auto MOMENT = std::chrono::seconds(2);

void Run(const std::string& bytes)
{
    // Exactly so many: the target must not read beyond them either.
    const std::vector<unsigned char> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

std::string Changed(const std::vector<std::string>& inputs, Random& random)
{
    const auto any = [&] { return inputs[random.Below(static_cast<unsigned>(inputs.size()))]; };
    std::string bytes = any();
    bytes.resize(random.Below(static_cast<unsigned>(bytes.size() + 1)));
    if (const std::string other = any(); random.Below(2) == 0 && other.size() > bytes.size())
        bytes += other.substr(bytes.size());
    for (unsigned changes = random.Below(6); changes > 0 && !bytes.empty(); --changes)
        bytes[random.Below(static_cast<unsigned>(bytes.size()))] = static_cast<char>(random());
    return bytes;
}
}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> names, inputs;
    for (const auto& entry : std::filesystem::directory_iterator(argc > 1 ? argv[1] : "."))
        names.push_back(entry.path());
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
        // For the log of a run that ends here.
        fprintf(stderr, "%s\n", name.c_str());
        inputs.push_back(ReadBytes(name));
        Run(inputs.back());
    }
    REQUIRE(!inputs.empty());
    Random random;
    fflush(stdout);
    for (const auto begin = Clock::now(); Clock::now() - begin < MOMENT;) Run(Changed(inputs, random));
    return 0;
}
