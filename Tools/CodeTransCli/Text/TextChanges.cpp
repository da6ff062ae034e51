#include "TextChanges.h"

#include <algorithm>
#include <cctype>

namespace
{
// Lower-case ASCII; all else becomes a sign that no declaration has.
std::string LowerOf(std::u16string_view units)
{
    std::string text;
    for (const char16_t unit : units)
        text += unit < 0x80 ? static_cast<char>(tolower(static_cast<unsigned char>(unit))) : '\x7F';
    return text;
}

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool IsOfName(char c)
{
    return isalnum(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '_' || c == '.' || c == ':';
}

// Looks for declarations in a stretch of a text: a key word, one of some signs, and the name of an encoding,
// with blanks between them and perhaps in quotes.
class Search
{
public:
    explicit Search(const std::string& text) : m_text(text) {}

    void In(size_t begin, size_t end, const std::string& word, const std::string& signs, const char* kind)
    {
        for (size_t at = m_text.find(word, begin); at < end; at = m_text.find(word, at + 1)) {
            size_t next = SkipBlanks(at + word.size(), end);
            if (next >= end || signs.find(m_text[next]) == std::string::npos) continue;
            next = SkipBlanks(next + 1, end);
            if (next < end && (m_text[next] == '"' || m_text[next] == '\'')) next = SkipBlanks(next + 1, end);
            size_t length = 0;
            while (next + length < end && IsOfName(m_text[next + length])) ++length;
            if (length == 0 || isalpha(static_cast<unsigned char>(m_text[next])) == 0) continue;
            m_found.push_back({next, length, kind, m_text.substr(next, length)});
            return;
        }
    }

    std::vector<Declaration> Found() const { return m_found; }

private:
    size_t SkipBlanks(size_t at, size_t end) const
    {
        while (at < end && IsBlank(m_text[at])) ++at;
        return at;
    }

    const std::string& m_text;
    std::vector<Declaration> m_found;
};

size_t EndOf(const std::string& text, const char* what, size_t from)
{
    return std::min(text.find(what, from), text.size());
}

void SearchXml(const std::string& text, Search& search)
{
    const size_t begin = std::min(text.find_first_not_of(" \t\r\n"), text.size());
    if (text.compare(begin, 5, "<?xml") == 0)
        search.In(begin, EndOf(text, "?>", begin), "encoding", "=", "the XML encoding");
}

void SearchCss(const std::string& text, Search& search)
{
    if (text.compare(0, 10, "@charset \"") == 0)
        search.In(0, EndOf(text, ";", 0), "@charset", "\"", "the CSS charset");
}

void SearchHtml(const std::string& text, Search& search)
{
    for (size_t tag = text.find("<meta"); tag != std::string::npos; tag = text.find("<meta", tag + 1))
        search.In(tag, EndOf(text, ">", tag), "charset", "=", "the HTML charset");
}

// The head of an e-mail goes to the first empty line. A line that begins with a blank goes on with the one
// before.
void SearchMail(const std::string& text, Search& search)
{
    const size_t colon = text.find(':');
    const auto isOfField = [](char c) { return isalpha(static_cast<unsigned char>(c)) != 0 || c == '-'; };
    if (colon == std::string::npos || colon == 0) return;
    if (!std::all_of(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(colon), isOfField)) return;
    const size_t head = std::min(EndOf(text, "\n\n", 0), EndOf(text, "\n\r\n", 0));
    for (size_t line = 0; line < head; line = EndOf(text, "\n", line) + 1) {
        if (text.compare(line, 13, "content-type:") != 0) continue;
        size_t end = EndOf(text, "\n", line);
        while (end + 1 < head && (text[end + 1] == ' ' || text[end + 1] == '\t'))
            end = EndOf(text, "\n", end + 1);
        search.In(line, end, "charset", "=", "the e-mail's charset");
    }
}

// In a comment of the first two lines, as for Python, Emacs and Vim.
void SearchSource(const std::string& text, Search& search)
{
    size_t line = 0;
    for (int number = 0; number < 2 && line < text.size(); ++number) {
        const size_t end = EndOf(text, "\n", line);
        const std::string content = text.substr(line, end - line);
        for (const char* const comment : {"#", "//", "/*", ";", "%", "<!--", "\""}) {
            const size_t at = content.find(comment);
            if (at == std::string::npos) continue;
            for (const char* const word : {"coding", "fenc"})
                search.In(line + at, end, word, ":=", "the coding line");
            break;
        }
        line = end + 1;
    }
}

// As such declarations write it.
std::string DeclaredName(const Encoding& to)
{
    if (&to == &UTF16LE || &to == &UTF16BE) return "utf-16";
    std::string name = to.name;
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char c) { return static_cast<char>(tolower(c)); });
    return name;
}
}  // namespace

void LineEnds::Change(std::u16string& units, bool isLast)
{
    const std::u16string_view wanted = m_wanted == LineEnd::CRLF ? u"\r\n" : u"\n";
    std::u16string changed;
    changed.reserve(units.size() + units.size() / 16 + 2);
    for (const char16_t unit : units) {
        if (m_heldBack || unit == u'\n') changed += wanted;
        const bool isEnd = unit == u'\n' && !m_heldBack;
        const bool completes = unit == u'\n' && m_heldBack;
        m_heldBack = unit == u'\r';
        if (!isEnd && !completes && unit != u'\r') changed += unit;
    }
    if (isLast && m_heldBack) changed += wanted;
    if (isLast) m_heldBack = false;
    units = std::move(changed);
}

std::vector<Declaration> FindDeclarations(std::u16string_view head)
{
    const std::string text = LowerOf(head.substr(0, DECLARATION_UNITS));
    Search search(text);
    SearchXml(text, search);
    SearchCss(text, search);
    SearchHtml(text, search);
    SearchMail(text, search);
    SearchSource(text, search);
    return search.Found();
}

std::vector<Declaration> CheckDeclarations(std::u16string& head, const Encoding& to, bool fix)
{
    std::vector<Declaration> wrong = FindDeclarations(head);
    // A place is named once, though two kinds may have found it.
    std::sort(wrong.begin(), wrong.end(),
              [](const Declaration& a, const Declaration& b) { return a.at > b.at; });
    wrong.erase(std::unique(wrong.begin(), wrong.end(),
                            [](const Declaration& a, const Declaration& b) { return a.at == b.at; }),
                wrong.end());
    wrong.erase(std::remove_if(wrong.begin(), wrong.end(),
                               [&](const Declaration& declaration) {
                                   const Encoding* const named = FindEncoding(declaration.name).encoding;
                                   return named == nullptr || named == &to ||
                                          (named == &ASCII && to.holdsAscii);
                               }),
                wrong.end());
    if (!fix) return wrong;
    const std::string name = DeclaredName(to);
    for (const Declaration& declaration : wrong)
        head.replace(declaration.at, declaration.length, std::u16string(name.begin(), name.end()));
    return wrong;
}
