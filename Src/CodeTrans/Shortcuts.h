// What is known beforehand about a node table, so that a walk need not wait for one node to learn where the
// next one lies (Shortcuts.cpp makes it, X86/FastWalk.cpp reads it).
//
// An example of five nodes, of a model that reads text by pairs. An arrow down is a child, => a failure link:
//
//        rest   <=========.        the hub: most nodes fail to it, and text is in step there
//         | D6            |
//       first             |        a lead byte, which adds nothing
//         | D0            |
//       second  ==========^        a pair; its node has a child, so it is a context of its own
//         | B9
//       third   => the first node of B9           adds nothing
//         | FA
//       phrase  => the second node of B9 FA       two pairs that are known together: a word
//
// Hub. A state that many others fail to. A node without children acts as the hub that it fails to, whatever
// node it is: where a byte leads from there is looked up in the hub's row.
//
// Pair. From the rest state two bytes lead to a second node. What they add does not depend on what went
// before, unless they complete a phrase. So the pairs of a text are looked up one independently of another.
//
// Context. A state as the next pair finds it: one with children, or the one that a childless state fails to
// in the end. The rest state is context 0. A byte is known to a context if a pair that begins with it leads
// to the same second node as from the rest state, unless it completes a phrase. So the context behind D6 D0
// knows B9, and B9 FA completes a phrase of it.
//
// Six. Two characters of three bytes each in UTF-8, which are three pairs. Text is in step again behind them.
//
// A walk may stand at another node than the plain one, if both act the same on all that may come.
#ifndef CODETRANS_SHORTCUTS_H
#define CODETRANS_SHORTCUTS_H

#include <cstdint>

#include "STLCodeTrans.h"

constexpr unsigned MOST_SHORTCUT_NODES = 1 << 18;  // of a node table that may have them

// ---------------------------------------------------------------------------------------------------------
// Hubs

constexpr unsigned MOST_HUBS = 250;
constexpr unsigned short NO_HUB = 0;  // hubs count from 1

struct HubEntry {
    int node, value;         // where a byte leads from the hub, and what it adds
    unsigned short hub;      // the hub that the node acts as, or NO_HUB
    unsigned short context;  // of the node
};

// Which bytes any two of lead back to a hub and add nothing: none, those of ASCII that are printed, or those
// and tabs and line ends. Behind a hint the end of a line is not passed over.
enum class Quiet : unsigned char { NOT, PRINTED, TEXT };

// ---------------------------------------------------------------------------------------------------------
// Pairs and their contexts

constexpr unsigned REST = 0;                 // the context of the rest state
constexpr unsigned MOST_CONTEXTS = 1 << 12;  // they count from 0
constexpr unsigned UNKNOWN_CONTEXT = MOST_CONTEXTS - 1;

// All about a pair in 64 bits; 0 where the pair is to be walked byte by byte.
//
//     0-18  the value of its node     19  whether it completes a silent phrase     20-31  its context
//    32-37  its class, plus 38     38-63  a bit for each class that needs a look behind this pair
//
// Most phrases are silent: they add what their second pair adds, and only the context behind them differs. A
// pair needs a look if it completes a phrase that is not silent, or if its first byte is not known. Classes
// are a filter for this: a pair needs no look if the pair before does not have the bit of its class. The bits
// of a pair are those of all contexts that there may be behind it: its own, and those of the silent phrases
// that it completes.
using PairEntry = uint64_t;
constexpr unsigned VALUE_BITS = 19, FIRST_CONTEXT_BIT = 20, CLASSES = 26, FIRST_CLASS_BIT = 38;
constexpr int VALUE_MASK = (1 << VALUE_BITS) - 1;
constexpr PairEntry COMPLETES_SILENT_PHRASE = 1 << 19;

constexpr int ValueOf(PairEntry entry)
{
    return static_cast<int>(entry & VALUE_MASK);
}

constexpr unsigned ContextOf(PairEntry entry)
{
    return static_cast<unsigned>(entry) >> FIRST_CONTEXT_BIT;
}

// 1 if `entry` needs a look behind the pair `before`, otherwise 0.
constexpr unsigned NeedsLook(PairEntry before, PairEntry entry)
{
    return static_cast<unsigned>(before >> (entry >> 32 & 63) & 1);
}
constexpr PairEntry ANY_CLASS = ~PairEntry{0} << FIRST_CLASS_BIT;

// Pairs are numbered as little-endian numbers of 16 bits.
constexpr unsigned PairOf(unsigned char first, unsigned char second)
{
    return first | static_cast<unsigned>(second) << 8;
}

