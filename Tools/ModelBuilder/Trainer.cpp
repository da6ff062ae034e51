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

constexpr double UNITS_A_NAT = 3.0;  // digits stand for thirds of a nat; finer or coarser changes little
constexpr double LEARNING_RATE = 0.25;
constexpr double GROUP_RATE = 0.05;
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

// The classes of Chinese text and their shares in what the detector will meet.
constexpr std::pair<const char*, double> CHINESE_CLASSES[] = {{"hans-prose", 0.5}, {"hans-tech", 0.2},
                                                              {"hans-words", 0.3}, {"hant-prose", 0.5},
                                                              {"hant-tech", 0.2},  {"hant-words", 0.3}};

// Two pairs in a row that may have a state of their own: nothing of UTF-8 or after ASCII, which other regions
// follow.
bool IsSequence(const std::string& bytes)
{
    return bytes.size() == 4 && ByteAt(bytes, 0) >= 0x80 && !StartsWithUtf8Character(bytes);
}

// Punctuation and full-width forms of GBK and Big5.
bool IsSign(const StateName& state, size_t c)
{
    const unsigned lead = ByteAt(state.path, 0), trail = ByteAt(state.path, 1);
    if (c == CANDIDATE_GBK) return (lead == 0xA1 || lead == 0xA3) && trail >= 0xA1;
    return c == CANDIDATE_BIG5 && lead >= 0xA1 && lead <= 0xA3;
}

// Whether the last two bytes may be a hanzi of UTF-16LE, however rare: none must cost a text its ten to one.
bool EndsAsHanzi(const StateName& state)
{
    const unsigned high = ByteAt(state.path, state.path.size() - 1);
    return state.region == REGION_MAIN && state.path.size() % 2 == 0 && high >= 0x4E && high < 0xA0;
}

