// The table decoder, the UTF-8 codecs and the GBK encoder: tables of cases, and the whole of CodeTable
// against the C library's converter. Sources end at an unreadable page. Random text: FastPathsTest.cpp and
// Test/Fuzz.
#include <iconv.h>
#include <malloc.h>

#include <set>

#include "FastPaths.h"
#include "Support.h"

namespace
{
void AppendUnit(std::string& out, unsigned unit, size_t width)
{
    for (size_t i = 0; i < width; ++i) out += static_cast<char>(i < 4 ? unit >> (8 * i) & 0xFF : 0);
}

// ---- GBK and Big5

struct Decoded {
    std::string bytes;
    long errors;
};

Decoded Decode(int encoding, const std::string& text, unsigned long capacity)
{
    GuardedBuffer src(text);
    std::string dst(2 * text.size() + 8, '?');
    unsigned long length = capacity;
    const unsigned long result = GBKBig5_ToUnicode(encoding, src.data(), text.size(), dst.data(), length);
    EXPECT_EQ(result, length);
    EXPECT_EQ(dst.substr(length), std::string(dst.size() - length, '?')) << "written behind the end";
    return {dst.substr(0, length), CodeTrans_iTransErrCnt};
}

TEST(DoubleByte, DecodesByTable)
{
    const LoadedModel model(std::vector<TrieNode>{});
    // Entry i of the test model's GBK table is i; 12464 = 0x30B0 is the index of B0 A1.
    const struct {
        int encoding;
        std::string text;
        unsigned long capacity;
        std::string bytes;
        long errors;
    } cases[] = {
        {ENCODE_GBK, "", 8, "", 0},
        {ENCODE_GBK, "A\xB0\xA1", 8, "A\0\xB0\x30"_b, 0},
        {ENCODE_BIG5, "A\xB0\xA1", 8, "A\0\xB0\xB0"_b, 0},
        {ENCODE_UTF8, "A\xB0\xA1", 8, "A\0\0\0"_b, 0},
        {ENCODE_GBK, "\xB0", 8, "\xFF\xFE", 1},
        {ENCODE_GBK, "A\xB0", 8, "A\0\xFF\xFE"_b, 1},
        {ENCODE_GBK, "\xB0\n", 8, "\x30\0"_b, 0},
        {ENCODE_GBK, "\x80\x40\x80\x30", 8, "\0\0\0\0"_b, 0},
        {ENCODE_GBK, "\xFF\xFF", 8, "\xFF\x5F", 0},
        {ENCODE_GBK, "\0a"_b, 8, "\0\0a\0"_b, 0},
        {ENCODE_GBK, "abc", 4, "a\0b\0"_b, 0},
        {ENCODE_GBK, "abc", 5, "a\0b\0"_b, 0},
        {ENCODE_GBK, "abc", 6, "a\0b\0c\0"_b, 0},
        {ENCODE_GBK, "abc", 1, "", 0},
        {ENCODE_GBK, "abc", 0, "a\0b\0c\0"_b, 0},
    };
    for (const auto& c : cases) {
        const Decoded result = Decode(c.encoding, c.text, c.capacity);
        EXPECT_EQ(result.bytes, c.bytes) << testing::PrintToString(c.text) << ' ' << c.capacity;
        EXPECT_EQ(result.errors, c.errors) << testing::PrintToString(c.text);
    }
}

TEST(DoubleByte, DecodesOneUtf8Character)
{
    const struct {
        std::string text;
        int length;
        wchar_t cp;
    } cases[] = {{"", 1, 0xFEFF},
                 {"A", 1, 'A'},
                 {"\0"_b, 1, 0},
                 {"\xC3\xA9", 2, 0xE9},
                 {"\xC3", 2, 0xFEFF},
                 {"\xC3\x41", 2, 0xFEFF},
                 {"\xC0\x80", 2, 0},
                 {"\xE4\xB8\xAD", 3, 0x4E2D},
                 {"\xE4\xB8", 3, 0xFEFF},
                 {"\xE4\x41\xAD", 3, 0xFEFF},
                 {"\xED\xA0\x80", 3, 0xD800},
                 {"\xF0\x9F\x98\x80", 4, 0xFEFF},
                 {"\xF8", 5, 0xFEFF},
                 {"\xFD", 6, 0xFEFF},
                 {"\xFE", 1, 0xFEFF},
                 {"\x80", 1, 0xFEFF}};
    for (const auto& c : cases) {
        GuardedBuffer src(c.text);
        wchar_t cp = 'x';
        const int length = UTF8Char_ToUnicode(src.data(), c.text.size(), cp);
        EXPECT_TRUE(length == c.length && cp == c.cp) << testing::PrintToString(c.text);
    }
}

// ---- UTF-8

// Runs a decoder of zero-terminated text at an odd address and returns what it wrote; '?' follows.
template <typename Decoder>
std::string RunDecoder(const std::string& text, size_t room, Decoder decoder)
{
    GuardedBuffer src(text + '\0');
    std::string dst(room + 9, '?');
    const size_t size = decoder(src.data(), dst.data() + 1);
    EXPECT_EQ(dst.find_first_not_of('?', size + 1), std::string::npos) << "written behind the end";
    return dst.substr(1, size);
}

std::string WideWithTerminator(const std::string& text)
{
    return RunDecoder(text, 4 * text.size() + 2, [](char* src, char* dst) {
        return utf8_to_unicode(reinterpret_cast<unsigned char*>(src), reinterpret_cast<wchar_t*>(dst)) + 2;
    });
}

std::string Utf16WithTerminator(const std::string& text)
{
    return RunDecoder(text, 2 * text.size() + 1,
                      [](char* src, char* dst) { return 2 * static_cast<size_t>(utf8tou(src, dst)) + 1; });
}

TEST(Utf8, DecodersDifferOnlyInCheckingContinuations)
{
    const struct {
        const char* text;
        std::u32string lax, strict;
    } cases[] = {
        {"", U"", U""},
        {"A", U"A", U"A"},
        {"\xE4\xB8\xAD", U"\x4E2D", U"\x4E2D"},
        {"\xF0\x9F\x98\x80", U"", U""},
        {"\xC3", U"", U""},
        {"\xC3\x41", U"\xC1", U"A"},
        {"\xC3\xC3\xA9", U"\xC3", U"\xE9"},
        {"\xE4\x41\x42", {0x4042}, U"AB"},
        {"\xE4\xB8", U"", U""},
        {"a\xE4\xB8\x62", {'a', 0x4E22}, U"ab"},
        {"\x80\xFF\x61", U"a", U"a"},
        {"\xED\xA0\x80", {0xD800}, {0xD800}},
        {"\xF0\x61\x62\x63", U"abc", U"abc"},
        {"\xF0\x61\x80\x80\xF0\x80\x61\x80\xF0\x80\x80\x61", U"aaa", U"aaa"},
        {"\xEF\xBB\xBF\x41", {0xFEFF, 'A'}, {0xFEFF, 'A'}},
        {"\xC0\x80x", {0, 'x'}, {0, 'x'}},
    };
    for (const auto& c : cases) {
        std::string lax, strict;
        for (const char32_t u : c.lax) AppendUnit(lax, u, 4);
        for (const char32_t u : c.strict) AppendUnit(strict, u, 2);
        EXPECT_EQ(WideWithTerminator(c.text), lax + "\0\0"_b) << testing::PrintToString(c.text);
        EXPECT_EQ(Utf16WithTerminator(c.text), strict + "\0"_b) << testing::PrintToString(c.text);
    }
}

std::string EncodeWide(const std::wstring& wide)
{
    GuardedBuffer src(std::string(reinterpret_cast<const char*>(wide.data()), 4 * wide.size()));
    unsigned char* block = nullptr;
    const unsigned long size = unicode_to_utf8(reinterpret_cast<wchar_t*>(src.data()), wide.size(), &block);
    const std::string utf8(reinterpret_cast<char*>(block), size);
    const size_t whole = 3 * wide.size() + 1, allocated = malloc_usable_size(block);
    EXPECT_TRUE(allocated >= whole && (allocated < whole + 48 || whole > 1000)) << allocated;
    EXPECT_EQ(std::count(block + size, block + whole, 0), whole - size) << "all zero behind the text";
    free(block);
    return utf8;
}

TEST(Utf8, Encodes)
{
    EXPECT_EQ(EncodeWide(L""), "");
    EXPECT_EQ(EncodeWide(L"A\x10000\x4E2D"), "A\xE4\xB8\xAD");
    for (const size_t length : {8U, 13U, 100U})
        for (const Forms forms : {Forms::PLAIN, BestForms()}) {
            UseForms(forms);
            EXPECT_EQ(EncodeWide(std::wstring(length, 'a')), std::string(length, 'a'));
        }
    EXPECT_EQ(EncodeWide(std::wstring{'a', 0, 'b', 0xD800, static_cast<wchar_t>(-1), 0x7F, 0x80, 0x7FF, 0x800,
                                      0xFFFF}),
              "a\0b\xED\xA0\x80\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF"_b);
    unsigned char* block = reinterpret_cast<unsigned char*>(1);
    EXPECT_EQ(unicode_to_utf8(L"", 1UL << 62, &block), 0U) << "more than memory can hold";
    EXPECT_EQ(block, nullptr);

    std::wstring all;
    for (wchar_t cp = 1; cp < 0x10000; ++cp) all += cp;
    EXPECT_EQ(utf8_to_unicode(EncodeWide(all).c_str()), all);
}

TEST(Utf8, EncodesOneCodePointUpTo31Bits)
{
    const struct {
        unsigned long cp;
        std::string bytes;
    } cases[] = {{0, "\0"_b},
                 {0x7F, "\x7F"},
                 {0x80, "\xC2\x80"},
                 {0x7FF, "\xDF\xBF"},
                 {0xFFFF, "\xEF\xBF\xBF"},
                 {0x10000, "\xF0\x90\x80\x80"},
                 {0x1FFFFF, "\xF7\xBF\xBF\xBF"},
                 {0x3FFFFFF, "\xFB\xBF\xBF\xBF\xBF"},
                 {0x7FFFFFFF, "\xFD\xBF\xBF\xBF\xBF\xBF"},
                 {0x80000000, ""}};
    for (const auto& c : cases) {
        unsigned char out[6];
        const int size = unicode_to_utf8_one(c.cp, out, 6);
        EXPECT_EQ(std::string(out, out + size), c.bytes) << std::hex << c.cp;
        EXPECT_EQ(unicode_to_utf8_one(c.cp, out, 5), 0);
        EXPECT_EQ(unicode_to_utf8_one(c.cp, nullptr, 6), 0);
    }
}

TEST(Utf8, Strings)
{
    EXPECT_EQ(utf8_to_unicode("\xEF\xBB\xBF\x41"), L"\xFEFF\x41");
    EXPECT_EQ(UtfStr2Unicode("\xEF\xBB\xBF\x41"), L"A");
    EXPECT_EQ(UtfStr2Unicode("\xEF\xBB\xBF\xEF\xBB\xBF\x41"), L"\xFEFF\x41") << "exactly one is skipped";
    EXPECT_EQ(UtfStr2Unicode("\xEF\xBB\x41"), (std::wstring{0xFEC1}));
    EXPECT_EQ(UtfStr2Unicode(""), L"");
    EXPECT_EQ(unicode_to_utf8(std::wstring{0x4E2D, 0, 'x'}), "\xE4\xB8\xAD");

    testing::internal::CaptureStdout();
    unsigned char utf8[] = "A\xE4\x0F";
    dump_utf8(utf8);
    wchar_t wide[] = {0x4E2D};
    dump_unicode(wide, 3);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "41E40F\n2D4E00\n");
}

