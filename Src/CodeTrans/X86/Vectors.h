// Loads and stores of whole vectors at any address.
#ifndef CODETRANS_X86_VECTORS_H
#define CODETRANS_X86_VECTORS_H

#include <immintrin.h>

#include <cstdint>

#define TARGET_AVX2 __attribute__((target("avx2,bmi,popcnt")))

namespace fast
{
inline TARGET_AVX2 __m128i Load16(const void* from)
{
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}

inline TARGET_AVX2 __m256i Load32(const void* from)
{
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}

inline TARGET_AVX2 void Store16(void* to, __m128i value)
{
    _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

inline TARGET_AVX2 void Store32(void* to, __m256i value)
{
    _mm256_storeu_si256(static_cast<__m256i*>(to), value);
}

inline TARGET_AVX2 unsigned Mask(__m128i bytes)
{
    return static_cast<unsigned>(_mm_movemask_epi8(bytes));
}

inline TARGET_AVX2 unsigned Mask(__m256i bytes)
{
    return static_cast<unsigned>(_mm256_movemask_epi8(bytes));
}

// Eight look-ups at once.
inline TARGET_AVX2 __m128i LookUp8(const unsigned short* table, __m128i indices)
{
    const auto low = static_cast<uint64_t>(_mm_cvtsi128_si64(indices));
    const auto high = static_cast<uint64_t>(_mm_extract_epi64(indices, 1));
    __m128i found = _mm_cvtsi32_si128(table[low & 0xFFFF]);
    found = _mm_insert_epi16(found, table[low >> 16 & 0xFFFF], 1);
    found = _mm_insert_epi16(found, table[low >> 32 & 0xFFFF], 2);
    found = _mm_insert_epi16(found, table[low >> 48], 3);
    __m128i more = _mm_cvtsi32_si128(table[high & 0xFFFF]);
    more = _mm_insert_epi16(more, table[high >> 16 & 0xFFFF], 1);
    more = _mm_insert_epi16(more, table[high >> 32 & 0xFFFF], 2);
    more = _mm_insert_epi16(more, table[high >> 48], 3);
    return _mm_unpacklo_epi64(found, more);
}

// The lead bytes among bytes of which `high` are 80 and above, the first not a trail byte: in each run of
// high bytes the first, the third and so on.
template <typename Bits>
constexpr Bits LeadBytes(Bits high)
{
    constexpr Bits EVEN = static_cast<Bits>(0x5555555555555555);
    const Bits first = high & ~(high << 1);
    // The addition carries through the runs that begin at even places and clears them.
    const Bits inEvenRuns = high & ~(high + (first & EVEN));
    return (inEvenRuns & EVEN) | (high & ~inEvenRuns & ~EVEN);
}
}  // namespace fast

#endif  // CODETRANS_X86_VECTORS_H
