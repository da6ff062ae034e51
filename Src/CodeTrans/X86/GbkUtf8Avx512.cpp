// Between GBK and UTF-8, with AVX-512.
//
// No branch depends on where hanzi and ASCII alternate within a block, since such branches are often
// mispredicted. The text is converted in windows, each of which starts with a character. While it is ASCII,
// it is copied; then three passes convert a window:
//
//     for each block of 64 bytes: append the bytes of its hanzi to a list, and note in a mask where the new
//         bytes belong
//     for each 16 hanzi of the list: look up their new bytes, and append these to another list
//     for each block: put the new bytes, in their order, where the mask says, and store it
//
// Hanzi stands for every character that is not ASCII.
//
//     GBK to UTF-8     61 D6 D0 62           a 中 b
//     mask              .  1  1  .
//     list             D6 D0                 becomes E4 00, B8 AD: as many units of 16 bits as bytes before
//     new bytes        61 00, E4 00, B8 AD, 62 00, of which those are kept that are not 0
//
//     UTF-8 to GBK     61 E4 B8 AD 62        a 中 b
//     mask              .  1  1  .  .
//     dropped           .  .  .  1  .        the last of three bytes
//     list             E4 B8 AD              becomes D6 D0
//     new bytes        61 D6 D0 62
//
// From block to block, a pass carries only its places in the lists and what a character has in the next
// block. A list has no gaps where a hanzi lies across two blocks. The source must not contain zeros.
#include <array>

#include "Avx512.h"
#include "Bytes.h"
#include "Kernels.h"
#include "STLCodeTrans.h"

