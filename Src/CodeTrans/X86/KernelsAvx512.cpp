// The kernels for AVX-512 with VBMI2: blocks of 64 bytes, of which compressing keeps those that count. Masked loads
// and stores reach exactly from the first character to the last, so there is no scratch between the caller's
// buffers and no remainder. No branch depends on the text but those for ASCII, for how many characters a block
// holds, and for what is not UTF-8 of one to three bytes.
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

// The first `count` bits, all of them above 63.
TARGET_AVX512 uint64_t First(unsigned long count)
{
    return count < 64 ? _bzhi_u64(~uint64_t{0}, static_cast<unsigned>(count)) : ~uint64_t{0};
}

TARGET_AVX512 __m512i LoadBytes(const void* from, uint64_t which)
{
    return _mm512_maskz_loadu_epi8(which, from);
}

// The bytes of `lanes` that `keep` marks; their number.
TARGET_AVX512 unsigned long StoreKept(__m512i lanes, uint64_t keep, unsigned char* out)
{
    const auto count = static_cast<unsigned long>(std::popcount(keep));
    _mm512_mask_storeu_epi8(out, First(count), _mm512_maskz_compress_epi8(keep, lanes));
    return count;
}

// The first `count` of 32 code units as wide characters.
TARGET_AVX512 void StoreWides(__m512i units, unsigned long count, unsigned char* out)
{
    const uint64_t which = First(count);
    _mm512_mask_storeu_epi32(out, static_cast<__mmask16>(which),
                             _mm512_cvtepu16_epi32(_mm512_castsi512_si256(units)));
    _mm512_mask_storeu_epi32(out + 64, static_cast<__mmask16>(which >> 16),
                             _mm512_cvtepu16_epi32(_mm512_extracti64x4_epi64(units, 1)));
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

}  // namespace

TARGET_AVX512 Progress avx512::Utf8ToWide(const unsigned char* src, unsigned long size, unsigned char* out)
{
    Progress at;
    uint64_t carry = 0;  // the bytes of this block that continue a character of the last
    while (at.read < size) {
        const unsigned long left = size - at.read, taken = std::min(left, BLOCK);
        const uint64_t within = First(left);
        const __m512i bytes = LoadBytes(src + at.read, within);
        const uint64_t high = _mm512_movepi8_mask(bytes);
        unsigned char* const to = out + at.written;
        if ((high | carry) == 0) {
            StoreWides(LowerUnits(bytes), taken, to);
            if (taken > 32) StoreWides(UpperUnits(bytes), taken - 32, to + 128);
            at.read += taken;
            at.written += 4 * taken;
            continue;
        }
        const uint64_t twos = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xC0)));
        const uint64_t threes = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xE0)));
        const uint64_t fours = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xF0)));
        const uint64_t following = twos << 1 | threes << 2 | carry;
        const uint64_t nextCarry = twos >> 63 | threes >> 62;
        const bool isCut = left < BLOCK       ? (following & ~within) != 0
                           : left < BLOCK + 2 ? nextCarry >> (left - BLOCK) != 0
                                              : false;
        if (following != (high & ~twos) || fours != 0 || isCut) {
            const unsigned long end = at.read + taken;
            at.read += static_cast<unsigned long>(std::popcount(carry));
            while (at.read < end) {
                const WideStep step = NextWide(src + at.read, size - at.read);
                if (step.isCharacter) StoreWide(out + at.written, static_cast<wchar_t>(step.cp));
                at.read += step.length;
                at.written += step.isCharacter ? sizeof(wchar_t) : 0;
            }
            carry = 0;
            continue;
        }
        const uint64_t starts = within & ~following;
        const __m512i second = LoadBytes(src + at.read + 1, First(left - 1));
        const __m512i third = LoadBytes(src + at.read + 2, left > 2 ? First(left - 2) : 0);
        const __m512i firsts = _mm512_maskz_compress_epi8(starts, bytes);
        const __m512i seconds = _mm512_maskz_compress_epi8(starts, second);
        const __m512i thirds = _mm512_maskz_compress_epi8(starts, third);
        const auto count = static_cast<unsigned long>(std::popcount(starts));
        StoreWides(DecodeUtf8(LowerUnits(firsts), LowerUnits(seconds), LowerUnits(thirds)), count, to);
        if (count > 32)
            StoreWides(DecodeUtf8(UpperUnits(firsts), UpperUnits(seconds), UpperUnits(thirds)), count - 32,
                       to + 128);
        at.read += taken;
        at.written += sizeof(wchar_t) * count;
        carry = nextCarry;
    }
    return at;
}

