// Detection: the weighing rules on tries made to measure, and what the committed model answers.
#include <climits>
#include <filesystem>
#include <random>

#include "Margin.h"
#include "Support.h"

using namespace std::string_literals;

namespace
{
constexpr int CODE_1 = 1 << 20;

struct Child {
    int parent;
    unsigned char byte;
    int value;
};

// The root and every other node have nBase 1, so the node for byte b sits at b + 1, and all fail to the root.
std::vector<TrieNode> SmallTrie(const std::vector<Child>& children)
{
    std::vector<TrieNode> nodes(300, TrieNode{1, -1, 0, TRIE_VALUE_NONE});
    for (const Child& c : children) {
        nodes[c.byte + 1U].nCheck = c.parent;
        nodes[c.byte + 1U].nValue = c.value;
    }
    return nodes;
}

int Detect(const std::string& text)
{
    GuardedBuffer buffer(text);
    return CodeTrans_CodeDetect(buffer.data(), text.size());
}

constexpr int Add(int gbk, int big5, int unicode, int utf8)
{
    return PackTrieValue(0, {gbk, big5, unicode, utf8});
}

TEST(Detection, WeighsTheSums)
{
    static_assert(Add(1, 0, 0, 0) == 0x1280e && Add(0, 0, 1, 0) == 0x1299d &&
                  PackTrieValue(1, {}) == 0x11280d);
    constexpr int GBK = Add(1, 0, 0, 0);
    constexpr Child ZERO = {0, 0x00, Add(0, 0, 1, 0)},
                    COUNTED = {0, ' ', TRIE_VALUE_NONE | TRIE_VALUE_COUNTED};
    static_assert(UnpackTrieValue(0x3FFFF).utf8 == 23 && UnpackTrieValue(0).gbk == -9);
    const struct {
        const char* what;
        std::vector<Child> children;
        std::string text;
        int result;
    } cases[] = {
        {"empty input", {}, "", ENCODE_GBK},
        {"no children, ASCII", {}, "plain", ENCODE_GBK},
        {"no children, high byte", {}, "plain\xB0", ENCODE_UNKNOWN},
        {"retried bytes count once", {{0, 0xB0, GBK}}, "\xB0\xB0\xB0\xB0", ENCODE_GBK},
        {"positive count exactly H / 4", {{0, 0xB0, GBK}}, "\xB0\xC0\xC0\xC0", ENCODE_UNKNOWN},
        {"UTF-16LE without others", {ZERO}, "a\0b\0"_b, ENCODE_UNICODE},
        {"a counted node spoils the ratio", {ZERO, COUNTED}, "a\0 b\0"_b, ENCODE_GBK},
        {"ten to one is not enough", {ZERO, COUNTED}, std::string(10, '\0') + " ", ENCODE_GBK},
        {"eleven to one is", {ZERO, COUNTED}, std::string(11, '\0') + " ", ENCODE_UNICODE},
        {"an uncounted node does not", {ZERO, {0, ' ', TRIE_VALUE_NONE}}, "a\0 b\0"_b, ENCODE_UNICODE},
        {"UTF-16LE refused", {{0, 0xB0, Add(1, 0, 2, 0)}, {0, 0xB1, GBK}}, "\xB0\xB0\xB0\xB1", ENCODE_GBK},
        {"a decisive node ends it", {{0, 'x', CODE_1 | 0x1280d}, {0, 'y', CODE_1 * 3}}, "xy", ENCODE_UTF8},
        {"a decisive code as stored", {{0, 'x', PackTrieValue(-5, {})}}, "x", -5},
        {"ties go to the earlier", {{0, 0xB0, Add(2, 2, 0, 2)}}, "\xB0\xB0", ENCODE_GBK},
        {"a refused one shuts out ties", {{0, 0xB0, Add(5, 5, 0, 5)}}, "\xB0\xC0\xC0\xC0", ENCODE_UNKNOWN},
        {"Big5 beats GBK", {{0, 0xB0, Add(1, 2, 0, 0)}}, "\xB0", ENCODE_BIG5},
        {"Big5 refused", {{0, 0xB0, Add(1, 2, 0, 0)}}, "\xB0\xC0\xC0\xC0", ENCODE_UNKNOWN},
        {"Big5 on ASCII needs a positive node", {{0, 'a', Add(-2, -1, -9, -9)}}, "a", ENCODE_UNKNOWN},
        {"UTF-8 needs more than a sixth", {{0, 0xB0, Add(0, 0, 0, 23)}}, "\xB0\xC0\xC0\xC0\xC0", ENCODE_UTF8},
        {"a sixth is not enough", {{0, 0xB0, Add(0, 0, 0, 23)}}, "\xB0\xC0\xC0\xC0\xC0\xC0", ENCODE_UNKNOWN},
        {"a zero value counts as non-positive", {ZERO, {0, 'a', 0}}, "a\0b\0"_b, ENCODE_GBK},
    };
    for (const auto& c : cases) {
        const LoadedModel model(SmallTrie(c.children));
        EXPECT_EQ(Detect(c.text), c.result) << c.what;
    }
}

// The lead over the next best, or over 0, for two characters of GBK; of UTF-8 as it is.
TEST(Detection, TellsHowClearItsAnswerIs)
{
    const auto scores = [](int gbk, int big5, int unicode, int utf8, long high) {
        Scores made;
        made.sumGbk = static_cast<unsigned>(gbk);
        made.sumBig5 = static_cast<unsigned>(big5);
        made.sumUnicode = static_cast<unsigned>(unicode);
        made.sumUtf8 = static_cast<unsigned>(utf8);
        made.positiveGbk = made.positiveBig5 = made.positiveUtf8 = made.positiveUnicode = high;
        made.highBytes = high;
        return made;
    };
    const struct {
        Scores scores;
        int code, margin;
    } cases[] = {
        {scores(20, 5, -9, 8, 4), ENCODE_GBK, 12},        {scores(20, -5, -9, -8, 4), ENCODE_GBK, 20},
        {scores(20, 5, -9, 8, 2), ENCODE_GBK, 12},        {scores(20, 5, -9, 8, 8), ENCODE_GBK, 6},
        {scores(5, 20, 1, 2, 12), ENCODE_BIG5, 5},        {scores(5, 2, 1, 30, 12), ENCODE_UTF8, 25},
        {scores(-5, -9, 40, -9, 16), ENCODE_UNICODE, 10}, {scores(900, 0, 0, 0, 4), ENCODE_GBK, MOST_MARGIN},
        {scores(-3, -9, -9, -9, 4), ENCODE_GBK, 0},       {Scores{}, ENCODE_GBK, 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(AnswerOf(c.scores).code, c.code) << c.margin;
        EXPECT_EQ(AnswerOf(c.scores).margin, c.margin) << c.code;
    }
    Scores decided = scores(1, 2, 3, 4, 99);
    decided.decidedCode = ENCODE_BIG5;
    EXPECT_EQ(AnswerOf(decided).code, ENCODE_BIG5);
    EXPECT_EQ(AnswerOf(decided).margin, MOST_MARGIN);
    Scores undecided = scores(20, 0, 0, 0, 40);
    undecided.positiveGbk = 1;
    EXPECT_EQ(AnswerOf(undecided).code, ENCODE_UNKNOWN);
    EXPECT_EQ(AnswerOf(undecided).margin, 0);
    EXPECT_TRUE(AnswerOf(Scores{}).ascii);
    EXPECT_FALSE(AnswerOf(scores(20, 5, -9, 8, 4)).ascii);

    const std::string marked =
        "\xEF\xBB\xBF"
        "a";
    EXPECT_EQ(MarkLength(ENCODE_UTF8, marked.data(), marked.size()), 3U);
    EXPECT_EQ(MarkLength(ENCODE_UTF8, marked.data(), 2), 0U);
    EXPECT_EQ(MarkLength(ENCODE_UNICODE, "\xFF\xFE", 2), 2U);
}

TEST(Detection, WithoutAModelActsAsWithoutChildren)
{
    const auto answers = [] {
        return Detect("plain") == ENCODE_GBK && Detect("\xD6\xD0\xCE\xC4") == ENCODE_UNKNOWN;
    };
    EXPECT_TRUE(answers());
    const LoadedModel empty(std::vector<TrieNode>{});
    EXPECT_TRUE(answers());
}

TEST(Detection, TakesATableThatOtherCodePutInPlace)
{
    std::vector<TrieNode> nodes = SmallTrie({{0, 'x', PackTrieValue(ENCODE_BIG5, {})}});
    g_pstTrieTable = nodes.data();
    EXPECT_EQ(CodeTrans_TrieNodeCount(), INT_MAX);
    EXPECT_EQ(Detect("..x"), ENCODE_BIG5);
    g_pstTrieTable = nullptr;
}

TEST(Detection, NamesEverySample)
{
    const LoadedModel model;
    const struct {
        const char* suffix;
        int code;
    } suffixes[] = {
        {".gbk", ENCODE_GBK}, {".big5", ENCODE_BIG5}, {".utf8", ENCODE_UTF8}, {".utf16le", ENCODE_UNICODE}};
    int samples = 0;
    for (const auto& entry : std::filesystem::directory_iterator(CODETRANS_SOURCE_DIRECTORY "/Test/Samples"))
        for (const auto& s : suffixes)
            if (entry.path().extension() == s.suffix) {
                EXPECT_EQ(Detect(ReadBytes(entry.path())), s.code) << entry.path();
                ++samples;
            }
    EXPECT_GE(samples, 35);
    EXPECT_EQ(Detect("Only ASCII here, 100 % of it."), ENCODE_GBK);
    EXPECT_EQ(Detect("\xEF\xBB\xBF\x61\x73\x63\x69\x69"), ENCODE_UTF8);
    EXPECT_EQ(Detect("\xFF\xFE"
                     "a\0"_b),
              ENCODE_UNICODE);
}

// What no Chinese text looks like, and Chinese text with a fault in it.
TEST(Detection, LeavesUndecidedWhatIsNotChinese)
{
    const LoadedModel model;
    const std::string samples = CODETRANS_SOURCE_DIRECTORY "/Test/Samples/";
    for (const char* name : {"russian.windows-1251", "french.latin-1", "korean.euc-kr", "japanese.shift_jis"})
        EXPECT_EQ(Detect(ReadBytes(samples + name)), ENCODE_UNKNOWN) << name;
    // One line of Russian in KOI8-R and in code page 866.
    for (const char* line :
         {"\xF0\xD2\xC9\xD7\xC5\xD4, \xCB\xC1\xCB \xC4\xC5\xCC\xC1? \xF7\xD3\xA3 \xC8\xCF\xD2\xCF\xDB\xCF",
          "\x8F\xE0\xA8\xA2\xA5\xE2, \xAA\xA0\xAA \xA4\xA5\xAB\xA0? \x82\xE1\xF1 \xE5\xAE\xE0\xAE\xE8\xAE"})
        EXPECT_EQ(Detect(line), ENCODE_UNKNOWN) << testing::PrintToString(std::string(line));
    std::mt19937 random(1);
    for (int i = 0; i < 20; ++i) {
        std::string noise(300, '\0');
        for (char& c : noise) c = static_cast<char>(random());
        EXPECT_EQ(Detect(noise), ENCODE_UNKNOWN);
    }
    for (const auto& [file, code] : {std::pair("news-hans.gbk", ENCODE_GBK),
                                     {"news-hant.big5", ENCODE_BIG5},
                                     {"news-hans.utf8", ENCODE_UTF8}}) {
        std::string text = ReadBytes(samples + file).substr(0, 300);
        text.insert(150, "\x01\xFF");
        EXPECT_EQ(Detect(text), code) << "two bytes of noise in " << file;
    }
    // A table whose names are cut in mid-character.
    EXPECT_EQ(Detect("\xCD\xF5\xD0\xA1\xC3 \n"
                     "\xC5\xB7\xD1\xF4\xD0 \n"
                     "\xCB\xBE\xC2\xED\xB9 \n"
                     "\xD6\xEE\xB8\xF0\xC1 \n"
                     "\xC2\xBD\xB7\xC5\xCE \n"),
              ENCODE_GBK);
    // A terminator came with the text.
    for (const std::string& text : {"\x60\x4F\x7D\x59\0\0"_b, "\x28\x75\x37\x62\x0D\x54\0\0"_b,
                                    "\xF7\x8B\x93\x8F\x65\x51\xC6\x5B\x01\x78\0\0"_b})
        EXPECT_EQ(Detect(text), ENCODE_UNICODE) << testing::PrintToString(text);
    // Emoji and tones of pinyin in UTF-16LE, and a buffer filled up with zeros.
    const std::u16string units[] = {u"\u4F60\u597D\U0001F600",
                                    u"\u6C49 h\u00E0n \u5B66 xu\u00E9 \u62FC p\u012Bn",
                                    u"\u4F60\u597D\0\0\0\0\0\0"s};
    for (const std::u16string& text : units)
        EXPECT_EQ(Detect({reinterpret_cast<const char*>(text.data()), 2 * text.size()}), ENCODE_UNICODE);
    // Eight bytes of ASCII and more are ASCII, whatever hanzi they make in UTF-16LE.
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    int right = 0;
    for (int i = 0; i < 5000; ++i) {
        std::string ascii(8 + random() % 40, '\0');
        for (char& c : ascii) c = alphabet[random() % (i % 2 == 0 ? 64 : 52)];
        right += Detect(ascii) == ENCODE_GBK;
    }
    EXPECT_GE(right, 4995);
}

// Two characters are the most frequent reading of their bytes; text of other languages is known in UTF-8 and
// UTF-16LE, and so is what lies beyond U+FFFF.
TEST(Detection, KnowsShortTextsAndSigns)
{
    const LoadedModel model;
    const struct {
        const char* what;
        std::string text;
        int code;
    } cases[] = {
        {"partner, and a line end", "\xBB\xEF\xB0\xE9\r\n", ENCODE_GBK},
        {"place", "\xB3\xA1\xB5\xD8", ENCODE_GBK},
        {"mistake, Traditional", "\xE5\x65\xD5\x60", ENCODE_GBK},
        {"suspicion", "\xB6\xFB\xBA\xC3", ENCODE_BIG5},
        {"luxury, and a blank", "\xBB\xA8\xB5\xD8 ", ENCODE_BIG5},
        {"one after another", "\xB7\x7E\xB7\x7E", ENCODE_UNICODE},
        {"a sign", "\xF0\x9F\x98\x80", ENCODE_UTF8},
        {"a word and a sign", "Hi \xF0\x9F\x91\x8D\n", ENCODE_UTF8},
        {"a hanzi and a sign", "\xE5\xA5\xBD\xF0\x9F\x91\x8D", ENCODE_UTF8},
        {"a flag", "\xF0\x9F\x87\xA8\xF0\x9F\x87\xB3", ENCODE_UTF8},
        {"an accent", "caf\xC3\xA9", ENCODE_UTF8},
        {"a sign among ASCII", "\xC2\xA9 2024 by us", ENCODE_UTF8},
        {"Russian", "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82", ENCODE_UTF8},
        {"Burmese", "\xE1\x80\x99\xE1\x80\xBC\xE1\x80\x94\xE1\x80\xBA\xE1\x80\x99\xE1\x80\xAC", ENCODE_UTF8},
        {"Russian in UTF-16LE", std::string("\x1F\4@\4\x38\4\x32\4\x35\4\x42\4", 12), ENCODE_UNICODE},
        {"a hanzi beyond U+FFFF", "\xE4\xBB\x96\xE5\x9C\xA8\xF0\xA0\xAE\xB7\xE9\x87\x8E", ENCODE_UTF8},
        {"a hanzi behind a mark", "\xFF\xFE\x2D\x4E", ENCODE_UNICODE},
        {"the mark of UTF-32", std::string("\xFF\xFE\0\0\x2D\x4E\0\0", 8), ENCODE_UNKNOWN},
        {"ASCII in UTF-32", std::string("a\0\0\0b\0\0\0c\0\0\0", 12), ENCODE_UNKNOWN},
    };
    for (const auto& c : cases) EXPECT_EQ(Detect(c.text), c.code) << c.what;
    const std::string novel = ReadBytes(CODETRANS_SOURCE_DIRECTORY "/Test/Samples/fiction-hans.gbk");
    EXPECT_EQ(Detect(novel.substr(1, 80)), ENCODE_GBK) << "begins in mid-character";
}

// Two lines in one encoding end the walk, however much follows in another; one line at the head decides
// nothing.
TEST(Detection, TwoLinesDecideAndOneDoesNot)
{
    const LoadedModel model;
    const std::string samples = CODETRANS_SOURCE_DIRECTORY "/Test/Samples/";
    const std::pair<const char*, int> encodings[] = {{"hans.gbk", ENCODE_GBK},
                                                     {"hant.gbk", ENCODE_GBK},
                                                     {"hant.big5", ENCODE_BIG5},
                                                     {"hans.utf8", ENCODE_UTF8},
                                                     {"hant.utf8", ENCODE_UTF8}};
    for (const char* kind : {"fiction-", "source-", "subtitle-"})
        for (const auto& [name, code] : encodings) {
            const std::string head = ReadBytes(samples + kind + name);
            for (const auto& [otherName, otherCode] : encodings) {
                if (otherCode == code) continue;
                SCOPED_TRACE(std::string(kind) + name + " before " + otherName);
                const std::string other = ReadBytes(samples + "fiction-" + otherName);
                std::string tail;
                while (tail.size() < 30 * head.size()) tail += other;
                EXPECT_EQ(Detect(head + tail), code);
                EXPECT_EQ(Detect(head.substr(0, head.find('\n') + 1) + other), otherCode);
            }
        }
}

}  // namespace
