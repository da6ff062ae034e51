// What the AVX-512 forms share: masked loads and stores, lead bytes, the masks of UTF-8 and look-ups.
//
// They need AVX-512 with VBMI2 and work on blocks of 64 bytes. Compressing keeps the bytes that count. At the
// end of the source and of the output, masked loads and stores reach exactly to the last character, so the
// output needs no scratch on its way to the caller's buffer. Where enough of both is left, whole vectors are
// loaded and stored, which is faster.
#ifndef CODETRANS_X86_AVX512_H
#define CODETRANS_X86_AVX512_H

#include <algorithm>
#include <bit>

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

// The numbers from `first` on, in units of 16 bits: the indices for a permutation that moves the unit
// `first` to the beginning.
inline TARGET_AVX512 __m512i PlacesFrom(unsigned first)
{
    alignas(64) static constexpr uint16_t PLACES[32] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10,
                                                        11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
                                                        22, 23, 24, 25, 26, 27, 28, 29, 30, 31};
    return _mm512_add_epi16(_mm512_load_si512(PLACES), _mm512_set1_epi16(static_cast<short>(first)));
}

// The lead bytes among bytes of which `high` are 80 and above: in each run of high bytes the first, the third
// and so on; in one at the beginning, if that continues a pair (`carry` 1, else 0), the second, the fourth.
constexpr uint64_t LeadBytes(uint64_t high, uint64_t carry)
{
    constexpr uint64_t EVEN = 0x5555555555555555;
    const uint64_t first = high & ~(high << 1);
    // The addition carries through the runs that begin at even places and clears them.
    const uint64_t inEvenRuns = high & ~(high + (first & EVEN));
    const uint64_t leads = (inEvenRuns & EVEN) | (high & ~inEvenRuns & ~EVEN);
    // The carry comes in last, since the next block waits for it.
    const uint64_t runAtBegin = high & ~(high + 1);
    return leads ^ (runAtBegin & (0 - carry));
}

// The bytes of a block of UTF-8 from 80, C0, E0 and F0 on (Utf8Block.h).
struct Utf8Masks {
    uint64_t high, twos, threes, fours;

    TARGET_AVX512 explicit Utf8Masks(__m512i bytes)
        : high(_mm512_movepi8_mask(bytes)),
          twos(_mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xC0)))),
          threes(_mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xE0)))),
          fours(_mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xF0))))
    {
    }
    Utf8Block<uint64_t> Block(uint64_t carry) const { return {high, twos, threes, fours, carry}; }
};

// Look-ups of the 16 indices that `which` marks, by gathering, which takes a quarter of the time of loading
// the entries one by one. The table has an even number of entries. The pair of entries that holds the one
// looked for is gathered, so that nothing beyond the table is read, and shifted:
//     uuuuuuuu llllllll  becomes  xxxxxxxx llllllll for an even index, 00000000 uuuuuuuu for an odd one
inline TARGET_AVX512 __m512i LookUp16(const unsigned short* table, __m512i indices, __mmask16 which)
{
    const __m512i found =
        _mm512_mask_i32gather_epi32(_mm512_setzero_si512(), which, _mm512_srli_epi32(indices, 1), table, 4);
    const __m512i shifts = _mm512_slli_epi32(_mm512_and_si512(indices, _mm512_set1_epi32(1)), 4);
    return _mm512_srlv_epi32(found, shifts);
}
}  // namespace fast::avx512

#endif  // CODETRANS_X86_AVX512_H
