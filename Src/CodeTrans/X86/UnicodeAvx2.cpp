// UTF-8 to and from wide characters, with AVX2.
//
// To wide characters:
//
//     for each block of 32 bytes:
//         if it is all ASCII: widen and store it
//         find out in masks where characters begin; if they are not all of one to three bytes, go byte by
//         byte for each eight bytes: move the bytes of each character that begins there into a lane of its
//         own, by
//             a shuffle that is looked up by the mask, and put their bits together
//
// From wide characters: eight at a time, each of which becomes the three bytes that it takes at most in a
// lane of its own; a shuffle that is looked up by their lengths moves the bytes that count together.
#include <algorithm>
#include <array>
#include <bit>

#include "Bytes.h"
#include "Kernels.h"
#include "Utf8Block.h"
#include "Vectors.h"

namespace fast::avx2
{
namespace
{
using Shuffle = std::array<unsigned char, 16>;
constexpr unsigned char DROPPED = 0x80;  // as a shuffle's entry: a zero byte

// By the bytes among ten that begin a character: in lanes of 32 bits, the bytes of each that begins in the
// first eight, last one first.
constexpr unsigned TEN_BYTES = 1024;
constexpr std::array<std::array<unsigned char, 32>, TEN_BYTES> MakeSequenceShuffles()
{
    std::array<std::array<unsigned char, 32>, TEN_BYTES> shuffles{};
    for (unsigned starts = 0; starts < TEN_BYTES; ++starts) {
        shuffles[starts].fill(DROPPED);
        unsigned lane = 0;
        for (unsigned first = 0; first < 8; ++first) {
            if ((starts >> first & 1) == 0) continue;
            unsigned last = first;
            while (last < 9 && last < first + 2 && (starts >> (last + 1) & 1) == 0) ++last;
            for (unsigned byte = first; byte <= last; ++byte)
                shuffles[starts][4 * lane + last - byte] = static_cast<unsigned char>(byte);
            ++lane;
        }
    }
    return shuffles;
}
alignas(64) constexpr auto SEQUENCE_SHUFFLES = MakeSequenceShuffles();

// The characters that begin in the first eight bytes, of one to three bytes each.
TARGET_AVX2 __m256i DecodeEightBytes(const unsigned char* src, unsigned starts)
{
    const __m256i bytes = _mm256_broadcastsi128_si256(Load16(src));
    const __m256i lanes = _mm256_shuffle_epi8(bytes, Load32(SEQUENCE_SHUFFLES[starts].data()));
    // A lane of 32 bits, highest first: seven bits of the last byte, six of the one before, four of the first
    // of three. Multiplying by 1, 64, 1 and adding in pairs, then by 1, 4096, puts them side by side:
    //     00000000 1110ffff 10mmmmmm 10llllll  becomes  ffff000000000000 + mmmmmm000000 + llllll
    const __m256i bits = _mm256_and_si256(lanes, _mm256_set1_epi32(0x000F3F7F));
    const __m256i halves = _mm256_maddubs_epi16(bits, _mm256_set1_epi32(0x00014001));
    return _mm256_madd_epi16(halves, _mm256_set1_epi32(0x10000001));
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

// The last eight bytes of a block are loaded with eight more; eight wide characters are stored at once.
static_assert(READ_BEHIND >= 24 + 16 && WRITTEN_BEHIND >= 8 * sizeof(wchar_t));

// UTF-8 to wide characters: blocks that the text goes on behind, or the END. `carry`: the bytes of the next
// block that continue a character of the last. False where that may be cut by the end.
template <bool END>
TARGET_AVX2 inline bool DecodeUtf8(const unsigned char* src, unsigned long size, unsigned char* out,
                                   Progress& at, unsigned& carry)
{
    constexpr unsigned BLOCK = 32, BEHIND = END ? 0 : BLOCK + 2;
    while (at.read + BEHIND < size) {
        const __m256i bytes = Load32(src + at.read);
        const unsigned long left = size - at.read;
        const unsigned within = END && left < BLOCK ? (1U << left) - 1 : ~0U;
        const unsigned high = Mask(bytes) & within;
        if ((high | carry) == 0 && (!END || left >= BLOCK)) {
            __m128i sixteen = _mm256_castsi256_si128(bytes);
            for (const unsigned half : {0U, 64U}) {
                Store32(out + at.written + half, _mm256_cvtepu8_epi32(sixteen));
                Store32(out + at.written + half + 32, _mm256_cvtepu8_epi32(_mm_srli_si128(sixteen, 8)));
                sixteen = _mm256_extracti128_si256(bytes, 1);
            }
            at.read += BLOCK;
            at.written += 4 * BLOCK;
            continue;
        }
        const auto atLeast = [&](unsigned char lowest) TARGET_AVX2 {
            const __m256i limit = _mm256_set1_epi8(static_cast<char>(lowest));
            return Mask(_mm256_cmpeq_epi8(_mm256_max_epu8(bytes, limit), bytes)) & within;
        };
        const Utf8Block<uint32_t> block(high, atLeast(0xC0), atLeast(0xE0), atLeast(0xF0), carry);
        if (!block.IsPlain() || (END && block.IsCut(left))) {
            const unsigned long end = at.read + std::min<unsigned long>(left, BLOCK);
            if (carry != 0) {  // back to the character that was taken to continue here
                at.read -= src[at.read - 1] >= 0xC0 ? 1 : 2;
                at.written -= sizeof(wchar_t);
            }
            while (at.read < end) {
                const WideStep step = NextWide(src + at.read, size - at.read);
                if (!step.isCharacter && size - at.read < 3) return false;
                StoreWide(out + at.written, static_cast<wchar_t>(step.cp));
                at.read += step.length;
                at.written += step.isCharacter ? sizeof(wchar_t) : 0;
            }
            carry = 0;
            continue;
        }
        for (unsigned byte = 0; byte < BLOCK; byte += 8) {
            // With the first two bytes of the next block, so that the last characters are seen to their end.
            const uint64_t following = block.Following() | uint64_t{block.Carry()} << BLOCK;
            const auto starts = static_cast<unsigned>(~following >> byte) & (TEN_BYTES - 1);
            Store32(out + at.written, DecodeEightBytes(src + at.read + byte, starts));
            at.written +=
                sizeof(wchar_t) * static_cast<unsigned>(std::popcount(starts & within >> byte & 0xFF));
        }
        at.read += END ? std::min<unsigned long>(left, BLOCK) : BLOCK;
        carry = block.Carry();
    }
    return true;
}

// The first `count` of eight wide characters, then zeros.
TARGET_AVX2 __m256i LoadWides(const wchar_t* src, unsigned long count)
{
    if (count >= 8) return Load32(src);
    const __m256i places = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    const __m256i within = _mm256_cmpgt_epi32(_mm256_set1_epi32(static_cast<int>(count)), places);
    return _mm256_maskload_epi32(reinterpret_cast<const int*>(src), within);
}

// A bit for each lane, from its highest.
TARGET_AVX2 unsigned Lanes(__m256i lanes)
{
    return static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(lanes)));
}
}  // namespace

