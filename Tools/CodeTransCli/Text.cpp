// Whole texts between encodings; see Text.h. Each buffer is sized by the table of the function that fills it.
#include "Text.h"

#include <CodeTrans.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace
{
constexpr char16_t MARK = 0xFEFF;
constexpr char16_t UNDEFINED = 0xFFFD;
constexpr char16_t IDEOGRAPHIC_SPACE = 0x3000;
constexpr char16_t EURO = 0x20AC;

// Half of a character beyond the Basic Multilingual Plane, which the library does not put together.
bool IsSurrogate(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDFFF;
}

void AppendUnits(std::u16string& units, const char* utf16le, size_t size)
{
    for (size_t i = 0; i + 1 < size; i += 2)
        units += static_cast<char16_t>(static_cast<unsigned char>(utf16le[i]) |
                                       static_cast<unsigned char>(utf16le[i + 1]) << 8);
}

std::string ToUtf16Le(const std::u16string& units)
{
    std::string bytes;
    bytes.reserve(2 * units.size());
    for (const char16_t unit : units) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

Text DecodeDoubleByte(const std::string& bytes, int encoding)
{
    Text text;
    std::vector<char> out(2 * bytes.size() + 1);
    const size_t size = TQ_ToUnicode(bytes.data(), bytes.size(), out.data(), out.size(), encoding);
    AppendUnits(text.units, out.data(), size);
    text.lost = static_cast<size_t>(std::count_if(text.units.begin(), text.units.end(),
                                                  [](char16_t u) { return u == UNDEFINED || u == MARK; }));
    return text;
}

// The library reads UTF-8 up to a zero byte, so the text goes piece by piece. It drops what lies beyond the
// Basic Multilingual Plane: the lead bytes of such sequences are counted.
Text DecodeUtf8(const std::string& bytes)
{
    Text text;
    for (size_t begin = 0; begin < bytes.size();) {
        const char* piece = bytes.c_str() + begin;
        const size_t length = strlen(piece);
        std::vector<char> out(4 * length + 2);
        const size_t size = TQ_ToUnicode(piece, length, out.data(), out.size(), ENCODE_UTF8);
        for (size_t i = 0; i < size; i += 4) AppendUnits(text.units, out.data() + i, 2);
        begin += length + 1;
        if (begin <= bytes.size()) text.units += u'\0';
    }
    text.lost = static_cast<size_t>(std::count_if(
        bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) >= 0xF0; }));
    return text;
}

Text DecodeUtf16(const std::string& bytes)
{
    Text text;
    AppendUnits(text.units, bytes.data(), bytes.size());
    text.lost = bytes.size() % 2;
    return text;
}

// The library takes four-byte units here and ends the copied text at a zero unit: piece by piece again.
// Surrogates would become sequences that are not UTF-8.
Encoded EncodeUtf8(const std::u16string& units)
{
    Encoded result;
    for (size_t begin = 0; begin < units.size();) {
        const size_t end = std::min(units.find(u'\0', begin), units.size());
        std::vector<char> wide(4 * (end - begin));
        for (size_t i = begin; i < end; ++i) {
            const char16_t unit = IsSurrogate(units[i]) ? UNDEFINED : units[i];
            wide[4 * (i - begin)] = static_cast<char>(unit & 0xFF);
            wide[4 * (i - begin) + 1] = static_cast<char>(unit >> 8);
        }
        std::vector<char> out(3 * (end - begin) + 1);
        const size_t size = TQ_ToUtf8(wide.data(), end - begin, out.data(), 0, ENCODE_UNICODE);
        result.bytes.append(out.data(), size);
        if (end < units.size()) result.bytes += '\0';
        begin = end + 1;
    }
    result.lost = static_cast<size_t>(std::count_if(units.begin(), units.end(), IsSurrogate));
    return result;
}

// The library writes A1 A1 for what GBK lacks and 00 80 for the euro sign, whose code is the byte 80.
Encoded EncodeGbk(const std::u16string& units)
{
    const std::string source = ToUtf16Le(units);
    std::vector<char> out(2 * units.size() + 2);
    TQ_ToGBK(source.data(), units.size(), out.data(), 0, ENCODE_UNICODE);
    Encoded result;
    const char* code = out.data();
    for (const char16_t unit : units) {
        const size_t length = unit < 0x80 ? 1 : 2;
        if (unit == EURO)
            result.bytes += '\x80';
        else
            result.bytes.append(code, length);
        result.lost += length == 2 && unit != IDEOGRAPHIC_SPACE && memcmp(code, "\xA1\xA1", 2) == 0;
        code += length;
    }
    return result;
}
}  // namespace

Text Decode(const std::string& bytes, int encoding)
{
    Text text = encoding == ENCODE_UTF8      ? DecodeUtf8(bytes)
                : encoding == ENCODE_UNICODE ? DecodeUtf16(bytes)
                                             : DecodeDoubleByte(bytes, encoding);
    const bool marked = encoding == ENCODE_UTF8 || encoding == ENCODE_UNICODE;
    if (marked && !text.units.empty() && text.units.front() == MARK) text.units.erase(0, 1);
    return text;
}

Encoded Encode(const std::u16string& units, int encoding)
{
    if (encoding == ENCODE_UTF8) return EncodeUtf8(units);
    if (encoding == ENCODE_GBK) return EncodeGbk(units);
    return {"\xFF\xFE" + ToUtf16Le(units), 0};
}
