// What threads may do at one time: under ThreadSanitizer without a report, in every build with the right
// results.
#include <atomic>
#include <memory>
#include <thread>

#include "../Unit/Support.h"
#include "FastPaths.h"

namespace
{
const std::string SAMPLES = CODETRANS_SOURCE_DIRECTORY "/Test/Samples/";
const std::string KINDS[] = {"news", "fiction", "subtitle", "source"};

// One text in every form.
struct Sample {
    std::string gbk, big5, utf8, utf16, utf16Traditional, wide;

    explicit Sample(const std::string& kind)
        : gbk(ReadBytes(SAMPLES + kind + "-hans.gbk")),
          big5(ReadBytes(SAMPLES + kind + "-hant.big5")),
          utf8(ReadBytes(SAMPLES + kind + "-hans.utf8")),
          utf16(ReadBytes(SAMPLES + kind + "-hans.utf16le")),
          utf16Traditional(ReadBytes(SAMPLES + kind + "-hant.utf16le"))
    {
        for (size_t i = 0; i < utf16.size(); i += 2) wide += utf16.substr(i, 2) + "\0\0"_b;
    }
};

using Convert = size_t(const char*, size_t, char*, size_t, int);

std::string Converted(Convert* convert, const std::string& text, size_t length, int code)
{
    std::vector<char> out(4 * text.size() + 8);
    return {out.data(), convert(text.c_str(), length, out.data(), 0, code)};
}

// What takes neither the locale nor a file.
int RightWithoutLocale(const Sample& s)
{
    return (TQ_CodeDetect(s.gbk.data(), s.gbk.size()) == ENCODE_GBK) +
           (TQ_CodeDetect(s.big5.data(), s.big5.size()) == ENCODE_BIG5) +
           (TQ_CodeDetect(s.utf8.data(), s.utf8.size()) == ENCODE_UTF8) +
           (TQ_CodeDetect(s.utf16.data(), s.utf16.size()) == ENCODE_UNICODE) +
           (Converted(TQ_ToUnicode, s.gbk, s.gbk.size(), ENCODE_GBK) == s.utf16) +
           (Converted(TQ_ToUnicode, s.big5, s.big5.size(), ENCODE_BIG5) == s.utf16Traditional) +
           (Converted(TQ_ToUnicode, s.utf8, 0, ENCODE_UTF8) == s.wide) +
           (Converted(TQ_ToUnicode, s.utf16, s.utf16.size(), ENCODE_UNICODE) == s.utf16) +
           (Converted(TQ_ToUtf8, s.wide, s.wide.size() / 4, ENCODE_UNICODE) == s.utf8) +
           (Converted(TQ_ToUtf8, s.utf8, s.utf8.size(), ENCODE_UTF8) == s.utf8) +
           (Converted(TQ_ToGBK, s.gbk, s.gbk.size(), ENCODE_GBK) == s.gbk) +
           (Converted(TQ_ToGBK, s.utf16, s.utf16.size() / 2, ENCODE_UNICODE) ==
            s.gbk.substr(0, s.utf16.size() / 2));
}

int RightWithLocale(const Sample& s)
{
    return (Converted(TQ_ToUtf8, s.gbk, 0, ENCODE_GBK) == s.utf8) +
           (Converted(TQ_ToGBK, s.utf8, 0, ENCODE_UTF8) == s.gbk);
}

// How many of the checks came out right in all threads, each of which has a text of its own.
int InThreads(int rounds, int (*check)(const Sample&))
{
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    for (const std::string& kind : KINDS)
        threads.emplace_back([&, sample = Sample(kind)] {
            for (int i = 0; i < rounds; ++i) right += check(sample);
        });
    for (std::thread& thread : threads) thread.join();
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

// Many enough that the shortcuts through the model are made meanwhile.
TEST_F(Threads, DetectAndConvertWithoutLocale)
{
    EXPECT_EQ(InThreads(100, RightWithoutLocale), 4 * 100 * 12);
}

TEST_F(Threads, ConvertInTheLocaleOnceItIsSet)
{
    for (const Forms forms : {Forms::PLAIN, BestForms()}) {
        UseForms(forms);
        Converted(TQ_ToGBK, "", 0, ENCODE_UTF8);
        EXPECT_EQ(InThreads(100, RightWithLocale), 4 * 100 * 2);
    }
}

// Failures share the text of the last one and the log.
TEST_F(Threads, FailTogether)
{
    const TempFolder folder;
    Converted(TQ_ToGBK, "", 0, ENCODE_UTF8);
    const int right = InThreads(50, [](const Sample& s) {
        const std::string name = "none-" + std::to_string(s.gbk.size()), start = "Error read file none-";
        const bool failed = TQ_ToUtf8File(name.c_str(), "out") == -1;
        const std::unique_ptr<const char[]> text(TQ_GetLastErrorMsg());
        return failed && std::string(text.get()).compare(0, start.size(), start) == 0 ? 1 : 0;
    });
    EXPECT_EQ(right, 4 * 50);
}
}  // namespace
