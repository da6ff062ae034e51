// The rules of return, the chains of failure links, and the packing of states.
#include <set>
#include <sstream>

#include "Automaton.h"
#include "Support.h"
#include "TextFile.h"

namespace
{
// "MD6D0" is the state D6 D0 of the region M.
StateName Named(const std::string& text)
{
    return {.region = static_cast<Region>(text[0]), .path = FromHex(text.substr(1))};
}

std::string TextOf(const StateName& state)
{
    return static_cast<char>(state.region) + ToHex(state.path);
}

// Some states in every region.
constexpr char STATES[] =
    "0D6D0 M00AE M0AD6 M2841 M4E8B M6120 M6161 M9640 MAD40 MB941 MD6D0B9A1 ME4B8ADE696 WD6D1 K61 H00AC X28 "
    "G9D C8061 C9DE6 CADE6 CADE7 CAD61 UE69687 UE69D UC380 D8B41 E414E E418B F8B F8C 561 s8B Y61 Z8B "
    "S41 TDC Q9F R80 OD6 O61 ND6 N61 NE4B8 P9D PD1 1E4 aA3AC a61 d6100 dFF eA3 e61 h0A00 hFF";

// State, byte, and where that leads, since the state has no child for it.
constexpr char RETURNS[] =
    // The start and what lies behind ASCII fall back to their twins.
    "0D6 D1 WD6D1  061 61 M6161  0D6D0 B9 MD6D0B9  WD6 D0 MD6D0  WD6 28 X28  K61 61 M6161  H00 AE M00AE "
    // In M the first unit is given up: a pair, ASCII, a lead byte alone, a line end alone.
    "MD6D0 41 M41  MD6D0B9 41 MB941  M61 D6 WD6  M6161 D6 MD6  M6120 D6 WD6  MD6 28 X28  X28 41 M2841  M0AD6 "
    "D0 MD6D0 "
    // UTF-8 beside pairs: a third byte without a state, a character's end, the second character.
    "ME4B8 9D G9D  ME4B8AD E7 CADE7  ME4B8ADE6 9D UE69D  ME4B8ADE696 87 UE69687  G9D E6 C9DE6  G 41 M41 "
    "CADE6 96 UE696  CAD 40 MAD40  CAD61 D6 MD6  UE69687 D6 MD6  UE696 40 M9640  UC380 61 C8061  UE6 41 M41 "
    // ASCII and a lead byte of 81 to 9F, or a unit of UTF-16LE.
    "M4E8B 41 D8B41  D8B41 4E E414E  D8B 20 M20  E41 8C F8C  E418B 41 D8B41  E414E D6 MD6  F8B 41 D8B41 "
    "F D6 MD6 "
    // ASCII that is counted.
    "561 61 M6161  5 D6 WD6  s8B 41 D8B41  s D6 WD6  Y61 61 M6161  Z8B 41 D8B41 "
    // Characters beyond U+FFFF.
    "S41 D6 MD6  TDC D6 MD6  Q9F 41 M41  R80 41 M41 "
    // Zeros, foreign text and the way back; a state that is sent onward.
    "OD6 D0 MD6D0  O61 D6 ND6  ND6 D1 PD1  NE4B8 9D P9D  N61 D6 ND6  N 41 M41  PD1 D6 ND6  1E4 B8 NE4B8 "
    "MAD40 D6 ND6 "
    // Hints, and the line behind them.
    "a61 A3 aA3  aA3AC D6 MD6  d6100 FF dFF  d61 61 M6161  e61 A3 eA3  h0A00 FF hFF";

States SmallAutomaton()
{
    States states = BasicStates();
    std::istringstream names(STATES);
    for (std::string name; names >> name;) AddState(states, Named(name).region, Named(name).path);
    states[Named("MAD40")].onward = REGION_FOREIGN;
    return states;
}

TEST(Regions, FallBackByTheirRules)
{
    const States states = SmallAutomaton();
    std::set<Region> seen;
    std::istringstream cases(RETURNS);
    for (std::string state, byte, expected; cases >> state >> byte >> expected;) {
        ASSERT_TRUE(states.contains(Named(state)) && !states.contains(Named(state + byte))) << state;
        EXPECT_EQ(TextOf(Step(states, Named(state), FromHex(byte)[0])), expected) << state << " by " << byte;
        seen.insert(RowOf(Named(state).region).first);
    }
    for (const RegionRow& row : RegionTable())
        EXPECT_TRUE(seen.contains(row.first)) << "no case for the region " << row.name;
}

// Whatever states there are: the small automaton, and two thousand names drawn from all regions.
TEST(Regions, EveryChainOfFailureLinksEndsAtTheStart)
{
    States states = SmallAutomaton();
    Random random;
    for (int i = 0; i < 2000; ++i) {
        const RegionRow& row = RegionTable()[random.Below(static_cast<unsigned>(RegionTable().size()))];
        std::string path;
        for (unsigned length = 1 + random.Below(6); length > 0; --length)
            path += FromHex("0A00E4B8ADD6F09F8B61").at(random.Below(10));
        AddState(states, RegionOf(row.first, static_cast<int>(random.Below(4)) % row.count), path);
    }
    for (const auto& [name, entry] : states) {
        StateName state = name;
        for (int links = 0; TextOf(state) != "0" && links < 30; ++links)
            state = ExistingFallBack(states, state);
        EXPECT_EQ(TextOf(state), "0") << "from " << TextOf(name);
    }
}

TEST(DoubleArray, HoldsEachStateOnceWithItsLinks)
{
    Random random;
    std::vector<PackableState> states(1);
    std::set<std::pair<int, uint8_t>> taken;
    for (int s = 1; s < 3000; ++s) {
        PackableState state{.parent = static_cast<int>(random.Below(static_cast<unsigned>(s))) / 4,
                            .byte = static_cast<uint8_t>(random.Below(0x100)),
                            .fail = static_cast<int>(random.Below(static_cast<unsigned>(s))),
                            .value = s};
        if (s % 100 == 0) state.parent = -1;
        if (state.parent < 0 || taken.emplace(state.parent, state.byte).second) states.push_back(state);
    }
    for (PackableState& state : states) state.fail %= static_cast<int>(states.size());
    const PackedTrie packed = PackStates(states);
    const auto node = [&](int state) { return packed.nodeOf[static_cast<size_t>(state)]; };
    const auto count = static_cast<unsigned>(packed.nodes.size());
    EXPECT_EQ(node(0), 0);
    size_t linked = 0;
    for (const TrieNode& slot : packed.nodes) linked += slot.nCheck >= 0;
    EXPECT_EQ(linked, taken.size()) << "slots that are no node have no parent";
    EXPECT_EQ(std::set<int>(packed.nodeOf.begin(), packed.nodeOf.end()).size(), states.size());
    for (int s = 0; s < static_cast<int>(states.size()); ++s) {
        const PackableState& state = states[static_cast<size_t>(s)];
        const TrieNode& slot = packed.nodes.at(static_cast<size_t>(node(s)));
        EXPECT_EQ(slot.nFail, node(state.fail));
        EXPECT_EQ(slot.nValue, state.value);
        EXPECT_LT(slot.nBase + 0xFF, static_cast<int>(count));
        if (state.parent < 0) continue;
        EXPECT_EQ(trie::Child(packed.nodes.data(), count, node(state.parent), state.byte), node(s));
    }
}

// The walk by names and the walk over the packed nodes are the same walk.
TEST(Automaton, WalksAsItsNamesSay)
{
    const States states = SmallAutomaton();
    const CAutomaton automaton(states);
    Random random;
    std::string text;
    for (int i = 0; i < 5000; ++i)
        text += FromHex("0A00E4B8ADE6968761D6D0B9418B4E28D89F9D").at(random.Below(19));
    StateName state = Named("0");
    automaton.ForEachStep(text, [&](int node, size_t i) {
        state = Step(states, state, text[i]);
        ASSERT_NE(automaton.NameOf(node), nullptr) << i;
        ASSERT_EQ(TextOf(*automaton.NameOf(node)), TextOf(state)) << i;
    });
}
}  // namespace
