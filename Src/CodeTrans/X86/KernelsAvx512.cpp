// The kernels for AVX-512 with VBMI2: blocks of 64 bytes, of which compressing keeps those that count. Masked
// loads and stores reach exactly from the first character to the last, so there is no scratch between the
// caller's buffers and no remainder. No branch depends on the text but those for ASCII, for how many
// characters a block holds, and for what is not UTF-8 of one to three bytes.
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

// The lead bytes among bytes of which `high` are 80 and above, the first not a trail byte: in each run of
// high bytes the first, the third and so on.
constexpr uint64_t LeadBytes(uint64_t high)
{
    constexpr uint64_t EVEN = 0x5555555555555555;
    const uint64_t first = high & ~(high << 1);
    // The addition carries through the runs that begin at even places and clears them.
    const uint64_t inEvenRuns = high & ~(high + (first & EVEN));
    return (inEvenRuns & EVEN) | (high & ~inEvenRuns & ~EVEN);
}

// By a mapping table of the model, or by the locale's code units, which hold no zero for what they know.
struct ModelTable {
    static constexpr bool KNOWS_ALL = true;
    static TARGET_AVX512 __m512i Indices(__m512i lead, __m512i trail)
    {
        const __m512i row = _mm512_subs_epu16(trail, _mm512_set1_epi16(0x40));
        return _mm512_or_si512(_mm512_slli_epi16(row, 7), _mm512_and_si512(lead, _mm512_set1_epi16(0x7F)));
    }
};

struct LocaleTable {
    static constexpr bool KNOWS_ALL = false;
    static TARGET_AVX512 __m512i Indices(__m512i lead, __m512i trail)
    {
        const __m512i codes = _mm512_or_si512(_mm512_slli_epi16(lead, 8), trail);
        return _mm512_and_si512(codes, _mm512_set1_epi16(0x7FFF));
    }
};

// Pairs and ASCII to 32 code units at a time, which `put` takes with their number. Returns the bytes read: up
// to a lone lead byte at the end or a block with a pair that the table does not know.
template <typename Table, typename Put>
TARGET_AVX512 inline unsigned long ForUnitsOfPairs(const unsigned short* table, const unsigned char* src,
                                                   unsigned long size, Put put)
{
    unsigned long read = 0;
    uint64_t carry = 0;  // the block begins with a trail byte
    for (; read < size; read += BLOCK) {
        const unsigned long left = size - read;
        const uint64_t within = First(left);
        const __m512i bytes = LoadBytes(src + read, within);
        const uint64_t high = _mm512_movepi8_mask(bytes);
        if ((high | carry) == 0) {
            put(LowerUnits(bytes), std::min(left, 32UL));
            if (left > 32) put(UpperUnits(bytes), std::min(left, BLOCK) - 32);
            if (left <= BLOCK) return size;
            continue;
        }
        uint64_t leads = LeadBytes(high & ~carry);
        const uint64_t cut = left <= BLOCK ? leads & uint64_t{1} << (left - 1) : 0;
        leads &= ~cut;
        const uint64_t trails = leads << 1 | carry;
        const uint64_t starts = within & ~trails & ~cut;
        const __m512i following = LoadBytes(src + read + 1, First(left - 1));
        const __m512i lead = LowerUnits(_mm512_maskz_compress_epi8(leads, bytes));
        const __m512i trail = LowerUnits(_mm512_maskz_compress_epi8(leads, following));
        const auto pairs = static_cast<unsigned>(std::popcount(leads));
        const __m512i found = LookUp32(table, Table::Indices(lead, trail), pairs);
        if (!Table::KNOWS_ALL && (_mm512_testn_epi16_mask(found, found) & First(pairs)) != 0) break;

        // Each character in its place, then the pairs' code units instead of their lead bytes.
        const __m512i characters = _mm512_maskz_compress_epi8(starts, bytes);
        const uint64_t isPair = _pext_u64(leads, starts);
        const auto lower = static_cast<__mmask32>(isPair), upper = static_cast<__mmask32>(isPair >> 32);
        const auto count = static_cast<unsigned long>(std::popcount(starts));
        put(_mm512_mask_expand_epi16(LowerUnits(characters), lower, found), std::min(count, 32UL));
        if (count > 32) {
            alignas(64) static constexpr uint16_t PLACES[32] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10,
                                                                11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
                                                                22, 23, 24, 25, 26, 27, 28, 29, 30, 31};
            const auto used = static_cast<short>(std::popcount(static_cast<uint32_t>(lower)));
            const __m512i places = _mm512_add_epi16(_mm512_load_si512(PLACES), _mm512_set1_epi16(used));
            const __m512i rest = _mm512_permutexvar_epi16(places, found);
            put(_mm512_mask_expand_epi16(UpperUnits(characters), upper, rest), count - 32);
        }
        if (left <= BLOCK) return size - (cut != 0);
        carry = leads >> 63;
    }
    return read + carry;
}

