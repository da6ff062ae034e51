#include "NameEncoding.h"

#include <CodeTrans.h>

#include <array>

#include "Codec.h"
#include "PairTable.h"

namespace
{
constexpr char32_t NONE = 0xFFFFFFFF;
constexpr char32_t EURO = 0x20AC;

constexpr std::u16string_view UPPER_CP437 =
    u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜ¢£¥₧ƒ"
    u"áíóúñÑªº¿⌐¬½¼¡«»░▒▓│┤╡╢╖╕╣║╗╝╜╛┐"
    u"└┴┬├─┼╞╟╚╔╩╦╠═╬╧╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
    u"αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00A0";

constexpr std::u16string_view UPPER_CP850 =
    u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜø£Ø×ƒ"
    u"áíóúñÑªº¿®¬½¼¡«»░▒▓│┤ÁÂÀ©╣║╗╝¢¥┐"
    u"└┴┬├─┼ãÃ╚╔╩╦╠═╬¤ðÐÊËÈıÍÎÏ┘┌█▄¦Ì▀"
    u"ÓßÔÒõÕµþÞÚÛÙýÝ¯´\u00AD±‗¾¶§÷¸°¨·¹³²■\u00A0";

// 80 to 9F. The five that the code page leaves open are control characters, as Windows reads them.
constexpr std::array<char16_t, 32> WINDOWS_SIGNS = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

unsigned Byte(std::string_view text, size_t i)
{
    return static_cast<unsigned char>(text[i]);
}

int CodeOf(NameEncoding encoding)
{
    return encoding == NameEncoding::BIG_5 ? ENCODE_BIG5 : ENCODE_GBK;
}

// Of a pair whose lead byte may be 80 or FF too, which begin none.
char32_t PairUnit(unsigned lead, unsigned trail, NameEncoding encoding)
{
    if (lead == 0x80 || lead == 0xFF) return NONE;
    const char16_t unit = UnitOf(CodeOf(encoding), lead, trail);
    return unit == REPLACEMENT ? NONE : unit;
}

// The pair that is written for a character, or 0.
unsigned PairOf(char32_t character, NameEncoding encoding)
{
    return character >= 0x80 && character <= 0xFFFF ? PairsOf(CodeOf(encoding))[character] : 0;
}

// Windows gives the pairs that GBK leaves to its users characters of the private area: three blocks of rows.
struct PrivateRows {
    unsigned firstLead, lastLead, firstTrail, lastTrail;
    char32_t firstUnit;

