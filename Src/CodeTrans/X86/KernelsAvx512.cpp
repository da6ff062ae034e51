// The kernels for AVX-512 with VBMI2, whose compressing and expanding of vectors does what takes tables of
// shuffles in AVX2: blocks of 64 source bytes or 32 code units, without a branch on the text but for ASCII
// and for how many look-ups a block needs.
#include <algorithm>
#include <bit>

#include "Bytes.h"
#include "Kernels.h"
#include "STLCodeTrans.h"
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

namespace fast
{
namespace
{
constexpr unsigned long BLOCK = 64;

TARGET_AVX512 __m512i Load64(const void* from)
{
    return _mm512_loadu_si512(from);
}

// The lower and the upper 32 bytes as 16-bit units.
TARGET_AVX512 __m512i LowerUnits(__m512i bytes)
{
    return _mm512_cvtepu8_epi16(_mm512_castsi512_si256(bytes));
}

TARGET_AVX512 __m512i UpperUnits(__m512i bytes)
{
    return _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(bytes, 1));
}

// The first `count` of 32 look-ups; more if that is cheaper.
TARGET_AVX512 __m512i LookUp32(const unsigned short* table, __m512i indices, unsigned count)
{
    const __m512i first = _mm512_castsi128_si512(LookUp8(table, _mm512_castsi512_si128(indices)));
    if (count <= 8) return first;
    const __m512i two = _mm512_inserti32x4(first, LookUp8(table, _mm512_extracti32x4_epi32(indices, 1)), 1);
    if (count <= 16) return two;
    const __m512i three = _mm512_inserti32x4(two, LookUp8(table, _mm512_extracti32x4_epi32(indices, 2)), 2);
    return _mm512_inserti32x4(three, LookUp8(table, _mm512_extracti32x4_epi32(indices, 3)), 3);
}

// 32 characters from the first, second and third byte of each, as far as they have so many.
TARGET_AVX512 __m512i DecodeUtf8(__m512i first, __m512i second, __m512i third)
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

TARGET_AVX512 Progress Utf8ToUnits(const unsigned char* src, unsigned long size, bool last, uint16_t* units)
{
    Progress at;
    uint64_t carry = 0;  // the bytes of this block that continue a sequence of the last
    while (at.read < size) {
        const __m512i bytes = Load64(src + at.read);
        const uint64_t high = _mm512_movepi8_mask(bytes);
        if ((high | carry) == 0) {
            _mm512_storeu_si512(units + at.written, LowerUnits(bytes));
            _mm512_storeu_si512(units + at.written + 32, UpperUnits(bytes));
            at.read += BLOCK;
            at.written += BLOCK;
            continue;
        }
        const uint64_t twos = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xC0)));
        const uint64_t threes = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xE0)));
        const uint64_t fours = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xF0)));
        const uint64_t following = twos << 1 | threes << 2 | carry;
        const uint64_t nextCarry = twos >> 63 | threes >> 62;
        const bool isCut = last && at.read + BLOCK >= size && nextCarry != 0;
        if (following != (high & ~twos) || fours != 0 || isCut) {
            const unsigned long end = last ? std::min(at.read + BLOCK, size) : at.read + BLOCK;
            at.read += static_cast<unsigned long>(std::popcount(carry));
            while (at.read < end) {
                const WideStep step = NextWide(src + at.read, last ? size - at.read : SLACK);
                units[at.written] = static_cast<uint16_t>(step.cp);
                at.read += step.length;
                at.written += step.isCharacter;
            }
            carry = 0;
            continue;
        }
        const uint64_t starts = ~following;
        const __m512i first = _mm512_maskz_compress_epi8(starts, bytes);
        const __m512i second = _mm512_maskz_compress_epi8(starts, Load64(src + at.read + 1));
        const __m512i third = _mm512_maskz_compress_epi8(starts, Load64(src + at.read + 2));
        _mm512_storeu_si512(units + at.written,
                            DecodeUtf8(LowerUnits(first), LowerUnits(second), LowerUnits(third)));
        const auto count = static_cast<unsigned long>(std::popcount(starts));
        if (count > 32)
            _mm512_storeu_si512(units + at.written + 32,
                                DecodeUtf8(UpperUnits(first), UpperUnits(second), UpperUnits(third)));
        at.read += BLOCK;
        at.written += count;
        carry = nextCarry;
    }
    at.read += static_cast<unsigned long>(std::popcount(carry));
    if (!last || at.read <= size) return at;
    return {size, at.written - (at.read - size)};
}

// ---------------------------------------------------------------------------------------------------------
// From code units

