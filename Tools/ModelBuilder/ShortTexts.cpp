// Corrections for texts of two characters; see ShortTexts.h.
#include "ShortTexts.h"

#include <algorithm>
#include <iostream>
#include <set>

#include "Detection.h"
#include "Likelihood.h"

namespace
{
using Digits = std::array<int, CANDIDATES>;

constexpr int CODES[CANDIDATES] = {ENCODE_GBK, ENCODE_BIG5, ENCODE_UTF8, ENCODE_UNICODE};

// What is rarer than one text in so many is not looked at.
constexpr double LEAST_SHARE = 1e-7;
// Of a pair that may have corrections below it in mid-text.
constexpr double MOST_FREQUENT = 1e-4;
// Levels the error rates of GBK and Big5.
constexpr double BIG5_ADVANTAGE = 1.25;
// A digit stands for a third of a nat: odds of so much to one.
constexpr double ODDS_A_UNIT = 1.3956124250860895;
constexpr int MOST_UNITS = 8;
// Of the texts that begin with a unit of UTF-16LE, the part whose next byte is a given one, at most.
constexpr double NEXT_BYTE = 0.02;

bool IsHanzi(wchar_t c)
{
    return c >= 0x3400 && c < 0xA000;
}

bool IsAscii(const std::string& bytes)
{
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

struct ShortText {
    std::string bytes;
    CandidateShares shares{};
    Candidate best = CANDIDATE_GBK;
    bool mayRefuseUnicode = false;  // no text of UTF-16LE goes on like this, or next to none
};

// The bytes, in every encoding, of two characters that the statistics have seen in a row.
std::set<std::string> SeenTexts(const CSampleSource& source, const CEncoder& encoder)
{
    std::set<std::string> seen;
    for (const char* name :
         {"hans-prose", "hans-tech", "hans-words", "hant-prose", "hant-tech", "hant-words"}) {
        const Statistics& counted = source.Counted(name);
        double all = 0;
        for (const auto& [first, entry] : counted.characters) all += entry.total;
        for (const auto& [first, entry] : counted.characters)
            for (const auto& [second, count] : entry.next)
                if ((IsHanzi(first) || IsHanzi(second)) && count > LEAST_SHARE * all)
                    for (const Candidate c : PAIR_CANDIDATES)
                        if (encoder.Has(c, first) && encoder.Has(c, second))
                            seen.insert(encoder.Encode(c, {first, second}));
    }
    return seen;
}

std::vector<ShortText> WeighedTexts(const CSampleSource& source, const CEncoder& encoder,
                                    const CLikelihood& likelihood)
{
    std::vector<ShortText> texts;
    for (const std::string& bytes : SeenTexts(source, encoder)) {
        ShortText text{bytes, likelihood.Of(bytes)};
        text.shares[CANDIDATE_BIG5] *= BIG5_ADVANTAGE;
        const auto best = std::max_element(text.shares.begin(), text.shares.end());
        text.best = static_cast<Candidate>(best - text.shares.begin());
        if (*best < LEAST_SHARE) continue;
        // Three bytes with ASCII in front stand at the start of a buffer only.
        if (bytes.size() == 3 && ByteAt(bytes, 0) < 0x80)
            text.mayRefuseUnicode = NEXT_BYTE * likelihood.Of(bytes.substr(0, 2))[CANDIDATE_UNICODE] < *best;
        texts.push_back(text);
    }
    return texts;
}

Digits Sums(const Scores& s)
{
    return {static_cast<int>(s.sumGbk), static_cast<int>(s.sumBig5), static_cast<int>(s.sumUtf8),
            static_cast<int>(s.sumUnicode)};
}

// How many units the odds are worth, one at least.
int UnitsOf(double share, double against)
{
    int units = 1;
    for (double odds = against * ODDS_A_UNIT; against > 0 && odds < share && units < MOST_UNITS; ++units)
        odds *= ODDS_A_UNIT;
    return units;
}

// What the last byte is to add, given the sums before it and with it as things are.
int ValueFor(const ShortText& text, const Digits& before, const Digits& now)
{
    Digits digit;
    for (size_t c = 0; c < CANDIDATES; ++c) digit[c] = now[c] - before[c];
    const int leastForUnicode = text.mayRefuseUnicode ? -9 : 1;
    digit[CANDIDATE_UNICODE] = std::max(digit[CANDIDATE_UNICODE], leastForUnicode);
    digit[text.best] = std::max(digit[text.best], 1);

    const auto lacking = [&](size_t c) {
        const int lead = before[text.best] + digit[text.best] - before[c] - digit[c];
        return c == text.best ? 0 : UnitsOf(text.shares[text.best], text.shares[c]) - lead;
    };
    int most = 0;
    for (size_t c = 0; c < CANDIDATES; ++c) most = std::max(most, lacking(c));
    digit[text.best] = std::min(digit[text.best] + most, 10);
    for (size_t c = 0; c < CANDIDATES; ++c)
        if (const int less = lacking(c); less > 0)
            digit[c] = std::max(digit[c] - less, c == CANDIDATE_UNICODE ? leastForUnicode : -9);
    // ASCII says nothing between the three.
    if (IsAscii(text.bytes)) digit[CANDIDATE_BIG5] = digit[CANDIDATE_UTF8] = digit[CANDIDATE_GBK];
    return PackTrieValue(
        0, {digit[CANDIDATE_GBK], digit[CANDIDATE_BIG5], digit[CANDIDATE_UNICODE], digit[CANDIDATE_UTF8]});
}

class CCorrector
{
public:
    CCorrector(States& states, const CSampleSource& source, const CEncoder& encoder)
        : m_states(states),
          m_likelihood(source, encoder),
          m_texts(WeighedTexts(source, encoder, m_likelihood))
    {
    }

    void Correct(size_t mostStates)
    {
        int corrected = 0;
        for (const ShortText* text : ErrorsByCost())
            if (m_states.size() < mostStates) corrected += CorrectOne(*text);
        ErrorsByCost();  // says what is left
        std::cerr << corrected << " short texts put right\n";
    }

private:
    Scores Walked(const std::string& bytes) const
    {
        return Walk(m_nodes.data(), static_cast<unsigned>(m_nodes.size()), bytes.data(), bytes.size());
    }

    // The texts that are answered wrongly: first those that cost most for each state that it takes.
    std::vector<const ShortText*> ErrorsByCost()
    {
        m_nodes = PackStates(LinkStates(m_states)).nodes;
        std::vector<std::pair<double, const ShortText*>> errors;
        double all = 0, wrong = 0, least = 0;
        for (const ShortText& text : m_texts) {
            const int answer = Decide(Walked(text.bytes));
            double right = 0, sum = 0;
            for (size_t c = 0; c < CANDIDATES; ++c) {
                sum += text.shares[c];
                if (CODES[c] == answer) right = text.shares[c];
            }
            all += sum, wrong += sum - right, least += sum - text.shares[text.best];
            if (answer != CODES[text.best])
                errors.emplace_back((right - text.shares[text.best]) / Effort(text.bytes), &text);
        }
        std::cerr << "of " << m_texts.size() << " short texts " << 100 * wrong / all << " % wrong, "
                  << 100 * least / all << " % at best\n";
        std::stable_sort(errors.begin(), errors.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        std::vector<const ShortText*> texts;
        texts.reserve(errors.size());
        for (const auto& [cost, text] : errors) texts.push_back(text);
        return texts;
    }

    // What hangs below a pair costs the walk a step more wherever the pair stands.
    bool IsFrequent(const std::string& pair) const
    {
        const CandidateShares shares = m_likelihood.Of(pair);
        return *std::max_element(shares.begin(), shares.end()) > MOST_FREQUENT;
    }

    // One of M where the walk would stand at the same bytes in M without it, or else one of the start.
    StateName NameFor(const std::string& bytes) const
    {
        StateName twin{REGION_START, ""};
        for (const char byte : bytes) twin = Step(m_states, twin, byte);
        const bool isSequence = !IsFrequent(bytes.substr(0, 2)) && bytes.size() > 2 &&
                                ByteAt(bytes, 0) >= 0x80 && twin == StateName{REGION_MAIN, bytes.substr(2)};
        return {isSequence || twin == StateName{REGION_MAIN, bytes} ? REGION_MAIN : REGION_START, bytes};
    }

    // The states that a correction takes, and a little for one that is there.
    double Effort(const std::string& bytes) const
    {
        const Region region = NameFor(bytes).region;
        double states = 0.2;
        for (size_t length = 1; length <= bytes.size(); ++length)
            states += m_states.contains({region, bytes.substr(0, length)}) ? 0 : 1;
        return states;
    }

    bool CorrectOne(const ShortText& text)
    {
        const std::string allButLast = text.bytes.substr(0, text.bytes.size() - 1);
        const Scores now = Walked(text.bytes);
        Scores corrected = Walked(allButLast);
        const int value = ValueFor(text, Sums(corrected), Sums(now));
        corrected.Add(value);
        corrected.highBytes = now.highBytes;
        if (Decide(corrected) != CODES[text.best]) return false;

        const StateName name = NameFor(text.bytes);
        for (size_t length = 1; length < text.bytes.size(); ++length) {
            const StateName prefix{name.region, text.bytes.substr(0, length)};
            if (m_states.contains(prefix)) continue;
            // In M half a pair is worth nothing; at the start every state is worth what its twin is.
            const StateName twin = ExistingFallBack(m_states, prefix);
            m_states[prefix].value = name.region == REGION_MAIN ? TRIE_VALUE_NONE : m_states.at(twin).value;
        }
        m_states[name].value = value;
        return true;
    }

    States& m_states;
    CLikelihood m_likelihood;
    std::vector<ShortText> m_texts;
    std::vector<TrieNode> m_nodes;
};
}  // namespace

void CorrectShortTexts(States& states, const CSampleSource& source, const CEncoder& encoder,
                       size_t mostStates)
{
    CCorrector(states, source, encoder).Correct(mostStates);
}
