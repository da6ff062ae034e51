// Other languages in UTF-8 and UTF-16LE, and ASCII with a few signs in UTF-8; see Drawing.h.
#include <algorithm>
#include <map>

#include "Drawing.h"

namespace
{
namespace fs = std::filesystem;

constexpr size_t MOST_FILES = 40;  // of a language: hundreds of help pages would drown the others

void AddLines(CSampleSet& set, const char* test, const std::string& kind, std::vector<std::string> lines,
              const Encoding& encoding, size_t least)
{
    set.Shuffle(lines);
    int found = 0;
    for (const std::string& line : lines) {
        const Text text = FromUtf8(line);
        if (text.size() < least || found == set.Count()) continue;
        if (std::string bytes = Encode(encoding.converter, text); !bytes.empty()) {
            set.Add(test, encoding, kind, 0, std::move(bytes));
            ++found;
        }
    }
}

// Pieces of all lines one after the other, cut anywhere in UTF-8, between code units in UTF-16LE.
void AddPieces(CSampleSet& set, const std::string& kind, const std::string& all)
{
    const auto any = [](const std::string&) { return true; };
    set.AddPieces(all, 1000, any, [&](std::string piece) {
        set.Add("world-piece", ENCODINGS[UTF8_INDEX], kind, 1000, std::move(piece));
    });
    const Text text = FromUtf8(all);
    if (text.size() <= 500) return;
    for (int i = 0; i < set.Count(); ++i) {
        std::string bytes =
            Encode(ENCODINGS[UTF16_INDEX].converter, text.substr(set.Below(text.size() - 500), 500));
        if (!bytes.empty()) set.Add("world16-piece", ENCODINGS[UTF16_INDEX], kind, 500, std::move(bytes));
    }
}

void AddFiles(CSampleSet& set, const fs::path& folder)
{
    std::map<std::string, std::vector<fs::path>> languages;
    for (const fs::path& path : FilesIn(folder))
        languages[path.parent_path().filename().string()].push_back(path);
    for (auto& [language, paths] : languages) {
        set.Shuffle(paths);
        paths.resize(std::min({paths.size(), MOST_FILES, static_cast<size_t>(set.Count())}));
        for (const fs::path& path : paths)
            set.Add("world-file", ENCODINGS[UTF8_INDEX], language, 0, ReadAll(path));
    }
}
}  // namespace

void DrawWorld(CSampleSet& set)
{
    for (const fs::path& path : FilesIn(set.Folder() / "world" / "lines")) {
        const std::string language = path.stem().string(), all = ReadAll(path);
        AddLines(set, "world-line", language, LinesOf(all), ENCODINGS[UTF8_INDEX], 4);
        AddLines(set, "world16-line", language, LinesOf(all), ENCODINGS[UTF16_INDEX], 12);
        AddPieces(set, language, all);
    }
    AddFiles(set, set.Folder() / "world" / "files");
    for (const fs::path& path : FilesIn(set.Folder() / "signs"))
        AddLines(set, "signs", path.stem().string(), LinesOf(ReadAll(path)), ENCODINGS[UTF8_INDEX], 8);
}
