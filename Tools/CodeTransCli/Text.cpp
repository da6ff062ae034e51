// Each buffer is sized by the table of the function that fills it. Where a function ends at a zero byte or a
// zero unit, the text goes piece by piece.
#include "Text.h"

#include <CodeTrans.h>

#include <algorithm>

#include "Characters.h"

namespace
{
constexpr char16_t EURO = 0x20AC;

void AppendUnits(std::u16string& units, const char* bytes, size_t count, size_t unitSize)
{
    const size_t had = units.size();
    units.resize(had + count);
    for (size_t i = 0; i < count; ++i)
        units[had + i] = static_cast<char16_t>(static_cast<unsigned char>(bytes[unitSize * i]) |
                                               static_cast<unsigned char>(bytes[unitSize * i + 1]) << 8);
}

std::string UnitBytes(std::u16string_view units, size_t unitSize)
{
    std::string bytes(unitSize * units.size(), '\0');
    for (size_t i = 0; i < units.size(); ++i) {
        bytes[unitSize * i] = static_cast<char>(units[i] & 0xFF);
        bytes[unitSize * i + 1] = static_cast<char>(units[i] >> 8);
    }
    return bytes;
}

void DecodePairs(std::string_view run, int encoding, Block& block)
{
    std::string out(2 * run.size(), '\0');
    const size_t size = TQ_ToUnicode(run.data(), run.size(), out.data(), out.size(), encoding);
    const size_t begin = block.units.size();
    AppendUnits(block.units, out.data(), size / 2, 2);
    for (size_t i = block.units.find(REPLACEMENT, begin); i != std::u16string::npos;
         i = block.units.find(REPLACEMENT, i + 1))
        block.lost.push_back(i);
}

void DecodeUtf8(std::string_view run, Block& block)
{
    const std::string source(run);  // zero-terminated
    std::string out;
    for (size_t begin = 0; begin < source.size();) {
        const size_t end = std::min(source.find('\0', begin), source.size());
        out.resize(4 * (end - begin) + 2);
        const size_t size =
            TQ_ToUnicode(source.c_str() + begin, end - begin, out.data(), out.size(), ENCODE_UTF8);
        AppendUnits(block.units, out.data(), size / 4, 4);
        if (end < source.size()) block.units += u'\0';
        begin = end + 1;
    }
}

void DecodeWhole(std::string_view run, int encoding, Block& block)
{
    if (encoding == ENCODE_UTF8)
        DecodeUtf8(run, block);
    else if (encoding == ENCODE_UNICODE)
        AppendUnits(block.units, run.data(), run.size() / 2, 2);
    else
        DecodePairs(run, encoding, block);
}

// The library takes four-byte units here.
std::string EncodeUtf8(std::u16string_view units)
{
    std::string result, out;
    for (size_t begin = 0; begin < units.size();) {
        const size_t end = std::min(units.find(u'\0', begin), units.size());
        const std::string wide = UnitBytes(units.substr(begin, end - begin), 4);
        out.resize(3 * (end - begin) + 1);
        result.append(out.data(), TQ_ToUtf8(wide.data(), end - begin, out.data(), 0, ENCODE_UNICODE));
        if (end < units.size()) result += '\0';
        begin = end + 1;
    }
    return result;
}

// The library writes the euro sign, whose code is the byte 80, as 00 80.
std::string EncodeGbk(std::u16string_view units)
{
    const std::string source = UnitBytes(units, 2);
    std::string out(2 * units.size() + 2, '\0');
    TQ_ToGBK(source.data(), units.size(), out.data(), 0, ENCODE_UNICODE);
    size_t read = 0, written = 0;
    for (const char16_t unit : units) {
        if (unit == EURO) ++read;
        out[written++] = out[read++];
        if (unit >= 0x80 && unit != EURO) out[written++] = out[read++];
    }
    out.resize(written);
    return out;
}
}  // namespace

Block Decode(std::string_view text, int encoding, size_t limit)
{
    Block block;
    while (block.consumed < std::min(limit, text.size())) {
        const std::string_view rest = text.substr(block.consumed);
        const size_t whole = WholeLength(rest, encoding, limit - block.consumed);
        DecodeWhole(rest.substr(0, whole), encoding, block);
        block.consumed += whole;
        if (whole == rest.size() || block.consumed >= limit) break;

        const Character odd = FirstCharacter(rest.substr(whole), encoding);
        if (odd.form == Form::WHOLE) continue;
        if (odd.form != Form::EURO) block.lost.push_back(block.units.size());
        block.units += odd.form == Form::EURO ? EURO : REPLACEMENT;
        block.consumed += odd.length;
    }
    return block;
}

std::string Encode(std::u16string_view units, int encoding)
{
    if (encoding == ENCODE_UTF8) return EncodeUtf8(units);
    if (encoding == ENCODE_GBK) return EncodeGbk(units);
    return UnitBytes(units, 2);
}
