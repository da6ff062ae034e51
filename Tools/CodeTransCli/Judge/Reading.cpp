#include "Reading.h"

#include <Margin.h>

#include <algorithm>
#include <iterator>

#include "Identity.h"
#include "SevenBit.h"
#include "UnicodeCodec.h"

namespace
{
// Bytes beyond ASCII: six characters of two bytes. Of GBK's 3,755 common hanzi, 682 are two bytes that UTF-8
// has, too; six in a row are by far more likely to be UTF-8.
constexpr size_t SHORT = 12;

// Bits. Signs stand beside the letters of any alphabet.
enum Alphabet : unsigned {
    SIGNS = 0,
    OTHER = 1,
    LATIN = 2,
    GREEK = 4,
    CYRILLIC = 8,
    ARMENIAN = 16,
    HEBREW = 32,
    ARABIC = 64
};

struct Letters {
    unsigned first, last;
    Alphabet alphabet;
};

// Letters in daily use, of what UTF-8 writes in two bytes. Left out are those that hardly anyone writes and
// whose bytes are hanzi in GBK that everyone does: U+013F is the first of the two that mean "folder".
constexpr Letters LETTERS[] = {
    {0x00A0, 0x00BF, SIGNS},    {0x00C0, 0x0131, LATIN},    {0x0134, 0x0137, LATIN},
    {0x0139, 0x013E, LATIN},    {0x0141, 0x0148, LATIN},    {0x014A, 0x017E, LATIN},
    {0x018F, 0x01B0, LATIN},    {0x01CD, 0x01E0, LATIN},    {0x0218, 0x021B, LATIN},
    {0x01FA, 0x01FD, LATIN},    {0x0250, 0x0263, LATIN},    {0x0272, 0x0272, LATIN},
    {0x0280, 0x02A0, LATIN},    {0x02BB, 0x02BF, SIGNS},    {0x0300, 0x0345, LATIN},
    {0x0386, 0x03CE, GREEK},    {0x0400, 0x045F, CYRILLIC}, {0x0490, 0x04A3, CYRILLIC},
    {0x04AE, 0x04B7, CYRILLIC}, {0x04D8, 0x04E9, CYRILLIC}, {0x04EE, 0x04EF, CYRILLIC},
    {0x0531, 0x0587, ARMENIAN}, {0x05B0, 0x05F4, HEBREW},   {0x0600, 0x07FF, ARABIC},
};

unsigned Byte(std::string_view text, size_t i)
{
    return static_cast<unsigned char>(text[i]);
}

unsigned AlphabetOf(unsigned codePoint)
{
    const auto* const letters =
        std::find_if(std::begin(LETTERS), std::end(LETTERS),
                     [&](const Letters& some) { return codePoint >= some.first && codePoint <= some.last; });
    return letters == std::end(LETTERS) ? OTHER : letters->alphabet;
}

// Whether the characters beyond ASCII, of two bytes each, go together in UTF-8.
bool IsInOneAlphabet(std::string_view text)
{
    unsigned alphabets = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const unsigned lead = Byte(text, i);
        if (lead >= 0x80) alphabets |= AlphabetOf((lead & 0x1F) << 6 | (Byte(text, ++i) & 0x3F));
    }
    const bool several = (alphabets & (alphabets - 1)) != 0;
    return !several && (alphabets & OTHER) == 0;
}

bool IsAsciiLetter(std::string_view text, size_t i)
{
    return i < text.size() && ((Byte(text, i) | 0x20) >= 'a') && ((Byte(text, i) | 0x20) <= 'z');
}

// A single character of two bytes beside a letter, as in "café". A hanzi rarely stands so.
bool HasAccentInWord(std::string_view text)
{
    size_t first = 0;  // of the characters beyond ASCII that stand together
    for (size_t i = 0; i <= text.size(); ++i) {
        if (i < text.size() && Byte(text, i) >= 0x80) continue;
        const bool single = i - first == 2;
        if (single && (IsAsciiLetter(text, i) || (first > 0 && IsAsciiLetter(text, first - 1)))) return true;
        first = i + 1;
    }
    return false;
}