TARGET_AVX512 bool IsAscii(__m512i units)
{
    return _mm512_test_epi16_mask(units, _mm512_set1_epi16(static_cast<short>(0xFF80))) == 0;
}

TARGET_AVX512 void NarrowAscii(__m512i units, unsigned char* out)
{
    Store32(out, _mm512_cvtepi16_epi8(units));
}

// Stores the bytes of `lanes` that `keep` marks by their upper bit; their number.
TARGET_AVX512 unsigned long StoreKept(__m512i lanes, __m512i keep, unsigned char* out)
{
    const uint64_t kept = _mm512_movepi8_mask(keep);
    _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(kept, lanes));
    return static_cast<unsigned long>(std::popcount(kept));
}

TARGET_AVX512 Progress UnitsToGbk(const uint16_t* units, unsigned long size, unsigned char* out)
{
    Progress at;
    while (at.read < size) {
        const __m512i block = Load64(units + at.read);
        if (IsAscii(block)) {
            NarrowAscii(block, out + at.written);
            at.read += 32;
            at.written += 32;
            continue;
        }
        // Look up what is not ASCII, side by side, and put it back where it came from.
        const __mmask32 twoBytes = _mm512_cmpge_epu16_mask(block, _mm512_set1_epi16(0x80));
        const __m512i indices = _mm512_maskz_compress_epi16(twoBytes, block);
        const __m512i found = LookUp32(CodeTable, indices, static_cast<unsigned>(std::popcount(twoBytes)));
        __m512i codes = _mm512_mask_expand_epi16(block, twoBytes, found);
        const __mmask32 lacking = _mm512_testn_epi16_mask(codes, codes) & twoBytes;
        codes = _mm512_mask_mov_epi16(codes, lacking, _mm512_set1_epi16(static_cast<short>(0xA1A1)));
        // High byte first; of ASCII the second byte alone.
        const __m512i lanes = _mm512_or_si512(_mm512_slli_epi16(codes, 8), _mm512_srli_epi16(codes, 8));
        const __m512i keep = _mm512_mask_mov_epi16(_mm512_set1_epi16(static_cast<short>(0x8000)), twoBytes,
                                                   _mm512_set1_epi16(static_cast<short>(0x8080)));
        at.written += StoreKept(lanes, keep, out + at.written);
        at.read += 32;
    }
    return at;
}

// 16 code units in lanes of lead, middle, last byte, of which short ones use fewer.
TARGET_AVX512 unsigned long EncodeUtf8(__m256i units, unsigned char* out)
{
    const __m512i points = _mm512_cvtepu16_epi32(units);
    const __mmask16 isAscii = _mm512_cmplt_epu32_mask(points, _mm512_set1_epi32(0x80));
    const __mmask16 isShort = _mm512_cmplt_epu32_mask(points, _mm512_set1_epi32(0x800));
    const __m512i lead = _mm512_srli_epi32(points, 12);
    const __m512i middle = _mm512_and_si512(_mm512_slli_epi32(points, 2), _mm512_set1_epi32(0x3F00));
    const __m512i last = _mm512_slli_epi32(_mm512_and_si512(points, _mm512_set1_epi32(0x3F)), 16);
    // The marks E0 80 80, or C0 80 in the last two bytes; ASCII as it is in the first.
    const __m512i marks =
        _mm512_mask_mov_epi32(_mm512_set1_epi32(0x8080E0), isShort, _mm512_set1_epi32(0x80C000));
    const __m512i sequence = _mm512_or_si512(_mm512_or_si512(lead, middle), _mm512_or_si512(last, marks));
    const __m512i lanes = _mm512_mask_mov_epi32(sequence, isAscii, points);
    const __m512i two =
        _mm512_mask_mov_epi32(_mm512_set1_epi32(0x808080), isShort, _mm512_set1_epi32(0x808000));
    return StoreKept(lanes, _mm512_mask_mov_epi32(two, isAscii, _mm512_set1_epi32(0x80)), out);
}

TARGET_AVX512 Progress UnitsToUtf8(const uint16_t* units, unsigned long size, unsigned char* out)
{
    Progress at;
    for (; at.read < size; at.read += 32) {
        const __m512i block = Load64(units + at.read);
        if (IsAscii(block)) {
            NarrowAscii(block, out + at.written);
            at.written += 32;
            continue;
        }
        at.written += EncodeUtf8(_mm512_castsi512_si256(block), out + at.written);
        at.written += EncodeUtf8(_mm512_extracti64x4_epi64(block, 1), out + at.written);
    }
    return at;
}
}  // namespace

const Kernels KERNELS_AVX512 = {Utf8ToUnits, UnitsToUtf8, UnitsToGbk};
}  // namespace fast
