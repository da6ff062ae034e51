// Splits values into digits eight at a time and adds them up; see ValueSums.h.
//
//     for each eight values:
//         divide by 400: the digits of UTF-16LE and UTF-8 above, of GBK and Big5 below
//         divide both by 20 at once: one digit each
//         add the digits, count those above 9 and the values that add nothing
//     if one of them decides: look for the first that does
//     add the lanes of each sum, less 9 a value
#include "ValueSums.h"

#include <algorithm>
#include <bit>

#include "Vectors.h"

namespace fast
{
namespace
{
// A division as a multiplication and a shift.
struct Division {
    int factor, shift;

    constexpr int Of(int number) const { return number * factor >> shift; }
};
constexpr Division DIVISION_BY_25 = {5243, 17}, DIVISION_BY_20 = {3277, 16};

constexpr bool IsExact(Division division, int divisor, int end)
{
    for (int number = 0; number < end; ++number)
        if (division.Of(number) != number / divisor) return false;
    return true;
}
// By 400 is by 16 and by 25, which a number of 14 bits is left for.
static_assert(IsExact(DIVISION_BY_25, 25, 1 << 14));
// What is left are the lower two digits, below 400, and the upper two: 0x3FFFF / 400 = 655 at most.
// The high half of a product of 16 bits is a shift by 16.
static_assert(IsExact(DIVISION_BY_20, 20, 656) && 0x3FFFF / 400 == 655 && DIVISION_BY_20.shift == 16);
static_assert(MOST_VALUES / 8 * (655 / 20) < 1 << 15, "sums of lanes");

// The sums of four vectors' lanes of 32 bits.
TARGET_AVX2 __m128i SumsOf(__m256i a, __m256i b, __m256i c, __m256i d)
{
    const __m256i halves = _mm256_hadd_epi32(_mm256_hadd_epi32(a, b), _mm256_hadd_epi32(c, d));
    return _mm_add_epi32(_mm256_castsi256_si128(halves), _mm256_extracti128_si256(halves, 1));
}

// One number for each encoding.
struct FourSums {
    alignas(16) int gbk;
    int big5, unicode, utf8;
};

// From lanes of 16 bits: in `first` GBK's at even places and UTF-16LE's at odd ones, in `second` Big5's and
// UTF-8's.
TARGET_AVX2 FourSums SumDigits(__m256i first, __m256i second)
{
    const __m256i even = _mm256_set1_epi32(1), odd = _mm256_set1_epi32(1 << 16);
    FourSums sums;
    _mm_store_si128(reinterpret_cast<__m128i*>(&sums),
                    SumsOf(_mm256_madd_epi16(first, even), _mm256_madd_epi16(second, even),
                           _mm256_madd_epi16(first, odd), _mm256_madd_epi16(second, odd)));
    return sums;
}

int FirstCode(const int* values, const int* end)
{
    while (values < end && TrieValueCode(*values) == 0) ++values;
    return values < end ? TrieValueCode(*values) : 0;
}
}  // namespace

TARGET_AVX2 void AddValues(int* values, int* end, Scores& scores)
{
    std::fill(end, end + 7, TRIE_VALUE_NONE);  // adds nothing and is not positive
    const __m256i twenty = _mm256_set1_epi16(20), nine = _mm256_set1_epi16(9);
    __m256i all = _mm256_setzero_si256(), ones = all, tens = all, positiveOnes = all, positiveTens = all;
    __m256i none = all;
    int count = 0;
    for (const int* at = values; at < end; at += 8, count += 8) {
        const __m256i value = Load32(at);
        all = _mm256_or_si256(all, value);
        none = _mm256_sub_epi32(none, _mm256_cmpeq_epi32(value, _mm256_set1_epi32(TRIE_VALUE_NONE)));
        // In each lane of 32 bits, with the digits g, b, u and e of the four encodings:
        //
        //     digits               8000 e + 400 u + 20 b + g, 18 bits
        //     upper                               20 e + u, 10 bits
        //     lower                               20 b + g, 9 bits
        const __m256i digits = _mm256_and_si256(value, _mm256_set1_epi32(0x3FFFF));
        const __m256i upper = _mm256_srli_epi32(
            _mm256_madd_epi16(_mm256_srli_epi32(digits, 4), _mm256_set1_epi32(DIVISION_BY_25.factor)),
            DIVISION_BY_25.shift);
        const __m256i lower = _mm256_sub_epi32(digits, _mm256_madd_epi16(upper, _mm256_set1_epi32(400)));
        // In its halves:
        //
        //     pairs                20 e + u | 20 b + g
        //     second                      e | b
        //     first                       u | g
        const __m256i pairs = _mm256_or_si256(lower, _mm256_slli_epi32(upper, 16));
        const __m256i second = _mm256_mulhi_epu16(pairs, _mm256_set1_epi16(DIVISION_BY_20.factor));
        const __m256i first = _mm256_sub_epi16(pairs, _mm256_mullo_epi16(second, twenty));
        ones = _mm256_add_epi16(ones, first);
        tens = _mm256_add_epi16(tens, second);
        positiveOnes = _mm256_sub_epi16(positiveOnes, _mm256_cmpgt_epi16(first, nine));
        positiveTens = _mm256_sub_epi16(positiveTens, _mm256_cmpgt_epi16(second, nine));
    }
    if (!_mm256_testz_si256(all, _mm256_set1_epi32(static_cast<int>(0xFFF00000)))) {
        scores.decidedCode = FirstCode(values, end);
        return;
    }
    const FourSums digits = SumDigits(ones, tens), positive = SumDigits(positiveOnes, positiveTens);
    const int silent = _mm_cvtsi128_si32(SumsOf(none, none, none, none));
    scores.sumGbk += static_cast<unsigned>(digits.gbk - 9 * count);
    scores.sumBig5 += static_cast<unsigned>(digits.big5 - 9 * count);
    scores.sumUnicode += static_cast<unsigned>(digits.unicode - 9 * count);
    scores.sumUtf8 += static_cast<unsigned>(digits.utf8 - 9 * count);
    scores.positiveGbk += positive.gbk;
    scores.positiveBig5 += positive.big5;
    scores.positiveUnicode += positive.unicode;
    scores.positiveUtf8 += positive.utf8;
    scores.nonPositiveUnicode += count - silent - positive.unicode;
}

TARGET_AVX2 int CountHighBytes(const unsigned char* text, unsigned long size)
{
    int count = 0;
    unsigned long i = 0;
    for (; i + 32 <= size; i += 32) count += std::popcount(Mask(Load32(text + i)));
    for (; i < size; ++i) count += text[i] >> 7;
    return count;
}
}  // namespace fast
