// What the fuzz targets share: an input that is used up from its front, buffers without a byte too many, and
// checks that end the process.
//
// A target is one function, LLVMFuzzerTestOneInput. Its first bytes choose what is called and how, the rest
// is content, so that a text with a few bytes before it is an input.
#ifndef TEST_FUZZ_H
#define TEST_FUZZ_H

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "../Unit/Support.h"
#include "FastPaths.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size);

// What must hold whatever the input is.
#define REQUIRE(condition)                                                             \
    do {                                                                               \
        if (condition) break;                                                          \
        fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
        abort();                                                                       \
    } while (false)

class Input
{
public:
    Input(const unsigned char* data, size_t size) : m_at(data), m_end(data + size) {}

    unsigned Byte() { return m_at == m_end ? 0 : *m_at++; }
    unsigned Number()  // of two bytes
    {
        const unsigned high = Byte();
        return high * 0x100 + Byte();
    }
    std::string Take(size_t most)
    {
        const unsigned char* const begin = m_at;
        m_at += std::min(most, static_cast<size_t>(m_end - m_at));
        return std::string(begin, m_at);
    }
    std::string Rest() { return Take(static_cast<size_t>(m_end - m_at)); }
    // As often as the next byte says, so that a short input passes the windows of the fast forms.
    std::string RestRepeated()
    {
        const unsigned choice = Byte();
        const std::string once = Rest();
        std::string text = once;
        for (unsigned times = choice < 0xE0 ? 0 : 1U << (choice - 0xE0);
             times > 0 && !once.empty() && text.size() + once.size() <= MOST_REPEATED; --times)
            text += once;
        return text;
    }

private:
    static constexpr size_t MOST_REPEATED = 1 << 13;
    const unsigned char *m_at, *m_end;
};

// On the heap, where AddressSanitizer sees a byte read or written behind it. `skew` moves its begin away from
// aligned addresses.
class Buffer
{
public:
    explicit Buffer(const std::string& content, unsigned skew = 0)
        : m_size(content.size()), m_skew(skew), m_block(new char[skew + m_size])
    {
        memcpy(data(), content.data(), m_size);
    }
    explicit Buffer(size_t size, unsigned skew = 0) : Buffer(std::string(size, '\x5A'), skew) {}
    char* data() { return m_block.get() + m_skew; }
    std::string All() { return std::string(data(), m_size); }

private:
    size_t m_size, m_skew;
    std::unique_ptr<char[]> m_block;
};

inline void LoadShippedModel()
{
    static const int s_result = CodeTrans_Initialize(ModelPath().c_str());
    REQUIRE(s_result == 0);
}

// Calls `check` under each form that this processor has, the plain one first.
template <typename Check>
void UnderEachForm(Check check)
{
    for (const Forms forms : {Forms::PLAIN, Forms::AVX2, Forms::AVX512}) {
        if (forms > BestForms()) continue;
        UseForms(forms);
        check();
    }
}

// The content of every file below the current folder by its name.
inline std::map<std::string, std::string> Files()
{
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator("."))
        if (entry.is_regular_file()) files[entry.path().lexically_normal()] = ReadBytes(entry.path());
    return files;
}

// What any name may be made of without leading out of a folder.
inline std::string Harmless(std::string name)
{
    std::replace(name.begin(), name.end(), '/', '_');
    for (size_t at = name.find(".."); at != std::string::npos; at = name.find("..")) name[at] = '_';
    return name.c_str();
}

#endif  // TEST_FUZZ_H
