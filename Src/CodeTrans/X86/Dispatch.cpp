// The fast forms for x86-64: which kernel does the work, and what keeps it within the source and the result.
//
// GB/s of source for prose, 1 MB and pieces of 64 bytes, as Bench/README.md measures it. Each form serves
// from the first byte on.
//
//                             plain           AVX2          AVX-512
//     FastPairsToUtf16     1.06  1.22      2.48  1.49      4.90  2.85
//     FastUtf8ToWide       1.38  1.10      4.02  1.60      8.42  3.61
//     FastWideToUtf8       2.33  2.35      6.20  2.94     15.19  4.34
//     FastUtf16ToGbk       1.65  1.66      4.73  1.45      6.99  2.99
//     FastGbkToUtf8        0.38  0.26      2.03  1.12      5.15  1.93
//     FastUtf8ToGbk        0.38  0.23      2.19  1.01      5.49  2.07
//     FastWalk             0.14  0.14      0.59  0.43    as AVX2 (FastWalk.cpp; GBK)
//
// The kernels for AVX-512 stay within both by themselves. The kernels for AVX2 read and write whole vectors.
// They read the source itself while enough of it is left behind, then a copy. They write into place where
// what they write behind their output is certain to be overwritten, else to scratch.
#include <algorithm>

#include "Bytes.h"
#include "Kernels.h"
#include "Vectors.h"

namespace fast
{
namespace
{
constexpr unsigned long WINDOW = 1024;  // source bytes to one scratch

// Faster than the AVX2 forms on all texts that the benchmarks measure, but for GBK to UTF-16 and UTF-16 to
// GBK of almost pure ASCII, where they reach nine tenths of the speed.
bool UsesAvx512()
{
    return FormsInUse() == Forms::AVX512;
}

struct Window {
    const unsigned char* at;
    unsigned long size;
    bool last;
};

// Exactly `count` bytes from one place to another.
TARGET_AVX2 void Place(void* to, const void* from, unsigned long count)
{
    constexpr unsigned long SHORT = 256;  // up to here a call of memcpy costs more than this loop
    if (count < 32 || count > SHORT) {
        memcpy(to, from, count);
        return;
    }
    char* const out = static_cast<char*>(to);
    const char* const in = static_cast<const char*>(from);
    for (unsigned long i = 0; i + 32 <= count; i += 32) Store32(out + i, Load32(in + i));
    Store32(out + count - 32, Load32(in + count - 32));
}

// The source in stretches for the kernels of runs, which read whole blocks: for as long as one more is left
// behind them the source itself, at the end a copy with zeros behind.
class CStretches
{
public:
    static constexpr unsigned long END = 64, BEHIND = avx2::READ_BEHIND;

    // Filling the end first would cost short texts more than the rest: At() writes what it hands out.
    // cppcheck-suppress uninitMemberVar
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
    alignas(32) unsigned char m_end[END + BEHIND];
    const unsigned char* m_pSrc;
    unsigned long m_nLength;
};

// The whole source through scratch of `ROOM` bytes a window, until the kernel stops. A window never holds
// more than WINDOW bytes: of a kernel that makes more than ROOM of them, the scratch would be too small.
template <unsigned long ROOM, typename Kernel>
Progress ByWindows(const void* src, unsigned long srcLen, void* dst, unsigned long room, Kernel kernel)
{
    unsigned char scratch[ROOM + avx2::WRITTEN_BEHIND];
    CStretches stretches(src, srcLen);
    Progress total;
    bool more = true;
    while (more) {
        const Window window = stretches.At(total.read, WINDOW);
        Progress step = kernel(window.at, window.size, scratch);
        step.written = std::min(step.written, room - total.written);
        Place(static_cast<char*>(dst) + total.written, scratch, step.written);
        total += step;
        more = !window.last && step.read != 0 && total.written < room;
    }
    return total;
}
}  // namespace
}  // namespace fast

using namespace fast;

