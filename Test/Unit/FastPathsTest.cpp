// Every function with a fast form gives the same with and without it, on text and automata drawn at random,
// and the same as an oracle. Where the processor has no fast form, the plain one alone is held to that.
#include <algorithm>

#include "../Oracles.h"
#include "../Routes.h"
#include "Support.h"

namespace
{
constexpr size_t AREA = 1 << 16;

class FastPaths : public testing::Test
{
protected:
    ~FastPaths() override { UseForms(BestForms()); }
    unsigned Random(unsigned below) { return m_random.Below(below); }

    // At the end of readable memory.
    const char* Place(const std::string& text)
    {
        return static_cast<const char*>(
            memcpy(m_guarded.data() + AREA - text.size(), text.data(), text.size()));
    }

    // A character of one of eight kinds, in one encoding or another, or a stray byte.
    std::string Piece(unsigned kind)
    {
        const auto byte = [](unsigned value) { return std::string(1, static_cast<char>(value)); };
        const auto tail = [&] { return byte(0x80 + Random(0x40)); };
        const unsigned unit = Random(9) == 0 ? 0x410 + Random(0x20) : 0x4E00 + Random(0x51A6);
        const unsigned code = CodeTable[unit];
        switch (kind) {
            case 0:
                return std::string(1 + Random(40), static_cast<char>(0x20 + Random(0x5F)));
            case 1:
                return byte(code >> 8) + byte(code & 0xFF);
            case 2:
                return byte(0xE0 + Random(16)) + tail() + tail();
            case 3:
                return Random(4) == 0 ? "\xC0\x80" : byte(0xC0 + Random(32)) + tail();
            case 4:
                return byte(0xF0 + Random(16)) + tail() + tail() + (Random(2) == 0 ? tail() : "");
            case 5:
                return byte(0xE0 | unit >> 12) + byte(0x80 | (unit >> 6 & 0x3F)) + byte(0x80 | (unit & 0x3F));
            case 6:
                return byte(unit & 0xFF) + byte(unit >> 8);
            default:
                return byte(Random(256));
        }
    }

    // Mostly one kind, with others strewn in, as text is.
    std::string Text(size_t length)
    {
        const unsigned usual = Random(8), rarity = 1 + Random(60), wide = Random(2);
        std::string text;
        while (text.size() < length) {
            text += Piece(Random(rarity) == 0 ? Random(8) : usual);
            if (wide != 0 && text.size() % 4 == 2) text += std::string(2, Random(99) == 0 ? '\1' : '\0');
        }
        text.resize(length);
        return text;
    }

    // Those of this processor.
    static std::vector<Forms> FastForms()
    {
        if (BestForms() == Forms::AVX512) return {Forms::AVX2, Forms::AVX512};
        if (BestForms() == Forms::PLAIN) return {};
        return {BestForms()};
    }

