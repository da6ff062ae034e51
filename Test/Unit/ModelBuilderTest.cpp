// The model builder: packing gives back every state, falling back follows the bytes, the committed model is
// what the committed text files pack to.
#include <gtest/gtest.h>

#include <random>

#include "Automaton.h"
#include "Decisive.h"
#include "DoubleArray.h"
#include "ModelFile.h"
#include "Patterns.h"
#include "Statistics.h"
#include "Support.h"
#include "TextFile.h"

namespace
{
const std::string DATA = CODETRANS_SOURCE_DIRECTORY "/Data";

// A random tree with random links and values: parents come first, and no parent has two children for a byte.
std::vector<PackableState> RandomStates(unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<PackableState> states(1);
    std::vector<std::vector<bool>> taken(1, std::vector<bool>(256));
    const size_t count = 2 + random() % 3000;
    while (states.size() < count) {
        const size_t parent = random() % std::min<size_t>(states.size(), 1 + random() % 400);
        const size_t byte = random() % (random() % 2 == 0 ? 256 : 16);
        if (taken[parent][byte]) continue;
        taken[parent][byte] = true;
        taken.emplace_back(256);
        const int fail = static_cast<int>(random() % states.size());
        states.push_back({static_cast<int>(parent), static_cast<uint8_t>(byte), fail,
                          static_cast<int>(random() % 160000)});
    }
    states.push_back({-1, 0, 0, TRIE_VALUE_NONE});  // entered by failure links only
    return states;
}

void CheckPacking(const std::vector<PackableState>& states, const PackedTrie& packed)
{
    const auto node = [&](int state) { return packed.nodeOf[static_cast<size_t>(state)]; };
    const auto at = [&](int index) { return packed.nodes.at(static_cast<size_t>(index)); };
    ASSERT_EQ(node(0), 0);
    std::vector<int> children(packed.nodes.size());
    for (size_t s = 0; s < states.size(); ++s) {
        const TrieNode& own = at(packed.nodeOf[s]);
        EXPECT_EQ(own.nFail, node(states[s].fail));
        EXPECT_EQ(own.nValue, states[s].value);
        if (states[s].parent < 0) continue;
        EXPECT_EQ(at(node(states[s].parent)).nBase + states[s].byte, packed.nodeOf[s]);
        EXPECT_EQ(own.nCheck, node(states[s].parent));
        ++children[static_cast<size_t>(node(states[s].parent))];
    }
    for (int s = 0; s < static_cast<int>(packed.nodes.size()); ++s) {
        ASSERT_LT(static_cast<size_t>(at(s).nBase) + 255, packed.nodes.size());
        int found = 0;
        for (int byte = 0; byte < 256; ++byte) found += at(at(s).nBase + byte).nCheck == s;
        ASSERT_EQ(found, children[static_cast<size_t>(s)])
            << "node " << s << " has children that are not its own";
    }
}

TEST(ModelBuilder, PackingGivesBackEveryTransitionAndLink)
{
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const std::vector<PackableState> states = RandomStates(seed);
        CheckPacking(states, PackStates(states));
    }
}

// What is left of a string when its first unit turns out to lead nowhere; every chain ends at the start's
// root.
TEST(ModelBuilder, StatesFallBackInStepWithTheText)
{
    States states = ReadPatterns(DATA + "/Patterns.txt");
    const std::tuple<Region, const char*, Region, const char*> cases[] = {
        {REGION_START, "\xD6", REGION_MAIN, "\xD6"},             // the start's twin
        {REGION_MAIN, "\xD6\xD0", REGION_MAIN, ""},              // a pair ended
        {REGION_MAIN, "\x61\x8C", REGION_UNIT, "\x8C"},          // a unit, or ASCII and a lead byte
        {REGION_UNIT, "\x8C\x8C", REGION_NEXT_UNIT, "\x8C"},     //
        {REGION_MAIN, "\xE4\xB8", REGION_THIRD, ""},             // two thirds of a UTF-8 character, or a pair
        {REGION_MAIN, "\xE4\xB8\xAD", REGION_AFTER, "\xAD"},     // all of it, or a pair and a lead byte
        {REGION_AFTER, "\xAD\xE4", REGION_SECOND, "\xE4"},       // the next one, or that pair's trail byte
        {REGION_SECOND, "\xE4\xB8", REGION_MAIN, "\xB8"},        //
        {REGION_SECOND, "\xE4\xB8\xAD", REGION_MAIN, ""},        // six bytes: all readings meet
        {REGION_MAIN, "\xA1\xA3\x0A", REGION_MAIN, "\x0A"},      // a line end behind a pair
        {REGION_MAIN, "\xA1\xA3\x0A\xD4", REGION_MAIN, "\xD4"},  //
        {REGION_MAIN, "\xE3\x80\x82\x0A\xE4", REGION_MAIN, "\xE4"},
        {REGION_MAIN, "\xD6", REGION_BROKEN, ""},                // a lead byte without a trail byte
        {REGION_RARE_UNIT, "\x8C", REGION_UNIT, "\x8C"},         //
        {REGION_FOREIGN, "\xD6", REGION_FOREIGN_TRAIL, ""},      // foreign text goes by twos
        {REGION_FOREIGN, "\xE4\xB8", REGION_FOREIGN_TRAIL, ""},  // or by threes
        {REGION_FOREIGN_TRAIL, "\xD0", REGION_FOREIGN, ""},      //
        {REGION_RETURN, "\xD6\x40", REGION_FOREIGN, ""},         // not ours after all
        {REGION_HINT, "x", REGION_HINT, ""},                     // ASCII behind a hint
        {REGION_NEXT_LINE, "\xD6", REGION_MAIN, "\xD6"},         //
    };
    for (const auto& [region, path, toRegion, toPath] : cases) {
        AddState(states, region, path);
        const StateName target = ExistingFallBack(states, {region, path});
        EXPECT_EQ(target, (StateName{toRegion, toPath})) << static_cast<char>(region) << ' ' << ToHex(path);
    }
}

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

TEST(ModelBuilder, TextFormsReadBackAsWritten)
{
    const std::string path = testing::TempDir() + "/model-builder-test.txt";
    Statistics counted;
    counted.AddLine(L"a1 \\中文,中\u00E9", 3);
    counted.AddLine(L"#\t9");
    counted.Write(path, "# head\n");
    const Statistics read = Statistics::Read(path);
    ASSERT_EQ(read.characters.size(), counted.characters.size());
    for (const auto& [character, entry] : counted.characters) {
        EXPECT_EQ(read.characters.at(character).total, entry.total);
        EXPECT_EQ(read.characters.at(character).next, entry.next);
    }
    States states = BasicStates();
    AddState(states, REGION_MAIN, "\xD6\xD0\xCE");
    states[{REGION_MAIN, "\xD6\xD0"}] = {PackTrieValue(ENCODE_GBK, {-9, 10, 0, 23}), REGION_FOREIGN};
    states[{REGION_MAIN, "\xD6\xD0\xCE"}] = {TRIE_VALUE_NONE | TRIE_VALUE_COUNTED};
    WritePatterns(states, path);
    EXPECT_EQ(ReadPatterns(path), states);
    std::remove(path.c_str());
}
}  // namespace
