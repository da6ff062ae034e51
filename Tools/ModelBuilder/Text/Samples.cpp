// Kinds and lengths of samples, drawn by the recipe's percentages. The order of the draws is part of the
// result.
#include "Samples.h"

#include <algorithm>

#include "Bytes.h"
#include "ForeignTokens.h"
#include "Oddities.h"

namespace
{
// Lengths of one kind: how many percent of the samples have them.
struct Band {
    uint32_t percent;
    size_t least, most;
};

// The last band is for the rest.
template <size_t COUNT>
size_t DrawFrom(const Band (&bands)[COUNT], uint32_t all, CRandom& random)
{
    uint32_t drawn = random.Below(all);
    const Band* band = bands;
    for (; band != bands + COUNT - 1 && drawn >= band->percent; ++band) drawn -= band->percent;
    return band->least + (band->most > band->least ? random.Below(band->most - band->least + 1) : 0);
}

// Mostly short, as short text is where errors are; now and then a whole page.
size_t DrawLength(const Recipe& recipe, CRandom& random)
{
    const Band bands[] = {
        {recipe.ofOne, 1, 1},     {recipe.ofTwo, 2, 2},     {recipe.ofThree, 3, 3},   {recipe.ofFour, 4, 4},
        {recipe.ofTwelve, 5, 12}, {recipe.ofALine, 13, 32}, {recipe.ofLines, 33, 96}, {0, 100, 499}};
    return DrawFrom(bands, 100, random);
}

// Pieces of three to seven bytes are hard to tell from hanzi; longer ones are to be right for good.
size_t DrawAsciiLength(const Recipe& recipe, CRandom& random)
{
    const Band bands[] = {{recipe.asciiOfSeven, 1, 7}, {recipe.asciiOfALine, 8, 31}, {0, 32, 331}};
    return DrawFrom(bands, 10, random);
}

// Lines, titles and messages; now and then a word.
size_t DrawLineLength(const Recipe& recipe, CRandom& random)
{
    const Band bands[] = {{recipe.worldOfFour, 2, 4},
                          {recipe.worldOfTwelve, 5, 12},
                          {recipe.worldOfALine, 13, 52},
                          {0, 53, 152}};
    return DrawFrom(bands, 100, random);
}
}  // namespace

CSampleSource::CSampleSource(const Ingredients& ingredients)
    : m_from(ingredients),
      m_recipe(ingredients.recipe),
      m_scripts{ingredients.WeightOfScript(false), ingredients.WeightOfScript(true)},
      m_world(ingredients.WeightOfWorld())
{
    for (const CountedClass& counted : m_from.classes) {
        if (counted.kind.role == Role::ASCII) m_ascii = m_samplers.size();
        m_samplers.emplace_back(counted.counts);
    }
    for (unsigned code = 0x4E00; code < 0xA000; ++code) {
        const auto hanzi = static_cast<wchar_t>(code);
        m_hanzi[LevelOf(m_from.encoder, hanzi)].push_back(hanzi);
    }
}

std::string CSampleSource::Ascii(size_t length, CRandom& random) const
{
    if (random.Chance(m_recipe.machineText)) return MachineText(length, random);
    std::string bytes;
    for (const wchar_t c : m_samplers[m_ascii].Text(length + 8, m_recipe.startsLine, random)) {
        if (c >= 0x80) continue;
        if (c == L'\n' && length % 3 == 0) bytes += '\r';
        bytes += static_cast<char>(c);
    }
    bytes.resize(std::min(length, bytes.size()));
    return bytes;
}

std::wstring CSampleSource::Chinese(bool traditional, size_t length, CRandom& random) const
{
    const auto all = static_cast<uint32_t>(m_scripts[traditional]);
    const uint32_t drawn = random.Below(all);
    double upTo = 0;
    for (size_t i = 0; i < m_samplers.size(); ++i) {
        const TextClass& kind = m_from.classes[i].kind;
        if (!IsChinese(kind.role) || kind.isTraditional != traditional) continue;
        upTo += kind.weight;
        if (drawn >= upTo) continue;
        const bool joined = drawn * 100 >= (100 - m_recipe.joinedWords) * all ||
                            (kind.role == Role::PROSE && length < m_recipe.joinedProse);
        return m_samplers[i].Text(length, m_recipe.startsLine, random, joined);
    }
    return L"";
}

// ASCII with one to three words of Chinese in it.
std::wstring CSampleSource::Sparse(bool traditional, size_t length, CRandom& random) const
{
    const std::string ascii = Ascii(length, random);
    std::wstring text(ascii.begin(), ascii.end());
    uint32_t words = 1;
    if (random.Chance(m_recipe.moreWords)) words += random.Below(m_recipe.mostMoreWords);
    for (; words > 0; --words) {
        const std::wstring word = Chinese(traditional, 1 + random.Below(m_recipe.longestWord), random);
        text.insert(random.Below(text.size() + 1), word);
    }
    return text;
}

// Now and then a character that no counts hold: half of them common, one in ten outside both standards.
void CSampleSource::DrawRareHanzi(std::wstring& text, Candidate candidate, CRandom& random) const
{
    for (wchar_t& c : text) {
        if (c < 0x4E00 || c > 0x9FFF || !random.Chance(m_recipe.rareHanzi)) continue;
        const uint32_t kind = random.Below(10);
        const auto& level = m_hanzi[kind < m_recipe.commonHanzi                          ? LEVEL_COMMON
                                    : kind < m_recipe.commonHanzi + m_recipe.secondHanzi ? LEVEL_RARE
                                                                                         : LEVEL_OUTSIDE];
        const wchar_t rare = level[random.Below(level.size())];
        if (m_from.encoder.Has(candidate, rare)) c = rare;
    }
}