    LoadedModel m_model;
    ::Random m_random;
    GuardedBuffer m_guarded{AREA};
};

TEST_F(FastPaths, AgreeOnTextOfEveryShortLengthAndAroundWindows)
{
    std::vector<size_t> lengths;
    for (size_t length = 0; length < 300; ++length) lengths.insert(lengths.end(), 12, length);
    for (int i = 0; i < 1500; ++i) lengths.push_back(900 + Random(1500));
    for (int i = 0; i < 60; ++i) lengths.push_back(Random(20000));
    for (const Route& route : ROUTES)
        for (const size_t length : lengths) {
            std::string text = Random(3) > 0 ? Widened(Text(length), route) : Text(length);
            if (route.isTerminated) std::replace(text.begin(), text.end(), '\0', ' ');
            // Now and then a unit that is 0 or above U+FFFF.
            if (route.unit == 4 && length > 0 && !text.empty() && Random(2) == 0)
                text[Random(static_cast<unsigned>(text.size()))] = Random(2) == 0 ? '\0' : '\1';
            for (const unsigned capacity : {0U, Random(static_cast<unsigned>(3 * length + 4))})
                CompareForms(route, ForRoute(route, text), capacity, Random(256));
        }
}

TEST_F(FastPaths, LeaveConversionsInPlaceAsTheyAre)
{
    std::string texts[2];  // without faults, in GBK and in UTF-8, longer than a window
    while (texts[1].size() < 5000) {
        texts[0] += Piece(1);
        texts[1] += Piece(5);
    }
    for (const Route& route : ROUTES)
        for (const size_t offset : {0U, 1U, 40U, 700U})
            for (const std::string& text : texts) {
                std::string plain = text + std::string(20000, '\0');
                const std::string before = plain;
                UseForms(Forms::PLAIN);
                const auto convert = [&](std::string& memory) {
                    return route.convert(memory.data(), 4000 / route.unit, memory.data() + offset, 15000,
                                         route.code);
                };
                const size_t expected = convert(plain);
                for (const Forms forms : FastForms()) {
                    std::string fast = before;
                    UseForms(forms);
                    EXPECT_EQ(convert(fast), expected);
                    EXPECT_TRUE(fast == plain) << &route - ROUTES << " to an offset of " << offset;
                }
            }
    std::string ascii = std::string("AB").append(20, '\0');
    EXPECT_EQ(TQ_ToUnicode(ascii.data(), 2, ascii.data(), 20, ENCODE_UTF8), 4U)
        << "to the zero that it wrote";
    EXPECT_EQ(ascii, std::string("A").append(21, '\0'));
}

// All forms of the locale routes must give what the C library's own functions give.
TEST_F(FastPaths, AnswerAsTheCLibraryForEveryCharacter)
{
    const std::string prefixes[] = {"", "abc", std::string(41, 'x'), "\xB0\xA1\xD6\xD0",
                                    std::string(1100, '\xB0')};
    for (unsigned pair = 0x100; pair < 0x10000; ++pair)
        for (const std::string& prefix : prefixes) {
            const char bytes[] = {static_cast<char>(pair >> 8), static_cast<char>(pair & 0xFF), 0};
            CompareForms(ROUTES[GBK_TO_UTF8], ForRoute(ROUTES[GBK_TO_UTF8], prefix + bytes), 0, 0);
        }
    for (unsigned unit = 1; unit < 0x10000; ++unit)
        for (const std::string prefix : {"", "\xEF\xBB\xBF-\xE4\xB8\xAD"}) {
            unsigned char utf8[7] = {};
            unicode_to_utf8_one(unit, utf8, 6);
            const std::string text = prefix + reinterpret_cast<char*>(utf8) + std::string(40, '-');
            CompareForms(ROUTES[UTF8_TO_GBK], ForRoute(ROUTES[UTF8_TO_GBK], text), 0, 0);
        }
}

// ---------------------------------------------------------------------------------------------------------

// Random automata over a few bytes: a rest state, pairs and phrases as the pair table knows them, other nodes
// strewn in, and now and then a field that breaks a rule or points nowhere.
class FastWalking : public FastPaths
{
protected:
    static constexpr unsigned NODES = 4000;

    void MakeAutomaton()
    {
        m_trie.assign(NODES, {static_cast<int>(Random(NODES - 256)), -1, 0, Value()});
        for (TrieNode& node : m_trie) node.nBase = static_cast<int>(Random(NODES - 256));
        m_states.assign(1, 0);
        // With three letters the state that most fail to has too few links to be a hub.
        const std::basic_string<unsigned char> letters(ALPHABET, Random(3) == 0 ? 3 : 8);
        const int rest =
            Random(3) == 0 ? 0 : Add(static_cast<int>(1 + Random(NODES - 1)), 'r', 0, TRIE_VALUE_NONE);
        int firsts[256] = {}, seconds[256][256] = {};
        for (const unsigned char a : letters)
            firsts[a] = Add(rest, a, 0, Random(4) == 0 ? Value() : TRIE_VALUE_NONE);
        for (const unsigned char a : letters)
            for (const unsigned char b : letters) seconds[a][b] = Add(firsts[a], b, rest, Value());
        const unsigned odd = Random(8);
        for (const unsigned char a : letters)
            if (rest != 0 && a != ALPHABET[odd]) Add(0, a, firsts[a], odd < 4 ? TRIE_VALUE_NONE : Value());
        const auto any = [&] {
            return static_cast<unsigned char>(letters[Random(static_cast<unsigned>(letters.size()))]);
        };
        const auto someState = [&] { return m_states[Random(static_cast<unsigned>(m_states.size()))]; };
        for (int phrases = 0; phrases < 40; ++phrases) {
            const unsigned char a = any(), b = any(), c = any(), d = any();
            const int third =
                Add(seconds[a][b], c, Random(90) == 0 ? someState() : firsts[c], TRIE_VALUE_NONE);
            const int fourth = Add(third, d, Random(90) == 0 ? someState() : seconds[c][d], Value());
            if (Random(40) == 0) Add(fourth, any(), someState(), Value());
        }
        for (unsigned extra = Random(3) * 30; extra > 0; --extra)
            Add(someState(), any(), someState(), Value());
        for (unsigned damage = Random(3) * Random(8); damage > 0; --damage) {
            int* const fields = &m_trie[static_cast<size_t>(someState())].nBase;
            const int values[] = {static_cast<int>(m_random()), static_cast<int>(Random(NODES)), someState()};
            fields[Random(4)] = values[Random(3)];
        }
        if (Random(9) == 0) m_trie[static_cast<size_t>(rest)].nFail = someState();  // chains without an end
        if (Random(4) == 0) {  // a way back into the root
            const int first = firsts[any()];
            m_trie[static_cast<size_t>(first)].nBase = -static_cast<int>(any());
            m_trie[0].nCheck = first;
            m_trie[0].nFail = rest;
        }
    }

