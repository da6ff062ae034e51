// UTF-16LE to GBK by the built-in table CodeTable: no data file, no locale, no allocation.
//
// One code unit becomes one byte (ASCII) or two; what GBK lacks becomes the ideographic space A1 A1, so that
// the text keeps its length and its place is seen.
#include "Bytes.h"
#include "FastPaths.h"
#include "STLCodeTrans.h"

namespace
{
constexpr unsigned REPLACEMENT = 0xA1A1;
}  // namespace

Progress PlainUtf16ToGbk(const char* src, unsigned long count, char* dst)
{
    char* out = dst;
    for (unsigned long i = 0; i < count; ++i) {
        const unsigned unit = LoadUnit16(src + 2 * i);
        if (unit < 0x80) {
            *out++ = static_cast<char>(unit);
            continue;
        }
        // The euro sign's single byte 0x80 is written like every other code, as two bytes: 00 80.
        const unsigned code = CodeTable[unit] != 0 ? CodeTable[unit] : REPLACEMENT;
        *out++ = static_cast<char>(code >> 8);
        *out++ = static_cast<char>(code & 0xFF);
    }
    return {count, static_cast<unsigned long>(out - dst)};
}

void utoGbk(char const* src, char* dst, unsigned long count)
{
    const bool isFast = FastPathsOn() && !Overlap(src, 2 * count, dst, 2 * count + 2);
    dst += (isFast ? FastUtf16ToGbk : PlainUtf16ToGbk)(src, count, dst).written;
    dst[0] = dst[1] = 0;
}

void utf8toGbk(char* src, char* dst)
{
    const auto units = ZeroedScratch<char>(2 * strlen(src) + 1);
    const int count = utf8tou(src, units.get());
    utoGbk(units.get(), dst, static_cast<unsigned long>(count));
}
