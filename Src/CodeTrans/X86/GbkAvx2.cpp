// To and from GBK and Big5, whose codes are looked up, with AVX2.
//
// Three conversions go by runs. Hanzi come in runs, and so does ASCII. A step takes up to eight hanzi and up
// to sixteen ASCII characters behind them:
//
//     while a block of 32 bytes is left:
//         if it is all ASCII: store it, go on behind it
//         convert eight hanzi from here, as if there were so many, and store them
//         hanzi = how many there are, in a mask of the bytes where hanzi begin
//         ascii = how many ASCII bytes follow them
//         store sixteen ASCII characters behind the hanzi, as if there were so many
//         go on behind the hanzi and the ASCII that there are
//     the same with the rest, by one mask for all of it
//
// What is stored too much is overwritten by the next step. The counting has no branches; those that there
// are, for a block of ASCII and for eight hanzi, go the same way for as long as a run lasts.
//
// The fourth, from UTF-16, takes eight code units at a time: it looks up their codes and moves the bytes that
// count together by a table of shuffles.
#include <algorithm>
#include <array>
#include <bit>

#include "Bytes.h"
#include "Kernels.h"
#include "STLCodeTrans.h"
#include "Vectors.h"

namespace fast::avx2
{
namespace
{
constexpr unsigned BLOCK = 32;
constexpr unsigned HANZI = 8, ASCII = 16;  // at most, in a step

// Eight hanzi are loaded, and stored as three bytes each, in two vectors of 16 bytes, 12 bytes apart. Sixteen
// ASCII characters are stored as 32 bytes at most.
static_assert(READ_BEHIND >= BLOCK && READ_BEHIND >= 12 + 16);
static_assert(WRITTEN_BEHIND >= 12 + 16 && WRITTEN_BEHIND >= 2 * ASCII);

// ---------------------------------------------------------------------------------------------------------
// Where hanzi begin and ASCII is: masks of the bytes of a block.

// Hanzi of two bytes, of which the first is 80 and above.
struct PairMasks {
    static constexpr unsigned BYTES = 2, EIGHT = 0x5555;  // where eight hanzi begin
    unsigned high;

    TARGET_AVX2 explicit PairMasks(__m256i bytes) : high(Mask(bytes)) {}
    unsigned Hanzi() const { return high; }
};

// Hanzi of three bytes in UTF-8: E0-EF and two continuation bytes.
struct TripleMasks {
    static constexpr unsigned BYTES = 3, EIGHT = 0x249249;
    unsigned high, leads, following;

    TARGET_AVX2 explicit TripleMasks(__m256i bytes) : high(Mask(bytes))
    {
        const __m256i kind = _mm256_and_si256(bytes, _mm256_set1_epi8(static_cast<char>(0xF0)));
        leads = Mask(_mm256_cmpeq_epi8(kind, _mm256_set1_epi8(static_cast<char>(0xE0))));
        following = Mask(_mm256_cmpgt_epi8(_mm256_set1_epi8(static_cast<char>(0xC0)), bytes));
    }
    unsigned Hanzi() const { return leads & following >> 1 & following >> 2; }
};

// What one step takes, in bytes, by the bytes in which a hanzi begins or would begin, and those of ASCII.
template <typename Masks>
struct Step {
    static constexpr unsigned MOST = Masks::BYTES * HANZI;
    unsigned hanzi, ascii;

