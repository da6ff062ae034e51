// The fast forms for x86-64: windows of the source through the kernels, from scratch exactly into place.
//
// A window near the end of the source is copied into zero-padded scratch first, and kernels write to scratch
// alone, so nothing beyond the source is read and nothing beyond the result is written, whatever whole
// vectors do.
#include <algorithm>

#include "Bytes.h"
#include "Kernels.h"
#include "Vectors.h"

namespace fast
{
namespace
{
constexpr unsigned long WINDOW =
    1024;  // source bytes; with code units and output a quarter of the first cache

const Kernels& Best()
{
    return FormsInUse() == Forms::AVX512 ? KERNELS_AVX512 : KERNELS_AVX2;
}

// Code units on their way, with room for what kernels write behind and for the zeros that they read there.
struct Units {
    static constexpr unsigned long MOST = WINDOW + 2 * SLACK;
    alignas(32) uint16_t at[MOST + SLACK];
};

struct Window {
    const unsigned char* at;
    unsigned long size;
    bool last;  // followed by zeros, not by more of the source
};

// The source in windows, each of them readable for SLACK bytes beyond its size.
class CWindows
{
public:
    CWindows(const void* src, unsigned long length)
        : m_pSrc(static_cast<const unsigned char*>(src)), m_nLength(length)
    {
    }

    Window At(unsigned long position)
    {
        const unsigned char* const at = m_pSrc + position;
        const unsigned long left = m_nLength - position;
        if (left >= WINDOW + SLACK) return {at, WINDOW, false};
        memcpy(m_padded, at, left);
        memset(m_padded + left, 0, SLACK);
        return {m_padded, left, true};
    }

private:
    const unsigned char* m_pSrc;
    unsigned long m_nLength;
    unsigned char m_padded[WINDOW + 2 * SLACK];
};

void PadWithZeros(uint16_t* units, unsigned long count)
{
    memset(units + count, 0, SLACK);
}

// The output of a kernel that ran into the zeros behind `size` units: less a byte for each of them.
unsigned long WithoutZeros(const Progress& kernel, unsigned long size)
{
    return kernel.read > size ? kernel.written - (kernel.read - size) : kernel.written;
}

// Wide characters; those above U+FFFF are dropped. The whole window.
TARGET_AVX2 unsigned long WideToUnits(const wchar_t* src, unsigned long count, uint16_t* units)
{
    const __m256i tooHigh = _mm256_set1_epi32(static_cast<int>(0xFFFF0000));
    unsigned long read = 0, written = 0;
    for (; read + 16 <= count; read += 16) {
        const __m256i first = Load32(src + read), second = Load32(src + read + 8);
        if (!_mm256_testz_si256(_mm256_or_si256(first, second), tooHigh)) {
            for (unsigned long i = read; i < read + 16; ++i) {
                const unsigned cp = LoadWide(src + i);
                units[written] = static_cast<uint16_t>(cp);
                written += cp <= 0xFFFF;
            }
            continue;
        }
        Store32(units + written, _mm256_permute4x64_epi64(_mm256_packus_epi32(first, second), 0xD8));
        written += 16;
    }
    for (; read < count; ++read) {
        const unsigned cp = LoadWide(src + read);
        units[written] = static_cast<uint16_t>(cp);
        written += cp <= 0xFFFF;
    }
    return written;
}

// Whether a zero is among the first `count` code units.
TARGET_AVX2 bool HasZero(const uint16_t* units, unsigned long count)
{
    __m256i zeros = _mm256_setzero_si256();
    unsigned long i = 0;
    for (; i + 16 <= count; i += 16)
        zeros = _mm256_or_si256(zeros, _mm256_cmpeq_epi16(Load32(units + i), _mm256_setzero_si256()));
    const unsigned rest = Mask(_mm256_cmpeq_epi16(Load32(units + i), _mm256_setzero_si256()));
    return Mask(zeros) != 0 || (rest & ((1U << 2 * (count - i)) - 1)) != 0;
}

// Code units as wide characters, exactly `count`: this kernel alone writes straight to a caller's buffer.
TARGET_AVX2 void UnitsToWide(const uint16_t* units, unsigned long count, char* out)
{
    unsigned long i = 0;
    for (; i + 8 <= count; i += 8) Store32(out + 4 * i, _mm256_cvtepu16_epi32(Load16(units + i)));
    for (; i < count; ++i) StoreWide(out + 4 * i, units[i]);
}

}  // namespace
}  // namespace fast

