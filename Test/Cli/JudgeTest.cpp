// What the program takes a text for, and what it makes of that: tables.
#include <Margin.h>

#include "Decision.h"
#include "Lines.h"
#include "StrayLines.h"
#include "Support.h"

using namespace std::string_literals;

namespace
{
const std::string GBK_TEXT =
    "\xD6\xD0\xCE\xC4\xD7\xD6\xB7\xFB\xB1\xE0\xC2\xEB\xB5\xC4\xCE\xC4\xBC\xFE\xA3\xAC\n";
const std::string UTF8_TEXT = "中文字符编码的文件，\n";
const std::string BIG5_TEXT = "\xA4\xA4\xA4\xE5\xA6\xE6\xA4\xB8\xA1\x41\xBD\xD0\xB0\xDD\xB1\x7A\n";

std::string Turned(std::string text)
{
    for (size_t i = 0; i + 1 < text.size(); i += 2) std::swap(text[i], text[i + 1]);
    return text;
}

TEST(Judge, IdentifiesWhatItReads)
{
    const LoadedModel model;
    const std::string wide =
        "\x2D\x4E\x87\x65\x57\x5B\x26\x7B\x16\x7F\x01\x78\x84\x76\x87\x65\xF6\x4E\x0C\xFF\n\0"s;
    const struct {
        std::string text;
        const char* name;
        int leastMargin, mostMargin;
        bool isDoubtful;
    } cases[] = {
        {GBK_TEXT, "GBK", ENOUGH_MARGIN, MOST_MARGIN, false},
        {BIG5_TEXT, "Big5", ENOUGH_MARGIN, MOST_MARGIN, false},
        {UTF8_TEXT, "UTF-8", MOST_MARGIN, MOST_MARGIN, false},
        {wide, "UTF-16LE", ENOUGH_MARGIN, MOST_MARGIN, false},
        {Turned(wide), "UTF-16BE", MOST_MARGIN, MOST_MARGIN, false},
        {"\xFF\xFE\0\0a\0\0\0"s, "UTF-32LE", MOST_MARGIN, MOST_MARGIN, false},
        {"\0\0\x4E\x2D\0\0\x65\x87"s, "UTF-32BE", MOST_MARGIN, MOST_MARGIN, false},
        {GBK_TEXT + "\x95\x32\x82\x36", "GB18030", ENOUGH_MARGIN, MOST_MARGIN, false},
        {"plain text\n", "ASCII", MOST_MARGIN, MOST_MARGIN, false},
        {"~{VPND~}\n", "HZ", MOST_MARGIN, MOST_MARGIN, false},
        {"+Ti1lhw-\n", "UTF-7", MOST_MARGIN, MOST_MARGIN, true},
        {"\x1B$)A\x0EVPND\x0F\n", "ISO-2022-CN", MOST_MARGIN, MOST_MARGIN, false},
        {"x = a+b; ~{;~}", "ASCII", MOST_MARGIN, MOST_MARGIN, false},
        {"caf\xE9", nullptr, 0, ENOUGH_MARGIN - 1, false},
        {"\xCF\xB5\xCD\xB3", "GBK", 0, MOST_MARGIN, false},
    };
    for (const auto& c : cases) {
        const Identity identity = Identify(c.text, true);
        SCOPED_TRACE(::testing::PrintToString(c.text));
        EXPECT_GE(identity.margin, c.leastMargin);
        EXPECT_LE(identity.margin, c.mostMargin);
        if (c.name == nullptr) continue;
        EXPECT_EQ(NameOf(identity.encoding), c.name);
        EXPECT_EQ(!identity.doubt.empty(), c.isDoubtful);
    }
}

// Every answer holds for a text that goes on behind the head, wherever that ends.
TEST(Judge, TakesAHeadForWhatTheWholeIs)
{
    const LoadedModel model;
    for (const std::string* const text : {&GBK_TEXT, &BIG5_TEXT, &UTF8_TEXT}) {
        const Encoding* const whole = Identify(*text + *text, true).encoding;
        for (size_t cut = 0; cut < 4; ++cut)
            EXPECT_EQ(Identify((*text + *text).substr(0, 2 * text->size() - 1 - cut), false).encoding, whole)
                << NameOf(whole) << ' ' << cut;
    }
}

TEST(Judge, DecidesWhatMayBeConverted)
{
    const LoadedModel model;
    enum What { CONVERTED, SAME, REACHED, DOUBTFUL };
    const struct {
        std::string text;
        const Encoding *from, *to;
        bool force;
        What what;
    } cases[] = {
        {GBK_TEXT, nullptr, &UTF8, false, CONVERTED},
        {GBK_TEXT, nullptr, &GBK, false, SAME},
        {GBK_TEXT, nullptr, &GB18030, false, SAME},
        {GBK_TEXT, &BIG5, &GBK, false, REACHED},
        {GBK_TEXT, &BIG5, &UTF8, false, CONVERTED},
        {UTF8_TEXT, &GBK, &UTF8, false, REACHED},
        {UTF8_TEXT, &GBK, &UTF8, true, CONVERTED},
        {UTF8_TEXT, &GBK, &UTF16LE, false, DOUBTFUL},
        {UTF8_TEXT, &FindEncoding("latin1").encoding[0], &UTF16LE, false, DOUBTFUL},
        {"\xEF\xBB\xBF" + UTF8_TEXT, &GBK, &UTF16LE, true, DOUBTFUL},
        {"ascii", nullptr, &BIG5, false, SAME},
        {"ascii", nullptr, &UTF16LE, false, CONVERTED},
        {"caf\xE9", nullptr, &UTF8, false, DOUBTFUL},
        {"", nullptr, &UTF16LE, false, SAME},
    };
    for (const auto& c : cases) {
        ConvertOptions options;
        options.from = c.from;
        options.to = c.to;
        options.force = c.force;
        options.sure = ENOUGH_MARGIN;
        const Decision decision = Decide(c.text, true, options);
        const What what = !decision.identity.doubt.empty() ? DOUBTFUL
                          : decision.reached               ? REACHED
                          : decision.same                  ? SAME
                                                           : CONVERTED;
        EXPECT_EQ(what, c.what) << ::testing::PrintToString(c.text) << " to " << c.to->name;
    }
}

TEST(Judge, SeesLinesInOtherEncodings)
{
    const LoadedModel model;
    const std::string text = GBK_TEXT + UTF8_TEXT + "ascii\n" + BIG5_TEXT + GBK_TEXT;
    LineReader lines(text, ENOUGH_MARGIN);
    EXPECT_EQ(lines.EncodingOfLine(GBK_TEXT), &GBK);
    EXPECT_EQ(lines.EncodingOfLine(UTF8_TEXT), &UTF8);
    EXPECT_EQ(lines.EncodingOfLine(BIG5_TEXT), &BIG5);
    EXPECT_EQ(lines.EncodingOfLine("ascii\r\n"), &ASCII);
    EXPECT_EQ(lines.EncodingOfLine("\xD2\xBB\n"), &GBK) << "as most lines are";
    EXPECT_EQ(lines.Counts(), "1 in ASCII, 1 in Big5, 2 in GBK and 1 in UTF-8");
    EXPECT_FALSE(lines.AreAllIn(GBK));

    StrayLines stray(9);
    stray.Pass(GBK_TEXT + "ascii\nso: " + UTF8_TEXT);
    stray.Pass(GBK_TEXT + "中文\n" + UTF8_TEXT + GBK_TEXT + UTF8_TEXT.substr(0, 12));
    ASSERT_EQ(stray.Found().count, 3U);
    EXPECT_EQ(stray.Found().described[0].line, 3U);
    EXPECT_EQ(stray.Found().described[0].column, 5U);
    EXPECT_EQ(stray.Found().described[1].line, 6U);
    EXPECT_EQ(stray.Found().described[2].line, 8U);
}
}  // namespace