// In lanes of lead, middle, last byte, of which short ones use fewer.
TARGET_AVX512 Progress avx512::WideToUtf8(const wchar_t* src, unsigned long count, unsigned char* out)
{
    Progress at;
    while (at.read < count) {
        const unsigned long left = count - at.read;
        const auto used = static_cast<__mmask16>(First(left));
        const __m512i points = _mm512_maskz_loadu_epi32(used, src + at.read);
        if ((_mm512_testn_epi32_mask(points, points) & used) != 0) break;
        const __mmask16 isAscii = _mm512_cmplt_epu32_mask(points, _mm512_set1_epi32(0x80));
        if (isAscii == 0xFFFF) {
            const unsigned long taken = std::min(left, 16UL);
            _mm512_mask_cvtepi32_storeu_epi8(out + at.written, used, points);
            at.read += taken;
            at.written += taken;
            continue;
        }
        const __mmask16 isShort = _mm512_cmplt_epu32_mask(points, _mm512_set1_epi32(0x800));
        const __mmask16 isCharacter = used & _mm512_cmple_epu32_mask(points, _mm512_set1_epi32(0xFFFF));
        const __m512i lead = _mm512_srli_epi32(points, 12);
        const __m512i middle = _mm512_and_si512(_mm512_slli_epi32(points, 2), _mm512_set1_epi32(0x3F00));
        const __m512i last = _mm512_slli_epi32(_mm512_and_si512(points, _mm512_set1_epi32(0x3F)), 16);
        // The marks E0 80 80, or C0 80 in the last two bytes; ASCII as it is in the first.
        const __m512i marks =
            _mm512_mask_mov_epi32(_mm512_set1_epi32(0x8080E0), isShort, _mm512_set1_epi32(0x80C000));
        const __m512i sequence =
            _mm512_or_si512(_mm512_or_si512(lead, middle), _mm512_or_si512(last, marks));
        const __m512i lanes = _mm512_mask_mov_epi32(sequence, isAscii, points);
        const __m512i two =
            _mm512_mask_mov_epi32(_mm512_set1_epi32(0x808080), isShort, _mm512_set1_epi32(0x808000));
        const __m512i keep = _mm512_mask_mov_epi32(two, isAscii, _mm512_set1_epi32(0x80));
        at.written += StoreKept(
            lanes, _mm512_movepi8_mask(_mm512_maskz_mov_epi32(isCharacter, keep)), out + at.written);
        at.read += std::min(left, 16UL);
    }
    return at;
}

TARGET_AVX512 Progress avx512::Utf16ToGbk(const char* src, unsigned long count, unsigned char* out)
{
    Progress at;
    while (at.read < count) {
        const unsigned long left = count - at.read;
        const auto used = static_cast<__mmask32>(First(left));
        const __m512i block = _mm512_maskz_loadu_epi16(used, src + 2 * at.read);
        const __mmask32 twoBytes = _mm512_cmpge_epu16_mask(block, _mm512_set1_epi16(0x80));
        const unsigned long taken = std::min(left, 32UL);
        if (twoBytes == 0) {
            _mm512_mask_cvtepi16_storeu_epi8(out + at.written, used, block);
            at.read += taken;
            at.written += taken;
            continue;
        }
        // Look up what is not ASCII, side by side, and put it back where it came from.
        const __m512i indices = _mm512_maskz_compress_epi16(twoBytes, block);
        const __m512i found = LookUp32(CodeTable, indices, static_cast<unsigned>(std::popcount(twoBytes)));
        __m512i codes = _mm512_mask_expand_epi16(block, twoBytes, found);
        const __mmask32 lacking = _mm512_testn_epi16_mask(codes, codes) & twoBytes;
        codes = _mm512_mask_mov_epi16(codes, lacking, _mm512_set1_epi16(static_cast<short>(0xA1A1)));
        // High byte first; of ASCII the second byte alone.
        const __m512i lanes = _mm512_or_si512(_mm512_slli_epi16(codes, 8), _mm512_srli_epi16(codes, 8));
        const __m512i keep = _mm512_mask_mov_epi16(_mm512_set1_epi16(static_cast<short>(0x8000)), twoBytes,
                                                   _mm512_set1_epi16(static_cast<short>(0x8080)));
        at.written += StoreKept(lanes, _mm512_movepi8_mask(_mm512_maskz_mov_epi16(used, keep)),
                                out + at.written);
        at.read += taken;
    }
    return at;
}
}  // namespace fast
