// Makes the shortcuts of a node table. They hold for any table; how much of a text they serve is its matter.
//
//     count the links to each node; those that many lead to are hubs, the first of them the rest state
//     for each hub and byte:        note where the walk goes
//     for each two bytes:           note what they add from the rest state, and the context behind them
//     for each six bytes of UTF-8:  note the same
//     for each context, until there are no new ones:
//         for each byte: if it leads to where it leads from the rest state, the context knows it
//                        if it leads to a node that adds nothing and fails to there, the context knows it,
//                        and each child of that node is a phrase
//     give each pair a class, and the classes of the pairs that need a look behind it
//
// There is one set, in static memory, which costs nothing until enough text has been walked to make it pay.
#include "Shortcuts.h"

#include <algorithm>
#include <atomic>
#include <iterator>

#include "Detection.h"

namespace
{
using namespace trie;

enum State { EMPTY, BEING_FILLED, FILLED };
std::atomic<State> s_state = EMPTY;
constexpr unsigned long WORTH_IT = 1 << 20;  // bytes walked without it
std::atomic<unsigned long> s_nWalked = 0;
Shortcuts s_shortcuts;

// What is known of the nodes and contexts while shortcuts are made.
struct Scratch {
    unsigned linksTo[MOST_SHORTCUT_NODES];
    bool hasChildren[MOST_SHORTCUT_NODES];
    int stateOf[MOST_CONTEXTS];
    unsigned phrasesOf[MOST_CONTEXTS];
    bool failsToRest[MOST_CONTEXTS];
    PairEntry classesOf[MOST_CONTEXTS];  // a bit for each class, as in a PairEntry
    int firsts[0x100];                   // the nodes of first bytes
    bool completes[0x10000];             // pairs that complete a phrase, not silent, of a context with few
    int behindThird[0x10000];            // by code point: what the state behind a b c acts as
} s_scratch;

// The state that most of a row of states are, if more than half are the same.
class CMajority
{
public:
    void Add(int state)
    {
        if (m_nLead == 0) m_nState = state;
        m_nLead += m_nState == state ? 1 : -1;
    }
    int Get() const { return m_nState; }

private:
    int m_nState = NO_NODE, m_nLead = 0;
};

class CShortcutsBuilder
{
public:
    CShortcutsBuilder(const TrieNode* trie, unsigned nodeCount, Shortcuts& made)
        : m_pTrie(trie), m_nNodes(nodeCount), m_made(made)
    {
    }

    void Build()
    {
        m_made.trie = m_pTrie;
        m_made.nodeCount = m_nNodes;
        FindHubs();
        FillRows();
        for (unsigned hub = 1; hub <= m_nHubs; ++hub)
            m_made.quiet[hub] = IsQuiet(hub, 0)      ? Quiet::TEXT
                                : IsQuiet(hub, 0x20) ? Quiet::PRINTED
                                                     : Quiet::NOT;
        m_made.serve = m_made.hubOf[m_made.rest] != NO_HUB;
        if (!m_made.serve) return;
        std::fill_n(m_made.contextOf, m_nNodes, UNSET);
        m_nContexts = 0;
        ContextOfState(m_made.rest);
        for (unsigned hub = 1; hub <= m_nHubs; ++hub) ContextOfState(m_hubs[hub]);
        FindFirstNodes();
        FillPairs();
        FillFirstsOfSix();
        FillRestOfSix();
        JudgeContexts();
        // Sixes are followed by their own tables; pairs would lead out of step with them.
        for (const int state : m_withinSix)
            if (state != NO_NODE && state != m_made.rest) m_made.contexts[KnownContextOf(state)].known = {};
        FillClasses();
        for (SecondOfSix& second : m_made.secondsOfSix)
            if (second.state != NO_NODE && m_made.contexts[KnownContextOf(second.state)].servesSixes)
                second.value |= PRESENT;
        for (unsigned hub = 1; hub <= m_nHubs; ++hub) m_made.hubContexts[hub] = KnownContextOf(m_hubs[hub]);
        for (unsigned i = 0; i < m_nNodes; ++i) {
            const unsigned hub = m_made.hubOf[i];  // the walk asks either for the context
            m_made.contextOf[i] =
                hub != NO_HUB ? m_made.hubContexts[hub] : KnownContextOf(static_cast<int>(i));
        }
        for (unsigned hub = 1; hub <= m_nHubs; ++hub)
            for (HubEntry& entry : m_made.hubs[hub]) entry.context = m_made.contextOf[entry.node];
    }

private:
    static constexpr unsigned short UNSET = 0xFFFF;
    static constexpr unsigned FEW = 64;  // phrases of a context
    static constexpr unsigned MOST_PHRASES = PHRASE_BUCKETS * PhraseBucket::SIZE / 4 * 3;