// Pairs that lead elsewhere from a context than from the rest state, in a hash table. A bucket fills a line
// of the cache, so that all its keys are compared at once; what it has no room for stands in the next one.
struct alignas(64) PhraseBucket {
    static constexpr unsigned SIZE = 8;
    uint32_t keys[SIZE];     // PhraseKey, or 0 behind the last
    uint32_t entries[SIZE];  // as in a PairEntry; bit 19 is set if the phrase is silent

    bool IsFull() const { return keys[SIZE - 1] != 0; }
};
constexpr uint32_t IS_SILENT = 1 << 19;

constexpr uint32_t PhraseKey(unsigned context, unsigned pair)
{
    return context << 16 | pair;
}

constexpr unsigned PHRASE_BUCKET_BITS = 12, PHRASE_BUCKETS = 1 << PHRASE_BUCKET_BITS;

// The first bucket of a key; those behind it follow.
constexpr unsigned PhraseBucketOf(uint32_t key)
{
    return key * 0x9E3779B1U >> (32 - PHRASE_BUCKET_BITS);
}

// A set of bytes.
struct ByteSet {
    uint32_t words[8];

    bool Has(unsigned char byte) const { return (words[byte / 32] >> byte % 32 & 1) != 0; }
    void Add(unsigned byte) { words[byte / 32] |= 1U << byte % 32; }
    void AddAll()
    {
        for (uint32_t& word : words) word = UINT32_MAX;
    }
};

constexpr unsigned char NO_THIRD = 0x40;

// A phrase belongs to the context whose own child it goes through. For bytes without such a child, the
// phrases are those of the parent.
struct Context {
    ByteSet known;      // the bytes with which a pair may begin
    ByteSet own;        // the bytes that its state has a child on; all, if it never fails to the rest state
    PairEntry classes;  // of the pairs that need a look behind it, as in a PairEntry
    unsigned parent;    // the context of the state that it fails to
    int state;
    bool servesSixes;  // no phrase begins with E0 to EF, and these are known
    // Within a six, behind a byte c: its low six bits, or NO_THIRD. More than one c may have the same
    // context.
    unsigned char third;
};

// ---------------------------------------------------------------------------------------------------------
// Sixes: the bytes a b c d e f, of which a and d are E0 to EF and the others 80 to BF

// Bit 31 of a value: it is in the table. Otherwise the bytes are to be walked one by one.
constexpr int PRESENT = INT32_MIN;

// What a b c adds from the rest state, by code point: the values of the nodes behind b and behind c.
struct FirstOfSix {
    int pairValue;
    int thirdValue;  // with PRESENT
};

// What d e f leads to and adds behind a b c, by code point. Nothing is added behind e.
struct SecondOfSix {
    int value;  // of the node behind f; bit 31 is set if any other six may follow
    int state;  // what the node behind f acts as, or NO_NODE: to be walked byte by byte
};

struct Shortcuts {
    const TrieNode* trie;  // the node table that they were made from
    unsigned nodeCount;
    bool serve;  // there is a rest state

    HubEntry hubs[MOST_HUBS + 1][0x100];
    unsigned char hubOf[MOST_SHORTCUT_NODES];
    unsigned short hubContexts[MOST_HUBS + 1];
    Quiet quiet[MOST_HUBS + 1];

    int rest;
    PairEntry pairs[0x10000];                       // by PairOf
    unsigned short contextOf[MOST_SHORTCUT_NODES];  // of any state
    Context contexts[MOST_CONTEXTS];
    PhraseBucket phrases[PHRASE_BUCKETS];

    FirstOfSix firstsOfSix[0x10000];
    int behindThird[0x40];    // what the state behind c acts as, by the low six bits of c
    int middlesOfSix[0x400];  // what d adds behind c, by their low six and four bits, with PRESENT
    SecondOfSix secondsOfSix[0x10000];

    // Where the byte leads from the context, if that is where it leads from the rest state, or null.
    const HubEntry* FindStepAsAtRest(unsigned context, unsigned char byte) const
    {
        for (; context != REST; context = contexts[context].parent)
            if (contexts[context].own.Has(byte)) return nullptr;
        return &hubs[hubOf[rest]][byte];
    }
};

// The shortcuts of a node table, or null: none were made yet, they would serve no text, or those of another
// node table have not been dropped. Both may be called by any number of threads.
const Shortcuts* FindShortcuts(const TrieNode* trie, unsigned nodeCount);
const Shortcuts* MakeShortcuts(const TrieNode* trie, unsigned nodeCount);

// The same for a walk that has gone over `bytes` more without them. Making them takes some ten milliseconds,
// which only pays once much has been walked.
const Shortcuts* ShortcutsAfter(const TrieNode* trie, unsigned nodeCount, unsigned long bytes);

// When node tables come or go. Must not overlap a walk.
void DropShortcuts();

#endif  // CODETRANS_SHORTCUTS_H
