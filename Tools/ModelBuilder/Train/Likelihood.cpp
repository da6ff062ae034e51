// Shares by character pairs, with one more than was seen for whatever was not.
#include "Likelihood.h"

#include <algorithm>

#include "Bytes.h"

namespace
{
std::vector<double> UnlistedSuccessors(const Statistics& counts)
{
    std::vector<double> rest(0x10000, 0);
    for (const auto& [character, entry] : counts.characters) {
        double& unlisted = rest.at(static_cast<size_t>(character));
        unlisted = entry.total;
        for (const auto& [next, count] : entry.next) unlisted -= count;
    }
    return rest;
}

// The characters of UTF-8 that take one or two bytes each; empty where the bytes are anything else, or all
// ASCII.
std::wstring DecodedByTwos(const std::string& bytes)
{
    std::wstring text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        const unsigned byte = ByteAt(bytes, i);
        if (byte >= 0x80 && (byte >= 0xE0 || i + 1 == bytes.size() || !IsPartOfUtf8(bytes.substr(i, 2))))
            return L"";
        text += static_cast<wchar_t>(byte < 0x80 ? byte : (byte & 0x1F) << 6 | (ByteAt(bytes, ++i) & 0x3F));
    }
    return IsAscii(bytes) ? L"" : text;
}

bool IsAsciiText(const std::wstring& text)
{
    return std::all_of(text.begin(), text.end(), [](wchar_t c) { return c < 0x80; });
}
}  // namespace

CLikelihood::CLikelihood(const Ingredients& from)
    : m_from(from),
      m_scripts{from.WeightOfScript(false), from.WeightOfScript(true)},
      m_world(from.WeightOfWorld())
{
    for (const CountedClass& counted : from.classes) {
        const Class opened{.counted = &counted, .rest = UnlistedSuccessors(counted.counts)};
        if (counted.kind.role == Role::ASCII) m_ascii = opened;
        if (IsChinese(counted.kind.role) || counted.kind.role == Role::WORLD) m_classes.push_back(opened);
    }
}

double CLikelihood::WeightOf(Candidate candidate, const TextClass& kind) const
{
    const Recipe& recipe = m_from.recipe;
    const double share = kind.weight / (kind.role == Role::WORLD ? m_world : m_scripts[kind.isTraditional]);
    if (candidate == CANDIDATE_BIG5)
        return IsChinese(kind.role) && kind.isTraditional ? share * recipe.big5Weight : 0;
    const double world = candidate == CANDIDATE_GBK ? 0 : recipe.worldPart;
    if (kind.role == Role::WORLD) return world * share;
    const double part = recipe.TraditionalPart(candidate) / 100.0;
    return (1 - world) * share * (kind.isTraditional ? part : 1 - part);
}

double CLikelihood::Alone(const Class& c, wchar_t character) const
{
    const auto& characters = c.counted->counts.characters;
    const auto found = characters.find(character);
    return found == characters.end() ? m_from.recipe.unseenCharacter : found->second.total / c.counted->size;
}

double CLikelihood::Behind(const Class& c, wchar_t last, wchar_t character) const
{
    const auto& characters = c.counted->counts.characters;
    const auto found = characters.find(last);
    if (found == characters.end()) return Alone(c, character);
    const Successors& entry = found->second;
    const auto next = entry.next.find(character);
    const double seen = next == entry.next.end() ? 0 : next->second;
    // One more than there were, so that nothing is impossible.
    return (seen + (c.rest[static_cast<size_t>(last)] + 1) * Alone(c, character)) / (entry.total + 1);
}

double CLikelihood::InClass(const Class& c, const std::wstring& text) const
{
    double share = Alone(c, text.front());
    for (size_t i = 1; i < text.size(); ++i) share *= Behind(c, text[i - 1], text[i]);
    // Lists of words have more line ends than texts.
    const bool endsLine = c.counted->kind.role == Role::WORDS && text.find(L'\n') != std::wstring::npos;
    return endsLine ? share * m_from.recipe.wordsLineEnds : share;
}

double CLikelihood::Of(Candidate candidate, const std::wstring& text) const
{
    if (candidate == CANDIDATE_GBK && IsAsciiText(text)) return InClass(m_ascii, text);
    double sum = 0;
    for (const Class& c : m_classes)
        if (const double weight = WeightOf(candidate, c.counted->kind); weight > 0)
            sum += weight * InClass(c, text);
    return sum;
}

CandidateShares CLikelihood::Of(const std::string& bytes) const
{
    CandidateShares shares{};
    for (const Candidate c : PAIR_CANDIDATES)
        if (const std::wstring text = m_from.encoder.Decode(c, bytes); !text.empty()) shares[c] = Of(c, text);
    if (const std::wstring text = DecodedByTwos(bytes); !text.empty())
        shares[CANDIDATE_UTF8] = Of(CANDIDATE_UTF8, text);
    return shares;
}