    // -----------------------------------------------------------------------------------------------------
    // Hubs

    bool IsChild(unsigned node) const
    {
        const auto parent = static_cast<unsigned>(m_pTrie[node].nCheck);
        return parent < m_nNodes && node - static_cast<unsigned>(m_pTrie[parent].nBase) < 0x100;
    }

    unsigned ParentOf(unsigned node) const { return static_cast<unsigned>(m_pTrie[node].nCheck); }

    // Whether the node stands for the first bytes of a text, eight at most, that go on from the root itself.
    bool IsAtStart(unsigned node) const
    {
        for (int steps = 0; steps < 8 && node != ROOT && IsChild(node); ++steps) node = ParentOf(node);
        return node == ROOT;
    }

    void CountLinks(bool withStart)
    {
        std::fill_n(s_scratch.linksTo, m_nNodes, 0U);
        for (unsigned i = 0; i < m_nNodes; ++i)
            if (IsChild(i) && (withStart || !IsAtStart(i)))
                ++s_scratch.linksTo[FailureLink(m_pTrie, m_nNodes, static_cast<int>(i))];
    }

    // The states that most nodes fail to, and which nodes act as them.
    void FindHubs()
    {
        const unsigned* const links = s_scratch.linksTo;
        CountLinks(true);
        m_made.rest = static_cast<int>(std::max_element(links, links + m_nNodes) - links);
        // A rest state of its own means that the walk does not come back to the root.
        if (m_made.rest != ROOT) CountLinks(false);
        unsigned least = 16;
        while (std::count_if(links, links + m_nNodes, [&](unsigned n) { return n >= least; }) >
               int{MOST_HUBS})
            least += least / 8;
        std::fill_n(m_made.hubOf, m_nNodes, NO_HUB);
        m_nHubs = 0;
        for (unsigned i = 0; i < m_nNodes; ++i)
            if (links[i] >= least) {
                m_hubs[++m_nHubs] = static_cast<int>(i);
                m_made.hubOf[i] = static_cast<unsigned char>(m_nHubs);
            }
        std::fill_n(s_scratch.hasChildren, m_nNodes, false);
        for (unsigned i = 0; i < m_nNodes; ++i)
            if (IsChild(i)) s_scratch.hasChildren[ParentOf(i)] = true;
        // Links lead to hubs proper, so childless nodes are looked at last.
        for (unsigned i = 0; i < m_nNodes; ++i) {
            const auto fail = static_cast<unsigned>(FailureLink(m_pTrie, m_nNodes, static_cast<int>(i)));
            const bool isHub =
                m_made.hubOf[fail] != NO_HUB && m_hubs[m_made.hubOf[fail]] == static_cast<int>(fail);
            if (!s_scratch.hasChildren[i] && m_made.hubOf[i] == NO_HUB && isHub && i != ROOT)
                m_made.hubOf[i] = m_made.hubOf[fail];
        }
    }

    void FillRows()
    {
        for (unsigned hub = 1; hub <= m_nHubs; ++hub)
            for (unsigned byte = 0; byte < 0x100; ++byte) {
                int state = m_hubs[hub];
                const int entered = StepOn(state, byte);
                m_made.hubs[hub][byte] = {state, entered != NO_NODE ? Value(entered) : TRIE_VALUE_NONE,
                                          m_made.hubOf[state], UNKNOWN_CONTEXT};
            }
    }

    // Whether the hub that ASCII text from `from` on leads to is one and the same, and from there it is this
    // hub again.
    bool IsQuiet(unsigned hub, unsigned from) const
    {
        const unsigned partner = m_made.hubs[hub][0x61].hub;
        for (unsigned byte = from; byte < 0x80; ++byte) {
            if (!IsAsciiText(byte)) continue;
            const HubEntry &there = m_made.hubs[hub][byte], &back = m_made.hubs[partner][byte];
            if (partner == NO_HUB || there.hub != partner || back.hub != hub ||
                there.value != TRIE_VALUE_NONE || back.value != TRIE_VALUE_NONE)
                return false;
        }
        return true;
    }

    // -----------------------------------------------------------------------------------------------------
    // Steps