    // The trail byte 7F is left out.
    unsigned Width() const { return lastTrail - firstTrail + (firstTrail < 0x7F ? 0 : 1); }
    unsigned Column(unsigned trail) const { return trail - firstTrail - (firstTrail < 0x7F && trail > 0x7F); }
};
constexpr PrivateRows PRIVATE_ROWS[] = {
    {0xAA, 0xAF, 0xA1, 0xFE, 0xE000}, {0xF8, 0xFE, 0xA1, 0xFE, 0xE234}, {0xA1, 0xA7, 0x40, 0xA0, 0xE4C6}};

char32_t PrivateUnit(unsigned pair)
{
    const unsigned lead = pair >> 8, trail = pair & 0xFF;
    for (const PrivateRows& rows : PRIVATE_ROWS)
        if (lead >= rows.firstLead && lead <= rows.lastLead && trail >= rows.firstTrail &&
            trail <= rows.lastTrail && trail != 0x7F)
            return rows.firstUnit + (lead - rows.firstLead) * rows.Width() + rows.Column(trail);
    return NONE;
}

unsigned PrivatePair(char32_t unit)
{
    for (const PrivateRows& rows : PRIVATE_ROWS)
        for (unsigned lead = rows.firstLead; lead <= rows.lastLead; ++lead)
            for (unsigned trail = rows.firstTrail; trail <= rows.lastTrail; ++trail)
                if (PrivateUnit(lead << 8 | trail) == unit) return lead << 8 | trail;
    return 0;
}

char16_t SingleByte(unsigned byte, NameEncoding encoding)
{
    if (encoding == NameEncoding::CP437) return UPPER_CP437[byte - 0x80];
    if (encoding == NameEncoding::CP850) return UPPER_CP850[byte - 0x80];
    const bool sign = encoding == NameEncoding::WINDOWS_1252 && byte < 0xA0;
    return sign ? WINDOWS_SIGNS[byte - 0x80] : static_cast<char16_t>(byte);
}

bool IsDoubleByte(NameEncoding encoding)
{
    return encoding == NameEncoding::GB || encoding == NameEncoding::BIG_5 || encoding == NameEncoding::CP936;
}

// The character at `at`, which moves past it; NONE for what is no character.
char32_t NextUtf8(std::string_view name, size_t& at)
{
    const unsigned lead = Byte(name, at++);
    const size_t more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    if (lead < 0xC2 || lead > 0xF4 || name.size() - at < more) return NONE;
    char32_t character = lead & (0x3Fu >> more);
    for (size_t i = 0; i < more; ++i, ++at) {
        if ((Byte(name, at) & 0xC0) != 0x80) return NONE;
        character = character << 6 | (Byte(name, at) & 0x3F);
    }
    constexpr char32_t FIRST[] = {0, 0x80, 0x800, 0x10000};
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    return character < FIRST[more] || surrogate || character > 0x10FFFF ? NONE : character;
}

char32_t NextPair(std::string_view name, size_t& at, NameEncoding encoding)
{
    const unsigned lead = Byte(name, at++);
    if (lead == 0x80 && encoding != NameEncoding::BIG_5) return EURO;
    if (at == name.size()) return NONE;
    const unsigned trail = Byte(name, at++);
    const char32_t unit = PairUnit(lead, trail, encoding);
    return unit == NONE && encoding == NameEncoding::CP936 ? PrivateUnit(lead << 8 | trail) : unit;
}

char32_t Next(std::string_view name, size_t& at, NameEncoding encoding)
{
    if (Byte(name, at) < 0x80) return Byte(name, at++);
    if (encoding == NameEncoding::UTF_8) return NextUtf8(name, at);
    if (IsDoubleByte(encoding)) return NextPair(name, at, encoding);
    return SingleByte(Byte(name, at++), encoding);
}

void AppendUtf8(char32_t character, std::string& out)
{
    const int more = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    out += static_cast<char>((0xFF00u >> (more + 1) & 0xFF) | character >> 6 * more);
    for (int i = more - 1; i >= 0; --i) out += static_cast<char>(0x80 | (character >> 6 * i & 0x3F));
}

bool AppendPair(char32_t character, NameEncoding encoding, std::string& out)
{
    if (character == EURO && encoding != NameEncoding::BIG_5) {
        out += '\x80';
        return true;
    }
    unsigned pair = PairOf(character, encoding);
    if (pair == 0 && encoding == NameEncoding::CP936) pair = PrivatePair(character);
    out += static_cast<char>(pair >> 8);
    out += static_cast<char>(pair & 0xFF);
    return pair != 0;
}

bool AppendSingle(char32_t character, NameEncoding encoding, std::string& out)
{
    for (unsigned byte = 0x80; byte <= 0xFF; ++byte) {
        if (SingleByte(byte, encoding) != character) continue;
        out += static_cast<char>(byte);
        return true;
    }
    return false;
}

bool Append(char32_t character, NameEncoding encoding, std::string& out)
{
    if (character >= 0x80 && IsDoubleByte(encoding)) return AppendPair(character, encoding, out);
    if (character >= 0x80 && encoding != NameEncoding::UTF_8) return AppendSingle(character, encoding, out);
    if (character >= 0x80)
        AppendUtf8(character, out);
    else
        out += static_cast<char>(character);
    return true;
}
}  // namespace

const char* TitleOf(NameEncoding encoding)
{
    constexpr const char* TITLES[] = {"UTF-8",   "GBK",          "Big5",  "GBK",
                                      "Latin-1", "Windows-1252", "CP437", "CP850"};
    return TITLES[static_cast<size_t>(encoding)];
}

std::optional<std::u32string> DecodeName(std::string_view name, NameEncoding encoding)
{
    std::u32string text;
    for (size_t at = 0; at < name.size();) {
        const char32_t character = Next(name, at, encoding);
        if (character == NONE) return std::nullopt;
        text += character;
    }
    return text;
}

std::optional<std::string> EncodeName(std::u32string_view text, NameEncoding encoding)
{
    std::string name;
    for (const char32_t character : text)
        if (!Append(character, encoding, name)) return std::nullopt;
    return name;
}

bool IsCommonHanzi(char32_t character, NameEncoding encoding)
{
    const unsigned gbk = PairOf(character, NameEncoding::GB);
    const unsigned big5 = PairOf(character, NameEncoding::BIG_5);
    const bool inGbk = gbk >= 0xB0A1 && gbk <= 0xD7F9 && (gbk & 0xFF) >= 0xA1;
    const bool inBig5 = big5 >= 0xA440 && big5 <= 0xC67E;
    if (encoding == NameEncoding::GB) return inGbk;
    return encoding == NameEncoding::BIG_5 ? inBig5 : inGbk || inBig5;
}
