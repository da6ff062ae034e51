#include "StrayLines.h"

#include <CodeTrans.h>

#include <algorithm>

#include "Characters.h"

namespace
{
// Fewer could be hanzi of GBK by chance.
constexpr std::ptrdiff_t ENOUGH = 4;

bool IsUtf8BeyondChance(std::string_view line)
{
    const auto threes = std::count_if(line.begin(), line.end(), [](char c) {
        return static_cast<unsigned char>(c) >= 0xE0 && static_cast<unsigned char>(c) <= 0xEF;
    });
    return threes >= ENOUGH && IsFlawlessUtf8(line);
}
}  // namespace

Losses FindUtf8Lines(std::string_view text, int encoding, size_t describe)
{
    Losses lines;
    if (encoding != ENCODE_GBK && encoding != ENCODE_BIG5) return lines;
    for (size_t number = 1; !text.empty(); ++number) {
        const std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (!IsUtf8BeyondChance(line)) continue;
        const auto* const first = std::find_if(line.begin(), line.end(),
                                               [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
        const auto column = static_cast<size_t>(first - line.begin()) + 1;
        if (++lines.count <= describe)
            lines.described.push_back({number, column, "from here to the end of the line, this is UTF-8"});
    }
    return lines;
}