    int Value(int node) const { return m_pTrie[node].nValue; }
    bool HasPlainValue(int node) const { return (Value(node) & ~VALUE_MASK) == 0; }  // none that decides

    int ChildOn(int state, unsigned byte) const
    {
        return Child(m_pTrie, m_nNodes, state, static_cast<unsigned char>(byte));
    }

    int StepOn(int& state, unsigned byte) const
    {
        return Step(m_pTrie, m_nNodes, state, static_cast<unsigned char>(byte));
    }

    // The same where a node is entered that adds what a row of values can hold.
    bool StepsPlainly(int& state, unsigned byte) const
    {
        const int entered = StepOn(state, byte);
        return entered != NO_NODE && HasPlainValue(entered);
    }

    // The state itself or, where it has no children, that which it fails to in the end.
    int ActsAs(int state) const
    {
        for (int steps = 0; steps < 64; ++steps) {
            if (state == ROOT || s_scratch.hasChildren[state]) return state;
            state = FailureLink(m_pTrie, m_nNodes, state);
        }
        return NO_NODE;  // in a circle of failures, or as good as that
    }

    // -----------------------------------------------------------------------------------------------------
    // Contexts, pairs and phrases

    // The context of a state, which gets a number the first time.
    unsigned ContextOfState(int state)
    {
        const int proper = ActsAs(state);
        if (proper == NO_NODE) return UNKNOWN_CONTEXT;
        unsigned short& context = m_made.contextOf[proper];
        if (context == UNSET && m_nContexts < UNKNOWN_CONTEXT) {
            context = static_cast<unsigned short>(m_nContexts);
            s_scratch.stateOf[m_nContexts++] = proper;
        }
        return context == UNSET ? UNKNOWN_CONTEXT : context;
    }

    // The same once all have their numbers.
    unsigned short KnownContextOf(int state) const
    {
        const int proper = ActsAs(state);
        const bool isKnown = proper != NO_NODE && m_made.contextOf[proper] != UNSET;
        return isKnown ? m_made.contextOf[proper] : static_cast<unsigned short>(UNKNOWN_CONTEXT);
    }

    // The node of a first byte, or NO_NODE where it adds something: a row has no room for that.
    static int FirstNode(unsigned byte) { return s_scratch.firsts[byte]; }

    void FindFirstNodes()
    {
        for (unsigned byte = 0; byte < 0x100; ++byte) {
            const int first = ChildOn(m_made.rest, byte);
            const bool addsNothing = first != NO_NODE && Value(first) == TRIE_VALUE_NONE;
            s_scratch.firsts[byte] = addsNothing ? first : NO_NODE;
        }
    }

    void FillPairs()
    {
        std::fill_n(m_made.pairs, 0x10000, PairEntry{0});
        for (unsigned byte = 0; byte < 0x100; ++byte) {
            const int first = FirstNode(byte);
            for (unsigned next = 0; first != NO_NODE && next < 0x100; ++next) {
                const int second = ChildOn(first, next);
                if (second == NO_NODE || !HasPlainValue(second)) continue;
                m_made.pairs[PairOf(static_cast<unsigned char>(byte), static_cast<unsigned char>(next))] =
                    EntryOf(second);
            }
        }
    }

    // The entry of a pair's node, as yet without classes but for a mark that keeps it from being 0.
    PairEntry EntryOf(int node)
    {
        return PairEntry{FIRST_CLASS_BIT} << 32 | PairEntry{ContextOfState(node)} << FIRST_CONTEXT_BIT |
               static_cast<unsigned>(Value(node));
    }

    void JudgeContexts()
    {
        std::fill_n(m_made.phrases, PHRASE_BUCKETS, PhraseBucket{});
        m_nPhrases = 0;
        std::fill_n(s_scratch.phrasesOf, MOST_CONTEXTS, 0U);
        unsigned judged = REST;
        while (judged < m_nContexts) JudgeChildren(judged++);
        // A single character of ASCII stands before many pairs; what is left of the numbers is for these.
        for (unsigned byte = 0; byte < 0x80; ++byte) {
            ContextOfState(m_made.hubs[m_made.hubOf[m_made.rest]][byte].node);
            while (judged < m_nContexts) JudgeChildren(judged++);
        }
        m_made.contexts[UNKNOWN_CONTEXT] = {};
        m_made.contexts[UNKNOWN_CONTEXT].own.AddAll();
        m_made.contexts[UNKNOWN_CONTEXT].parent = UNKNOWN_CONTEXT;
        m_made.contexts[UNKNOWN_CONTEXT].third = NO_THIRD;
        for (unsigned context = REST; context < m_nContexts; ++context)
            s_scratch.failsToRest[context] = FailsToRest(context);
        for (unsigned context = REST + 1; context < m_nContexts; ++context)
            if (s_scratch.failsToRest[context]) InheritBytes(m_made.contexts[context]);
        for (unsigned context = REST; context < m_nContexts; ++context)
            if (!s_scratch.failsToRest[context]) {
                m_made.contexts[context].own.AddAll();
                m_made.contexts[context].parent = REST;
            }
    }