    TARGET_AVX2 Step(unsigned hanziMask, uint64_t notAscii)
    {
        hanzi = _tzcnt_u32((~hanziMask & Masks::EIGHT) | 1U << MOST);
        ascii = static_cast<unsigned>(_tzcnt_u64(notAscii >> hanzi | 1U << ASCII));
    }
};

// Finishes a step of whose eight hanzi, converted already, `known` are in the common way: takes it, or what
// is in that way and one character of another kind. False where the conversion stops.
template <typename Conversion>
TARGET_AVX2 inline bool Finish(const Conversion& conversion, const Step<typename Conversion::Masks>& step,
                               unsigned known, const unsigned char* src, unsigned long size,
                               unsigned char* out, Progress& at)
{
    const unsigned hanzi = step.hanzi / Conversion::Masks::BYTES;
    if (hanzi > known || step.hanzi + step.ascii == 0) {
        at.read += std::min(hanzi, known) * Conversion::Masks::BYTES;
        at.written += std::min(hanzi, known) * Conversion::BYTES_OF_HANZI;
        return conversion.Other(src, size, out, at);
    }
    at.read += step.hanzi;
    at.written += hanzi * Conversion::BYTES_OF_HANZI;
    conversion.Ascii(Load16(src + at.read), out + at.written);
    at.read += step.ascii;
    at.written += step.ascii * Conversion::BYTES_OF_ASCII;
    return true;
}

template <typename Conversion>
TARGET_AVX2 inline Progress Convert(const Conversion& conversion, const unsigned char* src,
                                    unsigned long size, unsigned char* out)
{
    using Masks = typename Conversion::Masks;
    Progress at;
    while (at.read + BLOCK <= size) {
        const __m256i bytes = Load32(src + at.read);
        const Masks masks(bytes);
        if (masks.high == 0) {
            conversion.Ascii(_mm256_castsi256_si128(bytes), out + at.written);
            conversion.Ascii(_mm256_extracti128_si256(bytes, 1),
                             out + at.written + ASCII * Conversion::BYTES_OF_ASCII);
            at.read += BLOCK;
            at.written += BLOCK * Conversion::BYTES_OF_ASCII;
            continue;
        }
        const Step<Masks> step(masks.Hanzi(), masks.high | uint64_t{1} << BLOCK);
        const unsigned known = conversion.EightHanzi(src + at.read, out + at.written);
        if (step.hanzi == step.MOST && known == HANZI) {
            at.read += step.MOST;
            at.written += HANZI * Conversion::BYTES_OF_HANZI;
            continue;
        }
        if (!Finish(conversion, step, known, src, size, out, at)) return at;
    }
    // Less than a block: one pair of masks serves all of it.
    const Masks masks(Load32(src + at.read));
    const unsigned within = _bzhi_u32(~0U, static_cast<unsigned>(size - at.read));
    unsigned hanzi = masks.Hanzi() & within >> (Masks::BYTES - 1);
    uint64_t notAscii = masks.high | ~uint64_t{within};
    while (at.read < size) {
        const unsigned long before = at.read;
        const unsigned known = conversion.EightHanzi(src + at.read, out + at.written);
        if (!Finish(conversion, Step<Masks>(hanzi, notAscii), known, src, size, out, at)) return at;
        const unsigned long taken = at.read - before;
        hanzi = static_cast<unsigned>(uint64_t{hanzi} >> taken);
        notAscii >>= taken;
    }
    return at;
}

// ---------------------------------------------------------------------------------------------------------
// The conversions. EightHanzi converts eight hanzi, and says how many of them in the common way; Other one
// character that is neither such a hanzi nor ASCII, or false to stop.

struct PairsToUtf16Conversion {
    using Masks = PairMasks;
    static constexpr unsigned BYTES_OF_HANZI = 2, BYTES_OF_ASCII = 2;
    const unsigned short* table;

    TARGET_AVX2 unsigned EightHanzi(const unsigned char* src, unsigned char* out) const
    {
        // A lane of 16 bits is a pair, its lead byte low: tttttttt 1lllllll becomes the index
        // (t - 40) * 128 + l, and 0 for what is below 40, as PairIndex has it.
        const __m128i pairs = Load16(src);
        const __m128i lead = _mm_and_si128(pairs, _mm_set1_epi16(0x7F));
        const __m128i row = _mm_subs_epu16(_mm_srli_epi16(pairs, 8), _mm_set1_epi16(0x40));
        StoreLookUps8(table, _mm_or_si128(_mm_slli_epi16(row, 7), lead), out);
        return HANZI;
    }
    TARGET_AVX2 void Ascii(__m128i bytes, unsigned char* out) const
    {
        Store32(out, _mm256_cvtepu8_epi16(bytes));
    }
    // A lone lead byte.
    bool Other(const unsigned char*, unsigned long, unsigned char*, Progress&) const { return false; }
};

struct GbkToUtf8Conversion {
    using Masks = PairMasks;
    static constexpr unsigned BYTES_OF_HANZI = 3, BYTES_OF_ASCII = 1;
    const uint32_t* sequences;

