// Loads and stores of whole vectors at any address, look-ups, and the constants that the forms share.
#ifndef CODETRANS_X86_VECTORS_H
#define CODETRANS_X86_VECTORS_H

#include <immintrin.h>

#include <cstdint>
#include <cstring>

#define TARGET_AVX2 __attribute__((target("avx2,bmi,bmi2,popcnt")))

namespace fast
{
// The bits that mark the bytes of UTF-8, in lanes of 32 bits with the first byte lowest: of three bytes, and
// of two, which take the second and third place.
constexpr int UTF8_MARKS_OF_THREE = 0x8080E0, UTF8_MARKS_OF_TWO = 0x80C000;

// What GBK lacks, as the two bytes of the ideographic space, which are the same in either order.
constexpr int GBK_REPLACEMENT = 0xA1A1;

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

// Eight bytes from one place to another.
inline TARGET_AVX2 void Copy8(void* to, const void* from)
{
    _mm_storel_epi64(static_cast<__m128i*>(to), _mm_loadl_epi64(static_cast<const __m128i*>(from)));
}

inline TARGET_AVX2 unsigned Mask(__m128i bytes)
{
    return static_cast<unsigned>(_mm_movemask_epi8(bytes));
}

inline TARGET_AVX2 unsigned Mask(__m256i bytes)
{
    return static_cast<unsigned>(_mm256_movemask_epi8(bytes));
}

// A bit for each word, from its highest.
inline TARGET_AVX2 unsigned LaneMask(__m128i words)
{
    return Mask(_mm_packs_epi16(words, _mm_setzero_si128()));
}

// 32 bytes of ASCII as code units.
inline TARGET_AVX2 void WidenAscii(__m256i bytes, void* to)
{
    Store32(to, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(bytes)));
    Store32(static_cast<char*>(to) + 32, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(bytes, 1)));
}

// Eight look-ups at once: into memory, and into a vector.
inline TARGET_AVX2 void StoreLookUps8(const unsigned short* table, __m128i indices, unsigned char* to)
{
    const auto low = static_cast<uint64_t>(_mm_cvtsi128_si64(indices));
    const auto high = static_cast<uint64_t>(_mm_extract_epi64(indices, 1));
    const auto store = [&](unsigned i, uint64_t index) { memcpy(to + 2 * i, table + (index & 0xFFFF), 2); };
    store(0, low);
    store(1, low >> 16);
    store(2, low >> 32);
    store(3, low >> 48);
    store(4, high);
    store(5, high >> 16);
    store(6, high >> 32);
    store(7, high >> 48);
}

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

// The same by a table of 32 bits: four each.
inline TARGET_AVX2 __m128i LookUp4(const uint32_t* table, uint64_t indices)
{
    const auto entry = [&](unsigned i) { return static_cast<int>(table[indices >> 16 * i & 0xFFFF]); };
    return _mm_setr_epi32(entry(0), entry(1), entry(2), entry(3));
}
}  // namespace fast

#endif  // CODETRANS_X86_VECTORS_H
