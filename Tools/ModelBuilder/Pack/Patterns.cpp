// A line a parent, a cell a child.
#include "Patterns.h"

#include <sstream>
#include <stdexcept>

#include "TextFile.h"

namespace
{
std::string ValueText(int value)
{
    if (value == TRIE_VALUE_NONE) return "-";
    const Digits digits = DigitsOf(value);
    std::string text;
    for (const Candidate c : ALL_CANDIDATES) {
        if (!text.empty()) text += ',';
        text += std::to_string(digits[c]);
    }
    if (value & TRIE_VALUE_COUNTED) text += '*';
    if (TrieValueCode(value) != 0) text += '!' + std::to_string(TrieValueCode(value));
    return text;
}

int ParseValue(const std::string& text)
{
    if (text[0] == '-' && (text.size() == 1 || text[1] == '>')) return TRIE_VALUE_NONE;
    std::istringstream in(text);
    Digits digits{};
    char comma = ',';
    for (const Candidate c : ALL_CANDIDATES) {
        if (c != ALL_CANDIDATES[0]) in >> comma;
        in >> digits[c];
    }
    if (!in) throw std::runtime_error("no value: " + text);
    const size_t mark = text.find('!');
    const int code = mark == std::string::npos ? 0 : std::stoi(text.substr(mark + 1));
    return PackDigits(digits, code) | (text.find('*') == std::string::npos ? 0 : TRIE_VALUE_COUNTED);
}

State ParseState(const std::string& text)
{
    const size_t mark = text.find('>');
    return {ParseValue(text), mark == std::string::npos ? BY_RULE : static_cast<Region>(text.at(mark + 1))};
}
}  // namespace

void WritePatterns(const States& states, const std::string& path)
{
    std::map<StateName, std::string> lines;  // by parent
    for (const auto& [name, state] : states) {
        if (name.path.empty()) continue;
        std::string& line = lines[{name.region, name.path.substr(0, name.path.size() - 1)}];
        line += ' ' + ToHex(name.path.substr(name.path.size() - 1)) + ':' + ValueText(state.value);
        if (state.onward != BY_RULE) line += std::string(">") + static_cast<char>(state.onward);
    }
    std::string out =
        "# The detector's states: REGION PATH, then BYTE:GBK,BIG5,UTF-8,UTF-16LE of each child\n"
        "# DO NOT EDIT: made by ModelBuilder train\n";
    for (const auto& [parent, line] : lines)
        out += std::string(1, parent.region) + ' ' + (parent.path.empty() ? "-" : ToHex(parent.path)) + line +
               '\n';
    WriteFile(path, out);
}

States ReadPatterns(const std::string& path)
{
    States states = BasicStates();
    for (const std::string& line : ReadLines(path)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream cells(line);
        char region;
        std::string parent, cell;
        cells >> region >> parent;
        const std::string prefix = parent == "-" ? "" : FromHex(parent);
        while (cells >> cell)
            states[{.region = static_cast<Region>(region), .path = prefix + FromHex(cell.substr(0, 2))}] =
                ParseState(cell.substr(3));
    }
    return states;
}
