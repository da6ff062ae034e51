// From texts to statistics; see Counting.h.
#include "Counting.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <vector>

#include "Statistics.h"
#include "TextFile.h"

namespace
{
struct ClassRecipe {
    const char* name;
    const char* title;
    size_t successors;                 // how many pairs the file keeps
    std::vector<std::string> sources;  // prefixes of folder/name
};

// Words come with a frequency, so they are counted by its square root: common ones lead, rare ones are heard.
const ClassRecipe RECIPES[] = {
    {"hans-prose",
     "Simplified: encyclopedia, news, short messages",
     180'000,
     {"hans/own-encyclopedia", "hans/own-news", "hans/own-sms", "hans-converted/own-encyclopedia"}},
    {"hans-tech",
     "Simplified: documentation, manuals, programs' messages",
     100'000,
     {"hans/own-webdocs", "hans/catalogues", "hans/manual"}},
    {"hans-words",
     "Simplified: words of dictionaries, by the square root of their frequency",
     110'000,
     {"hans-words/"}},
    {"hant-prose",
     "Traditional (Taiwan and Hong Kong): encyclopedia, news, short messages",
     180'000,
     {"hant/own-encyclopedia", "hant-converted/own-encyclopedia", "hant-converted/own-news",
      "hant-converted/own-sms", "hk-converted/own-news", "hk-converted/own-sms"}},
    {"hant-tech",
     "Traditional: documentation, manuals, programs' messages",
     100'000,
     {"hant/own-webdocs", "hant/own-manual", "hant/own-gamewiki", "hant/catalogues", "hant/manual"}},
    {"hant-words",
     "Traditional: words of dictionaries, by the square root of their frequency",
     110'000,
     {"hant-words/"}},
    {"ascii", "English, programs, tables: ASCII alone", 20'000, {"ascii/"}},
    // Not ours. Their bytes and pairs are counted as the characters that fetch-texts makes of them.
    {"shift-jis", "Japanese in Shift_JIS, pairs", 15'000, {"shift-jis/"}},
    {"euc-jp", "Japanese in EUC-JP, pairs", 15'000, {"euc-jp/"}},
    {"euc-kr", "Korean in EUC-KR, pairs", 15'000, {"euc-kr/"}},
    {"windows-1251", "Russian in Windows-1251, bytes", 5'000, {"windows-1251/"}},
    {"latin-1", "French, German and Spanish in Latin-1, bytes", 5'000, {"latin-1/"}},
    {"binary", "programs, bytes", 20'000, {"binary/"}},
};

std::vector<std::string> FilesOf(const ClassRecipe& recipe, const std::string& texts)
{
    std::vector<std::string> files;
    for (const std::string& source : recipe.sources) {
        const std::filesystem::path prefix = std::filesystem::path(texts) / source;
        for (const auto& file : std::filesystem::directory_iterator(prefix.parent_path()))
            if (file.path().string().starts_with(prefix.string())) files.push_back(file.path().string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void AddFile(Statistics& statistics, const std::string& path, bool words)
{
    for (const std::string& line : ReadLines(path)) {
        const size_t tab = words ? line.find('\t') : std::string::npos;
        const double frequency = tab == std::string::npos ? 0 : std::strtod(line.c_str() + tab, nullptr);
        const auto times = static_cast<uint32_t>(std::min(1 + std::sqrt(std::max(frequency, 0.0)), 300.0));
        statistics.AddLine(DecodeLine(line.substr(0, tab)), times);
    }
}

std::string SourceName(const std::string& path)
{
    const std::filesystem::path file(path);
    return file.parent_path().filename().string() + '/' + file.stem().string();
}
}  // namespace

void CountTexts(const std::string& texts, const std::string& statistics)
{
    for (const ClassRecipe& recipe : RECIPES) {
        Statistics counted;
        std::string sources;
        for (const std::string& path : FilesOf(recipe, texts)) {
            AddFile(counted, path, std::string(recipe.name).ends_with("-words"));
            sources += ' ' + SourceName(path);
        }
        uint64_t size = 0;
        for (const auto& [character, entry] : counted.characters) size += entry.total;
        const uint32_t least = counted.Prune(recipe.successors);
        const std::string head = std::string("# ") + recipe.title +
                                 "\n# DO NOT EDIT: made by ModelBuilder count\n# from" + sources + "\n# " +
                                 std::to_string(size) + " characters; successors seen fewer than " +
                                 std::to_string(least) + " times are left out\n";
        counted.Write(statistics + '/' + recipe.name + ".txt", head);
        std::cerr << recipe.name << ": " << size << " characters, successors from " << least << " times on\n";
    }
}
