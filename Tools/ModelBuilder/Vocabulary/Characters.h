// Hanzi, and how common the national standards take them to be.
//
// GB 2312 and Big5 both have two levels: the first holds the some four to five thousand hanzi that everybody
// reads, the second what dictionaries have besides. GBK holds many more.
#ifndef MODEL_BUILDER_CHARACTERS_H
#define MODEL_BUILDER_CHARACTERS_H

#include "Encoder.h"

constexpr bool IsHanzi(wchar_t c)
{
    return c >= 0x3400 && c < 0xA000;
}

enum HanziLevel { LEVEL_COMMON, LEVEL_RARE, LEVEL_OUTSIDE, LEVELS };

// Pairs of GB 2312's two levels: lead bytes B0 to D7 and D8 to F7.
constexpr bool IsGb2312Hanzi(unsigned lead, unsigned trail)
{
    return lead >= 0xB0 && lead <= 0xF7 && trail >= 0xA1;
}

constexpr bool IsBig5FirstLevel(unsigned lead, unsigned trail)
{
    return lead >= 0xA4 && (lead < 0xC6 || (lead == 0xC6 && trail < 0x7F)) && (trail < 0x7F || trail > 0xA0);
}

// The better of a hanzi's two levels.
inline HanziLevel LevelOf(const CEncoder& encoder, wchar_t hanzi)
{
    const unsigned gbk = encoder.Pair(CANDIDATE_GBK, hanzi), big5 = encoder.Pair(CANDIDATE_BIG5, hanzi);
    const bool isGb2312 = IsGb2312Hanzi(gbk >> 8, gbk & 0xFF);
    if ((isGb2312 && gbk < 0xD800) || IsBig5FirstLevel(big5 >> 8, big5 & 0xFF)) return LEVEL_COMMON;
    return isGb2312 || (big5 >= 0xC940 && big5 < 0xF9D6) ? LEVEL_RARE : LEVEL_OUTSIDE;
}

#endif  // MODEL_BUILDER_CHARACTERS_H
