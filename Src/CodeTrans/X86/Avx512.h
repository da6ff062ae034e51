// What the AVX-512 forms share: masked loads and stores, and UTF-8 to and from code units in blocks.
//
// They need AVX-512 with VBMI2 and work on blocks of 64 bytes. Compressing keeps the bytes that count. Masked
// loads and stores reach exactly from the first character to the last, so that there is no scratch between
// the caller's buffers, and no remainder to treat apart.
#ifndef CODETRANS_X86_AVX512_H
#define CODETRANS_X86_AVX512_H

#include <algorithm>
#include <bit>

#include "Bytes.h"
#include "Utf8Block.h"
#include "Vectors.h"

#define TARGET_AVX512                                                                \
    __attribute__((                                                                  \
        target("avx2,bmi,bmi2,popcnt,avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi," \
               "avx512vbmi2")))

// GCC 12 takes the undefined vectors in its own headers for mistakes.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

namespace fast::avx512
{
constexpr unsigned long BLOCK = 64;

// The first `count` bits, all of them above 63.
inline TARGET_AVX512 uint64_t First(unsigned long count)
{
    return count < 64 ? _bzhi_u64(~uint64_t{0}, static_cast<unsigned>(count)) : ~uint64_t{0};
}

inline TARGET_AVX512 __m512i LoadBytes(const void* from, uint64_t which)
{
    return _mm512_maskz_loadu_epi8(which, from);
}

// The bytes of `lanes` that `keep` marks; their number.
inline TARGET_AVX512 unsigned long StoreKept(__m512i lanes, uint64_t keep, unsigned char* out)
{
    const auto count = static_cast<unsigned long>(std::popcount(keep));
    _mm512_mask_storeu_epi8(out, First(count), _mm512_maskz_compress_epi8(keep, lanes));
    return count;
}

// The lower and the upper 32 bytes as 16-bit units.
inline TARGET_AVX512 __m512i LowerUnits(__m512i bytes)
{
    return _mm512_cvtepu8_epi16(_mm512_castsi512_si256(bytes));
}

inline TARGET_AVX512 __m512i UpperUnits(__m512i bytes)
{
    return _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(bytes, 1));
}

inline TARGET_AVX512 __mmask32 NotAscii(__m512i units)
{
    return _mm512_cmpge_epu16_mask(units, _mm512_set1_epi16(0x80));
}

// 32 characters from the first, second and third byte of each, as far as they have so many.
inline TARGET_AVX512 __m512i DecodeUtf8(__m512i first, __m512i second, __m512i third)
{
    const __m512i six = _mm512_set1_epi16(0x3F);
    const __m512i ofSecond = _mm512_and_si512(second, six);
    const __m512i two =
        _mm512_or_si512(_mm512_slli_epi16(_mm512_and_si512(first, _mm512_set1_epi16(0x1F)), 6), ofSecond);
    const __m512i three =
        _mm512_or_si512(_mm512_or_si512(_mm512_slli_epi16(first, 12), _mm512_slli_epi16(ofSecond, 6)),
                        _mm512_and_si512(third, six));
    const __mmask32 isThree = _mm512_cmpge_epu16_mask(first, _mm512_set1_epi16(0xE0));
    const __mmask32 isAscii = _mm512_cmplt_epu16_mask(first, _mm512_set1_epi16(0x80));
    return _mm512_mask_mov_epi16(_mm512_mask_mov_epi16(two, isThree, three), isAscii, first);
}