    // The bytes on which the context's state has a child, and those of them that lead to where they lead from
    // the rest state, but for phrases. Brings new contexts.
    void JudgeChildren(unsigned number)
    {
        const int state = s_scratch.stateOf[number];
        Context& context = m_made.contexts[number] = {};
        context.state = state;
        context.third = static_cast<unsigned char>(
            std::find(m_made.behindThird, m_made.behindThird + NO_THIRD, state) - m_made.behindThird);
        context.parent = number == REST  ? REST
                         : state == ROOT ? UNKNOWN_CONTEXT  // it never fails
                                         : ContextOfState(FailureLink(m_pTrie, m_nNodes, state));
        for (unsigned byte = 0; byte < 0x100; ++byte) {
            const int child = ChildOn(state, byte), first = FirstNode(byte);
            if (child == NO_NODE) continue;
            context.own.Add(byte);
            if (first == NO_NODE) continue;
            const bool isInOrder = child != ROOT && Value(child) == TRIE_VALUE_NONE &&
                                   FailureLink(m_pTrie, m_nNodes, child) == first;
            if (child == first || (isInOrder && AddPhrases(number, byte, child))) context.known.Add(byte);
        }
    }

    bool FailsToRest(unsigned context) const
    {
        for (int steps = 0; steps < 8 && context != REST; ++steps) context = m_made.contexts[context].parent;
        return context == REST;
    }

    // What else is known is what is known where the state fails to.
    void InheritBytes(Context& context) const
    {
        for (unsigned word = 0; word < std::size(context.own.words); ++word) {
            uint32_t left = ~context.own.words[word];
            for (const Context* from = &m_made.contexts[context.parent];;
                 from = &m_made.contexts[from->parent]) {
                context.known.words[word] |= left & from->own.words[word] & from->known.words[word];
                left &= ~from->own.words[word];
                if (from == m_made.contexts) break;
            }
        }
    }

    bool AddPhrases(unsigned context, unsigned byte, int third)
    {
        for (unsigned next = 0; next < 0x100; ++next) {
            const int node = ChildOn(third, next);
            const unsigned pair = PairOf(static_cast<unsigned char>(byte), static_cast<unsigned char>(next));
            if (node == NO_NODE || m_made.pairs[pair] == 0) continue;
            const unsigned behind = ContextOfState(node);
            if (!HasPlainValue(node) || behind == UNKNOWN_CONTEXT || m_nPhrases == MOST_PHRASES) return false;
            unsigned bucket = PhraseBucketOf(PhraseKey(context, pair));
            while (m_made.phrases[bucket].IsFull()) bucket = (bucket + 1) % PHRASE_BUCKETS;
            PhraseBucket& phrases = m_made.phrases[bucket];
            const auto at = std::find(phrases.keys, phrases.keys + PhraseBucket::SIZE, 0) - phrases.keys;
            phrases.keys[at] = PhraseKey(context, pair);
            phrases.entries[at] = behind << FIRST_CONTEXT_BIT | static_cast<unsigned>(Value(node));
            ++m_nPhrases;
            ++s_scratch.phrasesOf[context];
        }
        return true;
    }

    // -----------------------------------------------------------------------------------------------------
    // Classes of pairs by their first byte: ASCII, 80 to BF, and above. The first class of each is for pairs
    // that need no look but for that byte. In ASCII one more has what is ASCII in UTF-16LE, too.

    struct Classes {
        unsigned first, count;
    };

    static constexpr Classes ClassesOf(unsigned byte)
    {
        if (byte < 0x80) return {0, 6};
        return byte < 0xC0 ? Classes{6, 10} : Classes{16, 10};
    }

    static unsigned ClassOf(unsigned pair)
    {
        const Classes classes = ClassesOf(pair & 0xFF);
        if (pair < 0x80) return classes.first + 1;
        // cppcheck takes the end of the callers' loop, 10000, for a pair.
        // cppcheck-suppress arrayIndexOutOfBoundsCond
        if (!s_scratch.completes[pair]) return classes.first;
        const unsigned taken = pair % 0x100 < 0x80 ? 2 : 1, spread = (pair * 0x9E3779B1U) >> 16;
        return classes.first + taken + spread % (classes.count - taken);
    }

