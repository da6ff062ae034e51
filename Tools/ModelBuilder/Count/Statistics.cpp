// The text form of the counts, and the dropping of rare pairs.
#include "Statistics.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "TextFile.h"

namespace
{
// Line ends and tabulators, printable characters; no private use, surrogates or non-characters.
bool Counts(wchar_t c)
{
    if (c < 0x20) return c == L'\n' || c == L'\t';
    return c != 0x7F && !(c >= 0x80 && c < 0xA0) && c < 0xFFF0 && !(c >= 0xD800 && c <= 0xF8FF) &&
           c != 0xFEFF;
}

void AppendCharacter(std::string& to, wchar_t c)
{
    if (c > L' ' && c != L'\\' && !(c >= L'0' && c <= L'9')) {
        AppendUtf8(to, c);
    } else {
        to += '\\' + ToHex(std::string(1, static_cast<char>(c)));
    }
}

// The character at `at`, which moves behind it.
wchar_t TakeCharacter(const std::wstring& line, size_t& at)
{
    const wchar_t c = line.at(at++);
    if (c != L'\\') return c;
    at += 2;
    return static_cast<wchar_t>(std::stoi(line.substr(at - 2, 2), nullptr, 16));
}

uint32_t TakeNumber(const std::wstring& line, size_t& at)
{
    uint32_t number = 0;
    while (at < line.size() && line[at] >= L'0' && line[at] <= L'9')
        number = number * 10 + static_cast<uint32_t>(line[at++] - L'0');
    return number;
}
}  // namespace

void Statistics::AddLine(const std::wstring& line, uint32_t times)
{
    wchar_t last = L'\n';
    const auto add = [&](wchar_t c) {
        Successors& entry = characters[last];
        entry.total += times;
        entry.next[c] += times;
        last = c;
    };
    for (const wchar_t c : line)
        if (Counts(c) && c != L'\n') add(c);
    add(L'\n');
}

uint32_t Statistics::Prune(size_t limit)
{
    std::vector<uint32_t> counts;
    for (const auto& [character, entry] : characters)
        for (const auto& [next, count] : entry.next) counts.push_back(count);
    if (counts.size() <= limit) return 1;
    std::nth_element(counts.begin(), counts.begin() + static_cast<std::ptrdiff_t>(limit), counts.end(),
                     std::greater<>());
    const uint32_t least = counts[limit] + 1;
    for (auto& [character, entry] : characters)
        std::erase_if(entry.next, [least](const auto& item) { return item.second < least; });
    return least;
}

void Statistics::Write(const std::string& path, const std::string& head) const
{
    std::string out = head;
    for (const auto& [character, entry] : characters) {
        AppendCharacter(out, character);
        out += ' ' + std::to_string(entry.total) + ' ';
        for (const auto& [next, count] : entry.next) {
            AppendCharacter(out, next);
            out += std::to_string(count);
        }
        out += '\n';
    }
    WriteFile(path, out);
}

Statistics Statistics::Read(const std::string& path)
{
    Statistics read;
    bool heading = true;
    for (const std::string& line : ReadLines(path)) {
        heading = heading && line.starts_with("# ");
        if (heading) continue;
        const std::wstring text = DecodeLine(line);
        size_t at = 0;
        Successors& entry = read.characters[TakeCharacter(text, at)];
        ++at;
        entry.total = TakeNumber(text, at);
        ++at;
        while (at < text.size()) {
            const wchar_t next = TakeCharacter(text, at);
            entry.next[next] = TakeNumber(text, at);
        }
    }
    if (read.characters.empty()) throw std::runtime_error("no statistics in " + path);
    return read;
}
