// Tables of what to insert; places and kinds are drawn.
#include "Oddities.h"

#include <iterator>
#include <vector>

#include "Bytes.h"

void EndLinesAsWindows(std::wstring& text)
{
    for (size_t at = text.find(L'\n'); at != std::wstring::npos; at = text.find(L'\n', at + 2))
        text.insert(at, 1, L'\r');
}

namespace
{
struct Range {
    unsigned first, count;
};

wchar_t DrawFrom(const Range& range, CRandom& random)
{
    return static_cast<wchar_t>(range.first + random.Below(range.count));
}

// Kana, Zhuyin, full-width forms, frames and signs of both standards, Greek and Cyrillic.
constexpr Range COMMON_SIGNS[] = {{0x3041, 83}, {0x30A1, 86}, {0x3105, 37}, {0xFF01, 94}, {0xFF10, 10},
                                  {0x2550, 30}, {0x2500, 60}, {0x2460, 10}, {0x2160, 10}, {0x0391, 24},
                                  {0x0430, 32}, {0x2190, 4},  {0x25A0, 30}, {0x2601, 10}, {0x3008, 12}};

// What the two standards lack: vertical, small and half-width forms, Hangul, enclosed characters, units,
// emoji, hanzi beyond U+FFFF.
constexpr Range RARE_SIGNS[] = {{0xFE30, 32},   {0xFE50, 28},     {0xFF61, 63},    {0xAC00, 11172},
                                {0x3131, 50},   {0x3200, 256},    {0x3300, 256},   {0xF900, 300},
                                {0x1F300, 768}, {0x20000, 42720}, {0x2A700, 5700}, {0x2000, 112},
                                {0x2100, 300},  {0x2700, 190},    {0x31A0, 27}};

// Frames and blocks that both GBK and Big5 may hold, bullets, rules.
constexpr Range ART[] = {{0x2500, 75}, {0x2550, 36}, {0x2550, 36}, {0x2581, 15}, {0x2593, 3}, {0x25A0, 2},
                         {0x25B2, 2},  {0x25BC, 2},  {0x25C6, 2},  {0x25CB, 5},  {0x25E2, 4}, {0x2605, 2},
                         {0x3000, 4},  {0x2500, 1},  {0x2550, 1},  {0x2588, 1},  {0xFF0D, 1}, {0x2192, 1},
                         {0x203B, 1},  {0x2014, 1},  {0x2026, 1},  {0x25CF, 1},  {0xFE4F, 1}, {0x2502, 1}};
}  // namespace

void InsertRun(std::wstring& text, const Recipe& recipe, CRandom& random)
{
    const auto& range = random.Chance(recipe.commonSigns)
                            ? COMMON_SIGNS[random.Below(std::size(COMMON_SIGNS))]
                            : RARE_SIGNS[random.Below(std::size(RARE_SIGNS))];
    const size_t length = 1 + random.Below(recipe.longestRun);
    const bool same = random.Chance(recipe.sameSign);
    const size_t at = random.Below(text.size() + 1);
    std::wstring run;
    wchar_t drawn = 0;
    for (size_t i = 0; i < length; ++i) {
        if (i == 0 || !same) drawn = DrawFrom(range, random);
        run += drawn;
    }
    text.insert(at, run);
}

void InsertSigns(std::wstring& text, const Recipe& recipe, CRandom& random)
{
    static const std::wstring SIGNS =
        L"\u00A9\u00AE\u2122\u20AC\u00A3\u00A5\u00A7\u00B6\u00B0\u00B5\u00B1\u00D7\u00F7\u00BD\u00BC\u00B2"
        L"\u00B3"
        L"\u201C\u201D\u2018\u2019\u2026\u2013\u2014\u2022\u2192\u2190\u2713\u2714\u2717\u00AB\u00BB\u00A0"
        L"\u00B7\u2212"
        L"\u2264\u2265\u2260\u221E\u03B1\u03B2\u03C0\u03BC\u03A9\u2191\u2193\u25CF\u25A0\u2605\u2020\u2116"
        L"\u00BF\u00A1"
        L"\u00E9\u00E8\u00FC\u00F1\u00E7\u00E5\u00F8\u00DF\u0142\u00F6\u00E4\u00E1\u00ED\u00F3\u00FA\u00E0"
        L"\u00EF\u00C9";
    const bool same = random.Chance(recipe.sameSignInEnglish);
    wchar_t sign = SIGNS[random.Below(SIGNS.size())];
    for (uint32_t count = 1 + random.Below(recipe.mostSigns); count > 0; --count) {
        text.insert(random.Below(text.size() + 1), 1, sign);
        if (!same) sign = SIGNS[random.Below(SIGNS.size())];
    }
}

