// Running Chinese text at every length, pieces, mixed and whole files; see Drawing.h.
#include <unicode/unistr.h>

#include <algorithm>

#include "CodeTrans.h"
#include "Drawing.h"

namespace
{
namespace fs = std::filesystem;

std::ptrdiff_t HanIn(const Encoding& encoding, const std::string& bytes)
{
    const icu::UnicodeString text(bytes.data(), static_cast<int32_t>(bytes.size()), encoding.converter);
    return std::count_if(text.getBuffer(), text.getBuffer() + text.length(), IsHan);
}

// Windows of `length` units with `least` to `most` hanzi.
void AddWindows(CSampleSet& set, const ChineseText& chinese, const Encoding& encoding, const char* test,
                int length, int least, int most)
{
    const auto size = static_cast<size_t>(length);
    if (chinese.text.size() <= size) return;
    int found = 0;
    for (int tries = 0; found < set.Count() && tries < set.Count() * 60; ++tries) {
        const Text window = chinese.text.substr(set.Below(chinese.text.size() - size), size);
        const auto han = std::count_if(window.begin(), window.end(), IsHan);
        if (han < least || han > most) continue;
        if (std::string bytes = Encode(encoding.converter, window); !bytes.empty()) {
            set.Add(test, encoding, chinese.kind, length, std::move(bytes));
            ++found;
        }
    }
}

// 300 bytes cut anywhere, half of them in mid-character, a third with one stray byte.
void AddPieces(CSampleSet& set, const ChineseText& chinese, const Encoding& encoding)
{
    for (int i = 0; i < set.Count(); ++i) {
        if (chinese.text.size() <= 330) return;
        std::string bytes =
            Encode(encoding.converter, chinese.text.substr(set.Below(chinese.text.size() - 330), 330));
        const bool wide = encoding.answer == ENCODE_UNICODE;
        if (bytes.size() < 310) continue;
        bytes = bytes.substr(wide ? 2 * set.Below(4) : set.Below(9), 300);
        if (i % 3 == 0)
            bytes.insert(wide ? bytes.size() - 1 : set.Below(bytes.size()), 1,
                         static_cast<char>(0x80 + set.Below(128)));
        set.Add("pieces", encoding, chinese.kind, 300, std::move(bytes));
    }
}

// What mixed files begin with, beside a line in another encoding.
struct Heads {
    std::string english;
    std::vector<std::string> foreign;
};

Heads ReadHeads(const CSampleSet& set)
{
    Heads heads{ReadAll(set.Folder() / "ascii" / "english.txt"), {}};
    for (const char* kind : {"shift-jis", "euc-jp", "euc-kr", "windows-1251", "latin-1"})
        for (const fs::path& path : FilesIn(set.Folder() / "foreign" / "lines" / kind))
            heads.foreign.push_back(ReadAll(path).substr(0, 400));
    return heads;
}

// Files of 2,000 characters that begin with something else: one line in another encoding, a screen of
// English, of another language; or that hold one name in another encoding. What prevails is the answer.
void AddMixed(CSampleSet& set, const ChineseText& chinese, const Encoding& encoding, const Heads& heads)
{
    const Text& text = chinese.text;
    if (encoding.answer == ENCODE_UNICODE || text.size() <= 2100 || heads.foreign.empty()) return;
    for (int i = 0; i < set.Count() / 5; ++i) {
        std::string bytes = Encode(encoding.converter, text.substr(set.Below(text.size() - 2000), 2000));
        const Encoding& other = ENCODINGS[set.Below(3)];
        Text line = text.substr(set.Below(text.size() - 100), 5 + set.Below(60));
        line = line.substr(0, line.find(u'\n'));
        const std::string odd = Encode(other.converter, line);
        if (bytes.empty() || odd.empty() || other.answer == encoding.answer) continue;
        for (const std::string& head :
             {odd, heads.english.substr(set.Below(heads.english.size() - 1200), 1200),
              heads.foreign[set.Below(heads.foreign.size())]})
            set.Add("mixed", encoding, chinese.kind, 2000, head + '\n' + bytes);
        bytes.insert(bytes.find('\n') == std::string::npos ? 0 : bytes.find('\n') + 1,
                     odd.substr(0, 6) + '\n');
        set.Add("mixed", encoding, chinese.kind, 2000, bytes);
    }
}

// Lines with two hanzi or more; every line of a small file, some of a large one.
void AddLines(CSampleSet& set, const std::string& bytes, const std::string& kind, const Encoding& encoding)
{
    std::vector<std::string> lines;
    for (const std::string& line : LinesOf(bytes)) {
        // Old files mix: a line of them that reads as UTF-8 throughout is UTF-8.
        const bool isMixed = encoding.answer != ENCODE_UTF8 && line.size() > 8 && IsUtf8(line);
        if (HanIn(encoding, line) >= 2 && !isMixed) lines.push_back(line);
    }
    set.Shuffle(lines);
    lines.resize(std::min<size_t>(lines.size(), kind == "legacy" ? 400 : 10));
    for (std::string& line : lines) set.Add("lines", encoding, kind, 0, std::move(line));
}

void AddWholeFiles(CSampleSet& set)
{
    for (const Encoding& encoding : ENCODINGS)
        for (const fs::path& path : FilesIn(set.Folder() / "files" / encoding.name)) {
            const std::string bytes = ReadAll(path), name = path.filename().string();
            const bool isLegacy = name.starts_with("legacy");
            if (isLegacy && IsUtf8(bytes)) continue;
            const char* const kind = isLegacy ? "legacy" : name.back() == 't' ? "hant/page" : "hans/page";
            set.Add("files", encoding, kind, 0, bytes);
            if (encoding.answer != ENCODE_UNICODE) AddLines(set, bytes, kind, encoding);
        }
}
}  // namespace

void DrawChinese(CSampleSet& set)
{
    const Heads heads = ReadHeads(set);
    for (const ChineseText& chinese : ChineseTexts(set.Folder()))
        for (const Encoding& encoding : ENCODINGS) {
            if (encoding.answer == ENCODE_BIG5 && chinese.kind.starts_with("hans")) continue;
            for (const int length : {2, 3, 4, 6, 8, 16, 32, 64, 200})
                AddWindows(set, chinese, encoding, "windows", length, LeastHan(length), length);
            AddWindows(set, chinese, encoding, "sparse", 24, 1, 2);
            AddPieces(set, chinese, encoding);
            AddMixed(set, chinese, encoding, heads);
        }
    AddWholeFiles(set);
}
