#include "Identity.h"

#include <CodeTrans.h>

#include <algorithm>

#include "Encoding.h"
#include "Reading.h"

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
    identity.code = Settled(bytes, TQ_CodeDetect(bytes.data(), bytes.size()));
    const bool ascii = identity.code != ENCODE_UTF8 && IsAscii(bytes);
    identity.ascii = ascii && identity.code == ENCODE_GBK;
    identity.binary = LooksBinary(bytes, identity.code);
    if (identity.binary)
        identity.code = ENCODE_UNKNOWN;
    else if (identity.code == ENCODE_UNKNOWN)
        identity.doubt = "the encoding could not be told; --from ENC names it";
    else if (ascii && !identity.ascii && !(identity.code == ENCODE_UNICODE && HasManyZeros(bytes)))
        identity.doubt = std::string("looks like ") + EncodingName(identity.code) +
                         " but is ASCII too; --from ENC decides";
    return identity;
}
