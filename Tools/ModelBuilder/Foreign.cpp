// Foreign text; see Foreign.h.
#include "Foreign.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>

#include "Shares.h"

namespace
{
constexpr size_t COMMON = 320;  // characters of each encoding that lead back
// Against its share in Chinese text. A pair must be next to impossible there: names are made of rare ones,
// and what may be a hanzi of UTF-16LE is met by more ways than the statistics know.
constexpr double SEQUENCE_ODDS = 300, PAIR_ODDS = 20'000, UNIT_ODDS = 100'000;
constexpr double LEAST_SHARE = 2e-5;  // of a sequence among the pairs of its language
// By kind: what is hard to tell from Chinese text, or has few bytes beyond ASCII, gets more sequences.
constexpr double KIND_WEIGHTS[] = {1, 2, 1, 1, 3, 0.5};
constexpr size_t SEQUENCES = 4000;
constexpr size_t FOREIGN_SAMPLES = 40'000, CHINESE_SAMPLES = 1'500'000;

constexpr int NOT_UNICODE = TRIE_VALUE_NONE | TRIE_VALUE_COUNTED;  // one of those that cost UTF-16LE ten

std::string Text(unsigned byte)
{
    return {static_cast<char>(byte)};
}

bool IsControl(unsigned byte)
{
    return (byte < 0x20 && byte != '\t' && byte != '\n' && byte != '\f' && byte != '\r' && byte != 0x1B) ||
           byte == 0x7F || byte == 0xFF;
}

// Behind a lead byte or a control character: controls, and signs that do not end a field. A line or a field
// may end in half a character.
void AddBroken(States& states)
{
    const std::string signs = "#$%&()*+-.=?";
    for (unsigned byte = 1; byte < 0x100; ++byte)
        if (IsControl(byte) || (byte < 0x80 && signs.find(static_cast<char>(byte)) != std::string::npos))
            states[{REGION_BROKEN, Text(byte)}] = {NOT_UNICODE, REGION_FOREIGN};
}

// Zeros at the end fill a buffer; with something behind them they are data, and what it is remains to be
// seen.
void AddZeros(States& states)
{
    const std::string zeros(2, '\0');
    for (const Region region : {REGION_MAIN, REGION_FOREIGN}) AddState(states, region, zeros);
    states[{REGION_MAIN, zeros}].onward = REGION_ZEROS;
    states[{REGION_FOREIGN, zeros}] = {NOT_UNICODE, REGION_FOREIGN};
    for (unsigned byte = 0; byte < 0x100; ++byte)
        states[{REGION_ZEROS, Text(byte)}] =
            byte == 0 ? State{TRIE_VALUE_NONE, REGION_ZEROS} : State{NOT_UNICODE};
}

// Signs beyond U+FFFF, as messages have them: four bytes of UTF-8, two units of UTF-16LE, and the one that
// chooses a sign's colour.
void AddHighSigns(States& states)
{
    states[{REGION_MAIN, "\xF0\x9F"}] = {TRIE_VALUE_NONE, REGION_SIGN_THIRD};
    for (unsigned byte = 0x80; byte < 0xC0; ++byte) {
        states[{REGION_SIGN_THIRD, Text(byte)}].onward = REGION_SIGN_LAST;
        states[{REGION_SIGN_LAST, Text(byte)}].value = PackTrieValue(0, {0, 0, 0, 10});
        // Behind another character of UTF-8, whose last byte would lead a pair.
        const std::string pair = Text(byte) + "\xF0";
        if (!states.contains({REGION_MAIN, pair})) continue;
        AddState(states, REGION_AFTER, pair + "\x9F");
        states[{REGION_AFTER, pair}].value = states.at({REGION_MAIN, pair}).value;
        states[{REGION_AFTER, pair + "\x9F"}].onward = REGION_SIGN_THIRD;
    }
    for (const char first : {'\x3C', '\x3D', '\x3E'}) {
        AddState(states, REGION_MAIN, first + std::string("\xD8"));
        states[{REGION_MAIN, first + std::string("\xD8")}].onward = REGION_LOW_HALF;
    }
    for (unsigned byte = 0; byte < 0x100; ++byte)
        states[{REGION_LOW_HALF, Text(byte)}].onward = REGION_HIGH_HALF;
    for (unsigned byte = 0xDC; byte < 0xE0; ++byte)
        states[{REGION_HIGH_HALF, Text(byte)}].value = PackTrieValue(0, {0, 0, 10, 0});
    AddState(states, REGION_MAIN, "\x0F\xFE");
}

void AddWayBack(States& states, const CSampleSource& source, const CEncoder& encoder)
{
    for (unsigned byte = 0; byte < 0x100; ++byte)
        for (const Region region : {REGION_FOREIGN, REGION_FOREIGN_TRAIL})
            AddState(states, region, Text(byte));
    for (unsigned lead = 0xE3; lead < 0xEA; ++lead)
        for (unsigned tail = 0x80; tail < 0xC0; ++tail)
            AddState(states, REGION_FOREIGN, Text(lead) + Text(tail));

    const Shares hans = SharesOf(source, "hans"), hant = SharesOf(source, "hant");
    std::map<std::string, std::pair<double, Candidate>> ways;  // by bytes, the likeliest encoding
    for (const Candidate candidate : {CANDIDATE_GBK, CANDIDATE_BIG5, CANDIDATE_UTF8, CANDIDATE_UNICODE}) {
        CharacterShares shares = hant.anywhere;
        if (candidate != CANDIDATE_BIG5)
            for (const auto& [character, share] : hans.anywhere) shares[character] += share;
        for (const wchar_t character : Top(shares, COMMON, [&](wchar_t c) { return c >= 0x2000; })) {
            const std::string bytes = encoder.Encode(candidate, {character});
            if (bytes.size() < 2) continue;
            auto& way = ways[bytes];
            if (shares[character] > way.first) way = {shares[character], candidate};
        }
    }
    for (const auto& [bytes, way] : ways) {
        const Region back = RegionOf(REGION_RETURN, way.second);
        AddState(states, REGION_FOREIGN, bytes);
        states[{REGION_FOREIGN, bytes}].onward = back;
        AddState(states, back, bytes);
        states[{back, bytes}].onward = REGION_MAIN;
    }
}

// ASCII may stand between the two, as in tables.
void AddAsciiBetween(States& states)
{
    for (int candidate = 0; candidate < CANDIDATES; ++candidate) {
        const Region back = RegionOf(REGION_RETURN, candidate);
        for (unsigned byte = 0; byte < 0x80; ++byte) {
            const std::string ascii = Text(byte) + (candidate == CANDIDATE_UNICODE ? Text(0) : "");
            if (IsControl(byte) || byte == 0x1B || states.contains({back, ascii})) continue;
            AddState(states, back, ascii);
            states[{back, ascii}].onward = back;
        }
    }
}

// Reads a text through the automaton and reports each two pairs in a row, as one number.
class CPairReader
{
public:
    explicit CPairReader(const States& states)
    {
        const PackedTrie packed = PackStates(LinkStates(states));
        m_nodes = packed.nodes;
        m_isPair.assign(m_nodes.size(), false);
        size_t number = 0;
        for (const auto& [name, state] : states) {
            const auto node = static_cast<size_t>(packed.nodeOf[number++]);
            m_isPair[node] = name.region == REGION_MAIN && (name.path.size() == 2 || name.path.size() == 4);
        }
    }

