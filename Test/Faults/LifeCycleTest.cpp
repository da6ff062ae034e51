// What the life of the library leaves in the process, to the block and the call: tables, names, files,
// returned buffers. Seen through an allocator that counts and calls that tell.
#include <fcntl.h>

#include <memory>

#include "../Unit/Support.h"
#include "Faults.h"
#include "Utility.h"

namespace
{
class LifeCycle : public testing::Test
{
protected:
    LifeCycle() { g_sLogPath.clear(); }
    ~LifeCycle() override
    {
        g_hooks = {};
        g_sLogPath.clear();
        TQ_Exit();
    }
    TempFolder m_folder;
};

// A caller who still has a pointer to them may go on reading, and frees them if anybody does.
TEST_F(LifeCycle, TablesOfAnEarlierLoadStayAllocated)
{
    std::vector<std::unique_ptr<unsigned short[]>> mappings;
    std::vector<std::unique_ptr<TrieNode[]>> tries;
    const auto loadAndKeep = [&] {
        EXPECT_EQ(TQ_Init(CODETRANS_SOURCE_DIRECTORY, nullptr), 1);
        mappings.emplace_back(g_mapGBKToUnicode);
        mappings.emplace_back(g_mapBig5ToUnicode);
        tries.emplace_back(g_pstTrieTable);
        return LiveBlocks();
    };
    const std::string model = ReadBytes(ModelPath());
    for (const size_t size : {2 * MAPPING_ENTRIES, 4 * MAPPING_ENTRIES, 4 * MAPPING_ENTRIES + 20U}) {
        const long blocks = loadAndKeep();
        EXPECT_EQ(CodeTrans_Initialize("missing"), -1);
        EXPECT_EQ(TQ_CodeDetect("\xD6\xD0\xCE\xC4\xD7\xD6", 6), ENCODE_GBK) << "by the earlier ones";
        WriteBytes("cut", model.substr(0, size));
        EXPECT_LT(CodeTrans_Initialize("cut"), 0);
        EXPECT_TRUE(!g_mapGBKToUnicode && !g_mapBig5ToUnicode && !g_pstTrieTable);
        EXPECT_EQ(LiveBlocks(), blocks) << "nothing of the new load, all of the earlier one";
        EXPECT_EQ(memcmp(tries.back().get(), model.data() + 4 * MAPPING_ENTRIES + 4, 16000), 0);
    }
    const long blocks = loadAndKeep();
    EXPECT_EQ(TQ_Init(CODETRANS_SOURCE_DIRECTORY, nullptr), 1);
    EXPECT_EQ(LiveBlocks(), blocks + 3);
}

TEST_F(LifeCycle, NamesAreLookedForByExistenceTheSourceFirst)
{
    std::string asked;
    g_hooks.access = [&](const char* name, int mode) { (asked += name) += " ?"[mode == F_OK]; };
    EXPECT_EQ(TQ_ToUtf8File("source", "destination"), -1);
    EXPECT_EQ(asked, "source?source?destination?destination?") << "as given, then in GBK";
    asked.clear();
    EXPECT_EQ(TQ_Init("folder", nullptr), -2);
    EXPECT_EQ(asked, "folder?folder?");
}

TEST_F(LifeCycle, DirectoryIsWhatTheBufferHolds)
{
    for (const char* const held : {"", "a/part"}) {
        g_hooks.getcwd = [=](char* buffer, size_t size) {
            EXPECT_EQ(size, 1000U);
            strcpy(buffer, held);
            return static_cast<char*>(nullptr);
        };
        g_bLog = *held != 0;  // else the log's place is / now
        EXPECT_EQ(TQ_Init(nullptr, nullptr), -2);
        EXPECT_EQ(g_sDefaultDir, held);
        EXPECT_EQ(g_sLastErrorMessage, std::string(held) + "/Data/CodeTrans.model load failure!");
    }
    EXPECT_EQ(g_sLogPath, "a/part");
}

TEST_F(LifeCycle, AFileWhoseStatusFailsIsReadAsFarAsAsked)
{
    WriteBytes("file", "0123");
    std::string content;
    g_hooks.fstat = [] { return -1; };
    const long whole = ReadFile("file", content, 0, 0, true), part = ReadFile("file", content, 1, 2, false);
    g_hooks.fstat = nullptr;
    EXPECT_EQ(whole, 0);
    EXPECT_EQ(part, 2);
    EXPECT_EQ(content, "12");
    const std::string failed = "_fstat( _fileno(m_fpFileRead) failed\nfile\n";
    EXPECT_EQ(LogMessages(".err"), failed + "Error read file file\n" + failed);
}

// ---- The buffer manager

constexpr long BATCH = 10000, THRESHOLD = 20000;

// Returns the last one.
char* Register(CBufferManager& manager, long count)
{
    while (--count > 0) manager.AddBuffer(new char('x'));
    return manager.AddBuffer(new char('x'));
}

TEST_F(LifeCycle, BuffersAreFreedInBatchesOnceThereAreTooMany)
{
    const long before = LiveBlocks();
    {
        CBufferManager manager;
        char* const own = new char[1]();
        EXPECT_EQ(manager.AddBuffer(own), own);
        EXPECT_EQ(manager.AddBuffer(static_cast<char*>(nullptr)), nullptr);
        const std::string text = "text";
        const char* const copy = manager.AddBuffer(text.c_str());
        EXPECT_TRUE(copy != text.c_str() && copy == text);
        Register(manager, THRESHOLD - 3);

        const long full = LiveBlocks();
        manager.ReleaseBuf(false);
        const char* const later = Register(manager, 1);
        EXPECT_EQ(LiveBlocks(), full + 1) << "20,000 are not yet too many";
        Register(manager, 1);
        EXPECT_EQ(LiveBlocks(), full + 2 - (BATCH - 1)) << "one more, and 10,000 go, of which one was null";
        EXPECT_EQ(*later, 'x');
        Register(manager, BATCH);
        EXPECT_EQ(LiveBlocks(), full + 3 - BATCH) << "and again";
        g_pBufManager = &manager;
        GetLastErrorMsg();
        g_pBufManager = nullptr;
    }
    EXPECT_EQ(LiveBlocks(), before);
}

TEST_F(LifeCycle, ReleasingAllLeavesThePlacesOfWhatItFreed)
{
    CBufferManager manager;
    manager.ReleaseBuf(true);
    Register(manager, 15000);
    const long full = LiveBlocks();
    manager.ReleaseBuf(true);
    EXPECT_EQ(LiveBlocks(), full - 15000);
    Register(manager, 1);
    // Up to 20,000 places, then as many as the first batch of them leaves room for.
    long registered = 0;
    for (const long held = LiveBlocks(); LiveBlocks() == held && registered < 3 * THRESHOLD; ++registered)
        manager.AddBuffer(static_cast<char*>(nullptr));
    EXPECT_EQ(registered, 5001 + BATCH);
}

// A pass over `count` buffers during which, when it asks for the mutex for the `which`th time, another thread
// would do something. How many blocks there are then more.
long PassWith(long count, int which, const std::function<void(CBufferManager&)>& other)
{
    CBufferManager manager;
    Register(manager, count);
    const long full = LiveBlocks();
    g_hooks.pthread_mutex_lock = [&, locks = 0]() mutable {
        if (++locks != which) return;
        const Hooks hooks = std::exchange(g_hooks, {});
        other(manager);
        g_hooks = hooks;
    };
    manager.ReleaseBuf(false);
    g_hooks = {};
    return LiveBlocks() - full;
}

TEST_F(LifeCycle, APassLetsOthersIn)
{
    const auto one = [](CBufferManager& manager) { Register(manager, 1); };
    EXPECT_EQ(PassWith(THRESHOLD, 2, one), 1 - BATCH) << "one came after the first look, before the second";
    for (const int which : {2, 3, 5000})
        EXPECT_EQ(PassWith(THRESHOLD + 1, which,
                           [&](CBufferManager& manager) {
                               const long before = LiveBlocks();
                               one(manager);
                               EXPECT_EQ(LiveBlocks(), before + 1) << "a pass in progress is the only one";
                           }),
                  1 - BATCH);
    const auto all = [](CBufferManager& manager) { manager.ReleaseBuf(true); };
    EXPECT_EQ(PassWith(THRESHOLD + 1, 5000, all), -THRESHOLD - 1) << "but all may be released meanwhile";
}
}  // namespace