// The first `count` of 16 code points above 0 as UTF-8, those above U+FFFF dropped.
TARGET_AVX512 unsigned long StoreUtf8(__m512i points, unsigned long count, unsigned char* out)
{
    const __mmask16 isAscii = _mm512_cmplt_epu32_mask(points, _mm512_set1_epi32(0x80));
    const __mmask16 isShort = _mm512_cmplt_epu32_mask(points, _mm512_set1_epi32(0x800));
    const __mmask16 isCharacter =
        static_cast<__mmask16>(First(count)) & _mm512_cmple_epu32_mask(points, _mm512_set1_epi32(0xFFFF));
    // In lanes of lead, middle, last byte, of which short ones use fewer.
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
    const __m512i keep = _mm512_mask_mov_epi32(two, isAscii, _mm512_set1_epi32(0x80));
    return StoreKept(lanes, _mm512_movepi8_mask(_mm512_maskz_mov_epi32(isCharacter, keep)), out);
}

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
    const __m512i found = LookUp32(CodeTable, indices, static_cast<unsigned>(std::popcount(twoBytes)));
    return _mm512_mask_expand_epi16(units, twoBytes, found);
}

// 64 wide characters as ASCII, if all of them are from 1 to 7F.
TARGET_AVX512 bool StoreAscii64(const wchar_t* src, unsigned char* out)
{
    const __m512i a = _mm512_loadu_si512(src), b = _mm512_loadu_si512(src + 16);
    const __m512i c = _mm512_loadu_si512(src + 32), d = _mm512_loadu_si512(src + 48);
    // Packing narrows with saturation, in lanes of 128 bits: what is above 7F becomes a byte of 80 and above,
    // and what is negative 0, so that bytes above 0 as signed ones are just those that were.
    //   a0-3 b0-3 | a4-7 b4-7 | ...  and  c0-3 d0-3 | ...  become  a0-3 b0-3 c0-3 d0-3 | a4-7 b4-7 c4-7 d4-7 | ...
    const __m512i bytes = _mm512_packus_epi16(_mm512_packus_epi32(a, b), _mm512_packus_epi32(c, d));
    if (_mm512_cmpgt_epi8_mask(bytes, _mm512_setzero_si512()) != ~uint64_t{0}) return false;
    const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    _mm512_storeu_si512(out, _mm512_permutexvar_epi32(order, bytes));
    return true;
}

TARGET_AVX512 __mmask32 NotAscii(__m512i units)
{
    return _mm512_cmpge_epu16_mask(units, _mm512_set1_epi16(0x80));
}

// UTF-8 to 32 code units at a time, which `put` takes with their number, or does not. Single characters go to
// it in the same way.
template <typename Put>
TARGET_AVX512 inline unsigned long ForUnitsOfUtf8(const unsigned char* src, unsigned long size, Put put)
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
        const uint64_t following = twos << 1 | threes << 2 | carry;
        const uint64_t nextCarry = twos >> 63 | threes >> 62;
        const bool isCut = left < BLOCK       ? (following & ~within) != 0
                           : left < BLOCK + 2 ? nextCarry >> (left - BLOCK) != 0
                                              : false;
        if (following != (high & ~twos) || fours != 0 || isCut) {
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
        const uint64_t starts = within & ~following;
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
        carry = nextCarry;
    }
    return read + static_cast<unsigned long>(std::popcount(carry));
}

}  // namespace

TARGET_AVX512 Progress avx512::PairsToUtf16(const unsigned short* table, const unsigned char* src,
                                            unsigned long size, unsigned char* out)
{
    Progress at;
    at.read =
        ForUnitsOfPairs<ModelTable>(table, src, size, [&](__m512i units, unsigned long count) TARGET_AVX512 {
            _mm512_mask_storeu_epi16(out + at.written, static_cast<__mmask32>(First(count)), units);
            at.written += 2 * count;
        });
    return at;
}

TARGET_AVX512 Progress avx512::GbkToUtf8(const unsigned short* units, const unsigned char* src,
                                         unsigned long size, unsigned char* out)
{
    Progress at;
    at.read =
        ForUnitsOfPairs<LocaleTable>(units, src, size, [&](__m512i block, unsigned long count) TARGET_AVX512 {
            if (NotAscii(block) == 0) {
                _mm256_mask_storeu_epi8(out + at.written, static_cast<__mmask32>(First(count)),
                                        _mm512_cvtepi16_epi8(block));
                at.written += count;
                return;
            }
            const __m512i lower = _mm512_cvtepu16_epi32(_mm512_castsi512_si256(block));
            at.written += StoreUtf8(lower, count, out + at.written);
            if (count <= 16) return;
            const __m512i upper = _mm512_cvtepu16_epi32(_mm512_extracti64x4_epi64(block, 1));
            at.written += StoreUtf8(upper, count - 16, out + at.written);
        });
    return at;
}

