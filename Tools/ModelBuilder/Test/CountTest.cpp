// From texts to counts: what a class holds afterwards, and what is refused before anything is written.
#include <sstream>

#include "Bytes.h"
#include "Counting.h"
#include "ForeignTokens.h"
#include "Statistics.h"
#include "Support.h"
#include "TextFile.h"

namespace
{
namespace fs = std::filesystem;

const std::vector<TextClass> CLASSES = {
    {.name = "news", .role = Role::PROSE, .pairs = 100, .title = "News"},
    {.name = "names", .role = Role::WORDS, .pairs = 100, .title = "Names"},
    {.name = "latin-1", .role = Role::BYTES, .pairs = 100, .title = "French"}};

struct Texts : TempFolder {
    Texts()
    {
        fs::create_directories("statistics");
        for (const TextClass& kind : CLASSES) WriteBytes("statistics/" + kind.name + ".txt", "as before");
    }
    static void Add(const std::string& file, const std::string& content)
    {
        fs::create_directories(fs::path("texts/" + file).parent_path());
        WriteBytes("texts/" + file, content);
    }
    static std::string Count()
    {
        std::ostringstream report;
        CountTexts("texts", CLASSES, "statistics", report);
        return report.str();
    }
};

TEST(Counting, FiveLinesAreCountedByCharacterAndSuccessor)
{
    const Texts texts;
    Texts::Add("news/one.txt", "中文\n中文\n中国\n");
    Texts::Add("news/two.txt", "文1\n\nA\n");
    Texts::Add("names/one.txt", "王中\t9\n");  // counts 1 + the square root of 9
    Texts::Add("latin-1/one.txt", "\xE9t\xE9\n");
    const std::string report = Texts::Count();
    EXPECT_EQ(ReadBytes("statistics/news.txt"),
              "# News\n"
              "# DO NOT EDIT: made by ModelBuilder count\n"
              "# from one two\n"
              "# 15 characters; successors seen fewer than 1 times are left out\n"
              "\\0A 6 \\0A1A1中3文1\n"
              "\\31 1 \\0A1\n"
              "A 1 \\0A1\n"
              "中 3 国1文2\n"
              "国 1 \\0A1\n"
              "文 3 \\0A2\\311\n");
    EXPECT_NE(ReadBytes("statistics/names.txt").find("\n王 4 中4\n"), std::string::npos);
    EXPECT_NE(ReadBytes("statistics/latin-1.txt").find("\nt 1 \u01E91\n"), std::string::npos);
    EXPECT_NE(report.find("news: 15 characters"), std::string::npos) << report;
}

TEST(Counting, WithoutTextsTheCountsStay)
{
    const Texts texts;
    Texts::Add("news/empty.txt", "");
    Texts::Add("news/read.me", "中文");
    Texts::Add("names/one.txt", "王\t1\n");
    const std::string report = Texts::Count();
    EXPECT_EQ(ReadBytes("statistics/news.txt"), "as before");
    EXPECT_EQ(ReadBytes("statistics/latin-1.txt"), "as before");
    EXPECT_NE(ReadBytes("statistics/names.txt"), "as before");
    for (const std::string notice :
         {"empty.txt is empty", "read.me is not counted", "no texts, counts unchanged: news, latin-1\n"})
        EXPECT_NE(report.find(notice), std::string::npos) << report;
}

TEST(Counting, NothingIsWrittenWhereOneFileIsRefused)
{
    const struct {
        std::string file, content, reason;
    } CASES[] = {
        {"news/gbk.txt", "a\n\xD6\xD0\xCE\xC4\n", "gbk.txt, line 2: texts of the class 'news' must be UTF-8"},
        {"names/cut.txt", "\xE4\xB8", "cut.txt, line 1"},
        {"novels/one.txt", "中文", "there is no class 'novels': the list has news, names, latin-1"}};
    for (const auto& c : CASES) {
        const Texts texts;
        Texts::Add("latin-1/one.txt", "\xE9t\xE9\n");
        Texts::Add(c.file, c.content);
        try {
            Texts::Count();
            ADD_FAILURE() << c.file << " is taken";
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find(c.reason), std::string::npos) << error.what();
        }
        for (const TextClass& kind : CLASSES)
            EXPECT_EQ(ReadBytes("statistics/" + kind.name + ".txt"), "as before") << c.file;
    }
}

TEST(Classes, ALineThatIsNoneIsNamedWithItsFault)
{
    const std::string hans = "a prose hans 1 9 Title\n";
    const std::pair<std::string, std::string> CASES[] = {
        {"a prose hans 1", "line 1: a class needs a name"},
        {"a verse hans 1 9 Title", "there is no role 'verse'"},
        {"a prose latin 1 9 Title", "there is no script 'latin'"},
        {"a prose - 1 9 Title", "the script hans or hant"},
        {"a bytes hant 1 9 Title", "the script hans or hant"},
        {"a prose hans 1 9", "needs a title"},
        {hans + "\n# two\n" + hans, "line 4: the class 'a' is listed twice"},
        {"a prose hans -1 9 Title", "a weight must be 0 or more"}};
    const TempFolder folder;
    for (const auto& [content, fault] : CASES) {
        WriteBytes("Classes.txt", content);
        try {
            ReadClasses("Classes.txt");
            ADD_FAILURE() << content;
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find(fault), std::string::npos) << error.what();
        }
    }
    WriteBytes("Classes.txt", hans);
    EXPECT_EQ(ReadClasses("Classes.txt").at(0).title, "Title");
}

TEST(ForeignTokens, AreTheBytesThatTheyWereMadeOf)
{
    for (const Role role : {Role::BYTES, Role::PAIRS, Role::KANA}) {
        for (unsigned first = 0; first < 0x100; ++first)
            for (unsigned second = 0; second < 0x100; ++second) {
                std::string bytes;
                for (const wchar_t token : TokensOf(TwoBytes(first, second), role))
                    bytes += BytesOfToken(token);
                ASSERT_EQ(bytes, TwoBytes(first, second));
            }
    }
    EXPECT_EQ(TokensOf("\xB1\xB2", Role::BYTES).size(), 2U);
    EXPECT_EQ(TokensOf("\xB1\xB2", Role::PAIRS).size(), 1U);
    EXPECT_EQ(TokensOf("\xB1\xB2", Role::KANA).size(), 2U);  // half-width kana
    EXPECT_EQ(BytesOfToken(TokensOfData("\n")[0]), "\n");
}

TEST(Statistics, AreReadAsTheyWereWritten)
{
    Statistics counts;
    counts.AddLine(L"a\\ 1\t#\u4E2D", 3);
    counts.AddLine(L"\u4E2D\u4E2D\u6587");
    const TempFolder folder;
    counts.Write("counts", "# head\n# more\n");
    const auto same = [](const Successors& a, const Successors& b) {
        return a.total == b.total && a.next == b.next;
    };
    const Statistics read = Statistics::Read("counts");
    ASSERT_EQ(read.characters.size(), counts.characters.size());
    for (const auto& [character, entry] : counts.characters)
        EXPECT_TRUE(same(read.characters.at(character), entry)) << static_cast<unsigned>(character);

    EXPECT_EQ(counts.Prune(8), 2U) << "seven successors three times, the others once";
    EXPECT_EQ(counts.characters.at(L'\u4E2D').total, 5U) << "the total stays";
    EXPECT_EQ(counts.characters.at(L'\u4E2D').next.size(), 1U);
}
}  // namespace
