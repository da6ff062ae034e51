// Chinese text where it is hard to see: a word among ASCII, GBK out of step, four-byte characters, two
// characters behind a mark, and GBK that is valid UTF-8; see Drawing.h.
#include <algorithm>

#include "CodeTrans.h"
#include "Drawing.h"

namespace
{
namespace fs = std::filesystem;

const Text MARK(1, u'\uFEFF');

// What stands before the word, and what closes it.
struct Boundary {
    const char* kind;
    Text before, behind;
};
const Boundary BOUNDARIES[] = {{"start", u"", u""},
                               {"blank", u" ", u" "},
                               {"round bracket", u"(", u")"},
                               {"square bracket", u"[", u"]"},
                               {"angle bracket", u"<", u">"},
                               {"quote", u"\"", u"\""},
                               {"apostrophe", u"'", u"'"},
                               {"digit", u"7", u""},
                               {"slash", u"/", u""},
                               {"backslash", u"\\", u""},
                               {"full stop", u".", u"."},
                               {"comma", u",", u","},
                               {"table rule", u"\u2502", u"\u2502"},
                               {"line end", u"\n", u""}};

// Hanzi that follow one another in the text: two of them mostly, as words have, one now and then.
Text Word(CSampleSet& set, const Text& text)
{
    const size_t length = set.Below(4) == 0 ? 1 : 2;
    for (;;) {
        const Text word = text.substr(set.Below(text.size() - 2), length);
        if (std::all_of(word.begin(), word.end(), IsHan)) return word;
    }
}

Text PieceOf(CSampleSet& set, const std::string& ascii, size_t length)
{
    const std::string piece = ascii.substr(set.Below(ascii.size() - length), length);
    return Text(piece.begin(), piece.end());
}

// Twenty-four characters: ASCII, a boundary, a word, ASCII.
void AddWords(CSampleSet& set, const ChineseText& chinese, const Encoding& encoding,
              const std::vector<std::string>& ascii)
{
    for (const Boundary& boundary : BOUNDARIES)
        for (int i = 0; i < std::max(1, set.Count() / 5); ++i) {
            const Text word = Word(set, chinese.text), middle = boundary.before + word + boundary.behind;
            const std::string& source = ascii[set.Below(ascii.size())];
            const size_t rest = 24 - middle.size();
            const size_t head = std::string(boundary.kind) == "start" ? 0 : set.Below(rest + 1);
            const Text text = PieceOf(set, source, head) + middle + PieceOf(set, source, rest - head);
            if (std::string bytes = Encode(encoding.converter, text); !bytes.empty())
                set.Add("word", encoding, boundary.kind + std::string(word.size() == 1 ? ", one hanzi" : ""),
                        24, std::move(bytes));
        }
}

Text Window(CSampleSet& set, const Text& text, size_t length)
{
    for (int tries = 0; tries < 100; ++tries) {
        const Text window = text.substr(set.Below(text.size() - length), length);
        if (std::count_if(window.begin(), window.end(), IsHan) >= LeastHan(static_cast<int>(length)))
            return window;
    }
    return u"";
}

// GBK whose first byte is lost.
void AddHeadless(CSampleSet& set, const ChineseText& chinese, size_t length)
{
    for (int i = 0; i < set.Count(); ++i) {
        const Text window = Window(set, chinese.text, length);
        const std::string bytes = Encode(ENCODINGS[GBK_INDEX].converter, window);
        if (!bytes.empty() && IsHan(window[0]))
            set.Add("headless", ENCODINGS[GBK_INDEX], chinese.kind, static_cast<int>(length),
                    bytes.substr(1));
    }
}

// One to three characters among the hanzi that GB18030 writes in four bytes.
void AddGb18030(CSampleSet& set, const ChineseText& chinese, size_t length)
{
    for (int i = 0; i < set.Count(); ++i) {
        Text window = Window(set, chinese.text, length);
        if (window.empty() || Encode(ENCODINGS[GBK_INDEX].converter, window).empty()) continue;
        for (size_t left = 1 + set.Below(3); left > 0; --left) {
            const size_t place = set.Below(window.size());
            if (!IsHan(window[place])) continue;
            window[place] = static_cast<char16_t>(0x3400 + set.Below(0x1900));  // CJK extension A
        }
        const std::string bytes = Encode("gb18030", window);
        if (bytes.size() > 2 * length ||
            std::any_of(window.begin(), window.end(), [](char16_t c) { return c < 0x4E00 && IsHan(c); }))
            set.Add("gb18030", ENCODINGS[GBK_INDEX], chinese.kind, static_cast<int>(length), bytes);
    }
}

void AddMarked(CSampleSet& set, const ChineseText& chinese)
{
    for (const Encoding& encoding : {ENCODINGS[UTF8_INDEX], ENCODINGS[UTF16_INDEX]})
        for (int i = 0; i < set.Count(); ++i) {
            const Text text = MARK + chinese.text.substr(set.Below(chinese.text.size() - 2), 2);
            if (std::string bytes = Encode(encoding.converter, text); !bytes.empty())
                set.Add("mark", encoding, chinese.kind, 2, std::move(bytes));
        }
}

bool IsTwoByteUtf8(const std::string& bytes)
{
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto lead = static_cast<unsigned char>(bytes[i]),
                   trail = static_cast<unsigned char>(bytes[i + 1]);
        if (lead < 0xC2 || lead > 0xDF || trail < 0x80 || trail > 0xBF) return false;
    }
    return true;
}

