// The detector's pair table: what two bytes do in one look-up, so that the walk over text made of pairs does
// not wait for one node to learn where the next one lies.
//
// A model of pairs keeps text in step by one state that most others fail to: the rest state. From there the
// first byte leads to a first node, the second to the pair's second node, and whatever comes then, that one
// fails to the rest state. What may still differ are children of second nodes, the beginnings of phrases.
// They are in order if
//   - a child of a second node adds nothing and fails to the first node of its byte, and
//   - a child of that child, where a phrase of two pairs ends, has no children and fails to its own pair's
//   second node.
// Then a pair moves the walk to the same place whatever went before, and only the value that it adds may be
// the phrase's instead of its own. A pair whose nodes are not of this kind is left out of the table, so the
// table holds for any model; how much of the text it serves is the model's matter.
//
// There is one, in static memory, which costs nothing until a long text makes it be filled.
#include <algorithm>
#include <atomic>

#include "Detection.h"

namespace
{
using namespace trie;

constexpr unsigned MOST_NODES = 1 << 18;  // of a node table that may have one

enum State { EMPTY, BEING_FILLED, FILLED };
std::atomic<State> s_state = EMPTY;
PairTable s_pairs;

// Per node: while the rest state is looked for, links to it; then its kind.
enum Kind : unsigned { NOT_SECOND, CHILDLESS, IN_ORDER, OUT_OF_ORDER };
unsigned s_notes[MOST_NODES];

// The state that most nodes fail to, as far as a few thousand of them tell.
int FindRest(const TrieNode* trie, unsigned nodeCount)
{
    const unsigned step = 1 + nodeCount / 4096;
    unsigned* const links = s_notes;
    std::fill_n(links, nodeCount, 0U);
    unsigned rest = 0;
    for (unsigned i = 0; i < nodeCount; i += step) {
        if (trie[i].nCheck < 0) continue;  // an empty place
        const auto fail = static_cast<unsigned>(trie[i].nFail);
        if (fail < nodeCount && ++links[fail] > links[rest]) rest = fail;
    }
    return static_cast<int>(rest);
}

// All pairs, each with its own second node.
void FillEntries(const TrieNode* trie, unsigned nodeCount, PairTable& table)
{
    for (unsigned byte = 0; byte < 0x100; ++byte) {
        std::fill_n(table.entries[byte], 0x100, PairEntry{NO_NODE, 0});
        const int first = Child(trie, nodeCount, table.rest, static_cast<unsigned char>(byte));
        table.firstNodes[byte] = first;
        if (first == NO_NODE) continue;
        table.firstValues[byte] = trie[first].nValue;
        for (unsigned next = 0; next < 0x100; ++next) {
            const int second = Child(trie, nodeCount, first, static_cast<unsigned char>(next));
            // The root alone never fails.
            if (second != NO_NODE && second != ROOT && trie[second].nFail == table.rest)
                table.entries[byte][next] = {second, trie[second].nValue};
        }
    }
}

// Second nodes by what hangs below them. `kinds` says which nodes are second ones.
void Judge(const TrieNode* trie, unsigned nodeCount, const PairTable& table, unsigned* kinds)
{
    const auto parentOf = [&](unsigned node) { return static_cast<unsigned>(trie[node].nCheck); };
    const auto isSecond = [&](unsigned node) { return node < nodeCount && kinds[node] != NOT_SECOND; };
    const auto byteOf = [&](unsigned node, unsigned parent) {
        return node - static_cast<unsigned>(trie[parent].nBase);
    };
    for (unsigned i = 0; i < nodeCount; ++i) {
        const unsigned parent = parentOf(i);
        if (parent >= nodeCount) continue;
        const unsigned byte = byteOf(i, parent);
        if (byte >= 0x100) continue;  // no child after all
        if (isSecond(parent)) {
            const bool inOrder = trie[i].nValue == TRIE_VALUE_NONE && table.firstNodes[byte] != NO_NODE &&
                                 trie[i].nFail == table.firstNodes[byte];
            kinds[parent] = std::max<unsigned>(kinds[parent], inOrder ? IN_ORDER : OUT_OF_ORDER);
        }
        const unsigned grandparent = parentOf(parent);
        if (isSecond(grandparent)) {
            const unsigned before = byteOf(parent, grandparent);
            const int pair = before < 0x100 ? table.entries[before][byte].node : NO_NODE;
            if (pair != NO_NODE && trie[i].nFail != pair) kinds[grandparent] = OUT_OF_ORDER;
        }
        if (grandparent >= nodeCount) continue;
        const unsigned greatGrandparent = parentOf(grandparent);
        if (isSecond(greatGrandparent)) kinds[greatGrandparent] = OUT_OF_ORDER;
    }
}

template <typename Function>
void ForEachPair(PairTable& table, Function function)
{
    for (auto& row : table.entries)
        for (PairEntry& entry : row)
            if (entry.node != NO_NODE) function(entry);
}

void Fill(const TrieNode* trie, unsigned nodeCount, PairTable& table)
{
    table.trie = trie;
    table.nodeCount = nodeCount;
    table.rest = FindRest(trie, nodeCount);
    table.childless = NO_NODE;
    FillEntries(trie, nodeCount, table);

    unsigned* const kinds = s_notes;
    std::fill_n(kinds, nodeCount, NOT_SECOND);
    ForEachPair(table, [&](const PairEntry& entry) { kinds[entry.node] = CHILDLESS; });
    Judge(trie, nodeCount, table, kinds);
    ForEachPair(table, [&](PairEntry& entry) {
        const unsigned kind = kinds[entry.node];
        if (kind == OUT_OF_ORDER) entry.node = NO_NODE;
        if (kind != CHILDLESS) return;
        // One is as good as another, and the one used always is at hand.
        if (table.childless == NO_NODE) table.childless = entry.node;
        entry.node = table.childless;
    });
}
}  // namespace

const PairTable* FindPairTable(const TrieNode* trie, unsigned nodeCount)
{
    if (s_state.load(std::memory_order_acquire) != FILLED) return nullptr;
    const bool isItsOwn = s_pairs.trie == trie && s_pairs.nodeCount == nodeCount;
    return isItsOwn && s_pairs.childless != NO_NODE ? &s_pairs : nullptr;
}

const PairTable* MakePairTable(const TrieNode* trie, unsigned nodeCount)
{
    State expected = EMPTY;
    if (nodeCount <= MOST_NODES && s_state.compare_exchange_strong(expected, BEING_FILLED)) {
        Fill(trie, nodeCount, s_pairs);
        s_state.store(FILLED, std::memory_order_release);
    }
    return FindPairTable(trie, nodeCount);
}

void DropPairTable()
{
    s_state = EMPTY;
}
