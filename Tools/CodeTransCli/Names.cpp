#include "Names.h"

#include <CodeTrans.h>
#include <wchar.h>

#include <algorithm>
#include <cstdio>

#include "Characters.h"
#include "Text.h"

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
    const Block block = Decode(name, ENCODE_GBK, name.size());
    if (!block.lost.empty()) return EscapeIf(std::string(name), IsControlOrHigh);
    return EscapeIf(Encode(block.units, ENCODE_UTF8), IsControl);
}

size_t Width(const std::string& readable)
{
    size_t width = 0;
    const Block block = Decode(readable, ENCODE_UTF8, readable.size());
    for (const char16_t unit : block.units) width += static_cast<size_t>(std::max(wcwidth(unit), 0));
    return width;
}