// GBK text of two to four hanzi that could be UTF-8; where such text is found follows how frequent it is.
void AddChineseTwins(CSampleSet& set, const ChineseText& chinese, size_t length)
{
    int found = 0;
    for (int tries = 0; found < set.Count() && tries < set.Count() * 1000; ++tries) {
        const Text window = chinese.text.substr(set.Below(chinese.text.size() - length), length);
        if (!std::all_of(window.begin(), window.end(), IsHan)) continue;
        std::string bytes = Encode(ENCODINGS[GBK_INDEX].converter, window);
        if (bytes.empty() || !IsTwoByteUtf8(bytes)) continue;
        set.Add("twins", ENCODINGS[GBK_INDEX], chinese.kind, static_cast<int>(length), std::move(bytes));
        ++found;
    }
}

// Words of two to four letters, each of two bytes, that stand alone in other languages.
void AddWorldTwins(CSampleSet& set, const fs::path& path)
{
    std::vector<std::string> words;
    for (const std::string& line : LinesOf(ReadAll(path)))
        for (size_t start = 0, end = 0; start < line.size(); start = end + 1) {
            end = std::min(line.find(' ', start), line.size());
            const std::string word = line.substr(start, end - start);
            if (word.size() >= 4 && word.size() <= 8 && word.size() % 2 == 0 && IsTwoByteUtf8(word))
                words.push_back(word);
        }
    set.Shuffle(words);
    words.resize(std::min(words.size(), static_cast<size_t>(set.Count())));
    for (std::string& word : words) {
        const int length = static_cast<int>(word.size() / 2);
        set.Add("twins", ENCODINGS[UTF8_INDEX], path.stem().string(), length, std::move(word));
    }
}
}  // namespace

void DrawChineseEdges(CSampleSet& set)
{
    std::vector<std::string> ascii;
    for (const char* kind : {"english", "code", "csv", "log", "json"})
        ascii.push_back(ReadAll(set.Folder() / "ascii" / (std::string(kind) + ".txt")));
    for (const ChineseText& chinese : ChineseTexts(set.Folder())) {
        const bool isHans = chinese.kind.starts_with("hans");
        for (const Encoding& encoding : ENCODINGS)
            if (encoding.answer != ENCODE_BIG5 || !isHans) AddWords(set, chinese, encoding, ascii);
        for (const size_t length : {8, 16, 32}) AddHeadless(set, chinese, length);
        for (const size_t length : {16, 32}) AddGb18030(set, chinese, length);
        AddMarked(set, chinese);
        for (const size_t length : {2, 3, 4}) AddChineseTwins(set, chinese, length);
    }
    for (const fs::path& path : FilesIn(set.Folder() / "world" / "lines")) AddWorldTwins(set, path);
}
