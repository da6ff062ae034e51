// What the detector's walk adds up, for the plain walk and its fast form.
#ifndef CODETRANS_DETECTION_H
#define CODETRANS_DETECTION_H

#include "STLCodeTrans.h"

// Totals over the valued nodes entered. Unsigned sums wrap where signed ones would be undefined; they are
// read as signed.
struct Scores {
    unsigned sumGbk = 0, sumBig5 = 0, sumUnicode = 0, sumUtf8 = 0;
    int positiveGbk = 0, positiveBig5 = 0, positiveUnicode = 0, positiveUtf8 = 0;
    int nonPositiveUnicode = 0;
    int highBytes = 0;    // bytes of 80 and above consumed
    int decidedCode = 0;  // ends the walk when it is not 0; nothing else counts then

    void Add(int value)
    {
        const TrieAdjustments add = UnpackTrieValue(value);
        decidedCode = TrieValueCode(value);
        sumGbk += static_cast<unsigned>(add.gbk);
        sumBig5 += static_cast<unsigned>(add.big5);
        sumUnicode += static_cast<unsigned>(add.unicode);
        sumUtf8 += static_cast<unsigned>(add.utf8);
        positiveGbk += add.gbk > 0;
        positiveBig5 += add.big5 > 0;
        positiveUnicode += add.unicode > 0;
        positiveUtf8 += add.utf8 > 0;
        nonPositiveUnicode += add.unicode <= 0;
    }
};

namespace trie
{
constexpr int ROOT = 0;
constexpr int NO_NODE = -1;

// The node that `state` moves to on `byte`.
inline int Child(const TrieNode* trie, unsigned nodeCount, int state, unsigned char byte)
{
    const unsigned child = static_cast<unsigned>(trie[state].nBase) + byte;
    return child < nodeCount && trie[child].nCheck == state ? static_cast<int>(child) : NO_NODE;
}

inline int FailureLink(const TrieNode* trie, unsigned nodeCount, int state)
{
    const int fail = trie[state].nFail;
    return static_cast<unsigned>(fail) < nodeCount ? fail : ROOT;
}

// A failure chain, link by link. One that runs in a circle, as only a damaged model's does, is cut at the
// root once the circle is closed: the state reached is compared with one left behind, ever further on, so
// that a small circle costs a few steps and not as many as there are nodes.
class CFailureChain
{
public:
    CFailureChain(const TrieNode* trie, unsigned nodeCount, int start)
        : m_pTrie(trie), m_nNodes(nodeCount), m_nAnchor(start)
    {
    }

    int Next(int state)
    {
        state = FailureLink(m_pTrie, m_nNodes, state);
        if (state == m_nAnchor) return ROOT;
        ++m_nHops;
        const bool isPowerOfTwo = (m_nHops & (m_nHops - 1)) == 0;
        if (isPowerOfTwo) m_nAnchor = state;
        return state;
    }

private:
    const TrieNode* m_pTrie;
    unsigned m_nNodes;
    int m_nAnchor;
    unsigned m_nHops = 0;
};
}  // namespace trie

// The walk over a whole text, and its fast form: the same totals, or the same decided code.
Scores Walk(const TrieNode* trie, unsigned nodeCount, const char* text, unsigned long length);
Scores FastWalk(const TrieNode* trie, unsigned nodeCount, const char* text, unsigned long length);

// What two bytes lead to in one node table (PairTable.cpp).
struct PairEntry {
    int node;   // where the pair leads, or NO_NODE: take the bytes one by one
    int value;  // what it adds
};

struct PairTable {
    const TrieNode* trie;  // the node table that it was made from
    unsigned nodeCount;
    int rest;       // the state from which pairs are read and to which their nodes fail
    int childless;  // the node that stands for all without children
    int firstNodes[0x100];
    int firstValues[0x100];           // by first byte
    PairEntry entries[0x100][0x100];  // by first and second byte
};

// The pair table of a node table, or null: none was made yet, it would serve no text, or that of another node
// table has not been dropped. Both may be called by any number of threads.
const PairTable* FindPairTable(const TrieNode* trie, unsigned nodeCount);
const PairTable* MakePairTable(const TrieNode* trie, unsigned nodeCount);

// The same for a walk that has gone over `bytes` more without one. Making it takes a millisecond or two,
// which only pays once that much has been walked.
const PairTable* PairTableAfter(const TrieNode* trie, unsigned nodeCount, unsigned long bytes);

// When node tables come or go. Must not overlap a walk.
void DropPairTable();

#endif  // CODETRANS_DETECTION_H
