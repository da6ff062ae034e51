// The detector's automaton before packing: named states, and the rules by which each falls back.
//
// A state is a region and the bytes read since the region's root. Regions stand for what the bytes may be so
// far:
// - 0: the start of the buffer, where a byte-order mark may stand, and short texts have states of their own
//   (ShortTexts.h); each state falls back to its twin, the one that its bytes lead to otherwise
// - M: in step with two-byte text; a third byte completes a UTF-8 character or begins a known sequence
// - G: the root that awaits the third byte of a UTF-8 character that has no state of its own
// - C: a UTF-8 character ended, or its last byte was the lead byte of a pair
// - U: the second UTF-8 character since M, whose first byte was the trail byte of that pair or began the
//   character
// - D: a UTF-16LE unit ended whose low byte is ASCII, or that was ASCII and then the lead byte of a pair
//   (81-9F)
// - E: the same question one byte on: the low byte of the next unit, or that pair's trail byte and a fresh
//   start
// - F: E again, where its two bytes are no unit that is expected there
// - X: behind a byte that cannot stand there: a lead byte without a trail byte of its own, a control code
//
// After six bytes of UTF-8 three pairs are over as well, and all readings meet again in M. Some states fall
// back to a region of another kind instead, as the builder decides:
// - 5-8: the buffer began with one, two, three or more pairs of ASCII characters; s-v: and half a one
//   (AsciiStart.h)
// - Y, Z: the same behind a pair that is ASCII beyond doubt, wherever it stands
// - S, T: the low and the high byte of a UTF-16LE unit that ends a character beyond U+FFFF
// - Q, R: the third and the last byte of a sign beyond U+FFFF in UTF-8
// - O: behind a zero unit: the text's end, or data with gaps
// - N: text that is none of ours (Foreign.h); P: its second byte of two; 1-4: it may be ours again
// - a-d: behind a piece of text that hints at one of the four encodings; e-h: the same on the next line
//   (Decisive.h)
//
// Every failure link leads to a shorter string or towards M, M falls back to 0, and so every chain ends.
#ifndef MODEL_BUILDER_AUTOMATON_H
#define MODEL_BUILDER_AUTOMATON_H

#include <compare>
#include <map>
#include <string>
#include <vector>

#include "DoubleArray.h"
#include "Encoder.h"

enum Region : char {
    BY_RULE = 0,
    REGION_START = '0',
    REGION_RETURN = '1',       // the first of four, by candidate
    REGION_ASCII = '5',        // the first of four: after one to three pairs, then for good
    REGION_ASCII_TRAIL = 's',  // the same within a pair
    REGION_AFTER = 'C',
    REGION_UNIT = 'D',
    REGION_NEXT_UNIT = 'E',
    REGION_RARE_UNIT = 'F',
    REGION_THIRD = 'G',
    REGION_MAIN = 'M',
    REGION_FOREIGN = 'N',
    REGION_ZEROS = 'O',
    REGION_FOREIGN_TRAIL = 'P',
    REGION_SIGN_THIRD = 'Q',
    REGION_SIGN_LAST = 'R',
    REGION_LOW_HALF = 'S',
    REGION_HIGH_HALF = 'T',
    REGION_SECOND = 'U',
    REGION_BROKEN = 'X',
    REGION_ASCII_ONLY = 'Y',
    REGION_ASCII_ONLY_TRAIL = 'Z',
    REGION_HINT = 'a',      // the first of four, by candidate
    REGION_NEXT_LINE = 'e'  // the first of four, by candidate
};

// One of four regions.
constexpr Region RegionOf(Region first, int candidate)
{
    return static_cast<Region>(first + candidate);
}

constexpr bool IsRegionOf(Region region, Region first)
{
    return region >= first && region < first + static_cast<int>(CANDIDATES);
}

struct StateName {
    Region region;
    std::string path;
    auto operator<=>(const StateName&) const = default;
};

struct State {
    int value = TRIE_VALUE_NONE;
    Region onward = BY_RULE;  // the region to whose root it falls back
    bool operator==(const State&) const = default;
};

// Every state that the detector has; kept sorted, so that equal automata pack to equal bytes.
using States = std::map<StateName, State>;

inline unsigned ByteAt(const std::string& path, size_t i)
{
    return static_cast<unsigned char>(path[i]);
}

bool IsUtf8Lead(unsigned byte);                         // of two or three bytes
bool OpensUtf8(const std::string& path);                // the first two bytes of a three-byte character
bool StartsWithUtf8Character(const std::string& path);  // a whole three-byte character comes first
bool LeadAfterAscii(const std::string& path);  // two bytes: ASCII, and a lead byte that UTF-16LE has too
inline bool IsUtf8Tail(unsigned byte)
{
    return byte >= 0x80 && byte < 0xC0;
}
inline bool IsLead(unsigned byte)
{
    return byte > 0x80 && byte < 0xFF;
}

// Adds a state and the states on the way to it, without values.
void AddState(States& states, Region region, const std::string& path);

// The states that every automaton has: the regions' roots and a child of 0 and of M for every byte.
States BasicStates();

// The state that a failure leads to: the rules are followed until they name one that exists.
StateName ExistingFallBack(const States& states, const StateName& state);

// The state that the walk is in after `state` and `byte`.
StateName Step(const States& states, StateName state, char byte);

// Gives each state that was not in `before` the value of the state that the walk would be in without it. To
// be done before any of the new ones is sent onward.
void InheritValues(States& states, const States& before);

// In the order of `states`; the failure links by the rules of the regions.
std::vector<PackableState> LinkStates(const States& states);

#endif  // MODEL_BUILDER_AUTOMATON_H
