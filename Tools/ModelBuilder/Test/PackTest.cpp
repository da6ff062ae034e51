// Patterns and model files: written and read again, and the committed ones against each other.
#include "Automaton.h"
#include "Decisive.h"
#include "ModelFile.h"
#include "Patterns.h"
#include "Support.h"
#include "TextFile.h"

namespace
{
const std::string DATA = CODETRANS_SOURCE_DIRECTORY "/Data";

States StatesOfEveryKind()
{
    States states = BasicStates();
    for (const std::string& path : {"\xD6\xD0"_b, "\x0A\0"_b, "\xFF\xFE"_b, "\xD6\xD0\xB9\xFA"_b})
        AddState(states, REGION_MAIN, path);
    states[{REGION_MAIN, "\xD6\xD0"}] = {.value = PackDigits({10, -9, 23, 1}), .onward = REGION_HANGUL};
    states[{REGION_MAIN, "\x0A\0"_b}].value = COUNTS_AGAINST_UNICODE;
    states[{REGION_START, "\xEF"}].value = Decisive(CANDIDATE_UTF8);
    states[{REGION_MAIN, "\xFF\xFE"}] = {.value = TRIE_VALUE_NONE, .onward = REGION_FOREIGN};
    return states;
}

TEST(Patterns, AreReadAsTheyWereWritten)
{
    const TempFolder folder;
    const States states = StatesOfEveryKind();
    WritePatterns(states, "patterns");
    EXPECT_EQ(ReadPatterns("patterns"), states);
    const std::string text = ReadFile("patterns");
    EXPECT_NE(text.find("M D6 D0:10,-9,23,1>H\n"), std::string::npos);
    EXPECT_NE(text.find("M 0A 00:0,0,0,0*"), std::string::npos);
    WriteBytes("patterns", "M D6 D0:1,2\n");
    EXPECT_THROW(ReadPatterns("patterns"), std::runtime_error);
}

TEST(ModelFile, HoldsTheNodesAndIsRefusedWhenCut)
{
    const States states = StatesOfEveryKind();
    const std::string content = ModelContent(CEncoder(DATA + "/Mappings"), states);
    const std::vector<TrieNode> read = NodesOfModel(content), packed = CAutomaton(states).Nodes();
    ASSERT_EQ(read.size(), packed.size());
    EXPECT_EQ(memcmp(read.data(), packed.data(), read.size() * sizeof(TrieNode)), 0);
    for (const size_t size : {size_t{0}, size_t{98'307}, content.size() - 1})
        EXPECT_THROW(NodesOfModel(content.substr(0, size)), std::runtime_error) << size;
}

TEST(CommittedModel, IsWhatTheCommittedFilesPackTo)
{
    const std::string content =
        ModelContent(CEncoder(DATA + "/Mappings"), ReadPatterns(DATA + "/Patterns.txt"));
    EXPECT_LE(content.size(), 2'000'000U);
    EXPECT_TRUE(content == ReadFile(DATA + "/CodeTrans.model"))
        << "Data/CodeTrans.model is not what the files give";
}

// What --without-decisive writes: nothing but a byte-order mark ends the walk, and what prevails is found all
// the same.
TEST(CommittedModel, WithoutDecisiveStatesTheWalkGoesToTheEnd)
{
    States states = ReadPatterns(DATA + "/Patterns.txt");
    DropDecisiveStates(states);
    for (const auto& [name, state] : states) {
        EXPECT_TRUE(TrieValueCode(state.value) == 0 || name.region == REGION_START) << ToHex(name.path);
        EXPECT_FALSE(IsRegionOf(state.onward, REGION_HINT)) << ToHex(name.path);
    }
    const TempFolder folder;
    WriteBytes("model", ModelContent(CEncoder(DATA + "/Mappings"), states));
    ASSERT_EQ(CodeTrans_Initialize("model"), 0);
    const std::string samples = CODETRANS_SOURCE_DIRECTORY "/Test/Samples/";
    std::string text = ReadBytes(samples + "fiction-hans.gbk");
    EXPECT_EQ(CodeTrans_CodeDetect(text.data(), text.size()), ENCODE_GBK);
    while (text.size() < 20'000) text += ReadBytes(samples + "fiction-hans.utf8");
    EXPECT_EQ(CodeTrans_CodeDetect(text.data(), text.size()), ENCODE_UTF8);
    CodeTrans_Destroy();
}
}  // namespace