TARGET_AVX2 Progress Utf8ToWide(const unsigned char* src, unsigned long size, unsigned char* out)
{
    Progress at;
    unsigned carry = 0;
    if (DecodeUtf8<false>(src, size, out, at, carry)) DecodeUtf8<true>(src, size, out, at, carry);
    return at;
}

TARGET_AVX2 Progress WideToUtf8(const wchar_t* src, unsigned long count, unsigned char* out)
{
    const __m256i zero = _mm256_setzero_si256();
    Progress at;
    while (at.read < count) {
        const unsigned long left = count - at.read;
        if (left >= 16) {
            // Other characters come out as bytes that are not above 0, too.
            const wchar_t* const from = src + at.read;
            const __m256i first = _mm256_packus_epi32(Load32(from), Load32(from + 8));
            const __m256i second =
                left >= 32 ? _mm256_packus_epi32(Load32(from + 16), Load32(from + 24)) : first;
            const __m256i bytes = _mm256_packus_epi16(first, second);
            if (Mask(_mm256_cmpgt_epi8(bytes, zero)) == ~0U) {
                const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
                Store32(out + at.written, _mm256_permutevar8x32_epi32(bytes, order));
                at.read += left >= 32 ? 32 : 16;
                at.written += left >= 32 ? 32 : 16;
                continue;
            }
        }
        const __m256i points = LoadWides(src + at.read, left);
        const unsigned used = left < 8 ? (1U << left) - 1 : 0xFF;
        const __m256i tooHigh = _mm256_set1_epi32(static_cast<int>(0xFFFF0000));
        if ((Lanes(_mm256_cmpeq_epi32(points, zero)) & used) != 0 || !_mm256_testz_si256(points, tooHigh))
            break;
        const __m256i isAscii = _mm256_cmpgt_epi32(_mm256_set1_epi32(0x80), points);
        const __m256i isShort = _mm256_cmpgt_epi32(_mm256_set1_epi32(0x800), points);
        //     0000ffff mmmmmmll llll  becomes the bytes  1110ffff 10mmmmmm 10llllll, first one lowest
        const __m256i lead = _mm256_srli_epi32(points, 12);
        const __m256i middle = _mm256_and_si256(_mm256_slli_epi32(points, 2), _mm256_set1_epi32(0x3F00));
        const __m256i last = _mm256_slli_epi32(_mm256_and_si256(points, _mm256_set1_epi32(0x3F)), 16);
        const __m256i marks = _mm256_or_si256(
            _mm256_set1_epi32(UTF8_MARKS_OF_THREE),
            _mm256_and_si256(isShort, _mm256_set1_epi32(UTF8_MARKS_OF_TWO ^ UTF8_MARKS_OF_THREE)));
        const __m256i sequence = _mm256_or_si256(_mm256_or_si256(lead, middle), _mm256_or_si256(last, marks));
        const __m256i lanes = _mm256_blendv_epi8(sequence, points, isAscii);
        const unsigned ascii = Lanes(isAscii), below = Lanes(isShort);
        const unsigned firstKinds = (ascii & 0xF) | (below & 0xF) << 4;
        const unsigned secondKinds = ascii >> 4 | (below & 0xF0);
        Store16(out + at.written,
                _mm_shuffle_epi8(_mm256_castsi256_si128(lanes), Load16(UTF8_SHUFFLES[firstKinds].data())));
        at.written += 12 - static_cast<unsigned long>(std::popcount(firstKinds));
        Store16(out + at.written, _mm_shuffle_epi8(_mm256_extracti128_si256(lanes, 1),
                                                   Load16(UTF8_SHUFFLES[secondKinds].data())));
        at.written += 12 - static_cast<unsigned long>(std::popcount(secondKinds));
        // Behind the last character each lane has become one byte.
        at.read += std::min(left, 8UL);
        at.written -= 8 - std::min(left, 8UL);
    }
    return at;
}
}  // namespace fast::avx2
