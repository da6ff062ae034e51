// The vector kernels: each turns a window of one encoding into UTF-16 code units, or code units into one
// encoding.
//
// Every conversion is one of the first followed by one of the second over a scratch array of code units that
// stays in the first-level cache. Kernels read and write whole vectors, so their source must be readable and
// their output writable for SLACK bytes beyond what they use: FastPaths.cpp sees to that. Invariant of every
// kernel: the output up to `written` is what the plain form makes of the source up to `read`.
#ifndef CODETRANS_X86_KERNELS_H
#define CODETRANS_X86_KERNELS_H

#include <cstdint>

#include "FastPaths.h"

namespace fast
{
constexpr unsigned long SLACK = FAST_SLACK;

// To code units. `last`: behind the source there are zeros, and a character cut by the end is left; in other
// windows the source goes on, and a kernel may go on with it.
using Decode = Progress(const unsigned char* src, unsigned long size, bool last, uint16_t* units);
using DecodePairs = Progress(const unsigned short* table, const unsigned char* src, unsigned long size,
                             bool last, uint16_t* units);

// From code units, behind which there are zeros. A kernel may run into them; each of them becomes one byte.
using Encode = Progress(const uint16_t* units, unsigned long size, unsigned char* out);

struct Kernels {
    DecodePairs* modelPairs;   // bytes of 80 and above take the next one along; table entries by PairIndex
    DecodePairs* localePairs;  // the same; table entries by the GBK code less 0x8000
    Decode* utf8;              // continuation bytes taken as they come: NextWide
    Encode* toUtf8;            // surrogates like any other unit
    Encode* toGbk;             // as utoGbk
    Encode* toKnownGbk;        // stops at a zero, what GBK lacks and the euro sign
};

extern const Kernels KERNELS_AVX2;
extern const Kernels KERNELS_AVX512;  // with VBMI2
}  // namespace fast

#endif  // CODETRANS_X86_KERNELS_H
