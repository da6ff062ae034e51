// The exported functions end to end: life cycle, forwarding, whole files.
#include "../Unit/Support.h"

#include <sys/stat.h>

#include <memory>

#include "Utility.h"

namespace
{
const std::string SAMPLES = CODETRANS_SOURCE_DIRECTORY "/Test/Samples/";

class Interface : public testing::Test
{
protected:
    Interface() { g_sLogPath.clear(); }
    ~Interface() override { TQ_Exit(); }
    // The library keeps each copy for the life of the process; freed here for the leak checker's sake.
    static std::string LastError() { return std::unique_ptr<const char[]>(TQ_GetLastErrorMsg()).get(); }
    // A model whose detection gives `code` for any text with the byte 'x', ENCODE_UNKNOWN for others with
    // high bytes.
    static void LoadDecidingFor(int code)
    {
        std::vector<TrieNode> nodes(300, TrieNode{1, -1, 0, TRIE_VALUE_NONE});
        nodes['x' + 1].nCheck = 0;
        nodes['x' + 1].nValue = PackTrieValue(code, {});
        std::filesystem::create_directory("Data");
        WriteBytes("Data/CodeTrans.model", ModelBytes(nodes, 300));
        ASSERT_EQ(TQ_Init(nullptr, nullptr), 1);
    }
    TempFolder m_folder;
};

TEST_F(Interface, LifeCycle)
{
    TQ_Exit();
    g_sLastErrorMessage.clear();
    EXPECT_EQ(LastError(), "");
    const std::string model = m_folder.Path() + "/Data/CodeTrans.model";
    EXPECT_EQ(TQ_Init("", "reserved"), -2);
    EXPECT_EQ(LastError(), model + " load failure!");
    EXPECT_EQ(TQ_Init((m_folder.Path() + "/").c_str(), nullptr), -2);
    EXPECT_EQ(LastError(), m_folder.Path() + "//Data/CodeTrans.model load failure!");
    EXPECT_EQ(TQ_Init("relative", nullptr), -2);
    EXPECT_EQ(LastError(), "relative/Data/CodeTrans.model load failure!");

    LoadDecidingFor(ENCODE_BIG5);
    EXPECT_EQ(g_sDataPath, m_folder.Path() + "/Data");
    EXPECT_EQ(LastError(), "relative/Data/CodeTrans.model load failure!") << "success clears nothing";
    WriteBytes("Data/CodeTrans.model", "");
    EXPECT_EQ(TQ_CodeDetect("x", 1), ENCODE_BIG5) << "a loaded model's file may be written over";
    EXPECT_EQ(TQ_Init("relative", nullptr), -2);
    EXPECT_EQ(TQ_CodeDetect("x", 1), ENCODE_BIG5)
        << "a model that was not even opened leaves the earlier one";
    TQ_Exit();
    TQ_Exit();
    EXPECT_EQ(TQ_CodeDetect("x", 1), ENCODE_GBK);
}

// The branches of detected UTF-16LE touch five times the source; memory beyond that must be ours too.
TEST_F(Interface, FilesAreConvertedByTheBufferFunctions)
{
    const std::string mark8 = "\xEF\xBB\xBF", mark16 = "\xFF\xFE";
    const struct {
        const char* what;
        int detected;
        std::string source;
        int target;
        std::string written;
        long long result;
    } cases[] = {
        {"GBK to UTF-8", ENCODE_GBK, "x\xD6\xD0", ENCODE_UTF8, mark8 + "x\xE4\xB8\xAD", 4},
        {"GBK to Unicode", ENCODE_GBK, "x\xB0\xA1", ENCODE_UNICODE, mark16 + "x\0\xB0\x30"_b, 4},
        {"UTF-8 to GBK", ENCODE_UTF8, "x\xE4\xB8\xAD", ENCODE_GBK, "x\xD6\xD0", 3},
        {"UTF-8 to Unicode", ENCODE_UTF8, "x\xE4\xB8\xAD", ENCODE_UNICODE, mark16 + "x\0\0\0\x2D\x4E\0\0"_b,
         8},
        {"UTF-8 to UTF-8", ENCODE_UTF8, "x\xE4", ENCODE_UTF8, mark8 + "x\xE4", 2},
        {"zero bytes go first", ENCODE_GBK, "x\0y\0"_b, ENCODE_GBK, "xy", 2},
        {"Unicode to Unicode", ENCODE_UNICODE, "xy", ENCODE_UNICODE, mark16 + "xy\0\0\0\0\0\0\0\0\0"_b, 11},
        {"Unicode to GBK", ENCODE_UNICODE, "xyz", ENCODE_GBK, "\xBB\xF6\x7A", 3},
        {"Unicode to UTF-8", ENCODE_UNICODE, "x\1\1", ENCODE_UTF8, mark8 + "\0\0"_b, 2},
        {"undecided to UTF-8", ENCODE_UTF8, "\xFF\xFF", ENCODE_UTF8, mark8, 0},
        {"undecided to GBK", ENCODE_UTF8, "\xFF\xFF", ENCODE_GBK, "", 0},
        {"no such target", ENCODE_UTF8, "x", ENCODE_BIG5, "", 0},
    };
    for (const auto& c : cases) {
        LoadDecidingFor(c.detected);
        WriteBytes("in", c.source);
        WriteBytes("out", "what was there before, and longer than what comes");
        EXPECT_EQ(TQ_ToFile("in", "out", c.target), c.result) << c.what;
        EXPECT_EQ(ReadBytes("out"), c.written) << c.what;
        TQ_Exit();
    }
}

TEST_F(Interface, FilesArePassedThroughAPipe)
{
    LoadDecidingFor(ENCODE_UTF8);
    WriteBytes("in", "xyz");
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_EQ(TQ_ToUtf8File("in", ("/dev/fd/" + std::to_string(ends[1])).c_str()), 3);
    char got[9];
    EXPECT_EQ(std::string(got, static_cast<size_t>(read(ends[0], got, 9))), "\xEF\xBB\xBFxyz");
    for (const int end : ends) close(end);
}

// What is opened is a name in GBK where that alone exists; one that exists in neither form stays as given.
TEST_F(Interface, FailuresNameTheirFiles)
{
    const std::string given = ZHONG_UTF8;
    LoadDecidingFor(ENCODE_UTF8);
    WriteBytes("in", "x");
    std::filesystem::create_directory(ZHONG_GBK);
    EXPECT_EQ(TQ_ToUtf8File("in", ZHONG_UTF8), -1);
    EXPECT_EQ(LastError(), "Fail writing file " + given) << "in the caller's own words";
    std::filesystem::remove(ZHONG_GBK);
    EXPECT_EQ(TQ_Init(ZHONG_UTF8, nullptr), -2);
    EXPECT_EQ(LastError(), given + "/Data/CodeTrans.model load failure!");
    EXPECT_EQ(TQ_ToUtf8File(ZHONG_UTF8, "out"), -1);
    const mode_t mask = umask(027);
    EXPECT_EQ(TQ_ToUtf8File("in", ZHONG_UTF8), 1);
    umask(mask);
    EXPECT_TRUE(std::filesystem::exists(given) && !std::filesystem::exists(ZHONG_GBK));
    EXPECT_EQ(std::filesystem::status(given).permissions(), std::filesystem::perms(0640));
    std::filesystem::remove(given);
    WriteBytes(ZHONG_GBK, "");
    EXPECT_EQ(TQ_ToUtf8File(ZHONG_UTF8, "out"), -1);
    EXPECT_EQ(LogMessages(".err"), "Fail writing file " + given + "\n" + given +
                                       "/Data/CodeTrans.model load failure!\nError read file " + given +
                                       "\nError read file " + ZHONG_GBK + "\n");
    EXPECT_EQ(LogMessages(".log"), "Failed open file  " + given + "\n");
}

TEST_F(Interface, SamplesConvertToTheSameText)
{
    ASSERT_EQ(TQ_Init(CODETRANS_SOURCE_DIRECTORY, nullptr), 1);
    const struct {
        int64_t (*convert)(const char*, const char*);
        std::string from, mark, to;
    } cases[] = {{TQ_ToUtf8File, "-hans.gbk", "\xEF\xBB\xBF", "-hans.utf8"},
                 {TQ_ToUnicodeFile, "-hans.gbk", "\xFF\xFE", "-hans.utf16le"},
                 {TQ_ToUnicodeFile, "-hant.big5", "\xFF\xFE", "-hant.utf16le"},
                 {TQ_ToGBKFile, "-hans.utf8", "", "-hans.gbk"}};
    for (const std::string kind : {"news", "fiction", "subtitle", "source", "title"})
        for (const auto& c : cases) {
            c.convert((SAMPLES + kind + c.from).c_str(), "out");
            EXPECT_EQ(ReadBytes("out"), c.mark + ReadBytes(SAMPLES + kind + c.to));
        }
}
}  // namespace
