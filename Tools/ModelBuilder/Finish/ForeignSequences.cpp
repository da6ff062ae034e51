// Counted in drawn text of every foreign class, and against drawn text of ours; then chosen by what they
// mend.
#include "ForeignSequences.h"

#include <algorithm>
#include <functional>
#include <iostream>
#include <unordered_map>
#include <unordered_set>

#include "Automaton.h"
#include "Characters.h"
#include "GreedyCover.h"
#include "SampleStream.h"

namespace
{
constexpr uint64_t FOREIGN_SEED = 100, OWN_SEED = 7, MISTAKE_SEED = 500;  // any numbers do

// Reads a text through the automaton and reports each pair, and each two in a row, as one number, with the
// position of its last byte.
class CPairReader
{
public:
    explicit CPairReader(const States& states) : m_automaton(states)
    {
        for (unsigned node = 0; node < m_automaton.NodeCount(); ++node) {
            const StateName* name = m_automaton.NameOf(static_cast<int>(node));
            m_isPair.push_back(name != nullptr && name->region == REGION_MAIN &&
                               (name->path.size() == 2 || name->path.size() == 4));
        }
    }

    // `function(pair, sequence, position)`: the sequence has the pair before on top, and is 0 where that is
    // none.
    template <typename Function>
    void Read(const std::string& bytes, Function function) const
    {
        size_t last = 0;  // where the last pair ended
        m_automaton.ForEachStep(bytes, [&](int node, size_t i) {
            if (!m_isPair[static_cast<size_t>(node)] || i == 0) return;
            const bool inSequence = last > 0 && i == last + 2;
            function(PairAt(bytes, i - 1), inSequence ? PairAt(bytes, i - 3) << 16 | PairAt(bytes, i - 1) : 0,
                     i);
            last = i;
        });
    }

    const CAutomaton& Automaton() const { return m_automaton; }

private:
    static uint32_t PairAt(const std::string& bytes, size_t at)
    {
        return ByteAt(bytes, at) << 8 | ByteAt(bytes, at + 1);
    }

