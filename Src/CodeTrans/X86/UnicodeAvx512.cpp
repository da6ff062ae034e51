// UTF-8 to and from wide characters, with AVX-512.
//
//     to wide characters: for each block of 64 bytes, its characters as code units (Avx512.h), widened
//     from wide characters:
//         while text is ASCII: 64 characters, narrowed by packing
//         else 16 characters, each in a lane of the three bytes that it takes at most; the bytes that count
//             are compressed and stored
#include "Avx512.h"
#include "Kernels.h"

namespace fast::avx512
{
namespace
{
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
    at.read = ForUnitsOfUtf8(src, size, [&](__m512i units, unsigned long count) TARGET_AVX512 {
        StoreWides(units, count, out + at.written);
        at.written += sizeof(wchar_t) * count;
        return true;
    });
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
