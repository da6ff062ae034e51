// Runtime support: names, the reader, log files, the last-error text and returned buffers.
#include <algorithm>
#include <thread>

#include "Support.h"
#include "Utility.h"

namespace
{
class Runtime : public testing::Test
{
protected:
    Runtime() { g_sLogPath.clear(); }
    ~Runtime() override
    {
        g_sLogPath.clear();
        g_bLog = true;
        g_nEncodeType = 0;
        g_pBufManager = nullptr;
    }
    TempFolder m_folder;
};

TEST_F(Runtime, NamesAreConvertedOnlyWhereThatHelps)
{
    std::string name;
    EXPECT_FALSE(GetAnsiFilename(ZHONG_UTF8, name, false));
    EXPECT_EQ(name, ZHONG_UTF8);
    EXPECT_TRUE(GetAnsiFilename(ZHONG_UTF8, name, true));
    EXPECT_EQ(name, ZHONG_GBK);
    WriteBytes(ZHONG_GBK, "x");
    EXPECT_TRUE(GetAnsiFilename(ZHONG_UTF8, name, false));
    EXPECT_EQ(name, ZHONG_GBK);
    WriteBytes(ZHONG_UTF8, "x");
    EXPECT_FALSE(GetAnsiFilename(ZHONG_UTF8, name, true)) << "a name that exists is used as it is";
    EXPECT_EQ(name, ZHONG_UTF8);
    EXPECT_TRUE(GetAnsiFilename("", name, true));
}

TEST_F(Runtime, DefaultPath)
{
    for (const char* none : {static_cast<const char*>(nullptr), ""})
        EXPECT_EQ(GetDefaultPath(none), m_folder.Path());
    EXPECT_STREQ(GetDefaultPath("/tmp/"), "/tmp/");
    EXPECT_STREQ(GetDefaultPath("no-such-dir"), "no-such-dir");
    EXPECT_STREQ(GetDefaultPath(g_sDefaultDir.c_str()), "no-such-dir");
    std::filesystem::create_directory(ZHONG_GBK);
    EXPECT_STREQ(GetDefaultPath(ZHONG_UTF8), ZHONG_GBK);
}

TEST_F(Runtime, ReaderDeliversWhatWasAskedFor)
{
    WriteBytes("ten", "0123456789");
    const struct {
        long offset;
        unsigned long size;
        bool whole;
        long result;
        std::string start;
    } cases[] = {{0, 0, true, 10, "0123456789"}, {4, 0, true, 10, "456789\0\0\0\0"_b},
                 {0, 0, false, 0, ""},           {2, 3, false, 3, "234"},
                 {8, 4, true, 4, "89\0\0"_b},    {0, ~0UL, false, 0, ""}};
    for (const auto& c : cases) {
        char* buffer = nullptr;
        EXPECT_EQ(ReadFile("ten", &buffer, c.offset, c.size, c.whole), c.result);
        EXPECT_EQ(buffer == nullptr, c.size == ~0UL);
        if (buffer != nullptr) {
            EXPECT_EQ(std::string(buffer, c.start.size() + 1), c.start + '\0');
        }
        delete[] buffer;
    }
    char untouched;
    char* buffer = &untouched;
    EXPECT_EQ(ReadFile("missing", &buffer, 0, 0, true), 0);
    EXPECT_EQ(buffer, &untouched);
    EXPECT_EQ(LogMessages(".log"), "Failed open file  missing\n");
    EXPECT_EQ(LogMessages(".err"), "");
}

TEST_F(Runtime, ReaderOfStringsDropsZeroBytesAndReports)
{
    std::string content;
    WriteBytes("zeros", "\0A\0\0B\0"_b);
    EXPECT_EQ(ReadFile("zeros", content, 0, 0, true), 2);
    EXPECT_EQ(content, "AB");
    content = "zeros";
    EXPECT_EQ(ReadFile(content.c_str(), content, 0, 0, true), 2) << "name and content in one";
    EXPECT_EQ(content, "AB");
    EXPECT_EQ(ReadFile(content.c_str(), content, 0, 0, true), 0);
    EXPECT_EQ(g_sLastErrorMessage, "Error read file ") << "the content was emptied first";
    EXPECT_EQ(LogMessages(".log"), "Failed open file  AB\n");
    WriteBytes("empty", "");
    for (const char* name : {"empty", "missing"}) {
        content = "old";
        EXPECT_EQ(ReadFile(name, content, 0, 0, true), 0);
        EXPECT_EQ(content, "");
        EXPECT_EQ(g_sLastErrorMessage, std::string("Error read file ") + name);
    }
    EXPECT_EQ(LogMessages(".err"), "Error read file \nError read file empty\nError read file missing\n");
    EXPECT_EQ(LogMessages(".log"), "Failed open file  AB\nFailed open file  missing\n");
}

TEST_F(Runtime, ReaderKeepsItsFileOpen)
{
    WriteBytes("a.txt", "first");
    CReadFile reader;
    std::string content;
    EXPECT_EQ(reader.ReadFile("a.txt", content, 0, 0, true), 5);
    WriteBytes("a.txt", "first and more");
    EXPECT_EQ(reader.ReadFile("a.txt", content, 0, 0, true), 5) << "the size is that of the opening";
    std::filesystem::remove("a.txt");
    EXPECT_EQ(reader.ReadFile("A.TXT", content, 1, 4, true), 4);
    EXPECT_EQ(content, "irst");
    EXPECT_EQ(reader.ReadFile("b.txt", content, 0, 0, true), 0);
    EXPECT_EQ(reader.ReadFile("a.txt", content, 0, 0, true), 5) << "a failed open leaves the held file";

    const std::string big(200000, 'x');
    WriteBytes("big", big);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 50; ++i) {
                std::string mine;
                EXPECT_EQ(reader.ReadFile("big", mine, 0, 0, true), 200000);
                EXPECT_TRUE(mine == big);
            }
        });
    for (std::thread& thread : threads) thread.join();
}

