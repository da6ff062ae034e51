// The fast form of the detector's walk: first the nodes' values in a row, then their digits eight at a time
// (ValueSums.h). It takes the shortcuts that a node table offers (Shortcuts.h):
//
//     for each piece of the text
//         until it is over
//             while two characters of three bytes each in UTF-8 follow: append what they add
//             while pairs follow: append what each adds
//                 where the filter says that a pair needs a look: pass over the pairs up to it
//                     phrase by phrase, which gives the context before it, and take it by this context
//             over a single character of ASCII between these, if it leads where it leads from the rest
//                 state: append what the rest state's row has for it
//             from hub to hub, until pairs serve: append what the hub's row has for the byte, and skip
//                 ASCII where two bytes of it lead back to the hub and add nothing
//             byte by byte, until there is a hub: step as the plain walk does
//         add up the row; a decisive value in it ends the walk
//
// The state need not be the node that the plain walk is at, but one that acts the same on all that may come.
#include <algorithm>
#include <bit>
#include <cstring>

#include "Bytes.h"
#include "Detection.h"
#include "Shortcuts.h"
#include "ValueSums.h"
#include "Vectors.h"

namespace fast
{
namespace
{
using namespace trie;

// How many of the 32 bytes at `text` are quiet, up to the first that is not.
TARGET_AVX2 unsigned QuietBytesAt(const unsigned char* text, Quiet quiet)
{
    const __m256i bytes = Load32(text);
    const auto is = [&](char byte) TARGET_AVX2 { return _mm256_cmpeq_epi8(bytes, _mm256_set1_epi8(byte)); };
    // Bytes of 80 and above are negative.
    const __m256i printed = _mm256_andnot_si256(is(0x7F), _mm256_cmpgt_epi8(bytes, _mm256_set1_epi8(0x1F)));
    const __m256i breaks = _mm256_or_si256(is('\t'), _mm256_or_si256(is('\n'), is('\r')));
    const unsigned others = quiet == Quiet::TEXT ? Mask(breaks) : 0;
    return static_cast<unsigned>(std::countr_one(Mask(printed) | others));
}

// The entry of the phrase that the pair completes in the context, which knows its first byte, or null.
TARGET_AVX2 const uint32_t* FindPhrase(const Shortcuts& table, unsigned context, unsigned pair)
{
    for (; context != REST; context = table.contexts[context].parent) {
        const uint32_t key = PhraseKey(context, pair);
        const __m256i keys = _mm256_set1_epi32(static_cast<int>(key));
        for (unsigned bucket = PhraseBucketOf(key);; bucket = (bucket + 1) % PHRASE_BUCKETS) {
            const PhraseBucket& phrases = table.phrases[bucket];
            const unsigned found = Mask(_mm256_cmpeq_epi32(Load32(phrases.keys), keys));
            if (found != 0) return &phrases.entries[std::countr_zero(found) / 4];
            if (!phrases.IsFull()) break;
        }
        if (table.contexts[context].own.Has(static_cast<unsigned char>(pair))) break;
    }
    return nullptr;
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

    // Whether there is a shorter way than by single bytes.
    bool IsShort(int state, const unsigned char* text, const unsigned char* end) const
    {
        return m_pShortcuts != nullptr && (m_pShortcuts->hubOf[state] != NO_HUB ||
                                           PairsServe(m_pShortcuts->contextOf[state], text, end));
    }

    // Byte after byte, as the plain walk goes, until a hub is met or pairs serve. Returns where it got to.
    const unsigned char* WalkBytes(const unsigned char* text, const unsigned char* end, int& state,
                                   int*& values) const
    {
        while (text < end && !IsShort(state, text, end)) {
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
            // Behind an even number of them the hub is the same again.
            const Quiet quiet = table.quiet[hub];
            if (quiet != Quiet::NOT && end - text >= 32) text += QuietBytesAt(text, quiet) & ~1U;
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
        unsigned context;  // before the pair `at`
        unsigned at = 0;   // a pair

        PairEntry Entry(unsigned pair) const { return table.pairs[PairAt(text + 2 * pair)]; }

        // The node that the last pair leads to.
        int LastNode(const CWalker& walker) const
        {
            const int first = Child(walker.m_pTrie, walker.m_nNodes, table.rest, text[2 * at - 2]);
            return Child(walker.m_pTrie, walker.m_nNodes, first, text[2 * at - 1]);
        }

        // Whether the next pair can be passed.
        bool KnowsNext() const { return table.contexts[context].known.Has(text[2 * at]) && Entry(at) != 0; }

        // Over one pair. Returns whether it completes a phrase that is not silent.
        bool Pass()
        {
            const uint32_t* const phrase = FindPhrase(table, context, PairAt(text + 2 * at));
            const PairEntry entry = phrase != nullptr ? *phrase : Entry(at);
            values[at++] = ValueOf(entry);
            context = ContextOf(entry);
            return phrase != nullptr && (entry & IS_SILENT) == 0;
        }

        // Over pairs that needed no look. Behind one that completes no silent phrase the context is its own.
        void PassTo(unsigned to)
        {
            unsigned from = to;
            while (from > at && (Entry(from - 1) & COMPLETES_SILENT_PHRASE) != 0) --from;
            if (from > at) {
                at = from;
                context = ContextOf(Entry(from - 1));
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

    // Pairs, as long as one of the table follows another, and single characters of ASCII between them.
    // Returns where it got to.
    const unsigned char* WalkPairs(const unsigned char* text, const unsigned char* end, int& state,
                                   int*& values) const
    {
        unsigned context = m_pShortcuts->contextOf[state];
        do {
            PairRun run{*m_pShortcuts, text, values, context};
            PassPairs(run, static_cast<unsigned>((end - text) / 2));
            // The node of the last pair is far from what else is at hand; the context's state acts the same.
            context = run.context;
            state = context != UNKNOWN_CONTEXT ? m_pShortcuts->contexts[context].state : run.LastNode(*this);
            values += run.at;
            text += 2 * run.at;
        } while (StepOnAscii(context, text, end, state, values) && PairsServe(context, text, end));
        return text;
    }

    // Over one character of ASCII that leads where it leads from the rest state. Returns whether there was
    // one.
    bool StepOnAscii(unsigned& context, const unsigned char*& text, const unsigned char* end, int& state,
                     int*& values) const
    {
        if (text == end || *text >= 0x80) return false;
        const HubEntry* const entry = m_pShortcuts->FindStepAsAtRest(context, *text);
        if (entry == nullptr) return false;
        Append(values, entry->value);
        state = entry->node;
        context = entry->context;
        ++text;
        return true;
    }

    static void PassPairs(PairRun& run, unsigned most)
    {
        PairEntry before = run.table.contexts[run.context].classes;
        unsigned count = 0;
        while (count < most) {
            const PairEntry entry = run.Entry(count);
            if (entry == 0) break;
            if (NeedsLook(before, entry) != 0) {
                const bool goesOn = run.PassLook(count, most);
                count = run.at;
                if (!goesOn) break;
                before = run.Entry(count - 1);
            } else {
                run.values[count++] = ValueOf(entry);
                before = entry;
            }
        }
        run.PassTo(count);
    }

    // Sixes, as long as one follows another, and single characters of ASCII between them. Returns where it
    // got to.
    TARGET_AVX2 const unsigned char* WalkSixes(const unsigned char* text, const unsigned char* end,
                                               int& state, int*& values) const
    {
        unsigned context = REST;
        do {
            if (end - text < 3 || !IsThree(text)) return text;
            text = PassSixes(text, end, state, values);
            context = m_pShortcuts->contextOf[state];
        } while (StepOnAscii(context, text, end, state, values));
        return text;
    }

    // Sixes, and half a one before and behind; three bytes of one follow. Returns where it got to.
    TARGET_AVX2 const unsigned char* PassSixes(const unsigned char* text, const unsigned char* end,
                                               int& state, int*& values) const
    {
        const Shortcuts& table = *m_pShortcuts;
        const Context& context = table.contexts[table.contextOf[state]];
        bool mayFollow = context.servesSixes;
        if (context.third != NO_THIRD) {
            const int middle = table.middlesOfSix[context.third << 4 | (text[0] & 0x0F)];
            const SecondOfSix& second = table.secondsOfSix[DecodeThree(text)];
            if ((middle & ~second.state) >= 0) return text;
            values = AppendSecond(values, middle, second);
            mayFollow = second.value < 0;
            state = second.state;
            text += 3;
        } else if (!mayFollow)
            mayFollow = context.known.Has(text[0]) &&
                        FindPhrase(table, table.contextOf[state], PairAt(text)) == nullptr;
        for (; mayFollow && end - text >= 6; text += 6) {
            const uint64_t bytes = LoadSix(text);
            if ((bytes & 0xC0C0F0C0C0F0) != 0x8080E08080E0) break;
            const SixIndices at = IndicesOfSix(bytes);
            const FirstOfSix& first = table.firstsOfSix[at.first];
            const int middle = table.middlesOfSix[at.middle];
            const SecondOfSix& second = table.secondsOfSix[at.second];
            if ((first.thirdValue & middle & ~second.state) >= 0) return text;
            values = AppendSecond(AppendFirst(values, first), middle, second);
            mayFollow = second.value < 0;
            state = second.state;
        }
        if (!mayFollow || end - text < 3 || !IsThree(text)) return text;
        const FirstOfSix& half = table.firstsOfSix[DecodeThree(text)];
        if (half.thirdValue >= 0) return text;
        values = AppendFirst(values, half);
        state = table.behindThird[text[2] & 0x3F];
        return text + 3;
    }

    static int* AppendFirst(int* values, const FirstOfSix& first)
    {
        values[0] = first.pairValue;
        values[1] = first.thirdValue & VALUE_MASK;
        return values + 2;
    }

    static int* AppendSecond(int* values, int middle, const SecondOfSix& second)
    {
        values[0] = middle & VALUE_MASK;
        values[1] = second.value & VALUE_MASK;
        return values + 2;
    }

    static bool IsThree(const unsigned char* text)
    {
        return (text[0] & 0xF0) == 0xE0 && IsContinuation(text[1]) && IsContinuation(text[2]);
    }

    // The first byte is the lowest.
    static uint64_t LoadSix(const unsigned char* text)
    {
        uint32_t low, high;
        memcpy(&low, text, sizeof low);
        memcpy(&high, text + 2, sizeof high);
        return low | static_cast<uint64_t>(high) << 16;
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
    TARGET_AVX2 static SixIndices IndicesOfSix(uint64_t six)
    {
        const __m128i bytes = _mm_cvtsi64_si128(static_cast<long long>(six & 0x3F3F0F3F3F0F));
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

}  // namespace
}  // namespace fast

void FastWalk(const TrieNode* trie, unsigned nodeCount, const char* text, unsigned long length,
              WalkPosition& position)
{
    using namespace fast;
    alignas(32) int values[MOST_VALUES + VALUES_PADDING];
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text);
    Scores& scores = position.scores;
    CWalker walker(trie, nodeCount, position.state);
    for (unsigned long at = 0; at < length && scores.decidedCode == 0; at += MOST_VALUES) {
        const unsigned long size = std::min(length - at, MOST_VALUES);
        int* const end = walker.Walk(bytes + at, bytes + at + size, values);
        AddValues(values, end, scores);
        scores.highBytes += CountHighBytes(bytes + at, size);
    }
    position.state = walker.State();
}
