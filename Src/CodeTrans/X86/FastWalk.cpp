// The fast form of the detector's walk: first the nodes' values in a row, then their digits eight at a time.
//
// The walk itself only collects values. It takes the shortcuts that a node table offers. The digits are then
// split in vectors, which costs a fraction of what four divisions a node do. A decisive value is looked for
// in each row of values, in their order.
#include <algorithm>
#include <bit>

#include "Bytes.h"
#include "Detection.h"
#include "Shortcuts.h"
#include "Vectors.h"

namespace fast
{
namespace
{
using namespace trie;

constexpr unsigned long CHUNK = 2048;  // bytes of text to a row of values

// How many of the 32 bytes at `text` are ASCII text, up to the first that is not.
TARGET_AVX2 unsigned AsciiTextAt(const unsigned char* text)
{
    const __m256i bytes = Load32(text);
    const auto is = [&](char byte) TARGET_AVX2 { return _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(byte)); };
    // Bytes of 80 and above are negative.
    const __m256i printed = _mm256_andnot_si256(is(0x7F), _mm256_cmpgt_epi8(bytes, _mm256_set1_epi8(0x1F)));
    const __m256i breaks = _mm256_or_si256(is('\t'), _mm256_or_si256(is('\n'), is('\r')));
    return static_cast<unsigned>(std::countr_one(Mask(_mm256_or_si256(printed, breaks))));
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
    TARGET_AVX2 int* Walk(const unsigned char* text, const unsigned char* end, int* values)
    {
        if (m_pShortcuts == nullptr)
            m_pShortcuts = ShortcutsAfter(m_pTrie, m_nNodes, static_cast<unsigned long>(end - text));
        int state = m_nState;
        while (text < end) {
            if (m_pShortcuts != nullptr) {
                text = WalkSixes(text, end, state, values);
                if (PairsServe(m_pShortcuts->contextOf[state], text, end))
                    text = WalkPairs(text, end, state, values);
                text = WalkHubs(text, end, state, values);
            }
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

    static unsigned PairAt(const unsigned char* text) { return PairOf(text[0], text[1]); }

    bool IsHub(int state) const { return m_pShortcuts != nullptr && m_pShortcuts->hubOf[state] != NO_HUB; }

    // Byte after byte, as the plain walk goes, until a hub is met. Returns where it got to.
    const unsigned char* WalkBytes(const unsigned char* text, const unsigned char* end, int& state,
                                   int*& values) const
    {
        while (text < end && !IsHub(state)) {
            const int entered = Step(m_pTrie, m_nNodes, state, *text++);
            if (entered != NO_NODE) Append(values, m_pTrie[entered].nValue);
        }
        return text;
    }

    // From hub to hub, as long as one leads to another and no pair serves. Returns where it got to.
    TARGET_AVX2 const unsigned char* WalkHubs(const unsigned char* text, const unsigned char* end, int& state,
                                              int*& values) const
    {
        const Shortcuts& table = *m_pShortcuts;
        unsigned hub = table.hubOf[state];
        while (hub != NO_HUB && text < end) {
            // Behind an even number of bytes of ASCII text a quiet hub is the same again.
            if (table.quiet[hub] && end - text >= 32) text += AsciiTextAt(text) & ~1U;
            if (text == end || PairsServe(table.hubContexts[hub], text, end)) break;
            const HubEntry& entry = table.hubs[hub][*text++];
            Append(values, entry.value);
            state = entry.node;
            hub = entry.hub;
        }
        return text;
    }

    // Whether the context knows the next byte and the next pair is in the table.
    bool PairsServe(unsigned context, const unsigned char* text, const unsigned char* end) const
    {
        const Shortcuts& table = *m_pShortcuts;
        return end - text >= 2 && table.contexts[context].known.Has(text[0]) &&
               table.pairs[PairAt(text)] != 0;
    }

    // Where among the pairs from a place on the context is known for certain.
    struct PairRun {
        const Shortcuts& table;
        const unsigned char* text;
        int* values;
        unsigned context;          // before the pair `at`
        unsigned at = 0;           // a pair
        int phraseNode = NO_NODE;  // of the phrase that the pair before it completes, if it does

        PairEntry Entry(unsigned pair) const { return table.pairs[PairAt(text + 2 * pair)]; }

        // The node that the last pair leads to.
        int LastNode(const CWalker& walker) const
        {
            if (phraseNode != NO_NODE) return phraseNode;
            const int first = Child(walker.m_pTrie, walker.m_nNodes, table.rest, text[2 * at - 2]);
            return Child(walker.m_pTrie, walker.m_nNodes, first, text[2 * at - 1]);
        }

        // Whether the next pair can be passed.
        bool KnowsNext() const { return table.contexts[context].known.Has(text[2 * at]) && Entry(at) != 0; }

        // Over one pair. Returns whether it completes a phrase that is not silent.
        bool Pass()
        {
            const PairEntry entry = Entry(at);
            const Phrase* const phrase = table.FindPhrase(context, PairAt(text + 2 * at));
            values[at++] = phrase != nullptr ? phrase->value : ValueOf(entry);
            context = phrase != nullptr ? phrase->context : ContextOf(entry);
            phraseNode = phrase != nullptr ? phrase->node : NO_NODE;
            return phrase != nullptr && !phrase->isSilent;
        }

        // Over pairs that needed no look. Behind one that completes no silent phrase the context is its own.
        void PassTo(unsigned to)
        {
            unsigned from = to;
            while (from > at && (Entry(from - 1) & COMPLETES_SILENT_PHRASE) != 0) --from;
            if (from > at) {
                at = from;
                context = ContextOf(Entry(from - 1));
                phraseNode = NO_NODE;
            }
            while (at < to) Pass();
        }

        // Over a pair that needs a look, and those behind it that do: all those behind a phrase that is not
        // silent. Returns whether the pairs go on behind them.
        bool PassLook(unsigned pair, unsigned end)
        {
            PassTo(pair);
            bool isOdd = true;
            while (isOdd && at < end && KnowsNext()) isOdd = Pass();
            return !isOdd;
        }
    };

    // Pairs, as long as one of the table follows another. Returns where it got to.
    const unsigned char* WalkPairs(const unsigned char* text, const unsigned char* end, int& state,
                                   int*& values) const
    {
        const Shortcuts& table = *m_pShortcuts;
        const auto most = static_cast<unsigned>((end - text) / 2);
        int* const row = values;
        PairRun run{table, text, row, table.contextOf[state]};
        PairEntry before = table.contexts[run.context].classes;
        unsigned count = 0;
        while (count < most) {
            const PairEntry entry = table.pairs[PairAt(text + 2 * count)];
            if (entry == 0) break;
            if (NeedsLook(before, entry) != 0) {
                const bool goesOn = run.PassLook(count, most);
                count = run.at;
                if (!goesOn) break;
                before = run.Entry(count - 1);
            } else {
                row[count++] = ValueOf(entry);
                before = entry;
            }
        }
        run.PassTo(count);

        // The node of the last pair is far from what else is at hand; the context's state acts the same.
        state = run.context != UNKNOWN_CONTEXT ? table.contexts[run.context].state : run.LastNode(*this);
        values += count;
        return text + 2 * count;
    }

    // Sixes, as long as one follows another, and half a one at the end. Returns where it got to.
    TARGET_AVX2 const unsigned char* WalkSixes(const unsigned char* text, const unsigned char* end,
                                               int& state, int*& values) const
    {
        const Shortcuts& table = *m_pShortcuts;
        if (end - text < 3 || !IsThree(text)) return text;
        const Context& context = table.contexts[table.contextOf[state]];
        bool mayFollow =
            context.servesSixes ||
            (context.known.Has(text[0]) && table.FindPhrase(table.contextOf[state], PairAt(text)) == nullptr);
        for (; mayFollow && end - text >= 8 && IsSix(text); text += 6) {
            const SixIndices at = IndicesOfSix(text);
            const FirstOfSix& first = table.firstsOfSix[at.first];
            const int middle = table.middlesOfSix[at.middle];
            const SecondOfSix& second = table.secondsOfSix[at.second];
            if ((first.thirdValue & middle & ~second.state) >= 0) return text;
            values[0] = first.pairValue;
            values[1] = first.thirdValue & VALUE_MASK;
            values[2] = middle & VALUE_MASK;
            values[3] = second.value & VALUE_MASK;
            values += 4;
            mayFollow = second.value < 0;
            state = second.state;
        }
        if (!mayFollow || end - text < 3 || !IsThree(text)) return text;
        const FirstOfSix& half = table.firstsOfSix[DecodeThree(text)];
        if (half.thirdValue >= 0) return text;
        *values++ = half.pairValue;
        *values++ = half.thirdValue & VALUE_MASK;
        state = table.behindThird[text[2] & 0x3F];
        return text + 3;
    }

    static bool IsThree(const unsigned char* text)
    {
        return (text[0] & 0xF0) == 0xE0 && IsContinuation(text[1]) && IsContinuation(text[2]);
    }

    // Of eight bytes the first six.
    static bool IsSix(const unsigned char* text)
    {
        uint64_t bytes;  // the first one lowest
        memcpy(&bytes, text, sizeof bytes);
        return (bytes & 0xC0C0F0C0C0F0) == 0x8080E08080E0;
    }

    struct SixIndices {
        unsigned first, middle, second;
    };

    // In each lane of 32 bits, x for the bits of the index from the first byte, y and z for those behind it:
    //
    //     bytes a b c d e f     1110xxxx 10yyyyyy 10zzzzzz, twice
    //     masked                0000xxxx 00yyyyyy 00zzzzzz
    //     shuffled              (c b a 0) (f e d 0) (d c 0 0)
    //     two bytes each        0000yyyyyyzzzzzz 000000000000xxxx; in the third lane ccccccdddd
    //     two words each        xxxxyyyyyyzzzzzz
    TARGET_AVX2 static SixIndices IndicesOfSix(const unsigned char* text)
    {
        const __m128i bytes = _mm_and_si128(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(text)),
                                            _mm_set1_epi64x(0x3F3F0F3F3F0F));
        const __m128i lanes =
            _mm_shuffle_epi8(bytes, _mm_setr_epi8(2, 1, 0, -1, 5, 4, 3, -1, 3, 2, -1, -1, -1, -1, -1, -1));
        const __m128i words =
            _mm_maddubs_epi16(lanes, _mm_setr_epi8(1, 64, 1, 0, 1, 64, 1, 0, 1, 16, 0, 0, 0, 0, 0, 0));
        const __m128i indices = _mm_madd_epi16(words, _mm_set1_epi32(1 | 0x1000 << 16));
        return {static_cast<unsigned>(_mm_cvtsi128_si32(indices)),
                static_cast<unsigned>(_mm_extract_epi32(indices, 2)),
                static_cast<unsigned>(_mm_extract_epi32(indices, 1))};
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
    __m256i none = all;
    int count = 0;
    for (const int* at = values; at < end; at += 8, count += 8) {
        const __m256i value = Load32(at);
        all = _mm256_or_si256(all, value);
        none = _mm256_sub_epi32(none, _mm256_cmpeq_epi32(value, _mm256_set1_epi32(TRIE_VALUE_NONE)));
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
    scores.nonPositiveUnicode += count - SumEven(none) - SumOdd(positiveOnes);
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
