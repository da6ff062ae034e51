// The kernels for text with hanzi whose codes are looked up: AVX2, which AVX-512 has nothing to add to.
//
// Hanzi come in runs and so does ASCII. A step takes up to eight hanzi and up to sixteen ASCII characters behind
// them; how many there are is counted in bit masks, without a branch. What is stored behind the end of a run is
// overwritten by the next step. The branches that there are, for a whole block of ASCII and for hanzi without
// anything behind them, go the same way for as long as a run lasts.
#include <algorithm>

#include "Bytes.h"
#include "Kernels.h"
#include "STLCodeTrans.h"
#include "Vectors.h"

namespace fast
{
namespace
{
constexpr unsigned long BLOCK = 32;

constexpr unsigned EIGHT_PAIRS = 16;  // bytes
constexpr unsigned MOST_ASCII = 16;

// The bytes of ASCII from `from` on, in a block of which `high` bytes are not, or lie behind the text.
TARGET_AVX2 unsigned AsciiRun(unsigned high, unsigned from)
{
    return _tzcnt_u32(high >> from | 1U << MOST_ASCII);
}

// Pairs, and ASCII behind them, in 32 bytes of which `high` are 80 and above and `left` belong to the text.
template <bool END>
struct PairRuns {
    unsigned pairs, ascii;  // bytes

    TARGET_AVX2 PairRuns(unsigned high, unsigned long left)
    {
        unsigned leads = high, notAscii = high;
        if constexpr (END) {
            leads = _bzhi_u32(high, static_cast<unsigned>(left) - 1);
            notAscii = high | ~0U << left;
        }
        pairs = _tzcnt_u32((~leads & 0x5555) | 1U << EIGHT_PAIRS);
        ascii = AsciiRun(notAscii, pairs);
    }
};

// One step; false when there is none.
template <bool END>
TARGET_AVX2 bool PairsToUtf16Step(const unsigned short* table, const unsigned char* src, unsigned long size,
                                  char* out, Progress& at)
{
    const __m256i bytes = Load32(src + at.read);
    const unsigned long left = size - at.read;
    char* const to = out + at.written;
    const unsigned high = Mask(bytes);
    if (!END && high == 0) {
        WidenAscii(bytes, to);
        at.read += BLOCK;
        at.written += 2 * BLOCK;
        return true;
    }
    const PairRuns<END> runs(high, left);
    const __m128i pairs = _mm256_castsi256_si128(bytes);
    const __m128i lead = _mm_and_si128(pairs, _mm_set1_epi16(0x7F));
    const __m128i row = _mm_subs_epu16(_mm_srli_epi16(pairs, 8), _mm_set1_epi16(0x40));
    StoreLookUps8(table, _mm_or_si128(_mm_slli_epi16(row, 7), lead), to);
    if (runs.pairs == EIGHT_PAIRS) {
        at.read += EIGHT_PAIRS;
        at.written += EIGHT_PAIRS;
        return true;
    }
    at.read += runs.pairs;
    at.written += runs.pairs;
    if (runs.pairs + runs.ascii == 0) return false;  // a lone lead byte
    Store32(out + at.written, _mm256_cvtepu8_epi16(Load16(src + at.read)));
    at.read += runs.ascii;
    at.written += 2 * runs.ascii;
    return true;
}
}  // namespace

// Bytes of 80 and above take the next one with them.
TARGET_AVX2 Progress PairsToUtf16(const unsigned short* table, const unsigned char* src, unsigned long size,
                                  char* out)
{
    Progress at;
    while (at.read + BLOCK <= size && PairsToUtf16Step<false>(table, src, size, out, at)) {
    }
    while (at.read < size && PairsToUtf16Step<true>(table, src, size, out, at)) {
    }
    return at;
}

namespace
{
// Three bytes of each of eight entries of a sequence table; a bit for each of those with another length.
TARGET_AVX2 unsigned StoreSequences8(const uint32_t* table, __m128i indices, unsigned char* out)
{
    const __m128i first = LookUp4(table, static_cast<uint64_t>(_mm_cvtsi128_si64(indices)));
    const __m128i second = LookUp4(table, static_cast<uint64_t>(_mm_extract_epi64(indices, 1)));
    const __m128i three =
        _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -128, -128, -128, -128);
    Store16(out, _mm_shuffle_epi8(first, three));
    Store16(out + 12, _mm_shuffle_epi8(second, three));
    return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(first)) |
                                 _mm_movemask_ps(_mm_castsi128_ps(second)) << 4);
}

