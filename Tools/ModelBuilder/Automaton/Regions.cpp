// The table of the regions, and each one's rule of return as a function.
//
// Every rule leads to a shorter path or towards the main region, whose root falls back to the start; so every
// chain of failure links ends there. GBK and Big5 text is read by pairs from the main region's root. UTF-8 is
// followed beside it: its characters are three bytes long, so after one of them a pair is over and the next
// one has begun; after six bytes two characters and three pairs are over, and both readings meet again.
#include "Regions.h"

#include <ostream>
#include <stdexcept>

#include "Bytes.h"
#include "Detection.h"

namespace
{
StateName Root(Region region)
{
    return {.region = region, .path = ""};
}

StateName Main(const std::string& path)
{
    return {.region = REGION_MAIN, .path = path};
}

StateName ToTwin(const StateName& state)
{
    if (state.path.empty()) return Root(REGION_START);
    const bool beginsWord = state.path.size() == 1 && ByteAt(state.path, 0) >= 0x80;
    return {.region = beginsWord ? REGION_WORD : REGION_MAIN, .path = state.path};
}

StateName ToMainRoot(const StateName&)
{
    return Root(REGION_MAIN);
}

StateName ToMain(const StateName& state)
{
    return Main(state.path);
}

StateName ToForeignRoot(const StateName&)
{
    return Root(REGION_FOREIGN);
}

StateName ToForeign(const StateName& state)
{
    return {.region = REGION_FOREIGN, .path = state.path};
}

// A line end is one byte, unless it may be a unit of UTF-16LE with what follows.
bool IsLineEndAlone(const std::string& path)
{
    const unsigned second = ByteAt(path, 1);
    return IsLineEnd(path[0]) && (path.size() > 2 ? second >= 0x80 : second >= 0xA0 && second != 0xFF);
}

// Two characters of ASCII of which the second is no letter, which would be the high byte of a hanzi as well.
bool EndsInStep(const std::string& path)
{
    return IsAsciiText(ByteAt(path, 0)) && IsAsciiText(ByteAt(path, 1)) && ByteAt(path, 1) < 0x40;
}

// What a state means once its first unit is given up: the rest of its bytes, read from where that unit ended.
StateName WithoutFirstUnit(const StateName& state)
{
    const std::string& path = state.path;
    if (path.empty()) return Root(REGION_START);
    if (path.size() == 1) return Root(IsLead(ByteAt(path, 0)) ? REGION_BROKEN : REGION_WORD);
    if (IsLineEndAlone(path)) return Main(path.substr(1));
    if (LeadAfterAscii(path)) return {.region = REGION_UNIT, .path = path.substr(1)};
    if (path.size() == 2 && OpensUtf8(path)) return Root(REGION_THIRD);
    if (path.size() == 2 && EndsInStep(path)) return Root(REGION_WORD);
    if (!StartsWithUtf8Character(path)) return Main(path.substr(2));
    if (path.size() <= 4) return {.region = REGION_AFTER, .path = path.substr(2)};
    if (ByteAt(path, 3) < 0x80) return Main(path.substr(4));
    return {.region = REGION_SECOND, .path = path.substr(3)};
}

StateName AwaitThird(const StateName& state)
{
    return state.path.empty() ? Root(REGION_MAIN) : StateName{.region = REGION_AFTER, .path = state.path};
}

// The tail byte and the next one: the second character begins, or both readings are at a pair's end.
StateName AfterCharacter(const StateName& state)
{
    if (state.path.size() < 2) return Main(state.path);
    return IsUtf8Lead(ByteAt(state.path, 1))
               ? StateName{.region = REGION_SECOND, .path = state.path.substr(1)}
               : Root(REGION_MAIN);
}

StateName WithinSecond(const StateName& state)
{
    const std::string& path = state.path;
    if (path.size() < 2) return Root(REGION_MAIN);
    if (path.size() > 2) return Main(path.substr(3));
    return {.region = OpensUtf8(path) ? REGION_MAIN : REGION_AFTER, .path = path.substr(1)};
}

StateName WithinUnit(const StateName& state)
{
    return state.path.size() == 2 ? StateName{.region = REGION_NEXT_UNIT, .path = state.path.substr(1)}
                                  : Root(REGION_MAIN);
}

StateName WithinNextUnit(const StateName& state)
{
    if (state.path.size() == 1) return Root(REGION_RARE_UNIT);
    if (state.path.size() == 2 && IsLeadAndHighByte(ByteAt(state.path, 1)))
        return {.region = REGION_UNIT, .path = state.path.substr(1)};
    return Root(REGION_MAIN);
}

StateName WithinRareUnit(const StateName& state)
{
    return {.region = state.path.empty() ? REGION_MAIN : REGION_UNIT, .path = state.path};
}

// Half-way through a pair of ASCII, the byte that is none may be the high byte of a unit of UTF-16LE.
StateName OutOfAscii(const StateName& state)
{
    const bool halfway =
        IsRegionOf(state.region, REGION_ASCII_TRAIL) || state.region == REGION_ASCII_ONLY_TRAIL;
    const bool maybeUnit = halfway && state.path.size() == 1 && IsLeadAndHighByte(ByteAt(state.path, 0));
    if (maybeUnit) return {.region = REGION_UNIT, .path = state.path};
    return {.region = state.path.size() < 2 ? REGION_WORD : REGION_MAIN, .path = state.path};
}

// Foreign text is taken by twos where the first byte may lead a pair, and by threes where it may be UTF-8.
StateName WithinForeign(const StateName& state)
{
    const std::string& path = state.path;
    if (path.empty()) return Root(REGION_MAIN);
    const bool goesOn = path.size() == 1 ? IsLead(ByteAt(path, 0)) : path.size() == 2 && OpensUtf8(path);
    return Root(goesOn ? REGION_FOREIGN_TRAIL : REGION_FOREIGN);
}

StateName BehindZeros(const StateName& state)
{
    if (state.path.empty() || !IsLead(ByteAt(state.path, 0))) return Root(REGION_FOREIGN);
    return Main(state.path);
}

// Behind a hint ASCII is skipped; anything else is read as ever.
StateName BehindHint(const StateName& state)
{
    const std::string& path = state.path;
    if (path.empty()) return Root(REGION_MAIN);
    const bool isUnicode = state.region == RegionOf(REGION_HINT, CANDIDATE_UNICODE) ||
                           state.region == RegionOf(REGION_NEXT_LINE, CANDIDATE_UNICODE);
    const bool isAscii =
        ByteAt(path, 0) < 0x80 && (isUnicode ? path.size() == 2 && path[1] == 0 : path.size() == 1);
    return isAscii ? Root(state.region) : Main(path);
}
}  // namespace

