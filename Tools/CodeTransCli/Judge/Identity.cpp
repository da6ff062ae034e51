#include "Identity.h"

#include <Margin.h>

#include <algorithm>

#include "Codec.h"
#include "Reading.h"
#include "SevenBit.h"
#include "UnicodeCodec.h"

namespace
{
// Enough of a file to see that it is no text, or that it is UTF-16BE.
constexpr size_t SAMPLE = 1 << 16;

// Text has line ends, tabs, page breaks and escape sequences, and hardly another control character.
bool IsOddControl(char32_t unit)
{
    return unit < 0x20 && !(unit >= 0x08 && unit <= 0x0D) && unit != 0x1A && unit != 0x1B;
}

// More than one in fifty, and more than a few.
bool TooMany(size_t odd, size_t total)
{
    return odd > 4 + total / 50;
}

bool LooksBinary(std::string_view bytes, const Encoding* encoding)
{
    // Its parts are found by their offsets, although much of it may be text.
    if (bytes.substr(0, 5) == "%PDF-") return true;
    bytes = bytes.substr(0, SAMPLE);
    const auto byte = [&](size_t i) { return static_cast<unsigned>(static_cast<unsigned char>(bytes[i])); };
    const size_t step = encoding == &UTF16LE ? 2 : 1;
    size_t odd = 0;
    for (size_t i = 0; i + step <= bytes.size(); i += step) {
        const unsigned unit = step == 2 ? byte(i) | byte(i + 1) << 8 : byte(i);
        odd += IsOddControl(unit) || unit >= 0xFFFE;
    }
    return TooMany(odd, bytes.size() / step);
}

Answer Detect(std::string_view text)
{
    return AnswerFor(text.data(), text.size());
}

// ASCII, hanzi, and the punctuation and lines that go with them, in percent of the units.
size_t UsualUnits(std::string_view text, bool bigEndian)
{
    size_t usual = 0;
    for (size_t i = 0; i + 1 < text.size(); i += 2) {
        const auto first = static_cast<unsigned char>(text[i]),
                   second = static_cast<unsigned char>(text[i + 1]);
        const int unit = bigEndian ? first << 8 | second : second << 8 | first;
        usual += (unit >= 0x20 && unit < 0x7F) || (unit >= 0x09 && unit <= 0x0D) ||
                 (unit >= 0x3000 && unit < 0x3100) || (unit >= 0x4E00 && unit < 0xA000) ||
                 (unit >= 0xFF00 && unit < 0xFFF0) || (unit >= 0x2010 && unit < 0x2040) ||
                 (unit >= 0x2500 && unit < 0x2600);
    }
    return 100 * usual / std::max<size_t>(text.size() / 2, 1);
}

// The detector knows UTF-16LE. The other byte order is what it knows when its bytes are turned round, and
// what has by far more of the usual characters so.
bool IsUtf16Be(std::string_view head, const Answer& answer)
{
    constexpr size_t MOST = 80;  // percent
    if (head.size() < 4 || head.size() % 2 != 0) return false;
    if (answer.code != ENCODE_UNICODE && answer.margin >= ENOUGH_MARGIN) return false;
    const std::string_view sample = head.substr(0, SAMPLE);
    const size_t usual = UsualUnits(sample, true);
    if (usual < MOST || 5 * usual < 6 * UsualUnits(sample, false)) return false;
    std::string turned(sample);
    for (size_t i = 0; i + 1 < turned.size(); i += 2) std::swap(turned[i], turned[i + 1]);
    const Answer other = Detect(turned);
    return other.code == ENCODE_UNICODE && (other.margin >= ENOUGH_MARGIN || HasManyZeros(head)) &&
           !LooksBinary(turned, &UTF16LE) && CanBeRead(head, UTF16BE);
}

// Pairs of GBK or Big5 that stand alone before a small letter, as the accented letters of a western language
// do: "Gr\xF6\xDFe", of which the second byte of a pair may be a letter itself.
bool LooksWestern(std::string_view text)
{
    const auto byte = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const auto isSmall = [&](size_t i) { return byte(i) >= 'a' && byte(i) <= 'z'; };
    const auto isLetter = [&](size_t i) { return isSmall(i) || (byte(i) >= 'A' && byte(i) <= 'Z'); };
    size_t pairs = 0, alone = 0;
    for (size_t i = 0; i < text.size();) {
        if (byte(i) < 0x80) {
            ++i;
            continue;
        }
        const size_t begin = i;
        for (; byte(i) >= 0x80; i += 2) ++pairs;
        const bool touches =
            isSmall(i) || isSmall(i - 1) || (begin > 0 && isLetter(begin - 1) && !isLetter(i));
        const bool inWord = begin == 0 || isLetter(begin - 1) || byte(begin - 1) == ' ';
        alone += i - begin == 2 && touches && inWord;
    }
    return 2 * alone > pairs;
}

// GB18030 has a character for every pair; what GBK lacks is mostly of the private area.
bool IsGb18030(std::string_view text, bool isWhole)
{
    if (CanBeRead(isWhole ? text : text.substr(0, MakeDecoder(GBK)->WholeLength(text)), GBK)) return false;
    const auto decoder = MakeDecoder(GB18030);
    std::u16string units;
    const size_t used = decoder->Read(text, units);
    const auto isPrivate = [](char16_t unit) { return unit >= 0xE000 && unit <= 0xF8FF; };
    const bool isRead = used == text.size() || (!isWhole && used + 4 > text.size());
    return isRead && std::none_of(units.begin(), units.end(), isPrivate);
}

void Certain(Identity& identity, const Encoding* encoding)
{
    identity.encoding = encoding;
    identity.margin = MOST_MARGIN;
}

// ASCII, of which the detector says `answer`.
void IdentifyAscii(std::string_view head, const Answer& answer, Identity& identity)
{
    if (answer.code == ENCODE_UNICODE && (HasManyZeros(head) || answer.margin >= ENOUGH_MARGIN)) {
        identity.encoding = &UTF16LE;
        identity.margin = answer.margin;
        if (!HasManyZeros(head))
            identity.doubt = "looks like UTF-16LE but is also valid ASCII; --from ENC decides";
        return;
    }
    Certain(identity, FindSevenBit(head));
    if (identity.encoding == &UTF7 || (identity.encoding == &HZ && !HasCommonHz(head)))
        identity.doubt =
            "looks like " + identity.encoding->name + " but is also valid ASCII; --from ENC decides";
    identity.ascii = identity.encoding == nullptr;
    if (identity.ascii) identity.encoding = &ASCII;
}

void IdentifyUnmarked(std::string_view head, bool isWhole, Identity& identity)
{
    if (isWhole)
        if (const Encoding* const found = FindUtf32(head)) return Certain(identity, found);
    const Answer answer = Detect(head);
    if (IsUtf16Be(head, answer)) return Certain(identity, &UTF16BE);
    if (AsciiLength(head) == head.size()) return IdentifyAscii(head, answer, identity);
    identity.encoding = EncodingOf(Settled(head, isWhole, answer.code));
    identity.margin = answer.margin;
    if (identity.encoding == &UTF8 && IsFlawlessUtf8(head)) identity.margin = MOST_MARGIN;
    const bool inPairs = identity.encoding == &GBK || identity.encoding == &BIG5;
    if (inPairs && identity.margin < MOST_MARGIN && LooksWestern(head.substr(0, SAMPLE))) identity.margin = 0;
    if (identity.encoding == &GBK && IsGb18030(head, isWhole)) identity.encoding = &GB18030;
}
}  // namespace

