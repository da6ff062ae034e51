#include "Conversion.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "Characters.h"
#include "Encoding.h"
#include "Text.h"

namespace
{
// Large enough to make the library's calls long; small enough for the processor's cache, and for its buffers,
// four times as large, to come from the heap and not each time anew from the system.
constexpr size_t BLOCK_BYTES = 1 << 14;

struct Place {
    size_t line = 1, column = 1;

    void Pass(char16_t unit)
    {
        ++column;
        if (unit != u'\n') return;
        ++line;
        column = 1;
    }
};

std::string Hex(std::string_view bytes)
{
    std::string text;
    char digits[4];
    for (const char c : bytes) {
        snprintf(digits, sizeof digits, text.empty() ? "%02X" : " %02X", static_cast<unsigned char>(c));
        text += digits;
    }
    return text;
}

std::string CodePoint(unsigned long value)
{
    char text[16];
    snprintf(text, sizeof text, "U+%04lX", value);
    return text;
}

// Of a four-byte sequence of UTF-8 or a pair of surrogates.
unsigned long CodePointBeyond(std::string_view bytes, int encoding)
{
    const auto byte = [&](size_t i) {
        return static_cast<unsigned long>(static_cast<unsigned char>(bytes[i]));
    };
    if (encoding == ENCODE_UTF8)
        return (byte(0) & 0x07) << 18 | (byte(1) & 0x3F) << 12 | (byte(2) & 0x3F) << 6 | (byte(3) & 0x3F);
    const unsigned long high = byte(0) | byte(1) << 8, low = byte(2) | byte(3) << 8;
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

std::string DescribeUnreadable(std::string_view bytes, Form form, int from)
{
    const std::string name = EncodingName(from);
    switch (form) {
        case Form::CUT:
            return "the text ends inside a character: " + Hex(bytes);
        case Form::BEYOND:
            return CodePoint(CodePointBeyond(bytes, from)) + " (" + Hex(bytes) + ") lies beyond U+FFFF";
        case Form::LONE_HALF:
            return Hex(bytes) + " is half a surrogate pair";
        default:
            return Hex(bytes) + " is no character of " + name;
    }
}

// The indices of the units that do not come back from the bytes written, and of those that were unreadable.
std::vector<size_t> FindLost(const Block& block, const std::string& written, int to)
{
    const std::u16string back = Decode(written, to, written.size()).units;
    if (back == block.units) return block.lost;
    if (back.size() != block.units.size()) throw std::logic_error("the result cannot be read back");
    std::vector<size_t> lost;
    auto unreadable = block.lost.begin();
    for (size_t i = 0; i < back.size(); ++i) {
        const bool wasUnreadable = unreadable != block.lost.end() && *unreadable == i;
        if (wasUnreadable) ++unreadable;
        if (wasUnreadable || back[i] != block.units[i]) lost.push_back(i);
    }
    return lost;
}

class Converter
{
public:
    Converter(int from, int to, size_t describe) : m_from(from), m_to(to), m_describe(describe) {}

    void Run(std::string_view text, const Sink& sink)
    {
        while (!text.empty()) {
            const Block block = Decode(text, m_from, BLOCK_BYTES);
            const std::string written = Encode(block.units, m_to);
            const std::vector<size_t> lost = FindLost(block, written, m_to);
            PassBlock(text, block, lost);
            sink(written, block.consumed);
            text.remove_prefix(block.consumed);
        }
    }

    // As Run, without a result. Characters beyond U+FFFF are read.
    void Read(std::string_view text)
    {
        while (!text.empty()) {
            const Block block = Decode(text, m_from, BLOCK_BYTES);
            const std::vector<size_t> unreadable = Unreadable(text, block);
            PassBlock(text, block, unreadable);
            text.remove_prefix(block.consumed);
        }
    }

    Losses Take() { return std::move(m_losses); }

private:
    std::vector<size_t> Unreadable(std::string_view text, const Block& block) const
    {
        std::vector<size_t> unreadable;
        auto next = block.lost.begin();
        for (size_t i = 0; next != block.lost.end(); ++i) {
            const Character character = FirstCharacter(text, m_from);
            if (*next == i && character.form != Form::BEYOND) unreadable.push_back(i);
            if (*next == i) ++next;
            text.remove_prefix(character.length);
        }
        return unreadable;
    }

    void PassBlock(std::string_view text, const Block& block, const std::vector<size_t>& lost)
    {
        m_losses.count += lost.size();
        if (!lost.empty() && m_losses.described.size() < m_describe)
            DescribeLost(text, block, lost);
        else
            for (const char16_t unit : block.units) m_place.Pass(unit);
    }

    // Walks the block's source once more, now with an eye on places.
    void DescribeLost(std::string_view text, const Block& block, const std::vector<size_t>& lost)
    {
        auto next = lost.begin();
        for (size_t i = 0; i < block.units.size(); ++i) {
            const Character character = FirstCharacter(text, m_from);
            if (next != lost.end() && *next == i) {
                ++next;
                if (m_losses.described.size() < m_describe)
                    m_losses.described.push_back(
                        {m_place.line, m_place.column, Describe(text, character, block, i)});
            }
            m_place.Pass(block.units[i]);
            text.remove_prefix(character.length);
        }
    }

    std::string Describe(std::string_view text, Character character, const Block& block, size_t index) const
    {
        const std::string_view bytes = text.substr(0, character.length);
        if (std::binary_search(block.lost.begin(), block.lost.end(), index))
            return DescribeUnreadable(bytes, character.form, m_from);
        return CodePoint(block.units[index]) + " (" + Hex(bytes) + ") has no place in " + EncodingName(m_to);
    }

    int m_from, m_to;
    size_t m_describe;
    Place m_place;
    Losses m_losses;
};
}  // namespace

Losses Convert(std::string_view text, int from, int to, size_t describe, const Sink& sink)
{
    Converter converter(from, to, describe);
    converter.Run(text, sink);
    return converter.Take();
}

Losses FindUnreadable(std::string_view text, int encoding, size_t describe)
{
    if (encoding == ENCODE_UTF8 && IsFlawlessUtf8(text)) return {};
    Converter converter(encoding, encoding, describe);
    converter.Read(text);
    return converter.Take();
}
