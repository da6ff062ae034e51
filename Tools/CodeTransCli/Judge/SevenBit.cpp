#include "SevenBit.h"

#include <algorithm>

#include "Codec.h"
#include "Identity.h"

using namespace std::string_view_literals;

namespace
{
// ISO 2022 announces its character sets: ESC $ and what follows.
struct Announcement {
    std::string_view sequence;
    const char* encoding;
};

constexpr Announcement ANNOUNCEMENTS[] = {
    {"\x1B$)A"sv, "ISO-2022-CN"},     {"\x1B$)G"sv, "ISO-2022-CN"}, {"\x1B$*H"sv, "ISO-2022-CN"},
    {"\x1B$)E"sv, "ISO-2022-CN-EXT"}, {"\x1B$)C"sv, "ISO-2022-KR"}, {"\x1B$B"sv, "ISO-2022-JP"},
    {"\x1B$@"sv, "ISO-2022-JP"},
};

std::u16string Decoded(std::string_view text, const Encoding& encoding)
{
    std::u16string units;
    return MakeDecoder(encoding)->Read(text, units) == text.size() ? units : std::u16string();
}

bool IsWritingOfUtf7(char16_t unit)
{
    return unit >= 0x80 && unit < 0xFFFE && !(unit >= 0xE000 && unit <= 0xF8FF);
}

// Some "+" begins letters of base 64 that are text beyond ASCII. Encoders write ASCII letters as they are.
bool HasUtf7(std::string_view text)
{
    if (text.find('+') == std::string_view::npos) return false;
    const std::u16string units = Decoded(text, UTF7);
    return std::any_of(units.begin(), units.end(), [](char16_t unit) { return unit >= 0x80; }) &&
           std::all_of(units.begin(), units.end(),
                       [](char16_t unit) { return unit < 0x80 || IsWritingOfUtf7(unit); });
}

bool HasHz(std::string_view text)
{
    if (text.find("~{") == std::string_view::npos) return false;
    const std::u16string units = Decoded(text, HZ);
    return std::any_of(units.begin(), units.end(), [](char16_t unit) { return unit >= 0x80; });
}

bool IsWritingOfUtf32(char32_t codePoint)
{
    const bool control = codePoint < 0x20 && (codePoint < 0x08 || codePoint > 0x0D) && codePoint != 0x1B;
    return !control && !(codePoint >= 0xE000 && codePoint <= 0xF8FF) && (codePoint & 0xFFFE) != 0xFFFE;
}
}  // namespace

const Encoding* FindSevenBit(std::string_view text)
{
    for (const auto& [sequence, name] : ANNOUNCEMENTS) {
        if (text.find(sequence) == std::string_view::npos) continue;
        const Encoding* const encoding = FindEncoding(name).encoding;
        if (encoding != nullptr && CanBeRead(text, *encoding)) return encoding;
    }
    if (HasHz(text)) return &HZ;
    return HasUtf7(text) ? &UTF7 : nullptr;
}

bool HasCommonHz(std::string_view text)
{
    size_t hanzi = 0;
    for (size_t at = text.find("~{"); at != std::string_view::npos; at = text.find("~{", at)) {
        const size_t end = std::min(text.find("~}", at), text.size());
        for (at += 2; at + 1 < end && text[at] > ' '; at += 2) {
            const bool isHanzi = text[at] >= 0x30 && text[at] <= 0x57;
            if (!isHanzi && (text[at] < 0x21 || text[at] > 0x23)) return false;
            hanzi += isHanzi;
        }
    }
    return hanzi >= 2;
}

const Encoding* FindUtf32(std::string_view text)
{
    if (text.size() % 4 != 0 || text.empty()) return nullptr;
    for (const Encoding* const encoding : {&UTF32LE, &UTF32BE}) {
        const auto decoder = MakeDecoder(*encoding);
        size_t used = 0;
        for (; used < text.size(); used += 4) {
            const Character next = decoder->First(text.substr(used, 4));
            if (next.fault != Fault::NONE || !IsWritingOfUtf32(next.codePoint)) break;
        }
        if (used == text.size()) return encoding;
    }
    return nullptr;
}
