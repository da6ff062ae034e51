// The order of the additions is fixed, so the same samples give the same digits on every machine.
#include "Regression.h"

#include <algorithm>
#include <cmath>

#include "PortableMath.h"

namespace
{
// Softmax of the sums, less 1 for the right answer.
Weights Gradient(const Weights& sum, Candidate answer)
{
    const double top = *std::max_element(sum.begin(), sum.end());
    double all = 0;
    Weights share{};
    for (size_t c = 0; c < CANDIDATES; ++c) all += share[c] = PortableExp(sum[c] - top);
    for (size_t c = 0; c < CANDIDATES; ++c) share[c] = share[c] / all - (c == answer ? 1.0 : 0.0);
    return share;
}

constexpr double OUT_OF_QUESTION = 1000;  // nats
}  // namespace

CRegression::CRegression(const States& states, const Ingredients& from)
    : m_recipe(from.recipe), m_automaton(states), m_feature(m_automaton.NodeCount(), -1)
{
    const CPriors priors(from);
    std::unordered_map<const StateName*, size_t> nodes;
    for (size_t node = 0; node < m_feature.size(); ++node)
        if (const StateName* name = m_automaton.NameOf(static_cast<int>(node)); name != nullptr)
            nodes[name] = node;
    for (const auto& [name, state] : states) {
        if (!CarriesValue(name)) continue;
        m_feature[nodes.at(&name)] = static_cast<int>(m_features.size());
        m_features.push_back(NewFeature(name, priors));
    }
}

Feature CRegression::NewFeature(const StateName& name, const CPriors& priors)
{
    Feature feature{.name = &name,
                    .ascii = IsAscii(name.path) && name.region != REGION_LONE_PAIR,
                    .pair = IsPair(name),
                    .own = static_cast<int>(m_parameters.size())};
    m_parameters.emplace_back();
    if (feature.pair && ByteAt(name.path, 0) >= 0x80) {
        m_parameters.back().weight = m_parameters.back().origin = priors.Of(name.path);
        feature.counted = !IsPartOfUtf8(name.path);
        feature.utf8 =
            !feature.counted || (IsUtf8Tail(ByteAt(name.path, 0)) && IsUtf8Tail(ByteAt(name.path, 1)));
    }
    if (!feature.counted) feature.group = GroupParameter((feature.ascii ? "ascii " : "") + GroupOf(name));
    return feature;
}

int CRegression::GroupParameter(const std::string& group)
{
    const auto [found, isNew] = m_groups.emplace(group, static_cast<int>(m_parameters.size()));
    if (isNew) m_parameters.emplace_back();
    return found->second;
}

void CRegression::FindVisited(const std::string& bytes)
{
    m_visited.clear();
    m_automaton.ForEachStep(bytes, [this](int node, size_t) {
        const int feature = m_feature[static_cast<size_t>(node)];
        if (feature >= 0 && !m_features[static_cast<size_t>(feature)].silent)
            m_visited.push_back(static_cast<size_t>(feature));
    });
}

void CRegression::Add(Weights& sum, const Feature& feature) const
{
    for (const int term : {feature.own, feature.group})
        for (size_t c = 0; term >= 0 && c < CANDIDATES; ++c)
            sum[c] += m_parameters[static_cast<size_t>(term)].weight[c];
}

Weights CRegression::WeightOf(const Feature& feature) const
{
    Weights weight{};
    Add(weight, feature);
    return weight;
}

bool CRegression::Learn(const Sample& sample, double rate)
{
    FindVisited(sample.bytes);
    if (m_visited.empty()) return false;
    Weights sum{};
    bool asciiOnly = true;
    for (const size_t f : m_visited) {
        Add(sum, m_features[f]);
        asciiOnly = asciiOnly && m_features[f].ascii;
        ++m_features[f].seen[sample.answer];
    }
    if (asciiOnly) sum[CANDIDATE_BIG5] = sum[CANDIDATE_UTF8] = sum[CANDIDATE_GBK] - OUT_OF_QUESTION;
    const Weights gradient = Gradient(sum, sample.answer);
    for (const size_t f : m_visited) Step(m_features[f], gradient, rate * sample.weight);
    return sum[sample.answer] < *std::max_element(sum.begin(), sum.end());
}

void CRegression::Step(const Feature& feature, const Weights& gradient, double rate)
{
    const double ownRate = (feature.counted ? m_recipe.countedRate : m_recipe.learningRate) * rate;
    for (size_t c = 0; c < CANDIDATES; ++c) {
        if (feature.ascii && c != CANDIDATE_UNICODE) continue;
        if (!feature.utf8 && c == CANDIDATE_UTF8) continue;
        Step(m_parameters[static_cast<size_t>(feature.own)], c, gradient[c], ownRate);
        if (feature.group >= 0)
            Step(m_parameters[static_cast<size_t>(feature.group)], c, gradient[c], m_recipe.groupRate * rate);
    }
}

void CRegression::Step(Parameter& parameter, size_t candidate, double gradient, double rate) const
{
    gradient += m_recipe.decay * (parameter.weight[candidate] - parameter.origin[candidate]);
    parameter.squares[candidate] += gradient * gradient;
    parameter.weight[candidate] -=
        rate * gradient / std::sqrt(parameter.squares[candidate] + m_recipe.smoothing);
}
