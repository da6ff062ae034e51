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
    const std::string model = ReadBytes(ModelPath());
    std::vector<std::unique_ptr<unsigned short[]>> mappings;
    std::vector<std::unique_ptr<TrieNode[]>> tries;
    for (const size_t size : {4 * MAPPING_ENTRIES / 2, 4 * MAPPING_ENTRIES, 4 * MAPPING_ENTRIES + 20U}) {
        ASSERT_EQ(CodeTrans_Initialize(ModelPath().c_str()), 0);
        mappings.emplace_back(g_mapGBKToUnicode);
        mappings.emplace_back(g_mapBig5ToUnicode);
        tries.emplace_back(g_pstTrieTable);
        const long blocks = LiveBlocks();
        EXPECT_EQ(CodeTrans_Initialize("missing"), -1);
        EXPECT_EQ(g_pstTrieTable, tries.back().get());
        EXPECT_EQ(TQ_CodeDetect("\xD6\xD0\xCE\xC4\xD7\xD6", 6), ENCODE_GBK) << "as before";

        WriteBytes("cut", model.substr(0, size));
        EXPECT_LT(CodeTrans_Initialize("cut"), 0);
        EXPECT_TRUE(g_mapGBKToUnicode == nullptr && g_mapBig5ToUnicode == nullptr &&
                    g_pstTrieTable == nullptr);
        EXPECT_EQ(LiveBlocks(), blocks) << "nothing of the new load, all of the earlier one";
        EXPECT_EQ(memcmp(tries.back().get(), model.data() + 4 * MAPPING_ENTRIES + 4, 1000 * sizeof(TrieNode)),
                  0);
    }
    ASSERT_EQ(CodeTrans_Initialize(ModelPath().c_str()), 0);
    const long blocks = LiveBlocks();
    mappings.emplace_back(g_mapGBKToUnicode);
    mappings.emplace_back(g_mapBig5ToUnicode);
    tries.emplace_back(g_pstTrieTable);
    ASSERT_EQ(CodeTrans_Initialize(ModelPath().c_str()), 0);
    EXPECT_EQ(LiveBlocks(), blocks + 3);
    EXPECT_NE(g_pstTrieTable, tries.back().get());
    CodeTrans_Destroy();
    EXPECT_EQ(LiveBlocks(), blocks);
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
    g_hooks.getcwd = [](char* buffer, size_t size) {
        EXPECT_EQ(size, 1000U);
        strcpy(buffer, "a/part");
        return static_cast<char*>(nullptr);
    };
    EXPECT_STREQ(GetDefaultPath(nullptr), "a/part");
    g_hooks.getcwd = nullptr;
    // As long as it may be, and one byte longer.
    std::string path = m_folder.Path();
    for (size_t size = 250; path.size() < 999; size = std::min<size_t>(250, 999 - path.size() - 1)) {
        path += '/' + std::string(size, 'd');
        std::filesystem::create_directory(path);
    }
    for (const std::string& deep : {path, path + 'd'}) {
        std::filesystem::create_directory(deep);
        std::filesystem::current_path(deep);
        EXPECT_EQ(GetDefaultPath(nullptr), deep.size() < 1000 ? deep : "");
    }
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

// ---- The buffer manager. A letter stands for its block.

constexpr long BATCH = 10000, THRESHOLD = 20000;

std::vector<char*> Register(CBufferManager& manager, long count)
{
    std::vector<char*> blocks;
    for (long i = 0; i < count; ++i) blocks.push_back(manager.AddBuffer(new char('x')));
    return blocks;
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
        const std::vector<char*> blocks = Register(manager, THRESHOLD - 3);

        const long full = LiveBlocks();
        manager.ReleaseBuf(false);
        Register(manager, 1);
        EXPECT_EQ(LiveBlocks(), full + 1) << "20,000 are not yet too many";
        EXPECT_EQ(*copy, 't');
        Register(manager, 1);
        EXPECT_EQ(LiveBlocks(), full + 2 - (BATCH - 1)) << "one more, and 10,000 go, of which one was null";
        EXPECT_EQ(*blocks[BATCH - 3], 'x') << "the later ones stay";
        Register(manager, THRESHOLD - BATCH - 1);
        EXPECT_EQ(LiveBlocks(), full + 2 - (BATCH - 1) + THRESHOLD - BATCH - 1);
        Register(manager, 1);
        EXPECT_EQ(LiveBlocks(), full + 2 - (BATCH - 1) + THRESHOLD - BATCH - BATCH) << "and again";
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
    // Places 15,000 to 20,000, then those that the first batch of places leaves.
    const long held = LiveBlocks();
    long registered = 0;
    while (LiveBlocks() == held && registered < 3 * THRESHOLD) {
        manager.AddBuffer(static_cast<char*>(nullptr));
        ++registered;
    }
    EXPECT_EQ(registered, 5001 + BATCH);
}

// What another thread does is done in its place when the mutex is asked for.
TEST_F(LifeCycle, APassLetsOthersIn)
{
    const auto passWith = [](CBufferManager& manager, int which, const std::function<void()>& other) {
        g_hooks.pthread_mutex_lock = [&, locks = 0]() mutable {
            if (++locks != which) return;
            const Hooks hooks = std::exchange(g_hooks, {});
            other();
            g_hooks = hooks;
        };
        manager.ReleaseBuf(false);
        g_hooks = {};
    };
    {
        CBufferManager manager;
        Register(manager, THRESHOLD);
        const long full = LiveBlocks();
        passWith(manager, 2, [&] { Register(manager, 1); });
        EXPECT_EQ(LiveBlocks(), full + 1 - BATCH) << "one more came after the first look, before the second";
    }
    for (const int which : {2, 3, 5000}) {
        CBufferManager manager;
        Register(manager, THRESHOLD + 1);
        const long full = LiveBlocks();
        passWith(manager, which, [&] {
            const long before = LiveBlocks();
            Register(manager, 1);
            EXPECT_EQ(LiveBlocks(), before + 1) << "a pass in progress is the only one";
        });
        EXPECT_EQ(LiveBlocks(), full + 1 - BATCH);
    }
    CBufferManager manager;
    Register(manager, THRESHOLD + 1);
    const long full = LiveBlocks();
    passWith(manager, 5000, [&] { manager.ReleaseBuf(true); });
    EXPECT_EQ(LiveBlocks(), full - THRESHOLD - 1) << "but all may be released meanwhile";
}
}  // namespace
