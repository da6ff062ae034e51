// Training samples; see Samples.h.
#include "Samples.h"

#include <algorithm>

namespace
{
const char* const CLASSES[] = {"hans-prose",   "hans-tech", "hans-words", "hant-prose", "hant-tech",
                               "hant-words",   "ascii",     "shift-jis",  "euc-jp",     "euc-kr",
                               "windows-1251", "latin-1",   "binary"};

// Mostly short, as short text is where errors are; now and then a whole page.
size_t DrawLength(CRandom& random)
{
    const uint32_t kind = random.Below(100);
    if (kind < 6) return 1;
    if (kind < 30) return 2;
    if (kind < 44) return 3;
    if (kind < 54) return 4;
    if (kind < 72) return 5 + random.Below(8);
    if (kind < 86) return 13 + random.Below(20);
    if (kind < 96) return 33 + random.Below(64);
    return 100 + random.Below(400);
}

void EndLinesAsWindows(std::wstring& text)
{
    for (size_t at = text.find(L'\n'); at != std::wstring::npos; at = text.find(L'\n', at + 2))
        text.insert(at, 1, L'\r');
}

// A run of characters that no dictionary holds: kana, Zhuyin, full-width forms, frames, signs.
void InsertRun(std::wstring& text, CRandom& random)
{
    static constexpr wchar_t RANGES[][2] = {{0x3041, 83}, {0x30A1, 86}, {0x3105, 37}, {0xFF01, 94},
                                            {0xFF10, 10}, {0x2550, 30}, {0x2500, 60}, {0x2460, 10},
                                            {0x2160, 10}, {0x0391, 24}, {0x0430, 32}, {0x2190, 4},
                                            {0x25A0, 30}, {0x2601, 10}, {0x3008, 12}};
    const auto& range = RANGES[random.Below(sizeof RANGES / sizeof RANGES[0])];
    const size_t length = 1 + random.Below(6);
    const bool same = random.Chance(40);
    const size_t at = random.Below(static_cast<uint32_t>(text.size() + 1));
    std::wstring run;
    wchar_t drawn = 0;
    for (size_t i = 0; i < length; ++i) {
        if (i == 0 || !same)
            drawn = static_cast<wchar_t>(range[0] +
                                         static_cast<wchar_t>(random.Below(static_cast<uint32_t>(range[1]))));
        run += drawn;
    }
    text.insert(at, run);
}

// Terminals' colours, as bulletin boards use them.
void InsertEscapes(std::wstring& text, CRandom& random)
{
    static const wchar_t* const ESCAPES[] = {L"\x1b[m",        L"\x1b[1;33m",    L"\x1b[32m",
                                             L"\x1b[0;37;44m", L"\x1b[1;31;40m", L"\x1b[K"};
    for (uint32_t runs = 1 + random.Below(4); runs > 0; --runs) {
        const wchar_t* escape =
            ESCAPES[random.Below(6)];  // drawn before the place: the order is part of the result
        text.insert(random.Below(static_cast<uint32_t>(text.size() + 1)), escape);
    }
}

// Half a character lost at an end, or one stray byte.
void Damage(std::string& bytes, CRandom& random)
{
    if (bytes.size() < 12) return;
    const uint32_t kind = random.Below(100);
    if (kind < 5) bytes.erase(0, 1);
    if (kind >= 3 && kind < 10) bytes.pop_back();
    if (kind >= 10 && kind < 12) {
        const auto stray = static_cast<char>(random.Below(256));
        bytes.insert(random.Below(static_cast<uint32_t>(bytes.size())), 1, stray);
    }
}

std::string Machine(size_t length, CRandom& random)
{
    static const std::string ALPHABETS[] = {
        "0123456789abcdef",
        "0123456789ABCDEF",
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/",
        "0123456789,.\n",
        "0123456789 ",
        "0123456789-:. ",
        "abcdefghijklmnopqrstuvwxyz",
        "ABCDEFGHIJKLMNOPQRSTUVWXYZ",
        "01",
        "-=*#_ \n"};
    const std::string& alphabet = ALPHABETS[random.Below(10)];
    std::string text;
    while (text.size() < length) text += alphabet[random.Below(static_cast<uint32_t>(alphabet.size()))];
    return text;
}
}  // namespace

CSampleSource::CSampleSource(const std::string& statistics, const CEncoder& encoder) : m_encoder(encoder)
{
    for (const char* name : CLASSES) {
        const auto counted =
            m_counted.emplace(name, Statistics::Read(statistics + '/' + name + ".txt")).first;
        m_classes.emplace(name, counted->second);
    }
    for (unsigned code = 0x4E00; code < 0xA000; ++code) {
        const unsigned gbk = encoder.Pair(CANDIDATE_GBK, static_cast<wchar_t>(code));
        const unsigned big5 = encoder.Pair(CANDIDATE_BIG5, static_cast<wchar_t>(code));
        const bool first =
            (gbk >= 0xB0A1 && gbk < 0xD800 && (gbk & 0xFF) >= 0xA1) || (big5 >= 0xA440 && big5 < 0xC680);
        const bool second =
            (gbk >= 0xD8A1 && gbk < 0xF7FF && (gbk & 0xFF) >= 0xA1) || (big5 >= 0xC940 && big5 < 0xF9D6);
        m_levels[first ? 0 : second ? 1 : 2].push_back(static_cast<wchar_t>(code));
    }
}

