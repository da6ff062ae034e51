// The vector forms of the engine's plain functions, for x86-64 processors with AVX2 or more, and two of them
// for AArch64.
//
// A plain function stays the definition of what it does. It asks its fast form first how far that gets and
// goes on from there, so a fast form may stop anywhere between two characters, and one that does nothing is
// right on every machine. The results, the bytes read and the bytes written are the same either way.
#ifndef CODETRANS_FAST_PATHS_H
#define CODETRANS_FAST_PATHS_H

#include <cstdint>

// How far a fast form got: source units (bytes or wide characters) used up, bytes of output written.
struct Progress {
    unsigned long read = 0;
    unsigned long written = 0;

    Progress& operator+=(const Progress& more)
    {
        read += more.read;
        written += more.written;
        return *this;
    }
};

// The forms that there are, for each kind of processor better ones later. AVX512 is AVX-512 with VBMI2.
enum class Forms { PLAIN, AVX2, AVX512, NEON };

Forms BestForms();   // that this processor can run
Forms FormsInUse();  // the best, unless a test has chosen others

// For tests, which compare forms. Not above BestForms; not while another thread converts or detects.
void UseForms(Forms forms);

inline bool FastPathsOn()
{
    return FormsInUse() != Forms::PLAIN;
}

// GBK or Big5 pairs by a mapping table to at most `room` bytes of UTF-16LE. Stops at a lone lead byte.
Progress FastPairsToUtf16(const unsigned short* table, const char* src, unsigned long srcLen, char* dst,
                          unsigned long room);

// UTF-8, continuation bytes unchecked, to wide characters. May stop three bytes before the end.
Progress FastUtf8ToWide(const unsigned char* src, unsigned long srcLen, char* dst);

// Wide characters to UTF-8. Stops at a zero, and up to FAST_WIDES characters before one that UTF-8 has no
// place for.
Progress FastWideToUtf8(const wchar_t* src, unsigned long count, unsigned char* dst);
constexpr unsigned long FAST_WIDES = 16;

// UTF-16LE to GBK, the whole source, without the zeros that utoGbk adds; and its plain form.
Progress FastUtf16ToGbk(const char* src, unsigned long count, char* dst);
Progress PlainUtf16ToGbk(const char* src, unsigned long count, char* dst);

// The locale's GBK as UTF-8 sequences, by code less 0x8000. Lowest byte first, an entry is the first byte, 0,
// the second byte, and the third or 0 if there are two; it is 0 where GBK has no such code. So each byte of
// the code has half of the entry to itself, in which 0 is no byte.
struct LocaleGbk {
    uint32_t sequences[0x8000];
};

// GBK to at most `room` bytes of UTF-8, a character cut where room ends, and UTF-8 to GBK, of text without
// zero bytes. Both stop before a character that is not ASCII in one byte and that `gbk` or CodeTable does not
// know in two.
Progress FastGbkToUtf8(const LocaleGbk& gbk, const char* src, unsigned long srcLen, char* dst,
                       unsigned long room);
Progress FastUtf8ToGbk(const char* src, unsigned long srcLen, char* dst);

#endif  // CODETRANS_FAST_PATHS_H
