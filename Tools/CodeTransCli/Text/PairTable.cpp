#include "PairTable.h"

#include <STLCodeTrans.h>

#include <algorithm>

#include "Codec.h"

namespace
{
constexpr unsigned FIRST_OF_BIG5 = 0xA140;  // what lies before it are later additions

// Box drawing signs, and three hanzi that are also numerals or marks.
constexpr char16_t SECOND_IS_WRITTEN[] = {0x2550, 0x255E, 0x2561, 0x256A, 0x4EDD, 0x5341, 0x5345};

bool IsWritten(int code, char16_t unit, unsigned pair, unsigned earlier)
{
    if (earlier == 0) return true;
    if (code == ENCODE_GBK) return CodeTable[unit] == pair;
    return earlier < FIRST_OF_BIG5 || std::find(std::begin(SECOND_IS_WRITTEN), std::end(SECOND_IS_WRITTEN),
                                                unit) != std::end(SECOND_IS_WRITTEN);
}

std::vector<unsigned short> InverseOf(int code)
{
    std::vector<unsigned short> pairs(0x10000, 0);
    for (unsigned lead = 0x81; lead <= 0xFE; ++lead) {
        for (unsigned trail = 0x40; trail <= 0xFE; ++trail) {
            const char16_t unit = UnitOf(code, lead, trail);
            const unsigned pair = lead << 8 | trail;
            if (unit != REPLACEMENT && IsWritten(code, unit, pair, pairs[unit]))
                pairs[unit] = static_cast<unsigned short>(pair);
        }
    }
    return pairs;
}
}  // namespace

char16_t UnitOf(int code, unsigned lead, unsigned trail)
{
    const unsigned firstHighTrail = code == ENCODE_GBK ? 0x80 : 0xA1;
    const bool valid = (trail >= 0x40 && trail <= 0x7E) || (trail >= firstHighTrail && trail <= 0xFE);
    if (!valid) return REPLACEMENT;
    const unsigned short* const table = code == ENCODE_GBK ? g_mapGBKToUnicode : g_mapBig5ToUnicode;
    const char16_t unit =
        table[PairIndex(static_cast<unsigned char>(lead), static_cast<unsigned char>(trail))];
    return unit < 0x80 ? REPLACEMENT : unit;
}

const std::vector<unsigned short>& PairsOf(int code)
{
    if (code == ENCODE_GBK) {
        static const std::vector<unsigned short> s_gbk = InverseOf(ENCODE_GBK);
        return s_gbk;
    }
    static const std::vector<unsigned short> s_big5 = InverseOf(ENCODE_BIG5);
    return s_big5;
}
