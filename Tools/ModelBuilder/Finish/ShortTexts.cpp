// Weighed, asked of the library's own walk and decision, and mended in the order of what the errors cost.
#include "ShortTexts.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <set>

#include "Automaton.h"
#include "Characters.h"
#include "Likelihood.h"

namespace
{
constexpr size_t BATCH = 200;  // corrections between two looks at the model's size

// Of the file: two mapping tables, the number of nodes, the nodes.
constexpr size_t ModelSize(size_t nodes)
{
    return 4 * MAPPING_ENTRIES + 4 + sizeof(TrieNode) * nodes;
}

struct ShortText {
    std::string bytes;
    CandidateShares shares{};
    Candidate best = CANDIDATE_GBK;
    bool mayRefuseUnicode = false;  // no text of UTF-16LE goes on like this, or next to none
};

// The bytes, in every encoding, of two characters that the statistics have seen in a row.
std::set<std::string> SeenTexts(const Ingredients& from)
{
    std::set<std::string> seen;
    const auto add = [&](wchar_t first, wchar_t second) {
        for (const Candidate c : PAIR_CANDIDATES)
            if (from.encoder.Has(c, first) && from.encoder.Has(c, second))
                seen.insert(from.encoder.Encode(c, {first, second}));
    };
    for (const CountedClass& counted : from.classes) {
        if (!IsChinese(counted.kind.role)) continue;
        for (const auto& [first, entry] : counted.counts.characters)
            for (const auto& [second, count] : entry.next)
                if ((IsHanzi(first) || IsHanzi(second)) && count > from.recipe.leastText * counted.size)
                    add(first, second);
    }
    return seen;
}

std::vector<ShortText> WeighedTexts(const Ingredients& from, const CLikelihood& likelihood)
{
    std::vector<ShortText> texts;
    for (const std::string& bytes : SeenTexts(from)) {
        ShortText text{.bytes = bytes, .shares = likelihood.Of(bytes)};
        text.shares[CANDIDATE_BIG5] *= from.recipe.big5Advantage;
        text.shares[CANDIDATE_UTF8] *= from.recipe.utf8Advantage;
        const auto best = std::max_element(text.shares.begin(), text.shares.end());
        text.best = static_cast<Candidate>(best - text.shares.begin());
        if (*best < from.recipe.leastText) continue;
        // Three bytes with ASCII in front stand at the start of a buffer only.
        if (bytes.size() == 3 && ByteAt(bytes, 0) < 0x80)
            text.mayRefuseUnicode =
                from.recipe.mostNextByte * likelihood.Of(bytes.substr(0, 2))[CANDIDATE_UNICODE] < *best;
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
int UnitsOf(double share, double against, const Recipe& recipe)
{
    const double oddsOfUnit = recipe.OddsOfUnit();
    int units = 1;
    for (double odds = against * oddsOfUnit; against > 0 && odds < share && units < recipe.mostUnits; ++units)
        odds *= oddsOfUnit;
    return units;
}

// What the last byte is to add, given the sums before it and with it as things are.
int ValueFor(const ShortText& text, const Digits& before, const Digits& now, const Recipe& recipe)
{
    Digits digits;
    for (size_t c = 0; c < CANDIDATES; ++c) digits[c] = now[c] - before[c];
    const int leastForUnicode = text.mayRefuseUnicode ? LEAST_DIGIT : 1;
    digits[CANDIDATE_UNICODE] = std::max(digits[CANDIDATE_UNICODE], leastForUnicode);
    digits[text.best] = std::max(digits[text.best], 1);

    const auto lacking = [&](size_t c) {
        const int lead = before[text.best] + digits[text.best] - before[c] - digits[c];
        return c == text.best ? 0 : UnitsOf(text.shares[text.best], text.shares[c], recipe) - lead;
    };
    int most = 0;
    for (size_t c = 0; c < CANDIDATES; ++c) most = std::max(most, lacking(c));
    digits[text.best] = std::min(digits[text.best] + most, 10);
    for (size_t c = 0; c < CANDIDATES; ++c)
        if (const int less = lacking(c); less > 0)
            digits[c] = std::max(digits[c] - less, c == CANDIDATE_UNICODE ? leastForUnicode : LEAST_DIGIT);
    // ASCII says nothing between the three.
    if (IsAscii(text.bytes)) digits[CANDIDATE_BIG5] = digits[CANDIDATE_UTF8] = digits[CANDIDATE_GBK];
    return PackDigits(digits);
}

class CCorrector
{
public:
    CCorrector(States& states, const Ingredients& from)
        : m_states(states),
          m_recipe(from.recipe),
          m_likelihood(from),
          m_texts(WeighedTexts(from, m_likelihood))
    {
    }

    void Correct()
    {
        const std::vector<const ShortText*> errors = ErrorsByCost();
        size_t corrected = 0;
        for (size_t i = 0; i < errors.size(); i += BATCH) {
            States before = m_states;
            size_t mended = 0;
            for (size_t k = i; k < std::min(i + BATCH, errors.size()); ++k) mended += CorrectOne(*errors[k]);
            if (ModelSize(CAutomaton(m_states).NodeCount()) > m_recipe.mostBytes) {
                m_states = std::move(before);
                break;
            }
            corrected += mended;
        }
        ErrorsByCost();  // says what is left
        std::cerr << corrected << " short texts corrected\n";
    }

private:
    // The texts that are answered wrongly: first those that cost most for each state that it takes.
    std::vector<const ShortText*> ErrorsByCost()
    {
        m_automaton.emplace(m_states);
        std::vector<std::pair<double, const ShortText*>> errors;
        double all = 0, wrong = 0, least = 0;
        for (const ShortText& text : m_texts) {
            const int answer = Decide(m_automaton->ScoresOf(text.bytes));
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
        return *std::max_element(shares.begin(), shares.end()) > m_recipe.mostOfBranch;
    }

    // One of M where the walk would stand at the same bytes in M without it, or else one of the start or,
    // beyond ASCII, of a word.
    StateName NameFor(const std::string& bytes) const
    {
        StateName twin{.region = REGION_START, .path = ""};
        for (const char byte : bytes) twin = Step(m_states, twin, byte);
        StateName inMain{.region = REGION_MAIN, .path = bytes};
        const bool isSequence = !IsFrequent(bytes.substr(0, 2)) && bytes.size() > 2 &&
                                ByteAt(bytes, 0) >= 0x80 &&
                                twin == StateName{.region = REGION_MAIN, .path = bytes.substr(2)};
        if (isSequence || twin == inMain) return inMain;
        // A text with ASCII in it is all there is only where it starts the buffer, and two letters of UTF-8
        // are hardly ever a text of their own.
        const bool isUtf8 = bytes.size() == 4 && IsPartOfUtf8(bytes) && IsPartOfUtf8(bytes.substr(2));
        const bool isWord = bytes.size() == 4 && ByteAt(bytes, 0) >= 0x80 && !isUtf8;
        return {.region = isWord ? REGION_WORD : REGION_START, .path = bytes};
    }

    // The states that a correction takes, and a little for one that is there.
    double Effort(const std::string& bytes) const
    {
        const Region region = NameFor(bytes).region;
        double states = 0.2;
        for (size_t length = 1; length <= bytes.size(); ++length)
            states += m_states.contains({.region = region, .path = bytes.substr(0, length)}) ? 0 : 1;
        return states;
    }

    bool CorrectOne(const ShortText& text)
    {
        const Scores now = m_automaton->ScoresOf(text.bytes);
        Scores corrected = m_automaton->ScoresOf(text.bytes.substr(0, text.bytes.size() - 1));
        const int value = ValueFor(text, Sums(corrected), Sums(now), m_recipe);
        corrected.Add(value);
        corrected.highBytes = now.highBytes;
        if (Decide(corrected) != CODES[text.best]) return false;

        const StateName name = NameFor(text.bytes);
        for (size_t length = 1; length < text.bytes.size(); ++length) {
            const StateName prefix{.region = name.region, .path = text.bytes.substr(0, length)};
            if (m_states.contains(prefix)) continue;
            // In M half a pair is worth nothing; at the start every state is worth what its twin is.
            const StateName twin = ExistingFallBack(m_states, prefix);
            m_states[prefix].value = name.region == REGION_MAIN ? TRIE_VALUE_NONE : m_states.at(twin).value;
        }
        m_states[name].value = value;
        return true;
    }

    States& m_states;
    const Recipe& m_recipe;
    CLikelihood m_likelihood;
    std::vector<ShortText> m_texts;
    std::optional<CAutomaton> m_automaton;  // as it was when the errors were found
};
}  // namespace

void CorrectShortTexts(States& states, const Ingredients& from)
{
    CCorrector(states, from).Correct();
}
