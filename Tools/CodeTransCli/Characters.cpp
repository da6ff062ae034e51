#include "Characters.h"

#include <CodeTrans.h>

#include <algorithm>

namespace
{
unsigned Byte(std::string_view text, size_t i)
{
    return static_cast<unsigned char>(text[i]);
}

bool Between(unsigned value, unsigned first, unsigned last)
{
    return value >= first && value <= last;
}

// Lead bytes 81-FE. A trail byte that cannot be one is left alone: it is more likely the next character.
Character Pair(std::string_view text, bool trailMayBe80ToA0)
{
    const unsigned lead = Byte(text, 0);
    if (lead < 0x80) return {1, Form::WHOLE};
    if (lead == 0x80 || lead == 0xFF) return {1, Form::MALFORMED};
    if (text.size() < 2) return {1, Form::CUT};
    const unsigned trail = Byte(text, 1);
    const bool valid = Between(trail, 0x40, 0x7E) || Between(trail, trailMayBe80ToA0 ? 0x80 : 0xA1, 0xFE);
    return valid ? Character{2, Form::WHOLE} : Character{1, Form::MALFORMED};
}

Character Gbk(std::string_view text)
{
    return text[0] == '\x80' ? Character{1, Form::EURO} : Pair(text, true);
}

// Sequences of two to four bytes, by lead byte, and what the second byte may be: no overlong forms, no
// surrogates, nothing above U+10FFFF.
struct Sequence {
    unsigned firstLead, lastLead;
    size_t length;
    unsigned firstSecond, lastSecond;
};

constexpr Sequence SEQUENCES[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

Character Follow(std::string_view text, const Sequence& sequence)
{
    for (size_t i = 1; i < sequence.length; ++i) {
        if (i == text.size()) return {i, Form::CUT};
        const bool valid = i == 1 ? Between(Byte(text, 1), sequence.firstSecond, sequence.lastSecond)
                                  : Between(Byte(text, i), 0x80, 0xBF);
        if (!valid) return {i, Form::MALFORMED};
    }
    return {sequence.length, sequence.length == 4 ? Form::BEYOND : Form::WHOLE};
}

Character Utf8(std::string_view text)
{
    const unsigned lead = Byte(text, 0);
    if (lead < 0x80) return {1, Form::WHOLE};
    for (const Sequence& sequence : SEQUENCES)
        if (Between(lead, sequence.firstLead, sequence.lastLead)) return Follow(text, sequence);
    return {1, Form::MALFORMED};
}

Character Utf16(std::string_view text)
{
    if (text.size() < 2) return {1, Form::CUT};
    const unsigned high = Byte(text, 1);
    if (!Between(high, 0xD8, 0xDF)) return {2, Form::WHOLE};
    const bool first = high <= 0xDB;
    if (first && text.size() < 4) return {text.size(), Form::CUT};
    return first && Between(Byte(text, 3), 0xDC, 0xDF) ? Character{4, Form::BEYOND}
                                                       : Character{2, Form::LONE_HALF};
}
}  // namespace

Character FirstCharacter(std::string_view text, int encoding)
{
    switch (encoding) {
        case ENCODE_UTF8:
            return Utf8(text);
        case ENCODE_UNICODE:
            return Utf16(text);
        case ENCODE_GBK:
            return Gbk(text);
        default:
            return Pair(text, false);
    }
}

size_t WholeLength(std::string_view text, int encoding, size_t limit)
{
    size_t length = 0;
    const size_t end = std::min(limit, text.size());
    while (length < end) {
        const Character next = FirstCharacter(text.substr(length), encoding);
        if (next.form != Form::WHOLE) break;
        length += next.length;
    }
    return length;
}

bool IsFlawlessUtf8(std::string_view text)
{
    while (!text.empty()) {
        text.remove_prefix(WholeLength(text, ENCODE_UTF8, text.size()));
        if (text.empty()) break;
        const Character next = Utf8(text);
        if (next.form != Form::BEYOND) return false;
        text.remove_prefix(next.length);
    }
    return true;
}
