// The engine's chief header: every engine function, the model's types and tables.
//
// Engine functions are plain global functions with fixed argument types, so that other code can link to them
// by signature; none of them is exported from the shared library. "Unicode" has two widths here: detection,
// the GBK/Big5 decoder and the GBK encoder work in UTF-16LE code units, the UTF-8 codecs and the locale
// conversions in wide characters of four bytes. Neither ever holds a value above U+FFFF.
#ifndef STL_CODE_TRANS_H
#define STL_CODE_TRANS_H

#include <string>

#include "CodeTrans.h"

static_assert(sizeof(unsigned long) == sizeof(void*), "a length reaches over all of memory");
static_assert(sizeof(wchar_t) == 4, "wide characters are 32-bit units");

// ---------------------------------------------------------------------------------------------------------
// The model: two mapping tables and the detection trie (Model.cpp holds them, ModelFile.cpp loads them)

// Entries of one mapping table: 128 lead bytes (80-FF) by 192 trail bytes (40-FF).
constexpr unsigned MAPPING_ENTRIES = 128 * 192;

// The one rule that turns a lead byte (80-FF) and the byte after it into a mapping table's index.
// Trail bytes of 40 and below share row 0.
constexpr unsigned PairIndex(unsigned char lead, unsigned char trail)
{
    const unsigned row = trail > 0x40 ? trail - 0x40U : 0U;
    return row * 128 + (lead & 0x7FU);
}

// One node of the detection trie, as the model file stores it (four little-endian integers).
struct TrieNode {
    int nBase;   // the child for byte b is the node at index nBase + b ...
    int nCheck;  // ... if that node's nCheck is this node's index
    int nFail;   // where to try a byte again that this node has no child for
    int nValue;  // a decisive encoding code and four score adjustments: PackTrieValue
};
static_assert(sizeof(TrieNode) == 16, "nodes are read from the file as they lie in memory");
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "big-endian hosts are not supported: the tables of the model are little-endian");

// What entering a node adds to each encoding's sum: -9 to +10, for UTF-8 up to +23.
struct TrieAdjustments {
    int gbk;
    int big5;
    int unicode;
    int utf8;
};

// The node adds nothing and counts nowhere.
constexpr int TRIE_VALUE_NONE = 0x1280d;
// Set together with four zero adjustments, it makes a node that adds nothing but counts as non-positive.
constexpr int TRIE_VALUE_COUNTED = 1 << 18;

// A node's value: the code in bits 20-31, four base-20 digits of adjustment + 9 in bits 0-17.
constexpr int PackTrieValue(int code, const TrieAdjustments& add)
{
    return code * (1 << 20) + (add.gbk + 9) + 20 * (add.big5 + 9) + 400 * (add.unicode + 9) +
           8000 * (add.utf8 + 9);
}

constexpr int TrieValueCode(int value)
{
    return value >> 20;
}

constexpr TrieAdjustments UnpackTrieValue(int value)
{
    const int digits = value & 0x3FFFF;
    return {digits % 20 - 9, digits / 20 % 20 - 9, digits / 400 % 20 - 9, digits / 8000 - 9};
}

static_assert(PackTrieValue(0, {0, 0, 0, 0}) == TRIE_VALUE_NONE, "no adjustment packs to no value");

// Null while no model is loaded; read-only while loaded.
extern unsigned short* g_mapGBKToUnicode;   // MAPPING_ENTRIES UTF-16 code units by PairIndex
extern unsigned short* g_mapBig5ToUnicode;  // the same for Big5
extern TrieNode* g_pstTrieTable;            // node 0 is the root

// Loads the model file `path`. Returns 0, or a negative code: -1 file not opened (tables stay as they were)
// or too short for the GBK table, -2 for the Big5 table, -3 for the node count, -4 for the nodes, -127 out of
// memory or a negative node count. Tables of an earlier load are replaced, not freed.
// Must not overlap any other call that reads the tables.
int CodeTrans_Initialize(char const* path);

// The same in less time where little of the model will be used: the tables stay in the file, which is mapped
// into memory and must not be cut short while they are in use. Nothing may be loaded yet.
int CodeTrans_Map(char const* path);

// The same from a model file of `size` bytes in memory, at an address that four divides. The tables stay
// there: the caller keeps the bytes, unchanged, until CodeTrans_Destroy or another load. Nothing may be
// loaded yet. Returns the same codes and, where the model is refused, changes nothing.
int CodeTrans_UseModel(char const* bytes, unsigned long size);

// Frees whatever is loaded; harmless when nothing is.
void CodeTrans_Destroy();

// The number of nodes that bounds every index into g_pstTrieTable: the loaded file's node count, or INT_MAX
// for a table that other code has put in its place.
int CodeTrans_TrieNodeCount();

// ---------------------------------------------------------------------------------------------------------
// Detection.cpp

// Names the encoding of `len` bytes at `buf` (no terminator needed): ENCODE_GBK, ENCODE_BIG5, ENCODE_UTF8,
// ENCODE_UNICODE, ENCODE_UNKNOWN when undecided, or a decisive node's code as the model stores it.
// Reentrant while the model stays loaded.
int CodeTrans_CodeDetect(char const* buf, unsigned long len);

// ---------------------------------------------------------------------------------------------------------
// DoubleByte.cpp

// Lead bytes at the very end of the input that the most recent GBKBig5_ToUnicode met (0 or 1).
// Process-wide and without a lock: meaningless while decodes overlap.
extern long CodeTrans_iTransErrCnt;

