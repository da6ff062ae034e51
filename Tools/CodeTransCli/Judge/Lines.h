// Texts whose lines are in different encodings, such as logs that several programs have written.
#ifndef CODETRANSCLI_LINES_H
#define CODETRANSCLI_LINES_H

#include <map>
#include <string>
#include <string_view>

#include "Encoding.h"

class LineReader
{
public:
    // `head` is the start of the text. Answers with a margin below `sure` are not followed.
    LineReader(std::string_view head, int sure);

    // The encoding of a line, with or without its end. A line that leaves a doubt is in the encoding that
    // most lines of the head are in, if it can be read so.
    const Encoding* EncodingOfLine(std::string_view line);

    // Whether all lines that were asked for are in `encoding`, or in ASCII where that is the same there.
    bool AreAllIn(const Encoding& encoding) const;

    // "3 in GBK, 2 in UTF-8 and 1 in ASCII": of the lines that were asked for.
    std::string Counts() const;

private:
    // Null for lines that leave a doubt.
    const Encoding* ClearEncodingOf(std::string_view line) const;

    int m_sure;
    const Encoding* m_usual = &UTF8;
    std::map<std::string, uint64_t> m_counts;
};

#endif  // CODETRANSCLI_LINES_H
