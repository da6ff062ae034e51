/* clang-format off */
/*
 * CodeTrans: detects whether text is in GBK, Big5, UTF-8 or UTF-16LE, and converts between these encodings.
 *
 * This header is the complete reference of the library. It compiles as C99 and C++11 and later versions.
 *
 * What the library does not do
 *   - It reports no conversion errors. A character that cannot be converted is skipped, replaced, or ends the text, as
 *     stated at each function. Characters beyond U+FFFF are lost in every conversion.
 *   - It does not convert between GBK and UTF-8 by itself. It uses the C library with the locale "zh_CN.gbk", which must
 *     exist on the machine. These functions set that locale for the whole process and do not reset it. If it is missing,
 *     they print a message on standard output and convert in the current locale.
 *   - It cannot write Big5, and it cannot convert Big5 to UTF-8 directly; see TQ_ToUtf8 and TQ_ToGBK.
 *
 * Buffers
 *   Lengths and capacities are in bytes unless stated otherwise. The caller owns every buffer that it passes. No buffer
 *   may be null, and source and destination must not overlap. Some conversions ignore the capacity, and some read or
 *   write beyond the given lengths: the table at each function says how many bytes must be readable at pSrc and
 *   writable at pDst. In these tables, strlen(pSrc) is the length of the source up to its first zero byte, which must
 *   exist. Where a capacity is respected, 0 means "no limit", not "no room".
 *   With ENCODE_UNKNOWN as the source encoding, the encoding is detected first, so the buffers must be large enough for
 *   all source encodings. It is simpler to call TQ_CodeDetect and to pass its result.
 *
 * Threads
 *   TQ_Init and TQ_Exit must not overlap any other call. Between them, any number of threads may call all other
 *   functions, except the locale conversions: TQ_ToUtf8 from GBK and Big5, TQ_ToGBK from UTF-8, and the file functions.
 *   These set the locale of the process without a lock. With the GNU C library, it is sufficient that the first such
 *   call returns before other threads make theirs, and that nobody sets another locale. With other C libraries, only
 *   one such call may run at a time.
 *
 * Out of memory
 *   No exception leaves the library. If memory runs out, buffer conversions return 0, TQ_Init returns -2 and the file
 *   functions return -1. Later calls work. One exception: if the GNU C library cannot load a locale or a converter at
 *   the first attempt because memory or file descriptors have run out, it does not try again in this process. A program
 *   that must survive this should make its first locale conversion early.
 *
 * Example: convert GBK text in memory to UTF-8 (without error handling; needs the locale "zh_CN.gbk")
 *
 *     const char* text = "\xD6\xD0\xCE\xC4";                    // zero-terminated, as TQ_ToUtf8 needs from GBK
 *     size_t capacity = 3 * strlen(text);                       // the most that the result can take ...
 *     char* utf8 = malloc(capacity + 1);                        // ... plus its terminator
 *     TQ_Init("/usr/share/CodeTrans", NULL);                    // contains Data/CodeTrans.model
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
    ENCODE_UNKNOWN = 0, /* as an argument: detect it; as a result: undecided */
    ENCODE_UTF8 = 1,
    ENCODE_GBK = 2, /* also the result for plain ASCII and for empty input */
    ENCODE_BIG5 = 3,
    ENCODE_UNICODE = 8 /* UTF-16LE; four-byte little-endian units where stated */
};

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Loads the model sInitDir/Data/CodeTrans.model. A null or empty sInitDir is the current directory; a relative one is
 * resolved at this call. sReserved is not used.
 * If no directory sInitDir exists, its name is converted from UTF-8 to GBK and tried again. This sets the locale of the
 * process to zh_CN.gbk, and prints a message on standard output if that locale is missing, even if the model is not
 * found afterwards.
 * Returns 1, or -2 if the model cannot be loaded. Then TQ_GetLastErrorMsg names the file, and a line is appended to a
 * log file that is named after the date, such as 20240517.err, in the directory that was current at the first failure
 * in the process.
 * A second call without TQ_Exit replaces the model without freeing the previous one. If its file cannot be opened, the
 * previous model stays in use.
 * Without a model, TQ_CodeDetect returns ENCODE_GBK for ASCII and ENCODE_UNKNOWN for everything else, TQ_ToUnicode
 * converts two-byte characters to U+0000, and all other conversions work.
 * A damaged model leads to wrong results, but not to a crash. The file may be replaced once it is loaded.
 * Threads: must not overlap any other call.
 */
CODETRANS_API int TQ_Init(const char* sInitDir, const char* sReserved);

/* Frees the model. Does nothing if none is loaded. Threads: must not overlap any other call. */
CODETRANS_API void TQ_Exit(void);

/*
 * Returns the message of the last failure of TQ_Init or a file function, zero-terminated and in the local encoding, or
 * an empty string if there was no failure. A later success does not clear it. Each call returns a new copy, which the
 * library keeps until the process ends: do not free it, and do not call this function in a loop. If memory runs out,
 * the result is an empty string.
 * Threads: any number. The message belongs to the process, so it may come from a failure in another thread.
 */
CODETRANS_API const char* TQ_GetLastErrorMsg(void);