TARGET_AVX512 Progress avx512::Utf8ToWide(const unsigned char* src, unsigned long size, unsigned char* out)
{
    Progress at;
    at.read = ForUnitsOfUtf8(src, size, [&](__m512i units, unsigned long count) TARGET_AVX512 {
        StoreWides(units, count, out + at.written);
        at.written += sizeof(wchar_t) * count;
        return true;
    });
    return at;
}

// In two stages a window, each of which runs further ahead than both could in one loop.
TARGET_AVX512 Progress avx512::Utf8ToGbk(const unsigned char* src, unsigned long size, unsigned char* out)
{
    constexpr unsigned long WINDOW = 1024;
    alignas(64) uint16_t units[WINDOW + 32];
    Progress at;
    while (at.read < size) {
        unsigned long decoded = 0;
        const auto store = [&](__m512i block, unsigned long count) TARGET_AVX512 {
            if (decoded >= WINDOW) return false;
            _mm512_storeu_si512(units + decoded, block);
            decoded += count;
            return true;
        };
        const unsigned long read = ForUnitsOfUtf8(src + at.read, size - at.read, store);
        unsigned long written = at.written;
        for (unsigned long i = 0; i < decoded; i += 32) {
            const unsigned long count = std::min(decoded - i, 32UL);
            const auto used = static_cast<__mmask32>(First(count));
            const __m512i block = _mm512_loadu_si512(units + i);
            if ((_mm512_testn_epi16_mask(block, block) & used) != 0) return at;
            const __mmask32 twoBytes = NotAscii(block) & used;
            if (twoBytes == 0) {
                _mm256_mask_storeu_epi8(out + written, used, _mm512_cvtepi16_epi8(block));
                written += count;
                continue;
            }
            const __m512i codes = GbkCodes(block, twoBytes);
            if ((twoBytes & ~_mm512_movepi16_mask(codes)) != 0) return at;
            written += StoreGbk(codes, twoBytes, count, out + written);
        }
        at.read += read;
        at.written = written;
    }
    return at;
}

TARGET_AVX512 Progress avx512::WideToUtf8(const wchar_t* src, unsigned long count, unsigned char* out)
{
    Progress at;
    bool wasAscii = true;  // ASCII comes in runs
    while (at.read < count) {
        if (wasAscii && count - at.read >= BLOCK && StoreAscii64(src + at.read, out + at.written)) {
            at += {BLOCK, BLOCK};
            continue;
        }
        const unsigned long taken = std::min(count - at.read, 16UL);
        const auto used = static_cast<__mmask16>(First(taken));
        const __m512i points = _mm512_maskz_loadu_epi32(used, src + at.read);
        if ((_mm512_testn_epi32_mask(points, points) & used) != 0) break;
        wasAscii = _mm512_cmpge_epu32_mask(points, _mm512_set1_epi32(0x80)) == 0;
        if (wasAscii) {
            _mm_mask_storeu_epi8(out + at.written, used, _mm512_cvtepi32_epi8(points));
            at.written += taken;
        } else {
            at.written += StoreUtf8(points, taken, out + at.written);
        }
        at.read += taken;
    }
    return at;
}

TARGET_AVX512 Progress avx512::Utf16ToGbk(const char* src, unsigned long count, unsigned char* out)
{
    Progress at;
    while (at.read < count) {
        const unsigned long taken = std::min(count - at.read, 32UL);
        const auto used = static_cast<__mmask32>(First(taken));
        const __m512i units = _mm512_maskz_loadu_epi16(used, src + 2 * at.read);
        const __mmask32 twoBytes = NotAscii(units);
        if (twoBytes == 0) {
            _mm256_mask_storeu_epi8(out + at.written, used, _mm512_cvtepi16_epi8(units));
            at.written += taken;
        } else {
            const __m512i codes = GbkCodes(units, twoBytes);
            const __mmask32 lacking = _mm512_testn_epi16_mask(codes, codes) & twoBytes;
            const __m512i replaced =
                _mm512_mask_mov_epi16(codes, lacking, _mm512_set1_epi16(static_cast<short>(0xA1A1)));
            at.written += StoreGbk(replaced, twoBytes, taken, out + at.written);
        }
        at.read += taken;
    }
    return at;
}
}  // namespace fast
