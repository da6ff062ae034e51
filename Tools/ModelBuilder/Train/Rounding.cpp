// Digits by kind of state: ASCII tells UTF-16LE from the rest, everything else all four apart.
#include "Rounding.h"

#include <algorithm>
#include <cmath>

#include "Characters.h"

namespace
{
// Punctuation and full-width forms of GBK and Big5.
bool IsSign(const StateName& state, size_t candidate)
{
    const unsigned lead = ByteAt(state.path, 0), trail = ByteAt(state.path, 1);
    if (candidate == CANDIDATE_GBK) return (lead == 0xA1 || lead == 0xA3) && trail >= 0xA1;
    return candidate == CANDIDATE_BIG5 && lead >= 0xA1 && lead <= 0xA3;
}

// Whether a pair may be a hanzi of UTF-16LE, however rare: none must cost a text its ten to one.
bool MayBeHanzi(const std::string& pair)
{
    return ByteAt(pair, 1) >= 0x4E && ByteAt(pair, 1) < 0xA0;
}

// Or a letter, a sign or a form.
bool MayBeSign(const std::string& pair)
{
    const unsigned high = ByteAt(pair, 1);
    return high < 0x34 || high >= 0xFE;
}

// Two bytes that words are made of, or the start of a line, in languages that are not ours as well.
bool IsWordLike(const std::string& path)
{
    const auto isLower = [](unsigned byte) { return byte >= 'a' && byte <= 'z'; };
    const auto isUpper = [](unsigned byte) { return byte >= 'A' && byte <= 'Z'; };
    if (path.size() != 2) return false;
    const unsigned first = ByteAt(path, 0), second = ByteAt(path, 1);
    if (first == '\n') return isLower(second) || isUpper(second) || second == '_';
    return isLower(second) && (isLower(first) || isUpper(first) || first == ' ');
}

// A pair of the main region, or one that only follows ASCII, where it may be the end of one unit of UTF-16LE
// and the start of another.
bool IsPair(const Feature& feature)
{
    return feature.pair || (feature.name->region == REGION_UNIT && feature.name->path.size() == 2);
}

wchar_t UnitOf(const std::string& pair)
{
    return static_cast<wchar_t>(ByteAt(pair, 1) << 8 | ByteAt(pair, 0));
}
}  // namespace

// By twos from the first byte beyond ASCII on, as the automaton reads what it does not know. A blank and the
// first byte of a word are counted as well: they may be a unit of UTF-16LE.
ForeignPairs CountForeignPairs(const Ingredients& from, const CSampleSource& source)
{
    constexpr uint64_t SEED = 300;  // any number does
    ForeignPairs most(0x10000);
    for (size_t kind = 0; kind < from.classes.size(); ++kind) {
        if (!IsForeign(from.classes[kind].kind.role)) continue;
        CRandom random(SEED + kind);
        std::vector<double> counts(0x10000);
        double all = 0;
        for (size_t n = 0; n < from.recipe.pairSamples; ++n) {
            const std::string bytes = source.DrawForeign(kind, random);
            for (size_t i = 0; i + 1 < bytes.size(); ++i) {
                const bool startsWord = bytes[i] == ' ' && IsLeadAndHighByte(ByteAt(bytes, i + 1));
                if (startsWord) ++counts[ByteAt(bytes, i) << 8 | ByteAt(bytes, i + 1)];
                if (!IsLead(ByteAt(bytes, i)) || ByteAt(bytes, i + 1) < 0x40) continue;
                ++counts[ByteAt(bytes, i) << 8 | ByteAt(bytes, i + 1)];
                ++all, ++i;
            }
        }
        for (size_t pair = 0; pair < counts.size(); ++pair)
            most[pair] = std::max(most[pair], counts[pair] / std::max(all, 1.0));
    }
    return most;
}

CRounding::CRounding(const CRegression& regression, const Ingredients& from, const ForeignPairs& foreign)
    : m_regression(regression), m_from(from), m_recipe(from.recipe), m_foreign(foreign)
{
    for (const Feature& feature : regression.Features())
        for (size_t c = 0; c < CANDIDATES; ++c) m_all[c] += feature.pair ? feature.seen[c] : 0;
}

// Whether it is a hanzi that dictionaries have.
bool CRounding::IsWellKnown(const std::string& pair) const
{
    const unsigned gbk = m_from.encoder.Pair(CANDIDATE_GBK, UnitOf(pair)),
                   big5 = m_from.encoder.Pair(CANDIDATE_BIG5, UnitOf(pair));
    return IsGb2312Hanzi(gbk >> 8, gbk & 0xFF) || IsBig5FirstLevel(big5 >> 8, big5 & 0xFF);
}

// Whether an ASCII state speaks against UTF-16LE without being a stranger to it: a negative digit would cost
// that its ten to one.
bool CRounding::IsAmbiguous(const Feature& feature, double weight) const
{
    const auto& seen = feature.seen;
    const uint64_t others = uint64_t{seen[CANDIDATE_GBK]} + seen[CANDIDATE_BIG5] + seen[CANDIDATE_UTF8];
    if (!feature.ascii || weight * m_recipe.unitsANat >= 0.5) return false;
    if (feature.pair && MayBeHanzi(feature.name->path) && IsWellKnown(feature.name->path)) return true;
    return seen[CANDIDATE_UNICODE] > 3 && others < m_recipe.doubtlessOdds * seen[CANDIDATE_UNICODE];
}

bool CRounding::IsDoubtful(const Feature& feature) const
{
    return IsAmbiguous(feature, m_regression.WeightOf(feature)[CANDIDATE_UNICODE]) &&
           IsWordLike(feature.name->path);
}

