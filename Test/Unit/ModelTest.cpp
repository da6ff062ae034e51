// The committed model's own guarantees.
#include "Support.h"

namespace
{
constexpr size_t TABLES = 4 * MAPPING_ENTRIES;

TEST(CommittedModel, KeepsWhatTheWalkNeeds)
{
    const LoadedModel model;
    const int count = CodeTrans_TrieNodeCount();
    ASSERT_EQ(std::filesystem::file_size(ModelPath()), TABLES + 4 + 16U * static_cast<unsigned>(count));
    EXPECT_LE(std::filesystem::file_size(ModelPath()), 2U << 20);
    for (int s = 0; s < count; ++s) {
        const TrieNode& node = g_pstTrieTable[s];
        if (s != 0 && (node.nCheck < 0 || node.nCheck >= count)) continue;  // no node
        ASSERT_GE(node.nBase, 0) << s;
        ASSERT_LT(node.nBase + 255, count) << s;
        ASSERT_NE(node.nBase + 255, INT_MAX);
        int hops = 0;
        for (int f = s; f != 0; f = g_pstTrieTable[f].nFail) {
            ASSERT_LT(++hops, 10) << s;
            ASSERT_GE(f, 0);
            ASSERT_LT(f, count);
        }
    }
    // No transition may lead back to the root.
    EXPECT_TRUE(g_pstTrieTable[0].nCheck < 0 || g_pstTrieTable[0].nCheck >= count);
}

// Decoder and encoder agree on every character of GBK, and a pair that is none shows as U+FFFD.
TEST(CommittedModel, MappingsAreWholeAndRoundTrip)
{
    const LoadedModel model;
    unsigned gbkPairs = 0;
    for (unsigned unit = 0x80; unit < 0x10000; ++unit) {
        const unsigned code = CodeTable[unit];
        if (code < 0x100) continue;
        ++gbkPairs;
        const unsigned index =
            PairIndex(static_cast<unsigned char>(code >> 8), static_cast<unsigned char>(code));
        ASSERT_EQ(g_mapGBKToUnicode[index], unit) << std::hex << code;
    }
    unsigned gbkDefined = 0, big5Defined = 0;
    for (unsigned i = 0; i < MAPPING_ENTRIES; ++i) {
        ASSERT_NE(g_mapGBKToUnicode[i], 0);
        ASSERT_NE(g_mapBig5ToUnicode[i], 0);
        gbkDefined += g_mapGBKToUnicode[i] != 0xFFFD;
        big5Defined += g_mapBig5ToUnicode[i] != 0xFFFD;
    }
    EXPECT_EQ(gbkDefined, gbkPairs);
    EXPECT_GT(big5Defined, 13500U);
    const auto big5 = [](unsigned char lead, unsigned char trail) {
        return g_mapBig5ToUnicode[PairIndex(lead, trail)];
    };
    EXPECT_EQ(big5(0xA4, 0x40), 0x4E00);
    EXPECT_EQ(big5(0xA4, 0x3F), 0x4E00) << "trail bytes below 40 share row 0";
    EXPECT_EQ(big5(0xA4, 0xA4), 0x4E2D);
    EXPECT_EQ(big5(0xA1, 0x45), 0x2027) << "code page 950";
    EXPECT_EQ(big5(0xF9, 0xD6), 0x7881) << "ETEN";
    EXPECT_EQ(big5(0xC6, 0xE7), 0x3041) << "ETEN kana";
}
}  // namespace
