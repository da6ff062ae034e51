/* clang-format off */
/*
 * CodeTrans: tells GBK, Big5, UTF-8 and UTF-16LE apart and converts between them.
 *
 * This header is the whole manual of the library. Compiles as C99 and later and as C++11 and later.
 *
 * What the library does not do
 *   - It reports no conversion error. What cannot be converted is skipped, replaced or ends the text, as each
 *     function says below; characters beyond the Basic Multilingual Plane are lost on every converting route.
 *   - It converts between GBK and UTF-8 through the C library, under the locale "zh_CN.gbk", which must exist
 *     on the machine. These routes set that locale for the whole process and leave it set. Where it is missing
 *     they say so on standard output and convert in whatever locale is current.
 *   - It has no Big5 encoder and no route from Big5 to UTF-8; see TQ_ToUtf8 and TQ_ToGBK.
 *
 * Buffers
 *   Lengths and capacities are bytes unless an entry says otherwise. The caller owns every buffer that it passes;
 *   none may be null, and source and destination must not overlap. Not every route honours the capacity, and some
 *   read or write beyond the stated lengths: the table at each function says what must be readable at pSrc and
 *   writable at pDst. strlen(pSrc) there means the source up to its first zero byte, which must exist. Where a
 *   capacity is honoured, 0 means no limit, never "no room".
 *   ENCODE_UNKNOWN as the source encoding detects it first, so the buffers must then suit every route. Calling
 *   TQ_CodeDetect and passing its answer is the simpler way.
 *
 * Threads
 *   TQ_Init and TQ_Exit must not overlap any other call. Between them any number of threads may call everything
 *   else, but for the locale routes (TQ_ToUtf8 from GBK and Big5, TQ_ToGBK from UTF-8, and the file functions): these
 *   set the process-wide locale without a lock. With the GNU C library it is enough that the first such call returns
 *   before other threads make theirs and that nobody sets another locale; elsewhere, one such call at a time.
 *
 * Shortages
 *   No exception leaves the library. Where memory runs out, buffer conversions return 0, TQ_Init -2 and the file
 *   functions -1, and later calls work. But a locale or a converter that the GNU C library could not read when first
 *   asked, for want of memory or descriptors, it does without for the life of the process: where shortages are to be
 *   outlived, make a first call of a locale route early.
 *
 * Example: GBK text in memory to UTF-8 (error handling left out)
 *
 *     const char* text = "\xD6\xD0\xCE\xC4";                    // zero-terminated, as this route needs
 *     size_t capacity = 3 * strlen(text);                       // what the result may take ...
 *     char* utf8 = malloc(capacity + 1);                        // ... and its terminator, which comes on top
 *     TQ_Init("/usr/share/CodeTrans", NULL);                    // holds Data/CodeTrans.model
 *     int code = TQ_CodeDetect(text, strlen(text));             // ENCODE_GBK
 *     size_t n = TQ_ToUtf8(text, strlen(text), utf8, capacity, code);
 *     fwrite(utf8, 1, n, stdout);
 *     TQ_Exit();
 */
#ifndef CODETRANS_H
#define CODETRANS_H

#include <stddef.h>
#include <stdint.h>

#define CODETRANS_VERSION_MAJOR 1
#define CODETRANS_VERSION_MINOR 0
#define CODETRANS_VERSION_PATCH 0

#if defined(__GNUC__)
#define CODETRANS_API __attribute__((visibility("default")))
#else
#define CODETRANS_API
#endif

/* Encoding codes. */
enum {
    ENCODE_UNKNOWN = 0, /* argument: detect it; result: not decided */
    ENCODE_UTF8 = 1,
    ENCODE_GBK = 2, /* also the answer for pure ASCII and for empty input */
    ENCODE_BIG5 = 3,
    ENCODE_UNICODE = 8 /* UTF-16LE; four-byte little-endian units where a function says so */
};

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Loads sInitDir/Data/CodeTrans.model. A null or empty sInitDir is the current directory; a relative one is
 * resolved at this call. sReserved is not used.
 * An sInitDir that does not exist as given is taken for UTF-8 and tried in GBK. That sets the process's locale to
 * zh_CN.gbk, and prints the message on standard output where this locale is missing, whether or not the model is
 * then found.
 * Returns 1, or -2 when the model cannot be loaded: TQ_GetLastErrorMsg then names the file, and a line is
 * appended to the day's .err file (20240517.err, say) in the directory that was current at the process's first
 * failure.
 * A second call without TQ_Exit replaces the tables and leaves the earlier ones allocated; if its file cannot
 * be opened at all, the earlier ones stay in use.
 * Without a model, TQ_CodeDetect answers ENCODE_GBK for ASCII and ENCODE_UNKNOWN for everything else, two-byte
 * characters decode to U+0000 in TQ_ToUnicode, and all other routes work.
 * A damaged model gives other answers but no crash. Once loaded, it may be replaced on disk.
 * Threads: must not overlap any other call.
 */