bool CanBeRead(std::string_view text, const Encoding& encoding)
{
    const auto decoder = MakeDecoder(encoding);
    std::u16string units;
    while (!text.empty()) {
        units.clear();
        const std::string_view piece = text.substr(0, SAMPLE);
        const size_t used = decoder->Read(piece, units);
        text.remove_prefix(used);
        const bool cut = used < piece.size() && !text.empty() && piece.size() == SAMPLE &&
                         decoder->First(text.substr(0, piece.size() - used)).fault == Fault::CUT;
        if (used < piece.size() && !cut) return false;
    }
    return true;
}

Identity Identify(std::string_view head, bool isWhole)
{
    Identity identity;
    if (const Encoding* const marked = MarkedEncoding(head)) {
        Certain(identity, marked);
        identity.mark = marked->mark.size();
        return identity;
    }
    IdentifyUnmarked(head, isWhole, identity);
    const bool wide =
        identity.encoding != nullptr && !identity.encoding->holdsAscii && identity.encoding != &UTF16LE;
    identity.binary = !wide && LooksBinary(head, identity.encoding);
    if (identity.binary)
        identity = {nullptr, 0, 0, false, true, {}};
    else if (identity.encoding == nullptr)
        identity.doubt = "the encoding could not be detected; give it with --from ENC";
    return identity;
}
