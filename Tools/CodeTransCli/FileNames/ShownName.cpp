#include "ShownName.h"

#include <cstdio>

#include "NameEncoding.h"

namespace
{
void AppendEscaped(std::string_view bytes, std::string& out)
{
    for (const char c : bytes) {
        char text[8];
        snprintf(text, sizeof text, "\\x%02X", static_cast<unsigned char>(c));
        out += c == '\n' ? "\\n" : c == '\t' ? "\\t" : text;
    }
}

bool IsControl(char32_t c)
{
    return c < 0x20 || (c >= 0x7F && c < 0xA0);
}
}  // namespace

std::string ShownName(std::string_view name)
{
    std::string shown;
    const auto text = DecodeName(name, NameEncoding::UTF_8);
    if (text) {
        for (const char32_t c : *text) {
            const std::string bytes = *EncodeName({&c, 1}, NameEncoding::UTF_8);
            if (IsControl(c))
                AppendEscaped(bytes, shown);
            else
                shown += bytes;
        }
        return shown;
    }
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x80 || IsControl(byte))
            AppendEscaped({&c, 1}, shown);
        else
            shown += c;
    }
    return shown;
}
