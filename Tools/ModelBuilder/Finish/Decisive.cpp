// Hints and starts by candidate and script, collected first, then added with the values that the walk had.
#include "Decisive.h"

#include <iostream>

#include "Shares.h"

namespace
{
bool IsMark(wchar_t character)
{
    return character >= 0x2000 && (character < 0x3400 || character > 0x9FFF);
}

// Pairs of the two-byte encodings alone: UTF-8 and UTF-16LE do not have them either.
bool IsTwoByteOnly(const std::string& bytes)
{
    const bool isShortUtf8 = bytes.size() == 2 && ByteAt(bytes, 0) < 0xE0 && IsUtf8Tail(ByteAt(bytes, 1));
    return bytes.size() == 2 && ByteAt(bytes, 0) >= 0xA1 && !OpensUtf8(bytes) &&
           (!isShortUtf8 || ByteAt(bytes, 1) >= 0xA1);
}

class CSeamBuilder
{
public:
    CSeamBuilder(States& states, const Ingredients& from)
        : m_states(states),
          m_encoder(from.encoder),
          m_recipe(from.recipe),
          m_hans(SharesOf(from, false)),
          m_hant(SharesOf(from, true))
    {
    }

    void Build()
    {
        const States before = m_states;
        for (const Candidate candidate : ALL_CANDIDATES) {
            AddAscii(candidate);
            for (const Shares* shares : {&m_hans, &m_hant}) {
                if (candidate == CANDIDATE_BIG5 && shares == &m_hans) continue;
                AddHints(candidate, *shares);
                AddStarts(candidate, *shares);
            }
        }
        for (const auto& [name, state] : m_special) AddState(m_states, name.region, name.path);
        InheritValues(m_states, before);
        for (const auto& [name, state] : m_special) {
            if (state.onward != BY_RULE) m_states[name].onward = state.onward;
            if (state.value != TRIE_VALUE_NONE) m_states[name].value = state.value;
        }
        std::cerr << m_hints << " hints, " << m_starts << " starts\n";
    }

private:
    // The share in Big5 text of what is a character's bytes in GBK, or the other way round.
    double AsOther(Candidate candidate, const CharacterShares Shares::*place, const std::string& pair) const
    {
        const auto& mapping = candidate == CANDIDATE_GBK ? m_encoder.Big5() : m_encoder.Gbk();
        const wchar_t other =
            mapping[PairIndex(static_cast<unsigned char>(pair[0]), static_cast<unsigned char>(pair[1]))];
        const double inHant = ShareOf(m_hant.*place, other);
        return candidate == CANDIDATE_GBK ? inHant : std::max(inHant, ShareOf(m_hans.*place, other));
    }

    void AddAscii(Candidate candidate)
    {
        const Region hint = RegionOf(REGION_HINT, candidate), next = RegionOf(REGION_NEXT_LINE, candidate);
        const std::string high = candidate == CANDIDATE_UNICODE ? std::string(1, '\0') : "";
        for (unsigned byte = 0x09; byte < 0x7F; ++byte) {
            if (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\r') continue;
            const std::string ascii = static_cast<char>(byte) + high;
            m_special[{.region = hint, .path = ascii}].onward = byte == '\n' ? next : BY_RULE;
            m_special[{.region = next, .path = ascii}];
        }
    }

    void AddHint(Candidate candidate, const StateName& name)
    {
        // A unit that may be ASCII and a lead byte is still followed as both.
        if (LeadAfterAscii(name.path) || (!m_states.contains(name) && name.path.size() != 4)) return;
        m_special[name].onward = RegionOf(REGION_HINT, candidate);
        ++m_hints;
    }

    void AddHints(Candidate candidate, const Shares& shares)
    {
        const bool byPairs = candidate == CANDIDATE_GBK || candidate == CANDIDATE_BIG5;
        for (const wchar_t c :
             Top(shares.ends, byPairs ? m_recipe.hintMarks : m_recipe.hintCharacters, [&](wchar_t c) {
                 return (byPairs ? IsMark(c) : c >= 0x2000) && ShareOf(shares.atEnd, c) > m_recipe.leastAtEnd;
             })) {
            const std::string bytes = m_encoder.Encode(candidate, {c});
            if (candidate == CANDIDATE_UTF8) {
                AddHint(candidate, {REGION_SECOND, bytes});
            } else if (!byPairs || (IsTwoByteOnly(bytes) &&
                                    ShareOf(shares.ends, c) >
                                        m_recipe.hintOdds * AsOther(candidate, &Shares::ends, bytes))) {
                AddHint(candidate, {REGION_MAIN, bytes});
            }
        }
        if (!byPairs) return;
        for (const std::wstring& word :
             Top(shares.lastWords, m_recipe.hintWords, [](const std::wstring&) { return true; })) {
            const std::string first = m_encoder.Encode(candidate, word.substr(0, 1)),
                              second = m_encoder.Encode(candidate, word.substr(1));
            if (!IsTwoByteOnly(first) || !IsTwoByteOnly(second)) continue;
            const double other =
                AsOther(candidate, &Shares::anywhere, first) * AsOther(candidate, &Shares::anywhere, second);
            if (shares.lastWords.at(word) > m_recipe.hintOdds * other)
                AddHint(candidate, {REGION_MAIN, first + second});
        }
    }

    void AddStarts(Candidate candidate, const Shares& shares)
    {
        for (const wchar_t c : Top(shares.starts, m_recipe.starts, [](wchar_t c) { return c >= 0x2000; })) {
            const std::string bytes = m_encoder.Encode(candidate, {c});
            if (candidate == CANDIDATE_GBK || candidate == CANDIDATE_BIG5) {
                // Behind an odd line, the text proper may start with any of its characters.
                if (!IsTwoByteOnly(bytes) ||
                    AsOther(candidate, &Shares::anywhere, bytes) > m_recipe.mostByChance ||
                    shares.starts.at(c) < m_recipe.startOdds * AsOther(candidate, &Shares::starts, bytes))
                    continue;
            }
            if (candidate == CANDIDATE_UNICODE && ByteAt(bytes, 1) < 0x20) continue;
            m_special[{.region = RegionOf(REGION_NEXT_LINE, candidate), .path = bytes}].value =
                Decisive(candidate);
            ++m_starts;
        }
    }

    States& m_states;
    const CEncoder& m_encoder;
    const Recipe& m_recipe;
    Shares m_hans, m_hant;
    States m_special;  // the states that end in another way than their region's rules say
    int m_hints = 0, m_starts = 0;
};
}  // namespace

void DropDecisiveStates(States& states)
{
    const auto isOurs = [](Region region) {
        return IsRegionOf(region, REGION_HINT) || IsRegionOf(region, REGION_NEXT_LINE);
    };
    std::erase_if(states,
                  [&](const auto& item) { return isOurs(item.first.region) && !item.first.path.empty(); });
    for (auto& [name, state] : states)
        if (isOurs(state.onward)) state.onward = BY_RULE;
}

void AddDecisiveStates(States& states, const Ingredients& from)
{
    CSeamBuilder(states, from).Build();
}
