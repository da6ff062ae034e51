// What Model.cpp, which holds the tables, gives to ModelFile.cpp, which brings them.
#ifndef CODETRANS_MODEL_H
#define CODETRANS_MODEL_H

#include "STLCodeTrans.h"

enum LoadResult {
    LOADED = 0,
    NOT_OPENED = -1,
    GBK_TABLE_SHORT = -1,  // the same code on purpose: callers need not tell the two apart
    BIG5_TABLE_SHORT = -2,
    NODE_COUNT_MISSING = -3,
    NODES_SHORT = -4,
    OUT_OF_MEMORY = -127,
};

// Puts a node table of that many nodes, or none, in the place of the one in use, which is not freed.
void SetTrie(TrieNode* trie, int nodeCount);

// CodeTrans_UseModel with a function that CodeTrans_Destroy calls once the bytes are no longer used.
using ReleaseModel = void(char const* bytes, unsigned long size);
LoadResult UseModel(char const* bytes, unsigned long size, ReleaseModel* release);

#endif  // CODETRANS_MODEL_H
