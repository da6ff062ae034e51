// The states of the detector; see Shape.h.
#include "Shape.h"

#include <algorithm>

#include "TextFile.h"

namespace
{
std::string Bytes(unsigned first, unsigned second)
{
    return {static_cast<char>(first), static_cast<char>(second)};
}

// Pairs of GBK and Big5, and the halves of GB18030's four-byte characters, which are two such pairs.
void AddPairs(States& states)
{
    for (unsigned lead = 0x81; lead <= 0xFE; ++lead)
        for (unsigned trail = 0x30; trail <= 0xFE; ++trail)
            if (trail <= 0x39 || (trail >= 0x40 && trail != 0x7F))
                AddState(states, REGION_MAIN, Bytes(lead, trail));
}

// A unit whose second byte is a lead byte of Big5 or of common GBK would take the lead of a pair that follows
// ASCII.
bool TakesLeadAfterAscii(unsigned low, unsigned high)
{
    return low < 0x80 && high >= 0xA0 && high != 0xFF;
}

// No text has them, but for what ends lines and pages and escapes.
bool IsControl(unsigned code)
{
    return (code < 0x20 && code != '\t' && code != '\n' && code != '\f' && code != '\r' && code != 0x1B) ||
           (code >= 0x7F && code < 0xA0);
}

void AddUnicode(States& states, const CEncoder& encoder)
{
    for (unsigned code = 0; code < 0x10000; ++code) {
        const auto character = static_cast<wchar_t>(code);
        const bool known = (code < 0x180 && !IsControl(code)) || encoder.Has(CANDIDATE_GBK, character) ||
                           encoder.Has(CANDIDATE_BIG5, character);
        if (known && !TakesLeadAfterAscii(code & 0xFF, code >> 8))
            AddState(states, REGION_MAIN, Bytes(code & 0xFF, code >> 8));
    }
    AddState(states, REGION_MAIN, "\xFF\xFE");
}

// Two ASCII characters that are no unit of UTF-16LE in use: they tell the two apart, and ASCII goes by twos
// as well.
void AddAscii(States& states)
{
    const auto isText = [](unsigned byte) {
        return byte == '\t' || byte == '\n' || byte == '\r' || (byte >= 0x20 && byte < 0x7F);
    };
    for (unsigned first = 0; first < 0x7F; ++first)
        for (unsigned second = 0; second < 0x7F; ++second)
            if ((isText(first) || first == 0x1B) && isText(second))
                AddState(states, REGION_MAIN, Bytes(first, second));
}

// The states that keep UTF-16LE apart from ASCII with two-byte text behind it.
void AddUnits(States& states, const std::vector<wchar_t>& known)
{
    for (unsigned lead = 0x81; lead < 0xA0; ++lead)
        for (unsigned trail = 0x40; trail < 0x100; ++trail) AddState(states, REGION_UNIT, Bytes(lead, trail));
    for (const wchar_t character : known) {
        const unsigned code = static_cast<uint16_t>(character);
        if ((code & 0xFF) >= 0x40) AddState(states, REGION_NEXT_UNIT, Bytes(code & 0xFF, code >> 8));
    }
    // The high byte of a rare unit, or the lead byte of a pair. 82 and 83 lead Japanese syllables in
    // Shift_JIS.
    for (unsigned high = 0x81; high < 0xA0; ++high)
        if (high != 0x82 && high != 0x83)
            AddState(states, REGION_RARE_UNIT, std::string(1, static_cast<char>(high)));
}

// Of the characters in two bytes Chinese text knows Latin, Greek and Cyrillic letters and a few signs.
bool IsCommonUtf8Lead(unsigned byte)
{
    return byte == 0xC2 || byte == 0xC3 || (byte >= 0xCE && byte <= 0xD1) || (byte >= 0xE1 && byte <= 0xEF);
}

void AddUtf8(States& states, const std::vector<wchar_t>& common)
{
    for (const wchar_t character : common) {
        std::string bytes;
        AppendUtf8(bytes, character);
        if (bytes.size() != 3) continue;
        AddState(states, REGION_MAIN, bytes);
        AddState(states, REGION_SECOND, bytes);
    }
    for (unsigned tail = 0x80; tail < 0xC0; ++tail) {
        AddState(states, REGION_THIRD, std::string(1, static_cast<char>(tail)));
        for (unsigned next = 0x0A; next < 0xF0; ++next)
            if (next < 0x7F || IsCommonUtf8Lead(next)) AddState(states, REGION_AFTER, Bytes(tail, next));
        for (unsigned lead = 0xC2; lead < 0xF0; ++lead)
            if (IsCommonUtf8Lead(lead)) AddState(states, REGION_SECOND, Bytes(lead, tail));
    }
}

void AddMarks(States& states)
{
    AddState(states, REGION_START, "\xFF\xFE");
    AddState(states, REGION_START, "\xEF\xBB\xBF");
    states[{REGION_START, "\xFF\xFE"}] = {PackTrieValue(ENCODE_UNICODE, {0, 0, 0, 0})};
    states[{REGION_START, "\xEF\xBB\xBF"}] = {PackTrieValue(ENCODE_UTF8, {0, 0, 0, 0})};
}
}  // namespace

States ShapeOfDetector(const CEncoder& encoder, const std::vector<wchar_t>& known,
                       const std::vector<wchar_t>& common)
{
    States states = BasicStates();
    AddPairs(states);
    AddUnicode(states, encoder);
    AddAscii(states);
    AddUnits(states, known);
    AddUtf8(states, common);
    AddMarks(states);
    return states;
}

bool CarriesValue(const StateName& state)
{
    const std::string& path = state.path;
    switch (state.region) {
        case REGION_THIRD:
            return path.size() == 1;
        case REGION_UNIT:
        case REGION_NEXT_UNIT:
        case REGION_AFTER:
            return path.size() == 2;
        case REGION_SECOND:
            return path.size() == 3 || (path.size() == 2 && !OpensUtf8(path));
        case REGION_MAIN:
            return path.size() == 2 || StartsWithUtf8Character(path);
        default:
            return false;
    }
}

bool IsAscii(const StateName& state)
{
    return std::all_of(state.path.begin(), state.path.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string GroupOf(const StateName& state)
{
    const std::string& path = state.path;
    std::string group(1, state.region);
    const auto zone = [&](size_t i, int bits) {
        group.push_back(static_cast<char>(ByteAt(path, i) >> bits));
    };
    const bool latin = path.size() == 2 && state.region == REGION_MAIN && path[1] == 0;  // UTF-16LE below 100
    if (path.size() == 2 && state.region != REGION_AFTER && !latin) zone(0, 3);
    if (path.size() == 2) zone(1, state.region == REGION_AFTER ? 3 : 4);
    if (path.size() == 3) zone(0, 0);
    if (path.size() == 3) zone(1, 2);
    return group;
}
