// What the builder tells people: the walk explained, two models compared, the table in its manual.
#include <sstream>

#include "Compare.h"
#include "Explain.h"
#include "ModelFile.h"
#include "Support.h"
#include "TextFile.h"

namespace
{
States OnlyOnePair(const Digits& digits)
{
    States states = BasicStates();
    AddState(states, REGION_MAIN, "\xD6\xD0");
    states[{REGION_MAIN, "\xD6\xD0"}].value = PackDigits(digits);
    return states;
}

TEST(Explain, NamesStatesSumsAndTheRuleThatDecides)
{
    std::ostringstream out;
    ExplainWalk(OnlyOnePair({3, 2, -1, -9}), "\xD6\xD0!\xD6\xD0", 4, out);
    for (const char* line :
         {"1       D0       M D6D0          M D6  ", "+3        +2        -1        -9   3 2 -1 -9\n",
          "2       21 '!'   M 21            M    ", "-         -         -         -   3 2 -1 -9\n",
          "... and 1 more bytes\n", "GBK      sum 6, 2 positive states; it needs more than 1 ",
          "\nanswer: GBK\n"})
        EXPECT_NE(out.str().find(line), std::string::npos) << line << "\nin\n" << out.str();
}

TEST(Explain, ShowsTwoReadingsBesideEachOther)
{
    std::ostringstream out;
    ExplainReadings(OnlyOnePair({3, 2, -1, -9}), CEncoder(CODETRANS_SOURCE_DIRECTORY "/Data/Mappings"),
                    "\xD6\xD0", CandidateOf("gbk"), CandidateOf("Big5"), 9, out);
    EXPECT_NE(out.str().find("\nD0\t\u4E2D\t3\t\u7B22\t2\t1\n"), std::string::npos) << out.str();
    EXPECT_THROW(CandidateOf("GB"), std::runtime_error);
}

TEST(Compare, CountsWhatEachModelAnswersAndNamesWhatChanged)
{
    const TempFolder folder;
    const CEncoder encoder(CODETRANS_SOURCE_DIRECTORY "/Data/Mappings");
    WriteBytes("old", ModelContent(encoder, OnlyOnePair({2, 3, 0, 0})));
    WriteBytes("new", ModelContent(encoder, OnlyOnePair({3, 2, 0, 0})));
    std::filesystem::create_directories("files/gbk/deep");
    WriteBytes("files/gbk/deep/a.txt", "\xD6\xD0\xD6\xD0\xD6\xD0\xD6\xD0\nASCII says nothing\n\xD6\xD0");
    std::ostringstream out;
    CompareModels("old", "new", "files", out);
    for (const char* line :
         {"gbk         lines                   2     0.00   100.00\n",
          "gbk         4 characters            1     0.00   100.00\n",
          "gbk         whole files             1     0.00   100.00\n", "better: files/gbk/deep/a.txt\n"})
        EXPECT_NE(out.str().find(line), std::string::npos) << line << "\nin\n" << out.str();
    std::filesystem::create_directories("files/latin");
    EXPECT_THROW(CompareModels("old", "new", "files", out), std::runtime_error);
}

TEST(Manual, HasTheTableOfRegions)
{
    std::ostringstream table;
    PrintRegions(table);
    EXPECT_NE(ReadFile(CODETRANS_SOURCE_DIRECTORY "/Tools/ModelBuilder/README.md").find(table.str()),
              std::string::npos)
        << "Tools/ModelBuilder/refresh-readme brings it up to date";
}
}  // namespace
