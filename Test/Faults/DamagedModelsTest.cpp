// Damaged models, made anew in a folder of the build tree: what loading says of each, and what detection and
// decoding answer afterwards, in every form and however long the text.
#include <climits>
#include <functional>

#include "../Unit/Support.h"
#include "Detection.h"
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

std::string Whole()
{
    return ModelBytes(SoundNodes(), COUNT);
}

std::string WithCount(int count)
{
    return ModelBytes(SoundNodes(), count);
}

// The sound model with fields of nodes changed.
std::string With(const std::function<void(std::vector<TrieNode>&)>& damage)
{
    std::vector<TrieNode> nodes = SoundNodes();
    damage(nodes);
    return ModelBytes(nodes, static_cast<int>(nodes.size()));
}

std::string With(int node, int TrieNode::*field, int value)
{
    return With([=](auto& nodes) { nodes[static_cast<size_t>(node)].*field = value; });
}

// The links go from Q through all nodes behind the sound ones and from the last one back to node `circle`.
std::string WithChain(int count, int circle)
{
    return With([=](auto& nodes) {
        nodes.resize(static_cast<size_t>(count), nodes[0]);
        for (int i = COUNT; i < count; ++i) nodes[static_cast<size_t>(i)].nFail = i + 1;
        nodes[Q].nFail = COUNT;
        nodes.back().nFail = circle;
    });
}

std::string RandomBytes()
{
    std::mt19937 random(6);
    std::string bytes = Whole();
    for (size_t i = 0; i < bytes.size(); ++i)
        if (i < TABLES || i >= NODES) bytes[i] = static_cast<char>(random());
    return bytes;
}

struct BadModel {
    std::string name, bytes;
    int loaded = 0, detected = ENCODE_GBK;  // what loading gives, what TEXT is then taken for
    std::string decoded = "\xB0\x30";       // what B0 A1 then is
};

std::vector<BadModel> BadModels()
{
    std::vector<BadModel> models = {
        {"sound, and more", Whole() + "more"},
        {"count 0", WithCount(0), 0, ENCODE_UNKNOWN},
        {"count below the nodes used", WithCount(P), 0, ENCODE_UNKNOWN},
        {"count one more", WithCount(COUNT + 1), -4},
        {"count greatest", WithCount(INT_MAX), -127},
        {"count -1", WithCount(-1), -127},
        {"count least", WithCount(INT_MIN), -127},
        {"children below 0", With(0, &TrieNode::nBase, INT_MIN), 0, ENCODE_UNKNOWN},
        {"children before the root", With(0, &TrieNode::nBase, -0xB1), 0, ENCODE_UNKNOWN},
        {"children behind the end", With(0, &TrieNode::nBase, COUNT - 0xB0), 0, ENCODE_UNKNOWN},
        {"children out of reach", With(0, &TrieNode::nBase, INT_MAX), 0, ENCODE_UNKNOWN},
        {"no children where some are looked for", With(Q, &TrieNode::nBase, INT_MAX)},
        {"its own parent", With(P, &TrieNode::nCheck, P), 0, ENCODE_UNKNOWN},
        {"the root its own child", With([](auto& nodes) {
             nodes[0] = {-0xB0, 0, 0, 0};
         }),
         0, ENCODE_UNKNOWN},
        {"a parent out of reach", With(Q, &TrieNode::nCheck, INT_MAX)},
        {"a link below 0", With(Q, &TrieNode::nFail, INT_MIN)},
        {"a link before the root", With(Q, &TrieNode::nFail, -1)},
        {"a link behind the end", With(Q, &TrieNode::nFail, COUNT)},
        {"a link out of reach", With(Q, &TrieNode::nFail, INT_MAX)},
        {"a link to itself", With(Q, &TrieNode::nFail, Q)},
        {"a link from the root", With(0, &TrieNode::nFail, P)},
        {"links in a circle", With([](auto& nodes) { nodes[P].nFail = Q, nodes[Q].nFail = P; })},
        {"a circle behind a chain", WithChain(400, 350)},
        {"a circle of one behind a chain", WithChain(400, 399)},
        {"a circle among many nodes",
         With([](auto& nodes) { nodes[Q].nFail = Q, nodes.resize(150'000, nodes[0]); })},
        {"a code of -1", With(P, &TrieNode::nValue, -1), 0, -1},
        {"the least code", With(P, &TrieNode::nValue, INT_MIN), 0, -2048},
        {"the greatest code", With(P, &TrieNode::nValue, INT_MAX), 0, 2047},
        {"nothing but minus nine", With(Q, &TrieNode::nValue, 0), 0, ENCODE_GBK},
        {"mappings to nothing", std::string(TABLES, '\0') + Whole().substr(TABLES), 0, ENCODE_GBK, "\0\0"_b},
        {"mappings to surrogates", std::string(TABLES, '\xD8') + Whole().substr(TABLES), 0, ENCODE_GBK,
         "\xD8\xD8"},
        {"nothing but FF", std::string(NODES + 99, '\xFF'), -127},
        {"random bytes", RandomBytes(), 0, ENCODE_UNKNOWN,
         RandomBytes().substr(2 * PairIndex(0xB0, 0xA1), 2)},
    };
    const struct {
        size_t size;
        int loaded;
    } cuts[] = {{0, -1},
                {1, -1},
                {TABLES / 2 - 1, -1},
                {TABLES / 2, -2},
                {TABLES / 2 + 1, -2},
                {TABLES - 1, -2},
                {TABLES, -3},
                {TABLES + 1, -3},
                {NODES - 1, -3},
                {NODES, -4},
                {NODES + 1, -4},
                {NODES + 16, -4},
                {Whole().size() - 1, -4},
                {Whole().size(), 0}};
    for (const auto& cut : cuts)
        models.push_back({"cut to " + std::to_string(cut.size), Whole().substr(0, cut.size), cut.loaded});
    return models;
}

TEST(DamagedModels, LoadOrDoNotAndAnswer)
{
    std::string longText;
    while (longText.size() < 300'000) longText += TEXT;  // makes the shortcuts
    for (BadModel& model : BadModels()) {
        const std::string folder = std::string(BAD_MODELS_FOLDER "/") + model.name;
        std::filesystem::create_directories(folder + "/Data");
        const std::string file = folder + "/Data/CodeTrans.model";
        WriteBytes(file, model.bytes);
        SCOPED_TRACE(file);
        EXPECT_EQ(CodeTrans_Initialize(file.c_str()), model.loaded);
        TQ_Exit();
        EXPECT_EQ(TQ_Init(folder.c_str(), nullptr), model.loaded == 0 ? 1 : -2);
        if (model.loaded != 0) {
            EXPECT_TRUE(g_mapGBKToUnicode == nullptr && g_mapBig5ToUnicode == nullptr &&
                        g_pstTrieTable == nullptr);
            model.detected = ENCODE_UNKNOWN;
            model.decoded = "\0\0"_b;
        }
        for (const Forms forms : {Forms::PLAIN, Forms::AVX2, Forms::AVX512}) {
            if (forms > BestForms()) continue;
            UseForms(forms);
            EXPECT_EQ(TQ_CodeDetect("ASCII", 5), ENCODE_GBK);
            for (const std::string& text : {TEXT, longText, longText})
                EXPECT_EQ(TQ_CodeDetect(text.data(), text.size()), model.detected) << text.size();
            char out[4];
            EXPECT_EQ(std::string(out, TQ_ToUnicode("\xB0\xA1", 2, out, 4, ENCODE_GBK)), model.decoded);
        }
        UseForms(BestForms());
        TQ_Exit();
    }
}
}  // namespace
