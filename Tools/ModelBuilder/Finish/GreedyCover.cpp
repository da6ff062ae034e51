// A gain only shrinks as others are chosen, so a remedy that is weighed again and still leads is the best:
// few of them need to be weighed again each time.
#include "GreedyCover.h"

#include <queue>
#include <unordered_map>

std::vector<uint32_t> GreedyCover(const std::vector<Mistake>& mistakes, size_t most)
{
    std::unordered_map<uint32_t, std::vector<size_t>> mends;  // by remedy, the mistakes
    for (size_t i = 0; i < mistakes.size(); ++i)
        for (const uint32_t remedy : mistakes[i].remedies) mends[remedy].push_back(i);
    std::vector<bool> isMended(mistakes.size());
    const auto gainOf = [&](uint32_t remedy) {
        double gain = 0;
        for (const size_t i : mends[remedy])
            if (!isMended[i]) gain += mistakes[i].weight;
        return gain;
    };
    std::priority_queue<std::pair<double, uint32_t>> queue;
    for (const auto& [remedy, list] : mends) queue.emplace(gainOf(remedy), remedy);

    std::vector<uint32_t> chosen;
    while (!queue.empty() && chosen.size() < most) {
        const uint32_t remedy = queue.top().second;
        queue.pop();
        const double gain = gainOf(remedy);
        if (gain == 0) continue;
        if (!queue.empty() && gain < queue.top().first) {
            queue.emplace(gain, remedy);
            continue;
        }
        chosen.push_back(remedy);
        for (const size_t i : mends[remedy]) isMended[i] = true;
    }
    return chosen;
}
