// Shortcuts through a node table, so that the walk waits less for one node to learn where the next one lies.
//
// Hubs. Most nodes have no children and fail to one of a few states: where a byte leads from such a hub is
// looked up in the hub's row, failures included, whatever node stood for it.
//
// Pairs. A model of pairs keeps text in step by one hub that most nodes fail to: the rest state. From there
// the first byte leads to a first node, the second to the pair's second node. What may still differ are
// children of second nodes, the beginnings of phrases. They are in order if a child of a second node adds
// nothing and fails to the first node of its byte. Then a pair moves the walk to the same place whatever went
// before, and only the value that it adds may be that of a phrase of two pairs instead of its own. A pair or
// phrase that fails elsewhere leaves the pairs, unless the next byte leads to the same from there; a pair
// whose nodes are not of this kind is left out. So the table holds for any model; how much of the text it
// serves is the model's matter.
//
// There is one set, in static memory, which costs nothing until enough text has been walked to make it pay.
#include <algorithm>
#include <atomic>
#include <cstring>

#include "Detection.h"

namespace
{
using namespace trie;

enum State { EMPTY, BEING_FILLED, FILLED };
std::atomic<State> s_state = EMPTY;
constexpr unsigned long WORTH_IT = 256 << 10;  // bytes walked without it
std::atomic<unsigned long> s_nWalked = 0;
Shortcuts s_shortcuts;

unsigned s_notes[MOST_SHORTCUT_NODES];  // per node, while they are made: links to it, then its kind
enum Kind : unsigned { NOT_SECOND, CHILDLESS, IN_ORDER, OUT_OF_ORDER };

class CMaker
{
public:
    CMaker(const TrieNode* trie, unsigned nodeCount, Shortcuts& made)
        : m_pTrie(trie), m_nNodes(nodeCount), m_made(made)
    {
    }

    void Make()
    {
        m_made.trie = m_pTrie;
        m_made.nodeCount = m_nNodes;
        FindHubs();
        FillRows();
        for (unsigned hub = 1; hub <= m_nHubs; ++hub) m_made.quiet[hub] = IsQuiet(hub);
        FillPairs();
        std::fill_n(m_made.leaves, m_nNodes, false);
        JudgePhrases();
        DropUnorderedPairs();
    }

private:
    bool IsChild(unsigned node) const
    {
        const auto parent = static_cast<unsigned>(m_pTrie[node].nCheck);
        return parent < m_nNodes && node - static_cast<unsigned>(m_pTrie[parent].nBase) < 0x100;
    }

    unsigned ParentOf(unsigned node) const { return static_cast<unsigned>(m_pTrie[node].nCheck); }
    unsigned char ByteOf(unsigned node) const
    {
        return static_cast<unsigned char>(node - static_cast<unsigned>(m_pTrie[ParentOf(node)].nBase));
    }

    // Whether the node stands for the first bytes of a text, eight at most, that go on from the root itself.
    bool IsAtStart(unsigned node) const
    {
        for (int steps = 0; steps < 8 && node != ROOT && IsChild(node); ++steps) node = ParentOf(node);
        return node == ROOT;
    }

    void CountLinks(bool withStart)
    {
        std::fill_n(s_notes, m_nNodes, 0U);
        for (unsigned i = 0; i < m_nNodes; ++i)
            if (IsChild(i) && (withStart || !IsAtStart(i)))
                ++s_notes[FailureLink(m_pTrie, m_nNodes, static_cast<int>(i))];
    }

    // The states that most nodes fail to, and which nodes act as them.
    void FindHubs()
    {
        CountLinks(true);
        m_made.rest = static_cast<int>(std::max_element(s_notes, s_notes + m_nNodes) - s_notes);
        // A rest state of its own means that the walk does not come back to the root.
        if (m_made.rest != ROOT) CountLinks(false);
        unsigned least = 16;
        while (std::count_if(s_notes, s_notes + m_nNodes, [&](unsigned n) { return n >= least; }) > MOST_HUBS)
            least += least / 8;
        std::fill_n(m_made.hubOf, m_nNodes, NO_HUB);
        m_nHubs = 0;
        for (unsigned i = 0; i < m_nNodes; ++i)
            if (s_notes[i] >= least) {
                m_hubs[++m_nHubs] = static_cast<int>(i);
                m_made.hubOf[i] = static_cast<unsigned char>(m_nHubs);
            }
        std::fill_n(s_notes, m_nNodes, 0U);  // from here on: whether a node has children
        for (unsigned i = 0; i < m_nNodes; ++i)
            if (IsChild(i)) s_notes[ParentOf(i)] = 1;
        // Links lead to hubs proper, so childless nodes are looked at last.
        for (unsigned i = 0; i < m_nNodes; ++i) {
            const auto fail = static_cast<unsigned>(FailureLink(m_pTrie, m_nNodes, static_cast<int>(i)));
            const bool isHub =
                m_made.hubOf[fail] != NO_HUB && m_hubs[m_made.hubOf[fail]] == static_cast<int>(fail);
            if (s_notes[i] == 0 && m_made.hubOf[i] == NO_HUB && isHub && i != ROOT)
                m_made.hubOf[i] = m_made.hubOf[fail];
        }
    }

