#include "Encoding.h"

#include <algorithm>
#include <cctype>

namespace
{
struct Name {
    int code;
    const char* name;
};

// Each encoding's own name comes first.
constexpr Name NAMES[] = {
    {ENCODE_GBK, "GBK"},           {ENCODE_BIG5, "Big5"},       {ENCODE_UTF8, "UTF-8"},
    {ENCODE_UNICODE, "UTF-16LE"},  {ENCODE_GBK, "CP936"},       {ENCODE_GBK, "GB2312"},
    {ENCODE_BIG5, "CP950"},        {ENCODE_UTF8, "UTF8"},       {ENCODE_UNICODE, "UTF16LE"},
    {ENCODE_UNICODE, "UTF-16-LE"}, {ENCODE_UNICODE, "UCS-2LE"},
};

std::string UpperCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(toupper(c)); });
    return text;
}
}  // namespace

const char* EncodingName(int code)
{
    for (const Name& name : NAMES)
        if (name.code == code) return name.name;
    return "unknown";
}

std::optional<int> EncodingNamed(std::string name)
{
    name = UpperCase(std::move(name));
    for (const Name& known : NAMES)
        if (UpperCase(known.name) == name) return known.code;
    return std::nullopt;
}

std::string_view ByteOrderMark(int code)
{
    if (code == ENCODE_UTF8) return "\xEF\xBB\xBF";
    if (code == ENCODE_UNICODE) return "\xFF\xFE";
    return {};
}
