// The detector's automaton before packing: named states, and the rules by which each falls back.
//
// A state is a region and the bytes read since the region's root. Regions stand for what the bytes may be so
// far:
//   0  the start of the buffer, where a byte-order mark may stand; each state falls back to its twin in M
//   M  in step with two-byte text; a third byte completes a UTF-8 character or begins a known sequence
//   G  the root that awaits the third byte of a UTF-8 character that has no state of its own
//   C  a UTF-8 character ended, or its last byte was the lead byte of a pair
//   U  the second UTF-8 character since M, whose first byte was the trail byte of that pair or began the
//   character D  a UTF-16LE unit ended whose low byte is ASCII, or that was ASCII and then the lead byte of a
//   pair (81-9F) E  the same question one byte on: the low byte of the next unit, or that pair's trail byte
//   and a fresh start
// After six bytes of UTF-8 three pairs are over as well, and all readings meet again in M.
// Every failure link leads to a shorter string or towards M, M falls back to 0, and so every chain ends.
#ifndef MODEL_BUILDER_AUTOMATON_H
#define MODEL_BUILDER_AUTOMATON_H

#include <compare>
#include <map>
#include <string>
#include <vector>

#include "DoubleArray.h"

enum Region : char {
    REGION_START = '0',
    REGION_AFTER = 'C',
    REGION_UNIT = 'D',
    REGION_NEXT_UNIT = 'E',
    REGION_THIRD = 'G',
    REGION_MAIN = 'M',
    REGION_SECOND = 'U'
};

struct StateName {
    Region region;
    std::string path;
    auto operator<=>(const StateName&) const = default;
};

// Every state that the detector has, with its value; kept sorted, so that equal automata pack to equal bytes.
using StateValues = std::map<StateName, int>;

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

// Adds a state and the states on the way to it, without values.
void AddState(StateValues& states, Region region, const std::string& path);

// The states that every automaton has: the regions' roots and a child of 0 and of M for every byte.
StateValues BasicStates();

// The state that a failure leads to: the rules are followed until they name one that exists.
StateName ExistingFallBack(const StateValues& states, const StateName& state);

// In the order of `states`; the failure links by the rules of the regions.
std::vector<PackableState> LinkStates(const StateValues& states);

#endif  // MODEL_BUILDER_AUTOMATON_H
