#include "Names.h"

#include <STLCodeTrans.h>
#include <wchar.h>

#include <algorithm>
#include <clocale>
#include <cstdio>

#include "Codec.h"
#include "UnicodeCodec.h"

namespace
{
std::string Escaped(unsigned char byte)
{
    if (byte == '\n') return "\\n";
    if (byte == '\t') return "\\t";
    char text[8];
    snprintf(text, sizeof text, "\\x%02X", byte);
    return text;
}

std::string EscapeIf(const std::string& text, bool (*odd)(unsigned char))
{
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (odd(byte))
            result += Escaped(byte);
        else
            result += c;
    }
    return result;
}

bool IsControl(unsigned char byte)
{
    return byte < 0x20 || byte == 0x7F;
}

bool IsControlOrHigh(unsigned char byte)
{
    return IsControl(byte) || byte >= 0x80;
}
}  // namespace

std::string Readable(std::string_view name)
{
    if (IsFlawlessUtf8(name)) return EscapeIf(std::string(name), IsControl);
    std::u16string units;
    std::string readable;
    const bool isGbk = g_mapGBKToUnicode != nullptr && MakeDecoder(GBK)->Read(name, units) == name.size();
    if (!isGbk || MakeEncoder(UTF8)->Write(units, readable) != units.size())
        return EscapeIf(std::string(name), IsControlOrHigh);
    return EscapeIf(readable, IsControl);
}

std::string Base64(std::string_view bytes)
{
    constexpr const char* DIGITS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        unsigned group = 0;
        for (size_t k = 0; k < 3; ++k)
            group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        for (size_t k = 0; k < 4; ++k)
            text += i + k <= bytes.size() ? DIGITS[group >> (18 - 6 * k) & 0x3F] : '=';
    }
    return text;
}

size_t Width(const std::string& readable)
{
    // wcwidth asks the locale. Only terminals are asked for widths.
    static const bool s_set = setlocale(LC_CTYPE, "C.UTF-8") != nullptr;
    if (!s_set) return readable.size();
    size_t width = 0;
    for (std::string_view rest = readable; !rest.empty();) {
        const Character next = FirstOfUtf8(rest);
        width += static_cast<size_t>(std::max(wcwidth(static_cast<wchar_t>(next.codePoint)), 0));
        rest.remove_prefix(next.length);
    }
    return width;
}
