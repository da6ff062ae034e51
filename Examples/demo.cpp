// The demonstration that demo.sh runs: detects the encoding of every sample, converts some files and a
// buffer, and prints the first line of each result.
//
// demo DIRECTORY SAMPLES OUTPUT: DIRECTORY/Data contains the model, SAMPLES the files NAME.ENCODING. The
// converted files are written to OUTPUT, which is created. The exit status is 1 if a sample was detected
// wrongly or a conversion failed.
#include <CodeTrans.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace
{
struct Encoding {
    int code;
    const char* name;
    const char* suffix;
};

constexpr Encoding ENCODINGS[] = {{ENCODE_GBK, "GBK", ".gbk"},
                                  {ENCODE_BIG5, "Big5", ".big5"},
                                  {ENCODE_UTF8, "UTF-8", ".utf8"},
                                  {ENCODE_UNICODE, "UTF-16LE", ".utf16le"}};

const char* Name(int code)
{
    for (const Encoding& encoding : ENCODINGS)
        if (encoding.code == code) return encoding.name;
    return "unknown";
}

int ExpectedCode(const fs::path& sample)
{
    for (const Encoding& encoding : ENCODINGS)
        if (sample.extension() == encoding.suffix) return encoding.code;
    return ENCODE_UNKNOWN;
}

std::string ReadBytes(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// UTF-16LE to UTF-8, for display. TQ_ToUtf8 reads four-byte units.
std::string Utf16ToUtf8(const char* utf16, size_t size)
{
    std::string wide;
    for (size_t i = 0; i + 1 < size; i += 2) wide.append(utf16 + i, 2).append(2, '\0');
    std::string utf8(3 * size / 2 + 1, '\0');
    utf8.resize(TQ_ToUtf8(wide.data(), size / 2, utf8.data(), 0, ENCODE_UNICODE));
    return utf8;
}

std::string GbkToUtf8(const std::string& gbk)
{
    std::vector<char> utf16(2 * gbk.size() + 1);
    return Utf16ToUtf8(utf16.data(),
                       TQ_ToUnicode(gbk.data(), gbk.size(), utf16.data(), utf16.size(), ENCODE_GBK));
}

std::string Utf8Text(const std::string& bytes, int code)
{
    const bool marked = bytes.compare(0, 3, "\xEF\xBB\xBF") == 0;
    if (code == ENCODE_UTF8) return bytes.substr(marked ? 3 : 0);
    if (code == ENCODE_GBK) return GbkToUtf8(bytes);
    const size_t mark = bytes.compare(0, 2, "\xFF\xFE") == 0 ? 2 : 0;
    return Utf16ToUtf8(bytes.data() + mark, bytes.size() - mark);
}

void Show(const fs::path& source, const char* how, int64_t size, const std::string& utf8)
{
    const std::string line = utf8.substr(0, utf8.find('\n'));
    printf("  %-20s %-17s %6lld bytes  %s\n", source.filename().c_str(), how, static_cast<long long>(size),
           line.c_str());
}

bool DetectAll(const fs::path& samples)
{
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(samples))
        if (ExpectedCode(entry.path()) != ENCODE_UNKNOWN) files.push_back(entry.path());
    std::sort(files.begin(), files.end());

    bool right = !files.empty();
    printf("\n  %-24s %-9s %s\n", "file", "expected", "detected");
    for (const fs::path& file : files) {
        const std::string bytes = ReadBytes(file);
        const int code = TQ_CodeDetect(bytes.data(), bytes.size());
        const bool same = code == ExpectedCode(file);
        printf("  %-24s %-9s %s%s\n", file.filename().c_str(), Name(ExpectedCode(file)), Name(code),
               same ? "" : "   <- wrong");
        right = right && same;
    }
    return right;
}

struct FileRoute {
    const char* sample;
    const char* name;
    int64_t (*convert)(const char*, const char*);
    int resultCode;
};

constexpr FileRoute FILE_ROUTES[] = {
    {"news-hans.gbk", "TQ_ToUtf8File", TQ_ToUtf8File, ENCODE_UTF8},
    {"news-hans.gbk", "TQ_ToUnicodeFile", TQ_ToUnicodeFile, ENCODE_UNICODE},
    {"fiction-hans.utf8", "TQ_ToGBKFile", TQ_ToGBKFile, ENCODE_GBK},
    {"news-hant.big5", "TQ_ToUnicodeFile", TQ_ToUnicodeFile, ENCODE_UNICODE},
};

bool ConvertFiles(const fs::path& samples, const fs::path& output)
{
    bool done = true;
    fs::create_directories(output);
    for (const FileRoute& route : FILE_ROUTES) {
        const fs::path source = samples / route.sample;
        const fs::path target = output / (std::string(route.sample) + "." + route.name);
        const int64_t size = route.convert(source.c_str(), target.c_str());
        done = done && size > 0;
        Show(source, route.name, size, Utf8Text(ReadBytes(target), route.resultCode));
    }
    return done;
}

// TQ_ToGBK counts code units here, and returns their number, not the number of bytes written.
void ConvertBuffer(const fs::path& source)
{
    const std::string utf16 = ReadBytes(source);
    const size_t units = utf16.size() / 2;
    std::vector<char> gbk(2 * units + 2);
    TQ_ToGBK(utf16.data(), units, gbk.data(), gbk.size(), ENCODE_UNICODE);
    Show(source, "TQ_ToGBK (buffer)", static_cast<int64_t>(strlen(gbk.data())), GbkToUtf8(gbk.data()));
}
}  // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        fprintf(stderr, "usage: demo DIRECTORY SAMPLES OUTPUT\n");
        return 2;
    }
    if (TQ_Init(argv[1], nullptr) != 1) {
        fprintf(stderr, "%s\n", TQ_GetLastErrorMsg());
        return 1;
    }
    const fs::path samples = argv[2];
    printf("\nDetection\n");
    const bool detected = DetectAll(samples);
    printf("\nConversion\n\n");
    const bool converted = ConvertFiles(samples, argv[3]);
    ConvertBuffer(samples / "fiction-hans.utf16le");
    TQ_Exit();
    printf(
        "\n%s\n%s\n",
        detected ? "All samples were detected correctly." : "Some samples were detected wrongly.",
        converted ? "All conversions succeeded." : "A conversion failed. Is the locale zh_CN.gbk missing?");
    return detected && converted ? 0 : 1;
}
