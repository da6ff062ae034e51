// What a pair says by itself: the logarithms of its shares in the encodings, from which training starts.
//
// Training alone hardly meets a rare pair where it matters, in a text of two characters.
#ifndef MODEL_BUILDER_PRIORS_H
#define MODEL_BUILDER_PRIORS_H

#include "Likelihood.h"

using Weights = std::array<double, CANDIDATES>;  // in nats

class CPriors
{
public:
    explicit CPriors(const Ingredients& from);

    // Of a pair whose first byte is beyond ASCII.
    Weights Of(const std::string& pair) const;

private:
    const Recipe& m_recipe;
    CLikelihood m_likelihood;
    // How often each byte is the first and the second of a pair: two such make a pair out of step.
    std::array<CandidateShares, 0x100> m_asFirst{}, m_asSecond{};
};

#endif  // MODEL_BUILDER_PRIORS_H