using namespace fast;

TARGET_AVX2 Progress FastPairsToUtf16(const unsigned short* table, const char* src, unsigned long srcLen,
                                      char* dst, unsigned long room)
{
    Units units;
    CWindows windows(src, srcLen);
    Progress total;
    bool last = false;
    while (!last) {
        const Window window = windows.At(total.read);
        const Progress step = Best().modelPairs(table, window.at, window.size, window.last, units.at);
        const unsigned long bytes = 2 * step.written;
        if (bytes > room - total.written) break;
        memcpy(dst + total.written, units.at, bytes);
        total.read += step.read;
        total.written += bytes;
        last = window.last;
    }
    return total;
}

TARGET_AVX2 Progress FastUtf8ToWide(const unsigned char* src, unsigned long srcLen, char* dst)
{
    Units units;
    CWindows windows(src, srcLen);
    Progress total;
    bool last = false;
    while (!last) {
        const Window window = windows.At(total.read);
        const Progress step = Best().utf8(window.at, window.size, window.last, units.at);
        UnitsToWide(units.at, step.written, dst + total.written);
        total.read += step.read;
        total.written += sizeof(wchar_t) * step.written;
        last = window.last;
    }
    return total;
}

TARGET_AVX2 Progress FastWideToUtf8(const wchar_t* src, unsigned long count, unsigned char* dst)
{
    Units units;
    Progress total;
    while (total.read < count) {
        const unsigned long size = std::min(count - total.read, WINDOW);
        const unsigned long kept = WideToUnits(src + total.read, size, units.at);
        PadWithZeros(units.at, kept);
        total.written += WithoutZeros(Best().toUtf8(units.at, kept, dst + total.written), kept);
        total.read += size;
    }
    return total;
}

TARGET_AVX2 Progress FastUtf16ToGbk(const char* src, unsigned long count, char* dst)
{
    Units units;
    unsigned char gbk[2 * Units::MOST + SLACK];
    Progress total;
    while (total.read < count) {
        const unsigned long size = std::min(count - total.read, WINDOW);
        memcpy(units.at, src + 2 * total.read, 2 * size);
        PadWithZeros(units.at, size);
        const unsigned long written = WithoutZeros(Best().toGbk(units.at, size, gbk), size);
        memcpy(dst + total.written, gbk, written);
        total.read += size;
        total.written += written;
    }
    return total;
}

TARGET_AVX2 Progress FastGbkToUtf8(const unsigned short* gbkToUnit, const char* src, unsigned long srcLen,
                                   char* dst, unsigned long room)
{
    Units units;
    unsigned char utf8[3 * Units::MOST + SLACK];
    CWindows windows(src, srcLen);
    Progress total;
    bool last = false;
    while (!last && total.written < room) {
        const Window window = windows.At(total.read);
        const Progress step = Best().localePairs(gbkToUnit, window.at, window.size, window.last, units.at);
        if (HasZero(units.at, step.written)) break;
        PadWithZeros(units.at, step.written);
        const unsigned long bytes = WithoutZeros(Best().toUtf8(units.at, step.written, utf8), step.written);
        const unsigned long kept = std::min(bytes, room - total.written);
        memcpy(dst + total.written, utf8, kept);
        total.read += step.read;
        total.written += kept;
        last = window.last;
    }
    return total;
}

TARGET_AVX2 Progress FastUtf8ToGbk(const char* src, unsigned long srcLen, char* dst)
{
    Units units;
    unsigned char gbk[2 * Units::MOST + SLACK];
    CWindows windows(src, srcLen);
    Progress total;
    bool last = false;
    while (!last) {
        const Window window = windows.At(total.read);
        const Progress step = Best().utf8(window.at, window.size, window.last, units.at);
        PadWithZeros(units.at, step.written);
        const Progress encoded = Best().toKnownGbk(units.at, step.written, gbk);
        if (encoded.read < step.written) break;
        const unsigned long bytes = WithoutZeros(encoded, step.written);
        memcpy(dst + total.written, gbk, bytes);
        total.read += step.read;
        total.written += bytes;
        last = window.last;
    }
    return total;
}
