// Loads the model file into the three tables and frees them.
//
// The file has no header: GBK table, Big5 table, node count N, N nodes, all little-endian, back to back. Each
// section is read by one call straight into the array that serves it, and nothing is looked at on the way: a
// damaged table is the readers' matter (the trie's walk bounds its indices by CodeTrans_TrieNodeCount).
// Invariant: either all three tables stand, or none, whenever no load is running.
//
// CodeTrans_Map takes the tables where they lie in a mapping of the file, for programs that start, look at
// one short text and end: most of the model is never touched then.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>

#include "Bytes.h"
#include "Shortcuts.h"

unsigned short* g_mapGBKToUnicode = nullptr;
unsigned short* g_mapBig5ToUnicode = nullptr;
TrieNode* g_pstTrieTable = nullptr;

namespace
{
enum LoadResult {
    LOADED = 0,
    NOT_OPENED = -1,
    GBK_TABLE_SHORT = -1,  // the same code on purpose: callers need not tell the two apart
    BIG5_TABLE_SHORT = -2,
    NODE_COUNT_MISSING = -3,
    NODES_SHORT = -4,
    OUT_OF_MEMORY = -127,
};

// The file in a mapping, if the tables lie in one.
void* s_pMapping = nullptr;
size_t s_nMapped = 0;

// The node table that was loaded last and its size.
const TrieNode* s_pLoadedTrie = nullptr;
int s_nLoadedNodes = 0;

template <typename Element>
bool ReadWhole(Element* elements, size_t count, FILE* file)
{
    return fread(elements, sizeof(Element), count, file) == count;
}

#if __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
void FromLittleEndian(unsigned short* entries, size_t count)
{
    for (size_t i = 0; i < count; ++i) entries[i] = __builtin_bswap16(entries[i]);
}

void FromLittleEndian(int* values, size_t count)
{
    for (size_t i = 0; i < count; ++i)
        values[i] = static_cast<int>(__builtin_bswap32(static_cast<unsigned>(values[i])));
}
#else
template <typename Element>
void FromLittleEndian(Element*, size_t)
{
}
#endif

LoadResult ReadNodes(FILE* file)
{
    int count = 0;
    if (!ReadWhole(&count, 1, file)) return NODE_COUNT_MISSING;
    FromLittleEndian(&count, 1);
    if (count < 0) return OUT_OF_MEMORY;

    g_pstTrieTable = new (std::nothrow) TrieNode[static_cast<size_t>(count)];
    if (g_pstTrieTable == nullptr) return OUT_OF_MEMORY;
    s_pLoadedTrie = g_pstTrieTable;
    DropShortcuts();
    s_nLoadedNodes = count;
    if (!ReadWhole(g_pstTrieTable, static_cast<size_t>(count), file)) return NODES_SHORT;
    FromLittleEndian(reinterpret_cast<int*>(g_pstTrieTable), 4 * static_cast<size_t>(count));
    return LOADED;
}

// Pointers of an earlier load are overwritten, not freed: callers who load twice keep both.
LoadResult ReadTables(FILE* file)
{
    g_pstTrieTable = nullptr;
    g_mapGBKToUnicode = new (std::nothrow) unsigned short[MAPPING_ENTRIES];
    g_mapBig5ToUnicode = new (std::nothrow) unsigned short[MAPPING_ENTRIES];
    if (g_mapGBKToUnicode == nullptr || g_mapBig5ToUnicode == nullptr) return OUT_OF_MEMORY;
    if (!ReadWhole(g_mapGBKToUnicode, MAPPING_ENTRIES, file)) return GBK_TABLE_SHORT;
    if (!ReadWhole(g_mapBig5ToUnicode, MAPPING_ENTRIES, file)) return BIG5_TABLE_SHORT;
    FromLittleEndian(g_mapGBKToUnicode, MAPPING_ENTRIES);
    FromLittleEndian(g_mapBig5ToUnicode, MAPPING_ENTRIES);
    return ReadNodes(file);
}
}  // namespace

int CodeTrans_Initialize(char const* path)
{
    const File file(fopen(path, "rb"));
    if (file == nullptr) return NOT_OPENED;
    const LoadResult result = ReadTables(file.get());
    if (result != LOADED) CodeTrans_Destroy();
    return result;
}

int CodeTrans_Map(char const* path)
{
    constexpr size_t TABLE = MAPPING_ENTRIES * sizeof(unsigned short);
    constexpr size_t NODES = 2 * TABLE + sizeof(int);
    const bool isHostsOrder = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    const int file = isHostsOrder ? open(path, O_RDONLY | O_CLOEXEC) : -1;
    struct stat status = {};
    const bool hasNodes = file >= 0 && fstat(file, &status) == 0 && S_ISREG(status.st_mode) &&
                          static_cast<size_t>(status.st_size) > NODES;
    const size_t size = hasNodes ? static_cast<size_t>(status.st_size) : 0;
    void* const mapping = hasNodes ? mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0) : MAP_FAILED;
    if (file >= 0) close(file);
    if (mapping == MAP_FAILED) return CodeTrans_Initialize(path);

    char* const bytes = static_cast<char*>(mapping);
    int count = 0;
    memcpy(&count, bytes + 2 * TABLE, sizeof count);
    if (count < 0 || (size - NODES) / sizeof(TrieNode) < static_cast<size_t>(count)) {
        munmap(mapping, size);
        return CodeTrans_Initialize(path);  // which says what is wrong
    }
    g_mapGBKToUnicode = reinterpret_cast<unsigned short*>(bytes);
    g_mapBig5ToUnicode = reinterpret_cast<unsigned short*>(bytes + TABLE);
    g_pstTrieTable = reinterpret_cast<TrieNode*>(bytes + NODES);
    s_pMapping = mapping;
    s_nMapped = size;
    s_pLoadedTrie = g_pstTrieTable;
    s_nLoadedNodes = count;
    DropShortcuts();
    return LOADED;
}

void CodeTrans_Destroy()
{
    if (s_pMapping != nullptr) {
        munmap(s_pMapping, s_nMapped);
        s_pMapping = nullptr;
        g_pstTrieTable = nullptr;
        g_mapGBKToUnicode = g_mapBig5ToUnicode = nullptr;
    }
    delete[] g_pstTrieTable;
    g_pstTrieTable = nullptr;
    s_pLoadedTrie = nullptr;
    DropShortcuts();
    delete[] g_mapGBKToUnicode;
    g_mapGBKToUnicode = nullptr;
    delete[] g_mapBig5ToUnicode;
    g_mapBig5ToUnicode = nullptr;
}

int CodeTrans_TrieNodeCount()
{
    return g_pstTrieTable != nullptr && g_pstTrieTable == s_pLoadedTrie ? s_nLoadedNodes : INT_MAX;
}
