// Logistic regression over visited states; see Trainer.h.
#include "Trainer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>
#include <unordered_map>

#include "Likelihood.h"
#include "Shape.h"

namespace
{
using Weights = std::array<double, CANDIDATES>;

constexpr double UNITS_A_NAT = 3.0;  // digits stand for thirds of a nat; finer or coarser changes little
constexpr double LEARNING_RATE = 0.25;
constexpr double GROUP_RATE = 0.05;
constexpr double COUNTED_RATE = 0.05;   // of what starts from the statistics
constexpr double LEAST_COUNTED = 1e-7;  // share that a pair has in every encoding
constexpr double MOST_AGAINST = -8.0;   // nats
// Part of the texts that begin in mid-character, so that all their pairs are out of step.
constexpr double OUT_OF_STEP = 0.006;
// A pair of a smaller share of its encoding's pairs does not count for it.
constexpr double LEAST_SHARE = 2e-6;
// An ASCII state that ASCII visits so many times as often as UTF-16LE may say no to UTF-16LE.
constexpr uint64_t DOUBTLESS_ODDS = 1000;

// e to the power of x <= 0, by basic operations: halve the argument 20 times, one Taylor step, square back.
double Exp(double x)
{
    if (x < -40) return 0;
    double y = x / 1048576.0;
    y = 1 + y * (1 + y / 2);
    for (int i = 0; i < 20; ++i) y *= y;
    return y;
}

// The natural logarithm of x > 0, by basic operations as well: halve or double towards 1, then the series.
double Log(double x)
{
    constexpr double LN2 = 0.69314718055994531;
    int doubled = 0;
    while (x > 1.5) x /= 2, ++doubled;
    while (x < 0.75) x *= 2, --doubled;
    const double t = (x - 1) / (x + 1);
    double sum = 0, power = t;
    for (int i = 1; i < 30; i += 2, power *= t * t) sum += power / i;
    return 2 * sum + doubled * LN2;
}

// Punctuation and full-width forms of GBK and Big5.
bool IsSign(const StateName& state, size_t c)
{
    const unsigned lead = ByteAt(state.path, 0), trail = ByteAt(state.path, 1);
    if (c == CANDIDATE_GBK) return (lead == 0xA1 || lead == 0xA3) && trail >= 0xA1;
    return c == CANDIDATE_BIG5 && lead >= 0xA1 && lead <= 0xA3;
}

// Whether a pair may be a hanzi of UTF-16LE, however rare: none must cost a text its ten to one.
bool MayBeHanzi(const std::string& pair)
{
    return ByteAt(pair, 1) >= 0x4E && ByteAt(pair, 1) < 0xA0;
}

// Or a letter, a sign or a full-width form.
bool MayBeSign(const std::string& pair)
{
    const unsigned high = ByteAt(pair, 1);
    return high <= 0x04 || (high >= 0x20 && high <= 0x33) || high >= 0xFE;
}

// Two bytes that words are made of, in languages that are not ours as well.
bool IsWordLike(const std::string& path)
{
    const auto isLower = [](unsigned byte) { return byte >= 'a' && byte <= 'z'; };
    const auto isUpper = [](unsigned byte) { return byte >= 'A' && byte <= 'Z'; };
    if (path.size() != 2) return false;
    const unsigned first = ByteAt(path, 0), second = ByteAt(path, 1);
    return isLower(second) && (isLower(first) || isUpper(first) || first == ' ' || first == '\n');
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

// Two bytes that may stand in UTF-8 as well.
bool IsPartOfUtf8(const std::string& pair)
{
    return IsUtf8Lead(ByteAt(pair, 0)) && IsUtf8Tail(ByteAt(pair, 1));
}

// One state that carries a value. Its weight is its own plus its group's, if it has one.
struct Feature {
    const StateName* name;
    int own = -1, group = -1;
    bool ascii = false, silent = false, pair = false;
    bool counted = false;  // a pair of the two-byte encodings alone: the statistics say it all
    std::array<uint32_t, CANDIDATES> seen{};  // visits in training
};

class CTrainer
{
public:
    CTrainer(const States& states, const CSampleSource& source, const CEncoder& encoder)
        : m_source(source), m_encoder(encoder), m_likelihood(source, encoder)
    {
        CountBytes();
        const PackedTrie packed = PackStates(LinkStates(states));
        m_nodes = packed.nodes;
        m_feature.assign(m_nodes.size(), -1);
        size_t number = 0;
        for (const auto& [name, value] : states) {
            const auto node = static_cast<size_t>(packed.nodeOf[number++]);
            if (!CarriesValue(name)) continue;
            m_feature[node] = static_cast<int>(m_features.size());
            m_features.push_back(NewFeature(name));
        }
    }

    void Train(const TrainingPlan& plan)
    {
        CRandom random(plan.seed);
        uint64_t wrong = 0;
        for (uint64_t n = 1; n <= plan.samples; ++n) {
            const double rate = n * 10 < plan.samples * 7 ? 1.0 : n * 10 < plan.samples * 9 ? 0.3 : 0.1;
            wrong += Learn(m_source.Draw(random), rate);
            if (n == plan.samples / 3 || n == plan.samples) SilenceDoubtfulAscii();
            if (n % 500'000 == 0) {
                std::cerr << n / 1000 << "k samples, " << static_cast<double>(wrong) / 5000.0
                          << " % of the last wrong\n";
                wrong = 0;
            }
        }
    }

    void Round(States& states)
    {
        for (const Feature& feature : m_features)
            for (size_t c = 0; c < CANDIDATES; ++c) m_all[c] += feature.pair ? feature.seen[c] : 0;
        for (const Feature& feature : m_features) states[*feature.name] = {RoundedValue(feature)};
        // A lead byte at the very start counts for all alike: two pairs are otherwise refused if one is
        // doubtful.
        for (int lead = 0x81; lead < 0xFF; ++lead)
            states[{REGION_START, std::string(1, static_cast<char>(lead))}] = {
                PackTrieValue(0, {1, 1, 1, 1})};
    }

private:
    Feature NewFeature(const StateName& name)
    {
        Feature feature{&name};
        feature.ascii = IsAscii(name);
        feature.pair = name.region == REGION_MAIN && name.path.size() == 2;
        feature.own = static_cast<int>(m_parameters.size());
        m_parameters.emplace_back();
        if (feature.pair && ByteAt(name.path, 0) >= 0x80) {
            m_parameters.back().weight = PriorOf(name.path);
            feature.counted = !IsPartOfUtf8(name.path);
        }
        if (!feature.counted) feature.group = GroupParameter((feature.ascii ? "ascii " : "") + GroupOf(name));
        return feature;
    }

    int GroupParameter(const std::string& group)
    {
        const auto [found, isNew] = m_groups.emplace(group, static_cast<int>(m_parameters.size()));
        if (isNew) m_parameters.emplace_back();
        return found->second;
    }

    // How often each byte is the first and the second of a pair.
    void CountBytes()
    {
        for (unsigned first = 0; first < 0x100; ++first)
            for (unsigned second = 0; second < 0x100; ++second) {
                const CandidateShares shares =
                    m_likelihood.Of({static_cast<char>(first), static_cast<char>(second)});
                for (const Candidate c : PAIR_CANDIDATES) {
                    m_asFirst[first][c] += shares[c];
                    m_asSecond[second][c] += shares[c];
                }
            }
    }

    // What a pair says by itself. Training alone hardly meets a rare one where it matters.
    Weights PriorOf(const std::string& pair) const
    {
        const unsigned first = ByteAt(pair, 0), second = ByteAt(pair, 1);
        CandidateShares shares = m_likelihood.Of(pair);
        double mean = 0;
        for (const Candidate c : PAIR_CANDIDATES) {
            shares[c] += LEAST_COUNTED + OUT_OF_STEP * m_asSecond[first][c] * m_asFirst[second][c];
            mean += shares[c] / 3;
        }
        const bool isTail = IsUtf8Tail(first) && (IsUtf8Tail(second) || (second >= 0xE3 && second <= 0xE9));
        shares[CANDIDATE_UTF8] = LEAST_COUNTED + (isTail ? OUT_OF_STEP / (64 * 64) : 0);
        Weights prior{};
        for (size_t c = 0; c < CANDIDATES; ++c) prior[c] = std::max(Log(shares[c] / mean), MOST_AGAINST);
        if (IsPartOfUtf8(pair)) prior[CANDIDATE_UTF8] = 0;
        return prior;
    }

    // Whether an ASCII state speaks against UTF-16LE without being a stranger to it: a negative digit would
    // cost that its ten to one.
    bool IsAmbiguous(const Feature& feature, double weight) const
    {
        const auto& seen = feature.seen;
        const uint64_t others = uint64_t{seen[CANDIDATE_GBK]} + seen[CANDIDATE_BIG5] + seen[CANDIDATE_UTF8];
        if (!feature.ascii || weight * UNITS_A_NAT >= 0.5) return false;
        if (feature.pair && MayBeHanzi(feature.name->path) && IsWellKnown(feature.name->path)) return true;
        return seen[CANDIDATE_UNICODE] > 3 && others < DOUBTLESS_ODDS * seen[CANDIDATE_UNICODE];
    }

    static wchar_t UnitOf(const std::string& pair)
    {
        return static_cast<wchar_t>(ByteAt(pair, 1) << 8 | ByteAt(pair, 0));
    }

    // Whether a unit of UTF-16LE is a character that Chinese text may have.
    bool IsKnown(const std::string& pair) const
    {
        const wchar_t character = UnitOf(pair);
        return character < 0x180 || m_encoder.Has(CANDIDATE_GBK, character) ||
               m_encoder.Has(CANDIDATE_BIG5, character);
    }

    // Whether a unit of UTF-16LE is a hanzi that dictionaries have.
    bool IsWellKnown(const std::string& pair) const
    {
        const wchar_t character = UnitOf(pair);
        const unsigned gbk = m_encoder.Pair(CANDIDATE_GBK, character),
                       big5 = m_encoder.Pair(CANDIDATE_BIG5, character);
        return (gbk >= 0xB0A1 && gbk < 0xF800 && (gbk & 0xFF) >= 0xA1) || (big5 >= 0xA440 && big5 < 0xC680);
    }

    // Of those, what words are made of says nothing: the other way out, below, would count for the other
    // encodings wherever there is a word, even in languages that are none of ours.
    bool IsDoubtful(const Feature& feature) const
    {
        return IsAmbiguous(feature, Total(feature)[CANDIDATE_UNICODE]) && IsWordLike(feature.name->path);
    }

    // Doubtful states fall silent, and the rest learn to do without them.
    void SilenceDoubtfulAscii()
    {
        for (Feature& feature : m_features) feature.silent = feature.silent || IsDoubtful(feature);
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
            if (feature >= 0 && !m_features[static_cast<size_t>(feature)].silent)
                m_visited.push_back(static_cast<size_t>(feature));
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
            Add(sum, m_features[f]);
            asciiOnly = asciiOnly && m_features[f].ascii;
            ++m_features[f].seen[sample.answer];
        }
        if (asciiOnly) sum[CANDIDATE_BIG5] = sum[CANDIDATE_UTF8] = sum[CANDIDATE_GBK] - 1000;
        const Weights gradient = Shares(sum, sample.answer);
        for (const size_t f : m_visited) Step(m_features[f], gradient, rate * sample.weight);
        return sum[sample.answer] < *std::max_element(sum.begin(), sum.end());
    }

    // The probability that each sum stands for, less 1 for the right answer.
    static Weights Shares(const Weights& sum, Candidate answer)
    {
        const double top = *std::max_element(sum.begin(), sum.end());
        double all = 0;
        Weights share{};
        for (size_t c = 0; c < CANDIDATES; ++c) all += share[c] = Exp(sum[c] - top);
        for (size_t c = 0; c < CANDIDATES; ++c) share[c] = share[c] / all - (c == answer ? 1.0 : 0.0);
        return share;
    }

    void Add(Weights& sum, const Feature& feature) const
    {
        for (const int term : {feature.own, feature.group})
            for (size_t c = 0; term >= 0 && c < CANDIDATES; ++c)
                sum[c] += m_parameters[static_cast<size_t>(term)].weight[c];
    }

    Weights Total(const Feature& feature) const
    {
        Weights w{};
        Add(w, feature);
        return w;
    }

    void Step(const Feature& feature, const Weights& gradient, double rate)
    {
        for (size_t c = 0; c < CANDIDATES; ++c) {
            if (feature.ascii && c != CANDIDATE_UNICODE) continue;
            if (feature.pair && c == CANDIDATE_UTF8) continue;  // half a character, or none
            m_parameters[static_cast<size_t>(feature.own)].Step(
                c, gradient[c], (feature.counted ? COUNTED_RATE : LEARNING_RATE) * rate);
            if (feature.group >= 0)
                m_parameters[static_cast<size_t>(feature.group)].Step(c, gradient[c], GROUP_RATE * rate);
        }
    }

    int RoundedValue(const Feature& feature) const
    {
        return feature.ascii ? AsciiValue(feature) : MixedValue(feature);
    }

    int AsciiValue(const Feature& feature) const
    {
        const double weight = Total(feature)[CANDIDATE_UNICODE];
        int digit = std::clamp(static_cast<int>(std::lround(weight * UNITS_A_NAT)), -9, 10);
        // Latin letters beyond ASCII: no text of single bytes has such a second byte.
        if (feature.pair && ByteAt(feature.name->path, 1) <= 0x04) digit = std::max(digit, 1);
        const bool unseen = feature.seen == std::array<uint32_t, CANDIDATES>{};
        if (feature.silent || IsDoubtful(feature) || (digit == 0 && unseen)) return TRIE_VALUE_NONE;
        // Positive for UTF-16LE, yet less so than for the rest, which stay equal.
        const int others = digit < 1 && IsAmbiguous(feature, weight) ? 1 - digit : 0;
        if (others > 0) return PackTrieValue(0, {others, others, 1, others});
        return PackTrieValue(0, {0, 0, digit, 0}) | (digit == 0 ? TRIE_VALUE_COUNTED : 0);
    }

    int MixedValue(const Feature& feature) const
    {
        const Weights w = Total(feature);
        std::array<int, CANDIDATES> digit;
        for (size_t c = 0; c < CANDIDATES; ++c) digit[c] = static_cast<int>(std::lround(w[c] * UNITS_A_NAT));
        const int shift = ShiftOf(feature, digit);
        for (size_t c = 0; c < CANDIDATES; ++c)
            digit[c] = std::clamp(digit[c] + shift, -9, c == CANDIDATE_UTF8 ? 23 : 10);
        if (IsAtHomeInUnicode(feature)) digit[CANDIDATE_UNICODE] = std::max(digit[CANDIDATE_UNICODE], 1);
        return PackTrieValue(0, {digit[CANDIDATE_GBK], digit[CANDIDATE_BIG5], digit[CANDIDATE_UNICODE],
                                 digit[CANDIDATE_UTF8]});
    }

    // Whether UTF-16LE must not suffer for the state: one that it only meets by accident may speak against
    // it.
    bool IsAtHomeInUnicode(const Feature& feature) const
    {
        const uint32_t seen = feature.seen[CANDIDATE_UNICODE];
        if (!feature.pair) return seen > 0;
        const std::string& pair = feature.name->path;
        return MayBeHanzi(pair) || (seen > 0 && MayBeSign(pair) && IsKnown(pair)) ||
               seen > LEAST_SHARE * m_all[CANDIDATE_UNICODE];
    }

    // Adding the same to all four digits changes no comparison of sums, so they are shifted until every
    // encoding in whose text the state really occurs has a positive one, and none where it is hardly in use.
    int ShiftOf(const Feature& feature, const std::array<int, CANDIDATES>& digit) const
    {
        constexpr int NONE = 100;
        uint64_t all = 0;
        for (const uint32_t count : feature.seen) all += count;
        int raise = -NONE, limit = NONE;
        for (size_t c = 0; c < CANDIDATES; ++c) {
            const uint64_t seen = feature.seen[c];
            if (c != CANDIDATE_UTF8) limit = std::min(limit, 10 - digit[c]);
            if (seen > 0 && IsInUse(feature, c) && (c == CANDIDATE_UNICODE || seen * 500 >= all))
                raise = std::max(raise, 1 - digit[c]);
        }
        if (raise == -NONE) return std::min(limit, -*std::max_element(digit.begin(), digit.end()));
        // Where GBK and Big5 lie further apart than the digits below 1 reach, the better one goes up.
        raise = std::max(raise, -9 - std::min(digit[CANDIDATE_GBK], digit[CANDIDATE_BIG5]));
        return std::min(limit, raise);
    }

    // Rare characters do not count for their encoding: compressed data is full of them.
    bool IsInUse(const Feature& feature, size_t c) const
    {
        return !feature.pair || IsSign(*feature.name, c) || feature.seen[c] > LEAST_SHARE * m_all[c];
    }

    const CSampleSource& m_source;
    const CEncoder& m_encoder;
    CLikelihood m_likelihood;
    std::array<CandidateShares, 0x100> m_asFirst{}, m_asSecond{};  // by byte
    std::vector<TrieNode> m_nodes;
    std::vector<int> m_feature;  // by node; -1 for none
    std::vector<Feature> m_features;
    std::vector<Parameter> m_parameters;
    Weights m_all{};  // visits of pairs in training
    std::unordered_map<std::string, int> m_groups;
    std::vector<size_t> m_visited;
};

}  // namespace

void TrainValues(States& states, const CSampleSource& source, const CEncoder& encoder,
                 const TrainingPlan& plan)
{
    CTrainer trainer(states, source, encoder);
    trainer.Train(plan);
    trainer.Round(states);
}
