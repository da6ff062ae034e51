// Which of many remedies to use when there are states for a few: the one that mends most, then the one that
// mends most of what is left, and so on.
#ifndef MODEL_BUILDER_GREEDY_COVER_H
#define MODEL_BUILDER_GREEDY_COVER_H

#include <cstddef>
#include <cstdint>
#include <vector>

struct Mistake {
    double weight = 1;
    std::vector<uint32_t> remedies;  // any one of them mends it; one that is named twice counts twice
};

// At most `most` remedies, the most useful first, and none that mends nothing more. Of two that mend as much,
// the larger number comes first.
std::vector<uint32_t> GreedyCover(const std::vector<Mistake>& mistakes, size_t most);

#endif  // MODEL_BUILDER_GREEDY_COVER_H
