// Tables of what to insert; places and kinds are drawn.
#include "Oddities.h"

void EndLinesAsWindows(std::wstring& text)
{
    for (size_t at = text.find(L'\n'); at != std::wstring::npos; at = text.find(L'\n', at + 2))
        text.insert(at, 1, L'\r');
}

void InsertRun(std::wstring& text, CRandom& random)
{
    static constexpr wchar_t RANGES[][2] = {{0x3041, 83}, {0x30A1, 86}, {0x3105, 37}, {0xFF01, 94},
                                            {0xFF10, 10}, {0x2550, 30}, {0x2500, 60}, {0x2460, 10},
                                            {0x2160, 10}, {0x0391, 24}, {0x0430, 32}, {0x2190, 4},
                                            {0x25A0, 30}, {0x2601, 10}, {0x3008, 12}};
    const auto& range = RANGES[random.Below(sizeof RANGES / sizeof RANGES[0])];
    const size_t length = 1 + random.Below(6);
    const bool same = random.Chance(40);
    const size_t at = random.Below(static_cast<uint32_t>(text.size() + 1));
    std::wstring run;
    wchar_t drawn = 0;
    for (size_t i = 0; i < length; ++i) {
        if (i == 0 || !same)
            drawn = static_cast<wchar_t>(range[0] +
                                         static_cast<wchar_t>(random.Below(static_cast<uint32_t>(range[1]))));
        run += drawn;
    }
    text.insert(at, run);
}

void InsertEscapes(std::wstring& text, CRandom& random)
{
    static const wchar_t* const ESCAPES[] = {L"\x1b[m",        L"\x1b[1;33m",    L"\x1b[32m",
                                             L"\x1b[0;37;44m", L"\x1b[1;31;40m", L"\x1b[K"};
    for (uint32_t runs = 1 + random.Below(4); runs > 0; --runs) {
        const wchar_t* escape =
            ESCAPES[random.Below(6)];  // drawn before the place: the order is part of the result
        text.insert(random.Below(static_cast<uint32_t>(text.size() + 1)), escape);
    }
}

void Damage(std::string& bytes, CRandom& random)
{
    if (bytes.size() < 12) return;
    const uint32_t kind = random.Below(100);
    if (kind < 5) bytes.erase(0, 1);
    if (kind >= 3 && kind < 10) bytes.pop_back();
    if (kind >= 10 && kind < 12) {
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
