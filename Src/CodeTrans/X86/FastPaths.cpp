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

// Exactly `count` bytes from one place to another.
TARGET_AVX2 void Place(void* to, const void* from, unsigned long count)
{
    constexpr unsigned long SHORT = 256;
    if (count < 32 || count > SHORT) {
        memcpy(to, from, count);
        return;
    }
    char* const out = static_cast<char*>(to);
    const char* const in = static_cast<const char*>(from);
    for (unsigned long i = 0; i + 32 <= count; i += 32) Store32(out + i, Load32(in + i));
    Store32(out + count - 32, Load32(in + count - 32));
}

// The source in stretches for the kernels of runs, which read whole blocks: for as long as one more is left behind
// them the source itself, at the end a copy with zeros behind.
class CStretches
{
public:
    static constexpr unsigned long END = 64, BEHIND = 48;  // a kernel reads so much beyond its size

    CStretches(const void* src, unsigned long length)
        : m_pSrc(static_cast<const unsigned char*>(src)), m_nLength(length)
    {
    }

    // At most `most` bytes, or the last ones.
    TARGET_AVX2 Window At(unsigned long position, unsigned long most)
    {
        const unsigned long left = m_nLength - position;
        if (left > END) return {m_pSrc + position, std::min(left - BEHIND, most), false};
        Place(m_end, m_pSrc + position, left);
        Store32(m_end + left, _mm256_setzero_si256());
        Store16(m_end + left + 32, _mm_setzero_si128());
        return {m_end, left, true};
    }

private:
    const unsigned char* m_pSrc;
    unsigned long m_nLength;
    alignas(32) unsigned char m_end[END + BEHIND];
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

Progress FastPairsToUtf16(const unsigned short* table, const char* src, unsigned long srcLen, char* dst,
                          unsigned long room)
{
    // Each byte of the source makes one byte of output at least: while more than a kernel writes too much is left,
    // it can write into place.
    constexpr unsigned long END = CStretches::END, BEHIND = CStretches::BEHIND;
    Progress total;
    const auto certain = [&] { return std::min(srcLen - total.read, (room - total.written) / 2); };
    while (certain() > END)
        total += PairsToUtf16(table, reinterpret_cast<const unsigned char*>(src) + total.read,
                              certain() - BEHIND, dst + total.written);
    if (certain() < srcLen - total.read) return total;
    char units[2 * END + SLACK];
    CStretches stretches(src, srcLen);
    const Window end = stretches.At(total.read, END);
    const Progress step = PairsToUtf16(table, end.at, end.size, units);
    Place(dst + total.written, units, step.written);
    return total += step;
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

Progress FastGbkToUtf8(const LocaleSequences& table, const char* src, unsigned long srcLen, char* dst,
                       unsigned long room)
{
    unsigned char utf8[3 * WINDOW / 2 + SLACK];
    CStretches stretches(src, srcLen);
    Progress total;
    bool more = true;
    while (more) {
        const Window stretch = stretches.At(total.read, WINDOW);
        Progress step = GbkToUtf8(table.entries, stretch.at, stretch.size, utf8);
        step.written = std::min(step.written, room - total.written);
        Place(dst + total.written, utf8, step.written);
        total += step;
        more = !stretch.last && step.read != 0 && total.written < room;
    }
    return total;
}

Progress FastUtf8ToGbk(const char* src, unsigned long srcLen, char* dst)
{
    unsigned char gbk[WINDOW + SLACK];
    CStretches stretches(src, srcLen);
    Progress total;
    bool more = true;
    while (more) {
        const Window stretch = stretches.At(total.read, WINDOW);
        const Progress step = Utf8ToGbk(stretch.at, stretch.size, gbk);
        Place(dst + total.written, gbk, step.written);
        total += step;
        more = !stretch.last && step.read != 0;
    }
    return total;
}