// Decodes `srcLen` bytes of GBK or Big5 into UTF-16LE. `dstLen` is the capacity of `dst` in bytes (0: no
// limit) and on return the bytes written, always even and at most 2 * srcLen; the result is the same number.
// No terminator. Output that does not fit is dropped. An encoding other than ENCODE_GBK and ENCODE_BIG5, or
// no model, turns every pair into the code unit 0.
unsigned long GBKBig5_ToUnicode(int encoding, char const* src, unsigned long srcLen, char* dst,
                                unsigned long& dstLen);

// Decodes the first UTF-8 sequence of `s` into `cp` and returns the length that its first byte announces (1
// to 6, also when fewer bytes are there). `cp` is 0xFEFF where nothing could be decoded: no input, broken or
// cut sequences, everything above three bytes.
int UTF8Char_ToUnicode(char const* s, unsigned long len, wchar_t& cp);

// ---------------------------------------------------------------------------------------------------------
// UnicodeCodecs.cpp. All reentrant. Four-byte UTF-8 sequences and wide characters above U+FFFF are dropped.

// Decodes zero-terminated UTF-8 into wide characters and returns the bytes written, 4 a character. The
// terminator is two zero bytes, not counted. `dst` holds at least 4 * strlen(src) + 2 bytes.
unsigned long utf8_to_unicode(unsigned char* src, wchar_t* dst);

// Encodes `count` wide characters (zero included) as UTF-8 into a new block that the caller frees with
// free(): 3 * count + 1 bytes, all zero behind the text. Returns the bytes produced, terminator not counted;
// 0 and a null block when out of memory.
unsigned long unicode_to_utf8(wchar_t const* src, unsigned long count, unsigned char** dst);

// The same up to the first zero, into a buffer apart from `src` and with a zero byte behind; `dstLen` becomes
// the bytes before it. Returns what the other one does.
unsigned long unicode_to_utf8(wchar_t const* src, unsigned long count, char* dst, unsigned long& dstLen);

// Decodes zero-terminated UTF-8 into UTF-16LE code units and returns their number. The terminator is one
// zero byte. `dst` holds at least 2 * strlen(src) + 1 bytes. Continuation bytes are checked.
int utf8tou(char* src, char* dst);

// Encodes one code point in the six-byte scheme of RFC 2279 and returns the bytes written, no terminator. 0
// when `out` is null, `outSize` below 6 or `cp` above 0x7FFFFFFF.
int unicode_to_utf8_one(unsigned long cp, unsigned char* out, int outSize);

// The conversions above as strings; each ends at the first zero character.
std::wstring utf8_to_unicode(char const* src);
std::wstring UtfStr2Unicode(char const* src);  // skips a leading byte-order mark
std::string unicode_to_utf8(std::wstring src);

// Print bytes as upper-case hexadecimal digits and a newline on standard output: up to the zero byte, and
// `size` bytes.
void dump_utf8(unsigned char* text);
void dump_unicode(wchar_t* text, unsigned long size);

// ---------------------------------------------------------------------------------------------------------
// GbkEncoder.cpp

// GBK code (lead byte in the high 8 bits) of every UTF-16 code unit, 0 where there is none.
extern const unsigned short CodeTable[65536];

// Encodes `count` UTF-16LE code units at `src` as GBK, A1 A1 for what GBK lacks, then two zero bytes. `dst`
// holds at least 2 * count + 2 bytes.
void utoGbk(char const* src, char* dst, unsigned long count);

// Zero-terminated UTF-8 to GBK by way of utf8tou and utoGbk. `dst` holds at least strlen(src) + 2 bytes.
void utf8toGbk(char* src, char* dst);

// ---------------------------------------------------------------------------------------------------------
// LocaleCodecs.cpp. Each call sets the process's locale to zh_CN.gbk and leaves it so; where that locale is
// missing it says so on standard output and converts in the current one. Output arguments are replaced.

// The result of mbstowcs / wcstombs: characters or bytes converted, all ones when the input is not
// convertible; the output then holds what came before the fault.
unsigned long ANSIToUnicode(std::string const& src, std::wstring& dst);
unsigned long UnicodeToANSI(std::wstring const& src, std::string& dst);

// GBK to UTF-8, up to the first invalid sequence. Returns the UTF-8 bytes produced.
unsigned long ANSIToUTF8(char const* src, std::string& dst);

// UTF-8 (a leading byte-order mark skipped) to GBK, up to the first character that GBK lacks. Returns 1.
unsigned long UTF8ToANSI(char const* src, std::string& dst);

// The same two into a buffer, with a zero byte behind: at most `room` bytes and the zero, and as many as
// there are (never more than strlen(src)). They return the bytes before the zero.
unsigned long ANSIToUTF8(char const* src, char* dst, unsigned long room);
unsigned long UTF8ToANSI(char const* src, char* dst);

// ---------------------------------------------------------------------------------------------------------
// Dispatch.cpp. The converter for each source encoding (ENCODE_UNKNOWN: detected first). `dstLen` is the
// capacity in bytes where a branch reads it, on return the length that the branch sets.

unsigned long CodeTrans_ToUnicode(int encoding, char const* src, unsigned long srcLen, char* dst,
                                  unsigned long& dstLen);
unsigned long CodeTrans_ToUtf8(int encoding, char const* src, unsigned long srcLen, char* dst,
                               unsigned long& dstLen);
unsigned long CodeTrans_ToAnsi(int encoding, char const* src, unsigned long srcLen, char* dst,
                               unsigned long& dstLen);

#endif  // STL_CODE_TRANS_H
