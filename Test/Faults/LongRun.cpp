// LongRun COUNT: so many conversions and detections of random size in one process, each compared with what is
// known of its text beforehand, while neither memory nor descriptors may grow.
//
// Texts are strung together from characters whose form in each encoding iconv has given; detection's are
// stretches of the samples, whose answers the plain walk has given.
#include <iconv.h>
#include <malloc.h>

#include "../Unit/Support.h"
#include "FastPaths.h"

namespace
{
struct Text {
    std::string gbk, utf8, utf16, wide;

    void operator+=(const Text& more)
    {
        gbk += more.gbk, utf8 += more.utf8, utf16 += more.utf16, wide += more.wide;
    }
};

const struct Route {
    size_t (*convert)(const char*, size_t, char*, size_t, int);
    int code;
    std::string Text::*from, Text::*to;
    size_t unit = 1;  // bytes that the length counts as one
} ROUTES[] = {
    {TQ_ToUtf8, ENCODE_GBK, &Text::gbk, &Text::utf8},
    {TQ_ToGBK, ENCODE_UTF8, &Text::utf8, &Text::gbk},
    {TQ_ToUnicode, ENCODE_GBK, &Text::gbk, &Text::utf16},
    {TQ_ToUnicode, ENCODE_UTF8, &Text::utf8, &Text::wide},
    {TQ_ToUtf8, ENCODE_UNICODE, &Text::wide, &Text::utf8, 4},
    {TQ_ToGBK, ENCODE_UNICODE, &Text::utf16, &Text::gbk, 2},
};

std::string FromGbk(iconv_t converter, std::string gbk)
{
    std::string out(8, '\0');
    char *in = gbk.data(), *end = out.data();
    size_t left = gbk.size(), room = out.size();
    const bool isCharacter = iconv(converter, &in, &left, &end, &room) == 0;
    return isCharacter ? out.substr(0, out.size() - room) : "";
}

// ASCII, then every two-byte character of GBK.
std::vector<Text> Characters()
{
    std::vector<Text> characters;
    iconv_t utf8 = iconv_open("UTF-8", "GBK"), utf16 = iconv_open("UTF-16LE", "GBK"),
            wide = iconv_open("UTF-32LE", "GBK");
    for (unsigned code = 0x20; code < 0xFF00; code = code == 0x7E ? 0x8140 : code + 1) {
        std::string gbk(1, static_cast<char>(code & 0xFF));
        if (code >= 0x80) gbk.insert(0, 1, static_cast<char>(code >> 8));
        const Text text = {gbk, FromGbk(utf8, gbk), FromGbk(utf16, gbk), FromGbk(wide, gbk)};
        if (!text.utf8.empty()) characters.push_back(text);
    }
    for (iconv_t converter : {utf8, utf16, wide}) iconv_close(converter);
    return characters;
}

class CRun
{
public:
    CRun() : m_characters(Characters())
    {
        const std::filesystem::path samples = CODETRANS_SOURCE_DIRECTORY "/Test/Samples";
        std::string all;
        for (const auto& entry : std::filesystem::directory_iterator(samples)) all += ReadBytes(entry.path());
        UseForms(Forms::PLAIN);
        for (int i = 0; i < 2000; ++i) {
            const std::string text = all.substr(m_random.Below(static_cast<unsigned>(all.size())),
                                                m_random.Below(i % 20 == 0 ? 8000 : 300));
            m_stretches.emplace_back(text, TQ_CodeDetect(text.data(), text.size()));
        }
        UseForms(BestForms());
        // What grows once and no more, at its size from the start: the shortcuts, which come when some text
        // has been walked, and the output.
        for (const auto& [text, code] : m_stretches) TQ_CodeDetect(text.data(), text.size());
        m_out.assign(4 * 4 * MOST_CHARACTERS + 8, '?');
        m_line = {ReadBytes(samples / "news-hans.gbk"), ReadBytes(samples / "news-hans.utf8"), "", ""};
        WriteBytes("in", m_line.gbk);
    }

    // Whether it came out right.
    bool Step(long number)
    {
        if (number % 1000 == 0)
            return TQ_ToUtf8File("in", "out") == static_cast<long>(m_line.utf8.size()) &&
                   ReadBytes("out") == "\xEF\xBB\xBF" + m_line.utf8;
        if (number % 4 == 0) {
            const auto& [text, code] = m_stretches[m_random.Below(2000)];
            return TQ_CodeDetect(text.data(), text.size()) == code;
        }
        Text text;
        const unsigned kinds = number % 2 == 0 ? 0x5F : static_cast<unsigned>(m_characters.size());
        for (unsigned i = m_random.Below(number % 100 == 1 ? MOST_CHARACTERS : 60); i > 0; --i)
            text += m_characters[m_random.Below(kinds)];
        const Route& route = ROUTES[m_random.Below(6)];
        const std::string &source = text.*route.from, &result = text.*route.to;
        m_out.assign(4 * source.size() + 8, '?');
        const size_t size =
            route.convert(source.c_str(), source.size() / route.unit, m_out.data(), 0, route.code);
        return size == (route.unit == 2 ? source.size() / 2 : result.size()) &&
               m_out.compare(0, result.size(), result) == 0;
    }

private:
    static constexpr unsigned MOST_CHARACTERS = 3000;
    Random m_random;
    const TempFolder m_folder;
    const std::vector<Text> m_characters;
    std::vector<std::pair<std::string, int>> m_stretches;
    Text m_line;
    std::string m_out;
};

struct Footprint {
    long resident, heap, descriptors;

    explicit Footprint(long done)
    {
        long pages = 0;
        std::ifstream("/proc/self/statm") >> resident >> pages;
        resident = pages * sysconf(_SC_PAGESIZE);
        heap = static_cast<long>(mallinfo2().uordblks);
        descriptors = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
        printf("after %ld: %ld KB resident, %ld KB on the heap, %ld descriptors\n", done, resident >> 10,
               heap >> 10, descriptors);
    }
};
}  // namespace

int main(int argc, char** argv)
{
    const long count = argc > 1 ? strtol(argv[1], nullptr, 10) : 100'000;
    if (TQ_Init(CODETRANS_SOURCE_DIRECTORY, nullptr) != 1) return 2;
    bool flat = true;
    long wrong = 0;
    {
        CRun run;
        const auto steps = [&](long from, long to) {
            for (long i = from; i < to; ++i) wrong += !run.Step(i);
        };
        // Enough text for the tables that are made once much has been walked over.
        const std::string walked(2 << 20, '\xD6');
        TQ_CodeDetect(walked.data(), walked.size());
        steps(0, count / 10);
        const Footprint early(count / 10);
        steps(count / 10, count);
        const Footprint late(count);
        // The sanitizers keep freed memory for a while.
        flat =
            late.descriptors == early.descriptors &&
            (IsSanitized() || (late.resident - early.resident < 1 << 20 && late.heap - early.heap < 1 << 16));
    }
    TQ_Exit();
    printf("%ld conversions and detections, %ld wrong, %s\n", count, wrong, flat ? "nothing grew" : "GROWN");
    return wrong == 0 && flat ? 0 : 1;
}
