// ASCII, and what is none of the four encodings: legacy encodings of other languages, binary data, other
// forms of Unicode; see Drawing.h.
#include <algorithm>

#include "CodeTrans.h"
#include "Drawing.h"

namespace
{
namespace fs = std::filesystem;

constexpr int LENGTHS[] = {64, 128, 256, 1024};

void AddAscii(CSampleSet& set, const fs::path& path)
{
    const std::string bytes = ReadAll(path);
    const auto any = [](const std::string&) { return true; };
    for (const int length : {2, 3, 4, 5, 6, 7, 8, 9, 10, 12, 16, 24, 32, 64, 300})
        set.AddPieces(bytes, length, any, [&](std::string piece) {
            set.Add("ascii", {"none", "", ENCODE_GBK}, path.stem().string(), length, std::move(piece));
        });
}

// A piece with too few bytes beyond ASCII is ASCII by chance.
bool IsBeyondAscii(const std::string& piece)
{
    const auto high = std::count_if(piece.begin(), piece.end(), [](char c) { return c < 0; });
    return static_cast<size_t>(high) >= piece.size() / 16;
}

void AddForeignPieces(CSampleSet& set, const char* test, const std::string& kind, const std::string& bytes)
{
    for (const int length : LENGTHS)
        set.AddPieces(bytes, length, IsBeyondAscii,
                      [&](std::string piece) { set.AddForeign(test, kind, length, std::move(piece)); });
}

// Lines of 30 bytes and more with at least one byte beyond ASCII, as all lines of these texts.
void AddLegacy(CSampleSet& set, const fs::path& path)
{
    const std::string kind = path.parent_path().filename().string(), all = ReadAll(path);
    AddForeignPieces(set, "legacy", kind, all);
    std::vector<std::string> lines = LinesOf(all);
    std::erase_if(lines, [](const std::string& line) { return line.size() < 30; });
    set.Shuffle(lines);
    lines.resize(std::min(lines.size(), static_cast<size_t>(set.Count())));
    for (std::string& line : lines) set.AddForeign("legacy-line", kind, 30, std::move(line));
}

// The text without a mark as UTF-16BE and UTF-32, and UTF-32LE behind its mark, which begins as UTF-16LE's
// does.
void AddUnicode(CSampleSet& set, const Text& text)
{
    struct Form {
        const char *kind, *converter;
        size_t unit;
        std::string mark;
    };
    const std::string mark("\xFF\xFE\0\0", 4);
    for (const Form& form :
         {Form{"utf-16be", "UTF-16BE", 2, ""}, Form{"utf-32le", "UTF-32LE", 4, ""},
          Form{"utf-32be", "UTF-32BE", 4, ""}, Form{"utf-32le marked", "UTF-32LE", 4, mark}})
        for (const size_t length : {64, 256, 1024})
            for (int i = 0; i < std::max(1, set.Count() / 5); ++i) {
                const size_t size = length / form.unit + 2;
                if (text.size() <= size) break;
                const std::string bytes =
                    Encode(form.converter, text.substr(set.Below(text.size() - size), size));
                if (bytes.size() >= length)
                    set.AddForeign("unicode", form.kind, static_cast<int>(length),
                                   form.mark + bytes.substr(0, length));
            }
}
}  // namespace

void DrawForeign(CSampleSet& set)
{
    for (const fs::path& path : FilesIn(set.Folder() / "ascii")) AddAscii(set, path);
    for (const fs::path& path : FilesIn(set.Folder() / "foreign" / "lines")) AddLegacy(set, path);
    for (const fs::path& path : FilesIn(set.Folder() / "binary"))
        AddForeignPieces(set, "binary", path.parent_path().filename().string(), ReadAll(path));
    for (const ChineseText& chinese : ChineseTexts(set.Folder())) AddUnicode(set, chinese.text);
    for (const char* kind : {"english", "code", "csv"})
        AddUnicode(set, FromUtf8(ReadAll(set.Folder() / "ascii" / (std::string(kind) + ".txt"))));
    for (const char* language : {"fr", "ru", "el", "ar", "hi", "th", "ja", "ko"})
        AddUnicode(set,
                   FromUtf8(ReadAll(set.Folder() / "world" / "lines" / (std::string(language) + ".txt"))));
}
