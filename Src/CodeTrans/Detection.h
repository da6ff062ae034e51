// What the detector's walk adds up, for the plain walk and its fast form.
#ifndef CODETRANS_DETECTION_H
#define CODETRANS_DETECTION_H

#include "STLCodeTrans.h"

// Totals over the valued nodes entered. Unsigned sums wrap where signed ones would be undefined; they are
// read as signed. Counts are as wide as a text is long.
struct Scores {
    unsigned sumGbk = 0, sumBig5 = 0, sumUnicode = 0, sumUtf8 = 0;
    long positiveGbk = 0, positiveBig5 = 0, positiveUnicode = 0, positiveUtf8 = 0;
    long nonPositiveUnicode = 0;
    long highBytes = 0;   // bytes of 80 and above consumed
    int decidedCode = 0;  // ends the walk when it is not 0; nothing else counts then

    bool operator==(const Scores&) const = default;

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

// A walk that can go on: where it stands, and what it has added up so far.
struct WalkPosition {
    int state = trie::ROOT;
    Scores scores;
};

// Walks on over the next piece of a text, which may end anywhere. Does nothing once a node has decided.
void Walk(const TrieNode* trie, unsigned nodeCount, const char* text, unsigned long length,
          WalkPosition& position);

// Its fast form: the same position, or the same decided code.
void FastWalk(const TrieNode* trie, unsigned nodeCount, const char* text, unsigned long length,
              WalkPosition& position);

// The same over a whole text.
Scores Walk(const TrieNode* trie, unsigned nodeCount, const char* text, unsigned long length);
Scores FastWalk(const TrieNode* trie, unsigned nodeCount, const char* text, unsigned long length);

// The encoding code that the totals of a walk give.
int Decide(const Scores& scores);

// What is known beforehand about a node table (Shortcuts.cpp).
struct PairEntry {
    int node;  // where the pair leads, or NO_NODE: take the bytes one by one; PAIR_LEAVES: go on so behind it
    int value;  // what it adds
};
constexpr int PAIR_LEAVES = 1 << 30;

struct HubEntry {
    int node, value;     // where a byte leads from the hub, and what that adds
    unsigned short hub;  // the hub that the node acts as, or NO_HUB
};

constexpr unsigned MOST_SHORTCUT_NODES = 1 << 18;  // of a node table that may have them
constexpr unsigned MOST_HUBS = 250;
constexpr unsigned short NO_HUB = 0;  // hubs count from 1

struct Shortcuts {
    const TrieNode* trie;  // the node table that they were made from
    unsigned nodeCount;

    // Hubs are the states that many others fail to. A node without children acts as the hub that it fails to.
    HubEntry hubs[MOST_HUBS + 1][0x100];
    unsigned char hubOf[MOST_SHORTCUT_NODES];
    bool quiet[MOST_HUBS + 1];  // two bytes of ASCII text lead back to the hub and add nothing

    int rest;                          // the state from which pairs are read and to which their nodes fail
    int childless;                     // the node that stands for all without children
    int firstValues[0x100];            // by first byte
    PairEntry entries[0x100][0x100];   // by first and second byte
    bool leaves[MOST_SHORTCUT_NODES];  // nodes at the end of a phrase behind which the bytes are taken one by
                                       // one
};

// The shortcuts of a node table, or null: none were made yet, they would serve no text, or those of another
// node table have not been dropped. Both may be called by any number of threads.
const Shortcuts* FindShortcuts(const TrieNode* trie, unsigned nodeCount);
const Shortcuts* MakeShortcuts(const TrieNode* trie, unsigned nodeCount);

// The same for a walk that has gone over `bytes` more without them. Making them takes a few milliseconds,
// which only pays once that much has been walked.
const Shortcuts* ShortcutsAfter(const TrieNode* trie, unsigned nodeCount, unsigned long bytes);

// ASCII as it stands in texts.
constexpr bool IsAsciiText(unsigned byte)
{
    return (byte >= 0x20 && byte < 0x7F) || byte == '\t' || byte == '\n' || byte == '\r';
}

// When node tables come or go. Must not overlap a walk.
void DropShortcuts();

#endif  // CODETRANS_DETECTION_H
