// The model loader on whole, cut and contradictory files, then detection and decoding with what it loaded:
// the load result follows from the file's size and node count alone, nothing stays of a file that is refused,
// and any node table gives the answers of the slow oracle, from the plain walk as from the fast ones.
//
// Input: flags, where the file is cut (2 bytes), nodes (2 bytes), how many more the file promises, damaged
// entries of the mapping tables (their number, then 4 bytes each), runs of equal nodes (their number, then up
// to 12 bytes each); then the text.
#include <climits>

#include "../Oracles.h"
#include "Bytes.h"
#include "Fuzz.h"

namespace
{
constexpr unsigned MOST_NODES = 1024;
constexpr size_t LONGEST_TEXT =
    512;  // with a circle of failures, each byte costs the oracle as many steps as nodes
constexpr size_t TABLE = 2 * MAPPING_ENTRIES, COUNT_END = 2 * TABLE + 4;

struct ModelFile {
    std::string bytes;
    int count;

    int LoadResult() const
    {
        if (bytes.size() < TABLE) return -1;
        if (bytes.size() < 2 * TABLE) return -2;
        if (bytes.size() < COUNT_END) return -3;
        if (count < 0) return -127;
        return (bytes.size() - COUNT_END) / sizeof(TrieNode) < static_cast<size_t>(count) ? -4 : 0;
    }
};

// Small numbers, so that nodes meet, and those around the ends of things.
int Field(Input& input, unsigned nodeCount)
{
    const unsigned number = input.Number();
    const auto count = static_cast<int>(nodeCount);
    const int ends[] = {INT_MIN, INT_MAX, count, count - 1};
    return number - 0x7FFE < std::size(ends) ? ends[number - 0x7FFE] : static_cast<short>(number);
}

int Value(Input& input)
{
    const unsigned kind = input.Byte();
    if (kind == 0) return TRIE_VALUE_NONE;
    const unsigned digits = (kind % 0x10 << 16) | input.Number();
    return static_cast<int>((kind < 0xF0 ? kind >> 4 : 0xFFF) << 20 | digits);
}

std::vector<TrieNode> MakeNodes(Input& input, unsigned count)
{
    std::vector<TrieNode> nodes(count, TrieNode{1, -1, 0, TRIE_VALUE_NONE});
    for (unsigned runs = input.Byte() % 64; runs > 0; --runs) {
        const unsigned first = input.Number(), length = input.Byte();
        const TrieNode node = {Field(input, count), Field(input, count), Field(input, count), Value(input)};
        for (unsigned i = first; i <= first + length && i < count; ++i) nodes[i] = node;
    }
    return nodes;
}

// Entry i is i.
std::string PlainTables()
{
    std::string tables(2 * TABLE, '\0');
    for (unsigned i = 0; i < 2 * MAPPING_ENTRIES; ++i) StoreUnit16(&tables[2 * i], i);
    return tables;
}

ModelFile MakeFile(Input& input, bool isOdd)
{
    static const std::string s_tables = PlainTables();
    ModelFile file = {s_tables, 0};
    const size_t cut = 2 * input.Number() + (isOdd ? 1 : 0);
    const unsigned nodeCount = input.Number() % (MOST_NODES + 1), more = input.Byte();
    file.count = static_cast<int>(nodeCount) + static_cast<signed char>(more);
    if (more == 0x80) file.count = INT_MIN;
    for (unsigned damage = input.Byte() % 16; damage > 0; --damage) {
        const size_t entry = input.Number() % (2 * MAPPING_ENTRIES);
        StoreUnit16(&file.bytes[2 * entry], input.Number());
    }
    const std::vector<TrieNode> nodes = MakeNodes(input, nodeCount);
    file.bytes.append(reinterpret_cast<const char*>(&file.count), sizeof file.count);
    file.bytes.append(reinterpret_cast<const char*>(nodes.data()), nodes.size() * sizeof(TrieNode));
    if (cut > 0 && cut < file.bytes.size()) file.bytes.resize(cut);
    return file;
}

int Load(const ModelFile& file)
{
    static const int s_memory = memfd_create("model", 0);
    static const std::string s_path = "/proc/self/fd/" + std::to_string(s_memory);
    WriteBytes(s_path, file.bytes);
    return CodeTrans_Initialize(s_path.c_str());
}

void Detect(const std::vector<TrieNode>& nodes, const std::string& text, bool hasShortcuts)
{
    Buffer source(text);
    // Without a node, nothing has a child.
    const int expected =
        DetectionOracle(nodes.empty() ? std::vector{TrieNode{INT_MIN, -1, 0, 0}} : nodes, text);
    UnderEachForm([&] { REQUIRE(CodeTrans_CodeDetect(source.data(), text.size()) == expected); });
    if (BestForms() == Forms::PLAIN || nodes.empty()) return;
    const auto count = static_cast<unsigned>(nodes.size());
    const Scores plain = Walk(nodes.data(), count, source.data(), text.size());
    if (hasShortcuts) MakeShortcuts(g_pstTrieTable, count);
    REQUIRE(SameWalk(FastWalk(g_pstTrieTable, count, source.data(), text.size()), plain));
}

// By a table in the file, or by none.
std::string Decoded(const char* table, const std::string& text)
{
    std::string units;
    for (size_t i = 0; i < text.size(); ++i) {
        const auto lead = static_cast<unsigned char>(text[i]);
        char unit[2] = {text[i], 0};
        if (lead >= 0x80 && i + 1 == text.size())
            StoreUnit16(unit, 0xFEFF);
        else if (lead >= 0x80) {
            const size_t entry = PairIndex(lead, static_cast<unsigned char>(text[++i]));
            StoreUnit16(unit, table != nullptr ? LoadUnit16(table + 2 * entry) : 0);
        }
        units.append(unit, 2);
    }
    return units;
}

void Decode(int encoding, const char* table, const std::string& text)
{
    const std::string expected = Decoded(table, text);
    Buffer source(text);
    UnderEachForm([&] {
        Buffer destination(expected.size());
        unsigned long length = 0;
        GBKBig5_ToUnicode(encoding, source.data(), text.size(), destination.data(), length);
        REQUIRE(length == expected.size() && destination.All() == expected);
    });
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    Input input(data, size);
    const unsigned flags = input.Byte();
    const ModelFile file = MakeFile(input, flags % 2 == 1);
    const std::string text = input.Take(LONGEST_TEXT);

    const int result = Load(file);
    REQUIRE(result == file.LoadResult());
    const bool isLoaded = result == 0;
    REQUIRE(isLoaded == (g_pstTrieTable != nullptr) && isLoaded == (g_mapGBKToUnicode != nullptr) &&
            isLoaded == (g_mapBig5ToUnicode != nullptr));
    std::vector<TrieNode> nodes(isLoaded ? static_cast<size_t>(file.count) : 0);
    if (!nodes.empty()) memcpy(nodes.data(), file.bytes.data() + COUNT_END, nodes.size() * sizeof(TrieNode));
    Detect(nodes, text, flags / 2 % 2 == 1);
    Decode(ENCODE_GBK, isLoaded ? file.bytes.data() : nullptr, text);
    Decode(ENCODE_BIG5, isLoaded ? file.bytes.data() + TABLE : nullptr, text);
    CodeTrans_Destroy();
    return 0;
}
