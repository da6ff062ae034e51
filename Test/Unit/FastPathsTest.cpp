// Every function with a fast form gives the same bytes with and without it: same result, nothing read beyond
// the source (which ends at an unreadable page), nothing written beyond what the plain form writes.
#include <gtest/gtest.h>
#include <langinfo.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <functional>
#include <random>
#include <vector>

#include "FastPaths.h"
#include "STLCodeTrans.h"

namespace
{
constexpr size_t AREA = 1 << 16;

// Memory whose last byte lies before a page that cannot be read.
class CGuarded
{
public:
    CGuarded()
        : m_page(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
          m_area(static_cast<char*>(
              mmap(nullptr, AREA + m_page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        mprotect(m_area + AREA, m_page, PROT_NONE);
    }
    ~CGuarded() { munmap(m_area, AREA + m_page); }

    const char* Place(const std::string& text)
    {
        return static_cast<const char*>(memcpy(m_area + AREA - text.size(), text.data(), text.size()));
    }

private:
    size_t m_page;
    char* m_area;
};

struct Route {
    const char* name;
    bool zeroTerminated;
    std::function<size_t(const char*, size_t, char*, size_t)> convert;
};

const Route ROUTES[] = {
    {"GBK to UTF-16", false,
     [](auto s, auto n, auto d, auto c) { return TQ_ToUnicode(s, n, d, c, ENCODE_GBK); }},
    {"Big5 to UTF-16", false,
     [](auto s, auto n, auto d, auto c) { return TQ_ToUnicode(s, n, d, c, ENCODE_BIG5); }},
    {"UTF-8 to wide", true,
     [](auto s, auto n, auto d, auto c) { return TQ_ToUnicode(s, n, d, c, ENCODE_UTF8); }},
    {"GBK to UTF-8", true, [](auto s, auto n, auto d, auto c) { return TQ_ToUtf8(s, n, d, c, ENCODE_GBK); }},
    {"wide to UTF-8", false,
     [](auto s, auto n, auto d, auto c) { return TQ_ToUtf8(s, n / 4, d, c, ENCODE_UNICODE); }},
    {"UTF-8 to GBK", true, [](auto s, auto n, auto d, auto c) { return TQ_ToGBK(s, n, d, c, ENCODE_UTF8); }},
    {"UTF-16 to GBK", false,
     [](auto s, auto n, auto d, auto c) { return TQ_ToGBK(s, n / 2, d, c, ENCODE_UNICODE); }},
};

class FastPaths : public testing::Test
{
protected:
    FastPaths()
    {
        if (!FastPathsOn()) return;
        for (unsigned short** table : {&g_mapGBKToUnicode, &g_mapBig5ToUnicode}) {
            *table = new unsigned short[MAPPING_ENTRIES];
            for (unsigned i = 0; i < MAPPING_ENTRIES; ++i)
                (*table)[i] = static_cast<unsigned short>(m_random());
        }
    }
    ~FastPaths() override
    {
        SwitchFastPaths(true);
        CodeTrans_Destroy();
    }
    void SetUp() override
    {
        if (!FastPathsOn()) GTEST_SKIP() << "this processor has the plain forms alone";
    }

    unsigned Random(unsigned below) { return static_cast<unsigned>(m_random() % below); }

    // A character of one of eight kinds, in one encoding or another, or a stray byte.
    std::string Piece(unsigned kind)
    {
        const auto byte = [](unsigned value) { return std::string(1, static_cast<char>(value)); };
        const auto tail = [&] { return byte(0x80 + Random(0x40)); };
        const unsigned unit = 0x4E00 + Random(0x51A6), code = CodeTable[unit];
        switch (kind) {
            case 0:
                return std::string(1 + Random(40), static_cast<char>(0x20 + Random(0x5F)));
            case 1:
                return byte(code >> 8) + byte(code & 0xFF);
            case 2:
                return byte(0xE0 + Random(16)) + tail() + tail();
            case 3:
                return Random(4) == 0 ? "\xC0\x80" : byte(0xC0 + Random(32)) + tail();
            case 4:
                return byte(0xF0 + Random(16)) + tail() + tail() + (Random(2) == 0 ? tail() : "");
            case 5:
                return byte(0xE0 | unit >> 12) + byte(0x80 | (unit >> 6 & 0x3F)) + byte(0x80 | (unit & 0x3F));
            case 6:
                return byte(unit & 0xFF) + byte(unit >> 8);
            default:
                return byte(Random(256));
        }
    }

    // Mostly one kind, with others strewn in, as text is.
    std::string Text(size_t length)
    {
        const unsigned usual = Random(8), rarity = 1 + Random(60), wide = Random(2);
        std::string text;
        while (text.size() < length) {
            text += Piece(Random(rarity) == 0 ? Random(8) : usual);
            if (wide != 0 && text.size() % 4 == 2) text += std::string(2, Random(99) == 0 ? '\1' : '\0');
        }
        text.resize(length);
        return text;
    }

    void Compare(const Route& route, std::string text, size_t capacity)
    {
        if (route.zeroTerminated) {
            std::replace(text.begin(), text.end(), '\0', ' ');
            text += '\0';
        }
        const char* const source = m_guarded.Place(text);
        const size_t length = text.size() - route.zeroTerminated;
        const size_t skew = Random(32);
        std::vector<char> plain(4 * length + 200, '\x5A'), fast = plain;
        SwitchFastPaths(false);
        const size_t expected = route.convert(source, length, plain.data() + skew, capacity);
        SwitchFastPaths(true);
        const size_t got = route.convert(source, length, fast.data() + skew, capacity);
        ASSERT_TRUE(got == expected && fast == plain)
            << route.name << ", " << length << " bytes, capacity " << capacity << ", results " << got
            << " and " << expected << ", text:\n"
            << testing::PrintToString(text.substr(0, 300));
    }

    const unsigned m_seed = std::random_device()();
    const testing::ScopedTrace m_trace{__FILE__, __LINE__, "seed " + std::to_string(m_seed)};
    std::mt19937 m_random{m_seed};
    CGuarded m_guarded;
};

TEST_F(FastPaths, AgreeOnTextOfEveryShortLengthAndAroundWindows)
{
    std::vector<size_t> lengths;
    for (size_t length = 0; length < 300; ++length) lengths.insert(lengths.end(), 12, length);
    for (int i = 0; i < 1500; ++i) lengths.push_back(900 + Random(1500));
    for (int i = 0; i < 60; ++i) lengths.push_back(Random(20000));
    for (const Route& route : ROUTES)
        for (const size_t length : lengths) {
            const std::string text = Text(length);
            ASSERT_NO_FATAL_FAILURE(Compare(route, text, 4 * length + 100));
            ASSERT_NO_FATAL_FAILURE(Compare(route, text, Random(static_cast<unsigned>(3 * length + 4))));
        }
}

TEST_F(FastPaths, LeaveConversionsInPlaceAsTheyAre)
{
    std::string texts[2];  // without faults, in GBK and in UTF-8, longer than a window
    while (texts[1].size() < 5000) {
        texts[0] += Piece(1);
        texts[1] += Piece(5);
    }
    for (const Route& route : ROUTES)
        for (const size_t offset : {0U, 1U, 40U, 700U})
            for (const std::string& text : texts) {
                std::string plain = text + std::string(20000, '\0');
                std::string fast = plain;
                SwitchFastPaths(false);
                const size_t expected = route.convert(plain.data(), 4000, plain.data() + offset, 15000);
                SwitchFastPaths(true);
                EXPECT_EQ(route.convert(fast.data(), 4000, fast.data() + offset, 15000), expected)
                    << route.name;
                EXPECT_TRUE(fast == plain) << route.name << " to an offset of " << offset;
            }
}

// Where the C library has the locale, both forms of the locale routes must give what its own functions give.
TEST_F(FastPaths, AnswerAsTheCLibraryForEveryCharacter)
{
    if (setlocale(LC_ALL, "zh_CN.gbk") == nullptr || std::string(nl_langinfo(CODESET)) != "GBK")
        GTEST_SKIP() << "no locale zh_CN.gbk";
    const std::string prefixes[] = {"", "abc", std::string(41, 'x'), "\xB0\xA1\xD6\xD0",
                                    std::string(1100, '\xB0')};
    const auto check = [&](const Route& route, const std::string& text) {
        for (const std::string& prefix : prefixes) ASSERT_NO_FATAL_FAILURE(Compare(route, prefix + text, 0));
    };
    for (unsigned pair = 0x100; pair < 0x10000; ++pair) {
        const char bytes[] = {static_cast<char>(pair >> 8), static_cast<char>(pair & 0xFF), 0};
        ASSERT_NO_FATAL_FAILURE(check(ROUTES[3], bytes));
    }
    for (unsigned unit = 1; unit < 0x10000; ++unit) {
        unsigned char utf8[7] = {};
        unicode_to_utf8_one(unit, utf8, 6);
        const std::string text = reinterpret_cast<char*>(utf8);
        ASSERT_NO_FATAL_FAILURE(Compare(ROUTES[5], text, 0));
        ASSERT_NO_FATAL_FAILURE(
            Compare(ROUTES[5], "\xEF\xBB\xBF-\xE4\xB8\xAD" + text + std::string(40, '-'), 0));
    }
}
}  // namespace
