// UTF-8 to and from wide characters and UTF-16LE code units, without the C library's locales.
//
// Only the Basic Multilingual Plane is represented: four-byte sequences and wide characters above U+FFFF
// vanish, surrogates are characters like any other. The two decoders differ on purpose: the one to wide
// characters takes continuation bytes as they come, the one to UTF-16 checks them.
#include <algorithm>
#include <cstdio>

#include "Bytes.h"
#include "FastPaths.h"
#include "STLCodeTrans.h"

namespace
{
// The one rule that turns a code point of up to 31 bits into UTF-8 bytes (one to six, RFC 2279).
int EncodeUtf8(unsigned long cp, unsigned char* out)
{
    if (cp <= 0x7F) {
        out[0] = static_cast<unsigned char>(cp);
        return 1;
    }
    const int length = cp <= 0x7FF ? 2 : cp <= 0xFFFF ? 3 : cp <= 0x1FFFFF ? 4 : cp <= 0x3FFFFFF ? 5 : 6;
    for (int i = length - 1; i > 0; --i, cp >>= 6) out[i] = static_cast<unsigned char>(0x80 | (cp & 0x3F));
    // As many leading one bits as bytes, then a zero bit, then what is left of the code point.
    out[0] = static_cast<unsigned char>((0xFF00U >> length & 0xFF) | cp);
    return length;
}

// Wide characters up to the first zero among them.
Progress EncodeWide(wchar_t const* src, unsigned long count, unsigned char* dst)
{
    Progress at;
    while (at.read < count) {
        if (FastPathsOn()) at += FastWideToUtf8(src + at.read, count - at.read, dst + at.written);
        for (const unsigned long end = std::min(count, at.read + FAST_WIDES); at.read < end; ++at.read) {
            const unsigned cp = LoadWide(src + at.read);
            if (cp == 0) return at;
            if (cp <= 0xFFFF) at.written += static_cast<unsigned long>(EncodeUtf8(cp, dst + at.written));
        }
    }
    return at;
}

// A zero-terminated text decoded up to its first zero character.
std::wstring DecodeToWide(const char* src)
{
    // Each source byte yields one wide character at most; the terminator takes half of the one more.
    const auto scratch = ZeroedScratch<wchar_t>(strlen(src) + 1);
    utf8_to_unicode(reinterpret_cast<unsigned char*>(const_cast<char*>(src)), scratch.get());
    return scratch.get();
}

void DumpByte(unsigned char byte)
{
    printf("%02X", byte);
}
}  // namespace

unsigned long utf8_to_unicode(unsigned char* src, wchar_t* dst)
{
    const unsigned long length = strlen(reinterpret_cast<const char*>(src));
    char* const out = reinterpret_cast<char*>(dst);
    Progress at;
    if (FastPathsOn() && !Overlap(src, length, dst, sizeof(wchar_t) * length))
        at = FastUtf8ToWide(src, length, out);
    unsigned long read = at.read, written = at.written;
    // A conversion in place may have written a zero ahead.
    while (read < length && src[read] != 0) {
        const WideStep step = NextWide(src + read, length - read);
        read += step.length;
        if (!step.isCharacter) continue;
        StoreWide(out + written, static_cast<wchar_t>(step.cp));
        written += sizeof(wchar_t);
    }
    // Half a wide character on purpose: a caller who needs a whole one zeroes the destination first.
    out[written] = out[written + 1] = 0;
    return written;
}

unsigned long unicode_to_utf8(wchar_t const* src, unsigned long count, unsigned char** dst)
{
    const bool representable = count < static_cast<unsigned long>(PTRDIFF_MAX) / 3;
    // As many as the longest text takes, and all zero behind the one that comes: callers may read on there.
    *dst = representable ? static_cast<unsigned char*>(calloc(3 * count + 1, 1)) : nullptr;
    if (*dst == nullptr) return 0;

    Progress at = EncodeWide(src, count, *dst);
    while (at.read < count) {
        at += {1, 1};  // a zero, which stands there already
        at += EncodeWide(src + at.read, count - at.read, *dst + at.written);
    }
    return at.written;
}

unsigned long unicode_to_utf8(wchar_t const* src, unsigned long count, char* dst, unsigned long& dstLen)
{
    const Progress at = EncodeWide(src, count, reinterpret_cast<unsigned char*>(dst));
    dst[dstLen = at.written] = 0;
    unsigned long produced = at.written;
    for (unsigned long i = at.read; i < count; ++i) {
        const unsigned cp = LoadWide(src + i);
        produced += cp <= 0x7F ? 1 : cp <= 0x7FF ? 2 : cp <= 0xFFFF ? 3 : 0;
    }
    return produced;
}

int utf8tou(char* src, char* dst)
{
    const auto* s = reinterpret_cast<const unsigned char*>(src);
    int units = 0;
    const auto put = [&](unsigned cp) {
        StoreUnit16(dst, cp);
        dst += 2;
        ++units;
    };
    // The zero terminator is no continuation byte, so no look ahead passes it.
    while (*s != 0) {
        if (*s <= 0x7F) {
            put(*s);
            s += 1;
        } else if ((*s & 0xE0) == 0xC0 && IsContinuation(s[1])) {
            put(DecodeTwo(s));
            s += 2;
        } else if ((*s & 0xF0) == 0xE0 && IsContinuation(s[1]) && IsContinuation(s[2])) {
            put(DecodeThree(s));
            s += 3;
        } else if ((*s & 0xF8) == 0xF0 && IsContinuation(s[1]) && IsContinuation(s[2]) &&
                   IsContinuation(s[3])) {
            s += 4;
        } else {
            s += 1;
        }
    }
    *dst = 0;  // one byte, not a code unit
    return units;
}

int unicode_to_utf8_one(unsigned long cp, unsigned char* out, int outSize)
{
    constexpr int LONGEST = 6;
    if (out == nullptr || outSize < LONGEST || cp > 0x7FFFFFFF) return 0;
    return EncodeUtf8(cp, out);
}

std::wstring utf8_to_unicode(char const* src)
{
    return DecodeToWide(src);
}

std::wstring UtfStr2Unicode(char const* src)
{
    return DecodeToWide(SkipByteOrderMark(src));
}

std::string unicode_to_utf8(std::wstring src)
{
    unsigned char* block = nullptr;
    unicode_to_utf8(src.data(), src.size(), &block);
    const std::unique_ptr<unsigned char, CFree> owner(block);
    if (block == nullptr) throw std::bad_alloc();
    return reinterpret_cast<const char*>(block);
}

void dump_utf8(unsigned char* text)
{
    for (; *text != 0; ++text) DumpByte(*text);
    putchar('\n');
}

void dump_unicode(wchar_t* text, unsigned long size)
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(text);
    for (unsigned long i = 0; i < size; ++i) DumpByte(bytes[i]);
    putchar('\n');
}