    static constexpr PairEntry AllClassesOf(unsigned byte)
    {
        const Classes classes = ClassesOf(byte);
        return ((PairEntry{1} << classes.count) - 1) << (FIRST_CLASS_BIT + classes.first);
    }

    bool ServesSixes(unsigned context) const
    {
        for (unsigned from = context; from != REST; from = m_made.contexts[from].parent)
            if (s_scratch.phrasesOf[from] != 0 || from == UNKNOWN_CONTEXT) return false;
        for (unsigned byte = 0xE0; byte < 0xF0; ++byte)
            if (!m_made.contexts[context].known.Has(static_cast<unsigned char>(byte))) return false;
        return true;
    }

    // Phrases of contexts with many of them are never silent: nearly every pair would complete one.
    bool IsSilent(uint32_t key, uint32_t entry) const
    {
        return ValueOf(entry) == ValueOf(m_made.pairs[key & 0xFFFF]) && s_scratch.phrasesOf[key >> 16] <= FEW;
    }

    // Calls `visit` with the key and the entry of each phrase.
    template <class Visit>
    void ForEachPhrase(const Visit& visit)
    {
        for (PhraseBucket& bucket : m_made.phrases)
            for (unsigned i = 0; i < PhraseBucket::SIZE && bucket.keys[i] != 0; ++i)
                visit(bucket.keys[i], bucket.entries[i]);
    }

    void FillClasses()
    {
        std::fill_n(s_scratch.completes, 0x10000, false);
        std::fill_n(s_scratch.classesOf, MOST_CONTEXTS, PairEntry{0});
        ForEachPhrase([&](uint32_t key, uint32_t& entry) {
            if (IsSilent(key, entry)) {
                entry |= IS_SILENT;
                m_made.pairs[key & 0xFFFF] |= COMPLETES_SILENT_PHRASE;
            } else if (s_scratch.phrasesOf[key >> 16] <= FEW)
                s_scratch.completes[key & 0xFFFF] = true;
        });
        ForEachPhrase([&](uint32_t key, uint32_t entry) {
            if ((entry & IS_SILENT) == 0)
                s_scratch.classesOf[key >> 16] |= PairEntry{1} << (FIRST_CLASS_BIT + ClassOf(key & 0xFFFF));
        });
        for (unsigned context = REST + 1; context < m_nContexts; ++context) {
            PairEntry& classes = s_scratch.classesOf[context];
            for (unsigned from = m_made.contexts[context].parent; from != REST;
                 from = m_made.contexts[from].parent)
                classes |= s_scratch.classesOf[from];
            const Context& known = m_made.contexts[context];
            for (unsigned word = 0; word < std::size(known.known.words); ++word)
                if ((m_made.contexts[REST].known.words[word] & ~known.known.words[word]) != 0)
                    classes |= AllClassesOf(32 * word);
        }
        s_scratch.classesOf[REST] = 0;
        s_scratch.classesOf[UNKNOWN_CONTEXT] = ANY_CLASS;
        for (unsigned pair = 0; pair < 0x10000; ++pair)
            if (PairEntry& entry = m_made.pairs[pair]; entry != 0)
                entry = s_scratch.classesOf[ContextOf(entry)] |
                        PairEntry{FIRST_CLASS_BIT + ClassOf(pair)} << 32 | (entry & 0xFFFFFFFF);
        for (unsigned context = REST; context < m_nContexts; ++context) {
            m_made.contexts[context].classes = s_scratch.classesOf[context];
            m_made.contexts[context].servesSixes = ServesSixes(context);
        }
        m_made.contexts[UNKNOWN_CONTEXT].classes = ANY_CLASS;
        ForEachPhrase([&](uint32_t key, uint32_t entry) {
            if ((entry & IS_SILENT) != 0) m_made.pairs[key & 0xFFFF] |= s_scratch.classesOf[ContextOf(entry)];
        });
    }

    // -----------------------------------------------------------------------------------------------------
    // Sixes a b c d e f. Behind c the state acts as one that depends on c alone, or the six is left out, and
    // behind d as one that depends on d alone.

