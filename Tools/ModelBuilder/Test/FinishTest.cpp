// What is added after training.
#include <gtest/gtest.h>

#include "GreedyCover.h"

namespace
{
const std::vector<Mistake> MISTAKES = {
    {.weight = 1, .remedies = {1}},    {.weight = 1, .remedies = {1, 2}}, {.weight = 1, .remedies = {1, 2}},
    {.weight = 1, .remedies = {2, 3}}, {.weight = 0.5, .remedies = {3}},
};

TEST(GreedyCover, CountsOnlyWhatIsLeft)
{
    EXPECT_EQ(GreedyCover({MISTAKES.begin(), MISTAKES.end() - 1}, 9), (std::vector<uint32_t>{2, 1}));
    EXPECT_EQ(GreedyCover({MISTAKES[0], MISTAKES[1], MISTAKES[3], MISTAKES[4], MISTAKES[4]}, 9),
              (std::vector<uint32_t>{3, 1}));
}

TEST(GreedyCover, EndsAtTheMostAndWhereNothingIsLeft)
{
    EXPECT_EQ(GreedyCover(MISTAKES, 1).size(), 1u);
    EXPECT_EQ(GreedyCover(MISTAKES, 9), (std::vector<uint32_t>{2, 1, 3}));
    EXPECT_TRUE(GreedyCover({}, 9).empty());
}
}  // namespace