CODETRANS_API int TQ_Init(const char* sInitDir, const char* sReserved);

/* Frees the model. Harmless when none is loaded. Threads: must not overlap any other call. */
CODETRANS_API void TQ_Exit(void);

/*
 * The text of the last failure of TQ_Init or a file function, zero-terminated, in the local encoding; empty
 * when there was none. Success does not clear it. Each call returns a new copy, which the library owns and
 * keeps for the life of the process (so do not call it in a loop): never free it. An empty constant text when
 * memory is short.
 * Threads: any number; the text is the process's, so it may be that of another thread's failure.
 */
CODETRANS_API const char* TQ_GetLastErrorMsg(void);

/*
 * Names the encoding of the nSrcLen bytes at pSrc, which need no terminator; nothing beyond them is read.
 * Returns ENCODE_GBK, ENCODE_BIG5, ENCODE_UTF8, ENCODE_UNICODE, or ENCODE_UNKNOWN when nothing fits.
 * Allocates nothing and may stop before the end of the text when the answer is beyond doubt.
 * Threads: any number.
 */
CODETRANS_API int TQ_CodeDetect(const char* pSrc, size_t nSrcLen);

/*
 * Converts to Unicode.
 *
 *   nSrcCode  | must be readable at pSrc | must be writable at pDst | output                   | result
 *   ----------|--------------------------|--------------------------|--------------------------|----------------------
 *   GBK, BIG5 | nSrcLen                  | nDstSize; 2*nSrcLen      | UTF-16LE, no terminator  | bytes written,
 *             |                          | when nDstSize is 0       |                          | at most 2*nSrcLen
 *   UTF8      | strlen(pSrc) + 1         | 4*strlen(pSrc) + 2       | four-byte units, then    | bytes written before
 *             |                          |                          | two zero bytes           | those two
 *   UNICODE   | n, the larger of nSrcLen | n + 1                    | the n bytes, then one    | n
 *             | and nDstSize             |                          | zero byte                |
 *   any other | nothing                  | nothing                  | none                     | 0
 *
 * GBK, BIG5: nDstSize is honoured; output that does not fit is dropped. A lead byte at the end becomes U+FEFF,
 * a pair that the encoding does not define becomes what the model holds (U+FFFD).
 * UTF8: nSrcLen and nDstSize are ignored. Bytes that begin no sequence of up to three bytes are skipped, four-byte
 * sequences vanish; continuation bytes are not checked.
 * UNICODE: pass nDstSize = nSrcLen to copy the source and no more.
 * Threads: any number. GBK and BIG5 share a counter of lone lead bytes, which no function here shows.
 */
CODETRANS_API size_t TQ_ToUnicode(const char* pSrc, size_t nSrcLen, char* pDst, size_t nDstSize, int nSrcCode);

/*
 * Converts to UTF-8. Below, cap(x) is x, but at most nDstSize unless that is 0.
 *
 *   nSrcCode  | must be readable at pSrc | must be writable at pDst | output                   | result
 *   ----------|--------------------------|--------------------------|--------------------------|----------------------
 *   UTF8      | n = cap(nSrcLen)         | n + 1                    | the n bytes, then one    | n
 *             |                          |                          | zero byte                |
 *   GBK, BIG5 | strlen(pSrc) + 1         | cap(3*strlen(pSrc)) + 1  | UTF-8, then one zero     | bytes written before
 *             |                          |                          | byte                     | the zero byte
 *   UNICODE   | 4*n, n = cap(nSrcLen)    | 3*n + 1                  | UTF-8, then one zero     | bytes produced,
 *             |                          |                          | byte                     | at most 3*n
 *   any other | nothing                  | nothing                  | none                     | 0
 *
 * The terminator comes on top of nDstSize: with a capacity, nDstSize + 1 bytes are enough for UTF8, GBK and BIG5.
 * GBK: nSrcLen is ignored; the text ends at the first invalid sequence.
 * BIG5: is read as if it were GBK, so the result is not the text. To get there, convert to UTF-16LE with
 * TQ_ToUnicode, widen the code units to four bytes and come back with ENCODE_UNICODE.
 * UNICODE: nSrcLen counts four-byte units, not bytes, and nDstSize limits the units read, not the bytes written. A
 * zero unit ends the text that is copied but not the count; units above U+FFFF are dropped.
 * Threads: GBK and BIG5 share the locale (see above); the others in any number.
 */
