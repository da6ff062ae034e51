// UTF-8 to and from wide characters, with AVX-512.
//
//     to wide characters: for each block of 64 bytes, its first, second and third bytes of characters
//         compressed side by side, their bits put together and widened
//     from wide characters:
//         while text is ASCII: 64 characters, narrowed by packing
//         else 16 characters, each in a lane of the three bytes that it takes at most; the bytes that count
//             are compressed and stored
#include "Avx512.h"
#include "Bytes.h"
#include "Kernels.h"

namespace fast::avx512
{
namespace
{
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

// The first `count` of 16 code points above 0 as UTF-8, those above U+FFFF dropped.
TARGET_AVX512 unsigned long StoreUtf8(__m512i points, unsigned long count, unsigned char* out)
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

// The first `count` of 32 code units as wide characters.
TARGET_AVX512 void StoreWides(__m512i units, unsigned long count, unsigned char* out)
{
    const uint64_t which = First(count);
    _mm512_mask_storeu_epi32(out, static_cast<__mmask16>(which),
                             _mm512_cvtepu16_epi32(_mm512_castsi512_si256(units)));
    _mm512_mask_storeu_epi32(out + 64, static_cast<__mmask16>(which >> 16),
                             _mm512_cvtepu16_epi32(_mm512_extracti64x4_epi64(units, 1)));
}

// 64 wide characters as ASCII, if all of them are from 1 to 7F.
TARGET_AVX512 bool StoreAscii64(const wchar_t* src, unsigned char* out)
{
    const __m512i a = _mm512_loadu_si512(src), b = _mm512_loadu_si512(src + 16);
    const __m512i c = _mm512_loadu_si512(src + 32), d = _mm512_loadu_si512(src + 48);
    // Packing narrows with saturation, in lanes of 128 bits: what is above 7F becomes a byte of 80 and above,
    // and what is negative 0, so that bytes above 0 as signed ones are just those that were.
    //   a0-3 b0-3 | a4-7 b4-7 | ...  and  c0-3 d0-3 | ...  become  a0-3 b0-3 c0-3 d0-3 | a4-7 b4-7 c4-7 d4-7
    //   | ...
    const __m512i bytes = _mm512_packus_epi16(_mm512_packus_epi32(a, b), _mm512_packus_epi32(c, d));
    if (_mm512_cmpgt_epi8_mask(bytes, _mm512_setzero_si512()) != ~uint64_t{0}) return false;
    const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    _mm512_storeu_si512(out, _mm512_permutexvar_epi32(order, bytes));
    return true;
}
}  // namespace

TARGET_AVX512 Progress Utf8ToWide(const unsigned char* src, unsigned long size, unsigned char* out)
{
    Progress at;
    const auto put = [&](__m512i units, unsigned long count) TARGET_AVX512 {
        StoreWides(units, count, out + at.written);
        at.written += sizeof(wchar_t) * count;
    };
    uint64_t carry = 0;  // the bytes of this block that continue a character of the last
    while (at.read < size) {
        const unsigned char* const from = src + at.read;
        const unsigned long left = size - at.read, taken = std::min(left, BLOCK);
        const uint64_t within = First(left);
        const __m512i bytes = LoadBytes(from, within);
        const uint64_t high = _mm512_movepi8_mask(bytes);
        if ((high | carry) == 0 && left >= BLOCK) {
            for (unsigned i = 0; i < BLOCK; i += 16)
                _mm512_storeu_si512(out + at.written + 4 * i, _mm512_cvtepu8_epi32(Load16(from + i)));
            at += {BLOCK, 4 * BLOCK};
            continue;
        }
        if ((high | carry) == 0) {
            put(LowerUnits(bytes), std::min(taken, 32UL));
            if (taken > 32) put(UpperUnits(bytes), taken - 32);
            at.read += taken;
            continue;
        }
        const Utf8Block<uint64_t> block = Utf8Masks(bytes).Block(carry);
        if (!block.IsPlain() || block.IsCut(left)) {
            const unsigned long end = at.read + taken;
            at.read += static_cast<unsigned long>(std::popcount(carry));
            while (at.read < end) {
                const WideStep step = NextWide(src + at.read, size - at.read);
                const __m512i unit = _mm512_castsi128_si512(_mm_cvtsi32_si128(static_cast<int>(step.cp)));
                if (step.isCharacter) put(unit, 1);
                at.read += step.length;
            }
            carry = 0;
            continue;
        }
        const uint64_t starts = within & ~block.Following();
        const __m512i second = LoadBytes(from + 1, First(left - 1));
        const __m512i third = LoadBytes(from + 2, left > 2 ? First(left - 2) : 0);
        const __m512i firsts = _mm512_maskz_compress_epi8(starts, bytes);
        const __m512i seconds = _mm512_maskz_compress_epi8(starts, second);
        const __m512i thirds = _mm512_maskz_compress_epi8(starts, third);
        const auto count = static_cast<unsigned long>(std::popcount(starts));
        put(DecodeUtf8(LowerUnits(firsts), LowerUnits(seconds), LowerUnits(thirds)), std::min(count, 32UL));
        if (count > 32)
            put(DecodeUtf8(UpperUnits(firsts), UpperUnits(seconds), UpperUnits(thirds)), count - 32);
        at.read += taken;
        carry = block.Carry();
    }
    return at;
}

TARGET_AVX512 Progress WideToUtf8(const wchar_t* src, unsigned long count, unsigned char* out)
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
}  // namespace fast::avx512