Progress FastPairsToUtf16(const unsigned short* table, const char* src, unsigned long srcLen, char* dst,
                          unsigned long room)
{
    // Each byte of the source makes one byte of output at least: while more than a kernel writes too much is
    // left, it can write into place.
    const auto* const from = reinterpret_cast<const unsigned char*>(src);
    auto* const to = reinterpret_cast<unsigned char*>(dst);
    if (UsesAvx512() && room / 2 >= srcLen) return avx512::PairsToUtf16(table, from, srcLen, to);
    Progress total;
    const auto certain = [&] { return std::min(srcLen - total.read, (room - total.written) / 2); };
    while (certain() > CStretches::END)
        total +=
            avx2::PairsToUtf16(table, from + total.read, certain() - CStretches::BEHIND, to + total.written);
    if (certain() < srcLen - total.read) return total;
    unsigned char units[2 * CStretches::END + avx2::WRITTEN_BEHIND];
    CStretches stretches(src, srcLen);
    const Window end = stretches.At(total.read, CStretches::END);
    const Progress step = avx2::PairsToUtf16(table, end.at, end.size, units);
    Place(dst + total.written, units, step.written);
    return total += step;
}

Progress FastUtf8ToWide(const unsigned char* src, unsigned long srcLen, char* dst)
{
    if (UsesAvx512()) return avx512::Utf8ToWide(src, srcLen, reinterpret_cast<unsigned char*>(dst));
    return ByWindows<4 * WINDOW>(src, srcLen, dst, ~0UL, avx2::Utf8ToWide);
}

Progress FastGbkToUtf8(const LocaleGbk& gbk, const char* src, unsigned long srcLen, char* dst,
                       unsigned long room)
{
    const auto* const from = reinterpret_cast<const unsigned char*>(src);
    if (UsesAvx512() && room / 2 >= srcLen)
        return avx512::GbkToUtf8(gbk.sequences, from, srcLen, reinterpret_cast<unsigned char*>(dst));
    const auto kernel = [&](const unsigned char* window, unsigned long size, unsigned char* to) {
        return avx2::GbkToUtf8(gbk.sequences, window, size, to);
    };
    return ByWindows<3 * WINDOW / 2>(src, srcLen, dst, room, kernel);
}

Progress FastUtf8ToGbk(const char* src, unsigned long srcLen, char* dst)
{
    if (UsesAvx512())
        return avx512::Utf8ToGbk(reinterpret_cast<const unsigned char*>(src), srcLen,
                                 reinterpret_cast<unsigned char*>(dst));
    return ByWindows<WINDOW>(src, srcLen, dst, ~0UL, avx2::Utf8ToGbk);
}

Progress FastWideToUtf8(const wchar_t* src, unsigned long count, unsigned char* dst)
{
    if (UsesAvx512()) return avx512::WideToUtf8(src, count, dst);
    constexpr unsigned long AT_ONCE = WINDOW / sizeof(wchar_t);
    unsigned char utf8[3 * AT_ONCE + avx2::WRITTEN_BEHIND];
    Progress total, step;
    do {
        step = avx2::WideToUtf8(src + total.read, std::min(count - total.read, AT_ONCE), utf8);
        Place(dst + total.written, utf8, step.written);
        total += step;
    } while (step.read == AT_ONCE);
    return total;
}

TARGET_AVX2 Progress FastUtf16ToGbk(const char* src, unsigned long count, char* dst)
{
    auto* const to = reinterpret_cast<unsigned char*>(dst);
    if (UsesAvx512()) return avx512::Utf16ToGbk(src, count, to);
    // Straight into place: each of the code units behind makes one byte at least.
    const Progress most = avx2::Utf16ToGbk(src, count, to);
    // The last few, with zeros behind them that make a byte each.
    constexpr unsigned long FEW = 16;
    const unsigned long left = count - most.read;
    if (left == 0) return most;
    char units[2 * 2 * FEW] = {};
    unsigned char gbk[2 * 2 * FEW];
    if (count >= FEW)
        Store32(units, Load32(src + 2 * (count - FEW)));
    else
        memcpy(units + 2 * (FEW - left), src, 2 * left);
    const Progress step = avx2::Utf16ToGbk(units + 2 * (FEW - left), left + FEW - 1, gbk);
    const unsigned long written = step.written - (step.read - left);
    Place(dst + most.written, gbk, written);
    return {count, most.written + written};
}
