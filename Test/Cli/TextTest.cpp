// The program's way with text, from inside: decoders and encoders on pieces of any size, beside the C
// library's iconv and beside themselves character by character; line ends and declarations.
#include <iconv.h>

#include "Conversion.h"
#include "Support.h"
#include "TextChanges.h"

using namespace std::string_literals;

namespace
{
// Characters of every kind that encodings treat apart: ASCII, two and three bytes of UTF-8, hanzi, kana, the
// private area, beyond U+FFFF.
const std::u32string LETTERS =
    U"aZ ~\n\té×жαא中文汉字编码漢字編碼龍の한€　，。\uE000\uFFFD\u2550𠮷😀\U0010FFFD";

std::string ByIconv(const std::u32string& text, const std::string& encoding)
{
    const iconv_t handle = iconv_open(encoding.c_str(), "UTF-32LE");
    EXPECT_NE(handle, iconv_t(-1)) << encoding;
    char* from = reinterpret_cast<char*>(const_cast<char32_t*>(text.data()));
    size_t left = 4 * text.size();
    std::string out(8 * text.size() + 16, '\0');
    char* to = out.data();
    size_t room = out.size();
    EXPECT_EQ(iconv(handle, &from, &left, &to, &room), 0U) << encoding;
    iconv(handle, nullptr, nullptr, &to, &room);
    iconv_close(handle);
    out.resize(out.size() - room);
    return out;
}

// In pieces, the last of which alone is said to be the last.
std::string Converted(const std::string& text, const Encoding& from, const Encoding& to, Random& random,
                      Losses* losses = nullptr)
{
    Conversion conversion(from, &to, 100);
    std::string out;
    for (size_t used = 0, end = 0; used < text.size();) {
        end =
            std::min(text.size(), std::max(end, used) + 1 + random.Below(random.Below(8) == 0 ? 40000 : 40));
        used += conversion.Pass(std::string_view(text).substr(used, end - used), end == text.size(), out);
    }
    if (losses != nullptr) *losses = conversion.Lost();
    return out;
}

std::u32string RandomText(Random& random, const std::u32string& letters, unsigned most)
{
    std::u32string text;
    const bool isMostlyAscii = random.Below(2) == 0;
    for (unsigned left = random.Below(most); left > 0; --left)
        text += isMostlyAscii && random.Below(50) != 0
                    ? U'b'
                    : letters[random.Below(static_cast<unsigned>(letters.size()))];
    return text;
}

TEST(Text, UnicodeIsTheSameInAllItsForms)
{
    const LoadedModel model;
    Random random;
    const Encoding* const forms[] = {&UTF8, &UTF16LE, &UTF16BE, &UTF32LE, &UTF32BE, &GB18030};
    for (int round = 0; round < 60; ++round) {
        const std::u32string text = RandomText(random, LETTERS, round % 10 == 0 ? 30000 : 300);
        for (const Encoding* const from : forms)
            for (const Encoding* const to : forms) {
                Losses losses;
                const std::string out = Converted(ByIconv(text, from->name), *from, *to, random, &losses);
                ASSERT_EQ(out, ByIconv(text, to->name)) << from->name << " to " << to->name;
                ASSERT_EQ(losses.count, 0U) << from->name << " to " << to->name;
            }
    }
}

// Whether pieces went at the engine's speed or character by character must not be seen.
TEST(Text, PairsAreReadAndWrittenByTheirTablesInAnyPieces)
{
    const LoadedModel model;
    Random random;
    for (const Encoding* const encoding : {&GBK, &BIG5}) {
        const auto decoder = MakeDecoder(*encoding);
        std::vector<std::string> pairs;
        for (unsigned lead = 0x81; lead <= 0xFE; ++lead)
            for (unsigned trail = 0x40; trail <= 0xFE; ++trail) {
                const std::string pair = {static_cast<char>(lead), static_cast<char>(trail)};
                const Character character = decoder->First(pair);
                if (character.fault == Fault::NONE && character.length == 2) pairs.push_back(pair);
            }
        ASSERT_GT(pairs.size(), 13000U);
        for (int round = 0; round < 100; ++round) {
            std::string text, expected;
            uint64_t faults = 0;
            for (unsigned left = random.Below(9000); left > 0; --left) {
                const unsigned kind = random.Below(3000);
                const std::string piece = kind == 0   ? "\xFF"s
                                          : kind == 1 ? "\x81\x20"s
                                          : kind < 300
                                              ? "x"s
                                              : pairs[random.Below(static_cast<unsigned>(pairs.size()))];
                text += piece;
                std::u16string units;
                if (kind > 1)
                    AppendUnits(units, decoder->First(piece).codePoint);
                else
                    units = kind == 0 ? u"\uFFFD"s : u"\uFFFD "s;
                faults += kind <= 1;
                for (const char16_t unit : units) {
                    expected += static_cast<char>(unit & 0xFF);
                    expected += static_cast<char>(unit >> 8);
                }
            }
            Losses losses;
            ASSERT_EQ(Converted(text, *encoding, UTF16LE, random, &losses), expected) << encoding->name;
            ASSERT_EQ(losses.count, faults) << encoding->name;
            const std::string back = Converted(expected, UTF16LE, *encoding, random);
            ASSERT_EQ(Converted(back, *encoding, UTF16LE, random).size(), expected.size()) << encoding->name;
        }
    }
}

TEST(Text, LossesHaveTheirPlaces)
{
    const LoadedModel model;
    Random random;
    const struct {
        std::string text;
        const Encoding *from, *to;
        uint64_t line, column;
        std::string what;
    } cases[] = {
        {"ab\nc\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80z", &UTF8, &GBK, 2, 4,
         "U+1F600 (F0 9F 98 80) does not exist in GBK"},
        {"\xE4\xB8\xAD\n\n\xE4\xB8", &UTF8, &UTF16LE, 3, 1, "the text ends inside a character: E4 B8"},
        {"x\xED\xA0\x80", &UTF8, &UTF16LE, 1, 2, "ED is not a character in UTF-8"},
        {"\xD6\xD0\xA2\xA0", &GBK, &UTF8, 1, 2, "A2 A0 is not a character in GBK"},
        {"a\0\0\xDC"s, &UTF16LE, &UTF8, 1, 2, "00 DC is half a surrogate pair"},
        {"\0\x11\0\0"s, &UTF32BE, &UTF8, 1, 1, "00 11 00 00 is not a character in UTF-32BE"},
        {"\xE4\xB8\xAD", &UTF8, &ASCII, 1, 1, "U+4E2D (E4 B8 AD) does not exist in ASCII"},
    };
    for (const auto& c : cases) {
        Losses losses;
        Converted(c.text, *c.from, *c.to, random, &losses);
        ASSERT_GE(losses.count, 1U) << c.what;
        EXPECT_EQ(losses.described[0].line, c.line) << c.what;
        EXPECT_EQ(losses.described[0].column, c.column) << c.what;
        EXPECT_EQ(losses.described[0].what, c.what);
    }
}

TEST(Text, LineEndsBecomeOneKindInAnyPieces)
{
    Random random;
    for (int round = 0; round < 2000; ++round) {
        std::u16string text, unix;
        for (unsigned left = random.Below(12); left > 0; --left) {
            const unsigned kind = random.Below(4);
            text += kind == 0 ? u"\r\n"s : kind == 1 ? u"\n"s : kind == 2 ? u"\r"s : u"x"s;
        }
        for (size_t i = 0; i < text.size(); ++i)
            if (text[i] != u'\n' || i == 0 || text[i - 1] != u'\r')
                unix += text[i] == u'\r' ? u'\n' : text[i];
        LineEnds ends(LineEnd::LF);
        std::u16string changed;
        for (size_t at = 0; at <= text.size();) {
            const size_t size = std::min<size_t>(1 + random.Below(3), text.size() - at);
            std::u16string piece = text.substr(at, size);
            ends.Change(piece, at + size == text.size());
            changed += piece;
            at += std::max<size_t>(size, 1);
        }
        ASSERT_EQ(changed, unix);
    }
}

TEST(Text, DeclarationsAreFoundWhereTheyCount)
{
    const struct {
        std::u16string text;
        const char* name;  // null: none
    } cases[] = {
        {u"<?xml version='1.0' encoding='GBK'?><a/>", "gbk"},
        {u"<a encoding='GBK'/>", nullptr},
        {u"<HTML><META http-equiv=Content-Type content=\"text/html; charset=gb2312\">", "gb2312"},
        {u"<meta charset=big5>", "big5"},
        {u"<p>charset=big5</p>", nullptr},
        {u"@charset \"gbk\";", "gbk"},
        {u"a { } @charset \"gbk\";", nullptr},
        {u"#!/usr/bin/python\n# -*- coding: cp936 -*-\n", "cp936"},
        {u"\n\n# -*- coding: cp936 -*-\n", nullptr},
        {u"/* vim: set fileencoding=gbk : */", "gbk"},
        {u"From: a@b\nContent-Type: text/plain;\n\tcharset=\"big5\"\n\nbody", "big5"},
        {u"From: a@b\n\nContent-Type: text/plain; charset=big5\n", nullptr},
        {u"the coding: gbk", nullptr},
    };
    for (const auto& c : cases) {
        const std::vector<Declaration> found = FindDeclarations(c.text);
        ASSERT_EQ(found.size(), c.name != nullptr ? 1U : 0U) << ::testing::PrintToString(c.text);
        if (c.name == nullptr) continue;
        EXPECT_EQ(found[0].name, c.name);
        EXPECT_EQ(found[0].length, found[0].name.size());
        std::u16string fixed = c.text;
        CheckDeclarations(fixed, UTF8, true);
        EXPECT_NE(fixed.find(u"utf-8"), std::u16string::npos) << c.name;
        EXPECT_TRUE(CheckDeclarations(fixed, UTF8, false).empty()) << c.name;
    }
}
}  // namespace
