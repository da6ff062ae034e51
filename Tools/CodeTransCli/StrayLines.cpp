#include "StrayLines.h"

#include <algorithm>

#include "UnicodeCodec.h"

namespace
{
// Fewer could be hanzi of GBK by chance.
constexpr std::ptrdiff_t ENOUGH = 4;
}  // namespace

// Most lines of GBK are no UTF-8 from their first hanzi on.
bool IsUtf8BeyondChance(std::string_view line)
{
    if (!IsFlawlessUtf8(line)) return false;
    const auto longer =
        std::count_if(line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) >= 0xE0; });
    return longer >= ENOUGH;
}

void StrayLines::Pass(std::string_view text)
{
    while (!text.empty()) {
        const size_t end = text.find('\n');
        const std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const size_t first = AsciiLength(line);
        if (first < line.size() && IsUtf8BeyondChance(line.substr(first)) && ++m_found.count <= m_describe)
            m_found.described.push_back(
                {m_line, first + 1, "from here to the end of the line, this is UTF-8"});
        m_line += end != std::string_view::npos;
    }
}