// Or a letter, a sign or a full-width form.
bool EndsAsSign(const StateName& state)
{
    const unsigned high = ByteAt(state.path, state.path.size() - 1);
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

// One state that carries a value. Its weight is the sum of up to three parameters: its own, its group's, and
// for a sequence of two pairs those of the second pair.
struct Feature {
    const StateName* name;
    std::array<int, 3> terms = {-1, -1, -1};
    bool ascii = false, silent = false, pair = false;
    std::array<uint32_t, CANDIDATES> seen{};  // visits in training
};

class CTrainer
{
public:
    CTrainer(const CSampleSource& source, const CEncoder& encoder) : m_source(source), m_encoder(encoder) {}

    // Takes up a set of states; what was learned about states of the same name before is kept.
    void Adopt(const States& states)
    {
        std::map<StateName, Feature> before;
        for (const Feature& feature : m_features) before.emplace(*feature.name, feature);
        m_features.clear();
        const PackedTrie packed = PackStates(LinkStates(states));
        m_nodes = packed.nodes;
        m_feature.assign(m_nodes.size(), -1);
        size_t number = 0;
        for (const auto& [name, value] : states) {
            const auto node = static_cast<size_t>(packed.nodeOf[number++]);
            if (!CarriesValue(name)) continue;
            m_feature[node] = static_cast<int>(m_features.size());
            const auto known = before.find(name);
            m_features.push_back(known == before.end() ? NewFeature(name) : known->second);
            m_features.back().name = &name;
        }
    }

    void Train(uint64_t samples, uint64_t seed, bool last)
    {
        CRandom random(seed);
        uint64_t wrong = 0;
        for (uint64_t n = 1; n <= samples; ++n) {
            const double rate = !last || n * 10 < samples * 6 ? 1.0 : n * 10 < samples * 9 ? 0.3 : 0.1;
            wrong += Learn(m_source.Draw(random), rate);
            if (n % 500'000 == 0) {
                std::cerr << n / 1000 << "k samples, " << static_cast<double>(wrong) / 5000.0
                          << " % of the last wrong\n";
                wrong = 0;
            }
        }
        SilenceDoubtfulAscii();
    }

    // How unsure the present weights are that `bytes` are in `answer`: 1 minus the share that they give it.
    double Doubt(const std::string& bytes, Candidate answer)
    {
        Walk(bytes);
        Weights sum{};
        for (const size_t f : m_visited) Add(sum, f);
        return -Shares(sum, answer)[answer];
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
    int ParameterOf(const std::string& key)
    {
        const auto [found, isNew] = m_parameterOf.emplace(key, static_cast<int>(m_parameters.size()));
        if (isNew) m_parameters.emplace_back();
        return found->second;
    }

    Feature NewFeature(const StateName& name)
    {
        Feature feature{&name};
        feature.ascii = IsAscii(name);
        feature.pair = name.region == REGION_MAIN && name.path.size() == 2;
        const std::string prefix = feature.ascii ? "ascii " : "";
        feature.terms[0] = ParameterOf(std::string("own ") + static_cast<char>(name.region) + name.path);
        if (name.region == REGION_MAIN && name.path.size() == 4) {
            const StateName second{REGION_MAIN, name.path.substr(2)};
            feature.terms[1] =
                ParameterOf(std::string("own ") + static_cast<char>(REGION_MAIN) + second.path);
            feature.terms[2] = ParameterOf("group " + GroupOf(second));
        } else {
            feature.terms[1] = ParameterOf("group " + prefix + GroupOf(name));
        }
        return feature;
    }

    // Whether an ASCII state speaks against UTF-16LE without being a stranger to it: a negative digit would
    // cost that its ten to one.
    bool IsAmbiguous(const Feature& feature, double weight) const
    {
        const auto& seen = feature.seen;
        const uint64_t others = uint64_t{seen[CANDIDATE_GBK]} + seen[CANDIDATE_BIG5] + seen[CANDIDATE_UTF8];
        if (!feature.ascii || weight * UNITS_A_NAT >= 0.5) return false;
        if (EndsAsHanzi(*feature.name) && IsWellKnown(feature.name->path)) return true;
        return seen[CANDIDATE_UNICODE] > 3 && others < DOUBTLESS_ODDS * seen[CANDIDATE_UNICODE];
    }

    // Whether a unit of UTF-16LE is a hanzi that dictionaries have.
    bool IsWellKnown(const std::string& unit) const
    {
        const auto character = static_cast<wchar_t>(ByteAt(unit, 1) << 8 | ByteAt(unit, 0));
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
            Add(sum, f);
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

    void Add(Weights& sum, size_t f) const
    {
        for (const int term : m_features[f].terms)
            for (size_t c = 0; term >= 0 && c < CANDIDATES; ++c)
                sum[c] += m_parameters[static_cast<size_t>(term)].weight[c];
    }

    Weights Total(const Feature& feature) const
    {
        Weights w{};
        for (const int term : feature.terms)
            for (size_t c = 0; term >= 0 && c < CANDIDATES; ++c)
                w[c] += m_parameters[static_cast<size_t>(term)].weight[c];
        return w;
    }

    void Step(const Feature& feature, const Weights& gradient, double rate)
    {
        for (size_t t = 0; t < feature.terms.size(); ++t) {
            if (feature.terms[t] < 0) continue;
            Parameter& parameter = m_parameters[static_cast<size_t>(feature.terms[t])];
            const bool own = t == 0 || (t == 1 && feature.terms[2] >= 0);
            for (size_t c = 0; c < CANDIDATES; ++c) {
                if (feature.ascii && c != CANDIDATE_UNICODE) continue;
                if (feature.pair && c == CANDIDATE_UTF8) continue;  // half a character, or none
                parameter.Step(c, gradient[c], (own ? LEARNING_RATE : GROUP_RATE) * rate);
            }
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
        if (!feature.pair) return seen > 0 || EndsAsHanzi(*feature.name);
        return EndsAsHanzi(*feature.name) || (seen > 0 && EndsAsSign(*feature.name)) ||
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
    std::vector<TrieNode> m_nodes;
    std::vector<int> m_feature;  // by node; -1 for none
    std::vector<Feature> m_features;
    std::vector<Parameter> m_parameters;
    Weights m_all{};  // visits of pairs in training
    std::unordered_map<std::string, int> m_parameterOf;
    std::vector<size_t> m_visited;
};

struct Sequence {
    double gain;
    std::string bytes;
};

// Sequences of two pairs by the errors that they could save: how often they occur times the doubt without
// them.
std::vector<Sequence> SequencesByGain(CTrainer& trainer, const CSampleSource& source, const CEncoder& encoder)
{
    std::map<std::string, double> gains;
    for (const auto& [name, weight] : CHINESE_CLASSES) {
        const bool traditional = std::string(name).starts_with("hant");
        const Statistics& statistics = source.Counted(name);
        double all = 0;
        for (const auto& [first, entry] : statistics.characters) all += entry.total;
        for (const auto& [first, entry] : statistics.characters)
            for (const auto& [second, count] : entry.next)
                for (const Candidate candidate : {CANDIDATE_GBK, CANDIDATE_BIG5, CANDIDATE_UNICODE}) {
                    if (candidate == CANDIDATE_BIG5 && !traditional) continue;
                    const std::string bytes = encoder.Encode(candidate, {first, second});
                    if (!IsSequence(bytes)) continue;
                    const double share = candidate != CANDIDATE_GBK ? 0.5 : traditional ? 0.25 : 0.75;
                    gains[bytes] += weight * share * count / all * trainer.Doubt(bytes, candidate);
                }
    }
    std::vector<Sequence> sequences;
    sequences.reserve(gains.size());
    for (const auto& [bytes, gain] : gains) sequences.push_back({gain, bytes});
    std::stable_sort(sequences.begin(), sequences.end(),
                     [](const Sequence& a, const Sequence& b) { return a.gain > b.gain; });
    return sequences;
}

}  // namespace

void TrainValues(States& states, const CSampleSource& source, const CEncoder& encoder,
                 const TrainingPlan& plan)
{
    CTrainer trainer(source, encoder);
    trainer.Adopt(states);
    trainer.Train(plan.samples / 3, plan.seed, false);
    std::vector<Sequence> sequences = SequencesByGain(trainer, source, encoder);
    sequences.resize(std::min(sequences.size(), plan.sequences));
    for (const Sequence& sequence : sequences) AddState(states, REGION_MAIN, sequence.bytes);
    trainer.Adopt(states);
    trainer.Train(plan.samples - plan.samples / 3, plan.seed + 1, true);
    trainer.Round(states);
}