TEST_F(Runtime, LogsGoToDatedFiles)
{
    std::filesystem::create_directory("logs");
    WriteError("to the first working directory", nullptr);
    EXPECT_EQ(g_sLogPath, m_folder.Path());
    std::filesystem::current_path("logs");
    WriteError("there again", nullptr);
    std::filesystem::current_path("..");
    WriteLog("named", "logs/", false);
    WriteLog("named", "logs", true);
    g_bLog = false;
    WriteError("not written", nullptr);
    g_bLog = true;
    EXPECT_EQ(LogMessages(".err"), "to the first working directory\nthere again\n");
    EXPECT_EQ(LogMessages(".log"), "");
    EXPECT_EQ(LogMessages(".log", "logs"), "named\n");
    EXPECT_EQ(LogMessages(".err", "logs"), "named\n");
}

TEST_F(Runtime, LogsThatCannotBeWrittenArePrinted)
{
    testing::internal::CaptureStdout();
    WriteError("message", "/no/such");
    WriteLog("a second slash", "/no/such/", false);
    WriteLog(static_cast<FILE*>(nullptr), "to no stream");
    EXPECT_EQ(DigitsAsZero(testing::internal::GetCapturedStdout()),
              "[0000-00-00 00:00:00] message\nCannot write log file /no/such/00000000.err!\r\n"
              "[0000-00-00 00:00:00] a second slash\nCannot write log file /no/such//00000000.log!\r\n"
              "[0000-00-00 00:00:00] to no stream\nCannot write log file!\r\n");

    FILE* const stream = fopen("stream", "w");
    g_bLog = false;
    WriteLog(stream, "to a stream");
    EXPECT_EQ(ReadBytes("stream"), "") << "flushing is the caller's";
    fputs("and on", stream);
    fclose(stream);
    EXPECT_EQ(DigitsAsZero(ReadBytes("stream")), "[0000-00-00 00:00:00] to a stream\nand on");
}

TEST_F(Runtime, LogsAreInLocalTime)
{
    // At any hour one of the two is on another day than UTC.
    for (const char* zone : {"AHEAD-14", "BEHIND+12"}) {
        setenv("TZ", zone, 1);
        tzset();
        std::filesystem::create_directory(zone);
        WriteError("message", zone);
        EXPECT_EQ(LogMessages(".err", zone), "message\n");
    }
    unsetenv("TZ");
    tzset();
}

TEST_F(Runtime, LastErrorTextIsCopied)
{
    CBufferManager manager;  // frees the copies at the end of the test
    g_pBufManager = &manager;
    g_sLastErrorMessage = ZHONG_GBK;
    const char* const first = GetLastErrorMsg();
    const char* const second = GetLastErrorMsg();
    EXPECT_NE(first, second);
    EXPECT_STREQ(first, ZHONG_GBK);
    EXPECT_STREQ(second, ZHONG_GBK);
    g_nEncodeType = 2;
    EXPECT_STREQ(GetLastErrorMsg(), ZHONG_GBK);
    g_nEncodeType = 1;
    EXPECT_STREQ(GetLastErrorMsg(), ZHONG_UTF8);
    g_sLastErrorMessage.clear();
    EXPECT_STREQ(GetLastErrorMsg(), "");
}
}  // namespace
