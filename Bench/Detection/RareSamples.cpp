// Chinese with rare characters: beyond U+FFFF, small and vertical forms, kana among hanzi, and terminal art
// in GBK and Big5; see Drawing.h.
#include <algorithm>
#include <map>

#include "Drawing.h"

namespace
{
namespace fs = std::filesystem;

bool IsSurrogate(char16_t c)
{
    return c >= 0xD800 && c < 0xE000;
}

bool IsLowSurrogate(char16_t c)
{
    return c >= 0xDC00 && c < 0xE000;
}

// Bopomofo, kana, Hangul letters; Hangul syllables; compatibility ideographs; vertical, small, half-width
// forms.
bool IsForm(char16_t c)
{
    return (c >= 0x3040 && c < 0x3130) || (c >= 0xAC00 && c < 0xD7B0) || (c >= 0xF900 && c < 0xFB00) ||
           (c >= 0xFE30 && c < 0xFE70) || (c >= 0xFF10 && c < 0xFF5F) || (c >= 0xFF61 && c < 0xFFE0);
}

// Windows around a character that `isWanted`, a quarter of them hanzi at least, no character cut in two.
void AddAround(CSampleSet& set, const char* test, const std::string& kind, const Text& text, size_t length,
               bool (*isWanted)(char16_t), const std::vector<Encoding>& encodings)
{
    std::vector<size_t> places;
    for (size_t i = 0; i < text.size(); ++i)
        if (isWanted(text[i])) places.push_back(i);
    if (places.empty() || text.size() <= 2 * length) return;
    for (int i = 0; i < set.Count(); ++i) {
        const size_t place = places[set.Below(places.size())], back = set.Below(length);
        const size_t start = std::min(place - std::min(place, back), text.size() - length);
        const Text window = text.substr(start, length);
        const bool isCut =
            IsLowSurrogate(window[0]) || (IsSurrogate(window.back()) && !IsLowSurrogate(window.back()));
        const auto han = static_cast<size_t>(std::count_if(window.begin(), window.end(), IsHan));
        if (isCut || han < length / 4 || window.find(u'\n') != Text::npos) continue;
        for (const Encoding& encoding : encodings)
            if (std::string bytes = Encode(encoding.converter, window); !bytes.empty())
                set.Add(test, encoding, kind, static_cast<int>(length), std::move(bytes));
    }
}

// Files of one generator: each whole, and some of their lines with two characters beyond ASCII.
void AddArt(CSampleSet& set, const Encoding& encoding)
{
    std::map<std::string, std::vector<std::string>> lines;
    for (const fs::path& path : FilesIn(set.Folder() / "art" / encoding.name)) {
        const std::string name = path.filename().string(), kind = name.substr(0, name.rfind('-'));
        std::string file;
        for (const std::string& line : LinesOf(ReadAll(path))) {
            const Text text = FromUtf8(line);
            const std::string bytes = Encode(encoding.converter, text);
            file += bytes + (bytes.empty() ? "" : "\n");
            const auto beyond = std::count_if(text.begin(), text.end(), [](char16_t c) { return c >= 0x80; });
            if (!bytes.empty() && beyond >= 2) lines[kind].push_back(bytes);
        }
        set.Add("art-file", encoding, kind, 0, file);
    }
    for (auto& [kind, found] : lines) {
        set.Shuffle(found);
        found.resize(std::min(found.size(), static_cast<size_t>(2 * set.Count())));
        for (std::string& line : found) set.Add("art-line", encoding, kind, 0, std::move(line));
    }
}
}  // namespace

void DrawRareCharacters(CSampleSet& set)
{
    for (const size_t length : {8, 16, 32}) {
        for (const fs::path& path : FilesIn(set.Folder() / "supplement"))
            AddAround(set, "supplement", path.stem().string(), FromUtf8(ReadAll(path)), length, IsSurrogate,
                      {ENCODINGS[UTF8_INDEX], ENCODINGS[UTF16_INDEX]});
        for (const fs::path& path : FilesIn(set.Folder() / "forms"))
            AddAround(set, "forms", path.stem().string(), FromUtf8(ReadAll(path)), length, IsForm,
                      {ENCODINGS[UTF16_INDEX]});
    }
    AddArt(set, ENCODINGS[GBK_INDEX]);
    AddArt(set, ENCODINGS[BIG5_INDEX]);
}
