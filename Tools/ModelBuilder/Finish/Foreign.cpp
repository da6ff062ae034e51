// What betrays foreign text, and the ways back, one function each.
#include "Foreign.h"

#include "ForeignSequences.h"
#include "Shares.h"

namespace
{
// Controls, and a byte that no text of ours has.
bool IsStranger(unsigned byte)
{
    return IsUnusedControl(byte) || byte == 0xFF;
}

// Behind a lead byte or a control character: controls, and signs that do not end a field. A line or a field
// may end in half a character.
void AddBroken(States& states)
{
    const std::string signs = "#$%&()*+-.=?";
    for (unsigned byte = 1; byte < 0x100; ++byte)
        if (IsStranger(byte) || (byte < 0x80 && signs.find(static_cast<char>(byte)) != std::string::npos))
            states[{.region = REGION_BROKEN, .path = OneByte(byte)}] = {.value = COUNTS_AGAINST_UNICODE,
                                                                        .onward = REGION_FOREIGN};
}

// Zeros at the end fill a buffer; with something behind them they are data, and what it is remains to be
// seen.
void AddZeros(States& states)
{
    const std::string zeros(2, '\0');
    for (const Region region : {REGION_MAIN, REGION_FOREIGN}) AddState(states, region, zeros);
    states[{.region = REGION_MAIN, .path = zeros}].onward = REGION_ZEROS;
    // Big5 gets ahead without a positive state, so that data without a byte of 80 and above stays undecided,
    // too.
    Digits against{-2, -1, -2, LEAST_DIGIT};
    states[{.region = REGION_FOREIGN, .path = zeros}] = {.value = PackDigits(against),
                                                         .onward = REGION_FOREIGN};
    for (unsigned byte = 0; byte < 0x100; ++byte)
        states[{.region = REGION_ZEROS, .path = OneByte(byte)}] =
            byte == 0 ? State{.value = TRIE_VALUE_NONE, .onward = REGION_ZEROS}
                      : State{.value = COUNTS_AGAINST_UNICODE};
}

// Characters beyond U+FFFF in UTF-8: four bytes, of which the first two are F0 9F for emoji, F0 A0 to F0 AC
// for hanzi, F0 90 for old scripts.
bool OpensHighCharacter(unsigned second)
{
    return second == 0x90 || second == 0x9D || second == 0x9F || (second >= 0xA0 && second <= 0xAC);
}

void AddHighInUtf8(States& states)
{
    for (unsigned byte = 0x80; byte < 0xC0; ++byte) {
        states[{.region = REGION_SIGN_THIRD, .path = OneByte(byte)}].onward = REGION_SIGN_LAST;
        states[{.region = REGION_SIGN_LAST, .path = OneByte(byte)}].value = PackAllBut(CANDIDATE_UTF8, 10, 0);
    }
    for (unsigned second = 0x90; second < 0xB0; ++second) {
        if (!OpensHighCharacter(second)) continue;
        states[{.region = REGION_MAIN, .path = TwoBytes(0xF0, second)}] = {.value = TRIE_VALUE_NONE,
                                                                           .onward = REGION_SIGN_THIRD};
        // Behind another character of UTF-8, whose last byte would lead a pair.
        for (unsigned byte = 0x80; byte < 0xC0; ++byte) {
            const std::string pair = TwoBytes(byte, 0xF0), opened = pair + OneByte(second);
            if (!states.contains({.region = REGION_MAIN, .path = pair})) continue;
            AddState(states, REGION_AFTER, opened);
            states[{.region = REGION_AFTER, .path = pair}].value =
                states.at({.region = REGION_MAIN, .path = pair}).value;
            states[{.region = REGION_AFTER, .path = opened}].onward = REGION_SIGN_THIRD;
        }
    }
}

// The high byte of the first unit of emoji, of mathematical letters and of hanzi beyond U+FFFF, by its low
// byte.
bool IsHighSurrogateInUse(unsigned low)
{
    return (low >= 0x3C && low <= 0x3E) || low == 0x35 || (low >= 0x40 && low <= 0x73);
}

// Units that no text in UTF-16LE has: control characters, what is no character, and those with their bytes in
// the other order. Sound and tables of numbers are full of them.
void AddStrangeUnits(States& states)
{
    const State away{.value = COUNTS_AGAINST_UNICODE, .onward = REGION_FOREIGN};
    for (unsigned code = 1; code < 0xA0; ++code)
        if (IsUnusedControl(code) || code >= 0x80) {
            AddState(states, REGION_MAIN, TwoBytes(code, 0));
            states[{.region = REGION_MAIN, .path = TwoBytes(code, 0)}] = away;
        }
    for (const unsigned high : {0x0AU, 0x0DU, 0x20U}) {  // line ends and blanks in UTF-16BE
        AddState(states, REGION_MAIN, TwoBytes(0, high));
        states[{.region = REGION_MAIN, .path = TwoBytes(0, high)}] = away;
    }
    for (unsigned low = 0xF0; low < 0x100; ++low) {
        if (low == 0xFD) continue;  // stands for what could not be converted
        AddState(states, REGION_MAIN, TwoBytes(low, 0xFF));
        states[{.region = REGION_MAIN, .path = TwoBytes(low, 0xFF)}] = away;
    }
}

void AddHighInUnicode(States& states)
{
    for (unsigned low = 0; low < 0x100; ++low) {
        if (!IsHighSurrogateInUse(low)) continue;
        AddState(states, REGION_MAIN, TwoBytes(low, 0xD8));
        states[{.region = REGION_MAIN, .path = TwoBytes(low, 0xD8)}].onward = REGION_LOW_HALF;
        if (low < 0x40) continue;
        AddState(states, REGION_NEXT_UNIT, TwoBytes(low, 0xD8));
        states[{.region = REGION_NEXT_UNIT, .path = TwoBytes(low, 0xD8)}].onward = REGION_LOW_HALF;
    }
    for (unsigned byte = 0; byte < 0x100; ++byte)
        states[{.region = REGION_LOW_HALF, .path = OneByte(byte)}].onward = REGION_HIGH_HALF;
    for (unsigned byte = 0xDC; byte < 0xE0; ++byte)
        states[{.region = REGION_HIGH_HALF, .path = OneByte(byte)}].value =
            PackAllBut(CANDIDATE_UNICODE, 10, 0);
    AddState(states, REGION_MAIN, "\x0F\xFE");  // chooses an emoji's form
}

CharacterShares WorldShares(const Ingredients& from)
{
    CharacterShares shares;
    for (const CountedClass& counted : from.classes)
        if (counted.kind.role == Role::WORLD)
            for (const auto& [character, entry] : counted.counts.characters)
                shares[character] += entry.total / counted.size * counted.kind.weight / from.WeightOfWorld();
    return shares;
}

void AddWayBack(States& states, const Ingredients& from)
{
    for (unsigned byte = 0; byte < 0x100; ++byte)
        for (const Region region : {REGION_FOREIGN, REGION_FOREIGN_TRAIL})
            AddState(states, region, OneByte(byte));
    for (unsigned lead = 0xE3; lead < 0xEA; ++lead)
        for (unsigned tail = 0x80; tail < 0xC0; ++tail)
            AddState(states, REGION_FOREIGN, OneByte(lead) + OneByte(tail));

    std::map<std::string, std::pair<double, Candidate>> ways;  // by bytes, the likeliest encoding
    const auto add = [&](Candidate candidate, const CharacterShares& shares, wchar_t least) {
        for (const wchar_t character :
             Top(shares, from.recipe.waysBack, [least](wchar_t c) { return c >= least; })) {
            const std::string bytes = from.encoder.Encode(candidate, {character});
            if (bytes.size() < 2) continue;
            auto& way = ways[bytes];
            if (shares.at(character) > way.first) way = {shares.at(character), candidate};
        }
    };
    const Shares hans = SharesOf(from, false), hant = SharesOf(from, true);
    for (const Candidate candidate : ALL_CANDIDATES) {
        CharacterShares shares = hant.anywhere;
        if (candidate != CANDIDATE_BIG5)
            for (const auto& [character, share] : hans.anywhere) shares[character] += share;
        add(candidate, shares, 0x2000);
    }
    add(CANDIDATE_UTF8, WorldShares(from), 0x80);
    for (const auto& [bytes, way] : ways) {
        const Region back = RegionOf(REGION_RETURN, way.second);
        AddState(states, REGION_FOREIGN, bytes);
        states[{.region = REGION_FOREIGN, .path = bytes}].onward = back;
        AddState(states, back, bytes);
        states[{.region = back, .path = bytes}].onward = REGION_MAIN;
    }
}

// ASCII may stand between the two, as in tables.
void AddAsciiBetween(States& states)
{
    for (int candidate = 0; candidate < CANDIDATES; ++candidate) {
        const Region back = RegionOf(REGION_RETURN, candidate);
        for (unsigned byte = 0; byte < 0x80; ++byte) {
            const std::string ascii = OneByte(byte) + (candidate == CANDIDATE_UNICODE ? OneByte(0) : "");
            if (IsStranger(byte) || byte == 0x1B || states.contains({.region = back, .path = ascii}))
                continue;
            AddState(states, back, ascii);
            states[{.region = back, .path = ascii}].onward = back;
        }
    }
}
}  // namespace

void AddForeignStates(States& states, const Ingredients& from, const CSampleSource& source)
{
    const std::vector<uint32_t> sequences = AddForeignPairs(states, from, source);
    AddBroken(states);
    AddZeros(states);
    AddHighInUtf8(states);
    AddHighInUnicode(states);
    AddStrangeUnits(states);
    AddWayBack(states, from);
    AddAsciiBetween(states);
    AddForeignSequences(states, sequences, from, source);
}
