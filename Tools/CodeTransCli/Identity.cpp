#include "Identity.h"

#include <CodeTrans.h>

#include <algorithm>

#include "Characters.h"
#include "Encoding.h"

namespace
{
// Enough of a file to see that it is no text.
constexpr size_t SAMPLE = 1 << 16;

// Text has line ends, tabs, page breaks and escape sequences, and hardly another control character.
bool IsOddControl(unsigned unit)
{
    return unit < 0x20 && !(unit >= 0x08 && unit <= 0x0D) && unit != 0x1A && unit != 0x1B;
}

// More than one in fifty, and more than a few.
bool TooMany(size_t odd, size_t total)
{
    return odd > 4 + total / 50;
}

bool LooksBinary(std::string_view bytes, int code)
{
    bytes = bytes.substr(0, SAMPLE);
    const auto byte = [&](size_t i) { return static_cast<unsigned>(static_cast<unsigned char>(bytes[i])); };
    const size_t step = code == ENCODE_UNICODE ? 2 : 1;
    size_t odd = 0;
    for (size_t i = 0; i + step <= bytes.size(); i += step) {
        const unsigned unit = step == 2 ? byte(i) | byte(i + 1) << 8 : byte(i);
        odd += IsOddControl(unit) || unit >= 0xFFFE;
    }
    return TooMany(odd, bytes.size() / step);
}

bool IsAscii(std::string_view bytes)
{
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// Text in other encodings is hardly ever flawless UTF-8 by chance, and a few characters of UTF-8 can be
// mistaken. ASCII in UTF-16LE, every second byte of it zero, is flawless UTF-8 as well and no reason for
// doubt.
bool LooksLikeUtf8(std::string_view bytes, int code)
{
    const auto zeros = static_cast<size_t>(std::count(bytes.begin(), bytes.end(), '\0'));
    if (code == ENCODE_UNICODE && zeros > bytes.size() / 8) return false;
    return IsFlawlessUtf8(bytes);
}

bool Starts(std::string_view bytes, std::string_view with)
{
    return bytes.substr(0, with.size()) == with;
}
}  // namespace

Identity Identify(std::string_view bytes)
{
    using namespace std::string_view_literals;
    Identity identity;
    if (Starts(bytes, "\xFF\xFE\0\0"sv) || Starts(bytes, "\0\0\xFE\xFF"sv) || Starts(bytes, "\xFE\xFF"sv)) {
        identity.doubt = "has the byte-order mark of UTF-16BE or UTF-32, which are not read here";
        return identity;
    }
    for (const int code : {ENCODE_UTF8, ENCODE_UNICODE}) {
        if (!Starts(bytes, ByteOrderMark(code))) continue;
        identity.code = code;
        identity.mark = ByteOrderMark(code).size();
        return identity;
    }
    identity.code = TQ_CodeDetect(bytes.data(), bytes.size());
    identity.ascii = identity.code == ENCODE_GBK && IsAscii(bytes);
    identity.binary = LooksBinary(bytes, identity.code);
    if (identity.binary)
        identity.code = ENCODE_UNKNOWN;
    else if (identity.code == ENCODE_UNKNOWN)
        identity.doubt = "the encoding could not be told; --from ENC names it";
    else if (identity.code != ENCODE_UTF8 && !identity.ascii && LooksLikeUtf8(bytes, identity.code))
        identity.doubt = std::string("looks like ") + EncodingName(identity.code) +
                         " but is flawless UTF-8 too; --from ENC decides";
    return identity;
}
