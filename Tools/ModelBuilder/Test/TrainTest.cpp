// Arithmetic that every machine does alike, one step of the regression, and a training small enough to
// follow.
#include <cmath>

#include "PortableMath.h"
#include "Regression.h"
#include "Support.h"
#include "TextFile.h"
#include "Training.h"

namespace
{
TEST(PortableMath, AgreesWithTheCLibrary)
{
    for (int i = 0; i < 1460; ++i) {
        const double x = -0.0137 * i, y = std::exp(0.0284 * (i - 730));  // 0 to -20, 1e-9 to 1e9
        EXPECT_LT(std::abs(PortableExp(x) / std::exp(x) - 1), 1e-7) << x;
        EXPECT_LT(std::abs(PortableLog(y) - std::log(y)), 1e-12) << y;
    }
    EXPECT_EQ(PortableExp(-40.1), 0);
}

// Simplified text is nothing but one hanzi, Traditional text another; ASCII is the letter a.
struct TinyData : TempFolder {
    TinyData()
    {
        std::filesystem::create_directory_symlink(CODETRANS_SOURCE_DIRECTORY "/Data/Mappings", "Mappings");
        std::filesystem::create_directory("Statistics");
        WriteBytes("Classes.txt", "s prose hans 1 100 9 S\nt prose hant 1 100 9 T\na ascii - 1 0 9 A\n");
        WriteBytes("Statistics/s.txt", "\u4E2D 100 \u4E2D100\n");
        WriteBytes("Statistics/t.txt", "\u570B 100 \u570B100\n");
        WriteBytes("Statistics/a.txt", "\\0A 1 a1\na 100 a99\\0A1\n");
    }
};

Recipe TinyRecipe()
{
    Recipe recipe;
    for (const char* change : {"samples=200", "worldSamples=0", "artSamples=0", "sparseSamples=0", "runs=0",
                               "escapes=0", "rareHanziSamples=0", "fourByteSamples=0", "machineText=0"})
        recipe.Set(change);
    return recipe;
}

TEST(Training, OneStepIsAdaGrads)
{
    const TinyData data;
    const Ingredients from(".", TinyRecipe());
    States states = BasicStates();
    const StateName ascii{.region = REGION_MAIN, .path = TwoBytes('-', 0)},
        hangul{.region = REGION_HANGUL, .path = "\x2D\xAC"};
    for (const StateName& name : {ascii, hangul}) AddState(states, name.region, name.path);
    states[ascii].onward = REGION_HANGUL;
    CRegression regression(states, from);
    regression.Learn({.bytes = ascii.path + hangul.path, .answer = CANDIDATE_UNICODE}, 1);
    // Softmax of four zeros is a quarter each: the gradients are 1/4, and 1/4 - 1 for the right answer.
    const auto step = [&](double gradient) {
        return -(from.recipe.learningRate + from.recipe.groupRate) * gradient /
               std::sqrt(gradient * gradient + from.recipe.smoothing);
    };
    ASSERT_EQ(regression.Features().size(), 2U);
    for (const Feature& feature : regression.Features()) {
        const Weights weight = regression.WeightOf(feature);
        EXPECT_NEAR(weight[CANDIDATE_UNICODE], step(0.25 - 1), 1e-6);
        EXPECT_NEAR(weight[CANDIDATE_GBK], feature.ascii ? 0 : step(0.25), 1e-6);
    }
}

// A pair that one encoding has and the others do not starts from the logarithm of its share over the mean of
// three, ln 3 or 3 units, and from -24 units for the others; all go up until the first is at its limit of 10.
// Training finds nothing to mend there. A unit of two ASCII bytes tells UTF-16LE from the rest, who stay
// equal.
TEST(Training, TwoHundredSamplesGiveDigitsThatCanBeFollowed)
{
    const TinyData data;
    const Ingredients from(".", TinyRecipe());
    const CSampleSource source(from);
    States states = BasicStates();
    const std::pair<std::string, Digits> COUNTED[] = {
        {"\xD6\xD0", {10, -9, -9, -9}}, {"\x87\xF8", {10, -9, -9, -9}}, {"\xB0\xEA", {-9, 10, -9, -9}}};
    const std::string units[] = {"\x2D\x4E", "\x0B\x57"};
    for (const auto& [pair, digits] : COUNTED) AddState(states, REGION_MAIN, pair);
    for (const std::string& path : units) AddState(states, REGION_MAIN, path);
    TrainValues(states, from, source);
    for (const auto& [pair, digits] : COUNTED)
        EXPECT_EQ(DigitsOf(states.at({REGION_MAIN, pair}).value), digits) << ToHex(pair);
    for (const std::string& unit : units) {
        const int digit = DigitsOf(states.at({REGION_MAIN, unit}).value)[CANDIDATE_UNICODE];
        EXPECT_GT(digit, 0) << ToHex(unit);
        EXPECT_EQ(states.at({REGION_MAIN, unit}).value, PackAllBut(CANDIDATE_UNICODE, digit, 0));
    }
}
}  // namespace