    TARGET_AVX2 unsigned EightHanzi(const unsigned char* src, unsigned char* out) const
    {
        const __m128i pairs = Load16(src);
        const __m128i codes = _mm_or_si128(_mm_slli_epi16(pairs, 8), _mm_srli_epi16(pairs, 8));
        const __m128i indices = _mm_and_si128(codes, _mm_set1_epi16(0x7FFF));
        const __m128i first = LookUp4(sequences, static_cast<uint64_t>(_mm_cvtsi128_si64(indices)));
        const __m128i second = LookUp4(sequences, static_cast<uint64_t>(_mm_extract_epi64(indices, 1)));
        const __m128i three = _mm_setr_epi8(0, 2, 3, 4, 6, 7, 8, 10, 11, 12, 14, 15, -128, -128, -128, -128);
        Store16(out, _mm_shuffle_epi8(first, three));
        Store16(out + 12, _mm_shuffle_epi8(second, three));
        // A third byte is one of 80 and above.
        const int ofThree =
            _mm_movemask_ps(_mm_castsi128_ps(first)) | _mm_movemask_ps(_mm_castsi128_ps(second)) << 4;
        return _tzcnt_u32(~static_cast<unsigned>(ofThree));
    }
    TARGET_AVX2 void Ascii(__m128i bytes, unsigned char* out) const { Store16(out, bytes); }
    bool Other(const unsigned char* src, unsigned long size, unsigned char* out, Progress& at) const
    {
        if (size - at.read < 2) return false;
        const uint32_t sequence = sequences[(src[at.read] & 0x7FU) << 8 | src[at.read + 1]];
        if (sequence == 0) return false;
        out[at.written] = static_cast<unsigned char>(sequence);
        out[at.written + 1] = static_cast<unsigned char>(sequence >> 16);
        at.read += 2;
        at.written += 2;
        return true;
    }
};

// The code units of eight sequences of three bytes, in lanes of 32 bits.
TARGET_AVX2 __m256i DecodeTriples(const unsigned char* src)
{
    const __m256i bytes = _mm256_inserti128_si256(_mm256_castsi128_si256(Load16(src)), Load16(src + 12), 1);
    const __m256i order = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(2, 1, 0, -128, 5, 4, 3, -128, 8, 7, 6, -128, 11, 10, 9, -128));
    // Each lane of 32 bits is 0, first, middle, last byte, highest first, of which the bits that count stay.
    // Multiplying by 1, 64, 1 and adding in pairs, then by 1, 4096, puts them side by side:
    //     00000000 1110ffff 10mmmmmm 10llllll  becomes  ffff000000000000 + mmmmmm000000 + llllll
    const __m256i bits = _mm256_and_si256(_mm256_shuffle_epi8(bytes, order), _mm256_set1_epi32(0x000F3F3F));
    const __m256i halves = _mm256_maddubs_epi16(bits, _mm256_set1_epi32(0x00014001));
    return _mm256_madd_epi16(halves, _mm256_set1_epi32(0x10000001));
}

struct Utf8ToGbkConversion {
    using Masks = TripleMasks;
    static constexpr unsigned BYTES_OF_HANZI = 2, BYTES_OF_ASCII = 1;

