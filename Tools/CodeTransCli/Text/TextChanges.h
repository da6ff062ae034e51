// What is changed in a text itself on its way: its line ends, and what it says of its encoding.
#ifndef CODETRANSCLI_TEXT_CHANGES_H
#define CODETRANSCLI_TEXT_CHANGES_H

#include <string>
#include <vector>

#include "Encoding.h"

enum class LineEnd { KEPT, LF, CRLF };

// Turns line ends, "\r\n", "\n" or a single "\r", into one kind.
class LineEnds
{
public:
    explicit LineEnds(LineEnd wanted) : m_wanted(wanted) {}

    // The next piece. A line end that may go on in the next one is held back.
    void Change(std::u16string& units, bool isLast);

private:
    LineEnd m_wanted;
    bool m_heldBack = false;  // "\r" at the end of the last piece
};

// What a text says of its own encoding: charset in HTML, encoding in XML, @charset in CSS, charset in the
// head of an e-mail, "coding" and "fileencoding" in the first two lines of source code.
struct Declaration {
    size_t at, length;  // of the encoding's name, in units
    std::string kind;   // "the HTML charset"
    std::string name;
};

// `head` is the start of the text, as far as declarations may stand in it.
std::vector<Declaration> FindDeclarations(std::u16string_view head);

constexpr size_t DECLARATION_UNITS = 4096;

// Those that name another encoding than `to`. With `fix`, rewritten in `head`, too.
std::vector<Declaration> CheckDeclarations(std::u16string& head, const Encoding& to, bool fix);

#endif  // CODETRANSCLI_TEXT_CHANGES_H
