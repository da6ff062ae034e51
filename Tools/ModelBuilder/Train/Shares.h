// How often characters stand where it matters: anywhere, at the end of a line, at its start.
#ifndef MODEL_BUILDER_SHARES_H
#define MODEL_BUILDER_SHARES_H

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "Ingredients.h"

using CharacterShares = std::map<wchar_t, double>;

struct Shares {
    CharacterShares anywhere, ends, starts;
    CharacterShares atEnd;                     // the part of a character's occurrences that end a line
    std::map<std::wstring, double> lastWords;  // two characters before a line end or ASCII
};

// Of Simplified or Traditional lines: prose and technical text in equal parts.
Shares SharesOf(const Ingredients& from, bool traditional);

// What the statistics do not hold has some share as well.
double ShareOf(const CharacterShares& shares, wchar_t character);

// The most frequent keys that `wanted` accepts.
template <typename Key, typename Predicate>
std::vector<Key> Top(const std::map<Key, double>& shares, size_t count, Predicate wanted)
{
    std::vector<std::pair<double, Key>> order;
    for (const auto& [key, share] : shares)
        if (wanted(key)) order.emplace_back(-share, key);
    std::sort(order.begin(), order.end());
    std::vector<Key> top;
    for (const auto& [share, key] : order)
        if (top.size() < count) top.push_back(key);
    return top;
}

#endif  // MODEL_BUILDER_SHARES_H