namespace fast::avx512
{
namespace
{
constexpr unsigned long WINDOW = 512;  // bytes; with 1024 to 4096 it was no faster
constexpr unsigned LANES = 16;         // characters looked up at once

// The masks of a window, with a place for what a character takes from the block behind it.
using Masks = std::array<uint64_t, WINDOW / BLOCK + 1>;

// Where the bit lies that has `index` bits set before it.
TARGET_AVX512 unsigned long PlaceOfBit(const Masks& masks, unsigned long index)
{
    unsigned long block = 0;
    for (; index >= static_cast<unsigned long>(std::popcount(masks[block])); ++block)
        index -= static_cast<unsigned long>(std::popcount(masks[block]));
    return BLOCK * block +
           static_cast<unsigned long>(_tzcnt_u64(_pdep_u64(uint64_t{1} << index, masks[block])));
}

// ASCII as far as whole stretches of four blocks go.
TARGET_AVX512 void CopyAscii(const unsigned char* src, unsigned long size, unsigned char* out, Progress& at)
{
    while (size - at.read >= 4 * BLOCK) {
        const unsigned char* const from = src + at.read;
        const __m512i a = _mm512_loadu_si512(from), b = _mm512_loadu_si512(from + BLOCK);
        const __m512i c = _mm512_loadu_si512(from + 2 * BLOCK), d = _mm512_loadu_si512(from + 3 * BLOCK);
        if (_mm512_movepi8_mask(_mm512_or_si512(_mm512_or_si512(a, b), _mm512_or_si512(c, d))) != 0) return;
        unsigned char* const to = out + at.written;
        _mm512_storeu_si512(to, a);
        _mm512_storeu_si512(to + BLOCK, b);
        _mm512_storeu_si512(to + 2 * BLOCK, c);
        _mm512_storeu_si512(to + 3 * BLOCK, d);
        at += {4 * BLOCK, 4 * BLOCK};
    }
}

// Appends the bytes of a block that `which` marks.
TARGET_AVX512 void Append(__m512i block, uint64_t which, unsigned char* list, unsigned long& size)
{
    _mm512_storeu_si512(list + size, _mm512_maskz_compress_epi8(which, block));
    size += static_cast<unsigned long>(std::popcount(which));
}

// ---------------------------------------------------------------------------------------------------------
// GBK to UTF-8.

struct GbkWindow {
    alignas(64) unsigned char pairs[WINDOW + BLOCK];     // the hanzi, side by side
    alignas(64) uint32_t sequences[WINDOW / 2 + LANES];  // what they become
    Masks masks;
    unsigned long size, hanzi;  // bytes of source, and hanzi in them
};

// Whole vectors are stored to the lists, and loaded from them, up to and behind the last hanzi.
static_assert(sizeof GbkWindow::pairs >= WINDOW + BLOCK);
static_assert(sizeof GbkWindow::sequences >= WINDOW * sizeof(uint16_t) + sizeof(__m512i));

TARGET_AVX512 void ListPairs(const unsigned char* src, GbkWindow& window)
{
    unsigned long listed = 0, i = 0;
    uint64_t carry = 0;  // the block begins with a trail byte
    const auto list = [&](__m512i bytes, uint64_t within) TARGET_AVX512 {
        const uint64_t leads = LeadBytes(_mm512_movepi8_mask(bytes), carry);
        const uint64_t ofPairs = (leads | leads << 1 | carry) & within;
        window.masks[i / BLOCK] = ofPairs;
        Append(bytes, ofPairs, window.pairs, listed);
        carry = leads >> 63;
    };
    const unsigned long size = window.size;
    for (; i + BLOCK <= size; i += BLOCK) list(_mm512_loadu_si512(src + i), ~uint64_t{0});
    if (i < size) list(LoadBytes(src + i, First(size - i)), First(size - i));
    // A pair that the window's end cuts is left to the next, or for good.
    window.size -= listed % 2;
    window.hanzi = listed / 2;
}

TARGET_AVX512 __m512i SequencesOf(const uint32_t* table, __m256i pairs, __mmask16 which)
{
    // A lane of 32 bits is a pair, its lead byte low: tttttttt 1lllllll becomes the index 0lllllll tttttttt
    const __m512i lanes = _mm512_cvtepu16_epi32(pairs);
    const __m512i codes = _mm512_or_si512(_mm512_slli_epi32(lanes, 8), _mm512_srli_epi32(lanes, 8));
    const __m512i indices = _mm512_and_si512(codes, _mm512_set1_epi32(0x7FFF));
    return _mm512_mask_i32gather_epi32(_mm512_setzero_si512(), which, indices, table, 4);
}

TARGET_AVX512 unsigned UnknownSequences(__m512i sequences, __mmask16 which)
{
    return _mm512_testn_epi32_mask(sequences, sequences) & which;
}

// The number of hanzi up to one that the table does not know, or of all.
TARGET_AVX512 unsigned long LookUpSequences(const uint32_t* table, GbkWindow& window)
{
    for (unsigned long i = 0; i < window.hanzi; i += LANES) {
        const auto used = static_cast<__mmask16>(First(window.hanzi - i));
        const __m512i found = SequencesOf(table, Load32(window.pairs + 2 * i), used);
        const unsigned unknown = UnknownSequences(found, used);
        _mm512_store_si512(window.sequences + i, found);
        if (unknown != 0) return i + _tzcnt_u32(unknown);
    }
    return window.hanzi;
}

// 32 bytes of source in units of 16 bits, of which those of hanzi become the first of a list.
TARGET_AVX512 __m512i WithSequences(__m256i bytes, uint32_t ofPairs, __m512i list)
{
    return _mm512_mask_expand_epi16(_mm512_cvtepu8_epi16(bytes), ofPairs, list);
}

// Each byte of source makes one byte at least. So a whole vector that is stored for 32 bytes of source keeps
// within what is certain to be overwritten while 32 more follow.
TARGET_AVX512 unsigned long StoreSequences(const unsigned char* src, const GbkWindow& window,
                                           unsigned char* out)
{
    const auto* list = reinterpret_cast<const uint16_t*>(window.sequences);
    unsigned char* const begin = out;
    unsigned long i = 0;
    for (; i + BLOCK + 32 <= window.size; i += BLOCK) {
        const uint64_t ofPairs = window.masks[i / BLOCK];
        if (ofPairs == 0) {
            _mm512_storeu_si512(out, _mm512_loadu_si512(src + i));
            out += BLOCK;
            continue;
        }
        for (const unsigned half : {0U, 32U}) {
            const auto ofHalf = static_cast<uint32_t>(ofPairs >> half);
            const __m512i units = WithSequences(Load32(src + i + half), ofHalf, _mm512_loadu_si512(list));
            list += std::popcount(ofHalf);
            const uint64_t keep = _mm512_test_epi8_mask(units, units);
            _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(keep, units));
            out += std::popcount(keep);
        }
    }
    for (; i < window.size; i += 32) {
        const auto within = static_cast<uint32_t>(First(window.size - i));
        const auto ofPairs = static_cast<uint32_t>(window.masks[i / BLOCK] >> i % BLOCK) & within;
        const __m512i units =
            WithSequences(_mm256_maskz_loadu_epi8(within, src + i), ofPairs, _mm512_loadu_si512(list));
        list += std::popcount(ofPairs);
        out += StoreKept(units, _mm512_test_epi8_mask(units, units), out);
    }
    return static_cast<unsigned long>(out - begin);
}

// A text of a block at most in one go, if the table knows all of it: else nothing. The lists stay in
// registers. In memory they would be loaded at other places than they were just stored at, and to wait for
// these stores would take a short text longer than all the rest.
TARGET_AVX512 Progress GbkBlockToUtf8(const uint32_t* table, const unsigned char* src, unsigned long size,
                                      unsigned char* out)
{
    const __m512i bytes = LoadBytes(src, First(size));
    const uint64_t leads = LeadBytes(_mm512_movepi8_mask(bytes), 0);
    if ((leads & uint64_t{1} << (size - 1)) != 0) return {};
    const uint64_t ofPairs = leads | leads << 1;
    const uint64_t used = First(static_cast<unsigned long>(std::popcount(leads)));
    const __m512i pairs = _mm512_maskz_compress_epi8(ofPairs, bytes);
    const auto usedLower = static_cast<__mmask16>(used), usedUpper = static_cast<__mmask16>(used >> LANES);
    const __m512i lower = SequencesOf(table, _mm512_castsi512_si256(pairs), usedLower);
    const __m512i upper =
        usedUpper != 0 ? SequencesOf(table, _mm512_extracti64x4_epi64(pairs, 1), usedUpper) : lower;
    if ((UnknownSequences(lower, usedLower) | UnknownSequences(upper, usedUpper)) != 0) return {};
    const __m512i first = WithSequences(_mm512_castsi512_si256(bytes), static_cast<uint32_t>(ofPairs), lower);
    unsigned long written = StoreKept(first, _mm512_test_epi8_mask(first, first), out);
    if (size > 32) {
        const auto listed = static_cast<unsigned>(std::popcount(static_cast<uint32_t>(ofPairs)));
        const __m512i rest = _mm512_permutex2var_epi16(lower, PlacesFrom(listed), upper);
        const __m512i second =
            WithSequences(_mm512_extracti64x4_epi64(bytes, 1), static_cast<uint32_t>(ofPairs >> 32), rest);
        written += StoreKept(second, _mm512_test_epi8_mask(second, second), out + written);
    }
    return {size, written};
}

// ---------------------------------------------------------------------------------------------------------
// UTF-8 to GBK.

struct Utf8Window {
    alignas(64) unsigned char triples[WINDOW + WINDOW / 2 + 2 * BLOCK];  // the hanzi as three bytes each
    alignas(64) unsigned char codes[WINDOW + 2 * BLOCK];                 // what they become, two bytes each
    Masks masks;                                                         // the bytes that become a code's two
    Masks dropped;                                                       // the third bytes
    unsigned long size, hanzi;
    bool isPlain;  // else it ends before something else than characters of up to three bytes
};

// The lists hold a window's characters and two bytes from behind it. Two bytes of source become a triple at
// most; a vector is stored behind.
static_assert(sizeof Utf8Window::triples >= (WINDOW + 2) * 3 / 2 + BLOCK);
static_assert(sizeof Utf8Window::codes >= WINDOW + 2 + BLOCK);

// Appends the bytes of a block of characters of two and three bytes, those of two as three:
//     110aaaaa 10bbbbbb  becomes  11100000 100aaaaa 10bbbbbb
TARGET_AVX512 void AppendTwos(__m512i block, uint64_t which, uint64_t leadsOfTwo, unsigned char* list,
                              unsigned long& size)
{
    for (const unsigned half : {0U, 32U}) {
        const __m512i bytes = half == 0 ? LowerUnits(block) : UpperUnits(block);
        const __m512i bits = _mm512_slli_epi16(_mm512_and_si512(bytes, _mm512_set1_epi16(0x1F)), 8);
        const __m512i two = _mm512_or_si512(bits, _mm512_set1_epi16(static_cast<short>(0x80E0)));
        const __m512i all = _mm512_mask_mov_epi16(bytes, static_cast<__mmask32>(leadsOfTwo >> half), two);
        const __m512i units = _mm512_maskz_mov_epi16(static_cast<__mmask32>(which >> half), all);
        Append(units, _mm512_test_epi8_mask(units, units), list, size);
    }
}

// `left`: the bytes to the end of the text, at least the window's.
TARGET_AVX512 void ListTriples(const unsigned char* src, unsigned long left, Utf8Window& window)
{
    unsigned long listed = 0, i = 0;
    uint64_t carry = 0, third = 0;  // the bytes of this block that continue a character, and its third byte
    window.isPlain = true;
    for (; i < window.size; i += BLOCK) {
        const __m512i bytes = LoadBytes(src + i, First(window.size - i));
        const Utf8Masks masks(bytes);
        const Utf8Block<uint64_t> block = masks.Block(carry);
        if (!block.IsPlain() || block.IsCut(left - i)) {
            window.isPlain = false;
            break;
        }
        if (masks.twos == masks.threes)
            Append(bytes, masks.high, window.triples, listed);
        else
            AppendTwos(bytes, masks.high, masks.twos & ~masks.threes, window.triples, listed);
        const uint64_t dropped = masks.threes << 2 | third;
        window.masks[i / BLOCK] = masks.high & ~dropped;
        window.dropped[i / BLOCK] = dropped;
        carry = block.Carry();
        third = masks.threes >> 62;
    }
    // The last character's bytes from behind, as they come.
    const auto behind = static_cast<unsigned long>(std::popcount(carry));
    window.masks[i / BLOCK] = carry & ~third;
    window.dropped[i / BLOCK] = third;
    window.size = std::min(i, window.size);
    if (behind != 0) memcpy(window.triples + listed, src + window.size, behind);
    window.size += behind;
    window.hanzi = (listed + behind) / 3;
}

// The codes of 16 triples that lie in `bytes` from `first` on, each in the lower half of a lane of 32 bits.
TARGET_AVX512 __m512i CodesOf(__m512i bytes, unsigned char first, __mmask16 which)
{
    alignas(64) static constexpr unsigned char ORDER[64] = {
        2,  1,  0,  0,  5,  4,  3,  0,  8,  7,  6,  0,  11, 10, 9,  0,  14, 13, 12, 0,  17, 16,
        15, 0,  20, 19, 18, 0,  23, 22, 21, 0,  26, 25, 24, 0,  29, 28, 27, 0,  32, 31, 30, 0,
        35, 34, 33, 0,  38, 37, 36, 0,  41, 40, 39, 0,  44, 43, 42, 0,  47, 46, 45, 0};
    const __m512i order =
        _mm512_add_epi8(_mm512_load_si512(ORDER), _mm512_set1_epi8(static_cast<char>(first)));
    // Each lane of 32 bits is any, first, middle, last byte, highest first, of which the bits that count
    // stay. Multiplying by 1, 64, 1 and adding in pairs, then by 1, 4096, puts them side by side:
    //     xxxxxxxx 1110ffff 10mmmmmm 10llllll  becomes  ffff000000000000 + mmmmmm000000 + llllll
    const __m512i lanes = _mm512_permutexvar_epi8(order, bytes);
    const __m512i bits = _mm512_and_si512(lanes, _mm512_set1_epi32(0x000F3F3F));
    const __m512i halves = _mm512_maddubs_epi16(bits, _mm512_set1_epi32(0x00014001));
    return LookUp16(CodeTable, _mm512_madd_epi16(halves, _mm512_set1_epi32(0x10000001)), which);
}

// Those that GBK lacks, and the euro sign, whose code has one byte.
TARGET_AVX512 unsigned UnknownCodes(__m512i codes, __mmask16 which)
{
    return _mm512_testn_epi32_mask(codes, _mm512_set1_epi32(0x8000)) & which;
}

// As text: the second and the first byte of each lane of 32 bits.
TARGET_AVX512 __m256i CodesAsBytes(__m512i codes)
{
    alignas(64) static constexpr unsigned char SWAPPED[64] = {1,  0,  5,  4,  9,  8,  13, 12, 17, 16, 21,
                                                              20, 25, 24, 29, 28, 33, 32, 37, 36, 41, 40,
                                                              45, 44, 49, 48, 53, 52, 57, 56, 61, 60};
    return _mm512_castsi512_si256(_mm512_permutexvar_epi8(_mm512_load_si512(SWAPPED), codes));
}

// The number of characters up to one that GBK lacks, or of all.
TARGET_AVX512 unsigned long LookUpCodes(Utf8Window& window)
{
    for (unsigned long i = 0; i < window.hanzi; i += LANES) {
        const auto used = static_cast<__mmask16>(First(window.hanzi - i));
        const __m512i codes = CodesOf(_mm512_loadu_si512(window.triples + 3 * i), 0, used);
        Store32(window.codes + 2 * i, CodesAsBytes(codes));
        const unsigned unknown = UnknownCodes(codes, used);
        if (unknown != 0) return i + _tzcnt_u32(unknown);
    }
    return window.hanzi;
}

// Of three bytes of source at most one is dropped, or of 64 at most 22. So a whole vector that is stored for
// a block keeps within what is certain to be overwritten while another block follows.
static_assert(BLOCK - (BLOCK + 2) / 3 >= (BLOCK + 2) / 3);

TARGET_AVX512 unsigned long StoreCodes(const unsigned char* src, const Utf8Window& window, unsigned char* out)
{
    const unsigned char* list = window.codes;
    unsigned char* const begin = out;
    for (unsigned long i = 0; i < window.size; i += BLOCK) {
        const unsigned long left = window.size - i;
        const uint64_t within = First(left), ofHanzi = window.masks[i / BLOCK] & within;
        const __m512i bytes = LoadBytes(src + i, within);
        const __m512i replaced = _mm512_mask_expand_epi8(bytes, ofHanzi, _mm512_loadu_si512(list));
        const uint64_t keep = within & ~window.dropped[i / BLOCK];
        list += std::popcount(ofHanzi);
        if (left < 2 * BLOCK) {
            out += StoreKept(replaced, keep, out);
        } else {
            _mm512_storeu_si512(out, _mm512_maskz_compress_epi8(keep, replaced));
            out += std::popcount(keep);
        }
    }
    return static_cast<unsigned long>(out - begin);
}

// As GbkBlockToUtf8: a text of a block at most of ASCII and characters of three bytes that GBK has.
TARGET_AVX512 Progress Utf8BlockToGbk(const unsigned char* src, unsigned long size, unsigned char* out)
{
    const __m512i bytes = LoadBytes(src, First(size));
    const Utf8Masks masks(bytes);
    const Utf8Block<uint64_t> block = masks.Block(0);
    if (!block.IsPlain() || block.IsCut(size) || masks.twos != masks.threes) return {};
    const __m512i triples = _mm512_maskz_compress_epi8(masks.high, bytes);
    const uint64_t used = First(static_cast<unsigned long>(std::popcount(masks.threes)));
    const auto usedLower = static_cast<__mmask16>(used), usedUpper = static_cast<__mmask16>(used >> LANES);
    const __m512i lower = CodesOf(triples, 0, usedLower);
    const __m512i upper = usedUpper != 0 ? CodesOf(triples, 3 * LANES, usedUpper) : lower;
    if ((UnknownCodes(lower, usedLower) | UnknownCodes(upper, usedUpper)) != 0) return {};
    const __m512i list =
        _mm512_inserti64x4(_mm512_castsi256_si512(CodesAsBytes(lower)), CodesAsBytes(upper), 1);
    const uint64_t dropped = masks.threes << 2;
    const __m512i replaced = _mm512_mask_expand_epi8(bytes, masks.high & ~dropped, list);
    return {size, StoreKept(replaced, First(size) & ~dropped, out)};
}

// Up to a block's bytes one by one. False where the conversion stops.
bool ConvertBytes(const unsigned char* src, unsigned long size, unsigned char* out, Progress& at)
{
    const unsigned long end = std::min(size, at.read + BLOCK);
    while (at.read < end) {
        const WideStep step = NextWide(src + at.read, size - at.read);
        if (step.isCharacter) {
            const unsigned code = CodeTable[step.cp];
            if (step.length > 1 && code < 0x8000) return false;
            if (step.length > 1) out[at.written++] = static_cast<unsigned char>(code >> 8);
            out[at.written++] = static_cast<unsigned char>(code);
        }
        at.read += step.length;
    }
    return true;
}
}  // namespace

