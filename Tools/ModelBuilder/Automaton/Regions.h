// The regions of the automaton: what the bytes read so far may be, and how each region is left.
//
// A state is a region and the bytes read since the region's root. The table in Regions.cpp says of each
// region what it means, which children its root has in every automaton, and where its states fall back to
// (the failure link) when a byte has no child. The basic states, the failure links and the table in README.md
// all come from it.
#ifndef MODEL_BUILDER_REGIONS_H
#define MODEL_BUILDER_REGIONS_H

#include <compare>
#include <iosfwd>
#include <string>
#include <vector>

#include "Candidates.h"

enum Region : char {
    BY_RULE = 0,  // no region: fall back by the rule of one's own
    REGION_START = '0',
    REGION_RETURN = '1',
    REGION_ASCII = '5',
    REGION_AFTER = 'C',
    REGION_UNIT = 'D',
    REGION_NEXT_UNIT = 'E',
    REGION_RARE_UNIT = 'F',
    REGION_THIRD = 'G',
    REGION_HANGUL = 'H',
    REGION_LONE_PAIR = 'K',
    REGION_MAIN = 'M',
    REGION_FOREIGN = 'N',
    REGION_ZEROS = 'O',
    REGION_FOREIGN_TRAIL = 'P',
    REGION_SIGN_THIRD = 'Q',
    REGION_SIGN_LAST = 'R',
    REGION_LOW_HALF = 'S',
    REGION_HIGH_HALF = 'T',
    REGION_SECOND = 'U',
    REGION_WORD = 'W',
    REGION_BROKEN = 'X',
    REGION_ASCII_ONLY = 'Y',
    REGION_ASCII_ONLY_TRAIL = 'Z',
    REGION_HINT = 'a',
    REGION_NEXT_LINE = 'e',
    REGION_ASCII_TRAIL = 's'
};

struct StateName {
    Region region;
    std::string path;  // bytes since the region's root
    auto operator<=>(const StateName&) const = default;
};

// Some rows stand for four regions with letters in a row: one a candidate, or one a count.
constexpr int REGIONS_OF_FOUR = 4;

struct RegionRow {
    Region first;
    int count;
    const char* name;
    const char* meaning;
    const char* rule;                         // where its states fall back to, in words
    StateName (*fallBack)(const StateName&);  // the same; may name a state that does not exist
    bool everyByte;                           // the root has a child for every byte in every automaton
};

const std::vector<RegionRow>& RegionTable();

// The row of one of the table's regions.
const RegionRow& RowOf(Region region);

// One of four regions.
constexpr Region RegionOf(Region first, int index)
{
    return static_cast<Region>(first + index);
}

constexpr bool IsRegionOf(Region region, Region first)
{
    return region >= first && region < first + REGIONS_OF_FOUR;
}

// The table in Markdown.
void PrintRegions(std::ostream& out);

#endif  // MODEL_BUILDER_REGIONS_H