    CAutomaton m_automaton;
    std::vector<bool> m_isPair;
};

// Of a sequence, or of a pair.
std::string BytesOf(uint32_t number)
{
    const std::string pair = TwoBytes(number >> 8 & 0xFF, number & 0xFF);
    return number < 0x10000 ? pair : TwoBytes(number >> 24, number >> 16 & 0xFF) + pair;
}

// The last byte of a character of UTF-8 and all of the next, or its last two and the start of the next: text
// that begins within a character is read like this to its end.
bool IsWithinUtf8(const std::string& bytes)
{
    return IsUtf8Tail(ByteAt(bytes, 0)) && (StartsWithUtf8Character(bytes.substr(1)) ||
                                            (IsUtf8Tail(ByteAt(bytes, 1)) && OpensUtf8(bytes.substr(2))));
}

// Two pairs that no other region follows, not both ASCII.
bool IsSequence(const std::string& bytes)
{
    return (ByteAt(bytes, 0) >= 0x80 || ByteAt(bytes, 2) >= 0x80) && !StartsWithUtf8Character(bytes) &&
           !IsWithinUtf8(bytes) && !LeadAfterAscii(bytes.substr(0, 2)) && bytes[0] != '\n' &&
           bytes[0] != '\r';
}

// A pair that may be foreign by itself: nothing of UTF-8, even where text begins within a character, and no
// hanzi that every font has.
bool MayBeForeign(const std::string& pair)
{
    const unsigned lead = ByteAt(pair, 0), second = ByteAt(pair, 1);
    const bool isBig5Sign = lead == 0xC6 && second > 0xA0;  // of the ETEN extensions
    if (lead < 0x80) return second >= 0x80;                 // a unit of UTF-16LE, or of UTF-16BE
    return !IsGb2312Hanzi(lead, second) && !IsBig5FirstLevel(lead, second) && !isBig5Sign &&
           !IsPartOfUtf8(pair) && !(IsUtf8Tail(lead) && IsUtf8LeadOfThree(second));
}

using Occurrences = std::unordered_map<uint32_t, double>;

// Every kind of foreign text: a weight, and how to draw it.
struct ForeignKind {
    double weight;
    std::function<std::string(CRandom&)> draw;
};

std::vector<ForeignKind> ForeignKinds(const Ingredients& from, const CSampleSource& source)
{
    std::vector<ForeignKind> kinds;
    for (size_t i = 0; i < from.classes.size(); ++i)
        if (IsForeign(from.classes[i].kind.role))
            kinds.push_back({.weight = from.classes[i].kind.weight, .draw = [&source, i](CRandom& random) {
                                 return source.DrawForeign(i, random);
                             }});
    for (int i = 0; i < CSampleSource::OTHER_UNICODE; ++i)
        kinds.push_back({.weight = 1, .draw = [&source, i](CRandom& random) {
                             return source.DrawOtherUnicode(static_cast<CSampleSource::OtherUnicode>(i),
                                                            random);
                         }});
    return kinds;
}

// Sequences, and single pairs, by their share in the foreign class that has them most, weighed.
Occurrences ForeignShares(const CPairReader& reader, const Ingredients& from, const CSampleSource& source)
{
    Occurrences shares;
    uint64_t seed = FOREIGN_SEED;
    for (const ForeignKind& kind : ForeignKinds(from, source)) {
        CRandom random(seed++);
        std::unordered_map<uint32_t, uint32_t> counts;
        double all = 0;
        for (size_t n = 0; n < from.recipe.foreignSamples; ++n)
            reader.Read(kind.draw(random), [&](uint32_t pair, uint32_t sequence, size_t) {
                ++all;
                if (MayBeForeign(BytesOf(pair))) ++counts[pair];
                if (sequence != 0 && IsSequence(BytesOf(sequence))) ++counts[sequence];
            });
        for (const auto& [sequence, count] : counts)
            if (count > from.recipe.leastForeign * all)
                shares[sequence] = std::max(shares[sequence], kind.weight * count / all);
    }
    return shares;
}

// How often text of ours has them.
struct OwnCounts {
    double all = 0;
    std::vector<double> pairs = std::vector<double>(0x10000);
    Occurrences sequences;  // of those that foreign text has

    double OfPair(uint32_t pair) const { return (pairs[pair] + 1) / all; }

