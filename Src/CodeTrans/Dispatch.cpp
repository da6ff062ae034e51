// Which converter serves which source and target, and what each call returns.
//
// The three functions are tables of branches. They differ in whether the source length is used, whether the
// capacity is honoured and what is counted, and callers rely on the differences: they are not to be evened
// out.
#include <climits>

#include "Bytes.h"
#include "STLCodeTrans.h"

namespace
{
int Resolve(int encoding, const char* src, unsigned long srcLen)
{
    return encoding == ENCODE_UNKNOWN ? CodeTrans_CodeDetect(src, srcLen) : encoding;
}

// The smaller of value and capacity, where a capacity of 0 means no limit.
unsigned long Capped(unsigned long value, unsigned long capacity)
{
    return capacity != 0 && value > capacity ? capacity : value;
}

unsigned long CopyTerminated(char* dst, const char* src, unsigned long n)
{
    if (n != 0) memmove(dst, src, n);
    dst[n] = 0;
    return n;
}

// Nothing was converted.
unsigned long Nothing(unsigned long& dstLen)
{
    return dstLen = 0;
}
}  // namespace

unsigned long CodeTrans_ToUnicode(int encoding, char const* src, unsigned long srcLen, char* dst,
                                  unsigned long& dstLen)
{
    switch (encoding = Resolve(encoding, src, srcLen)) {
        case ENCODE_UTF8:
            // Up to the first zero byte, into four-byte units, without a look at the capacity.
            return utf8_to_unicode(reinterpret_cast<unsigned char*>(const_cast<char*>(src)),
                                   reinterpret_cast<wchar_t*>(dst));
        case ENCODE_GBK:
        case ENCODE_BIG5:
            return GBKBig5_ToUnicode(encoding, src, srcLen, dst, dstLen);
        case ENCODE_UNICODE:
            // The larger of the two lengths: a capacity above the source length reads past the source.
            return dstLen = CopyTerminated(dst, src, srcLen > dstLen ? srcLen : dstLen);
        default:
            return Nothing(dstLen);
    }
}

unsigned long CodeTrans_ToUtf8(int encoding, char const* src, unsigned long srcLen, char* dst,
                               unsigned long& dstLen)
{
    switch (Resolve(encoding, src, srcLen)) {
        case ENCODE_UTF8:
            return dstLen = CopyTerminated(dst, src, Capped(srcLen, dstLen));
        case ENCODE_GBK:
        case ENCODE_BIG5:
            // Big5 is read as if it were GBK: there is no other route.
            return dstLen = ANSIToUTF8(src, dst, dstLen != 0 ? dstLen : ULONG_MAX);
        case ENCODE_UNICODE: {
            // The source length counts four-byte units here, and so does the capacity that limits it.
            const unsigned long count = Capped(srcLen, dstLen);
            const auto* const wide = reinterpret_cast<const wchar_t*>(src);
            if (count < LONG_MAX / 8 && !Overlap(src, 4 * count, dst, 3 * count + 1))
                return unicode_to_utf8(wide, count, dst, dstLen);
            unsigned char* block = nullptr;
            const unsigned long converted = unicode_to_utf8(wide, count, &block);
            const std::unique_ptr<unsigned char, CFree> owner(block);
            if (block == nullptr) return Nothing(dstLen);
            const char* text = reinterpret_cast<const char*>(block);
            dstLen = CopyTerminated(dst, text, strlen(text));
            return converted;
        }
        default:
            return Nothing(dstLen);
    }
}

unsigned long CodeTrans_ToAnsi(int encoding, char const* src, unsigned long srcLen, char* dst,
                               unsigned long& dstLen)
{
    switch (Resolve(encoding, src, srcLen)) {
        case ENCODE_UTF8:
            return dstLen = UTF8ToANSI(src, dst);
        case ENCODE_GBK:
        case ENCODE_BIG5:
            // Big5 is passed through as if it were GBK.
            return dstLen = CopyTerminated(dst, src, srcLen);
        case ENCODE_UNICODE:
            // The source length counts two-byte units here, and so does the result, whatever was written.
            utoGbk(src, dst, srcLen);
            return dstLen = srcLen;
        default:
            return Nothing(dstLen);
    }
}
