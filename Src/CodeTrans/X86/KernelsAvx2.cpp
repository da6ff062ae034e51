// The kernels for AVX2.
#include <array>
#include <bit>

#include "Bytes.h"
#include "Kernels.h"
#include "STLCodeTrans.h"
#include "Vectors.h"

namespace fast
{
namespace
{
using Shuffle = std::array<unsigned char, 16>;
constexpr unsigned char DROPPED = 0x80;  // as a shuffle's entry: a zero byte

// ---------------------------------------------------------------------------------------------------------
// To code units: blocks of 32 source bytes, each byte of which begins a character or continues one. Bit masks
// tell which, and each eight bytes are shuffled into place by a table of those masks: no branch depends on
// the text, but for blocks of ASCII. Behind the last window there are zeros (`last`), which read as ASCII and
// are taken back.

constexpr unsigned long BLOCK = 32;

// By the bytes among eight that begin a character: that byte and the next two, last first, in a lane of 32
// bits.
constexpr std::array<std::array<unsigned char, 32>, 256> MakeSequenceShuffles()
{
    std::array<std::array<unsigned char, 32>, 256> shuffles{};
    for (unsigned starts = 0; starts < 256; ++starts) {
        shuffles[starts].fill(DROPPED);
        unsigned to = 0;
        for (unsigned byte = 0; byte < 8; ++byte)
            if ((starts >> byte & 1) != 0) {
                for (unsigned i = 0; i < 3; ++i)
                    shuffles[starts][to + i] = static_cast<unsigned char>(byte + 2 - i);
                to += 4;
            }
    }
    return shuffles;
}
alignas(64) constexpr auto SEQUENCE_SHUFFLES = MakeSequenceShuffles();

// The characters that begin in the eight bytes at `src`, of one to three bytes each.
TARGET_AVX2 void EightBytesOfUtf8(const unsigned char* src, unsigned starts, uint16_t* units)
{
    const __m256i bytes = _mm256_broadcastsi128_si256(Load16(src));
    const __m256i lanes = _mm256_shuffle_epi8(bytes, Load32(SEQUENCE_SHUFFLES[starts].data()));
    // Six bits of either following byte and all of the first: last + 64 * middle, then that + 4096 * first.
    const __m256i bits = _mm256_and_si256(lanes, _mm256_set1_epi32(0x00FF3F3F));
    const __m256i halves = _mm256_maddubs_epi16(bits, _mm256_set1_epi32(0x00014001));
    const __m256i three = _mm256_madd_epi16(halves, _mm256_set1_epi32(0x10000001));
    // Less the bytes that are not its own, by the first one's upper half (plus 1, so that 0 is free).
    const __m256i kind = _mm256_srli_epi32(_mm256_add_epi32(lanes, _mm256_set1_epi32(0x100000)), 20);
    const __m256i foreign = _mm256_shuffle_epi8(
        _mm256_broadcastsi128_si256(_mm_setr_epi8(0, 12, 12, 12, 12, 12, 12, 12, 12, 0, 0, 0, 0, 6, 6, 0)),
        kind);
    const __m256i own = _mm256_srlv_epi32(three, foreign);
    // Less the bits that mark the first byte of two or three.
    const __m256i isThree = _mm256_cmpgt_epi32(lanes, _mm256_set1_epi32(0xDFFFFF));
    const __m256i mask =
        _mm256_or_si256(_mm256_and_si256(isThree, _mm256_set1_epi32(0xF800)), _mm256_set1_epi32(0x07FF));
    const __m256i points = _mm256_and_si256(own, mask);
    Store16(units, _mm_packus_epi32(_mm256_castsi256_si128(points), _mm256_extracti128_si256(points, 1)));
}

// UTF-8 whose continuation bytes are taken as they come (NextWide). A block with anything but whole sequences
// of one to three bytes is decoded one by one.
TARGET_AVX2 Progress Utf8ToUnits(const unsigned char* src, unsigned long size, bool last, uint16_t* units)
{
    Progress at;
    uint64_t carry = 0;  // the bytes of this block that continue a sequence of the last
    while (at.read < size) {
        const __m256i bytes = Load32(src + at.read);
        const uint32_t high = Mask(bytes);
        if ((high | carry) == 0) {
            WidenAscii(bytes, units + at.written);
            at.read += BLOCK;
            at.written += BLOCK;
            continue;
        }
        const auto atLeast = [&](unsigned char lowest) TARGET_AVX2 {
            const __m256i limit = _mm256_set1_epi8(static_cast<char>(lowest));
            return Mask(_mm256_cmpeq_epi8(_mm256_max_epu8(bytes, limit), bytes));
        };
        const uint64_t twos = atLeast(0xC0), threes = atLeast(0xE0);
        const uint32_t fours = atLeast(0xF0);
        const uint64_t following = twos << 1 | threes << 2 | carry;
        const bool isCut = last && at.read + BLOCK >= size && following >> BLOCK != 0;
        if (static_cast<uint32_t>(following) != (high & ~static_cast<uint32_t>(twos)) || fours != 0 ||
            isCut) {
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
        const uint32_t starts = ~static_cast<uint32_t>(following);
        for (unsigned long byte = 0; byte < BLOCK; byte += 8) {
            const unsigned startsHere = starts >> byte & 0xFF;
            EightBytesOfUtf8(src + at.read + byte, startsHere, units + at.written);
            at.written += static_cast<unsigned long>(std::popcount(startsHere));
        }
        at.read += BLOCK;
        carry = following >> BLOCK;
    }
    at.read += static_cast<unsigned long>(std::popcount(carry));
    if (!last || at.read <= size) return at;
    return {size, at.written - (at.read - size)};
}

// ---------------------------------------------------------------------------------------------------------
// From code units. Those that make bytes may run into the zeros behind `size`, each of which becomes one
// byte.

TARGET_AVX2 bool IsAscii(__m256i units)
{
    return _mm256_testz_si256(units, _mm256_set1_epi16(static_cast<short>(0xFF80)));
}

TARGET_AVX2 __m128i NarrowAscii(__m256i units)
{
    return _mm_packus_epi16(_mm256_castsi256_si128(units), _mm256_extracti128_si256(units, 1));
}

// By a bit for each of eight code units that is ASCII: both bytes of a code, high byte first, or the low byte
// alone.
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

// GBK by CodeTable, as utoGbk.
TARGET_AVX2 Progress UnitsToGbk(const uint16_t* units, unsigned long size, unsigned char* out)
{
    const __m128i zero = _mm_setzero_si128();
    Progress at;
    while (at.read < size) {
        const __m256i sixteen = Load32(units + at.read);
        if (IsAscii(sixteen)) {
            Store16(out + at.written, NarrowAscii(sixteen));
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
        codes = _mm_blendv_epi8(codes, _mm_set1_epi16(static_cast<short>(0xA1A1)), lacking);
        Store16(out + at.written, _mm_shuffle_epi8(codes, Load16(GBK_SHUFFLES[ascii].data())));
        at.read += 8;
        at.written += 16 - static_cast<unsigned long>(std::popcount(ascii));
    }
    return at;
}

// By two bits for each of four code units, ASCII (bits 0-3) and below U+0800 (bits 4-7): the bytes that count
// of lanes of lead, middle, last; ASCII lies in the first byte.
constexpr std::array<Shuffle, 256> MakeUtf8Shuffles()
{
    std::array<Shuffle, 256> shuffles{};
    for (unsigned kinds = 0; kinds < 256; ++kinds) {
        Shuffle& shuffle = shuffles[kinds];
        shuffle.fill(DROPPED);
        unsigned to = 0;
        for (unsigned unit = 0; unit < 4; ++unit) {
            const bool ascii = (kinds >> unit & 1) != 0, two = (kinds >> (unit + 4) & 1) != 0;
            const unsigned first = two && !ascii ? 1 : 0, last = ascii ? 0 : 2;
            for (unsigned byte = first; byte <= last; ++byte)
                shuffle[to++] = static_cast<unsigned char>(4 * unit + byte);
        }
    }
    return shuffles;
}
alignas(64) constexpr auto UTF8_SHUFFLES = MakeUtf8Shuffles();

// UTF-8, surrogates like any other unit.
TARGET_AVX2 Progress UnitsToUtf8(const uint16_t* units, unsigned long size, unsigned char* out)
{
    Progress at;
    while (at.read < size) {
        const __m256i sixteen = Load32(units + at.read);
        if (IsAscii(sixteen)) {
            Store16(out + at.written, NarrowAscii(sixteen));
            at.read += 16;
            at.written += 16;
            continue;
        }
        const __m256i points = _mm256_cvtepu16_epi32(_mm256_castsi256_si128(sixteen));
        const __m256i isAscii = _mm256_cmpgt_epi32(_mm256_set1_epi32(0x80), points);
        const __m256i isShort = _mm256_cmpgt_epi32(_mm256_set1_epi32(0x800), points);
        const __m256i lead = _mm256_srli_epi32(points, 12);
        const __m256i middle = _mm256_and_si256(_mm256_slli_epi32(points, 2), _mm256_set1_epi32(0x3F00));
        const __m256i last = _mm256_slli_epi32(_mm256_and_si256(points, _mm256_set1_epi32(0x3F)), 16);
        // The marks E0 80 80, or C0 80 in the last two bytes.
        const __m256i marks = _mm256_or_si256(_mm256_set1_epi32(0x8080E0),
                                              _mm256_and_si256(isShort, _mm256_set1_epi32(0x4000)));
        const __m256i sequence = _mm256_or_si256(_mm256_or_si256(lead, middle), _mm256_or_si256(last, marks));
        const __m256i lanes = _mm256_blendv_epi8(sequence, points, isAscii);
        const auto ascii = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(isAscii)));
        const auto below = static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(isShort)));
        const unsigned firstKinds = (ascii & 0xF) | (below & 0xF) << 4;
        const unsigned secondKinds = ascii >> 4 | (below & 0xF0);
        Store16(out + at.written,
                _mm_shuffle_epi8(_mm256_castsi256_si128(lanes), Load16(UTF8_SHUFFLES[firstKinds].data())));
        at.written += 12 - static_cast<unsigned long>(std::popcount(firstKinds));
        Store16(out + at.written, _mm_shuffle_epi8(_mm256_extracti128_si256(lanes, 1),
                                                   Load16(UTF8_SHUFFLES[secondKinds].data())));
        at.written += 12 - static_cast<unsigned long>(std::popcount(secondKinds));
        at.read += 8;
    }
    return at;
}
}  // namespace

const Kernels KERNELS_AVX2 = {Utf8ToUnits, UnitsToUtf8, UnitsToGbk};
}  // namespace fast
