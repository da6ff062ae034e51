// The fast form of the detector's walk: first the nodes' values in a row, then their digits eight at a time.
//
// The walk itself only collects values. It takes the shortcuts that a node table offers. The digits are then
// split in vectors, which costs a fraction of what four divisions a node do. A decisive value is looked for
// in each row of values, in their order.
#include <algorithm>
#include <bit>

#include "Detection.h"
#include "Vectors.h"

namespace fast
{
namespace
{
using namespace trie;

constexpr unsigned long CHUNK = 1024;  // bytes of text to a row of values

TARGET_AVX2 bool IsAllAsciiText(const unsigned char* text)
{
    const __m256i bytes = Load32(text);
    const auto is = [&](char byte) TARGET_AVX2 { return _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(byte)); };
    // Bytes of 80 and above are negative.
    const __m256i printed = _mm256_andnot_si256(is(0x7F), _mm256_cmpgt_epi8(bytes, _mm256_set1_epi8(0x1F)));
    const __m256i breaks = _mm256_or_si256(is('\t'), _mm256_or_si256(is('\n'), is('\r')));
    return Mask(_mm256_or_si256(printed, breaks)) == 0xFFFFFFFF;
}

// A walk that stops and goes on.
class CWalker
{
public:
    CWalker(const TrieNode* trie, unsigned nodeCount, int state)
        : m_pTrie(trie), m_nNodes(nodeCount), m_pShortcuts(FindShortcuts(trie, nodeCount)), m_nState(state)
    {
    }

    int State() const { return m_nState; }

    // Moves over the text and appends the values met to `values`, at most one a byte. Returns their end.
    int* Walk(const unsigned char* text, const unsigned char* end, int* values)
    {
        if (m_pShortcuts == nullptr)
            m_pShortcuts = ShortcutsAfter(m_pTrie, m_nNodes, static_cast<unsigned long>(end - text));
        int state = m_nState;
        while (text < end) {
            if (PairsServe(state, text, end)) text = WalkPairs(text, end, state, values);
            if (m_pShortcuts != nullptr) text = WalkHubs(text, end, state, values);
            text = WalkBytes(text, end, state, values);
        }
        m_nState = state;
        return values;
    }

private:
    static void Append(int*& values, int value)
    {
        *values = value;
        values += value != TRIE_VALUE_NONE;
    }

    // Whether the state acts as the rest state and the next pair is in the table.
    bool PairsServe(int state, const unsigned char* text, const unsigned char* end) const
    {
        return m_pShortcuts != nullptr &&
               m_pShortcuts->hubOf[state] == m_pShortcuts->hubOf[m_pShortcuts->rest] && end - text >= 2 &&
               m_pShortcuts->entries[text[0]][text[1]].node != NO_NODE;
    }

    // Byte after byte, as the plain walk goes, until a hub is met. Returns where it got to.
    const unsigned char* WalkBytes(const unsigned char* text, const unsigned char* end, int& at,
                                   int*& values) const
    {
        int state = at;
        for (; text < end; ++text) {
            int child = Child(m_pTrie, m_nNodes, state, *text);
            CFailureChain chain(m_pTrie, m_nNodes, state);
            while (child == NO_NODE && state != ROOT) {
                state = chain.Next(state);
                if (IsHub(state)) break;
                child = Child(m_pTrie, m_nNodes, state, *text);
            }
            if (child != NO_NODE) {
                state = child;
                Append(values, m_pTrie[child].nValue);
                if (!IsHub(state)) continue;
                ++text;
                break;
            }
            if (IsHub(state)) break;
        }
        at = state;
        return text;
    }

    bool IsHub(int state) const { return m_pShortcuts != nullptr && m_pShortcuts->hubOf[state] != NO_HUB; }

    // From hub to hub, as long as one leads to another and no pair serves. Returns where it got to.
    const unsigned char* WalkHubs(const unsigned char* text, const unsigned char* end, int& state,
                                  int*& values) const
    {
        const Shortcuts& shortcuts = *m_pShortcuts;
        const unsigned rest = shortcuts.hubOf[shortcuts.rest];
        unsigned hub = shortcuts.hubOf[state];
        const unsigned char* notBefore = text;  // where long runs of ASCII are looked for again
        while (hub != NO_HUB && text < end && (hub != rest || !PairsServe(state, text, end))) {
            if (shortcuts.quiet[hub] && text >= notBefore) {
                while (end - text > 32 && IsAllAsciiText(text)) text += 32;
                notBefore = text + 16;
            }
            const HubEntry& entry = shortcuts.hubs[hub][*text++];
            Append(values, entry.value);
            state = entry.node;
            hub = entry.hub;
        }
        return text;
    }

    // Whether the next byte leads from the hub to where it leads from the rest state.
    bool GoesOnAsRest(unsigned hub, const unsigned char* text, const unsigned char* end) const
    {
        const Shortcuts& table = *m_pShortcuts;
        return hub != NO_HUB && text < end &&
               table.hubs[hub][*text].node == table.hubs[table.hubOf[table.rest]][*text].node;
    }

