// The counted start: one state a pair for the first two, one a byte from the third on.
#include "AsciiStart.h"

#include <algorithm>

#include "Detection.h"
#include "Likelihood.h"

namespace
{
// Pairs that UTF-16LE does not lose by: it needs positive states.
bool IsForgiven(int value)
{
    return value == TRIE_VALUE_NONE || DigitsOf(value)[CANDIDATE_UNICODE] > 0;
}

// What a pair says for UTF-16LE beyond the rest, and `more`, but `most` at most.
int Limited(int value, int more, int most)
{
    if (value == TRIE_VALUE_NONE) return value;
    const Digits add = DigitsOf(value);
    const int others = std::max({add[CANDIDATE_GBK], add[CANDIDATE_BIG5], add[CANDIDATE_UTF8]});
    const int lead = add[CANDIDATE_UNICODE] - others;
    if (lead <= 0) return PackDigits(add);
    const int wanted = std::min(lead + more, most);
    if (wanted == 0) return TRIE_VALUE_NONE;
    const int digit = std::clamp(others + wanted, 1, MostDigit(CANDIDATE_UNICODE));
    return PackAllBut(CANDIDATE_UNICODE, digit, digit - wanted);
}

Region After(int pairs)
{
    return RegionOf(REGION_ASCII, pairs - 1);
}

Region Within(int pairs)
{
    return RegionOf(REGION_ASCII_TRAIL, pairs - 1);
}

bool IsText(unsigned byte)
{
    return IsAsciiText(byte) || byte == 0x1B;
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
    return PackAllBut(CANDIDATE_UNICODE, 1, 1 + units);
}

int GivenBack(int units)
{
    return PackAllBut(CANDIDATE_UNICODE, 1 + (units + 1) / 2, 1 - units / 2);
}

// What the first two pairs can have said for UTF-16LE. The first holds some back, so its most is less.
int All(const Recipe& recipe)
{
    return 2 * recipe.mostOfPair - 1;
}

// UTF-16LE needs a positive digit, so what takes from it is positive for another encoding. That is GBK alone,
// which is the answer for ASCII.
int AllTaken(const Recipe& recipe)
{
    return PackDigits({1 + All(recipe), 0, 0, 1});
}

// GBK loses what it was given, and one unit more. It has a positive state already, which would decide a line
// of Latin letters with one to three accents. One unit behind Big5, which has none, it needs a hanzi.
int AllGivenBack(const Recipe& recipe)
{
    return PackDigits({-2 - All(recipe), 0, 0, 1});
}

// The first two pairs in states of their own, as in M. A byte beyond ASCII in place of the second gives back
// what the first held back.
void AddOwnPairs(States& states, const Recipe& recipe)
{
    const States before = states;
    for (const auto& [name, state] : before) {
        if (name.region != REGION_MAIN || name.path.size() != 2 || !IsTextPair(name.path) ||
            !IsForgiven(state.value))
            continue;
        AddState(states, REGION_START, name.path);
        AddState(states, After(1), name.path);
        states[{.region = REGION_START, .path = name.path}] = {
            .value = Limited(state.value, -recipe.heldBack, recipe.mostOfPair - 1), .onward = After(1)};
        states[{.region = After(1), .path = name.path}] = {
            .value = Limited(state.value, recipe.heldBack, recipe.mostOfPair), .onward = After(2)};
    }
    for (unsigned byte = 0x80; byte < 0x100; ++byte)
        states[{.region = After(1), .path = OneByte(byte)}].value = GivenBack(recipe.heldBack);
}

// From the third pair on by single bytes: which pair it is, not what it is made of. The first byte of the
// fourth pair takes all.
void AddCountedText(States& states, int pairs, unsigned byte, const Recipe& recipe)
{
    states[{.region = After(pairs), .path = OneByte(byte)}] = {
        .value = pairs == 3 ? AllTaken(recipe) : TRIE_VALUE_NONE, .onward = Within(pairs)};
    states[{.region = Within(pairs), .path = OneByte(byte)}] = {
        .value = pairs == 2 && !MayBeHigh(byte) ? Taken(recipe.takenByStranger) : TRIE_VALUE_NONE,
        .onward = After(std::min(pairs + 1, 4))};
}

// A byte that is no text gives back what was taken.
void AddEndOfCount(States& states, int pairs, unsigned byte, const Recipe& recipe)
{
    if (pairs == 4) states[{.region = After(pairs), .path = OneByte(byte)}].value = AllGivenBack(recipe);
    if (pairs >= 3) states[{.region = Within(pairs), .path = OneByte(byte)}].value = AllGivenBack(recipe);
    // The high byte of a unit of UTF-16LE leaves for where it is followed as that.
    if (IsLeadAndHighByte(byte)) AddState(states, Within(pairs), OneByte(byte));
    if (byte < 0x80) states[{.region = Within(pairs), .path = OneByte(byte)}].onward = REGION_MAIN;
}

void AddCount(States& states, const Recipe& recipe)
{
    for (const int pairs : {2, 3, 4})
        for (unsigned byte = 0; byte < 0x100; ++byte)
            (IsText(byte) ? AddCountedText : AddEndOfCount)(states, pairs, byte, recipe);
}

// Third pairs that speak for UTF-16LE.
void AddThirdPairs(States& states, const Recipe& recipe)
{
    const States before = states;
    for (const auto& [name, state] : before) {
        if (name.region != REGION_MAIN || name.path.size() != 2 || !IsTextPair(name.path) ||
            state.value == TRIE_VALUE_NONE)
            continue;
        const Digits add = DigitsOf(state.value);
        const int lead = add[CANDIDATE_UNICODE] - add[CANDIDATE_GBK];
        if (lead <= 0) continue;
        AddState(states, After(2), name.path);
        states[{.region = After(2), .path = name.path}] = {
            .value = GivenBack(std::min(lead, recipe.mostOfThirdPair)), .onward = After(3)};
    }
}

// Third and fourth pairs that are ASCII beyond doubt end the count: what follows says nothing for UTF-16LE,
// and nothing needs to be taken back from it.
void AddPlainAscii(States& states, const Ingredients& from)
{
    const CLikelihood likelihood(from);
    const States before = states;
    for (const auto& [name, state] : before) {
        if (name.region != REGION_MAIN || name.path.size() != 2 || !IsTextPair(name.path) ||
            !IsForgiven(state.value))
            continue;
        const CandidateShares shares = likelihood.Of(name.path);
        if (shares[CANDIDATE_GBK] < from.recipe.leastPlain ||
            shares[CANDIDATE_GBK] < from.recipe.plainOdds * shares[CANDIDATE_UNICODE])
            continue;
        for (const int pairs : {2, 3}) {
            AddState(states, After(pairs), name.path);
            states[{.region = After(pairs), .path = name.path}] = {
                .value = PackAllBut(CANDIDATE_UNICODE, LEAST_DIGIT, 0), .onward = REGION_ASCII_ONLY};
        }
    }
}

// Hanzi among what is counted.
void AddHanziInCount(States& states, const Recipe& recipe)
{
    for (const int pairs : {2, 3, 4})
        for (const unsigned low : {0x0DU, 0x1BU})
            for (unsigned high = 0x4E; high < 0x7F; ++high) {
                const std::string pair = TwoBytes(low, high);
                if (IsTextPair(pair)) continue;
                const int value = pairs == 2 ? states.at({.region = REGION_MAIN, .path = pair}).value
                                             : AllGivenBack(recipe);
                AddState(states, After(pairs), pair);
                states[{.region = After(pairs), .path = pair}] = {.value = value, .onward = REGION_MAIN};
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
        if (IsText(byte))
            states[{.region = REGION_ASCII_ONLY, .path = OneByte(byte)}].onward = REGION_ASCII_ONLY_TRAIL;
        states[{.region = REGION_ASCII_ONLY_TRAIL, .path = OneByte(byte)}].onward =
            IsText(byte) ? REGION_ASCII_ONLY : REGION_MAIN;
    }
}
}  // namespace

void AddAsciiStart(States& states, const Ingredients& from)
{
    const Recipe& recipe = from.recipe;
    AddAsciiOnly(states);
    AddOwnPairs(states, recipe);
    AddCount(states, recipe);
    AddThirdPairs(states, recipe);
    AddPlainAscii(states, from);
    AddHanziInCount(states, recipe);
}
