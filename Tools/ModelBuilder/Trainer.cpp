// Logistic regression over visited states; see Trainer.h.
#include "Trainer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>
#include <unordered_map>

#include "Shape.h"

namespace
{
using Weights = std::array<double, CANDIDATES>;

constexpr double UNITS_A_NAT = 2.0;
constexpr double LEARNING_RATE = 0.25;
constexpr double GROUP_RATE = 0.05;
constexpr uint64_t DOUBTLESS_ODDS = 1000;  // an ASCII state's visits by ASCII to those by UTF-16LE

// e to the power of x <= 0, by basic operations: halve the argument 20 times, one Taylor step, square back.
double Exp(double x)
{
    if (x < -40) return 0;
    double y = x / 1048576.0;
    y = 1 + y * (1 + y / 2);
    for (int i = 0; i < 20; ++i) y *= y;
    return y;
}

struct Parameter {
    Weights weight{};
    Weights squares{};

    void Step(size_t c, double gradient, double rate)
    {
        squares[c] += gradient * gradient;
        weight[c] -= rate * gradient / std::sqrt(squares[c] + 1e-2);
    }
};

class CTrainer
{
public:
    CTrainer(const StateValues& states, const CSampleSource& source) : m_source(source)
    {
        const std::vector<PackableState> linked = LinkStates(states);
        const PackedTrie packed = PackStates(linked);
        m_nodes = packed.nodes;
        m_feature.assign(m_nodes.size(), -1);
        std::map<std::string, int> groups;
        size_t number = 0;
        for (const auto& [name, value] : states) {
            if (CarriesValue(name)) {
                m_feature[static_cast<size_t>(packed.nodeOf[number])] = static_cast<int>(m_own.size());
                m_names.push_back(&name);
                m_own.emplace_back();
                m_ascii.push_back(IsAscii(name));
                m_pair.push_back(name.region == REGION_MAIN && name.path.size() == 2);
                m_seen.emplace_back();
                const auto group = groups.emplace(GroupOf(name) + (IsAscii(name) ? "a" : ""), groups.size()).first;
                m_group.push_back(group->second);
            }
            ++number;
        }
        m_groups.resize(groups.size());
        m_silent.assign(m_own.size(), false);
    }

    void Train(const TrainingPlan& plan)
    {
        CRandom random(plan.seed);
        uint64_t wrong = 0;
        for (uint64_t n = 1; n <= plan.samples; ++n) {
            const double rate = n * 10 < plan.samples * 7 ? 1.0 : n * 10 < plan.samples * 9 ? 0.3 : 0.1;
            if (n * 2 == plan.samples) SilenceDoubtfulAscii();
            wrong += Learn(m_source.Draw(random), rate);
            if (n % 500'000 == 0) {
                std::cerr << n / 1000 << "k samples, " << static_cast<double>(wrong) / 5000.0 << " % of the last wrong\n";
                wrong = 0;
            }
        }
    }

    void Round(StateValues& states) const
    {
        for (size_t f = 0; f < m_own.size(); ++f) states[*m_names[f]] = RoundedValue(f);
    }

private:
    // Whether an ASCII state speaks against UTF-16LE without being a stranger to it: a negative digit would cost
    // that its ten to one.
    bool IsDoubtful(size_t f) const
    {
        const auto& seen = m_seen[f];
        const uint64_t others = uint64_t{seen[CANDIDATE_GBK]} + seen[CANDIDATE_BIG5] + seen[CANDIDATE_UTF8];
        return m_ascii[f] && Total(f)[CANDIDATE_UNICODE] * UNITS_A_NAT < 0.5 && seen[CANDIDATE_UNICODE] > 3 &&
               others < DOUBTLESS_ODDS * seen[CANDIDATE_UNICODE];
    }

    // Doubtful states fall silent, and the rest learn to do without them.
    void SilenceDoubtfulAscii()
    {
        for (size_t f = 0; f < m_own.size(); ++f) m_silent[f] = IsDoubtful(f);
    }

    void Walk(const std::string& bytes)
    {
        m_visited.clear();
        int state = 0;
        for (const char c : bytes) {
            const auto byte = static_cast<unsigned char>(c);
            for (;;) {
                const int child = m_nodes[static_cast<size_t>(state)].nBase + byte;
                if (m_nodes[static_cast<size_t>(child)].nCheck == state) {
                    state = child;
                    break;
                }
                state = m_nodes[static_cast<size_t>(state)].nFail;
            }
            const int feature = m_feature[static_cast<size_t>(state)];
            if (feature >= 0 && !m_silent[static_cast<size_t>(feature)]) m_visited.push_back(static_cast<size_t>(feature));
        }
    }

