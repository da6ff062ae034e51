// Packing of a tree of states into the detector's node array: children of s at nBase(s) + byte, nCheck = s.
//
// Guarantees: state 0 becomes node 0; nBase + 255 of every node lies inside the table; every slot that is no
// node has an nCheck of -1 and adds nothing. Large child sets go first, the rest fill the holes.
#ifndef MODEL_BUILDER_DOUBLE_ARRAY_H
#define MODEL_BUILDER_DOUBLE_ARRAY_H

#include <cstdint>
#include <vector>

#include "STLCodeTrans.h"

struct PackableState {
    int parent = -1;  // an earlier state; -1: entered by failure links only
    uint8_t byte = 0;
    int fail = 0;
    int value = TRIE_VALUE_NONE;
};

struct PackedTrie {
    std::vector<TrieNode> nodes;
    std::vector<int> nodeOf;  // by state
};

PackedTrie PackStates(const std::vector<PackableState>& states);

#endif  // MODEL_BUILDER_DOUBLE_ARRAY_H