    // `function(pair, sequence)`: the latter has the pair before on top, and is 0 where that is none.
    template <typename Function>
    void Read(const std::string& bytes, Function function) const
    {
        int state = 0;
        size_t last = 0;  // where the last pair ended
        for (size_t i = 0; i < bytes.size(); ++i) {
            state = Next(state, static_cast<unsigned char>(bytes[i]));
            if (!m_isPair[static_cast<size_t>(state)] || i == 0) continue;
            const bool inSequence = last > 0 && i == last + 2;
            function(PairAt(bytes, i - 1),
                     inSequence ? PairAt(bytes, i - 3) << 16 | PairAt(bytes, i - 1) : 0);
            last = i;
        }
    }

private:
    static uint32_t PairAt(const std::string& bytes, size_t at)
    {
        return ByteAt(bytes, at) << 8 | ByteAt(bytes, at + 1);
    }

    int Next(int state, unsigned byte) const
    {
        for (;;) {
            const int child = m_nodes[static_cast<size_t>(state)].nBase + static_cast<int>(byte);
            if (m_nodes[static_cast<size_t>(child)].nCheck == state) return child;
            state = m_nodes[static_cast<size_t>(state)].nFail;
        }
    }

    std::vector<TrieNode> m_nodes;
    std::vector<bool> m_isPair;
};

// Of a sequence, or of a pair.
std::string BytesOf(uint32_t number)
{
    const std::string pair = Text(number >> 8 & 0xFF) + Text(number & 0xFF);
    return number < 0x10000 ? pair : Text(number >> 24) + Text(number >> 16 & 0xFF) + pair;
}

// Two pairs that no other region follows, not both ASCII.
bool IsSequence(const std::string& bytes)
{
    return (ByteAt(bytes, 0) >= 0x80 || ByteAt(bytes, 2) >= 0x80) && !StartsWithUtf8Character(bytes) &&
           !LeadAfterAscii(bytes.substr(0, 2)) && bytes[0] != '\n' && bytes[0] != '\r';
}

// A pair that may be foreign by itself: nothing of UTF-8, and no hanzi that every font has.
bool IsPlainPair(const std::string& bytes)
{
    const unsigned lead = ByteAt(bytes, 0), second = ByteAt(bytes, 1);
    const bool isGb2312 = lead >= 0xB0 && lead <= 0xF7 && second >= 0xA1;
    const bool isFirstLevel = lead >= 0xA4 && lead <= 0xC6 && (second < 0x7F || second > 0xA0);
    return lead >= 0x80 && !isGb2312 && !isFirstLevel && !(IsUtf8Lead(lead) && IsUtf8Tail(second));
}

// Sequences, and single pairs, by their share in the foreign kind that has them most, weighed.
std::unordered_map<uint32_t, double> ForeignSequences(const CPairReader& reader, const CSampleSource& source)
{
    std::unordered_map<uint32_t, double> shares;
    for (size_t kind = 0; kind < std::size(KIND_WEIGHTS); ++kind) {
        CRandom random(kind + 100);
        std::unordered_map<uint32_t, uint32_t> counts;
        double all = 0;
        for (size_t n = 0; n < FOREIGN_SAMPLES; ++n)
            reader.Read(source.DrawForeign(kind, random), [&](uint32_t pair, uint32_t sequence) {
                ++all;
                if (IsPlainPair(BytesOf(pair))) ++counts[pair];
                if (sequence != 0 && IsSequence(BytesOf(sequence))) ++counts[sequence];
            });
        for (const auto& [sequence, count] : counts)
            if (count > LEAST_SHARE * all)
                shares[sequence] = std::max(shares[sequence], KIND_WEIGHTS[kind] * count / all);
    }
    return shares;
}

void SendAway(States& states, const std::string& bytes)
{
    AddState(states, REGION_MAIN, bytes);
    states[{REGION_MAIN, bytes}] = {NOT_UNICODE, REGION_FOREIGN};
}

void AddSequences(States& states, const CSampleSource& source)
{
    const CPairReader reader(states);
    const std::unordered_map<uint32_t, double> foreign = ForeignSequences(reader, source);
    std::vector<double> pairs(0x10000);
    std::unordered_map<uint32_t, double> seen;
    double all = 0;
    CRandom random(7);
    for (size_t n = 0; n < CHINESE_SAMPLES; ++n)
        reader.Read(source.Draw(random).bytes, [&](uint32_t pair, uint32_t sequence) {
            ++all, ++pairs[pair];
            if (foreign.contains(sequence)) ++seen[sequence];
        });

    std::vector<std::pair<double, std::string>> order;
    for (const auto& [number, share] : foreign) {
        const std::string bytes = BytesOf(number);
        if (bytes.size() == 2) {
            const bool isUnit = ByteAt(bytes, 1) >= 0x4E && ByteAt(bytes, 1) < 0xA0;
            const double odds = isUnit ? UNIT_ODDS : PAIR_ODDS;
            if (share > odds * (pairs[number] + 1) / all) SendAway(states, bytes);
            continue;
        }
        const double byChance = (pairs[number >> 16] + 1) * (pairs[number & 0xFFFF] + 1) / all;
        const double own = std::max(seen.contains(number) ? seen.at(number) : 0, byChance) / all;
        if (share > SEQUENCE_ODDS * own && !states.contains({REGION_MAIN, bytes}))
            order.emplace_back(-share, bytes);
    }
    std::sort(order.begin(), order.end());
    if (order.size() > SEQUENCES) order.resize(SEQUENCES);
    for (const auto& [share, bytes] : order) SendAway(states, bytes);
}
}  // namespace

void AddForeignStates(States& states, const CSampleSource& source, const CEncoder& encoder)
{
    AddSequences(states, source);
    AddBroken(states);
    AddZeros(states);
    AddHighSigns(states);
    AddWayBack(states, source, encoder);
    AddAsciiBetween(states);
}