TARGET_AVX512 Progress GbkToUtf8(const uint32_t* sequences, const unsigned char* src, unsigned long size,
                                 unsigned char* out)
{
    Progress at;
    if (size != 0 && size <= BLOCK) at = GbkBlockToUtf8(sequences, src, size, out);
    GbkWindow window;
    while (at.read < size) {
        CopyAscii(src, size, out, at);
        window.size = std::min(size - at.read, WINDOW);
        ListPairs(src + at.read, window);
        const unsigned long known = LookUpSequences(sequences, window);
        // Of a lone lead byte at the end of the text, ListPairs leaves a window of no bytes.
        const bool isWhole = known == window.hanzi && window.size != 0;
        if (known < window.hanzi) window.size = PlaceOfBit(window.masks, 2 * known);
        at.written += StoreSequences(src + at.read, window, out + at.written);
        at.read += window.size;
        if (!isWhole) break;
    }
    return at;
}

TARGET_AVX512 Progress Utf8ToGbk(const unsigned char* src, unsigned long size, unsigned char* out)
{
    Progress at;
    if (size != 0 && size <= BLOCK) at = Utf8BlockToGbk(src, size, out);
    Utf8Window window;
    while (at.read < size) {
        CopyAscii(src, size, out, at);
        window.size = std::min(size - at.read, WINDOW);
        ListTriples(src + at.read, size - at.read, window);
        const unsigned long known = LookUpCodes(window);
        if (known < window.hanzi) window.size = PlaceOfBit(window.masks, 2 * known);
        at.written += StoreCodes(src + at.read, window, out + at.written);
        at.read += window.size;
        if (known < window.hanzi) break;
        if (!window.isPlain && !ConvertBytes(src, size, out, at)) break;
    }
    return at;
}
}  // namespace fast::avx512