// ---- GBK encoder

TEST(GbkEncoder, TableIsTheCLibrarysConverter)
{
    const iconv_t converter = iconv_open("GBK", "UTF-16LE");
    ASSERT_NE(converter, reinterpret_cast<iconv_t>(-1));
    std::set<unsigned> codes;
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        std::string utf16;
        AppendUnit(utf16, unit, 2);
        unsigned char gbk[2] = {};
        char *in = utf16.data(), *out = reinterpret_cast<char*>(gbk);
        size_t inLeft = 2, outLeft = 2;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        const bool encodable = iconv(converter, &in, &inLeft, &out, &outLeft) == 0;
        const unsigned code = !encodable ? 0U : outLeft == 1 ? gbk[0] : gbk[0] * 256U + gbk[1];
        ASSERT_EQ(CodeTable[unit], code) << std::hex << unit;
        if (code >= 0x100) {
            EXPECT_TRUE(codes.insert(code).second) << std::hex << code;
        }
    }
    iconv_close(converter);
    EXPECT_EQ(codes.size(), 21791U);
    EXPECT_EQ(CodeTable[0x20AC], 0x80);
    EXPECT_EQ(CodeTable[0x80] | CodeTable[0xE000] | CodeTable[0xFFFD] | CodeTable[0xD800], 0);
}

TEST(GbkEncoder, EncodesUnits)
{
    const std::u16string units = {0x41, 0x4E2D, 0xB7, 0, 0xE000, 0x20AC, 0xD83D, 0xDE00, 0x3000, 0x80};
    const std::string expected = "A\xD6\xD0\xA1\xA4\0\xA1\xA1\0\x80\xA1\xA1\xA1\xA1\xA1\xA1\xA1\xA1"_b;
    std::string utf16;
    for (const char16_t u : units) AppendUnit(utf16, u, 2);
    GuardedBuffer src(utf16);
    std::string dst(32, '?');
    utoGbk(src.data(), dst.data(), units.size());
    EXPECT_EQ(dst, expected + "\0\0"_b + std::string(30 - expected.size(), '?'));
    utoGbk(nullptr, dst.data(), 0);
    EXPECT_EQ(dst.substr(0, 3), "\0\0\xD0"_b);
}
}  // namespace
