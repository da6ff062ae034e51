// GBK and Big5 to UTF-16LE by the model's mapping tables, and a one-character UTF-8 decoder.
//
// The decoder rejects nothing: every byte of 80 and above takes the next byte with it, whatever that is, and
// becomes the table's entry for the pair. Each byte, pair or lone lead byte becomes exactly one code unit.
#include "Bytes.h"
#include "FastPaths.h"
#include "STLCodeTrans.h"

long CodeTrans_iTransErrCnt = 0;

namespace
{
// What stands for a character that cannot be decoded.
constexpr unsigned short UNDECODABLE = 0xFEFF;

const unsigned short* MappingTable(int encoding)
{
    if (encoding == ENCODE_GBK) return g_mapGBKToUnicode;
    if (encoding == ENCODE_BIG5) return g_mapBig5ToUnicode;
    return nullptr;
}
}  // namespace

unsigned long GBKBig5_ToUnicode(int encoding, char const* src, unsigned long srcLen, char* dst,
                                unsigned long& dstLen)
{
    // Decodes that overlap make the count meaningless, and nothing else. Not every C++ library has
    // atomic_ref.
    __atomic_store_n(&CodeTrans_iTransErrCnt, 0, __ATOMIC_RELAXED);
    const unsigned short* table = MappingTable(encoding);
    const auto* bytes = reinterpret_cast<const unsigned char*>(src);
    // The last place at which a code unit still fits. A capacity of 0 wraps to "no limit".
    const unsigned long end = dstLen - 1;
    Progress at;
    if (table != nullptr && FastPathsOn() && !Overlap(src, srcLen, dst, 2 * srcLen))
        at = FastPairsToUtf16(table, src, srcLen, dst, dstLen != 0 ? dstLen : 2 * srcLen);
    unsigned long read = at.read, written = at.written;
    for (; read < srcLen && written < end; written += 2) {
        const unsigned char lead = bytes[read++];
        if (lead < 0x80) {
            StoreUnit16(dst + written, lead);
        } else if (read < srcLen) {
            const unsigned char trail = bytes[read++];
            StoreUnit16(dst + written, table != nullptr ? table[PairIndex(lead, trail)] : 0);
        } else {
            StoreUnit16(dst + written, UNDECODABLE);
            __atomic_fetch_add(&CodeTrans_iTransErrCnt, 1, __ATOMIC_RELAXED);
        }
    }
    dstLen = written;
    return written;
}

int UTF8Char_ToUnicode(char const* s, unsigned long len, wchar_t& cp)
{
    cp = UNDECODABLE;
    if (len == 0) return 1;
    const auto* bytes = reinterpret_cast<const unsigned char*>(s);
    const auto continues = [&](unsigned long i) { return i < len && IsContinuation(bytes[i]); };

    const unsigned char lead = bytes[0];
    if (lead < 0x80) {
        cp = lead;
        return 1;
    }
    if ((lead & 0xE0) == 0xC0) {
        if (continues(1)) cp = static_cast<wchar_t>(DecodeTwo(bytes));
        return 2;
    }
    if ((lead & 0xF0) == 0xE0) {
        if (continues(1) && continues(2)) cp = static_cast<wchar_t>(DecodeThree(bytes));
        return 3;
    }
    // Longer sequences are announced but not decoded.
    if ((lead & 0xF8) == 0xF0) return 4;
    if ((lead & 0xFC) == 0xF8) return 5;
    if ((lead & 0xFE) == 0xFC) return 6;
    return 1;
}
