// How code units and sequences lie in byte buffers: the few rules that every codec of the engine shares.
//
// Callers' buffers need no alignment, so units are read and written through memcpy.
#ifndef CODETRANS_BYTES_H
#define CODETRANS_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

// UTF-16LE code units: low byte first on every host.
inline void StoreUnit16(char* to, unsigned unit)
{
    to[0] = static_cast<char>(unit & 0xFF);
    to[1] = static_cast<char>(unit >> 8);
}

inline unsigned LoadUnit16(const char* from)
{
    return static_cast<unsigned char>(from[0]) | static_cast<unsigned>(static_cast<unsigned char>(from[1]))
                                                     << 8;
}

// Wide characters in the host's own form, which is little-endian where callers exchange them as bytes.
inline void StoreWide(void* to, wchar_t wide)
{
    memcpy(to, &wide, sizeof wide);
}

// Negative ones come out above every code point.
inline unsigned LoadWide(const void* from)
{
    unsigned wide;
    memcpy(&wide, from, sizeof wide);
    return wide;
}

inline bool IsContinuation(unsigned char byte)
{
    return (byte & 0xC0) == 0x80;
}

// The code point of a two- and a three-byte UTF-8 sequence. Only the low six bits of a continuation byte are
// looked at.
inline unsigned DecodeTwo(const unsigned char* s)
{
    return (s[0] & 0x1FU) << 6 | (s[1] & 0x3FU);
}

inline unsigned DecodeThree(const unsigned char* s)
{
    return (s[0] & 0x0FU) << 12 | (s[1] & 0x3FU) << 6 | (s[2] & 0x3FU);
}

// One step of the decoder to wide characters, with `left` bytes (1 at least) to the end of the text.
// Continuation bytes are taken as they come; a byte that begins no whole sequence of up to three is skipped.
struct WideStep {
    unsigned length;
    bool isCharacter;
    unsigned cp;
};

inline WideStep NextWide(const unsigned char* s, unsigned long left)
{
    if (s[0] <= 0x7F) return {1, true, s[0]};
    if ((s[0] & 0xE0) == 0xC0 && left >= 2) return {2, true, DecodeTwo(s)};
    if ((s[0] & 0xF0) == 0xE0 && left >= 3) return {3, true, DecodeThree(s)};
    return {1, false, 0};
}

constexpr char UTF8_BYTE_ORDER_MARK[] = "\xEF\xBB\xBF";

inline const char* SkipByteOrderMark(const char* text)
{
    return strncmp(text, UTF8_BYTE_ORDER_MARK, 3) == 0 ? text + 3 : text;
}

// Whether two stretches of memory share a byte: a conversion in place reads what it has written.
inline bool Overlap(const void* a, unsigned long aLen, const void* b, unsigned long bLen)
{
    const auto aBegin = reinterpret_cast<uintptr_t>(a), bBegin = reinterpret_cast<uintptr_t>(b);
    return aBegin < bBegin ? bBegin - aBegin < aLen : aBegin - bBegin < bLen;
}

struct CFree {
    void operator()(void* block) const { free(block); }
};

struct CFileCloser {
    void operator()(FILE* file) const { fclose(file); }
};
using File = std::unique_ptr<FILE, CFileCloser>;

// Zero-filled scratch memory; large blocks cost only the pages that are touched.
template <typename Element>
std::unique_ptr<Element[], CFree> ZeroedScratch(size_t count)
{
    void* block = calloc(count, sizeof(Element));
    if (block == nullptr) throw std::bad_alloc();
    return std::unique_ptr<Element[], CFree>(static_cast<Element*>(block));
}

#endif  // CODETRANS_BYTES_H
