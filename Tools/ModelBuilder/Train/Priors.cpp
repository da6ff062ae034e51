// Shares in step and, for texts that begin in mid-character, out of step.
#include "Priors.h"

#include <algorithm>

#include "Bytes.h"
#include "PortableMath.h"

CPriors::CPriors(const Ingredients& from) : m_recipe(from.recipe), m_likelihood(from)
{
    for (unsigned first = 0; first < 0x100; ++first)
        for (unsigned second = 0; second < 0x100; ++second) {
            const CandidateShares shares = m_likelihood.Of(TwoBytes(first, second));
            for (const Candidate c : PAIR_CANDIDATES) {
                m_asFirst[first][c] += shares[c];
                m_asSecond[second][c] += shares[c];
            }
        }
}

Weights CPriors::Of(const std::string& pair) const
{
    const unsigned first = ByteAt(pair, 0), second = ByteAt(pair, 1);
    CandidateShares shares = m_likelihood.Of(pair);
    double mean = 0;
    for (const Candidate c : PAIR_CANDIDATES) {
        shares[c] += m_recipe.leastCounted + m_recipe.outOfStep * m_asSecond[first][c] * m_asFirst[second][c];
        mean += shares[c] / 3;
    }
    // Two of UTF-8's 64 tail bytes, or one and the lead byte of a hanzi.
    const bool isTail = IsUtf8Tail(first) && (IsUtf8Tail(second) || (second >= 0xE3 && second <= 0xE9));
    shares[CANDIDATE_UTF8] += m_recipe.leastCounted + (isTail ? m_recipe.outOfStep / (64 * 64) : 0);
    Weights prior{};
    for (size_t c = 0; c < CANDIDATES; ++c)
        prior[c] = std::max(PortableLog(shares[c] / mean), m_recipe.mostAgainst);
    if (OpensUtf8(pair)) prior[CANDIDATE_UTF8] = 0;  // what comes third will tell
    return prior;
}
