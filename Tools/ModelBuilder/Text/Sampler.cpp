// Rows of running sums: a drawn number finds its character by bisection.
#include "Sampler.h"

#include <algorithm>

CSampler::CSampler(const Statistics& statistics)
{
    m_rowOf.fill(-1);
    uint32_t all = 0;
    for (const auto& [character, entry] : statistics.characters) {
        m_rowOf[static_cast<size_t>(character) & 0xFFFF] = static_cast<int32_t>(m_rows.size());
        const auto begin = static_cast<uint32_t>(m_next.size());
        uint32_t sum = 0;
        for (const auto& [next, count] : entry.next) {
            m_next.push_back(next);
            m_upTo.push_back(sum += count);
        }
        m_rows.push_back({entry.total, begin, static_cast<uint32_t>(m_next.size())});
        if (character == L'\n') continue;
        m_characters.push_back(character);
        m_charactersUpTo.push_back(all += entry.total);
    }
}

wchar_t CSampler::Any(CRandom& random) const
{
    const uint32_t at = random.Below(m_charactersUpTo.back());
    const auto found = std::upper_bound(m_charactersUpTo.begin(), m_charactersUpTo.end(), at);
    return m_characters[static_cast<size_t>(found - m_charactersUpTo.begin())];
}

wchar_t CSampler::After(wchar_t last, CRandom& random) const
{
    const int32_t index = m_rowOf[static_cast<size_t>(last) & 0xFFFF];
    if (index < 0) return Any(random);
    const Row& row = m_rows[static_cast<size_t>(index)];
    const auto begin = m_upTo.begin() + row.begin, end = m_upTo.begin() + row.end;
    const auto found = std::upper_bound(begin, end, random.Below(row.total));
    return found == end ? Any(random) : m_next[static_cast<size_t>(found - m_upTo.begin())];
}

std::wstring CSampler::Text(size_t length, uint32_t startsLine, CRandom& random, bool joined) const
{
    std::wstring text;
    wchar_t last = random.Chance(startsLine) ? L'\n' : Any(random);
    if (last != L'\n') text += last;
    while (text.size() < length) {
        last = After(last, random);
        if (last != L'\n' || !joined) text += last;
    }
    text.resize(length);
    return text;
}
