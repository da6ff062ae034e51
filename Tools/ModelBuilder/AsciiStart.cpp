// ASCII at the start of a text; see AsciiStart.h.
#include "AsciiStart.h"

#include <algorithm>

namespace
{
// What the first and second pair may say, and what is taken back by the two bytes of the fourth: all of it.
// The third may say a little that stays. Its second byte and the fourth pair's take more back if no unit has
// them for its high byte.
constexpr int MOST_FOR_UNICODE = 8, MOST_OF_THIRD = 4;
constexpr int TAKEN_BACK[] = {8, 8};
constexpr int TAKEN_BY_STRANGER = 1;
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

// Of a unit of UTF-16LE in use: of hanzi, signs, frames, kana.
bool MayBeHigh(unsigned byte)
{
    return byte >= 0x4E || byte == 0x20 || byte == 0x25 || byte == 0x30;
}

// A carriage return and an escape are text with what goes with them. Before a letter they are a frequent
// hanzi.
bool IsTextPair(const std::string& pair)
{
    if (pair[0] == '\r') return pair[1] == '\n';
    if (pair[0] == '\x1B') return pair[1] == '[';
    return IsText(ByteAt(pair, 0)) && IsText(ByteAt(pair, 1));
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
        if (name.region != REGION_MAIN || name.path.size() != 2 || !IsTextPair(name.path) ||
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
                const int more = again || MayBeHigh(byte) ? 0 : TAKEN_BY_STRANGER;
                const int units = more + (last ? TAKEN_BACK[1] : 0);
                high = {units > 0 ? Taken(units) : TRIE_VALUE_NONE, After(std::min(pairs + 1, 4))};
            } else {
                if (again) low.value = GivenBack(taken);
                if (again || last) high.value = GivenBack(last ? TAKEN_BACK[0] : taken);
                if (byte < 0x80) high.onward = REGION_MAIN;  // a unit of UTF-16LE
            }
        }
}

// Third pairs that speak for UTF-16LE.
void AddThirdPairs(States& states)
{
    const States before = states;
    for (const auto& [name, state] : before) {
        if (name.region != REGION_MAIN || name.path.size() != 2 || !IsTextPair(name.path) ||
            state.value == TRIE_VALUE_NONE)
            continue;
        const TrieAdjustments add = UnpackTrieValue(state.value);
        if (add.unicode <= add.gbk) continue;
        AddState(states, After(2), name.path);
        states[{After(2), name.path}] = {GivenBack(std::min(add.unicode - add.gbk, MOST_OF_THIRD)), After(3)};
    }
}

// Hanzi among what is counted.
void AddHanziInCount(States& states)
{
    for (const int pairs : {2, 3, 4})
        for (const unsigned low : {0x0DU, 0x1BU})
            for (unsigned high = 0x4E; high < 0x7F; ++high) {
                const std::string pair = Text(low) + Text(high);
                if (IsTextPair(pair)) continue;
                const int value = pairs == 2   ? states.at({REGION_MAIN, pair}).value
                                  : pairs == 3 ? GivenBack(TAKEN_BACK[0])
                                               : GivenBack(TAKEN_BACK[0] + TAKEN_BACK[1]);
                AddState(states, After(pairs), pair);
                states[{After(pairs), pair}] = {value, REGION_MAIN};
            }
}

// Behind a pair that cannot be UTF-16LE.
void AddAsciiOnly(States& states)
{
    for (auto& [name, state] : states)
        if (name.region == REGION_MAIN && name.path.size() == 2 && IsTextPair(name.path) &&
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
    AddThirdPairs(states);
    AddHanziInCount(states);
}