int CRounding::AsciiValue(const Feature& feature) const
{
    const double weight = m_regression.WeightOf(feature)[CANDIDATE_UNICODE];
    int digit = std::clamp(static_cast<int>(std::lround(weight * m_recipe.unitsANat)), LEAST_DIGIT,
                           MostDigit(CANDIDATE_UNICODE));
    // Letters beyond ASCII: no text of single bytes has such a second byte.
    if (feature.pair && IsUnusedControl(ByteAt(feature.name->path, 1))) digit = std::max(digit, 1);
    const bool unseen = feature.seen == std::array<uint32_t, CANDIDATES>{};
    if (feature.silent || IsDoubtful(feature) || (digit == 0 && unseen)) return TRIE_VALUE_NONE;
    // Positive for UTF-16LE, yet less so than for the rest, which stay equal. Only where a hanzi is at stake:
    // what is positive for GBK keeps foreign text from being undecided.
    if (digit < 1 && IsAmbiguous(feature, weight))
        return feature.pair && MayBeHanzi(feature.name->path) ? PackAllBut(CANDIDATE_UNICODE, 1, 1 - digit)
                                                              : TRIE_VALUE_NONE;
    return PackAllBut(CANDIDATE_UNICODE, digit, 0) | (digit == 0 ? TRIE_VALUE_COUNTED : 0);
}

int CRounding::MixedValue(const Feature& feature) const
{
    const Weights weight = m_regression.WeightOf(feature);
    Digits digits;
    for (size_t c = 0; c < CANDIDATES; ++c)
        digits[c] = static_cast<int>(std::lround(weight[c] * m_recipe.unitsANat));
    const int shift = ShiftOf(feature, digits);
    for (size_t c = 0; c < CANDIDATES; ++c)
        digits[c] = std::clamp(digits[c] + shift, LEAST_DIGIT, MostDigit(c));
    if (IsAtHomeInUnicode(feature)) digits[CANDIDATE_UNICODE] = std::max(digits[CANDIDATE_UNICODE], 1);
    // An accented letter and another letter, which is hardly a hanzi in either: it must not bring GBK ahead
    // of Big5, as few positive states would decide then (AsciiStart.cpp).
    if (IsForeign(feature, CANDIDATE_GBK) && IsForeign(feature, CANDIDATE_BIG5) &&
        ByteAt(feature.name->path, 1) < 0x80)
        digits[CANDIDATE_BIG5] = std::max(digits[CANDIDATE_BIG5], digits[CANDIDATE_GBK]);
    return PackDigits(digits);
}

// Whether UTF-16LE must not suffer for the state: one that it only meets by accident may speak against it.
bool CRounding::IsAtHomeInUnicode(const Feature& feature) const
{
    const uint32_t seen = feature.seen[CANDIDATE_UNICODE];
    if (!feature.pair) return seen > 0;
    const std::string& pair = feature.name->path;
    return MayBeHanzi(pair) || IsUnusedControl(ByteAt(pair, 1)) || (seen > 0 && MayBeSign(pair)) ||
           seen > m_recipe.leastInUse * m_all[CANDIDATE_UNICODE];
}

// Up until every encoding that uses the state is positive, or, where none does, down until none is.
int CRounding::ShiftOf(const Feature& feature, const Digits& digits) const
{
    constexpr int NONE = 100;
    uint64_t all = 0;
    for (const uint32_t count : feature.seen) all += count;
    int raise = -NONE, limit = NONE;
    for (size_t c = 0; c < CANDIDATES; ++c) {
        const uint64_t seen = feature.seen[c];
        if (c != CANDIDATE_UTF8) limit = std::min(limit, MostDigit(c) - digits[c]);
        if (seen > 0 && IsInUse(feature, c) &&
            (c == CANDIDATE_UNICODE || seen * m_recipe.rarestOccurrence >= all))
            raise = std::max(raise, 1 - digits[c]);
    }
    if (raise == -NONE) return std::min(limit, -*std::max_element(digits.begin(), digits.end()));
    // Where GBK and Big5 lie further apart than the digits below 1 reach, the better one goes up.
    raise = std::max(raise, LEAST_DIGIT - std::min(digits[CANDIDATE_GBK], digits[CANDIDATE_BIG5]));
    return std::min(limit, raise);
}

// Whether foreign text has a pair far more often than text in the encoding.
bool CRounding::IsForeign(const Feature& feature, size_t candidate) const
{
    if (!IsPair(feature) || candidate == CANDIDATE_UTF8 || candidate == CANDIDATE_UNICODE) return false;
    const unsigned first = ByteAt(feature.name->path, 0), second = ByteAt(feature.name->path, 1);
    const double foreign = m_foreign[first << 8 | second];
    const double odds = second < 0x80 ? m_recipe.foreignOddsOfAscii : m_recipe.foreignOdds;
    return foreign > 0 && ShareOf(feature, candidate) * odds <= foreign;
}

double CRounding::ShareOf(const Feature& feature, size_t candidate) const
{
    return feature.seen[candidate] / std::max(m_all[candidate], 1.0);
}

// Rare characters do not count for their encoding: compressed data is full of them. Nor do those that are
// foreign.
bool CRounding::IsInUse(const Feature& feature, size_t candidate) const
{
    if (IsPair(feature) && IsSign(*feature.name, candidate)) return true;
    if (feature.pair && ShareOf(feature, candidate) <= m_recipe.leastInUse) return false;
    return !IsForeign(feature, candidate);
}
