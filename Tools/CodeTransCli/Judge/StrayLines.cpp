#include "StrayLines.h"

#include <algorithm>

#include "UnicodeCodec.h"

namespace
{
// Fewer could be hanzi of GBK by chance.
constexpr std::ptrdiff_t ENOUGH = 4;
}  // namespace

bool IsUtf8BeyondChance(std::string_view line)
{
    if (!IsFlawlessUtf8(line)) return false;
    const auto longer =
        std::count_if(line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) >= 0xE0; });
    return longer >= ENOUGH;
}

// Most lines of GBK are no UTF-8 from their first hanzi on. So the text is read as UTF-8 as far as that goes,
// which takes in whole lines of ASCII and of UTF-8, and then up to the end of the line.
void StrayLines::Pass(std::string_view text)
{
    while (!text.empty()) {
        const std::string_view flawless = text.substr(0, Utf8Length(text));
        const size_t lineEnd = flawless.size() == text.size() ? text.size() : flawless.rfind('\n') + 1;
        PassFlawless(text.substr(0, lineEnd));
        text.remove_prefix(lineEnd);
        if (text.empty()) break;
        const size_t end = text.find('\n', flawless.size() - lineEnd);
        m_line += end != std::string_view::npos;
        text.remove_prefix(std::min(end, text.size() - 1) + 1);
    }
}

void StrayLines::PassFlawless(std::string_view lines)
{
    while (!lines.empty()) {
        const size_t end = lines.find('\n');
        const std::string_view line = lines.substr(0, end);
        lines.remove_prefix(std::min(line.size() + 1, lines.size()));
        if (IsUtf8BeyondChance(line) && ++m_found.count <= m_describe)
            m_found.described.push_back(
                {m_line, AsciiLength(line) + 1, "from here to the end of the line, the text is UTF-8"});
        m_line += end != std::string_view::npos;
    }
}