void InsertEmoji(std::wstring& text, const Recipe& recipe, CRandom& random)
{
    static constexpr Range EMOJI[] = {
        {0x1F300, 768}, {0x1F600, 80}, {0x1F900, 256}, {0x1F1E6, 26}, {0x2600, 200}};
    std::wstring run;
    for (uint32_t count = 1 + random.Below(recipe.mostEmoji); count > 0; --count) {
        run += DrawFrom(EMOJI[random.Below(std::size(EMOJI))], random);
        if (random.Chance(recipe.emojiSkin)) run += static_cast<wchar_t>(0x1F3FB + random.Below(5));
        if (random.Chance(recipe.emojiForm)) run += L'\xFE0F';
        if (count > 1 && random.Chance(recipe.emojiJoined)) run += L'\x200D';
    }
    text.insert(random.Below(text.size() + 1), run);
}

std::wstring Art(size_t length, const Recipe& recipe, CRandom& random)
{
    static const std::wstring ASCII = L"  |-+=*/\\_:.[]()<>#0123456789\n";
    std::wstring text;
    const bool hasAscii = random.Chance(recipe.artWithAscii);
    while (text.size() < length) {
        const Range& range = ART[random.Below(std::size(ART))];
        const bool isAscii = hasAscii && random.Chance(recipe.asciiInArt);
        const wchar_t sign = isAscii ? ASCII[random.Below(ASCII.size())] : DrawFrom(range, random);
        const size_t run = random.Chance(recipe.singleInArt) ? 1 : 1 + random.Below(recipe.longestArtRun);
        for (size_t i = 0; i < run; ++i)
            text += isAscii || random.Chance(recipe.sameInArtRun) ? sign : DrawFrom(range, random);
    }
    if (random.Chance(recipe.escapesInArt)) InsertEscapes(text, recipe, random);
    return text;
}

void InsertFourBytes(std::string& bytes, const Recipe& recipe, CRandom& random)
{
    std::vector<size_t> places;  // between two characters
    for (size_t i = 0; i <= bytes.size(); i += i < bytes.size() && IsLead(ByteAt(bytes, i)) ? 2 : 1)
        places.push_back(i);
    std::string run;
    for (uint32_t count = 1 + random.Below(recipe.mostFourByte); count > 0; --count) {
        const bool isBeyond = random.Chance(recipe.fourByteBeyond);  // U+FFFF
        for (const auto& [first, leads] : {std::pair{isBeyond ? 0x95U : 0x81U, 4U}, {0x81U, 126U}}) {
            const uint32_t digit = random.Below(10U), lead = random.Below(leads);
            run += TwoBytes(first + lead, '0' + digit);
        }
    }
    bytes.insert(places[random.Below(places.size())], run);
}

void InsertEscapes(std::wstring& text, const Recipe& recipe, CRandom& random)
{
    static const wchar_t* const ESCAPES[] = {L"\x1b[m",        L"\x1b[1;33m",    L"\x1b[32m",
                                             L"\x1b[0;37;44m", L"\x1b[1;31;40m", L"\x1b[K"};
    for (uint32_t runs = 1 + random.Below(recipe.mostEscapes); runs > 0; --runs) {
        const wchar_t* escape =
            ESCAPES[random.Below(6)];  // drawn before the place: the order is part of the result
        text.insert(random.Below(static_cast<uint32_t>(text.size() + 1)), escape);
    }
}

void Damage(std::string& bytes, const Recipe& recipe, CRandom& random)
{
    if (bytes.size() < recipe.leastDamaged) return;
    // Some lose a byte at both ends; what a byte was put into has lost none.
    const uint32_t kind = random.Below(100), cut = recipe.cutFront + recipe.cutBack - recipe.cutBoth;
    if (kind < recipe.cutFront) bytes.erase(0, 1);
    if (kind >= recipe.cutFront - recipe.cutBoth && kind < cut) bytes.pop_back();
    if (kind >= cut && kind < cut + recipe.strayByte) {
        const auto stray = static_cast<char>(random.Below(256));
        bytes.insert(random.Below(static_cast<uint32_t>(bytes.size())), 1, stray);
    }
}

std::string MachineText(size_t length, CRandom& random)
{
    static const std::string ALPHABETS[] = {
        "0123456789abcdef",
        "0123456789ABCDEF",
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/",
        "0123456789,.\n",
        "0123456789 ",
        "0123456789-:. ",
        "abcdefghijklmnopqrstuvwxyz",
        "ABCDEFGHIJKLMNOPQRSTUVWXYZ",
        "01",
        "-=*#_ \n"};
    const std::string& alphabet = ALPHABETS[random.Below(10)];
    std::string text;
    while (text.size() < length) text += alphabet[random.Below(static_cast<uint32_t>(alphabet.size()))];
    return text;
}
