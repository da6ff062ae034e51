// Counts of one class of text: how often each character occurs and which follow it, line ends included.
//
// The text form is sorted by code point, one line a character: the character, its count, then its successors,
// each directly followed by its count. Successors that are too rare are left out; what the counts of a line
// lack against its total is drawn from the class as a whole. Digits, controls, space and backslash are
// written \XX.
#ifndef MODEL_BUILDER_STATISTICS_H
#define MODEL_BUILDER_STATISTICS_H

#include <cstdint>
#include <map>
#include <string>

struct Successors {
    uint32_t total = 0;  // occurrences of the character
    std::map<wchar_t, uint32_t> next;
};

struct Statistics {
    std::map<wchar_t, Successors> characters;

    // Adds a text `times` times; '\n' stands before and after it.
    void AddLine(const std::wstring& line, uint32_t times = 1);
    // Drops the rarest successors until at most `limit` are left, and returns the smallest count that stayed.
    uint32_t Prune(size_t limit);

    // `head` is put in front, a comment of one or more lines.
    void Write(const std::string& path, const std::string& head) const;
    static Statistics Read(const std::string& path);
};

#endif  // MODEL_BUILDER_STATISTICS_H