void CSampleSource::AddOddities(std::wstring& text, Candidate candidate, CRandom& random) const
{
    const bool isShort = text.size() <= 4;  // where one oddity would be all there is
    if (!isShort && random.Chance(m_recipe.runs)) InsertRun(text, m_recipe, random);
    if (text.size() > 16 && random.Chance(m_recipe.escapes)) InsertEscapes(text, m_recipe, random);
    if (random.Chance(m_recipe.windowsLineEnds)) EndLinesAsWindows(text);
    if (!isShort && random.Chance(m_recipe.rareHanziSamples)) DrawRareHanzi(text, candidate, random);
}

std::string CSampleSource::DrawForeign(size_t kind, CRandom& random) const
{
    const size_t length = 64 + random.Below(200);
    std::string bytes;
    for (const wchar_t token : m_samplers[kind].Text(length, m_recipe.startsLine, random))
        bytes += BytesOfToken(token);
    return bytes;
}

Sample CSampleSource::DrawAscii(CRandom& random) const
{
    Sample sample{.bytes = Ascii(DrawAsciiLength(m_recipe, random), random)};
    if (sample.bytes.size() >= m_recipe.wholeAscii) sample.weight = m_recipe.wholeAsciiWeight;
    return sample;
}

std::wstring CSampleSource::World(size_t length, CRandom& random) const
{
    const uint32_t drawn = random.Below(static_cast<uint32_t>(m_world));
    double upTo = 0;
    for (size_t i = 0; i < m_samplers.size(); ++i) {
        if (m_from.classes[i].kind.role != Role::WORLD) continue;
        upTo += m_from.classes[i].kind.weight;
        if (drawn < upTo) return m_samplers[i].Text(length, m_recipe.startsLine, random);
    }
    return L"";
}

Sample CSampleSource::DrawWorld(CRandom& random) const
{
    Sample sample;
    sample.answer = random.Chance(m_recipe.worldInUnicode) ? CANDIDATE_UNICODE : CANDIDATE_UTF8;
    const size_t length = DrawLineLength(m_recipe, random);
    std::wstring text;
    if (random.Chance(m_recipe.signs)) {
        const std::string ascii = Ascii(length, random);
        text.assign(ascii.begin(), ascii.end());
        InsertSigns(text, m_recipe, random);
    } else {
        text = World(length, random);
    }
    if (random.Chance(m_recipe.emoji)) InsertEmoji(text, m_recipe, random);
    if (random.Chance(m_recipe.windowsLineEnds)) EndLinesAsWindows(text);
    sample.bytes = m_from.encoder.Encode(sample.answer, text);
    if (sample.answer == CANDIDATE_UTF8) Damage(sample.bytes, m_recipe, random);
    if (IsAscii(sample.bytes) && sample.answer == CANDIDATE_UTF8) sample.answer = CANDIDATE_GBK;
    return sample;
}

std::string CSampleSource::DrawOtherUnicode(OtherUnicode kind, CRandom& random) const
{
    const size_t length = 16 + random.Below(64);
    const bool traditional = random.Chance(m_recipe.traditionalInUnicode);
    const std::wstring text = Chinese(traditional, length, random);
    std::string bytes;
    for (const wchar_t c : text) {
        const std::string pair =
            TwoBytes(static_cast<unsigned>(c) >> 8 & 0xFF, static_cast<unsigned>(c) & 0xFF);
        if (kind == UTF32_BE) bytes.append(2, '\0');
        bytes += kind == UTF32_LE ? std::string{pair[1], pair[0], '\0', '\0'} : pair;
    }
    return bytes;
}

Sample CSampleSource::Draw(CRandom& random) const
{
    if (random.Chance(m_recipe.asciiSamples)) return DrawAscii(random);
    return random.Chance(m_recipe.worldSamples) ? DrawWorld(random) : DrawChinese(random);
}

Sample CSampleSource::DrawChinese(CRandom& random) const
{
    Sample sample;
    sample.answer = static_cast<Candidate>(random.Below(CANDIDATES));
    const bool traditional =
        sample.answer == CANDIDATE_BIG5 || random.Chance(m_recipe.TraditionalPart(sample.answer));
    if (sample.answer == CANDIDATE_BIG5) sample.weight = m_recipe.big5Weight;
    const size_t length = DrawLength(m_recipe, random);
    std::wstring text;
    if (length > 8 && random.Chance(m_recipe.artSamples)) {
        const std::wstring title = Chinese(traditional, random.Below(m_recipe.titleOfArt), random);
        text = Art(length, m_recipe, random) + title;
    } else if (length > 8 && random.Chance(m_recipe.sparseSamples)) {
        text = Sparse(traditional, length, random);
    } else {
        text = Chinese(traditional, length, random);
    }
    AddOddities(text, sample.answer, random);
    sample.bytes = m_from.encoder.Encode(sample.answer, text);
    if (sample.answer == CANDIDATE_GBK && random.Chance(m_recipe.fourByteSamples))
        InsertFourBytes(sample.bytes, m_recipe, random);
    Damage(sample.bytes, m_recipe, random);
    if (IsAscii(sample.bytes) && sample.answer != CANDIDATE_UNICODE) sample.answer = CANDIDATE_GBK;
    return sample;
}