std::string CSampleSource::Ascii(size_t length, CRandom& random) const
{
    if (random.Chance(25)) return Machine(length, random);
    const std::wstring text = Class("ascii").Text(length + 8, random);
    std::string bytes;
    for (const wchar_t c : text) {
        if (c >= 0x80) continue;
        if (c == L'\n' && length % 3 == 0) bytes += '\r';
        bytes += static_cast<char>(c);
    }
    bytes.resize(std::min(length, bytes.size()));
    return bytes;
}

std::wstring CSampleSource::Chinese(bool traditional, size_t length, CRandom& random) const
{
    const std::string script = traditional ? "hant-" : "hans-";
    const uint32_t kind = random.Below(100);
    const char* genre = kind < 48 ? "prose" : kind < 66 ? "tech" : "words";
    return Class(script + genre).Text(length, random, kind >= 72 || (kind < 48 && length < 8));
}

// ASCII with one to three words of Chinese in it.
std::wstring CSampleSource::Sparse(bool traditional, size_t length, CRandom& random) const
{
    const std::string ascii = Ascii(length, random);
    std::wstring text(ascii.begin(), ascii.end());
    for (uint32_t runs = 1 + (random.Chance(30) ? random.Below(3) : 0); runs > 0; --runs) {
        const std::wstring run = Chinese(traditional, 1 + random.Below(3), random);
        text.insert(random.Below(static_cast<uint32_t>(text.size() + 1)), run);
    }
    return text;
}

void CSampleSource::AddOddities(std::wstring& text, Candidate candidate, CRandom& random) const
{
    const bool isShort = text.size() <= 4;  // where one oddity would be all there is
    if (!isShort && random.Chance(3)) InsertRun(text, random);
    if (text.size() > 16 && random.Chance(4)) InsertEscapes(text, random);
    if (random.Chance(25)) EndLinesAsWindows(text);
    if (!isShort && random.Chance(12))
        for (wchar_t& c : text) {  // now and then a character that no statistics hold
            if (c < 0x4E00 || c > 0x9FFF || !random.Chance(12)) continue;
            const uint32_t kind = random.Below(10);
            const std::vector<wchar_t>& level = m_levels[kind < 5 ? 0 : kind < 9 ? 1 : 2];
            const wchar_t rare = level[random.Below(static_cast<uint32_t>(level.size()))];
            if (m_encoder.Has(candidate, rare)) c = rare;
        }
}

std::string CSampleSource::DrawForeign(size_t kind, CRandom& random) const
{
    static const char* const KINDS[] = {"shift-jis", "euc-jp", "euc-kr", "windows-1251", "latin-1", "binary"};
    const size_t length = 64 + random.Below(200);
    std::string bytes;
    for (const wchar_t c : Class(KINDS[kind]).Text(length, random)) {
        const unsigned pair = c >= 0x4000 ? static_cast<unsigned>(c) - 0x4000 : 0;
        if (c >= 0x4000) bytes += static_cast<char>(0x80 + pair / 192);
        bytes += static_cast<char>(c >= 0x4000 ? 0x40 + pair % 192 : static_cast<unsigned>(c) & 0xFF);
    }
    return bytes;
}

Sample CSampleSource::Draw(CRandom& random) const
{
    Sample sample;
    if (random.Chance(12)) {
        const uint32_t kind = random.Below(10);
        sample.bytes = Ascii(kind < 3   ? 1 + random.Below(7)
                             : kind < 8 ? 8 + random.Below(24)
                                        : 32 + random.Below(300),
                             random);
        if (sample.bytes.size() >= 8) sample.weight = 4;  // from here on ASCII is to win for good
        return sample;
    }
    sample.answer = static_cast<Candidate>(random.Below(CANDIDATES));
    const bool traditional = sample.answer == CANDIDATE_BIG5 || random.Chance(TraditionalPart(sample.answer));
    if (sample.answer == CANDIDATE_BIG5) sample.weight = BIG5_WEIGHT;
    const size_t length = DrawLength(random);
    std::wstring text = length > 8 && random.Chance(18) ? Sparse(traditional, length, random)
                                                        : Chinese(traditional, length, random);
    AddOddities(text, sample.answer, random);
    sample.bytes = m_encoder.Encode(sample.answer, text);
    if (sample.answer == CANDIDATE_GBK && random.Chance(1))
        sample.bytes += "\x82\x30\xC3\x36";  // a four-byte character
    Damage(sample.bytes, random);
    if (std::all_of(sample.bytes.begin(), sample.bytes.end(),
                    [](char c) { return static_cast<unsigned char>(c) < 0x80; }) &&
        sample.answer != CANDIDATE_UNICODE)
        sample.answer = CANDIDATE_GBK;
    return sample;
}