    // One step of gradient descent; whether the sample was decided wrongly before it.
    bool Learn(const Sample& sample, double rate)
    {
        Walk(sample.bytes);
        if (m_visited.empty()) return false;
        Weights sum{};
        bool asciiOnly = true;
        for (const size_t f : m_visited) {
            const Weights w = Total(f);
            for (size_t c = 0; c < CANDIDATES; ++c) sum[c] += w[c];
            asciiOnly = asciiOnly && m_ascii[f];
            ++m_seen[f][sample.answer];
        }
        if (asciiOnly) sum[CANDIDATE_BIG5] = sum[CANDIDATE_UTF8] = sum[CANDIDATE_GBK] - 1000;
        const double top = *std::max_element(sum.begin(), sum.end());
        double all = 0;
        Weights share{};
        for (size_t c = 0; c < CANDIDATES; ++c) all += share[c] = Exp(sum[c] - top);
        for (size_t c = 0; c < CANDIDATES; ++c) share[c] = share[c] / all - (c == sample.answer ? 1.0 : 0.0);
        for (const size_t f : m_visited) Step(f, share, rate);
        return sum[sample.answer] < top;
    }

    Weights Total(size_t f) const
    {
        const Weights& own = m_own[f].weight;
        const Weights& group = m_groups[static_cast<size_t>(m_group[f])].weight;
        Weights w{};
        for (size_t c = 0; c < CANDIDATES; ++c) w[c] = own[c] + group[c];
        return w;
    }

    void Step(size_t f, const Weights& gradient, double rate)
    {
        Parameter& own = m_own[f];
        Parameter& group = m_groups[static_cast<size_t>(m_group[f])];
        for (size_t c = 0; c < CANDIDATES; ++c) {
            if (m_ascii[f] && c != CANDIDATE_UNICODE) continue;
            if (m_pair[f] && c == CANDIDATE_UTF8) continue;  // half a character, or none
            own.Step(c, gradient[c], LEARNING_RATE * rate);
            group.Step(c, gradient[c], GROUP_RATE * rate);
        }
    }

    // Digits for one state. Adding the same to all four changes no comparison of sums, so they are shifted until
    // every encoding in whose text the state really occurs has a positive one.
    int RoundedValue(size_t f) const
    {
        const Weights w = Total(f);
        const std::array<uint32_t, CANDIDATES>& seen = m_seen[f];
        if (m_ascii[f]) {
            const int digit = std::clamp(static_cast<int>(std::lround(w[CANDIDATE_UNICODE] * UNITS_A_NAT)), -9, 10);
            if (m_silent[f] || IsDoubtful(f)) return TRIE_VALUE_NONE;
            return PackTrieValue(0, {0, 0, digit, 0}) | (digit == 0 ? TRIE_VALUE_COUNTED : 0);
        }
        std::array<int, CANDIDATES> digit;
        int least = 100, most = -100;
        uint32_t all = 0;
        for (const uint32_t count : seen) all += count;
        for (size_t c = 0; c < CANDIDATES; ++c) {
            digit[c] = static_cast<int>(std::lround(w[c] * UNITS_A_NAT));
            if (c != CANDIDATE_UTF8) most = std::max(most, digit[c]);
            if (seen[c] > 0 && (c == CANDIDATE_UNICODE || seen[c] * 50 >= all)) least = std::min(least, digit[c]);
        }
        if (least == 100) least = *std::min_element(digit.begin(), digit.end());
        const int shift = std::min(1 - least, 10 - most);
        for (size_t c = 0; c < CANDIDATES; ++c) digit[c] = std::clamp(digit[c] + shift, -9, c == CANDIDATE_UTF8 ? 23 : 10);
        const int value = PackTrieValue(0, {digit[CANDIDATE_GBK], digit[CANDIDATE_BIG5], digit[CANDIDATE_UNICODE], digit[CANDIDATE_UTF8]});
        return value;
    }

    const CSampleSource& m_source;
    std::vector<TrieNode> m_nodes;
    std::vector<int> m_feature;  // by node; -1 for none
    std::vector<const StateName*> m_names;
    std::vector<Parameter> m_own, m_groups;
    std::vector<int> m_group;
    std::vector<char> m_ascii, m_silent, m_pair;
    std::vector<std::array<uint32_t, CANDIDATES>> m_seen;
    std::vector<size_t> m_visited;
};
}  // namespace

void TrainValues(StateValues& states, const CSampleSource& source, const TrainingPlan& plan)
{
    CTrainer trainer(states, source);
    trainer.Train(plan);
    trainer.Round(states);
}
