// Encoding detection: one walk of the model's byte automaton over the text, then a weighing of four sums.
//
// Every consumed byte moves the walk to at most one new node, and that node's value alone is added: the
// values of nodes on its failure chain are not. The code knows nothing of what text looks like; the model
// does. A model is trusted but for two guards that a sound one never meets: an index outside the node table
// is no transition, and a failure chain that runs in a circle is cut at the root.
#include <climits>

#include "Detection.h"
#include "FastPaths.h"

using namespace trie;

void Walk(const TrieNode* trie, unsigned nodeCount, const char* text, unsigned long length,
          WalkPosition& position)
{
    Scores& scores = position.scores;
    int state = position.state;
    for (unsigned long i = 0; i < length && scores.decidedCode == 0; ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        scores.highBytes += byte >= 0x80;

        const int entered = Step(trie, nodeCount, state, byte);
        if (entered != NO_NODE && trie[entered].nValue != TRIE_VALUE_NONE) scores.Add(trie[entered].nValue);
    }
    position.state = state;
}

Scores Walk(const TrieNode* trie, unsigned nodeCount, const char* text, unsigned long length)
{
    WalkPosition position;
    Walk(trie, nodeCount, text, length, position);
    return position.scores;
}

Scores FastWalk(const TrieNode* trie, unsigned nodeCount, const char* text, unsigned long length)
{
    WalkPosition position;
    FastWalk(trie, nodeCount, text, length, position);
    return position.scores;
}

// Candidates in this order; a later one must beat the best sum so far, so ties go to the earlier. GBK, Big5
// and UTF-8 also need positive nodes in proportion to the high bytes; one that is refused for lack of them
// keeps its sum in the way of the rest. UTF-16LE needs ten positive nodes for each other one and refuses
// nobody.
int Decide(const Scores& s)
{
    if (s.decidedCode != 0) return s.decidedCode;

    int best = static_cast<int>(s.sumGbk);
    int code = s.positiveGbk > s.highBytes / 4 || s.highBytes == 0 ? ENCODE_GBK : ENCODE_UNKNOWN;
    if (const int sum = static_cast<int>(s.sumBig5); sum > best) {
        best = sum;
        code = s.positiveBig5 > s.highBytes / 4 ? ENCODE_BIG5 : ENCODE_UNKNOWN;
    }
    if (const int sum = static_cast<int>(s.sumUtf8); sum > best) {
        best = sum;
        code = s.positiveUtf8 > s.highBytes / 6 ? ENCODE_UTF8 : ENCODE_UNKNOWN;
    }
    if (static_cast<int>(s.sumUnicode) > best && (s.positiveUnicode + 9) / (s.nonPositiveUnicode + 1) > 9)
        code = ENCODE_UNICODE;
    return code;
}

int CodeTrans_CodeDetect(char const* buf, unsigned long len)
{
    // No model, or one without nodes: a root that knows no byte.
    static constexpr TrieNode CHILDLESS = {INT_MIN, -1, ROOT, TRIE_VALUE_NONE};
    const auto nodeCount = static_cast<unsigned>(CodeTrans_TrieNodeCount());
    if (g_pstTrieTable == nullptr || nodeCount == 0) return Decide(Walk(&CHILDLESS, 1, buf, len));
    if (FastPathsOn()) return Decide(FastWalk(g_pstTrieTable, nodeCount, buf, len));
    return Decide(Walk(g_pstTrieTable, nodeCount, buf, len));
}