/*
 * Detects the encoding of the nSrcLen bytes at pSrc. They need no terminator, and nothing beyond them is read.
 * Returns ENCODE_GBK, ENCODE_BIG5, ENCODE_UTF8 or ENCODE_UNICODE, or ENCODE_UNKNOWN if none of them is likely.
 * Allocates no memory. May stop before the end of the text, once a passage has decided the result.
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
 * GBK, BIG5: nDstSize is respected; output that does not fit is dropped. A lead byte at the end becomes U+FEFF. A pair
 * that the encoding does not define becomes the value in the model, which is U+FFFD.
 * UTF8: nSrcLen and nDstSize are ignored. Only sequences of one to three bytes are converted: four-byte sequences are
 * dropped, and other bytes that cannot begin a sequence are skipped. Continuation bytes are not checked.
 * UNICODE: pass nDstSize = nSrcLen to copy exactly the source.
 * Threads: any number.
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
 * The terminator is not part of nDstSize: if nDstSize is not 0, then nDstSize + 1 bytes are enough for UTF8, GBK and
 * BIG5.
 * GBK: nSrcLen is ignored. The text ends at the first invalid sequence.
 * BIG5: is read as if it were GBK, so the result is wrong. To convert Big5 to UTF-8, convert it to UTF-16LE with
 * TQ_ToUnicode, extend each code unit to four bytes, and call TQ_ToUtf8 with ENCODE_UNICODE.
 * UNICODE: nSrcLen counts four-byte units, not bytes, and nDstSize limits the number of units that are read, not the
 * bytes written. A zero unit ends the output, but the result also counts what follows it. Units above U+FFFF are
 * dropped.
 * Threads: GBK and BIG5 are locale conversions (see above). The others: any number.
 */
CODETRANS_API size_t TQ_ToUtf8(const char* pSrc, size_t nSrcLen, char* pDst, size_t nDstSize, int nSrcCode);

/*
 * Converts to GBK. nDstSize is ignored.
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
 * UTF8: nSrcLen is ignored. A byte-order mark at the start is skipped. The text ends at the first character that GBK
 * does not have.
 * BIG5: is copied unchanged.
 * UNICODE: nSrcLen counts UTF-16LE code units, not bytes. The result is the same count, not the number of bytes written.
 * A character that GBK does not have becomes the bytes A1 A1; the euro sign becomes the bytes 00 80.
 * Threads: UTF8 is a locale conversion (see above). The others: any number.
 */
CODETRANS_API size_t TQ_ToGBK(const char* pSrc, size_t nSrcLen, char* pDst, size_t nDstSize, int nSrcCode);

/*
 * These functions convert a file: they read sSrcFile, detect its encoding, convert it and write sDstFile. sDstFile is
 * created or truncated, and may be the source. File names are in UTF-8 or in the local encoding: if no file has the
 * given name, it is tried in GBK, which sets the locale and may print a message, as in TQ_Init. The files are converted
 * like buffers, with the same limitations: TQ_ToUnicodeFile converts UTF-8 to four-byte units, and only TQ_ToUnicodeFile
 * gives a correct result for Big5. Zero bytes are removed from the source before anything else, so files in UTF-16LE are
 * not converted correctly.
 * TQ_ToUnicodeFile writes the byte-order mark FF FE first, TQ_ToUtf8File writes EF BB BF, TQ_ToGBKFile writes none.
 *
 * They return the number of bytes written after the byte-order mark. It is 0 if the encoding is undecided; sDstFile
 * then contains only the mark. They return -1 in these cases:
 *   - The source is missing, unreadable or empty. sDstFile is not changed.
 *   - sDstFile cannot be opened. Nothing is converted.
 *   - Memory runs out. An existing sDstFile is not changed; a new one may be left empty.
 * TQ_GetLastErrorMsg then says which, and a line is appended to the log file as by TQ_Init. There is no message if the
 * source consists of zero bytes, is a directory, or cannot be read from its beginning.
 * Errors in writing sDstFile, such as a full disk, are not reported, and the result is the same as without them. If the
 * source is truncated or becomes unreadable while it is read, the part that was read is converted.
 * Memory: address space of about six times the size of the file, or eleven times if it is detected as UTF-16LE. Only
 * the part that the text needs is used: 1.7 to 2.5 times the size, measured with files of 100 MB.
 * Threads: these functions are locale conversions (see above).
 */
CODETRANS_API int64_t TQ_ToGBKFile(const char* sSrcFile, const char* sDstFile);
CODETRANS_API int64_t TQ_ToUnicodeFile(const char* sSrcFile, const char* sDstFile);
CODETRANS_API int64_t TQ_ToUtf8File(const char* sSrcFile, const char* sDstFile);

#ifdef __cplusplus
} /* extern "C" */

/*
 * The three functions above, with the target encoding as an argument: ENCODE_UTF8, ENCODE_GBK or ENCODE_UNICODE. Any
 * other value leaves sDstFile empty and returns 0. This function has C++ linkage: C programs use the other three.
 * Threads: a locale conversion (see above).
 */
CODETRANS_API int64_t TQ_ToFile(const char* sSrcFile, const char* sDstFile, int nTargetCode);
#endif

#endif /* CODETRANS_H */
