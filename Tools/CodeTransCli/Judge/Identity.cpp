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
    WalkPosition position;
    WalkOn(text.data(), text.size(), position);
    return AnswerOf(position.scores);
}

// The detector knows UTF-16LE: the other byte order is what it knows when its bytes are turned round.
bool IsUtf16Be(std::string_view head, const Answer& answer)
{
    if (head.size() < 4 || head.size() % 2 != 0 || answer.margin >= ENOUGH_MARGIN) return false;
    std::string turned(head.substr(0, SAMPLE));
    for (size_t i = 0; i + 1 < turned.size(); i += 2) std::swap(turned[i], turned[i + 1]);
    const Answer other = Detect(turned);
    return other.code == ENCODE_UNICODE && other.margin >= ENOUGH_MARGIN && other.margin > answer.margin &&
           !LooksBinary(turned, &UTF16LE) && CanBeRead(head, UTF16BE);
}

// A lead byte, a digit, a lead byte, a digit: a character of GB18030 that GBK lacks.
bool HasFourByteCharacters(std::string_view text)
{
    const auto digit = [&](size_t i) { return text[i] >= '0' && text[i] <= '9'; };
    const auto lead = [&](size_t i) { return static_cast<unsigned char>(text[i]) >= 0x81; };
    for (size_t i = 0; i + 4 <= text.size(); ++i)
        if (digit(i + 3) && digit(i + 1) && lead(i) && lead(i + 2)) return true;
    return false;
}

void Certain(Identity& identity, const Encoding* encoding)
{
    identity.encoding = encoding;
    identity.margin = MOST_MARGIN;
}

// ASCII, of which the detector says `answer`.
void IdentifyAscii(std::string_view head, bool isWhole, const Answer& answer, Identity& identity)
{
    if (answer.code == ENCODE_UNICODE && (HasManyZeros(head) || answer.margin >= ENOUGH_MARGIN)) {
        identity.encoding = &UTF16LE;
        identity.margin = answer.margin;
        if (!HasManyZeros(head))
            identity.doubt = "looks like UTF-16LE but is also valid ASCII; --from ENC decides";
        return;
    }
    Certain(identity, FindSevenBit(head));
    if (identity.encoding == nullptr && HasManyZeros(head) && isWhole && IsUtf16Be(head, {}))
        identity.encoding = &UTF16BE;
    if (identity.encoding == &UTF7 || identity.encoding == &HZ)
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
    if (AsciiLength(head) == head.size()) return IdentifyAscii(head, isWhole, answer, identity);
    identity.encoding = EncodingOf(Settled(head, isWhole, answer.code));
    identity.margin = answer.margin;
    if (identity.encoding == &UTF8 && IsFlawlessUtf8(head)) identity.margin = MOST_MARGIN;
    if (IsUtf16Be(head, identity.encoding == nullptr ? Answer{} : Answer{answer.code, identity.margin}))
        return Certain(identity, &UTF16BE);
    const bool gb18030 = identity.encoding == &GBK && HasFourByteCharacters(head);
    if (gb18030 && !CanBeRead(head, GBK) && CanBeRead(head, GB18030)) identity.encoding = &GB18030;
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
