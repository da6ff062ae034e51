// Detection with the shipped model: the same answer from the plain walk, from the fast one with and without
// shortcuts, and from the slow oracle, and not a byte read behind the text.
//
// Input: how often the text is repeated, then the text.
#include "../Oracles.h"
#include "Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    LoadShippedModel();
    const auto count = static_cast<unsigned>(CodeTrans_TrieNodeCount());
    static const Shortcuts* const s_shortcuts = MakeShortcuts(g_pstTrieTable, count);
    REQUIRE(s_shortcuts != nullptr || BestForms() == Forms::PLAIN);
    // Shortcuts belong to one table, so there are none for its copy.
    static const std::vector<TrieNode> s_copy(g_pstTrieTable, g_pstTrieTable + count);

    const std::string text = Input(data, size).RestRepeated();
    Buffer source(text);
    const int expected = DetectionOracle(s_copy, text);
    UnderEachForm([&] { REQUIRE(TQ_CodeDetect(source.data(), text.size()) == expected); });
    if (BestForms() == Forms::PLAIN) return 0;
    const Scores plain = Walk(g_pstTrieTable, count, source.data(), text.size());
    REQUIRE(SameWalk(FastWalk(g_pstTrieTable, count, source.data(), text.size()), plain));
    REQUIRE(SameWalk(FastWalk(s_copy.data(), count, source.data(), text.size()), plain));
    return 0;
}
