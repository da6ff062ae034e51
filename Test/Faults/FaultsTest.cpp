// What memory, descriptors, disks and files do to the exported functions when they fail: the result of each,
// that the process goes on, and that nothing stays allocated or open.
#include "Faults.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <memory>

#include "../Unit/Support.h"
#include "FastPaths.h"
#include "Utility.h"

namespace
{
const std::string GBK = "x\xD6\xD0\xCE\xC4", UTF8 = "x\xE4\xB8\xAD\xE6\x96\x87",
                  UTF16 = "x\0\x2D\x4E\x87\x65"_b;
const std::string MARK8 = "\xEF\xBB\xBF", MARK16 = "\xFF\xFE";
// Words enough for detection.
const std::string LINE =
    "\xD6\xD0\xCE\xC4\xD7\xD6\xB7\xFB\xB1\xE0\xC2\xEB\xB5\xC4\xCE\xC4\xBC\xFE\xA3\xAC\r\n";
const std::string LINE_UTF8 =
    "\xE4\xB8\xAD\xE6\x96\x87\xE5\xAD\x97\xE7\xAC\xA6\xE7\xBC\x96\xE7\xA0\x81\xE7\x9A\x84\xE6\x96\x87\xE4\xBB"
    "\xB6\xEF\xBC\x8C\r\n";
const char KEPT[] = "what was there before";

size_t OpenDescriptors()
{
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

std::string LastError()
{
    // The library keeps each copy for the life of the process.
    return std::unique_ptr<const char[]>(TQ_GetLastErrorMsg()).get();
}

std::string Converted(size_t (*convert)(const char*, size_t, char*, size_t, int), const std::string& text,
                      int code)
{
    char out[64];
    return {out, convert(text.c_str(), text.size(), out, 0, code)};
}

// Loads the model if need be; then what every process may expect.
bool GoesOn()
{
    return (g_pstTrieTable != nullptr || TQ_Init(CODETRANS_SOURCE_DIRECTORY, nullptr) == 1) &&
           TQ_CodeDetect(LINE.data(), LINE.size()) == ENCODE_GBK &&
           Converted(TQ_ToUnicode, GBK, ENCODE_GBK) == UTF16 &&
           Converted(TQ_ToUtf8, GBK, ENCODE_GBK) == UTF8 && Converted(TQ_ToGBK, UTF8, ENCODE_UTF8) == GBK;
}

// What `body` returns in a process of its own; -1 if that ends badly.
int InChild(const std::function<int()>& body)
{
    const pid_t child = fork();
    if (child == 0) _exit(body());
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
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

class Faults : public testing::Test
{
protected:
    Faults()
    {
        g_sLogPath = m_folder.Path();
        // Loads what the C library keeps for ever, or would do without for ever if it could not read it now:
        // the time zone, the locale and its converter.
        EXPECT_EQ(TQ_ToUtf8File("missing", "out"), -1);
        EXPECT_TRUE(GoesOn());
        Settle();
    }
    ~Faults() override
    {
        UseForms(BestForms());
        g_onRead = nullptr;
        TQ_Exit();
    }

    // What a call may leave behind, made the same again: the texts' own memory, files.
    void Settle()
    {
        TQ_Exit();
        EXPECT_EQ(TQ_Init(CODETRANS_SOURCE_DIRECTORY, nullptr), 1);
        g_sLastErrorMessage = "the text of an earlier failure";
        WriteBytes("in", LINE);
        WriteBytes("out", KEPT);
    }

    TempFolder m_folder;
};

struct Operation {
    const char* what;
    std::function<long(char*)> run;
    long result, failure;  // the same where there is nothing to fail
    std::string file, written;
    Forms forms = Forms::PLAIN;  // most fast forms need no memory
};

const Operation OPERATIONS[] = {
    {"load",
     [](char*) {
         TQ_Exit();
         return TQ_Init(CODETRANS_SOURCE_DIRECTORY, nullptr);
     },
     1, -2, "", ""},
    {"load nothing", [](char*) { return TQ_Init("no-such-folder", nullptr); }, -2, -2, "", ""},
    {"last error",
     [](char*) {
         const char* const text = TQ_GetLastErrorMsg();
         const auto size = static_cast<long>(strlen(text));
         if (size > 0) delete[] text;
         return size;
     },
     30, 0, "", ""},
    {"detect", [](char*) { return TQ_CodeDetect(LINE.data(), LINE.size()); }, ENCODE_GBK, ENCODE_GBK, "", ""},
    {"GBK to UTF-16", [](char* out) { return long(TQ_ToUnicode(GBK.data(), 5, out, 9, ENCODE_GBK)); }, 6, 6,
     "", ""},
    {"UTF-8 to wide", [](char* out) { return long(TQ_ToUnicode(UTF8.data(), 7, out, 0, ENCODE_UTF8)); }, 12,
     12, "", ""},
    {"GBK to UTF-8", [](char* out) { return long(TQ_ToUtf8(GBK.data(), 5, out, 0, ENCODE_GBK)); }, 7, 0, "",
     ""},
    {"faulty GBK to UTF-8", [](char* out) { return long(TQ_ToUtf8("x\xD6\xD0\xFF", 4, out, 0, ENCODE_GBK)); },
     4, 0, "", "", BestForms()},
    {"wide to UTF-8, in place",
     [](char* out) {
         return long(TQ_ToUtf8(static_cast<char*>(memset(out, 0, 60)), 9, out, 0, ENCODE_UNICODE));
     },
     9, 0, "", ""},
    {"UTF-8 to GBK", [](char* out) { return long(TQ_ToGBK(UTF8.data(), 7, out, 0, ENCODE_UTF8)); }, 5, 0, "",
     ""},
    {"UTF-16 to GBK", [](char* out) { return long(TQ_ToGBK(UTF16.data(), 3, out, 0, ENCODE_UNICODE)); }, 3, 3,
     "", ""},
    {"file to UTF-8", [](char*) { return TQ_ToUtf8File("in", "out"); }, 32, -1, "out", MARK8 + LINE_UTF8},
    {"file in place", [](char*) { return TQ_ToUtf8File("in", "in"); }, 32, -1, "in", MARK8 + LINE_UTF8},
    {"file to GBK", [](char*) { return TQ_ToGBKFile("in", "out"); }, 22, -1, "out", LINE},
    {"no such file", [](char*) { return TQ_ToGBKFile("none", "out"); }, -1, -1, "out", KEPT},
};

// Whether a refusal was met and, in `failed`, what came of it.
bool RunWithout(long first, bool andLater, const Operation& operation, bool& failed)
{
    const std::string before = operation.file.empty() ? "" : ReadBytes(operation.file);
    char out[64];
    UseForms(operation.forms);
    auto failing = std::make_unique<FailingAllocations>(first, andLater);
    const long result = operation.run(out);
    const bool met = failing->Refused() > 0;
    failing.reset();
    EXPECT_TRUE(result == operation.result || (met && result == operation.failure)) << result;
    if (!operation.file.empty()) {
        EXPECT_EQ(ReadBytes(operation.file), result == operation.result ? operation.written : before);
    }
    EXPECT_TRUE(GoesOn());
    failed = failed || result != operation.result;
    return met;
}

TEST_F(Faults, EachAllocationMayFail)
{
    for (const Operation& operation : OPERATIONS) {
        bool met = true, failed = false;
        for (long first = 1; met; ++first)
            for (const bool andLater : {false, true}) {
                Settle();
                const size_t descriptors = OpenDescriptors();
                const long blocks = LiveBlocks();
                met = RunWithout(first, andLater, operation, failed);
                Settle();
                ASSERT_TRUE(OpenDescriptors() == descriptors && LiveBlocks() == blocks && !HasFailure())
                    << operation.what << ", allocation " << first << (andLater ? " and later: " : ": ")
                    << LiveBlocks() - blocks << " blocks more";
            }
        EXPECT_EQ(failed, operation.failure != operation.result) << operation.what;
    }
}

Undo ReadBy(std::function<size_t(size_t)> onRead)
{
    g_onRead = std::move(onRead);
    return [] { g_onRead = nullptr; };
}

Undo DeliverOnly(size_t count)
{
    return ReadBy([count](size_t asked) { return std::min(asked, count); });
}

Undo Nothing()
{
    return [] {};
}

struct FileFault {
    const char* what;
    std::function<Undo()> arrange;
    std::string source, destination;
    long result;
    std::string lastError, written;  // "": stays as it was; what the destination then holds
};

const std::string TOO_LONG(300, 'n');

const FileFault FILE_FAULTS[] = {
    {"a folder as source", Nothing, ".", "out", -1, "", KEPT},
    {"a folder as destination", Nothing, "in", ".", -1, "Fail writing file .", ""},
    {"below a file", Nothing, "in/in", "out", -1, "Error read file in/in", KEPT},
    {"to below a file", Nothing, "in", "in/out", -1, "Fail writing file in/out", ""},
    {"a link to itself",
     [] {
         EXPECT_EQ(symlink("loop", "loop"), 0);
         return Nothing();
     },
     "loop", "out", -1, "Error read file loop", KEPT},
    {"a name too long", Nothing, "in", TOO_LONG, -1, "Fail writing file " + TOO_LONG, ""},
    {"a file that has no size", Nothing, "/proc/self/mem", "out", -1, "Error read file /proc/self/mem", KEPT},
    {"an empty pipe",
     [] {
         mkfifo("pipe", 0600);
         const int writer = open("pipe", O_RDWR | O_CLOEXEC);
         return [writer] { close(writer); };
     },
     "pipe", "out", -1, "Error read file pipe", KEPT},
    {"a read error at once", [] { return DeliverOnly(0); }, "in", "out", -1, "", KEPT},
    {"a read error later", [] { return DeliverOnly(20); }, "in", "out", 30, "",
     MARK8 + LINE_UTF8.substr(0, 30)},
    {"a file that shrinks while it is read",
     [] {
         return ReadBy([](size_t asked) {
             std::filesystem::resize_file("in", 20);
             return asked;
         });
     },
     "in", "out", 30, "", MARK8 + LINE_UTF8.substr(0, 30)},
    {"a disk that is full", Nothing, "in", "/dev/full", 32, "", ""},
    {"a disk that fills up", [] { return Limit(RLIMIT_FSIZE, 10); }, "in", "out", 32, "",
     MARK8 + LINE_UTF8.substr(0, 7)},
    {"no descriptor", [] { return FewDescriptors(0); }, "in", "out", -1, "Error read file in", KEPT},
    {"one descriptor", [] { return FewDescriptors(1); }, "in", "out", 32, "", MARK8 + LINE_UTF8},
    {"no log",
     [] {
         g_sLogPath = "in";
         return Nothing();
     },
     "none", "out", -1, "Error read file none", KEPT},
};

TEST_F(Faults, FilesThatCannotBeReadOrWritten)
{
    signal(SIGXFSZ, SIG_IGN);  // a full disk shows as an error
    const size_t descriptors = OpenDescriptors();
    for (const FileFault& fault : FILE_FAULTS) {
        SCOPED_TRACE(fault.what);
        const Undo undo = fault.arrange();
        EXPECT_EQ(TQ_ToUtf8File(fault.source.c_str(), fault.destination.c_str()), fault.result);
        undo();
        g_sLogPath = m_folder.Path();
        EXPECT_EQ(LastError(), fault.lastError.empty() ? "the text of an earlier failure" : fault.lastError);
        if (fault.destination == "out") {
            EXPECT_EQ(ReadBytes("out"), fault.written);
        }
        EXPECT_TRUE(GoesOn());
        EXPECT_EQ(OpenDescriptors(), descriptors);
        Settle();
    }
}

TEST_F(Faults, WithoutAWorkingDirectory)
{
    const auto holds = [&] {
        std::filesystem::create_directory("gone");
        std::filesystem::current_path("gone");
        std::filesystem::remove(m_folder.Path("gone"));
        if (TQ_ToUtf8File(m_folder.Path("in").c_str(), m_folder.Path("out").c_str()) != 32) return false;
        g_sLogPath.clear();
        if (geteuid() == 0 && setuid(65534) != 0) return false;  // the log's place is / now
        return TQ_Init(nullptr, nullptr) == -2 && LastError() == "/Data/CodeTrans.model load failure!" &&
               TQ_ToUtf8File("in", "out") == -1 && LastError() == "Error read file in" && GoesOn();
    };
    EXPECT_EQ(InChild([&] { return holds() ? 0 : 1; }), 0);
}

TEST_F(Faults, ModelsThatCannotBeRead)
{
    const size_t descriptors = OpenDescriptors();
    std::filesystem::create_directories("place/Data");
    const std::string model = "place/Data/CodeTrans.model", whole = ReadBytes(ModelPath());
    const auto fails = [&] {
        EXPECT_EQ(TQ_Init("place", nullptr), -2);
        EXPECT_EQ(LastError(), model + " load failure!");
    };
    // One that cannot be opened leaves the earlier one in use.
    for (const char* target : {"missing", "CodeTrans.model", "CodeTrans.model/below"}) {
        std::filesystem::create_symlink(target, model);
        fails();
        std::filesystem::remove(model);
        EXPECT_EQ(TQ_CodeDetect(LINE.data(), LINE.size()), ENCODE_GBK);
    }
    WriteBytes(model, whole);
    {
        const Undo undo = FewDescriptors(0);
        fails();
        undo();
    }
    EXPECT_TRUE(GoesOn());
    for (int read = 1; read <= 4; ++read) {
        TQ_Exit();
        int reads = 0;
        g_onRead = [&](size_t asked) { return ++reads == read ? asked - 1 : asked; };
        fails();
        g_onRead = nullptr;
        EXPECT_EQ(TQ_CodeDetect(LINE.data(), LINE.size()), ENCODE_UNKNOWN) << "the model of a failed load";
        EXPECT_TRUE(GoesOn());
    }
    // While it is loaded, its file may be replaced, written over and cut.
    TQ_Exit();
    ASSERT_EQ(TQ_Init("place", nullptr), 1);
    for (const auto& change : std::initializer_list<std::function<void()>>{
             [&] {
                 std::filesystem::copy_file(ModelPath(), "other");
                 std::filesystem::rename("other", model);
             },
             [&] { WriteBytes(model, std::string(whole.size(), '\xFF')); },
             [&] { std::filesystem::resize_file(model, 1000); }}) {
        change();
        EXPECT_TRUE(GoesOn());
    }
    TQ_Exit();
    fails();
    EXPECT_TRUE(GoesOn());
    EXPECT_EQ(OpenDescriptors(), descriptors);
}

// Nor may it wait for ever for an open that ran out of memory.
TEST_F(Faults, ASharedReaderSurvivesAShortage)
{
    const std::string name = "a name of more than the fifteen characters that a string holds itself";
    WriteBytes(name, "other");
    bool met = true;
    for (long first = 1; met; ++first) {
        CReadFile reader;
        std::string content;
        auto failing = std::make_unique<FailingAllocations>(first, false);
        try {
            reader.ReadFile("in", content, 0, 0, true);
            reader.ReadFile(name.c_str(), content, 0, 0, true);
        } catch (const std::bad_alloc&) {
        }
        met = failing->Refused() > 0;
        failing.reset();
        EXPECT_EQ(reader.ReadFile("in", content, 0, 0, true), 22);
        EXPECT_EQ(content, LINE);
    }
}
}  // namespace