    // Random digits, mostly without a code.
    int Value()
    {
        if (Random(4) == 0) return TRIE_VALUE_NONE;
        return static_cast<int>(m_random() & 0x7FFFF) | (Random(3000) == 0 ? ENCODE_BIG5 << 20 : 0);
    }

    // The child of `state` on `byte`, which it gets if there is none and the place is free.
    int Add(int state, unsigned char byte, int fail, int value)
    {
        const int place = m_trie[static_cast<size_t>(state)].nBase + byte;
        TrieNode& node = m_trie[static_cast<size_t>(place)];
        if (node.nCheck != -1 || place == 0) return node.nCheck == state ? place : 0;
        node.nCheck = state;
        node.nFail = fail;
        node.nValue = value;
        m_states.push_back(place);
        return place;
    }

    void CompareWalks(const TrieNode* trie, unsigned nodeCount, const std::string& text)
    {
        const char* const source = Place(text);
        const Scores plain = Walk(trie, nodeCount, source, text.size());
        const Scores fast = FastPathsOn() ? FastWalk(trie, nodeCount, source, text.size()) : plain;
        ASSERT_TRUE(SameWalk(fast, plain)) << testing::PrintToString(text.substr(0, 300));
        WalkPosition plainPieces, fastPieces;
        for (size_t at = 0, size = 0; at < text.size(); at += size) {
            size = std::min<size_t>(text.size() - at, Random(Random(4) == 0 ? 3000 : 9));
            Walk(trie, nodeCount, source + at, size, plainPieces);
            if (FastPathsOn()) FastWalk(trie, nodeCount, source + at, size, fastPieces);
        }
        ASSERT_TRUE(SameWalk(plainPieces.scores, plain)) << testing::PrintToString(text.substr(0, 300));
        ASSERT_TRUE(!FastPathsOn() || SameWalk(fastPieces.scores, plain))
            << testing::PrintToString(text.substr(0, 300));
        if (text.size() > 200) return;
        ASSERT_EQ(Decide(plain), DetectionOracle({trie, trie + nodeCount}, text))
            << testing::PrintToString(text);
    }

