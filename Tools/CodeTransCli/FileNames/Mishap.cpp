#include "Mishap.h"

namespace
{
bool IsHanzi(char32_t c)
{
    return c >= 0x4E00 && c <= 0x9FFF;
}

// Punctuation, brackets, numbers in circles, full-width forms; quotation marks, dashes and the euro sign.
bool IsChineseSign(char32_t c)
{
    const bool chinese =
        (c >= 0x2460 && c <= 0x2473) || (c >= 0x3000 && c <= 0x3029) || (c >= 0xFF01 && c <= 0xFF5E);
    const bool shared = c == 0xB7 || c == 0xD7 || (c >= 0x2014 && c <= 0x2026) || c == 0x2103 || c == 0x20AC;
    return chinese || shared;
}
bool IsSmallLetter(std::u32string_view text, size_t i)
{
    return i < text.size() && text[i] >= 'a' && text[i] <= 'z';
}
}  // namespace

Plausibility PlausibilityOf(std::u32string_view text, NameEncoding encoding)
{
    Plausibility result;
    for (const char32_t c : text) {
        if (IsHanzi(c)) {
            ++result.hanzi;
            result.common += IsCommonHanzi(c, encoding);
        } else if (c >= 0x80 && !IsChineseSign(c)) {
            ++result.strange;
        }
    }
    return result;
}

bool IsScattered(std::u32string_view text)
{
    size_t beyond = 0, alone = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] < 0x80) continue;
        ++beyond;
        const bool before = i > 0 && text[i - 1] >= 0x80;
        const bool after = i + 1 < text.size() && text[i + 1] >= 0x80;
        alone += !before && !after;
    }
    return 2 * alone > beyond;
}

bool IsInWords(std::u32string_view text, NameEncoding encoding)
{
    const size_t longest = encoding == NameEncoding::BIG_5 ? 2 : encoding == NameEncoding::GB ? 1 : 0;
    size_t runs = 0, inWords = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (!IsHanzi(text[i])) continue;
        const size_t begin = i;
        while (i + 1 < text.size() && IsHanzi(text[i + 1])) ++i;
        const bool touches = (begin > 0 && IsSmallLetter(text, begin - 1)) || IsSmallLetter(text, i + 1);
        ++runs;
        inWords += touches && i - begin < longest;
    }
    return 2 * inWords > runs;
}

std::optional<Undone> Undo(std::u32string_view garbled, const Mishap& mishap)
{
    const auto bytes = EncodeName(garbled, mishap.read);
    const auto text = bytes ? DecodeName(*bytes, mishap.meant) : std::nullopt;
    if (!text || EncodeName(*text, mishap.meant) != bytes || DecodeName(*bytes, mishap.read) != garbled)
        return std::nullopt;
    const Plausibility plausible = PlausibilityOf(*text, mishap.meant);
    if (plausible.hanzi == 0 || plausible.strange > 0 || 4 * plausible.common < plausible.hanzi)
        return std::nullopt;
    const bool western = IsScattered(garbled) || IsInWords(*text, mishap.meant);
    const bool chinese = plausible.hanzi >= 2 && 4 * plausible.common >= 3 * plausible.hanzi;
    return Undone{*bytes, *text, chinese && !western, western};
}