const std::vector<RegionRow>& RegionTable()
{
    static const std::vector<RegionRow> TABLE = {
        {REGION_START, 1, "start",
         "the start of the text, where a byte-order mark may be; short texts have states of their own",
         "to the same byte in W if it is beyond ASCII, otherwise to the same bytes in M", ToTwin, true},
        {REGION_MAIN, 1, "main",
         "two-byte text, pair by pair; a third byte completes a UTF-8 character or begins a known sequence",
         "to the path without its first code unit", WithoutFirstUnit, true},
        {REGION_WORD, 1, "word",
         "after ASCII, where a character begins as at the start; short texts have states of their own",
         "to the same bytes in M", ToMain, false},
        {REGION_LONE_PAIR, 1, "lone pair",
         "after ASCII and one pair that may be an accented letter in UTF-8; ASCII after it decides",
         "to the same bytes in M", ToMain, false},
        {REGION_HANGUL, 1, "Hangul",
         "after an ASCII character in UTF-16LE; a Hangul syllable whose low byte is ASCII may follow",
         "to the same bytes in M", ToMain, false},
        {REGION_THIRD, 1, "third", "the third byte follows of a UTF-8 character that has no state of its own",
         "to the same byte in C", AwaitThird, false},
        {REGION_AFTER, 1, "after", "a UTF-8 character ended, or its last byte was the lead byte of a pair",
         "after a lead byte of UTF-8 to U, otherwise to M", AfterCharacter, false},
        {REGION_SECOND, 1, "second",
         "the second UTF-8 character in a row, whose first byte was the trail byte of a pair or began one",
         "to M, or to C when the character has ended", WithinSecond, false},
        {REGION_UNIT, 1, "unit",
         "a UTF-16LE unit ended whose low byte is ASCII, or ASCII and the lead byte of a pair",
         "to E with the last byte", WithinUnit, false},
        {REGION_NEXT_UNIT, 1, "next unit",
         "one byte later: the low byte of the next unit, or the trail byte of that pair",
         "to F, to D if both are possible again, or to M", WithinNextUnit, false},
        {REGION_RARE_UNIT, 1, "rare unit", "like E, if the two bytes are not a unit that is likely there",
         "to D with the last byte", WithinRareUnit, false},
        {REGION_BROKEN, 1, "broken", "after a lead byte without a trail byte", "to the same bytes in M",
         ToMain, false},
        {REGION_ASCII, 4, "ASCII", "the text began with one, two, three, or more pairs of ASCII characters",
         "to the same bytes in W, after two bytes in M", OutOfAscii, false},
        {REGION_ASCII_TRAIL, 4, "ASCII trail", "the same, plus one ASCII character",
         "to D after a possible high byte, otherwise to the same bytes in W or M", OutOfAscii, false},
        {REGION_ASCII_ONLY, 1, "only ASCII", "after a pair that can only be ASCII, anywhere in the text",
         "to the same bytes in W, after two bytes in M", OutOfAscii, false},
        {REGION_ASCII_ONLY_TRAIL, 1, "only ASCII, trail", "the same, plus one ASCII character",
         "to D after a possible high byte, otherwise to the same bytes in W or M", OutOfAscii, false},
        {REGION_LOW_HALF, 1, "low half", "the low byte of the low surrogate follows", "to M", ToMainRoot,
         false},
        {REGION_HIGH_HALF, 1, "high half", "the high byte of the low surrogate follows", "to M", ToMainRoot,
         false},
        {REGION_SIGN_THIRD, 1, "sign's third", "the third byte follows of a UTF-8 character of four bytes",
         "to M", ToMainRoot, false},
        {REGION_SIGN_LAST, 1, "sign's last", "the fourth byte follows", "to M", ToMainRoot, false},
        {REGION_ZEROS, 1, "zeros", "after a code unit 0000: the end of the text, or binary data",
         "after a lead byte to M, otherwise to N", BehindZeros, false},
        {REGION_FOREIGN, 1, "foreign", "text in another encoding, or binary data: nothing is added",
         "to P within a pair or a UTF-8 character, otherwise to its own root", WithinForeign, false},
        {REGION_FOREIGN_TRAIL, 1, "foreign trail", "like N, within a pair", "to N", ToForeignRoot, false},
        {REGION_RETURN, 4, "return",
         "foreign text, after one character that is frequent in a candidate's text", "to the same bytes in N",
         ToForeign, false},
        {REGION_HINT, 4, "hint", "after a hint, which is a passage that is typical of one candidate",
         "after ASCII to its own root, otherwise to M", BehindHint, false},
        {REGION_NEXT_LINE, 4, "next line", "the line after a hint",
         "after ASCII to its own root, otherwise to M", BehindHint, false},
    };
    return TABLE;
}

const RegionRow& RowOf(Region region)
{
    for (const RegionRow& row : RegionTable())
        if (region >= row.first && region < row.first + row.count) return row;
    throw std::runtime_error(std::string("there is no region '") + static_cast<char>(region) + "'");
}

void PrintRegions(std::ostream& out)
{
    out << "| letter | region | what the bytes so far may be | where its states fall back to "
           "|\n|---|---|---|---|\n";
    for (const RegionRow& row : RegionTable()) {
        out << "| " << static_cast<char>(row.first);
        if (row.count > 1) out << " to " << static_cast<char>(row.first + row.count - 1);
        out << " | " << row.name << " | " << row.meaning << " | " << row.rule << " |\n";
    }
}