    // As often as was seen, or as chance would have it.
    double OfSequence(uint32_t sequence) const
    {
        const auto found = sequences.find(sequence);
        const double seen = found == sequences.end() ? 0 : found->second;
        return std::max(seen, (pairs[sequence >> 16] + 1) * (pairs[sequence & 0xFFFF] + 1) / all) / all;
    }
};

OwnCounts CountOwn(const CPairReader& reader, const Occurrences& foreign, const Ingredients& from,
                   const CSampleSource& source)
{
    OwnCounts own;
    CSampleStream stream(source, OWN_SEED, from.recipe.ownSamples);
    for (size_t n = 0; n < from.recipe.ownSamples; ++n)
        reader.Read(stream.Next().bytes, [&](uint32_t pair, uint32_t sequence, size_t) {
            ++own.all, ++own.pairs[pair];
            if (foreign.contains(sequence)) ++own.sequences[sequence];
        });
    return own;
}

bool IsForeignPair(const std::string& pair, double share, double own, const Recipe& recipe)
{
    const bool isUnit = ByteAt(pair, 1) >= 0x4E && ByteAt(pair, 1) < 0xA0;  // a hanzi of UTF-16LE
    return share > (isUnit ? recipe.unitOdds : recipe.pairOdds) * own;
}

void SendAway(States& states, const std::string& bytes)
{
    AddState(states, REGION_MAIN, bytes);
    states[{.region = REGION_MAIN, .path = bytes}] = {.value = COUNTS_AGAINST_UNICODE,
                                                      .onward = REGION_FOREIGN};
}
// Where sending away comes too late: when as many states are positive for the answer as decide. UTF-16LE does
// not bear a single state against it, wherever that is.
size_t LatestPosition(const CAutomaton& automaton, const std::string& piece, int answer, int64_t highBytes)
{
    if (answer == ENCODE_UNICODE) return piece.size();
    Scores scores;
    size_t latest = piece.size();
    automaton.ForEachStep(piece, [&](int node, size_t i) {
        const int value = automaton.Nodes()[static_cast<size_t>(node)].nValue;
        if (value == TRIE_VALUE_NONE || latest < piece.size()) return;
        scores.Add(value);
        const bool isDecided = answer == ENCODE_GBK    ? scores.positiveGbk > highBytes / 4
                               : answer == ENCODE_BIG5 ? scores.positiveBig5 > highBytes / 4
                                                       : scores.positiveUtf8 > highBytes / 6;
        if (isDecided) latest = i;
    });
    return latest;
}

// A piece that is taken for text of ours, and the sequences of which any one would mend that; none otherwise.
Mistake MistakeOf(const std::string& piece, const CPairReader& reader,
                  const std::unordered_set<uint32_t>& candidates)
{
    Mistake mistake;
    const Scores scores = reader.Automaton().ScoresOf(piece);
    const int answer = Decide(scores);
    if (answer == ENCODE_UNKNOWN || scores.highBytes == 0) return mistake;
    const size_t latest = LatestPosition(reader.Automaton(), piece, answer, scores.highBytes);
    reader.Read(piece, [&](uint32_t, uint32_t sequence, size_t i) {
        if (i <= latest && candidates.contains(sequence)) mistake.remedies.push_back(sequence);
    });
    return mistake;
}

std::vector<Mistake> FindMistakes(const States& states, const std::unordered_set<uint32_t>& candidates,
                                  const Ingredients& from, const CSampleSource& source, uint64_t seed)
{
    constexpr size_t PIECE = 64;
    const CPairReader reader(states);
    std::vector<Mistake> mistakes;
    for (const ForeignKind& kind : ForeignKinds(from, source)) {
        CRandom random(seed++);
        for (size_t n = 0; n < from.recipe.mistakeSamples; ++n) {
            const std::string text = kind.draw(random);
            for (size_t begin = 0; begin + PIECE <= text.size(); begin += PIECE) {
                Mistake mistake = MistakeOf(text.substr(begin, PIECE), reader, candidates);
                mistake.weight = kind.weight;
                if (!mistake.remedies.empty()) mistakes.push_back(std::move(mistake));
            }
        }
    }
    return mistakes;
}
}  // namespace

std::vector<uint32_t> AddForeignPairs(States& states, const Ingredients& from, const CSampleSource& source)
{
    const CPairReader reader(states);
    const Occurrences foreign = ForeignShares(reader, from, source);
    const OwnCounts own = CountOwn(reader, foreign, from, source);

    std::vector<uint32_t> sequences;
    for (const auto& [number, share] : foreign) {
        const std::string bytes = BytesOf(number);
        if (bytes.size() == 2) {
            if (IsForeignPair(bytes, share, own.OfPair(number), from.recipe)) SendAway(states, bytes);
        } else if (own.OfPair(number >> 16) < from.recipe.mostOfStart &&
                   share > from.recipe.sequenceOdds * own.OfSequence(number) &&
                   !states.contains({.region = REGION_MAIN, .path = bytes})) {
            sequences.push_back(number);
        }
    }
    return sequences;
}

void AddForeignSequences(States& states, const std::vector<uint32_t>& sequences, const Ingredients& from,
                         const CSampleSource& source)
{
    std::unordered_set<uint32_t> candidates(sequences.begin(), sequences.end());
    const size_t rounds = from.recipe.sequenceRounds;
    for (size_t round = 0; round < rounds; ++round) {
        const std::vector<Mistake> mistakes =
            FindMistakes(states, candidates, from, source, MISTAKE_SEED + 100 * round);
        const std::vector<uint32_t> chosen = GreedyCover(mistakes, from.recipe.sequences / rounds);
        for (const uint32_t sequence : chosen) {
            SendAway(states, BytesOf(sequence));
            candidates.erase(sequence);
        }
        std::cerr << mistakes.size() << " pieces of foreign text that " << candidates.size() + chosen.size()
                  << " sequences may mend, of which " << chosen.size() << " are used\n";
    }
}
