// Encodings of training text, and the recipe's numbers by name.
#include <sstream>

#include "Encoder.h"
#include "Recipe.h"
#include "Support.h"
#include "TextFile.h"

namespace
{
TEST(Encoder, EncodesAndDecodesInEachEncoding)
{
    const CEncoder encoder(CODETRANS_SOURCE_DIRECTORY "/Data/Mappings");
    const struct {
        Candidate candidate;
        std::wstring text;
        std::string bytes;
    } CASES[] = {{CANDIDATE_GBK, L"a\u4E2D\u6587", "a\xD6\xD0\xCE\xC4"},
                 {CANDIDATE_BIG5, L"a\u4E2D\u6587", "a\xA4\xA4\xA4\xE5"},
                 {CANDIDATE_UTF8, L"a\u00E9\u4E2D\U0001F600", "a\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80"},
                 {CANDIDATE_UNICODE, L"a\u4E2D\U0001F600", "a\0\x2D\x4E\x3D\xD8\0\xDE"_b}};
    for (const auto& c : CASES) {
        EXPECT_EQ(encoder.Encode(c.candidate, c.text), c.bytes) << CANDIDATE_NAMES[c.candidate];
        EXPECT_TRUE(IsUtf8(c.bytes) == (c.candidate == CANDIDATE_UTF8)) << CANDIDATE_NAMES[c.candidate];
    }
    for (const auto& c : {CASES[0], CASES[1]}) {
        EXPECT_EQ(encoder.Decode(c.candidate, c.bytes), c.text);
        EXPECT_EQ(encoder.Decode(c.candidate, c.bytes.substr(0, 4)), L"") << "half a character";
    }
    EXPECT_EQ(encoder.Encode(CANDIDATE_GBK, L"\uAC00"), "") << "a character that GBK lacks";
}

TEST(Recipe, ChangesOneNumberByName)
{
    Recipe recipe;
    recipe.Set("samples=200");
    recipe.Set("mostAgainst=-2.5");
    EXPECT_EQ(recipe.samples, 200U);
    EXPECT_EQ(recipe.mostAgainst, -2.5);
    std::ostringstream printed;
    recipe.Print(printed);
    EXPECT_NE(printed.str().find("samples=200 samples\n"), std::string::npos) << printed.str();
}

TEST(Recipe, RefusesWhatIsNoneOfItsNumbers)
{
    for (const char* assignment : {"", "samples", "samples=", "samples=x", "samples=1.5", "samples=12 ",
                                   "samples=-1", "slowFrom=-1", "Samples=1", "sample=1"})
        EXPECT_THROW(Recipe().Set(assignment), std::runtime_error) << assignment;
}
}  // namespace
