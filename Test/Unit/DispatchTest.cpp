// The locale conversions, with their locale and without, and each branch of the dispatch: what is read, what
// is written, what comes back.
#include <climits>
#include <clocale>

#include "Support.h"
#include "Utility.h"

namespace
{
// ---- Locale

TEST(Locales, ConvertUpToTheFirstFault)
{
    std::wstring wide;
    EXPECT_EQ(ANSIToUnicode("\xD6\xD0\x41", wide), 2U);
    EXPECT_EQ(wide, L"\x4E2D\x41");
    EXPECT_STREQ(setlocale(LC_ALL, nullptr), "zh_CN.gbk") << "left set";
    EXPECT_EQ(ANSIToUnicode("a\xD6\xD0\xFFz", wide), ULONG_MAX);
    EXPECT_EQ(wide, L"a\x4E2D");
    EXPECT_EQ(ANSIToUnicode("a\0b"_b, wide), 1U);
    EXPECT_EQ(wide, L"a");

    std::string bytes;
    EXPECT_EQ(UnicodeToANSI(L"a\x4E2D\x20AC", bytes), 4U);
    EXPECT_EQ(bytes, "a\xD6\xD0\x80");
    EXPECT_EQ(UnicodeToANSI(L"a\x4E2D\xE000z", bytes), ULONG_MAX);
    EXPECT_EQ(bytes, "a\xD6\xD0");

    const struct {
        std::string gbk, utf8;
    } toUtf8[] = {{"", ""},
                  {"\xD6\xD0\x41", "\xE4\xB8\xAD\x41"},
                  {"\xD6\xD0\xFF\xFF", "\xE4\xB8\xAD"},
                  {"A\xD6", "A"},
                  {std::string(70000, 'a'), std::string(70000, 'a')}};
    for (const auto& c : toUtf8) {
        EXPECT_EQ(ANSIToUTF8(c.gbk.c_str(), bytes), c.utf8.size());
        EXPECT_EQ(bytes, c.utf8);
    }
    const struct {
        std::string utf8, gbk;
    } toGbk[] = {
        {"", ""},
        {"\xEF\xBB\xBF\xE4\xB8\xAD", "\xD6\xD0"},
        {"\xE4\xB8\xAD", "\xD6\xD0"},
        {"\xEF\xBB\xBF\xEF\xBB\xBF\xE4\xB8\xAD", ""},  // a second mark is a character, which GBK lacks
        {"a\xEE\x80\x80z", "a"},
        {"a\xF0\x9F\x98\x80z", "az"}};
    for (const auto& c : toGbk) {
        EXPECT_EQ(UTF8ToANSI(c.utf8.c_str(), bytes), 1U);
        EXPECT_EQ(bytes, c.gbk);
    }
}

std::string g_bytes;
std::wstring g_wide;
char g_out[256];
const char* const SOURCE = "a\0\0\0\0\0\0\0";

size_t Convert(size_t (*convert)(const char*, size_t, char*, size_t, int), int code)
{
    return convert(SOURCE, 1, g_out, 1, code);
}

// Each call sets the locale or not, whatever it was before and however often it was set.
const struct LocaleCall {
    const char* what;
    void (*run)();
    bool setsLocale;
} LOCALE_CALLS[] = {
    {"ANSIToUnicode", [] { ANSIToUnicode("a", g_wide); }, true},
    {"UnicodeToANSI", [] { UnicodeToANSI(L"a", g_bytes); }, true},
    {"ANSIToUTF8", [] { ANSIToUTF8("a", g_bytes); }, true},
    {"UTF8ToANSI", [] { UTF8ToANSI("a", g_bytes); }, true},
    {"GBK to UTF-8", [] { Convert(TQ_ToUtf8, ENCODE_GBK); }, true},
    {"Big5 to UTF-8", [] { Convert(TQ_ToUtf8, ENCODE_BIG5); }, true},
    {"UTF-8 to GBK", [] { Convert(TQ_ToGBK, ENCODE_UTF8); }, true},
    {"Unicode to UTF-8", [] { Convert(TQ_ToUtf8, ENCODE_UNICODE); }, false},
    {"Unicode to GBK", [] { Convert(TQ_ToGBK, ENCODE_UNICODE); }, false},
    {"GBK to Unicode", [] { Convert(TQ_ToUnicode, ENCODE_GBK); }, false},
    {"a name that exists", [] { GetAnsiFilename(".", g_bytes, true); }, false},
    {"a name that is missing", [] { GetAnsiFilename("missing", g_bytes, true); }, true},
    {"a folder that is missing", [] { TQ_Init("missing", nullptr); }, true},
    {"a folder without a model", [] { TQ_Init(".", nullptr); }, false},
    {"a file", [] { TQ_ToUtf8File("in", "out"); }, true},
    {"a file that cannot be written", [] { TQ_ToUtf8File("in", "."); }, false},
};

class Locale : public testing::Test
{
protected:
    Locale()
    {
        g_sLogPath.clear();
        WriteBytes("in", "plain");
        WriteBytes("out", "");
    }
    TempFolder m_folder;
};

TEST_F(Locale, IsSetByEachCallThatConvertsInIt)
{
    for (const LocaleCall& call : LOCALE_CALLS)
        for (int time = 0; time < 2; ++time) {
            setlocale(LC_ALL, "C");
            call.run();
            EXPECT_STREQ(setlocale(LC_ALL, nullptr), call.setsLocale ? "zh_CN.gbk" : "C") << call.what;
        }
}

// Run in a process whose LOCPATH holds no such locale.
using LocaleAbsent = Locale;

TEST_F(LocaleAbsent, SaysSoOnceACallAndConvertsInTheCurrentLocale)
{
    const std::string message = "Can't set the specified locale zh_CN.gbk! ";
    for (const LocaleCall& call : LOCALE_CALLS) {
        testing::internal::CaptureStdout();
        call.run();
        EXPECT_EQ(testing::internal::GetCapturedStdout(), call.setsLocale ? message : "") << call.what;
    }
    EXPECT_EQ(ANSIToUTF8("plain", g_bytes), 5U);
    EXPECT_EQ(g_bytes, "plain");
    EXPECT_EQ(UTF8ToANSI("a\xE4\xB8\xAD", g_bytes), 1U);
    EXPECT_EQ(g_bytes, "a") << "the C locale has no such character";
    EXPECT_STREQ(setlocale(LC_ALL, nullptr), "C");
}

// ---- Dispatch

using Engine = unsigned long(int, char const*, unsigned long, char*, unsigned long&);

struct Branch {
    const char* what;
    Engine* engine;
    int encoding;
    std::string source;  // what is there to read, and no more
    unsigned long sourceLength, capacity;
    std::string written;  // all that is written, terminators included
    unsigned long result, length;
};

const std::string WIDE_ZHONG_A = "\x2D\x4E\0\0A\0\0\0"_b;
const std::string UTF8_ZHONG_A =
    "\xE4\xB8\xAD"
    "A\0"_b;
const std::string GBK_ZHONG_A =
    "\xD6\xD0"
    "A\0"_b;

const Branch BRANCHES[] = {
    {"UTF-8 ignores both lengths", CodeTrans_ToUnicode, ENCODE_UTF8, UTF8_ZHONG_A, 1, 1,
     WIDE_ZHONG_A + "\0\0"_b, 8, 1},
    {"UTF-8 stops at a zero", CodeTrans_ToUnicode, ENCODE_UTF8, "A\0z"_b, 3, 99, "A\0\0\0\0\0"_b, 4, 99},
    {"Unicode: larger capacity", CodeTrans_ToUnicode, ENCODE_UNICODE, "abcdefgh", 4, 8, "abcdefgh\0"_b, 8, 8},
    {"Unicode: larger source", CodeTrans_ToUnicode, ENCODE_UNICODE, "abcd", 4, 2, "abcd\0"_b, 4, 4},
    {"no such code", CodeTrans_ToUnicode, 5, "abcd", 4, 9, "", 0, 0},
    {"undecided", CodeTrans_ToUnicode, ENCODE_UNKNOWN, "\xFF\xFF\xFF", 3, 9, "", 0, 0},
    {"detected", CodeTrans_ToUnicode, ENCODE_UNKNOWN, "ab", 2, 9, "a\0b\0"_b, 4, 4},

    {"UTF-8 capped", CodeTrans_ToUtf8, ENCODE_UTF8, "0123456789", 10, 4, "0123\0"_b, 4, 4},
    {"UTF-8 without limit", CodeTrans_ToUtf8, ENCODE_UTF8,
     "01\0"_b
     "3456789",
     10, 0,
     "01\0"_b
     "3456789\0"_b,
     10, 10},
    {"GBK ignores the source length", CodeTrans_ToUtf8, ENCODE_GBK, GBK_ZHONG_A, 1, 9, UTF8_ZHONG_A, 4, 4},
    {"GBK capped", CodeTrans_ToUtf8, ENCODE_GBK, GBK_ZHONG_A, 3, 2, "\xE4\xB8\0"_b, 2, 2},
    {"Big5 read as GBK", CodeTrans_ToUtf8, ENCODE_BIG5, GBK_ZHONG_A, 3, 0, UTF8_ZHONG_A, 4, 4},
    {"Unicode in four-byte units", CodeTrans_ToUtf8, ENCODE_UNICODE, WIDE_ZHONG_A, 2, 0, UTF8_ZHONG_A, 4, 4},
    {"Unicode: capacity limits units", CodeTrans_ToUtf8, ENCODE_UNICODE, "\x2D\x4E\0\0"_b, 2, 1,
     "\xE4\xB8\xAD\0"_b, 3, 3},
    {"Unicode: zero ends the copy", CodeTrans_ToUtf8, ENCODE_UNICODE,
     "A\0\0\0\0\0\0\0\x7F\0\0\0\x80\0\0\0\xFF\7\0\0\0\x8\0\0\xFF\xFF\0\0\0\0\1\0"_b, 8, 9, "A\0"_b, 13, 1},
    {"no such code", CodeTrans_ToUtf8, 5, "abcd", 4, 9, "", 0, 0},
    {"undecided", CodeTrans_ToUtf8, ENCODE_UNKNOWN, "\xFF\xFF\xFF", 3, 9, "", 0, 0},

    {"UTF-8 ignores both lengths", CodeTrans_ToAnsi, ENCODE_UTF8, UTF8_ZHONG_A, 1, 1, GBK_ZHONG_A, 3, 3},
    {"UTF-8: one byte-order mark is skipped", CodeTrans_ToAnsi, ENCODE_UTF8, "\xEF\xBB\xBF\xEF\xBB\xBFz\0"_b,
     7, 9, "\0"_b, 0, 0},
    {"UTF-8 ends at what GBK lacks", CodeTrans_ToAnsi, ENCODE_UTF8, "a\xEE\x80\x80z\0"_b, 6, 9, "a\0"_b, 1,
     1},
    {"GBK copied", CodeTrans_ToAnsi, ENCODE_GBK, "a\0\xFF"_b, 3, 1, "a\0\xFF\0"_b, 3, 3},
    {"Big5 copied", CodeTrans_ToAnsi, ENCODE_BIG5, "\xA4\xA4", 2, 0, "\xA4\xA4\0"_b, 2, 2},
    {"Unicode: length counts units", CodeTrans_ToAnsi, ENCODE_UNICODE,
     "\x2D\x4E"
     "A\0\xAC\x20"_b,
     3, 0,
     "\xD6\xD0"
     "A\0\x80\0\0"_b,
     3, 3},
    {"Unicode: nothing", CodeTrans_ToAnsi, ENCODE_UNICODE, "", 0, 0, "\0\0"_b, 0, 0},
    {"no such code", CodeTrans_ToAnsi, -1, "abcd", 4, 9, "", 0, 0},
};

TEST(Dispatch, EachBranch)
{
    // A model that knows no byte, so that detection answers for ASCII alone; D6 D0 is entry 4856, A4 A4 entry
    // 3224.
    const LoadedModel model(std::vector<TrieNode>{});
    for (const Branch& b : BRANCHES) {
        GuardedBuffer source(b.source);
        std::string destination(64, '?');
        unsigned long length = b.capacity;
        EXPECT_EQ(b.engine(b.encoding, source.data(), b.sourceLength, destination.data(), length), b.result)
            << b.what << ' ' << b.encoding;
        EXPECT_EQ(length, b.length) << b.what << ' ' << b.encoding;
        EXPECT_EQ(destination, b.written + std::string(64 - b.written.size(), '?'))
            << b.what << ' ' << b.encoding;
    }
}
}  // namespace