    void FillRows()
    {
        for (unsigned hub = 1; hub <= m_nHubs; ++hub)
            for (unsigned byte = 0; byte < 0x100; ++byte) {
                const auto text = static_cast<unsigned char>(byte);
                int state = m_hubs[hub], child = Child(m_pTrie, m_nNodes, state, text);
                CFailureChain chain(m_pTrie, m_nNodes, state);
                while (child == NO_NODE && state != ROOT) {
                    state = chain.Next(state);
                    child = Child(m_pTrie, m_nNodes, state, text);
                }
                if (child != NO_NODE) state = child;
                m_made.hubs[hub][byte] = {state, child != NO_NODE ? m_pTrie[child].nValue : TRIE_VALUE_NONE,
                                          m_made.hubOf[state]};
            }
    }

    // Whether the hub that ASCII text leads to is one and the same, and from there it is this hub again.
    bool IsQuiet(unsigned hub) const
    {
        const unsigned partner = m_made.hubs[hub][0x61].hub;
        for (unsigned byte = 0; byte < 0x80; ++byte) {
            if (!IsAsciiText(byte)) continue;
            const HubEntry &there = m_made.hubs[hub][byte], &back = m_made.hubs[partner][byte];
            if (partner == NO_HUB || there.hub != partner || back.hub != hub ||
                there.value != TRIE_VALUE_NONE || back.value != TRIE_VALUE_NONE)
                return false;
        }
        return true;
    }

    // All pairs, each with its own second node.
    void FillPairs()
    {
        for (unsigned byte = 0; byte < 0x100; ++byte) {
            std::fill_n(m_made.entries[byte], 0x100, PairEntry{NO_NODE, 0});
            const int first = FirstNode(byte);
            if (first == NO_NODE) continue;
            m_made.firstValues[byte] = m_pTrie[first].nValue;
            for (unsigned next = 0; next < 0x100; ++next) {
                const int second = Child(m_pTrie, m_nNodes, first, static_cast<unsigned char>(next));
                // The root alone never fails.
                if (second == NO_NODE || second == ROOT) continue;
                const bool leaves = m_pTrie[second].nFail != m_made.rest;
                m_made.entries[byte][next] = {second | (leaves ? PAIR_LEAVES : 0), m_pTrie[second].nValue};
            }
        }
    }

    int FirstNode(unsigned byte) const
    {
        return Child(m_pTrie, m_nNodes, m_made.rest, static_cast<unsigned char>(byte));
    }

    // Second nodes by what hangs below them.
    void JudgePhrases()
    {
        unsigned* const kinds = s_notes;
        std::fill_n(kinds, m_nNodes, NOT_SECOND);
        for (const auto& row : m_made.entries)
            for (const PairEntry& entry : row)
                if (entry.node != NO_NODE) kinds[entry.node & ~PAIR_LEAVES] = CHILDLESS;
        for (unsigned i = 0; i < m_nNodes; ++i) {
            if (!IsChild(i)) continue;
            const unsigned parent = ParentOf(i);
            if (kinds[parent] != NOT_SECOND) {
                const int first = FirstNode(ByteOf(i));
                const bool inOrder =
                    m_pTrie[i].nValue == TRIE_VALUE_NONE && first != NO_NODE && m_pTrie[i].nFail == first;
                kinds[parent] = std::max<unsigned>(kinds[parent], inOrder ? IN_ORDER : OUT_OF_ORDER);
            }
            if (!IsChild(parent) || kinds[ParentOf(parent)] == NOT_SECOND) continue;
            const int pair = m_made.entries[ByteOf(parent)][ByteOf(i)].node;
            if (pair == NO_NODE || m_pTrie[i].nFail != (pair & ~PAIR_LEAVES)) m_made.leaves[i] = true;
        }
        for (unsigned i = 0; i < m_nNodes; ++i)  // a phrase that goes on
            if (IsChild(i) && IsChild(ParentOf(i))) m_made.leaves[ParentOf(i)] = true;
    }

    void DropUnorderedPairs()
    {
        m_made.childless = NO_NODE;
        if (m_made.hubOf[m_made.rest] == NO_HUB) return;  // no state to read pairs from: no shortcuts
        for (auto& row : m_made.entries)
            for (PairEntry& entry : row) {
                if (entry.node == NO_NODE) continue;
                const unsigned kind = s_notes[entry.node & ~PAIR_LEAVES];
                if (kind == OUT_OF_ORDER) entry.node = NO_NODE;
                if (kind != CHILDLESS || (entry.node & PAIR_LEAVES) != 0) continue;
                // One is as good as another, and the one used always is at hand.
                if (m_made.childless == NO_NODE) m_made.childless = entry.node;
                entry.node = m_made.childless;
            }
    }

    const TrieNode* m_pTrie;
    unsigned m_nNodes;
    Shortcuts& m_made;
    int m_hubs[MOST_HUBS + 1] = {};
    unsigned m_nHubs = 0;
};
}  // namespace

const Shortcuts* FindShortcuts(const TrieNode* trie, unsigned nodeCount)
{
    if (s_state.load(std::memory_order_acquire) != FILLED) return nullptr;
    const bool isItsOwn = s_shortcuts.trie == trie && s_shortcuts.nodeCount == nodeCount;
    return isItsOwn && s_shortcuts.childless != NO_NODE ? &s_shortcuts : nullptr;
}

const Shortcuts* MakeShortcuts(const TrieNode* trie, unsigned nodeCount)
{
    State expected = EMPTY;
    if (nodeCount <= MOST_SHORTCUT_NODES && s_state.compare_exchange_strong(expected, BEING_FILLED)) {
        CMaker(trie, nodeCount, s_shortcuts).Make();
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
