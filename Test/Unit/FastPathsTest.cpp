// Every function with a fast form gives the same with and without it: conversions in place, every character
// of the locale's encoding (at the end of readable memory), the walk over random automata. Random text:
// Test/Fuzz.
#include <langinfo.h>

#include <algorithm>
#include <clocale>
#include <functional>

#include "../Oracles.h"
#include "FastPaths.h"
#include "Support.h"

namespace
{
constexpr size_t AREA = 1 << 16;

struct Route {
    const char* name;
    std::function<size_t(const char*, size_t, char*, size_t)> convert;
};

const Route ROUTES[] = {
    {"GBK to UTF-16", [](auto s, auto n, auto d, auto c) { return TQ_ToUnicode(s, n, d, c, ENCODE_GBK); }},
    {"Big5 to UTF-16", [](auto s, auto n, auto d, auto c) { return TQ_ToUnicode(s, n, d, c, ENCODE_BIG5); }},
    {"UTF-8 to wide", [](auto s, auto n, auto d, auto c) { return TQ_ToUnicode(s, n, d, c, ENCODE_UTF8); }},
    {"GBK to UTF-8", [](auto s, auto n, auto d, auto c) { return TQ_ToUtf8(s, n, d, c, ENCODE_GBK); }},
    {"wide to UTF-8",
     [](auto s, auto n, auto d, auto c) { return TQ_ToUtf8(s, n / 4, d, c, ENCODE_UNICODE); }},
    {"UTF-8 to GBK", [](auto s, auto n, auto d, auto c) { return TQ_ToGBK(s, n, d, c, ENCODE_UTF8); }},
    {"UTF-16 to GBK",
     [](auto s, auto n, auto d, auto c) { return TQ_ToGBK(s, n / 2, d, c, ENCODE_UNICODE); }},
};

class FastPaths : public testing::Test
{
protected:
    FastPaths()
    {
        if (!FastPathsOn()) return;
        for (unsigned short** table : {&g_mapGBKToUnicode, &g_mapBig5ToUnicode}) {
            *table = new unsigned short[MAPPING_ENTRIES];
            for (unsigned i = 0; i < MAPPING_ENTRIES; ++i)
                (*table)[i] = static_cast<unsigned short>(m_random());
        }
    }
    ~FastPaths() override
    {
        UseForms(BestForms());
        CodeTrans_Destroy();
    }
    void SetUp() override
    {
        if (!FastPathsOn()) GTEST_SKIP() << "this processor has the plain forms alone";
    }

    unsigned Random(unsigned below) { return m_random.Below(below); }

    // At the end of readable memory.
    const char* Place(const std::string& text)
    {
        return static_cast<const char*>(
            memcpy(m_guarded.data() + AREA - text.size(), text.data(), text.size()));
    }

    void Compare(const Route& route, const std::string& text)
    {
        const char* const source = Place(text + '\0');
        const std::vector<char> before(4 * text.size() + 9, '\x5A');
        std::vector<char> plain = before;
        UseForms(Forms::PLAIN);
        const size_t expected = route.convert(source, text.size(), plain.data(), 0);
        for (const Forms forms : FastForms()) {
            std::vector<char> fast = before;
            UseForms(forms);
            const size_t got = route.convert(source, text.size(), fast.data(), 0);
            ASSERT_TRUE(got == expected && fast == plain)
                << route.name << ", form " << static_cast<int>(forms) << ", text:\n"
                << testing::PrintToString(text.substr(0, 300));
        }
    }

    // Those of this processor.
    static std::vector<Forms> FastForms()
    {
        if (BestForms() == Forms::AVX512) return {Forms::AVX2, Forms::AVX512};
        return {Forms::AVX2};
    }

    ::Random m_random;
    GuardedBuffer m_guarded{AREA};
};

TEST_F(FastPaths, LeaveConversionsInPlaceAsTheyAre)
{
    std::string texts[2];  // without faults, in GBK and in UTF-8, longer than a window
    while (texts[1].size() < 5000) {
        const wchar_t unit = static_cast<wchar_t>(0x4E00 + Random(0x51A6));
        texts[0]
            .append(1, static_cast<char>(CodeTable[unit] >> 8))
            .append(1, static_cast<char>(CodeTable[unit]));
        texts[1] += unicode_to_utf8(std::wstring(1, unit));
    }
    for (const Route& route : ROUTES)
        for (const size_t offset : {0U, 1U, 40U, 700U})
            for (const std::string& text : texts) {
                std::string plain = text + std::string(20000, '\0');
                const std::string before = plain;
                UseForms(Forms::PLAIN);
                const size_t expected = route.convert(plain.data(), 4000, plain.data() + offset, 15000);
                for (const Forms forms : FastForms()) {
                    std::string fast = before;
                    UseForms(forms);
                    EXPECT_EQ(route.convert(fast.data(), 4000, fast.data() + offset, 15000), expected)
                        << route.name;
                    EXPECT_TRUE(fast == plain) << route.name << " to an offset of " << offset;
                }
            }
    std::string ascii = std::string("AB").append(20, '\0');
    EXPECT_EQ(TQ_ToUnicode(ascii.data(), 2, ascii.data(), 20, ENCODE_UTF8), 4U)
        << "to the zero that it wrote";
    EXPECT_EQ(ascii, std::string("A").append(21, '\0'));
}

// Where the C library has the locale, both forms of the locale routes must give what its own functions give.
TEST_F(FastPaths, AnswerAsTheCLibraryForEveryCharacter)
{
    if (setlocale(LC_ALL, "zh_CN.gbk") == nullptr || std::string(nl_langinfo(CODESET)) != "GBK")
        GTEST_SKIP() << "no locale zh_CN.gbk";
    const std::string prefixes[] = {"", "abc", std::string(41, 'x'), "\xB0\xA1\xD6\xD0",
                                    std::string(1100, '\xB0')};
    const auto check = [&](const Route& route, const std::string& text) {
        for (const std::string& prefix : prefixes) ASSERT_NO_FATAL_FAILURE(Compare(route, prefix + text));
    };
    for (unsigned pair = 0x100; pair < 0x10000; ++pair) {
        const char bytes[] = {static_cast<char>(pair >> 8), static_cast<char>(pair & 0xFF), 0};
        ASSERT_NO_FATAL_FAILURE(check(ROUTES[3], bytes));
    }
    for (unsigned unit = 1; unit < 0x10000; ++unit) {
        unsigned char utf8[7] = {};
        unicode_to_utf8_one(unit, utf8, 6);
        const std::string text = reinterpret_cast<char*>(utf8);
        ASSERT_NO_FATAL_FAILURE(Compare(ROUTES[5], text));
        ASSERT_NO_FATAL_FAILURE(
            Compare(ROUTES[5], "\xEF\xBB\xBF-\xE4\xB8\xAD" + text + std::string(40, '-')));
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
        const Scores fast = FastWalk(trie, nodeCount, source, text.size());
        ASSERT_TRUE(SameWalk(fast, plain)) << testing::PrintToString(text.substr(0, 300));
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
                if (Random(2) == 0 && !text.empty()) text[Random(most) % text.size()] = 'z';
                ASSERT_NO_FATAL_FAILURE(CompareWalks(m_trie.data(), NODES, text)) << automaton;
            }
        }
    }
    DropShortcuts();
    EXPECT_GT(withShortcuts, 200U) << "the shortcuts were hardly tried";
}
}  // namespace
