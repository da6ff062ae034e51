// Counting of whole folders; everything is counted in memory before anything is written.
#include "Counting.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <ostream>
#include <stdexcept>

#include "ForeignTokens.h"
#include "Statistics.h"
#include "TextFile.h"

namespace
{
namespace fs = std::filesystem;

constexpr size_t DATA_PIECE = 64;  // bytes of data that are counted as one line

// A word is counted by the square root of its frequency: common ones lead, rare ones are heard.
constexpr double MOST_TIMES = 300;

struct Counted {
    const TextClass* kind = nullptr;
    Statistics statistics;
    std::string sources;
};

[[noreturn]] void Refuse(const fs::path& file, size_t line, const std::string& why)
{
    throw std::runtime_error(file.string() + ", line " + std::to_string(line) + ": " + why);
}

// The word of a line and how often it counts.
void AddWord(Statistics& statistics, const std::string& line)
{
    const size_t tab = line.find('\t');
    const double frequency = tab == std::string::npos ? 0 : std::strtod(line.c_str() + tab, nullptr);
    statistics.AddLine(DecodeLine(line.substr(0, tab)),
                       static_cast<uint32_t>(std::min(1 + std::sqrt(std::max(frequency, 0.0)), MOST_TIMES)));
}

void AddText(Statistics& statistics, const fs::path& file, const TextClass& kind)
{
    size_t number = 0;
    for (const std::string& line : ReadLines(file.string())) {
        ++number;
        if (IsForeign(kind.role)) {
            statistics.AddLine(TokensOf(line, kind.role));
            continue;
        }
        if (!IsUtf8(line)) Refuse(file, number, "texts of the class '" + kind.name + "' must be UTF-8");
        if (kind.role == Role::WORDS) {
            AddWord(statistics, line);
        } else {
            statistics.AddLine(DecodeLine(line));
        }
    }
}

void AddData(Statistics& statistics, const fs::path& file)
{
    const std::string content = ReadFile(file.string());
    for (size_t at = 0; at < content.size(); at += DATA_PIECE)
        statistics.AddLine(TokensOfData(content.substr(at, DATA_PIECE)));
}

bool IsCounted(const fs::directory_entry& entry, const TextClass& kind)
{
    const std::string ending = entry.path().extension().string();
    return entry.is_regular_file() && (ending == ".txt" || (ending == ".bin" && kind.role == Role::BYTES));
}

Counted CountClass(const fs::path& folder, const TextClass& kind, std::ostream& report)
{
    Counted counted{.kind = &kind, .statistics = {}, .sources = {}};
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (IsCounted(entry, kind)) {
            files.push_back(entry.path());
        } else {
            report << entry.path().string() << " is not counted: texts of this class end in .txt"
                   << (kind.role == Role::BYTES ? " or .bin\n" : "\n");
        }
    }
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        if (fs::file_size(file) == 0) {
            report << file.string() << " is empty and was skipped\n";
            continue;
        }
        if (file.extension() == ".bin") {
            AddData(counted.statistics, file);
        } else {
            AddText(counted.statistics, file, kind);
        }
        counted.sources += ' ' + file.stem().string();
    }
    return counted;
}

void Write(Counted& counted, const std::string& statistics, std::ostream& report)
{
    uint64_t size = 0;
    for (const auto& [character, entry] : counted.statistics.characters) size += entry.total;
    const uint32_t least = counted.statistics.Prune(counted.kind->pairs);
    const std::string head = "# " + counted.kind->title +
                             "\n# DO NOT EDIT: made by ModelBuilder count\n# from" + counted.sources +
                             "\n# " + std::to_string(size) + " characters; successors seen fewer than " +
                             std::to_string(least) + " times are left out\n";
    counted.statistics.Write(statistics + '/' + counted.kind->name + ".txt", head);
    report << counted.kind->name << ": " << size << " characters, successors from " << least << " times on\n";
}

std::string NamesOf(const std::vector<TextClass>& classes)
{
    std::string names;
    for (const TextClass& kind : classes) names += (names.empty() ? "" : ", ") + kind.name;
    return names;
}

// Folders by class; one that is no class's is most likely misspelt.
std::map<std::string, fs::path> FoldersIn(const std::string& texts, const std::vector<TextClass>& classes)
{
    if (!fs::is_directory(texts)) throw std::runtime_error(texts + " is not a folder");
    std::map<std::string, fs::path> folders;
    for (const auto& entry : fs::directory_iterator(texts)) {
        if (!entry.is_directory()) continue;
        const std::string name = entry.path().filename().string();
        if (std::none_of(classes.begin(), classes.end(),
                         [&](const TextClass& kind) { return kind.name == name; }))
            throw std::runtime_error("there is no class '" + name + "': the list has " + NamesOf(classes) +
                                     "; add a line to Classes.txt, or rename " + entry.path().string());
        folders[name] = entry.path();
    }
    return folders;
}
}  // namespace

void CountTexts(const std::string& texts, const std::vector<TextClass>& classes,
                const std::string& statistics, std::ostream& report)
{
    const std::map<std::string, fs::path> folders = FoldersIn(texts, classes);
    std::vector<Counted> all;
    std::vector<TextClass> others;
    for (const TextClass& kind : classes) {
        const auto folder = folders.find(kind.name);
        Counted counted;
        if (folder != folders.end()) counted = CountClass(folder->second, kind, report);
        if (counted.sources.empty()) {
            others.push_back(kind);
        } else {
            all.push_back(std::move(counted));
        }
    }
    for (Counted& counted : all) Write(counted, statistics, report);
    if (!others.empty()) report << "no texts, counts unchanged: " << NamesOf(others) << '\n';
}
