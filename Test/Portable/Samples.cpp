// Detects the files of a folder, by a model in memory and nothing but the portable part of the engine. The
// end of a file's name is its encoding; those of no known encoding must stay undecided.
//
// Usage: Samples MODEL FOLDER
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <vector>

#include "Margin.h"

namespace
{
std::vector<char> ReadAll(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
}  // namespace

int main(int, char** argv)
{
    std::map<std::string, int> codes{
        {".gbk", ENCODE_GBK}, {".big5", ENCODE_BIG5}, {".utf8", ENCODE_UTF8}, {".utf16le", ENCODE_UNICODE}};
    const std::vector<char> model = ReadAll(argv[1]);
    if (CodeTrans_UseModel(model.data(), model.size()) != 0) return 2;
    int right = 0, wrong = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argv[2])) {
        if (entry.path().extension() == ".md") continue;
        const std::vector<char> text = ReadAll(entry.path());
        const bool isRight =
            AnswerFor(text.data(), text.size()).code == codes[entry.path().extension().string()];
        if (!isRight) std::cout << "wrong: " << entry.path() << '\n';
        ++(isRight ? right : wrong);
    }
    CodeTrans_Destroy();
    std::cout << right << " samples\n";
    return right > 30 && wrong == 0 ? 0 : 1;
}