CODETRANS_API size_t TQ_ToUtf8(const char* pSrc, size_t nSrcLen, char* pDst, size_t nDstSize, int nSrcCode);

/*
 * Converts to GBK. nDstSize is never read.
 *
 *   nSrcCode  | must be readable at pSrc | must be writable at pDst | output                   | result
 *   ----------|--------------------------|--------------------------|--------------------------|----------------------
 *   UTF8      | strlen(pSrc) + 1         | 2*strlen(pSrc) + 1       | GBK, then one zero byte  | bytes written before
 *             |                          |                          |                          | the zero byte
 *   GBK, BIG5 | nSrcLen                  | nSrcLen + 1              | the bytes, then one zero | nSrcLen
 *             |                          |                          | byte                     |
 *   UNICODE   | 2*nSrcLen                | 2*nSrcLen + 2            | GBK, then two zero bytes | nSrcLen
 *   any other | nothing                  | nothing                  | none                     | 0
 *
 * UTF8: nSrcLen is ignored, a leading byte-order mark is skipped; the text ends at the first character that GBK
 * lacks.
 * BIG5: is copied unchanged.
 * UNICODE: nSrcLen counts UTF-16LE code units, not bytes, and so does the result, whatever was written. What GBK
 * lacks becomes the bytes A1 A1, the euro sign the bytes 00 80.
 * Threads: UTF8 shares the locale (see above); the others in any number.
 */
CODETRANS_API size_t TQ_ToGBK(const char* pSrc, size_t nSrcLen, char* pDst, size_t nDstSize, int nSrcCode);

/*
 * Convert a whole file: read sSrcFile, detect its encoding, convert it, write sDstFile (created or truncated; it
 * may be the source). Names are UTF-8, or in the local encoding: a name that does not exist as given is tried in
 * GBK, which sets the locale and may print its message as in TQ_Init. The conversions are those of the buffer
 * functions, quirks included: a file in UTF-8 becomes four-byte units in TQ_ToUnicodeFile, and Big5 text is readable
 * after TQ_ToUnicodeFile alone. Zero bytes are removed from the source before anything else, so UTF-16LE files are not
 * converted faithfully.
 * TQ_ToUnicodeFile writes the byte-order mark FF FE first, TQ_ToUtf8File EF BB BF, TQ_ToGBKFile none.
 *
 * Returns the number of bytes written after the byte-order mark (0 when the encoding was not decided: the file
 * then holds the mark alone), or -1 when the source is missing, unreadable or empty (sDstFile is not touched),
 * sDstFile cannot be opened (nothing is converted then), or memory is short (an sDstFile that was there stays as it
 * was; one that was not may be left empty). TQ_GetLastErrorMsg then tells which, and a line is appended to the day's
 * .err file as by TQ_Init; only a source of nothing but zero bytes, a directory, and a source that cannot be read from
 * its beginning give -1 without a word.
 * Errors while sDstFile is written, a full disk say, are not reported: the result is what it would be. A source that
 * is cut short or cannot be read on meanwhile is converted as far as it came.
 * Memory: about six times the file's size of address space at once (eleven times when it is detected as UTF-16LE), of
 * which what the text needs is touched: 1.7 to 2.5 times the file where 100 MB were measured.
 * Threads: all share the locale (see above).
 */
CODETRANS_API int64_t TQ_ToGBKFile(const char* sSrcFile, const char* sDstFile);
CODETRANS_API int64_t TQ_ToUnicodeFile(const char* sSrcFile, const char* sDstFile);
CODETRANS_API int64_t TQ_ToUtf8File(const char* sSrcFile, const char* sDstFile);

#ifdef __cplusplus
} /* extern "C" */

/*
 * The three above with the target as an argument: ENCODE_UTF8, ENCODE_GBK or ENCODE_UNICODE. Any other value
 * leaves an empty sDstFile and returns 0. Exported with C++ linkage: C programs use the three.
 * Threads: shares the locale (see above).
 */
CODETRANS_API int64_t TQ_ToFile(const char* sSrcFile, const char* sDstFile, int nTargetCode);
#endif

#endif /* CODETRANS_H */
