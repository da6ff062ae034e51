// What memory, descriptors, disks and files do to the exported functions when they fail: the result of each,
// that the process goes on, and that nothing stays allocated or open.
#include <fcntl.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <memory>

#include "../Unit/Support.h"
#include "FastPaths.h"
#include "Faults.h"
#include "Utility.h"

namespace
{
const std::string GBK = "x\xD6\xD0\xCE\xC4", UTF8 = "x\xE4\xB8\xAD\xE6\x96\x87",
                  UTF16 = "x\0\x2D\x4E\x87\x65"_b;
// A line that detection has no doubt of, and what TQ_ToUtf8File makes of it.
const std::string LINE =
    "\xD6\xD0\xCE\xC4\xD7\xD6\xB7\xFB\xB1\xE0\xC2\xEB\xB5\xC4\xCE\xC4\xBC\xFE\xA3\xAC\r\n";
const std::string LINE_AS_UTF8 =
    "\xEF\xBB\xBF\xE4\xB8\xAD\xE6\x96\x87\xE5\xAD\x97\xE7\xAC\xA6\xE7\xBC\x96\xE7\xA0\x81\xE7\x9A\x84"
    "\xE6\x96\x87\xE4\xBB\xB6\xEF\xBC\x8C\r\n";
const std::string EARLIER = "the text of an earlier failure", KEPT = "what was there before";
char g_out[64];

std::function<long()> Call(size_t (*convert)(const char*, size_t, char*, size_t, int), std::string source,
                           int code)
{
    const size_t units = code == ENCODE_UNICODE ? source.size() / 2 : source.size();
    return [=] { return static_cast<long>(convert(source.c_str(), units, g_out, 0, code)); };
}

std::string Output(const std::function<long()>& call)
{
    const long size = call();
    return {g_out, static_cast<size_t>(size)};
}

// Loads the model if need be; then what every process may expect.
bool GoesOn()
{
    return (g_pstTrieTable != nullptr || TQ_Init(CODETRANS_SOURCE_DIRECTORY, nullptr) == 1) &&
           TQ_CodeDetect(LINE.data(), LINE.size()) == ENCODE_GBK &&
           Output(Call(TQ_ToUnicode, GBK, ENCODE_GBK)) == UTF16 &&
           Output(Call(TQ_ToUtf8, GBK, ENCODE_GBK)) == UTF8 &&
           Output(Call(TQ_ToGBK, UTF8, ENCODE_UTF8)) == GBK;
}

using Undo = std::function<void()>;

Undo Limit(__rlimit_resource resource, rlim_t soft)
{
    rlimit before;
    getrlimit(resource, &before);
    const rlimit limit = {soft, before.rlim_max};
    setrlimit(resource, &limit);
    return [=] { setrlimit(resource, &before); };
}

// No new descriptor beyond `more`.
Undo FewDescriptors(unsigned more)
{
    const int next = open("/dev/null", O_RDONLY);
    close(next);
    return Limit(RLIMIT_NOFILE, static_cast<rlim_t>(next) + more);
}

long OpenDescriptors()
{
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

class Faults : public testing::Test
{
protected:
    Faults()
    {
        // Loads what the C library keeps for ever, or would do without for ever if it could not read it now:
        // the time zone, the locale and its converter.
        EXPECT_EQ(TQ_ToUtf8File("missing", "out"), -1);
        EXPECT_TRUE(GoesOn());
        EXPECT_EQ(symlink("loop", "loop"), 0);
        Settle();
    }
    ~Faults() override { TQ_Exit(); }

    // What a call may leave behind, made the same again: the texts' own memory, files.
    void Settle()
    {
        UseForms(BestForms());
        TQ_Exit();
        for (std::string* text : {&g_sDefaultDir, &g_sDataPath, &g_sLogPath, &g_sLastErrorMessage})
            std::string().swap(*text);
        EXPECT_EQ(TQ_Init(CODETRANS_SOURCE_DIRECTORY, nullptr), 1);
        g_sLogPath = m_folder.Path();
        g_sLastErrorMessage = EARLIER;
        WriteBytes("in", LINE);
        WriteBytes("out", KEPT);
        std::filesystem::remove("new");
    }
    // The library keeps each copy for the life of the process.
    static std::string LastError() { return std::unique_ptr<const char[]>(TQ_GetLastErrorMsg()).get(); }

    TempFolder m_folder;
};

struct Operation {
    const char* what;
    std::function<long()> run;
    long result, failure;        // the same where nothing can fail
    std::string file, written;   // what it then holds; on failure, what it held before
    Forms forms = Forms::PLAIN;  // most fast forms need no memory
};

long LastErrorSize()
{
    const char* const text = TQ_GetLastErrorMsg();
    const auto size = static_cast<long>(strlen(text));
    if (size > 0) delete[] text;
    return size;
}

long Load()
{
    TQ_Exit();
    return TQ_Init(CODETRANS_SOURCE_DIRECTORY, nullptr);
}

long WideToUtf8InPlace()
{
    memset(g_out, 0, sizeof g_out);
    return static_cast<long>(TQ_ToUtf8(g_out, 9, g_out, 0, ENCODE_UNICODE));
}

const Operation OPERATIONS[] = {
    {"load", Load, 1, -2, "", ""},
    {"load nothing", [] { return TQ_Init("no-such-folder", nullptr); }, -2, -2, "", ""},
    {"last error", LastErrorSize, 30, 0, "", ""},
    {"detect", [] { return TQ_CodeDetect(LINE.data(), LINE.size()); }, ENCODE_GBK, ENCODE_GBK, "", ""},
    {"GBK to UTF-16", Call(TQ_ToUnicode, GBK, ENCODE_GBK), 6, 6, "", ""},
    {"UTF-8 to wide", Call(TQ_ToUnicode, UTF8, ENCODE_UTF8), 12, 12, "", ""},
    {"GBK to UTF-8", Call(TQ_ToUtf8, GBK, ENCODE_GBK), 7, 0, "", ""},
    {"faulty GBK to UTF-8", Call(TQ_ToUtf8, GBK + '\xFF', ENCODE_GBK), 7, 0, "", "", BestForms()},
    {"wide to UTF-8 in place", WideToUtf8InPlace, 9, 0, "", ""},
    {"UTF-8 to GBK", Call(TQ_ToGBK, UTF8, ENCODE_UTF8), 5, 0, "", ""},
    {"UTF-16 to GBK", Call(TQ_ToGBK, UTF16, ENCODE_UNICODE), 3, 3, "", ""},
    {"file to UTF-8", [] { return TQ_ToUtf8File("in", "out"); }, 32, -1, "out", LINE_AS_UTF8},
    {"file in place", [] { return TQ_ToUtf8File("in", "in"); }, 32, -1, "in", LINE_AS_UTF8},
    {"file to GBK", [] { return TQ_ToGBKFile("in", "out"); }, 22, -1, "out", LINE},
    // May be left empty, which reads as one that is not there.
    {"to a new file", [] { return TQ_ToUtf8File("in", "new"); }, 32, -1, "new", LINE_AS_UTF8},
    {"no such file", [] { return TQ_ToUnicodeFile("none", "out"); }, -1, -1, "out", KEPT},
};

// Whether an allocation was refused; `failed` becomes true if the operation then failed.
bool RunWithout(long first, bool andLater, const Operation& operation, bool& failed)
{
    const std::string before = operation.file.empty() ? "" : ReadBytes(operation.file);
    UseForms(operation.forms);
    FailAllocations(first, andLater);
    const long result = operation.run();
    const bool met = AllocateAgain() > 0, succeeded = result == operation.result;
    EXPECT_TRUE(succeeded || (met && result == operation.failure)) << result;
    EXPECT_TRUE(operation.file.empty() ||
                ReadBytes(operation.file) == (succeeded ? operation.written : before));
    // One block refused leaves room for the message.
    EXPECT_TRUE(succeeded || andLater || operation.file.empty() || g_sLastErrorMessage != EARLIER);
    EXPECT_TRUE(GoesOn());
    failed = failed || !succeeded;
    return met;
}

TEST_F(Faults, EachAllocationMayFail)
{
    for (const Operation& operation : OPERATIONS) {
        bool met = true, failed = false;
        for (long first = 1; met; ++first)
            for (const bool andLater : {false, true}) {
                Settle();
                const long descriptors = OpenDescriptors(), blocks = LiveBlocks();
                met = RunWithout(first, andLater, operation, failed);
                Settle();
                ASSERT_TRUE(OpenDescriptors() == descriptors && LiveBlocks() == blocks && !HasFailure())
                    << operation.what << ", allocation " << first << (andLater ? " and later" : "");
            }
        EXPECT_EQ(failed, operation.failure != operation.result) << operation.what;
    }
}

Undo ReadBy(std::function<size_t(size_t)> onRead)
{
    g_hooks.fread = std::move(onRead);
    return [] { g_hooks.fread = nullptr; };
}

Undo DeliverOnly(size_t count)
{
    return ReadBy([=](size_t asked) { return std::min(asked, count); });
}

Undo Nothing()
{
    return [] {};
}

Undo CutWhileRead()
{
    return ReadBy([](size_t asked) { return std::filesystem::resize_file("in", 20), asked; });
}

struct FileFault {
    const char* what;
    std::function<Undo()> arrange;
    std::string source, destination;
    long result;
    std::string written = KEPT;  // what "out" then holds
    std::string error = EARLIER;
} const FILE_FAULTS[] = {
    {"no file", Nothing, "none", "out", -1, KEPT, "Error read file none"},
    {"an empty file", Nothing, "/dev/null", "out", -1, KEPT, "Error read file /dev/null"},
    {"a folder as source", Nothing, ".", "out", -1},
    {"a folder as destination", Nothing, "in", ".", -1, KEPT, "Fail writing file ."},
    {"below a file", Nothing, "in/in", "out", -1, KEPT, "Error read file in/in"},
    {"to below a file", Nothing, "in", "in/out", -1, KEPT, "Fail writing file in/out"},
    {"a link to itself", Nothing, "loop", "out", -1, KEPT, "Error read file loop"},
    {"a file that has no size", Nothing, "/proc/self/mem", "out", -1, KEPT, "Error read file /proc/self/mem"},
    {"a read error at once", [] { return DeliverOnly(0); }, "in", "out", -1},
    {"a read error later", [] { return DeliverOnly(20); }, "in", "out", 30, LINE_AS_UTF8.substr(0, 33)},
    {"a file that is cut while it is read", CutWhileRead, "in", "out", 30, LINE_AS_UTF8.substr(0, 33)},
    {"a full disk", Nothing, "in", "/dev/full", 32},
    {"a disk that fills up", [] { return Limit(RLIMIT_FSIZE, 6); }, "in", "out", 32,
     "\xEF\xBB\xBF\xE4\xB8\xAD"},
    {"no descriptor", [] { return FewDescriptors(0); }, "in", "out", -1, KEPT, "Error read file in"},
    {"one descriptor", [] { return FewDescriptors(1); }, "in", "out", 32, LINE_AS_UTF8},
};

TEST_F(Faults, FilesThatCannotBeReadOrWritten)
{
    signal(SIGXFSZ, SIG_IGN);  // so that a full disk is an error
    const long descriptors = OpenDescriptors();
    for (const FileFault& fault : FILE_FAULTS) {
        SCOPED_TRACE(fault.what);
        const Undo undo = fault.arrange();
        EXPECT_EQ(TQ_ToUtf8File(fault.source.c_str(), fault.destination.c_str()), fault.result);
        undo();
        EXPECT_EQ(LastError(), fault.error);
        EXPECT_EQ(ReadBytes("out"), fault.written);
        EXPECT_TRUE(GoesOn());
        EXPECT_EQ(OpenDescriptors(), descriptors);
        Settle();
    }
}

// A reader that threads share does not wait for ever for an open that ran out of memory, nor lose its files.
TEST_F(Faults, ASharedReaderSurvivesAShortage)
{
    const std::string name = "a name of more than the fifteen characters that a string holds itself";
    WriteBytes(name, "other");
    const long descriptors = OpenDescriptors();
    bool met = true;
    for (long first = 1; met; ++first) {
        CReadFile reader;
        std::string content;
        FailAllocations(first, false);
        try {
            reader.ReadFile("in", content, 0, 0, true);
            reader.ReadFile(name.c_str(), content, 0, 0, true);
        } catch (const std::bad_alloc&) {
        }
        met = AllocateAgain() > 0;
        EXPECT_TRUE(reader.ReadFile("in", content, 0, 0, true) == 22 && content == LINE);
    }
    EXPECT_EQ(OpenDescriptors(), descriptors);
}
}  // namespace
