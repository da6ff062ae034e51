// What threads may do at one time: under ThreadSanitizer without a report, in every build with the right
// results.
#include <atomic>
#include <memory>
#include <thread>

#include "../Unit/Support.h"
#include "FastPaths.h"

namespace
{
const struct Route {
    size_t (*convert)(const char*, size_t, char*, size_t, int);
    int code;
    std::string from, to;  // samples by their endings
    size_t unit = 1;       // bytes that the length counts as one
} WITHOUT_LOCALE[] =
    {
        {TQ_ToUnicode, ENCODE_GBK, "-hans.gbk", "-hans.utf16le"},
        {TQ_ToUnicode, ENCODE_BIG5, "-hant.big5", "-hant.utf16le"},
        {TQ_ToUnicode, ENCODE_UTF8, "-hans.utf8", "-hans.wide"},
        {TQ_ToUtf8, ENCODE_UNICODE, "-hans.wide", "-hans.utf8", 4},
        {TQ_ToGBK, ENCODE_GBK, "-hans.gbk", "-hans.gbk"},
},
  WITH_LOCALE[] = {
      {TQ_ToUtf8, ENCODE_GBK, "-hans.gbk", "-hans.utf8"},
      {TQ_ToGBK, ENCODE_UTF8, "-hans.utf8", "-hans.gbk"},
};

std::string Sample(const std::string& name)
{
    const size_t end = name.find(".wide");
    if (end == std::string::npos) return ReadBytes(CODETRANS_SOURCE_DIRECTORY "/Test/Samples/" + name);
    std::string wide;
    for (const wchar_t c : utf8_to_unicode(Sample(name.substr(0, end) + ".utf8").c_str()))
        wide.append(reinterpret_cast<const char*>(&c), sizeof c);
    return wide;
}

// How often four threads, each with a text of its own, come to the right result.
template <typename Check>
int InThreads(int rounds, Check check)
{
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    for (const std::string kind : {"news", "fiction", "subtitle", "source"})
        threads.emplace_back([&, kind] {
            for (int i = 0; i < rounds; ++i) right += check(kind);
        });
    for (std::thread& thread : threads) thread.join();
    return right;
}

template <size_t COUNT>
int Convert(const Route (&routes)[COUNT], const std::string& kind)
{
    int right = 0;
    for (const Route& route : routes) {
        const std::string source = Sample(kind + route.from), result = Sample(kind + route.to);
        std::string out(4 * source.size() + 8, '\0');
        right += route.convert(source.c_str(), source.size() / route.unit, out.data(), 0, route.code) ==
                     result.size() &&
                 out.compare(0, result.size(), result) == 0;
        right += TQ_CodeDetect(source.data(), source.size()) == route.code || route.unit == 4;
    }
    return right;
}

class Threads : public testing::Test
{
protected:
    Threads() { EXPECT_EQ(TQ_Init(CODETRANS_SOURCE_DIRECTORY, nullptr), 1); }
    ~Threads() override
    {
        UseForms(BestForms());
        TQ_Exit();
    }
};

// So much that the shortcuts through the model are made meanwhile.
TEST_F(Threads, DetectAndConvertWithoutLocale)
{
    EXPECT_EQ(InThreads(200, [](auto& kind) { return Convert(WITHOUT_LOCALE, kind); }), 4 * 200 * 10);
}

TEST_F(Threads, ConvertInTheLocaleOnceItIsSet)
{
    for (const Forms forms : {Forms::PLAIN, BestForms()}) {
        UseForms(forms);
        Convert(WITH_LOCALE, "title");
        EXPECT_EQ(InThreads(200, [](auto& kind) { return Convert(WITH_LOCALE, kind); }), 4 * 200 * 4);
    }
}

// Failures share the text of the last one and the log.
TEST_F(Threads, FailTogether)
{
    const TempFolder folder;
    Convert(WITH_LOCALE, "title");
    const int right = InThreads(50, [](const std::string& kind) {
        const bool failed = TQ_ToUtf8File(("no text of the kind " + kind).c_str(), "out") == -1;
        const std::unique_ptr<const char[]> text(TQ_GetLastErrorMsg());
        return failed && strncmp(text.get(), "Error read file no text of the kind ", 36) == 0 ? 1 : 0;
    });
    EXPECT_EQ(right, 4 * 50);
}
}  // namespace
