// What the detector's walk adds up, for the plain walk and its fast form.
#ifndef CODETRANS_DETECTION_H
#define CODETRANS_DETECTION_H

#include <cstdint>

#include "STLCodeTrans.h"

// Totals over the valued nodes entered. Unsigned sums wrap where signed ones would be undefined; they are
// read as signed. Counts have 64 bits on every host: a text that comes in pieces may be longer than memory.
struct Scores {
    unsigned sumGbk = 0, sumBig5 = 0, sumUnicode = 0, sumUtf8 = 0;
    int64_t positiveGbk = 0, positiveBig5 = 0, positiveUnicode = 0, positiveUtf8 = 0;
    int64_t nonPositiveUnicode = 0;
    int64_t highBytes = 0;  // bytes of 80 and above consumed
    int decidedCode = 0;    // ends the walk when it is not 0; nothing else counts then

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

// The step of every walk: `state` moves to its child on `byte` or, link by link, to that of a state that it
// fails to. Returns the node entered, or NO_NODE where not even the root knows the byte; `state` is the root
// then.
inline int Step(const TrieNode* trie, unsigned nodeCount, int& state, unsigned char byte)
{
    int next = Child(trie, nodeCount, state, byte);
    CFailureChain chain(trie, nodeCount, state);
    while (next == NO_NODE && state != ROOT) {
        state = chain.Next(state);
        next = Child(trie, nodeCount, state, byte);
    }
    if (next != NO_NODE) state = next;
    return next;
}
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

// ASCII as it stands in texts.
constexpr bool IsAsciiText(unsigned byte)
{
    return (byte >= 0x20 && byte < 0x7F) || byte == '\t' || byte == '\n' || byte == '\r';
}

#endif  // CODETRANS_DETECTION_H