    void FillFirstsOfSix()
    {
        CMajority states[0x40];
        for (unsigned cp = 0; cp < 0x10000; ++cp) {
            const auto a = static_cast<unsigned char>(0xE0 | cp >> 12),
                       b = static_cast<unsigned char>(0x80 | (cp >> 6 & 0x3F));
            const PairEntry pair = m_made.pairs[PairOf(a, b)];
            m_made.firstsOfSix[cp] = {};
            s_scratch.behindThird[cp] = NO_NODE;
            if (pair == 0) continue;
            int state = ChildOn(FirstNode(a), b);
            if (!StepsPlainly(state, 0x80 | (cp & 0x3F))) continue;
            m_made.firstsOfSix[cp] = {ValueOf(pair), Value(state) | PRESENT};
            s_scratch.behindThird[cp] = ActsAs(state);
            states[cp & 0x3F].Add(s_scratch.behindThird[cp]);
        }
        for (unsigned c = 0; c < 0x40; ++c) m_made.behindThird[c] = states[c].Get();
        for (unsigned cp = 0; cp < 0x10000; ++cp)
            if (s_scratch.behindThird[cp] != m_made.behindThird[cp & 0x3F]) m_made.firstsOfSix[cp] = {};
    }

    void FillRestOfSix()
    {
        for (unsigned d = 0; d < 0x10; ++d) {
            int behindFourth[0x40];
            CMajority states;
            for (unsigned c = 0; c < 0x40; ++c) {
                int state = m_made.behindThird[c];
                const bool isPlain = state != NO_NODE && StepsPlainly(state, 0xE0 | d);
                m_made.middlesOfSix[c << 4 | d] = isPlain ? Value(state) | PRESENT : 0;
                behindFourth[c] = isPlain ? ActsAs(state) : NO_NODE;
                if (isPlain) states.Add(behindFourth[c]);
            }
            for (unsigned c = 0; c < 0x40; ++c)
                if (behindFourth[c] != states.Get()) m_made.middlesOfSix[c << 4 | d] = 0;
            m_withinSix[d] = states.Get();
            FillSecondsOfSix(d, states.Get());
        }
    }

    void FillSecondsOfSix(unsigned d, int behindFourth)
    {
        for (unsigned e = 0; e < 0x40; ++e) {
            int behindFifth = behindFourth;
            const bool isPlain = behindFourth != NO_NODE && StepsPlainly(behindFifth, 0x80 | e) &&
                                 Value(behindFifth) == TRIE_VALUE_NONE;
            for (unsigned f = 0; f < 0x40; ++f) {
                SecondOfSix& second = m_made.secondsOfSix[d << 12 | e << 6 | f];
                second = {0, NO_NODE};
                int state = behindFifth;
                if (!isPlain || !StepsPlainly(state, 0x80 | f)) continue;
                second = {Value(state), ActsAs(state)};
                if (second.state != NO_NODE) ContextOfState(second.state);
            }
        }
    }

    const TrieNode* m_pTrie;
    unsigned m_nNodes;
    Shortcuts& m_made;
    int m_hubs[MOST_HUBS + 1] = {};
    unsigned m_nHubs = 0, m_nContexts = 0, m_nPhrases = 0;
    int m_withinSix[0x10] = {};  // the states behind d, by its low four bits
};
}  // namespace

const Shortcuts* FindShortcuts(const TrieNode* trie, unsigned nodeCount)
{
    if (s_state.load(std::memory_order_acquire) != FILLED) return nullptr;
    const bool isItsOwn = s_shortcuts.trie == trie && s_shortcuts.nodeCount == nodeCount;
    return isItsOwn && s_shortcuts.serve ? &s_shortcuts : nullptr;
}

const Shortcuts* MakeShortcuts(const TrieNode* trie, unsigned nodeCount)
{
    State expected = EMPTY;
    if (nodeCount <= MOST_SHORTCUT_NODES && s_state.compare_exchange_strong(expected, BEING_FILLED)) {
        CShortcutsBuilder(trie, nodeCount, s_shortcuts).Build();
        s_state.store(FILLED, std::memory_order_release);
    }
    return FindShortcuts(trie, nodeCount);
}

const Shortcuts* ShortcutsAfter(const TrieNode* trie, unsigned nodeCount, unsigned long bytes)
{
    if (nodeCount > MOST_SHORTCUT_NODES || s_nWalked.fetch_add(bytes, std::memory_order_relaxed) < WORTH_IT)
        return nullptr;
    return MakeShortcuts(trie, nodeCount);
}

void DropShortcuts()
{
    s_state = EMPTY;
    s_nWalked = 0;
}
