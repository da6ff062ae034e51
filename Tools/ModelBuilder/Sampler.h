// Text drawn from statistics: a walk from character to successor, in proportion to the counts.
//
// The same seed gives the same text on every machine: integers only, and a generator of our own.
#ifndef MODEL_BUILDER_SAMPLER_H
#define MODEL_BUILDER_SAMPLER_H

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "Statistics.h"

// Sebastiano Vigna's SplitMix64 step, public domain.
class CRandom
{
public:
    explicit CRandom(uint64_t seed) : m_state(seed) {}

    uint64_t Next()
    {
        m_state += 0x9E3779B97F4A7C15ULL;
        uint64_t z = m_state;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }

    // 0 to bound - 1.
    uint32_t Below(uint32_t bound) { return static_cast<uint32_t>((Next() >> 32) * bound >> 32); }

    bool Chance(uint32_t percent) { return Below(100) < percent; }

private:
    uint64_t m_state;
};

class CSampler
{
public:
    explicit CSampler(const Statistics& statistics);

    // A character of the class, whatever stands before it.
    wchar_t Any(CRandom& random) const;

    // A character that may follow `last`.
    wchar_t After(wchar_t last, CRandom& random) const;

    // `length` characters of running text. Line ends that come up are kept, or left out when `joined`.
    std::wstring Text(size_t length, CRandom& random, bool joined = false) const;

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
