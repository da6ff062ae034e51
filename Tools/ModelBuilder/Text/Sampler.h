// Text drawn from statistics: a walk from character to successor, in proportion to the counts.
#ifndef MODEL_BUILDER_SAMPLER_H
#define MODEL_BUILDER_SAMPLER_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "Random.h"
#include "Statistics.h"

class CSampler
{
public:
    explicit CSampler(const Statistics& statistics);

    // A character of the class, whatever stands before it.
    wchar_t Any(CRandom& random) const;

    // A character that may follow `last`.
    wchar_t After(wchar_t last, CRandom& random) const;

    // `length` characters of running text; `startsLine` percent of them begin where a line does. Line ends
    // that come up are kept, or left out when `joined`.
    std::wstring Text(size_t length, uint32_t startsLine, CRandom& random, bool joined = false) const;

private:
    struct Row {
        uint32_t total, begin, end;  // its successors are m_next[begin, end)
    };
    std::array<int32_t, 65536> m_rowOf;
    std::vector<Row> m_rows;
    std::vector<wchar_t> m_next;
    std::vector<uint32_t> m_upTo;  // running sums of counts within a row
    std::vector<wchar_t> m_characters;
    std::vector<uint32_t> m_charactersUpTo;
};

#endif  // MODEL_BUILDER_SAMPLER_H
