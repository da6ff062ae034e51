// The vector kernels of the fast forms. Invariant of every one: the output up to `written` is what the plain
// form makes of the source up to `read`. The source of those between GBK and UTF-8 holds no zero bytes.
#ifndef CODETRANS_X86_KERNELS_H
#define CODETRANS_X86_KERNELS_H

#include <cstdint>

#include "FastPaths.h"

namespace fast
{
// Whole vectors: the source must be readable for READ_BEHIND bytes beyond `size`, but for that of the last
// two, and the output writable for WRITTEN_BEHIND bytes beyond what is used.
namespace avx2
{
constexpr unsigned long READ_BEHIND = 48, WRITTEN_BEHIND = 64;

// GBK or Big5 by a mapping table of the model: bytes of 80 and above take the next one with them. Stops at a
// lone lead byte at the end.
Progress PairsToUtf16(const unsigned short* table, const unsigned char* src, unsigned long size,
                      unsigned char* out);

// GBK by the locale's sequences; stops at a pair that they lack.
Progress GbkToUtf8(const uint32_t* sequences, const unsigned char* src, unsigned long size,
                   unsigned char* out);

// By CodeTable, continuation bytes taken as they come (NextWide); stops at what GBK lacks, at the euro sign
// and at a zero or another ASCII character of two or three bytes.
Progress Utf8ToGbk(const unsigned char* src, unsigned long size, unsigned char* out);

// Continuation bytes taken as they come. May stop at bytes that begin no character, within three of the end.
Progress Utf8ToWide(const unsigned char* src, unsigned long size, unsigned char* out);

// Stops at a zero and above U+FFFF.
Progress WideToUtf8(const wchar_t* src, unsigned long count, unsigned char* out);

// As utoGbk: all but the last few.
Progress Utf16ToGbk(const char* src, unsigned long count, unsigned char* out);
}  // namespace avx2

// With VBMI2. The same, straight from source to destination, to the last character; nothing else is touched.
namespace avx512
{
Progress PairsToUtf16(const unsigned short* table, const unsigned char* src, unsigned long size,
                      unsigned char* out);
Progress GbkToUtf8(const uint32_t* sequences, const unsigned char* src, unsigned long size,
                   unsigned char* out);
Progress Utf8ToGbk(const unsigned char* src, unsigned long size, unsigned char* out);
Progress Utf8ToWide(const unsigned char* src, unsigned long size, unsigned char* out);
Progress WideToUtf8(const wchar_t* src, unsigned long count,
                    unsigned char* out);  // drops what is above U+FFFF
Progress Utf16ToGbk(const char* src, unsigned long count, unsigned char* out);
}  // namespace avx512
}  // namespace fast

#endif  // CODETRANS_X86_KERNELS_H
