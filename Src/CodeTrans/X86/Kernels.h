// The vector kernels: each converts a stretch of text that lies where whole vectors can be read, to where whole
// vectors can be written.
//
// Their source must be readable and their output writable for SLACK bytes beyond what they use: FastPaths.cpp
// sees to that. Invariant of every kernel: the output up to `written` is what the plain form makes of the source
// up to `read`.
#ifndef CODETRANS_X86_KERNELS_H
#define CODETRANS_X86_KERNELS_H

#include <cstdint>

#include "FastPaths.h"

namespace fast
{
constexpr unsigned long SLACK = FAST_SLACK;

// KernelsOfRuns.cpp. They end at `size`, before a character that is cut there.

// GBK or Big5 by a mapping table of the model: bytes of 80 and above take the next one with them.
Progress PairsToUtf16(const unsigned short* table, const unsigned char* src, unsigned long size, char* out);

// GBK by the locale's sequences; stops at a pair that it does not hold.
Progress GbkToUtf8(const uint32_t* sequences, const unsigned char* src, unsigned long size,
                   unsigned char* out);

// By CodeTable, continuation bytes taken as they come (NextWide); stops at a zero, at what GBK lacks and at
// the euro sign.
Progress Utf8ToGbk(const unsigned char* src, unsigned long size, unsigned char* out);

// To code units. `last`: behind the source there are zeros, and a character cut by the end is left; in other
// windows the source goes on, and a kernel may go on with it.
using Decode = Progress(const unsigned char* src, unsigned long size, bool last, uint16_t* units);

// From code units, behind which there are zeros. A kernel may run into them; each of them becomes one byte.
using Encode = Progress(const uint16_t* units, unsigned long size, unsigned char* out);

struct Kernels {
    Decode* utf8;    // continuation bytes taken as they come: NextWide
    Encode* toUtf8;  // surrogates like any other unit
    Encode* toGbk;   // as utoGbk
};

extern const Kernels KERNELS_AVX2;    // KernelsAvx2.cpp
extern const Kernels KERNELS_AVX512;  // KernelsAvx512.cpp, with VBMI2
}  // namespace fast

#endif  // CODETRANS_X86_KERNELS_H