    // From the rest state, as long as one pair of the table follows another. Returns where it got to.
    const unsigned char* WalkPairs(const unsigned char* text, const unsigned char* end, int& state,
                                   int*& values) const
    {
        const Shortcuts& table = *m_pShortcuts;
        int node = table.childless;  // of which the rest state differs in nothing that comes
        while (end - text >= 2) {
            const PairEntry entry = table.entries[text[0]][text[1]];
            if (entry.node == NO_NODE) break;
            const int child = Child(m_pTrie, m_nNodes, node, text[0]);
            const int phrase = child == NO_NODE ? NO_NODE : Child(m_pTrie, m_nNodes, child, text[1]);
            if (child == NO_NODE) Append(values, table.firstValues[text[0]]);
            Append(values, phrase == NO_NODE ? entry.value : m_pTrie[phrase].nValue);
            text += 2;
            state = node = entry.node & ~PAIR_LEAVES;
            if (phrase != NO_NODE && table.leaves[phrase]) {
                state = phrase;
                node = table.childless;
                if (!GoesOnAsRest(table.hubOf[phrase], text, end)) break;
            } else if ((entry.node & PAIR_LEAVES) != 0) {
                if (!GoesOnAsRest(table.hubOf[FailureLink(m_pTrie, m_nNodes, node)], text, end)) break;
            }
        }
        return text;
    }

    const TrieNode* m_pTrie;
    unsigned m_nNodes;
    const Shortcuts* m_pShortcuts;
    int m_nState;
};

// The sum of the 16-bit lanes at even places and of those at odd places.
TARGET_AVX2 int SumEven(__m256i lanes)
{
    const __m256i halves = _mm256_and_si256(lanes, _mm256_set1_epi32(0xFFFF));
    __m128i sum = _mm_add_epi32(_mm256_castsi256_si128(halves), _mm256_extracti128_si256(halves, 1));
    sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, 0x4E));
    return _mm_cvtsi128_si32(_mm_add_epi32(sum, _mm_shuffle_epi32(sum, 0xB1)));
}

TARGET_AVX2 int SumOdd(__m256i lanes)
{
    return SumEven(_mm256_srli_epi32(lanes, 16));
}

int FirstCode(const int* values, const int* end)
{
    while (values < end && TrieValueCode(*values) == 0) ++values;
    return values < end ? TrieValueCode(*values) : 0;
}

// Adds the values up to `end`, at most CHUNK of them, to the scores; writes up to seven behind them. A
// decisive one ends it.
TARGET_AVX2 void AddValues(int* values, int* end, Scores& scores)
{
    std::fill(end, end + 7, TRIE_VALUE_NONE);  // adds nothing and is not positive
    const __m256i twenty = _mm256_set1_epi16(20), nine = _mm256_set1_epi16(9);
    __m256i all = _mm256_setzero_si256(), ones = all, tens = all, positiveOnes = all, positiveTens = all;
    int count = 0;
    for (const int* at = values; at < end; at += 8, count += 8) {
        const __m256i value = Load32(at);
        all = _mm256_or_si256(all, value);
        const __m256i digits = _mm256_and_si256(value, _mm256_set1_epi32(0x3FFFF));
        // By 400, as (digits / 16) / 25: the upper two digits (655 at most) and the lower two.
        const __m256i upper =
            _mm256_srli_epi32(_mm256_madd_epi16(_mm256_srli_epi32(digits, 4), _mm256_set1_epi32(5243)), 17);
        const __m256i lower = _mm256_sub_epi32(digits, _mm256_madd_epi16(upper, _mm256_set1_epi32(400)));
        // By 20, the lower in even lanes of 16 bits (GBK, Big5) beside the upper in odd ones (Unicode,
        // UTF-8).
        const __m256i pairs = _mm256_or_si256(lower, _mm256_slli_epi32(upper, 16));
        const __m256i second = _mm256_mulhi_epu16(pairs, _mm256_set1_epi16(3277));
        const __m256i first = _mm256_sub_epi16(pairs, _mm256_mullo_epi16(second, twenty));
        ones = _mm256_add_epi16(ones, first);
        tens = _mm256_add_epi16(tens, second);
        positiveOnes = _mm256_sub_epi16(positiveOnes, _mm256_cmpgt_epi16(first, nine));
        positiveTens = _mm256_sub_epi16(positiveTens, _mm256_cmpgt_epi16(second, nine));
    }
    if (!_mm256_testz_si256(all, _mm256_set1_epi32(static_cast<int>(0xFFF00000)))) {
        scores.decidedCode = FirstCode(values, end);
        return;
    }
    scores.sumGbk += static_cast<unsigned>(SumEven(ones) - 9 * count);
    scores.sumBig5 += static_cast<unsigned>(SumEven(tens) - 9 * count);
    scores.sumUnicode += static_cast<unsigned>(SumOdd(ones) - 9 * count);
    scores.sumUtf8 += static_cast<unsigned>(SumOdd(tens) - 9 * count);
    scores.positiveGbk += SumEven(positiveOnes);
    scores.positiveBig5 += SumEven(positiveTens);
    scores.positiveUnicode += SumOdd(positiveOnes);
    scores.positiveUtf8 += SumOdd(positiveTens);
    scores.nonPositiveUnicode += static_cast<int>(end - values) - SumOdd(positiveOnes);
}

TARGET_AVX2 int CountHighBytes(const unsigned char* text, unsigned long size)
{
    int count = 0;
    unsigned long i = 0;
    for (; i + 32 <= size; i += 32) count += std::popcount(Mask(Load32(text + i)));
    for (; i < size; ++i) count += text[i] >> 7;
    return count;
}
}  // namespace
}  // namespace fast

void FastWalk(const TrieNode* trie, unsigned nodeCount, const char* text, unsigned long length,
              WalkPosition& position)
{
    using namespace fast;
    alignas(32) int values[CHUNK + 8];
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text);
    Scores& scores = position.scores;
    CWalker walker(trie, nodeCount, position.state);
    for (unsigned long at = 0; at < length && scores.decidedCode == 0; at += CHUNK) {
        const unsigned long size = std::min(length - at, CHUNK);
        int* const end = walker.Walk(bytes + at, bytes + at + size, values);
        AddValues(values, end, scores);
        scores.highBytes += CountHighBytes(bytes + at, size);
    }
    position.state = walker.State();
}
