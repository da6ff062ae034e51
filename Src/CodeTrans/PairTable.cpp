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
#include <algorithm>
#include <memory>
#include <new>
#include <vector>

#include "Detection.h"

namespace
{
using namespace trie;

std::unique_ptr<PairTable> s_pPairs;

// The state that most nodes fail to, as far as a few thousand of them tell.
int FindRest(const TrieNode* trie, unsigned nodeCount)
{
    const unsigned step = 1 + nodeCount / 4096;
    std::vector<unsigned> links(nodeCount);
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

enum Kind : unsigned char { NOT_SECOND, CHILDLESS, IN_ORDER, OUT_OF_ORDER };

// Second nodes by what hangs below them. `kinds` says which nodes are second ones.
void Judge(const TrieNode* trie, unsigned nodeCount, const PairTable& table, std::vector<Kind>& kinds)
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
            kinds[parent] = std::max(kinds[parent], inOrder ? IN_ORDER : OUT_OF_ORDER);
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

std::unique_ptr<PairTable> MakePairTable(const TrieNode* trie, unsigned nodeCount)
{
    std::unique_ptr<PairTable> table(new PairTable);
    table->trie = trie;
    table->rest = FindRest(trie, nodeCount);
    table->childless = NO_NODE;
    FillEntries(trie, nodeCount, *table);

    std::vector<Kind> kinds(nodeCount, NOT_SECOND);
    for (const auto& row : table->entries)
        for (const PairEntry& entry : row)
            if (entry.node != NO_NODE) kinds[static_cast<size_t>(entry.node)] = CHILDLESS;
    Judge(trie, nodeCount, *table, kinds);
    for (auto& row : table->entries)
        for (PairEntry& entry : row) {
            if (entry.node == NO_NODE) continue;
            const Kind kind = kinds[static_cast<size_t>(entry.node)];
            if (kind == OUT_OF_ORDER) entry.node = NO_NODE;
            if (kind != CHILDLESS) continue;
            // One is as good as another, and the one used always is at hand.
            if (table->childless == NO_NODE) table->childless = entry.node;
            entry.node = table->childless;
        }
    return table->childless != NO_NODE ? std::move(table) : nullptr;
}
}  // namespace

void PreparePairTable(const TrieNode* trie, unsigned nodeCount)
{
    DropPairTable();
    try {
        if (nodeCount != 0) s_pPairs = MakePairTable(trie, nodeCount);
    } catch (const std::bad_alloc&) {
        // Then byte after byte.
    }
}

void DropPairTable()
{
    s_pPairs = nullptr;
}

const PairTable* FindPairTable(const TrieNode* trie)
{
    return s_pPairs != nullptr && s_pPairs->trie == trie ? s_pPairs.get() : nullptr;
}