    static constexpr unsigned char ALPHABET[] = {'a', 'b', 0xB0, 0xB1, 0xD6, 0xE4, 0x80, 0xFF};
    std::vector<TrieNode> m_trie;
    std::vector<int> m_states;
};

TEST_F(FastWalking, AddsUpTheSameOnRandomAutomata)
{
    unsigned withShortcuts = 0;
    for (int automaton = 0; automaton < 400; ++automaton) {
        MakeAutomaton();
        for (const bool prepared : {true, false}) {
            DropShortcuts();
            withShortcuts += prepared && MakeShortcuts(m_trie.data(), NODES) != nullptr;
            for (const unsigned most : {1U, 6U, 100U, 5000U, 5000U}) {
                std::string text(Random(most + 1), '\0');
                for (char& c : text) c = static_cast<char>(ALPHABET[Random(Random(9) == 0 ? 8 : 5)]);
                // Characters of three bytes, which the walk takes two at a time.
                for (size_t at = Random(9); Random(2) == 0 && at + 3 <= text.size(); at += 3)
                    for (size_t end = at + 3 * Random(30); at < end && at + 3 <= text.size(); at += 3)
                        text.replace(at, 3, {'\xE4', "\x80\xB0\xB1"[Random(3)], "\x80\xB0\xB1"[Random(3)]});
                if (Random(2) == 0 && !text.empty()) text[Random(most) % text.size()] = 'z';
                ASSERT_NO_FATAL_FAILURE(CompareWalks(m_trie.data(), NODES, text)) << automaton;
            }
        }
    }
    DropShortcuts();
    EXPECT_GT(withShortcuts, 200U) << "the shortcuts were hardly tried";
}

// Two hubs that ASCII leads to and fro between, where one letter or line end adds something in one direction;
// and a table that is not that of the shortcuts.
TEST_F(FastWalking, SeesWhatALetterAdds)
{
    constexpr int HUB = 3000, FIRST = 2000 + 0xB0;
    for (const char odd : {'a', '\n'}) {
        m_trie.assign(NODES, {2500, -1, 0, TRIE_VALUE_NONE});
        m_trie[0].nBase = 2000, m_trie[HUB].nBase = 1000, m_trie[FIRST].nBase = 500;
        for (unsigned char letter = 1; letter < 0x80; ++letter) {
            Add(0, letter, HUB,
                static_cast<char>(letter) == odd ? PackTrieValue(0, {1, 0, 0, 0}) : TRIE_VALUE_NONE);
            Add(HUB, letter, 0, TRIE_VALUE_NONE);
        }
        Add(Add(0, 0xB0, 0, TRIE_VALUE_NONE), 0xB1, 0,
            TRIE_VALUE_NONE);  // there are shortcuts where there are pairs
        EXPECT_NE(MakeShortcuts(m_trie.data(), NODES), nullptr);
        CompareWalks(m_trie.data(), NODES, std::string(99, static_cast<char>(odd)));
        const std::vector<TrieNode> another(NODES, TrieNode{1, -1, 0, TRIE_VALUE_NONE});
        CompareWalks(another.data(), NODES, std::string(99, 'a'));
        DropShortcuts();
    }
}

// Behind the pair of two zeros, phrases whose keys share a quarter of the buckets, and more than these hold.
TEST_F(FastWalking, FindsPhrasesThatStandInTheNextBucket)
{
    constexpr int FIRSTS = 0x100, SECONDS = 0x200, THIRDS = SECONDS + 0x10000, FOURTHS = THIRDS + 0x100,
                  END = FOURTHS + 0x10000;
    m_trie.assign(END, {END, -1, 0, TRIE_VALUE_NONE});
    TrieNode* const nodes = m_trie.data();
    nodes[0].nBase = FIRSTS;
    nodes[SECONDS].nBase = THIRDS;
    for (int a = 0; a < 0x100; ++a) {
        nodes[FIRSTS + a] = {SECONDS + a * 0x100, 0, 0, TRIE_VALUE_NONE};
        nodes[THIRDS + a] = {FOURTHS + a * 0x100, SECONDS, FIRSTS + a, TRIE_VALUE_NONE};
        for (int b = 0; b < 0x100; ++b) {
            const int pair = a * 0x100 + b;
            TrieNode& second = nodes[SECONDS + pair];
            second.nCheck = FIRSTS + a;
            second.nValue = PackTrieValue(0, {1, 0, 0, 0});
            const unsigned key = PairOf(static_cast<unsigned char>(a), static_cast<unsigned char>(b));
            if (PhraseBucketOf(key) % 8 < 2)
                nodes[FOURTHS + pair] = {END, THIRDS + a, SECONDS + pair, PackTrieValue(0, {2, 0, 0, 0})};
        }
    }
    EXPECT_NE(MakeShortcuts(nodes, END), nullptr);
    for (int a = 0; a < 0x100; ++a) {
        std::string text;
        for (int b = 0; b < 0x100; ++b) text += {'\0', '\0', static_cast<char>(a), static_cast<char>(b)};
        ASSERT_NO_FATAL_FAILURE(CompareWalks(nodes, END, text));
    }
    DropShortcuts();
}

TEST_F(FastWalking, AddsUpTheSameOnTheShippedModel)
{
    const auto nodeCount = static_cast<unsigned>(CodeTrans_TrieNodeCount());
    for (unsigned i = 0; i < 2000; ++i) {
        if (i == 1000) {
            EXPECT_NE(MakeShortcuts(g_pstTrieTable, nodeCount), nullptr);
        }
        const std::string text = Text(Random(i % 50 == 0 ? 20000 : 200));
        ASSERT_NO_FATAL_FAILURE(CompareWalks(g_pstTrieTable, nodeCount, text));
    }
}
}  // namespace
