// Damaged models, made anew in a folder of the build tree: what loading says of each, and what detection and
// decoding answer afterwards, in every form and however long the text.
#include <climits>

#include "../Unit/Support.h"
#include "FastPaths.h"

namespace
{
// The sound model: GBK +1 for the byte B0, +2 for A1 behind it. Entry i of the test models' GBK table is i.
constexpr int P = 0xB0 + 1, Q = 0xA1 + 1, COUNT = 300;
const std::string TEXT = "\xB0\xA1\xB0\xA1";
constexpr size_t TABLES = 4 * MAPPING_ENTRIES, NODES = TABLES + sizeof(int);

std::vector<TrieNode> SoundNodes()
{
    std::vector<TrieNode> nodes(COUNT, TrieNode{1, -1, 0, TRIE_VALUE_NONE});
    nodes[P] = {1, 0, 0, PackTrieValue(0, {1, 0, 0, 0})};
    nodes[Q] = {1, P, 0, PackTrieValue(0, {2, 0, 0, 0})};
    return nodes;
}

const std::string WHOLE = ModelBytes(SoundNodes(), COUNT), NODES_ONLY = WHOLE.substr(TABLES);

std::string WithCount(int count)
{
    return ModelBytes(SoundNodes(), count);
}

// The sound model with one field of a node changed, and as many nodes more, of which each links to the next
// and the last one to node `circle`.
std::string With(size_t node, int TrieNode::*field, int value, int more = 0, int circle = 0)
{
    std::vector<TrieNode> nodes = SoundNodes();
    for (int i = 1; i <= more; ++i) nodes.push_back({1, -1, i < more ? COUNT + i : circle, TRIE_VALUE_NONE});
    nodes[node].*field = value;
    return ModelBytes(nodes, COUNT + more);
}

std::string RandomBytes()
{
    std::mt19937 random(6);
    std::string bytes = WHOLE;
    for (size_t i = 0; i < bytes.size(); ++i)
        if (i < TABLES || i >= NODES) bytes[i] = static_cast<char>(random());
    return bytes;
}

struct BadModel {
    std::string name, bytes;
    int loaded = 0, detected = ENCODE_GBK;  // what loading gives, what TEXT is then taken for
    std::string decoded = "\xB0\x30";       // what B0 A1 then is
};

BadModel Cut(size_t size, int loaded)
{
    return {"cut to " + std::to_string(size), WHOLE.substr(0, size), loaded};
}

constexpr auto BASE = &TrieNode::nBase, CHECK = &TrieNode::nCheck, FAIL = &TrieNode::nFail,
               VALUE = &TrieNode::nValue;

const BadModel CUTS[] = {Cut(0, -1),          Cut(1, -1),          Cut(TABLES / 2 - 1, -1),
                         Cut(TABLES / 2, -2), Cut(TABLES - 1, -2), Cut(TABLES, -3),
                         Cut(TABLES + 1, -3), Cut(NODES - 1, -3),  Cut(NODES, -4),
                         Cut(NODES + 1, -4),  Cut(NODES + 16, -4), Cut(WHOLE.size() - 1, -4),
                         Cut(WHOLE.size(), 0)};

const BadModel BAD_MODELS[] = {
    {"sound, and more", WHOLE + "more"},
    {"count 0", WithCount(0), 0, ENCODE_UNKNOWN},
    {"count below the nodes used", WithCount(P), 0, ENCODE_UNKNOWN},
    {"count one more", WithCount(COUNT + 1), -4},
    {"count greatest", WithCount(INT_MAX), -127},
    {"count -1", WithCount(-1), -127},
    {"count least", WithCount(INT_MIN), -127},
    {"children below 0", With(0, BASE, INT_MIN), 0, ENCODE_UNKNOWN},
    {"children before the root", With(0, BASE, -0xB1), 0, ENCODE_UNKNOWN},
    {"children behind the end", With(0, BASE, COUNT - 0xB0), 0, ENCODE_UNKNOWN},
    {"children out of reach", With(0, BASE, INT_MAX), 0, ENCODE_UNKNOWN},
    {"a child's children out of reach", With(Q, BASE, INT_MAX)},
    {"its own parent", With(P, CHECK, P), 0, ENCODE_UNKNOWN},
    {"a child of its child", With(P, CHECK, Q), 0, ENCODE_UNKNOWN},
    {"a parent out of reach", With(Q, CHECK, INT_MAX)},
    {"a link below 0", With(Q, FAIL, INT_MIN)},
    {"a link before the root", With(Q, FAIL, -1)},
    {"a link behind the end", With(Q, FAIL, COUNT)},
    {"a link out of reach", With(Q, FAIL, INT_MAX)},
    {"a link from the root", With(0, FAIL, P)},
    {"a link to itself", With(Q, FAIL, Q)},
    {"a link to itself among many nodes", With(Q, FAIL, Q, 150'000)},
    {"a circle behind a chain", With(Q, FAIL, COUNT, 100, COUNT + 50)},
    {"a circle of all", With(Q, FAIL, COUNT, 100, Q)},
    {"a code of -1", With(P, VALUE, -1), 0, -1},
    {"the least code", With(P, VALUE, INT_MIN), 0, -2048},
    {"the greatest code", With(P, VALUE, INT_MAX), 0, 2047},
    {"a value of 0", With(P, VALUE, 0), 0, ENCODE_GBK},
    {"mappings to nothing", std::string(TABLES, '\0') + NODES_ONLY, 0, ENCODE_GBK, "\0\0"_b},
    {"mappings to surrogates", std::string(TABLES, '\xD8') + NODES_ONLY, 0, ENCODE_GBK, "\xD8\xD8"},
    {"nothing but FF", std::string(NODES + 99, '\xFF'), -127},
    {"random bytes", RandomBytes(), 0, ENCODE_UNKNOWN, RandomBytes().substr(2 * PairIndex(0xB0, 0xA1), 2)},
};

void Try(BadModel model)
{
    const std::string folder = BAD_MODELS_FOLDER "/" + model.name, file = folder + "/Data/CodeTrans.model";
    SCOPED_TRACE(file);
    std::filesystem::create_directories(folder + "/Data");
    WriteBytes(file, model.bytes);
    EXPECT_EQ(CodeTrans_Initialize(file.c_str()), model.loaded);
    TQ_Exit();
    EXPECT_EQ(TQ_Init(folder.c_str(), nullptr), model.loaded == 0 ? 1 : -2);
    EXPECT_EQ(g_mapGBKToUnicode != nullptr && g_mapBig5ToUnicode != nullptr, model.loaded == 0);
    EXPECT_EQ(g_pstTrieTable != nullptr, model.loaded == 0);
    if (model.loaded != 0) model.detected = ENCODE_UNKNOWN, model.decoded = "\0\0"_b;
    std::string longText;
    while (longText.size() < 300'000) longText += TEXT;  // makes the shortcuts
    for (const Forms forms : {Forms::PLAIN, Forms::AVX2, Forms::AVX512}) {
        if (forms > BestForms()) continue;
        UseForms(forms);
        for (const std::string& text : {TEXT, longText, longText})
            EXPECT_EQ(TQ_CodeDetect(text.data(), text.size()), model.detected) << text.size();
        char out[4];
        EXPECT_EQ(std::string(out, TQ_ToUnicode("\xB0\xA1", 2, out, 4, ENCODE_GBK)), model.decoded);
    }
    UseForms(BestForms());
    TQ_Exit();
    // In place: in a mapping, where a read beyond the end of the file would end the process, and in memory.
    EXPECT_EQ(CodeTrans_Map(file.c_str()), model.loaded);
    EXPECT_EQ(TQ_CodeDetect(longText.data(), longText.size()), model.detected);
    TQ_Exit();
    const std::vector<char> bytes(model.bytes.begin(), model.bytes.end());  // nothing behind the last
    // More nodes than memory has are more than the bytes have, too.
    EXPECT_EQ(CodeTrans_UseModel(bytes.data(), bytes.size()),
              model.name == "count greatest" ? -4 : model.loaded);
    EXPECT_EQ(TQ_CodeDetect(longText.data(), longText.size()), model.detected);
    EXPECT_EQ(g_pstTrieTable != nullptr, model.loaded == 0);
    TQ_Exit();
    EXPECT_TRUE(g_pstTrieTable == nullptr && g_mapGBKToUnicode == nullptr && g_mapBig5ToUnicode == nullptr);
}

TEST(DamagedModels, LoadOrDoNotAndAnswer)
{
    for (const BadModel& model : CUTS) Try(model);
    for (const BadModel& model : BAD_MODELS) Try(model);
}
}  // namespace
