// Holds the three tables of the model, takes them from a model file in memory, and frees them.
//
// The file has no header: GBK table, Big5 table, node count N, N nodes, all little-endian, back to back. The
// tables are not looked at: a damaged one is the readers' matter (the trie's walk bounds its indices by
// CodeTrans_TrieNodeCount). Invariant: either all three tables stand, or none, whenever no load is running.
#include "Model.h"

#include <climits>
#include <cstring>

#include "Shortcuts.h"

unsigned short* g_mapGBKToUnicode = nullptr;
unsigned short* g_mapBig5ToUnicode = nullptr;
TrieNode* g_pstTrieTable = nullptr;

namespace
{
// The node table that was loaded last and its size.
const TrieNode* s_pLoadedTrie = nullptr;
int s_nLoadedNodes = 0;

// The bytes in which the tables lie, if they were not read into arrays of their own.
char const* s_pBytes = nullptr;
unsigned long s_nBytes = 0;
ReleaseModel* s_release = nullptr;

template <typename Element>
Element* ElementsAt(char const* bytes)
{
    return reinterpret_cast<Element*>(const_cast<char*>(bytes));  // nothing writes to a loaded table
}
}  // namespace

void SetTrie(TrieNode* trie, int nodeCount)
{
    g_pstTrieTable = trie;
    s_pLoadedTrie = trie;
    s_nLoadedNodes = nodeCount;
    s_pBytes = nullptr;
    DropShortcuts();
}

LoadResult UseModel(char const* bytes, unsigned long size, ReleaseModel* release)
{
    constexpr unsigned long TABLE = MAPPING_ENTRIES * sizeof(unsigned short);
    constexpr unsigned long NODES = 2 * TABLE + sizeof(int);
    if (size < TABLE) return GBK_TABLE_SHORT;
    if (size < 2 * TABLE) return BIG5_TABLE_SHORT;
    if (size < NODES) return NODE_COUNT_MISSING;
    int count = 0;
    memcpy(&count, bytes + 2 * TABLE, sizeof count);
    if (count < 0) return OUT_OF_MEMORY;
    if ((size - NODES) / sizeof(TrieNode) < static_cast<unsigned long>(count)) return NODES_SHORT;

    g_mapGBKToUnicode = ElementsAt<unsigned short>(bytes);
    g_mapBig5ToUnicode = ElementsAt<unsigned short>(bytes + TABLE);
    SetTrie(ElementsAt<TrieNode>(bytes + NODES), count);
    s_pBytes = bytes;
    s_nBytes = size;
    s_release = release;
    return LOADED;
}

int CodeTrans_UseModel(char const* bytes, unsigned long size)
{
    return UseModel(bytes, size, nullptr);
}

void CodeTrans_Destroy()
{
    if (s_pBytes != nullptr) {
        if (s_release != nullptr) s_release(s_pBytes, s_nBytes);
    } else {
        delete[] g_pstTrieTable;
        delete[] g_mapGBKToUnicode;
        delete[] g_mapBig5ToUnicode;
    }
    SetTrie(nullptr, 0);
    g_mapGBKToUnicode = nullptr;
    g_mapBig5ToUnicode = nullptr;
}

int CodeTrans_TrieNodeCount()
{
    return g_pstTrieTable != nullptr && g_pstTrieTable == s_pLoadedTrie ? s_nLoadedNodes : INT_MAX;
}