    TARGET_AVX2 unsigned EightHanzi(const unsigned char* src, unsigned char* out) const
    {
        const __m256i points = DecodeTriples(src);
        const __m128i units =
            _mm_packus_epi32(_mm256_castsi256_si128(points), _mm256_extracti128_si256(points, 1));
        const __m128i codes = LookUp8(CodeTable, units);
        Store16(out, _mm_or_si128(_mm_slli_epi16(codes, 8), _mm_srli_epi16(codes, 8)));
        return _tzcnt_u32(~LaneMask(codes));
    }
    TARGET_AVX2 void Ascii(__m128i bytes, unsigned char* out) const { Store16(out, bytes); }
    bool Other(const unsigned char* src, unsigned long size, unsigned char* out, Progress& at) const
    {
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
};
// ---------------------------------------------------------------------------------------------------------
// From UTF-16.

// By a bit for each of eight code units that is ASCII: both bytes of a code, high byte first, or the low byte
// alone.
using Shuffle = std::array<unsigned char, 16>;
constexpr unsigned char DROPPED = 0x80;  // as a shuffle's entry: a zero byte

constexpr std::array<Shuffle, 256> MakeGbkShuffles()
{
    std::array<Shuffle, 256> shuffles{};
    for (unsigned ascii = 0; ascii < 256; ++ascii) {
        Shuffle& shuffle = shuffles[ascii];
        shuffle.fill(DROPPED);
        unsigned to = 0;
        for (unsigned unit = 0; unit < 8; ++unit) {
            if ((ascii >> unit & 1) == 0) shuffle[to++] = static_cast<unsigned char>(2 * unit + 1);
            shuffle[to++] = static_cast<unsigned char>(2 * unit);
        }
    }
    return shuffles;
}
alignas(64) constexpr auto GBK_SHUFFLES = MakeGbkShuffles();

}  // namespace

TARGET_AVX2 Progress PairsToUtf16(const unsigned short* table, const unsigned char* src, unsigned long size,
                                  unsigned char* out)
{
    return Convert(PairsToUtf16Conversion{table}, src, size, out);
}

TARGET_AVX2 Progress GbkToUtf8(const uint32_t* sequences, const unsigned char* src, unsigned long size,
                               unsigned char* out)
{
    return Convert(GbkToUtf8Conversion{sequences}, src, size, out);
}

TARGET_AVX2 Progress Utf8ToGbk(const unsigned char* src, unsigned long size, unsigned char* out)
{
    return Convert(Utf8ToGbkConversion{}, src, size, out);
}

TARGET_AVX2 Progress Utf16ToGbk(const char* src, unsigned long count, unsigned char* out)
{
    const __m128i zero = _mm_setzero_si128();
    Progress at;
    while (at.read + 16 <= count) {
        const __m256i sixteen = Load32(src + 2 * at.read);
        if (_mm256_testz_si256(sixteen, _mm256_set1_epi16(static_cast<short>(0xFF80)))) {
            Store16(out + at.written,
                    _mm_packus_epi16(_mm256_castsi256_si128(sixteen), _mm256_extracti128_si256(sixteen, 1)));
            at.read += 16;
            at.written += 16;
            continue;
        }
        const __m128i eight = _mm256_castsi256_si128(sixteen);
        const __m128i isAscii =
            _mm_cmpeq_epi16(_mm_and_si128(eight, _mm_set1_epi16(static_cast<short>(0xFF80))), zero);
        const unsigned ascii = LaneMask(isAscii);
        __m128i codes = LookUp8(CodeTable, eight);
        const __m128i lacking = _mm_andnot_si128(isAscii, _mm_cmpeq_epi16(codes, zero));
        codes = _mm_blendv_epi8(codes, _mm_set1_epi16(static_cast<short>(GBK_REPLACEMENT)), lacking);
        Store16(out + at.written, _mm_shuffle_epi8(codes, Load16(GBK_SHUFFLES[ascii].data())));
        at.read += 8;
        at.written += 16 - static_cast<unsigned long>(std::popcount(ascii));
    }
    return at;
}
}  // namespace fast::avx2
