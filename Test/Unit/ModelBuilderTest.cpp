// The model builder: the committed model is what the committed text files pack to.
#include <gtest/gtest.h>

#include "Decisive.h"
#include "ModelFile.h"
#include "Patterns.h"
#include "Support.h"
#include "TextFile.h"

namespace
{
const std::string DATA = CODETRANS_SOURCE_DIRECTORY "/Data";

TEST(ModelBuilder, CommittedFilesPackToTheCommittedModel)
{
    const std::string content =
        ModelContent(CEncoder(DATA + "/Mappings"), ReadPatterns(DATA + "/Patterns.txt"));
    EXPECT_LE(content.size(), 2'000'000U);
    EXPECT_TRUE(content == ReadFile(DATA + "/CodeTrans.model"))
        << "Data/CodeTrans.model is not what the files give";
}

// What --without-decisive writes: nothing but a byte-order mark ends the walk, and what prevails is found all
// the same.
TEST(ModelBuilder, WithoutDecisiveStatesTheWalkGoesToTheEnd)
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
