// Gradient descent is one step after another, so only the drawing of the samples runs beside it.
#include "Training.h"

#include "Progress.h"
#include "Rounding.h"
#include "SampleStream.h"

namespace
{
constexpr uint64_t REPORTED = 500'000;  // samples between two lines of the report

double RateAt(uint64_t sample, const Recipe& recipe)
{
    if (sample * 100 < recipe.samples * recipe.slowFrom) return 1.0;
    return sample * 100 < recipe.samples * recipe.slowestFrom ? recipe.slowRate : recipe.slowestRate;
}

// Doubtful states fall silent, and the rest learn to do without them.
void SilenceDoubtful(CRegression& regression, const Ingredients& from)
{
    const ForeignPairs none;
    const CRounding rounding(regression, from, none);
    for (Feature& feature : regression.Features())
        feature.silent = feature.silent || rounding.IsDoubtful(feature);
}

void Learn(CRegression& regression, const Ingredients& from, const CSampleSource& source)
{
    const Recipe& recipe = from.recipe;
    CSampleStream stream(source, recipe.seed, recipe.samples);
    CProgress progress("training", recipe.samples);
    uint64_t wrong = 0;
    for (uint64_t n = 1; n <= recipe.samples; ++n) {
        wrong += regression.Learn(stream.Next(), RateAt(n, recipe));
        if (n == recipe.samples / 3 || n == recipe.samples) SilenceDoubtful(regression, from);
        progress.Show(n);
        if (n % REPORTED == 0) {
            progress.Say(std::to_string(n / 1000) + "k samples, " +
                         std::to_string(100 * static_cast<double>(wrong) / REPORTED) +
                         " % of the last wrong");
            wrong = 0;
        }
    }
}
}  // namespace

void TrainValues(States& states, const Ingredients& from, const CSampleSource& source)
{
    CRegression regression(states, from);
    Learn(regression, from, source);
    const ForeignPairs foreign = CountForeignPairs(from, source);
    const CRounding rounding(regression, from, foreign);
    for (const Feature& feature : regression.Features())
        states[*feature.name].value = rounding.ValueOf(feature);
    // A lead byte at the very start counts for all alike: two pairs are otherwise refused if one is doubtful.
    for (unsigned lead = 0x81; lead < 0xFF; ++lead)
        states[{.region = REGION_START, .path = OneByte(lead)}] = {.value = PackDigits({1, 1, 1, 1})};
}
