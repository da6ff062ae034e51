// Pairs, units, ASCII, UTF-8 and marks, one function each.
#include "Shape.h"

#include <algorithm>
#include <set>

#include "Detection.h"
#include "TextFile.h"

namespace
{
// Characters of Chinese text whose shares in its classes add up to more than `least`.
std::vector<wchar_t> CharactersAbove(double least, const Ingredients& from)
{
    std::map<wchar_t, double> share;
    for (const CountedClass& counted : from.classes)
        if (IsChinese(counted.kind.role))
            for (const auto& [character, entry] : counted.counts.characters)
                share[character] += entry.total / counted.size;
    std::vector<wchar_t> above;
    for (const auto& [character, sum] : share)
        if (sum > least) above.push_back(character);
    return above;
}

// Pairs of GBK and Big5, and the halves of GB18030's four-byte characters, which are two such pairs.
void AddPairs(States& states)
{
    for (unsigned lead = 0x81; lead <= 0xFE; ++lead)
        for (unsigned trail = 0x30; trail <= 0xFE; ++trail)
            if (trail <= 0x39 || (trail >= 0x40 && trail != 0x7F))
                AddState(states, REGION_MAIN, TwoBytes(lead, trail));
}

// A unit whose second byte is a lead byte of Big5 or of common GBK would take the lead of a pair that follows
// ASCII.
bool TakesLeadAfterAscii(unsigned low, unsigned high)
{
    return low < 0x80 && high >= 0xA0 && high < 0xFE;
}

// Characters that the counts of the world's text know.
std::set<wchar_t> WorldCharacters(const Ingredients& from)
{
    std::set<wchar_t> known;
    for (const CountedClass& counted : from.classes)
        if (counted.kind.role == Role::WORLD)
            for (const auto& [character, entry] : counted.counts.characters) known.insert(character);
    return known;
}

// Small, vertical and half-width forms stand in Chinese text that came from other encodings.
bool IsForm(unsigned code)
{
    return (code >= 0xFE30 && code < 0xFE6C) || (code >= 0xFF01 && code < 0xFFEF);
}

void AddUnicode(States& states, const Ingredients& from)
{
    const CEncoder& encoder = from.encoder;
    const std::set<wchar_t> world = WorldCharacters(from);
    for (unsigned code = 0; code < 0x10000; ++code) {
        const auto character = static_cast<wchar_t>(code);
        const bool known = (code < 0x180 && !IsUnusedControl(code) && (code < 0x80 || code >= 0xA0)) ||
                           encoder.Has(CANDIDATE_GBK, character) || encoder.Has(CANDIDATE_BIG5, character) ||
                           IsForm(code) || world.contains(character);
        if (known && !TakesLeadAfterAscii(code & 0xFF, code >> 8))
            AddState(states, REGION_MAIN, TwoBytes(code & 0xFF, code >> 8));
    }
    AddState(states, REGION_MAIN, "\xFF\xFE");
}

// Two ASCII characters that are no unit of UTF-16LE in use: they tell the two apart, and ASCII goes by twos
// as well.
void AddAscii(States& states)
{
    for (unsigned first = 0; first < 0x7F; ++first)
        for (unsigned second = 0; second < 0x7F; ++second)
            if ((IsAsciiText(first) || first == 0x1B) && IsAsciiText(second))
                AddState(states, REGION_MAIN, TwoBytes(first, second));
}

// The states that keep UTF-16LE apart from ASCII with two-byte text behind it.
void AddUnits(States& states, const std::vector<wchar_t>& known)
{
    for (unsigned lead = 0x81; lead < 0xA0; ++lead)
        for (unsigned trail = 0x40; trail < 0x100; ++trail)
            AddState(states, REGION_UNIT, TwoBytes(lead, trail));
    for (const wchar_t character : known) {
        const unsigned code = static_cast<uint16_t>(character);
        if ((code & 0xFF) >= 0x40) AddState(states, REGION_NEXT_UNIT, TwoBytes(code & 0xFF, code >> 8));
    }
    // The high byte of a rare unit, or the lead byte of a pair. 82 and 83 lead Japanese syllables in
    // Shift_JIS.
    for (unsigned high = 0x81; high < 0xA0; ++high)
        if (high != 0x82 && high != 0x83) AddState(states, REGION_RARE_UNIT, OneByte(high));
}

// Lead bytes that are expected right behind a character of three bytes: of scripts that have quotation marks
// or dashes of three bytes, and of all characters of three.
bool FollowsThreeBytes(unsigned lead)
{
    return IsUtf8Lead(lead) && (lead <= 0xC6 || lead == 0xC8 || (lead >= 0xCE && lead <= 0xD2) ||
                                (lead >= 0xD4 && lead <= 0xDB) || lead >= 0xE0);
}

void AddUtf8(States& states, const std::vector<wchar_t>& common)
{
    for (const wchar_t character : common) {
        std::string bytes;
        AppendUtf8(bytes, character);
        if (bytes.size() != 3) continue;
        AddState(states, REGION_MAIN, bytes);
        AddState(states, REGION_SECOND, bytes);
    }
    for (unsigned tail = 0x80; tail < 0xC0; ++tail) {
        // No lead byte, but the two last bytes of a second character are a pair like any other.
        AddState(states, REGION_MAIN, TwoBytes(0x80, tail));
        AddState(states, REGION_THIRD, OneByte(tail));
        for (unsigned next = 0x0A; next < 0xF0; ++next)
            if (IsAsciiText(next) || FollowsThreeBytes(next))
                AddState(states, REGION_AFTER, TwoBytes(tail, next));
        for (unsigned lead = 0xC2; lead < 0xF0; ++lead)
            if (FollowsThreeBytes(lead)) AddState(states, REGION_SECOND, TwoBytes(lead, tail));
    }
}

// An accented letter among ASCII ones is one pair: behind ASCII it has a state of its own, and so has the
// ASCII that follows it.
void AddLonePairs(States& states)
{
    for (unsigned lead = 0xC2; lead <= 0xCC; ++lead)
        for (unsigned tail = 0x80; tail < 0xC0; ++tail) {
            AddState(states, REGION_WORD, TwoBytes(lead, tail));
            states[{.region = REGION_WORD, .path = TwoBytes(lead, tail)}].onward = REGION_LONE_PAIR;
        }
    for (unsigned next = 0x20; next < 0x7F; ++next) AddState(states, REGION_LONE_PAIR, OneByte(next));
}

// Frequent Hangul, whose bytes would be ASCII and the lead byte of a hanzi anywhere else.
void AddHangul(States& states, const Ingredients& from)
{
    std::vector<std::pair<double, wchar_t>> order;
    for (const CountedClass& counted : from.classes)
        if (counted.kind.role == Role::WORLD)
            for (const auto& [character, entry] : counted.counts.characters)
                if (character >= 0xAC00 && character < 0xD7B0) order.emplace_back(-entry.total, character);
    std::sort(order.begin(), order.end());
    if (order.size() > from.recipe.hangul) order.resize(from.recipe.hangul);
    for (const auto& [count, character] : order) {
        const std::string bytes = from.encoder.Encode(CANDIDATE_UNICODE, {character});
        AddState(states, REGION_HANGUL, bytes);
        states[{.region = REGION_HANGUL, .path = bytes}].onward = REGION_HANGUL;
    }
    for (unsigned code = 0xF900; code < 0xFA2E; ++code) {  // compatibility hanzi
        const std::string bytes = TwoBytes(code & 0xFF, code >> 8);
        AddState(states, REGION_HANGUL, bytes);
        states[{.region = REGION_HANGUL, .path = bytes}].onward = REGION_HANGUL;
    }
    for (unsigned low = 0x20; low < 0x7F; ++low)
        states[{.region = REGION_MAIN, .path = TwoBytes(low, 0)}].onward = REGION_HANGUL;
    states[{.region = REGION_MAIN, .path = TwoBytes('\n', 0)}].onward = REGION_HANGUL;
}

// Two zero bytes behind FF FE are UTF-32; anything else is UTF-16LE.
void AddMarks(States& states)
{
    AddState(states, REGION_START, "\xFF\xFE");
    AddState(states, REGION_START, "\xEF\xBB\xBF");
    const std::string mark = "\xFF\xFE";
    for (unsigned next = 0; next < 0x100; ++next) {
        for (const std::string& path : {mark + OneByte(next), mark + OneByte(0) + OneByte(next)})
            states[{.region = REGION_START, .path = path}].value = Decisive(CANDIDATE_UNICODE);
    }
    states[{.region = REGION_START, .path = mark + OneByte(0)}].value = TRIE_VALUE_NONE;
    states[{.region = REGION_START, .path = mark}].value = PackAllBut(CANDIDATE_UNICODE, 9, 0);
    states[{.region = REGION_START, .path = mark + OneByte(0) + OneByte(0)}] = {
        .value = PackAllBut(CANDIDATE_UNICODE, -9, 0), .onward = REGION_FOREIGN};
    states[{.region = REGION_START, .path = "\xEF\xBB\xBF"}].value = Decisive(CANDIDATE_UTF8);
}
}  // namespace

States ShapeOfDetector(const Ingredients& from)
{
    States states = BasicStates();
    AddPairs(states);
    AddUnicode(states, from);
    AddAscii(states);
    AddUnits(states, CharactersAbove(from.recipe.leastKnown, from));
    AddUtf8(states, CharactersAbove(from.recipe.leastCommon, from));
    AddLonePairs(states);
    AddHangul(states, from);
    AddMarks(states);
    return states;
}
