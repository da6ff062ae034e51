// Seams between lines as decisive states; see Decisive.h.
#include "Decisive.h"

#include <algorithm>
#include <iostream>

#include "Shape.h"

namespace
{
constexpr double BEYOND_DOUBT = 1e-6;
constexpr double RARE = 5e-5;    // share of a character that may start a line by chance
constexpr double UNSEEN = 1e-8;  // share of what the statistics do not hold
constexpr size_t MOST_ENDS = 12, MOST_STARTS = 250;
constexpr std::pair<const wchar_t*, double> LINE_ENDS[] = {
    {L"\n", 0.5}, {L"\r\n", 0.3}, {L"\n\n", 0.12}, {L"\r\n\r\n", 0.08}};

struct Seam {
    double share;
    StateName state;
    int code;
};

// Shares of characters before and after a line end, and anywhere.
struct Seams {
    std::map<wchar_t, double> ends, starts, anywhere;
};

Seams SeamsOf(const CSampleSource& source, const std::string& script)
{
    Seams seams;
    for (const char* genre : {"prose", "tech"}) {
        const Statistics& counted = source.Counted(script + '-' + genre);
        const Successors& lines = counted.characters.at(L'\n');
        for (const auto& [next, count] : lines.next) seams.starts[next] += 0.5 * count / lines.total;
        double all = 0;
        for (const auto& [character, entry] : counted.characters) all += entry.total;
        for (const auto& [character, entry] : counted.characters) {
            seams.anywhere[character] += 0.5 * entry.total / all;
            if (const auto end = entry.next.find(L'\n'); end != entry.next.end())
                seams.ends[character] += 0.5 * end->second / lines.total;
        }
    }
    return seams;
}

double ShareOf(const std::map<wchar_t, double>& shares, wchar_t character)
{
    const auto found = shares.find(character);
    return found == shares.end() ? UNSEEN : found->second;
}

// The most frequent characters beyond ASCII that `wanted` accepts.
template <typename Predicate>
std::vector<wchar_t> Top(const std::map<wchar_t, double>& shares, size_t count, Predicate wanted)
{
    std::vector<std::pair<double, wchar_t>> order;
    for (const auto& [character, share] : shares)
        if (character >= 0x80 && wanted(character)) order.emplace_back(-share, character);
    std::sort(order.begin(), order.end());
    std::vector<wchar_t> top;
    for (const auto& [share, character] : order)
        if (top.size() < count) top.push_back(character);
    return top;
}

// What a pair of bytes is in the other of the two two-byte encodings.
wchar_t ReadAs(const std::vector<uint16_t>& mapping, const std::string& pair)
{
    return mapping[PairIndex(static_cast<unsigned char>(pair[0]), static_cast<unsigned char>(pair[1]))];
}

bool IsPlainPair(const std::string& bytes)
{
    return bytes.size() == 2 && ByteAt(bytes, 0) >= 0xA1 && !OpensUtf8(bytes);
}

class CSeamFinder
{
public:
    CSeamFinder(const CSampleSource& source, const CEncoder& encoder)
        : m_encoder(encoder), m_hans(SeamsOf(source, "hans")), m_hant(SeamsOf(source, "hant"))
    {
    }

