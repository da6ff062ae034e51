#include "TextChanges.h"

#include <algorithm>
#include <regex>

namespace
{
struct Kind {
    const char* kind;
    const char* pattern;  // the first group is the name
    bool atStart;         // the declaration stands in the first or second line, or at the very start
};

// Names of encodings have letters, digits and a few signs.
#define NAME "([A-Za-z][A-Za-z0-9_.:-]*)"

constexpr Kind KINDS[] = {
    {"the XML encoding", "^\\s*<\\?xml[^>]*\\sencoding\\s*=\\s*[\"']" NAME "[\"']", true},
    {"the CSS charset", "^@charset \"" NAME "\";", true},
    {"the HTML charset", "<meta\\s[^>]*charset\\s*=\\s*[\"']?\\s*" NAME, false},
    {"the e-mail's charset", "^content-type:[^\\n]*(?:\\n[ \\t][^\\n]*)*charset\\s*=\\s*\"?" NAME, false},
    {"the coding line", "^[^\\n]*?(?:#|//|/\\*|;|%|<!--|\")[^\\n]*?(?:coding|fileencoding|fenc)[:=]\\s*" NAME,
     true},
};

// Letters, digits and signs stay; all else becomes something that no pattern has.
std::string AsciiOf(std::u16string_view units)
{
    std::string text;
    for (const char16_t unit : units) text += unit < 0x80 ? static_cast<char>(unit) : '\x7F';
    return text;
}

// Most texts declare nothing, and the patterns take longer than the conversion of a short text.
bool MayDeclare(const std::string& text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(tolower(c)); });
    const auto has = [&](const char* word) { return lower.find(word) != std::string::npos; };
    return has("charset") || has("coding") || has("fenc");
}

size_t EndOfSecondLine(const std::string& text)
{
    const size_t first = text.find('\n');
    return first == std::string::npos ? text.size() : std::min(text.find('\n', first + 1), text.size());
}

// The head of an e-mail goes to the first empty line, and begins like one.
std::string HeadOfMail(const std::string& text)
{
    static const std::regex BEGINS("^[A-Za-z-]+:[ \\t]", std::regex::ECMAScript);
    if (!std::regex_search(text, BEGINS, std::regex_constants::match_continuous)) return {};
    return text.substr(0, std::min(text.find("\n\n"), text.find("\n\r\n")));
}

std::string Searched(const Kind& kind, const std::string& text)
{
    if (kind.kind == std::string("the e-mail's charset")) return HeadOfMail(text);
    return kind.atStart ? text.substr(0, EndOfSecondLine(text)) : text;
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
    const std::string text = AsciiOf(head.substr(0, DECLARATION_UNITS));
    std::vector<Declaration> found;
    if (!MayDeclare(text)) return found;
    for (const Kind& kind : KINDS) {
        const std::string searched = Searched(kind, text);
        const std::regex pattern(kind.pattern, std::regex::icase | std::regex::multiline);
        std::smatch match;
        if (!std::regex_search(searched, match, pattern)) continue;
        const auto at = static_cast<size_t>(match.position(1));
        const bool known =
            std::any_of(found.begin(), found.end(), [&](const Declaration& d) { return d.at == at; });
        if (!known) found.push_back({at, static_cast<size_t>(match.length(1)), kind.kind, match[1]});
    }
    return found;
}

std::vector<Declaration> CheckDeclarations(std::u16string& head, const Encoding& to, bool fix)
{
    std::vector<Declaration> wrong = FindDeclarations(head);
    wrong.erase(std::remove_if(wrong.begin(), wrong.end(),
                               [&](const Declaration& declaration) {
                                   const Encoding* const named = FindEncoding(declaration.name).encoding;
                                   return named == nullptr || named == &to ||
                                          (named == &ASCII && to.holdsAscii);
                               }),
                wrong.end());
    if (!fix) return wrong;
    std::sort(wrong.begin(), wrong.end(),
              [](const Declaration& a, const Declaration& b) { return a.at > b.at; });
    const std::string name = DeclaredName(to);
    for (const Declaration& declaration : wrong)
        head.replace(declaration.at, declaration.length, std::u16string(name.begin(), name.end()));
    return wrong;
}
