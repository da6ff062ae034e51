// What the tests share: byte literals, seeded randomness, buffers that end at an unreadable page, folders of
// their own, models made to measure.
#ifndef TEST_SUPPORT_H
#define TEST_SUPPORT_H

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "STLCodeTrans.h"

// The sanitizers bring an allocator of their own, which needs more memory and keeps other books.
constexpr bool IsSanitized()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return true;
#elif defined(__has_feature)
    return __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
    return false;
#endif
}

// "\x41\0"_b keeps its zero bytes.
inline std::string operator""_b(const char* text, size_t size)
{
    return std::string(text, size);
}

// Prints its seed; CODETRANS_TEST_SEED repeats a run.
class Random : public std::mt19937
{
public:
    Random() : Random(ChooseSeed()) {}
    unsigned Below(unsigned bound) { return static_cast<unsigned>((*this)() % bound); }

private:
    explicit Random(unsigned seed) : std::mt19937(seed) { printf("seed: CODETRANS_TEST_SEED=%u\n", seed); }
    static unsigned ChooseSeed()
    {
        const char* given = getenv("CODETRANS_TEST_SEED");
        return given != nullptr ? static_cast<unsigned>(strtoul(given, nullptr, 10)) : std::random_device()();
    }
};

// `size` bytes whose end is the end of readable memory: touching one byte more faults.
class GuardedBuffer
{
public:
    explicit GuardedBuffer(size_t size)
    {
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        m_mapped = (size / page + 2) * page;
        m_base = static_cast<char*>(
            mmap(nullptr, m_mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(m_base + m_mapped - page, page, PROT_NONE);
        m_data = m_base + m_mapped - page - size;
    }
    explicit GuardedBuffer(const std::string& content) : GuardedBuffer(content.size())
    {
        memcpy(m_data, content.data(), content.size());
    }
    ~GuardedBuffer() { munmap(m_base, m_mapped); }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;
    char* data() { return m_data; }
    std::string str(size_t size) const { return std::string(m_data, size); }

private:
    size_t m_mapped;
    char *m_base, *m_data;
};

// A folder of its own, current while the object lives.
class TempFolder
{
public:
    TempFolder() : m_before(std::filesystem::current_path())
    {
        std::string name = std::filesystem::temp_directory_path() / "codetrans-test-XXXXXX";
        m_path = std::filesystem::canonical(mkdtemp(name.data()));
        std::filesystem::current_path(m_path);
    }
    ~TempFolder()
    {
        std::filesystem::current_path(m_before);
        std::filesystem::remove_all(m_path);
    }
    std::string Path(const std::string& name = "") const
    {
        return m_path.string() + (name.empty() ? "" : "/" + name);
    }

private:
    std::filesystem::path m_before, m_path;
};

inline std::string ReadBytes(const std::string& name)
{
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteBytes(const std::string& name, const std::string& bytes)
{
    std::ofstream(name, std::ios::binary) << bytes;
}

// The messages of the day's log file. Each line begins with a bracketed stamp of the local time, in this form
// to the byte, and a tab.
inline std::string LogMessages(const std::string& suffix, const std::string& directory = ".")
{
    const time_t now = time(nullptr);
    char date[9];
    strftime(date, sizeof date, "%Y%m%d", localtime(&now));
    std::string messages;
    std::ifstream file(directory + "/" + date + suffix, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        struct tm stamp = {};
        const char* const rest = strptime(line.c_str(), "[%Y-%m-%d %H:%M:%S]", &stamp);
        EXPECT_TRUE(rest == &line[21] && *rest == '\t') << line;
        EXPECT_NEAR(static_cast<double>(mktime(&stamp)), static_cast<double>(now), 60) << line;
        messages += line.substr(22) + '\n';
    }
    return messages;
}

inline std::string DigitsAsZero(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }, '0');
    return text;
}

// One character in two encodings.
const char ZHONG_UTF8[] = "\xE4\xB8\xAD", ZHONG_GBK[] = "\xD6\xD0";

inline std::string ModelPath()
{
    return std::string(CODETRANS_SOURCE_DIRECTORY) + "/Data/CodeTrans.model";
}

// A model file's bytes. Mapping entry i of the GBK table is i, of the Big5 table i + 0x8000.
inline std::string ModelBytes(const std::vector<TrieNode>& nodes, int count)
{
    std::string bytes;
    const auto append = [&](const void* from, size_t size) {
        bytes.append(static_cast<const char*>(from), size);
    };
    for (unsigned base : {0U, 0x8000U})
        for (unsigned i = 0; i < MAPPING_ENTRIES; ++i) {
            const auto entry = static_cast<unsigned short>(base + i);
            append(&entry, sizeof entry);
        }
    append(&count, sizeof count);
    append(nodes.data(), nodes.size() * sizeof(TrieNode));
    return bytes;
}

// Loads a model for the length of a test; without an argument, the committed one.
class LoadedModel
{
public:
    LoadedModel() { EXPECT_EQ(CodeTrans_Initialize(ModelPath().c_str()), 0); }
    explicit LoadedModel(const std::vector<TrieNode>& nodes)
    {
        const TempFolder folder;
        WriteBytes("m", ModelBytes(nodes, static_cast<int>(nodes.size())));
        EXPECT_EQ(CodeTrans_Initialize("m"), 0);
    }
    ~LoadedModel() { CodeTrans_Destroy(); }
    LoadedModel(const LoadedModel&) = delete;
    LoadedModel& operator=(const LoadedModel&) = delete;
};

#endif  // TEST_SUPPORT_H
