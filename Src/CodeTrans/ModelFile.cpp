// Reads the model file into three tables of its own, or maps it into memory.
//
// Each section is read by one call straight into the array that serves it.
//
// CodeTrans_Map takes the tables where they lie in a mapping of the file, for programs that start, look at
// one short text and end: most of the model is never touched then.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <new>

#include "Bytes.h"
#include "Model.h"

namespace
{
template <typename Element>
bool ReadWhole(Element* elements, size_t count, FILE* file)
{
    return fread(elements, sizeof(Element), count, file) == count;
}

LoadResult ReadNodes(FILE* file)
{
    int count = 0;
    if (!ReadWhole(&count, 1, file)) return NODE_COUNT_MISSING;
    if (count < 0) return OUT_OF_MEMORY;

    auto* const nodes = new (std::nothrow) TrieNode[static_cast<size_t>(count)];
    if (nodes == nullptr) return OUT_OF_MEMORY;
    SetTrie(nodes, count);
    return ReadWhole(nodes, static_cast<size_t>(count), file) ? LOADED : NODES_SHORT;
}

// Pointers of an earlier load are overwritten, not freed: callers who load twice keep both.
LoadResult ReadTables(FILE* file)
{
    SetTrie(nullptr, 0);
    g_mapGBKToUnicode = new (std::nothrow) unsigned short[MAPPING_ENTRIES];
    g_mapBig5ToUnicode = new (std::nothrow) unsigned short[MAPPING_ENTRIES];
    if (g_mapGBKToUnicode == nullptr || g_mapBig5ToUnicode == nullptr) return OUT_OF_MEMORY;
    if (!ReadWhole(g_mapGBKToUnicode, MAPPING_ENTRIES, file)) return GBK_TABLE_SHORT;
    if (!ReadWhole(g_mapBig5ToUnicode, MAPPING_ENTRIES, file)) return BIG5_TABLE_SHORT;
    return ReadNodes(file);
}

void Unmap(char const* bytes, unsigned long size)
{
    munmap(const_cast<char*>(bytes), size);
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
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    struct stat status = {};
    const bool isMappable =
        file >= 0 && fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
    const size_t size = isMappable ? static_cast<size_t>(status.st_size) : 0;
    void* const mapping = isMappable ? mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0) : MAP_FAILED;
    if (file >= 0) close(file);
    if (mapping == MAP_FAILED) return CodeTrans_Initialize(path);

    if (UseModel(static_cast<char*>(mapping), size, Unmap) == LOADED) return LOADED;
    munmap(mapping, size);
    return CodeTrans_Initialize(path);  // which says what is wrong
}