// One step; false when there is none.
template <bool END>
TARGET_AVX2 bool GbkToUtf8Step(const uint32_t* sequences, const unsigned char* src, unsigned long size,
                               unsigned char* out, Progress& at)
{
    const __m256i bytes = Load32(src + at.read);
    const unsigned long left = size - at.read;
    unsigned char* const to = out + at.written;
    const unsigned high = Mask(bytes);
    if (!END && high == 0) {
        Store32(to, bytes);
        at.read += BLOCK;
        at.written += BLOCK;
        return true;
    }
    const PairRuns<END> runs(high, left);
    const __m128i pairs = _mm256_castsi256_si128(bytes);
    const __m128i codes = _mm_or_si128(_mm_slli_epi16(pairs, 8), _mm_srli_epi16(pairs, 8));
    const __m128i indices = _mm_and_si128(codes, _mm_set1_epi16(0x7FFF));
    const unsigned others = _bzhi_u32(StoreSequences8(sequences, indices, to), runs.pairs / 2);
    if (others != 0) {
        const unsigned good = _tzcnt_u32(others);
        at.read += 2 * good;
        at.written += 3 * good;
        const uint32_t sequence = sequences[(src[at.read] & 0x7FU) << 8 | src[at.read + 1]];
        if (sequence == LocaleSequences::NONE) return false;
        memcpy(out + at.written, &sequence, 2);
        at.read += 2;
        at.written += 2;
        return true;
    }
    if (runs.pairs == EIGHT_PAIRS) {
        at.read += EIGHT_PAIRS;
        at.written += EIGHT_PAIRS / 2 * 3;
        return true;
    }
    at.read += runs.pairs;
    at.written += runs.pairs / 2 * 3;
    if (runs.pairs + runs.ascii == 0) return false;  // a lone lead byte
    Store16(out + at.written, Load16(src + at.read));
    at.read += runs.ascii;
    at.written += runs.ascii;
    return true;
}
}  // namespace

// GBK by the table of the locale's sequences; stops at a pair that it does not hold.
TARGET_AVX2 Progress GbkToUtf8(const uint32_t* sequences, const unsigned char* src, unsigned long size,
                               unsigned char* out)
{
    Progress at;
    while (at.read + BLOCK <= size && GbkToUtf8Step<false>(sequences, src, size, out, at)) {
    }
    while (at.read < size && GbkToUtf8Step<true>(sequences, src, size, out, at)) {
    }
    return at;
}

namespace
{
constexpr unsigned EIGHT_TRIPLES = 24;  // bytes
constexpr unsigned TRIPLES = 0x249249;  // where they begin

// Sequences of three bytes whose continuation bytes are such, and ASCII behind them, in 32 bytes, `left` of
// which belong to the text.
template <bool END>
struct TripleRuns {
    unsigned triples, ascii;  // bytes

