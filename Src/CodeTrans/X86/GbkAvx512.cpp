// Between GBK or Big5, whose codes are looked up, and UTF-16, with AVX-512.
//
// To UTF-16, in blocks of 64 bytes:
//
//     leads = the first, third ... byte of each run of bytes of 80 and above
//     indices = lead bytes compressed beside their trail bytes compressed
//     look up the indices, sixteen at a time
//     spread the code units found to the places of their lead bytes among the characters of the block
//
// To GBK, in blocks of 32 code units: those that are not ASCII are compressed, looked up, and spread to where
// they came from; of each code, one byte or two are kept and stored.
#include "Avx512.h"
#include "Kernels.h"
#include "STLCodeTrans.h"

namespace fast::avx512
{
namespace
{
// The first `count` of 32 look-ups, then anything.
TARGET_AVX512 __m512i LookUp32(const unsigned short* table, __m512i indices, unsigned long count)
{
    const uint64_t which = First(count);
    const auto lookUp = [&](__m256i half, uint64_t used) TARGET_AVX512 {
        return _mm512_cvtepi32_epi16(
            LookUp16(table, _mm512_cvtepu16_epi32(half), static_cast<__mmask16>(used)));
    };
    const __m512i lower = _mm512_castsi256_si512(lookUp(_mm512_castsi512_si256(indices), which));
    if (count <= 16) return lower;
    return _mm512_inserti64x4(lower, lookUp(_mm512_extracti64x4_epi64(indices, 1), which >> 16), 1);
}

// As PairIndex: (trail - 40) * 128 + the seven lower bits of the lead byte, row 0 for trails below 40.
TARGET_AVX512 __m512i PairIndices(__m512i lead, __m512i trail)
{
    const __m512i row = _mm512_subs_epu16(trail, _mm512_set1_epi16(0x40));
    return _mm512_or_si512(_mm512_slli_epi16(row, 7), _mm512_and_si512(lead, _mm512_set1_epi16(0x7F)));
}
static_assert(MAPPING_ENTRIES % 2 == 0 && std::size(CodeTable) % 2 == 0, "LookUp16 wants whole pairs");

// The first `count` of 32 codes as GBK: ASCII, and two bytes, high byte first, where `twoBytes`.
TARGET_AVX512 unsigned long StoreGbk(__m512i codes, __mmask32 twoBytes, unsigned long count,
                                     unsigned char* out)
{
    const __m512i lanes = _mm512_or_si512(_mm512_slli_epi16(codes, 8), _mm512_srli_epi16(codes, 8));
    const __m512i keep = _mm512_mask_mov_epi16(_mm512_set1_epi16(static_cast<short>(0x8000)), twoBytes,
                                               _mm512_set1_epi16(static_cast<short>(0x8080)));
    const auto used = static_cast<__mmask32>(First(count));
    return StoreKept(lanes, _mm512_movepi8_mask(_mm512_maskz_mov_epi16(used, keep)), out);
}

// The codes of 32 code units by CodeTable, ASCII as it is. `twoBytes`: what is not.
TARGET_AVX512 __m512i GbkCodes(__m512i units, __mmask32 twoBytes)
{
    // Look up what is not ASCII, side by side, and put it back where it came from.
    const __m512i indices = _mm512_maskz_compress_epi16(twoBytes, units);
    const __m512i found = LookUp32(CodeTable, indices, static_cast<unsigned long>(std::popcount(twoBytes)));
    return _mm512_mask_expand_epi16(units, twoBytes, found);
}
}  // namespace

TARGET_AVX512 Progress PairsToUtf16(const unsigned short* table, const unsigned char* src, unsigned long size,
                                    unsigned char* out)
{
    Progress at;
    const auto put = [&](__m512i units, unsigned long count) TARGET_AVX512 {
        _mm512_mask_storeu_epi16(out + at.written, static_cast<__mmask32>(First(count)), units);
        at.written += 2 * count;
    };
    uint64_t carry = 0;  // the block begins with a trail byte
    for (; at.read < size; at.read += BLOCK) {
        const unsigned long left = size - at.read;
        const uint64_t within = First(left);
        const __m512i bytes = LoadBytes(src + at.read, within);
        const uint64_t high = _mm512_movepi8_mask(bytes);
        if ((high | carry) == 0) {
            put(LowerUnits(bytes), std::min(left, 32UL));
            if (left > 32) put(UpperUnits(bytes), std::min(left, BLOCK) - 32);
            continue;
        }
        uint64_t leads = LeadBytes(high, carry);
        const uint64_t cut = left <= BLOCK ? leads & uint64_t{1} << (left - 1) : 0;
        leads &= ~cut;
        const uint64_t trails = leads << 1 | carry;
        const uint64_t starts = within & ~trails & ~cut;
        const __m512i following = LoadBytes(src + at.read + 1, First(left - 1));
        const __m512i lead = LowerUnits(_mm512_maskz_compress_epi8(leads, bytes));
        const __m512i trail = LowerUnits(_mm512_maskz_compress_epi8(leads, following));
        const auto pairs = static_cast<unsigned long>(std::popcount(leads));
        const __m512i found = LookUp32(table, PairIndices(lead, trail), pairs);

        // Each character in its place, then the pairs' code units instead of their lead bytes.
        const __m512i characters = _mm512_maskz_compress_epi8(starts, bytes);
        const uint64_t isPair = _pext_u64(leads, starts);
        const auto lower = static_cast<__mmask32>(isPair), upper = static_cast<__mmask32>(isPair >> 32);
        const auto count = static_cast<unsigned long>(std::popcount(starts));
        put(_mm512_mask_expand_epi16(LowerUnits(characters), lower, found), std::min(count, 32UL));
        if (count > 32) {
            const auto used = static_cast<unsigned>(std::popcount(static_cast<uint32_t>(lower)));
            const __m512i rest = _mm512_permutexvar_epi16(PlacesFrom(used), found);
            put(_mm512_mask_expand_epi16(UpperUnits(characters), upper, rest), count - 32);
        }
        if (left <= BLOCK) {
            at.read = size - (cut != 0);
            return at;
        }
        carry = leads >> 63;
    }
    at.read = size;
    return at;
}

TARGET_AVX512 Progress Utf16ToGbk(const char* src, unsigned long count, unsigned char* out)
{
    Progress at;
    while (at.read < count) {
        const unsigned long taken = std::min(count - at.read, 32UL);
        const auto used = static_cast<__mmask32>(First(taken));
        const __m512i units = _mm512_maskz_loadu_epi16(used, src + 2 * at.read);
        const __mmask32 twoBytes = _mm512_cmpge_epu16_mask(units, _mm512_set1_epi16(0x80));
        if (twoBytes == 0) {
            _mm256_mask_storeu_epi8(out + at.written, used, _mm512_cvtepi16_epi8(units));
            at.written += taken;
        } else {
            const __m512i codes = GbkCodes(units, twoBytes);
            const __mmask32 lacking = _mm512_testn_epi16_mask(codes, codes) & twoBytes;
            const __m512i replaced =
                _mm512_mask_mov_epi16(codes, lacking, _mm512_set1_epi16(static_cast<short>(GBK_REPLACEMENT)));
            at.written += StoreGbk(replaced, twoBytes, taken, out + at.written);
        }
        at.read += taken;
    }
    return at;
}
}  // namespace fast::avx512
