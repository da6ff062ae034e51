// Shares of short texts; see Likelihood.h.
#include "Likelihood.h"

#include <algorithm>

namespace
{
constexpr double UNSEEN = 2e-8;  // share of a character that a class does not have
// Lists of words have more line ends than texts.
constexpr double LINE_ENDS_IN_WORDS = 0.2;

double WeightOf(Candidate candidate, bool traditional)
{
    if (candidate == CANDIDATE_BIG5) return traditional ? BIG5_WEIGHT : 0;
    const double part = TraditionalPart(candidate) / 100.0;
    return traditional ? part : 1 - part;
}

bool IsAscii(const std::wstring& text)
{
    return std::all_of(text.begin(), text.end(), [](wchar_t c) { return c < 0x80; });
}
}  // namespace

CLikelihood::CLikelihood(const CSampleSource& source, const CEncoder& encoder)
    : m_encoder(encoder), m_ascii(Opened(source, "ascii", 1))
{
    for (const std::string script : {"hans", "hant"}) {
        m_classes.push_back(Opened(source, script + "-prose", 0.45));
        m_classes.push_back(Opened(source, script + "-tech", 0.25));
        m_classes.push_back(Opened(source, script + "-words", 0.3));
    }
}

CLikelihood::Class CLikelihood::Opened(const CSampleSource& source, const std::string& name, double weight)
{
    Class c{&source.Counted(name), weight, name.ends_with("words"), name.starts_with("hant")};
    c.rest.assign(0x10000, 0);
    for (const auto& [character, entry] : c.counted->characters) {
        c.all += entry.total;
        double& rest = c.rest.at(static_cast<size_t>(character));
        rest = entry.total;
        for (const auto& [next, count] : entry.next) rest -= count;
    }
    return c;
}

double CLikelihood::Alone(const Class& c, wchar_t character)
{
    const auto found = c.counted->characters.find(character);
    return found == c.counted->characters.end() ? UNSEEN : found->second.total / c.all;
}

double CLikelihood::Behind(const Class& c, wchar_t last, wchar_t character)
{
    const auto found = c.counted->characters.find(last);
    if (found == c.counted->characters.end()) return Alone(c, character);
    const Successors& entry = found->second;
    const auto next = entry.next.find(character);
    const double seen = next == entry.next.end() ? 0 : next->second;
    // One more than there were, so that nothing is impossible.
    return (seen + (c.rest[static_cast<size_t>(last)] + 1) * Alone(c, character)) / (entry.total + 1);
}

double CLikelihood::InClass(const Class& c, const std::wstring& text)
{
    double share = Alone(c, text.front());
    for (size_t i = 1; i < text.size(); ++i) share *= Behind(c, text[i - 1], text[i]);
    return c.isWords && text.find(L'\n') != std::wstring::npos ? share * LINE_ENDS_IN_WORDS : share;
}

double CLikelihood::Of(Candidate candidate, const std::wstring& text) const
{
    if (candidate == CANDIDATE_GBK && IsAscii(text)) return InClass(m_ascii, text);
    double sum = 0;
    for (const Class& c : m_classes)
        if (const double weight = c.weight * WeightOf(candidate, c.isTraditional); weight > 0)
            sum += weight * InClass(c, text);
    return sum;
}

CandidateShares CLikelihood::Of(const std::string& bytes) const
{
    CandidateShares shares{};
    for (const Candidate c : PAIR_CANDIDATES)
        if (const std::wstring text = m_encoder.Decode(c, bytes); !text.empty()) shares[c] = Of(c, text);
    return shares;
}
