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
#include <cstring>
#include <memory>
#include <string>

#include "FastPaths.h"
#include "STLCodeTrans.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size);

// What must hold whatever the input is.
#define REQUIRE(condition)                                                                 \
    do {                                                                                   \
        if (!(condition)) {                                                                \
            fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
            abort();                                                                       \
        }                                                                                  \
    } while (false)

class Input
{
public:
    Input(const unsigned char* data, size_t size) : m_at(data), m_end(data + size) {}

    bool IsUsedUp() const { return m_at == m_end; }
    unsigned Byte() { return IsUsedUp() ? 0 : *m_at++; }
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
    std::string Rest() { return Take(static_cast<size_t>(m_end - m_at)); }

private:
    static constexpr size_t MOST_REPEATED = 1 << 13;
    const unsigned char *m_at, *m_end;
};

// On the heap, where AddressSanitizer sees a byte read or written behind it. `skew` moves its begin away from
// aligned addresses.
class Buffer
{
public:
    static constexpr char UNTOUCHED = '\x5A';

    explicit Buffer(size_t size, unsigned skew = 0)
        : m_size(size), m_skew(skew), m_block(new char[skew + size])
    {
        memset(m_block.get(), UNTOUCHED, skew + size);
    }
    explicit Buffer(const std::string& content, unsigned skew = 0) : Buffer(content.size(), skew)
    {
        memcpy(data(), content.data(), content.size());
    }
    char* data() { return m_block.get() + m_skew; }
    std::string All() { return std::string(data(), m_size); }

private:
    size_t m_size, m_skew;
    std::unique_ptr<char[]> m_block;
};

// The shipped model, loaded once.
inline void LoadShippedModel()
{
    static const int s_result = CodeTrans_Initialize(CODETRANS_SOURCE_DIRECTORY "/Data/CodeTrans.model");
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

#endif  // TEST_FUZZ_H