    // All seams that are beyond doubt, the most frequent first.
    std::vector<Seam> Find()
    {
        for (const Seams* seams : {&m_hans, &m_hant}) {
            const auto ends = Top(seams->ends, MOST_ENDS, [](wchar_t c) { return c < 0x3400 || c > 0x9FFF; });
            const auto starts = Top(seams->starts, MOST_STARTS, [](wchar_t) { return true; });
            for (const Candidate candidate :
                 {CANDIDATE_GBK, CANDIDATE_BIG5, CANDIDATE_UTF8, CANDIDATE_UNICODE}) {
                if (candidate == CANDIDATE_BIG5 && seams == &m_hans) continue;
                for (const wchar_t end : ends)
                    for (const wchar_t start : starts)
                        if (IsBeyondDoubt(candidate, *seams, end, start)) Add(candidate, *seams, end, start);
            }
        }
        std::stable_sort(m_found.begin(), m_found.end(),
                         [](const Seam& a, const Seam& b) { return a.share > b.share; });
        return m_found;
    }

private:
    bool IsBeyondDoubt(Candidate candidate, const Seams& own, wchar_t end, wchar_t start) const
    {
        const std::string first = m_encoder.Encode(candidate, {end}),
                          second = m_encoder.Encode(candidate, {start});
        if (candidate == CANDIDATE_UTF8) return first.size() == 3 && second.size() == 3;
        if (candidate == CANDIDATE_UNICODE) return ByteAt(first, 1) >= 0x20 && ByteAt(second, 1) >= 0x20;
        if (!IsPlainPair(first) || !IsPlainPair(second)) return false;
        const bool gbk = candidate == CANDIDATE_GBK;
        const auto& mapping = gbk ? m_encoder.Big5() : m_encoder.Gbk();
        double other = 0;
        for (const Seams* seams : {&m_hans, &m_hant}) {
            if (gbk && seams == &m_hans) continue;
            const wchar_t asEnd = ReadAs(mapping, first), asStart = ReadAs(mapping, second);
            // Behind an odd line, the text proper may start with any of its characters.
            if (ShareOf(seams->anywhere, asStart) > RARE) return false;
            other = std::max(other, ShareOf(seams->ends, asEnd) * ShareOf(seams->starts, asStart));
        }
        return other < BEYOND_DOUBT * ShareOf(own.ends, end) * ShareOf(own.starts, start);
    }

    void Add(Candidate candidate, const Seams& seams, wchar_t end, wchar_t start)
    {
        static constexpr int CODES[CANDIDATES] = {ENCODE_GBK, ENCODE_BIG5, ENCODE_UTF8, ENCODE_UNICODE};
        for (const auto& [lineEnd, weight] : LINE_ENDS)
            for (const Region region : {REGION_MAIN, REGION_SECOND}) {
                if (region == REGION_SECOND && candidate != CANDIDATE_UTF8) continue;
                const std::string path = m_encoder.Encode(candidate, end + std::wstring(lineEnd) + start);
                m_found.push_back(
                    {weight * seams.ends.at(end) * seams.starts.at(start), {region, path}, CODES[candidate]});
            }
    }

    const CEncoder& m_encoder;
    Seams m_hans, m_hant;
    std::vector<Seam> m_found;
};

// States on the way to a seam stand in for the state that the walk would be in without them.
void InheritValues(StateValues& states, const StateValues& before)
{
    for (auto& [name, value] : states)
        if (!before.contains(name) && TrieValueCode(value) == 0) {
            StateName twin = ExistingFallBack(states, name);
            while (!before.contains(twin)) twin = ExistingFallBack(states, twin);
            value = before.at(twin);
        }
}
}  // namespace

void AddDecisiveStates(StateValues& states, const CSampleSource& source, const CEncoder& encoder,
                       size_t nodes)
{
    const std::vector<Seam> seams = CSeamFinder(source, encoder).Find();
    for (size_t count = seams.size(); count > 0; count -= count / 20 + 1) {
        StateValues extended = states;
        for (size_t i = 0; i < count; ++i) {
            AddState(extended, seams[i].state.region, seams[i].state.path);
            extended[seams[i].state] = PackTrieValue(seams[i].code, {0, 0, 0, 0});
        }
        InheritValues(extended, states);
        if (extended.size() > nodes) continue;
        const size_t packed = PackStates(LinkStates(extended)).nodes.size();
        std::cerr << count << " seams of " << seams.size() << ", " << extended.size() << " states in "
                  << packed << " nodes\n";
        if (packed > nodes) continue;
        states = extended;
        return;
    }
}