    TARGET_AVX2 TripleRuns(__m256i bytes, unsigned high, unsigned long left)
    {
        const __m256i upper = _mm256_and_si256(bytes, _mm256_set1_epi8(static_cast<char>(0xF0)));
        unsigned leads = Mask(_mm256_cmpeq_epi8(upper, _mm256_set1_epi8(static_cast<char>(0xE0))));
        const unsigned following = Mask(_mm256_cmpgt_epi8(_mm256_set1_epi8(static_cast<char>(0xC0)), bytes));
        unsigned notAscii = high;
        if constexpr (END) {
            leads = left > 2 ? _bzhi_u32(leads, static_cast<unsigned>(left) - 2) : 0;
            notAscii |= ~0U << left;
        }
        const unsigned whole = leads & following >> 1 & following >> 2;
        triples = _tzcnt_u32((~whole & TRIPLES) | 1U << EIGHT_TRIPLES);
        // Eight bytes are left behind eight triples.
        ascii = _tzcnt_u32(notAscii >> triples | 1U << (BLOCK - EIGHT_TRIPLES));
    }
};

// The code units of eight sequences of three bytes, in lanes of 32 bits.
TARGET_AVX2 __m256i DecodeTriples(const unsigned char* src)
{
    const __m256i bytes = _mm256_inserti128_si256(_mm256_castsi128_si256(Load16(src)), Load16(src + 12), 1);
    const __m256i order = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(2, 1, 0, -128, 5, 4, 3, -128, 8, 7, 6, -128, 11, 10, 9, -128));
    // Six bits of either following byte and four of the first: last + 64 * middle, then that + 4096 * first.
    const __m256i bits =
        _mm256_and_si256(_mm256_shuffle_epi8(bytes, order), _mm256_set1_epi32(0x000F3F3F));
    const __m256i halves = _mm256_maddubs_epi16(bits, _mm256_set1_epi32(0x00014001));
    return _mm256_madd_epi16(halves, _mm256_set1_epi32(0x10000001));
}

// One step; false when there is none.
template <bool END>
TARGET_AVX2 bool Utf8ToGbkStep(const unsigned char* src, unsigned long size, unsigned char* out, Progress& at)
{
    const __m256i bytes = Load32(src + at.read);
    const unsigned long left = size - at.read;
    unsigned char* const to = out + at.written;
    const unsigned high = Mask(bytes);
    if (!END && high == 0) {
        Store32(to, bytes);
        at.read += BLOCK;
        at.written += BLOCK;
        return true;
    }
    const TripleRuns<END> runs(bytes, high, left);
    const __m256i points = DecodeTriples(src + at.read);
    const __m128i units =
        _mm_packus_epi32(_mm256_castsi256_si128(points), _mm256_extracti128_si256(points, 1));
    const __m128i codes = LookUp8(CodeTable, units);
    Store16(to, _mm_or_si128(_mm_slli_epi16(codes, 8), _mm_srli_epi16(codes, 8)));
    const unsigned twoBytes = LaneMask(codes);
    const unsigned known = 3 * _tzcnt_u32(~twoBytes);
    if (runs.triples > known || runs.triples + runs.ascii == 0) {
        at.read += std::min(known, runs.triples);
        at.written += std::min(known, runs.triples) / 3 * 2;
        const WideStep step = NextWide(src + at.read, size - at.read);
        if (step.isCharacter) {
            const unsigned code = CodeTable[step.cp];
            if (code < 0x8000) return false;
            out[at.written++] = static_cast<unsigned char>(code >> 8);
            out[at.written++] = static_cast<unsigned char>(code);
        } else if (size - at.read < 3) {
            return false;  // may be cut by the end
        }
        at.read += step.length;
        return true;
    }
    if (runs.triples == EIGHT_TRIPLES) {
        at.read += EIGHT_TRIPLES;
        at.written += EIGHT_TRIPLES / 3 * 2;
        return true;
    }
    at.read += runs.triples;
    at.written += runs.triples / 3 * 2;
    Copy8(out + at.written, src + at.read);
    at.read += runs.ascii;
    at.written += runs.ascii;
    return true;
}
}  // namespace

// UTF-8 to GBK by CodeTable; stops at a zero, at what GBK lacks and at the euro sign.
TARGET_AVX2 Progress Utf8ToGbk(const unsigned char* src, unsigned long size, unsigned char* out)
{
    Progress at;
    while (at.read + BLOCK <= size && Utf8ToGbkStep<false>(src, size, out, at)) {
    }
    while (at.read < size && Utf8ToGbkStep<true>(src, size, out, at)) {
    }
    return at;
}
}  // namespace fast