// What no other reading comes up to.
bool IsUtf8AtSight(std::string_view text)
{
    const bool longer =
        std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0xE0; });
    return longer || IsInOneAlphabet(text) || HasAccentInWord(text);
}

// The common hanzi lie at B0A1 to D7FE in GBK, at A440 to C67E in Big5; UTF-8 leaves C2A1 and above.
bool IsPlausibleInPairs(std::string_view text, int encoding)
{
    const unsigned lastLead = encoding == ENCODE_BIG5 ? 0xC6 : 0xD7;
    for (size_t i = 0; i < text.size(); ++i) {
        const unsigned lead = Byte(text, i);
        if (lead >= 0x80 && (lead > lastLead || Byte(text, ++i) < 0xA1)) return false;
    }
    return true;
}

bool IsPlausibleInUtf16(std::string_view text)
{
    if (text.size() % 2 != 0) return false;
    for (size_t i = 0; i < text.size(); i += 2) {
        const unsigned high = Byte(text, i + 1);
        const bool hanzi = (high >= 0x4E && high <= 0x9F) || high == 0x30 || high == 0xFF;
        const bool ascii = high == 0 && Byte(text, i) != 0;
        if (!hanzi && !ascii) return false;
    }
    return AnswerFor(text.data(), text.size()).code == ENCODE_UNICODE;
}

bool IsShort(std::string_view text)
{
    const auto beyond =
        std::count_if(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
    return static_cast<size_t>(beyond) <= SHORT;
}

// In one of the encodings that the library has a code for.
bool IsPlausibleFor(std::string_view text, int code)
{
    if (code == ENCODE_UTF8) return true;
    if (code == ENCODE_UNICODE && text.size() % 2 == 0 && HasManyZeros(text)) return true;
    if (AsciiLength(text) == text.size() ? code != ENCODE_UNICODE : IsUtf8AtSight(text)) return false;
    // Where the detector does not know, GBK is as likely as anything.
    return code == ENCODE_UNICODE ? IsPlausibleInUtf16(text) : IsPlausibleInPairs(text, code);
}

std::string Turned(std::string_view text)
{
    std::string turned(text);
    for (size_t i = 0; i + 1 < turned.size(); i += 2) std::swap(turned[i], turned[i + 1]);
    return turned;
}
}  // namespace

bool HasManyZeros(std::string_view text)
{
    return static_cast<size_t>(std::count(text.begin(), text.end(), '\0')) > text.size() / 8;
}

bool IsPlausible(std::string_view text, const Encoding& encoding)
{
    if (encoding.code != ENCODE_UNKNOWN) return IsPlausibleFor(text, encoding.code);
    if (&encoding == &GB18030) return IsPlausibleFor(text, ENCODE_GBK);
    if (&encoding == &UTF16BE) return IsPlausibleFor(Turned(text), ENCODE_UNICODE);
    if (encoding.scheme == Scheme::UTF32) return FindUtf32(text) == &encoding;
    if (AsciiLength(text) == text.size()) return !encoding.holdsAscii || FindSevenBit(text) == &encoding;
    return IsShort(text) && !IsUtf8AtSight(text) && CanBeRead(text, encoding);
}

int Settled(std::string_view text, bool isWhole, int answer)
{
    if (answer == ENCODE_UTF8) return answer;
    const std::string_view rest = text.substr(Utf8Length(text));
    const bool isUtf8 = rest.empty() || (!isWhole && FirstOfUtf8(rest).fault == Fault::CUT);
    if (!isUtf8) return answer;
    const bool open = IsShort(text) || (answer == ENCODE_UNICODE && HasManyZeros(text));
    return open && IsPlausibleFor(text, answer) ? answer : ENCODE_UTF8;
}
