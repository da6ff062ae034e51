#include "Encoding.h"

#include <iconv.h>

#include <algorithm>
#include <cctype>
#include <deque>

using namespace std::string_view_literals;

const Encoding ASCII{"ASCII", Scheme::ASCII};
const Encoding GBK{"GBK", Scheme::PAIRS, ENCODE_GBK};
const Encoding GB18030{"GB18030", Scheme::ICONV};
const Encoding BIG5{"Big5", Scheme::PAIRS, ENCODE_BIG5};
const Encoding UTF8{"UTF-8", Scheme::UTF8, ENCODE_UTF8, false, "\xEF\xBB\xBF"sv};
const Encoding UTF16LE{"UTF-16LE", Scheme::UTF16, ENCODE_UNICODE, false, "\xFF\xFE"sv, false};
const Encoding UTF16BE{"UTF-16BE", Scheme::UTF16, ENCODE_UNKNOWN, true, "\xFE\xFF"sv, false};
const Encoding UTF32LE{"UTF-32LE", Scheme::UTF32, ENCODE_UNKNOWN, false, "\xFF\xFE\0\0"sv, false};
const Encoding UTF32BE{"UTF-32BE", Scheme::UTF32, ENCODE_UNKNOWN, true, "\0\0\xFE\xFF"sv, false};
const Encoding HZ{"HZ", Scheme::HZ, ENCODE_UNKNOWN, false, {}, false};
const Encoding UTF7{"UTF-7", Scheme::ICONV, ENCODE_UNKNOWN, false, {}, false};

namespace
{
// Names that stand for a byte order and a mark when a file is written.
constexpr const char* MARKED_NAMES[] = {"UTF-8-SIG", "UTF-8-BOM", "UTF-16", "UTF16",
                                        "UCS-2",     "UCS2",      "UTF-32", "UTF32"};

std::string UpperCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(toupper(c)); });
    return text;
}

// Whether ASCII text is the same bytes in iconv's encoding `name`.
bool HoldsAscii(const std::string& name)
{
    iconv_t handle = iconv_open(name.c_str(), "UTF-8");
    if (handle == iconv_t(-1)) return false;
    char in[] = "0~{Az+\\", out[64];
    char *from = in, *to = out;
    size_t left = sizeof in - 1, room = sizeof out;
    const bool converted = iconv(handle, &from, &left, &to, &room) != static_cast<size_t>(-1);
    iconv_close(handle);
    return converted && std::string_view(out, sizeof out - room) == std::string_view(in, sizeof in - 1);
}

// The list lives as long as the program: encodings are compared by their addresses.
const Encoding* EncodingOfIconv(const std::string& name)
{
    static std::deque<Encoding> s_encodings;
    for (const Encoding& known : s_encodings)
        if (known.name == name) return &known;
    // A slash would start an option of iconv's, such as //IGNORE, which loses characters in silence.
    if (name.empty() || name.find('/') != std::string::npos) return nullptr;
    iconv_t reads = iconv_open("UTF-16LE", name.c_str()), writes = iconv_open(name.c_str(), "UTF-16LE");
    const bool known = reads != iconv_t(-1) && writes != iconv_t(-1);
    if (reads != iconv_t(-1)) iconv_close(reads);
    if (writes != iconv_t(-1)) iconv_close(writes);
    if (!known) return nullptr;
    s_encodings.push_back({name, Scheme::ICONV, ENCODE_UNKNOWN, false, {}, HoldsAscii(name)});
    return &s_encodings.back();
}
}  // namespace

const std::vector<EncodingNames>& KnownEncodings()
{
    static const std::vector<EncodingNames> s_known = {
        {&GBK,
         {"GBK", "CP936", "936", "MS936", "Windows-936", "GB2312", "GB_2312-80", "EUC-CN", "X-GBK",
          "Chinese"}},
        {&GB18030, {"GB18030", "CP54936", "54936"}},
        {&BIG5, {"Big5", "Big-5", "CP950", "950", "MS950", "Windows-950", "CN-Big5", "Big5-ETEN"}},
        {&UTF8, {"UTF-8", "UTF8", "CP65001", "65001", "UTF-8-SIG", "UTF-8-BOM"}},
        {&UTF16LE,
         {"UTF-16LE", "UTF16LE", "UTF-16-LE", "UCS-2LE", "UTF-16", "UTF16", "UCS-2", "UCS2", "CP1200",
          "1200"}},
        {&UTF16BE, {"UTF-16BE", "UTF16BE", "UTF-16-BE", "UCS-2BE", "CP1201", "1201"}},
        {&UTF32LE, {"UTF-32LE", "UTF32LE", "UTF-32-LE", "UCS-4LE", "UTF-32", "UTF32", "CP12000"}},
        {&UTF32BE, {"UTF-32BE", "UTF32BE", "UTF-32-BE", "UCS-4BE", "CP12001"}},
        {&ASCII, {"ASCII", "US-ASCII", "646", "ANSI_X3.4-1968"}},
        {&HZ, {"HZ", "HZ-GB-2312"}},
        {&UTF7, {"UTF-7", "UTF7", "CP65000", "65000"}},
    };
    return s_known;
}

const Encoding* EncodingOf(int code)
{
    for (const Encoding* const encoding : {&GBK, &BIG5, &UTF8, &UTF16LE})
        if (encoding->code == code) return encoding;
    return nullptr;
}

std::string NameOf(const Encoding* encoding)
{
    return encoding != nullptr ? encoding->name : "unknown";
}

NamedEncoding FindEncoding(const std::string& name)
{
    const std::string wanted = UpperCase(name);
    const bool marked =
        std::find(std::begin(MARKED_NAMES), std::end(MARKED_NAMES), wanted) != std::end(MARKED_NAMES);
    for (const auto& [encoding, names] : KnownEncodings())
        for (const std::string& known : names)
            if (UpperCase(known) == wanted) return {encoding, marked};
    return {EncodingOfIconv(wanted), false};
}

const Encoding* MarkedEncoding(std::string_view text)
{
    for (const Encoding* const encoding : {&UTF32LE, &UTF32BE, &UTF8, &UTF16LE, &UTF16BE})
        if (text.substr(0, encoding->mark.size()) == encoding->mark) return encoding;
    return nullptr;
}
