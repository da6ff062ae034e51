// ASCII at the start of a text; see AsciiStart.h.
#include "AsciiStart.h"

#include <algorithm>

namespace
{
// Of what a pair may say, so that two are hardly more than what is taken back.
constexpr int MOST_FOR_UNICODE = 8;
constexpr int TAKEN_BACK[] = {7, 6};  // by the two bytes of the fourth pair
constexpr int SINGLE_PAIR = 2;  // held back from the first pair, which may be all, and added to the second

// Pairs that UTF-16LE does not lose by: it needs positive states.
bool IsForgiven(int value)
{
    return value == TRIE_VALUE_NONE || UnpackTrieValue(value).unicode > 0;
}

// What a pair says for UTF-16LE, and `more`, within limits.
int Limited(int value, int more)
{
    if (value == TRIE_VALUE_NONE) return value;
    const TrieAdjustments add = UnpackTrieValue(value);
    const int others = std::max({add.gbk, add.big5, add.utf8}), lead = add.unicode - others;
    if (lead <= 0) return PackTrieValue(0, add);
    const int wanted = std::min(lead + more, MOST_FOR_UNICODE);
    if (wanted == 0) return TRIE_VALUE_NONE;
    const int digit = std::clamp(others + wanted, 1, 10);
    return PackTrieValue(0, {digit - wanted, digit - wanted, digit, digit - wanted});
}

Region After(int pairs)
{
    return RegionOf(REGION_ASCII, pairs - 1);
}

Region Within(int pairs)
{
    return RegionOf(REGION_ASCII_TRAIL, pairs - 1);
}

std::string Text(unsigned byte)
{
    return {static_cast<char>(byte)};
}

bool IsText(unsigned byte)
{
    return (byte >= 0x20 && byte < 0x7F) || byte == '\t' || byte == '\n' || byte == '\r' || byte == 0x1B;
}

bool IsText(const std::string& path)
{
    return std::all_of(path.begin(), path.end(),
                       [](char c) { return IsText(static_cast<unsigned char>(c)); });
}

int Taken(int units)
{
    return PackTrieValue(0, {1 + units, 1 + units, 1, 1 + units});
}

int GivenBack(int units)
{
    return PackTrieValue(0, {1 - units / 2, 1 - units / 2, 1 + (units + 1) / 2, 1 - units / 2});
}

// Two pairs each in a state of its own, as in M.
void AddOwnPairs(States& states)
{
    const States before = states;
    for (const auto& [name, state] : before) {
        if (name.region != REGION_MAIN || name.path.size() != 2 || !IsText(name.path) ||
            !IsForgiven(state.value))
            continue;
        AddState(states, REGION_START, name.path);
        AddState(states, After(1), name.path);
        states[{REGION_START, name.path}] = {Limited(state.value, -SINGLE_PAIR), After(1)};
        states[{After(1), name.path}] = {Limited(state.value, SINGLE_PAIR), After(2)};
    }
    for (unsigned byte = 0x80; byte < 0x100; ++byte) {
        AddState(states, After(1), Text(byte));
        states[{After(1), Text(byte)}].value = GivenBack(SINGLE_PAIR);
    }
}

// From the third pair on by single bytes: which pair it is, not what it is made of.
void AddCount(States& states)
{
    for (const int pairs : {2, 3, 4})
        for (unsigned byte = 0; byte < 0x100; ++byte) {
            const int taken = pairs == 4 ? TAKEN_BACK[0] + TAKEN_BACK[1] : 0;  // so far, before this pair
            const bool last = pairs == 3, again = pairs == 4;
            AddState(states, After(pairs), Text(byte));
            AddState(states, Within(pairs), Text(byte));
            State& low = states[{After(pairs), Text(byte)}];
            State& high = states[{Within(pairs), Text(byte)}];
            if (IsText(byte)) {
                low = {last ? Taken(TAKEN_BACK[0]) : TRIE_VALUE_NONE, Within(pairs)};
                high = {last ? Taken(TAKEN_BACK[1]) : TRIE_VALUE_NONE, After(std::min(pairs + 1, 4))};
            } else {
                if (again) low.value = GivenBack(taken);
                if (again || last) high.value = GivenBack(last ? TAKEN_BACK[0] : taken);
                if (byte < 0x80) high.onward = REGION_MAIN;  // a unit of UTF-16LE
            }
        }
}

// Behind a pair that cannot be UTF-16LE.
void AddAsciiOnly(States& states)
{
    for (auto& [name, state] : states)
        if (name.region == REGION_MAIN && name.path.size() == 2 && IsText(name.path) &&
            !IsForgiven(state.value))
            state.onward = REGION_ASCII_ONLY;
    for (unsigned byte = 0; byte < 0x80; ++byte) {
        if (IsText(byte)) states[{REGION_ASCII_ONLY, Text(byte)}].onward = REGION_ASCII_ONLY_TRAIL;
        states[{REGION_ASCII_ONLY_TRAIL, Text(byte)}].onward = IsText(byte) ? REGION_ASCII_ONLY : REGION_MAIN;
    }
}
}  // namespace

void AddAsciiStart(States& states)
{
    AddAsciiOnly(states);
    AddOwnPairs(states);
    AddCount(states);
}