// The first `count` of 16 code points above 0 as UTF-8, those above U+FFFF dropped.
inline TARGET_AVX512 unsigned long StoreUtf8(__m512i points, unsigned long count, unsigned char* out)
{
    const __mmask16 isAscii = _mm512_cmplt_epu32_mask(points, _mm512_set1_epi32(0x80));
    const __mmask16 isShort = _mm512_cmplt_epu32_mask(points, _mm512_set1_epi32(0x800));
    const __mmask16 isCharacter =
        static_cast<__mmask16>(First(count)) & _mm512_cmple_epu32_mask(points, _mm512_set1_epi32(0xFFFF));
    // In lanes of lead, middle, last byte, of which short ones use the last two:
    //     0000ffff mmmmmmll llll  becomes the bytes  1110ffff 10mmmmmm 10llllll, first one lowest
    const __m512i lead = _mm512_srli_epi32(points, 12);
    const __m512i middle = _mm512_and_si512(_mm512_slli_epi32(points, 2), _mm512_set1_epi32(0x3F00));
    const __m512i last = _mm512_slli_epi32(_mm512_and_si512(points, _mm512_set1_epi32(0x3F)), 16);
    // ASCII stays as it is, in the first byte.
    const __m512i marks = _mm512_mask_mov_epi32(_mm512_set1_epi32(UTF8_MARKS_OF_THREE), isShort,
                                                _mm512_set1_epi32(UTF8_MARKS_OF_TWO));
    const __m512i sequence = _mm512_or_si512(_mm512_or_si512(lead, middle), _mm512_or_si512(last, marks));
    const __m512i lanes = _mm512_mask_mov_epi32(sequence, isAscii, points);
    const __m512i two =
        _mm512_mask_mov_epi32(_mm512_set1_epi32(0x808080), isShort, _mm512_set1_epi32(0x808000));
    const __m512i keep = _mm512_mask_mov_epi32(two, isAscii, _mm512_set1_epi32(0x80));
    return StoreKept(lanes, _mm512_movepi8_mask(_mm512_maskz_mov_epi32(isCharacter, keep)), out);
}

// UTF-8 to 32 code units at a time, which `put` takes with their number, or does not. Single characters go to
// it in the same way.
template <typename Put>
inline TARGET_AVX512 unsigned long ForUnitsOfUtf8(const unsigned char* src, unsigned long size, Put put)
{
    unsigned long read = 0;
    uint64_t carry = 0;  // the bytes of this block that continue a character of the last
    while (read < size) {
        const unsigned long left = size - read, taken = std::min(left, BLOCK);
        const uint64_t within = First(left);
        const __m512i bytes = LoadBytes(src + read, within);
        const uint64_t high = _mm512_movepi8_mask(bytes);
        if ((high | carry) == 0) {
            if (!put(LowerUnits(bytes), std::min(taken, 32UL))) return read;
            if (taken > 32 && !put(UpperUnits(bytes), taken - 32)) return read + 32;
            read += taken;
            continue;
        }
        const uint64_t twos = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xC0)));
        const uint64_t threes = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xE0)));
        const uint64_t fours = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xF0)));
        const Utf8Block<uint64_t> block(high, twos, threes, fours, carry);
        if (!block.IsPlain() || block.IsCut(left)) {
            const unsigned long end = read + taken;
            read += static_cast<unsigned long>(std::popcount(carry));
            while (read < end) {
                const WideStep step = NextWide(src + read, size - read);
                const __m512i unit = _mm512_castsi128_si512(_mm_cvtsi32_si128(static_cast<int>(step.cp)));
                if (step.isCharacter && !put(unit, 1)) return read;
                read += step.length;
            }
            carry = 0;
            continue;
        }
        const uint64_t starts = within & ~block.Following();
        const __m512i second = LoadBytes(src + read + 1, First(left - 1));
        const __m512i third = LoadBytes(src + read + 2, left > 2 ? First(left - 2) : 0);
        const __m512i firsts = _mm512_maskz_compress_epi8(starts, bytes);
        const __m512i seconds = _mm512_maskz_compress_epi8(starts, second);
        const __m512i thirds = _mm512_maskz_compress_epi8(starts, third);
        const auto count = static_cast<unsigned long>(std::popcount(starts));
        const __m512i units = DecodeUtf8(LowerUnits(firsts), LowerUnits(seconds), LowerUnits(thirds));
        if (!put(units, std::min(count, 32UL))) break;
        if (count > 32) {
            const __m512i rest = DecodeUtf8(UpperUnits(firsts), UpperUnits(seconds), UpperUnits(thirds));
            if (!put(rest, count - 32)) {
                // From the 33rd character on.
                const uint64_t first = _pdep_u64(uint64_t{1} << 32, starts);
                return read + static_cast<unsigned long>(_tzcnt_u64(first));
            }
        }
        read += taken;
        carry = block.Carry();
    }
    return read + static_cast<unsigned long>(std::popcount(carry));
}
}  // namespace fast::avx512

#endif  // CODETRANS_X86_AVX512_H
