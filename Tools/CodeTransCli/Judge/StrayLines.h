// Lines of UTF-8 in a text of GBK or Big5, where the detector sees the most of the text only.
#ifndef CODETRANSCLI_STRAY_LINES_H
#define CODETRANSCLI_STRAY_LINES_H

#include <string_view>

#include "Conversion.h"

class StrayLines
{
public:
    // Describes at most `describe` lines.
    explicit StrayLines(size_t describe) : m_describe(describe) {}

    // The next piece of the text. Lines should be whole: of a line that is cut, each part is looked at alone.
    void Pass(std::string_view text);

    // A line counts when it is valid UTF-8 and has four characters of three bytes or more.
    const Losses& Found() const { return m_found; }

private:
    void PassFlawless(std::string_view lines);

    size_t m_describe;
    uint64_t m_line = 1;
    Losses m_found;
};

// Whether `line` counts.
bool IsUtf8BeyondChance(std::string_view line);

#endif  // CODETRANSCLI_STRAY_LINES_H
