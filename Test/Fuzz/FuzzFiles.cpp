// File conversion: any content, names that exist, are missing, exist in GBK alone, lead nowhere or to a
// folder. The result and the destination's bytes are those of the buffer functions, a failure leaves every
// file as it was and tells which name it was about.
//
// Input: function and target code (2 bytes), kinds of the two names, a name (its length, then its bytes);
// then the content.
#include "Bytes.h"
#include "Fuzz.h"
#include "Utility.h"

namespace fs = std::filesystem;

namespace
{
constexpr char OLD[] = "what the destination held before, longer than many a result\n";

struct Job {
    int64_t (*convert)(const char*, const char*);  // or null: TQ_ToFile
    int target;
    const char *source, *destination;

    int64_t Run() const
    {
        return convert != nullptr ? convert(source, destination) : TQ_ToFile(source, destination, target);
    }
};

// The name under which the library is to open `name`.
std::string Resolved(const char* name)
{
    if (name == nullptr) return "";
    std::string gbk;
    UTF8ToANSI(name, gbk);
    return !fs::exists(name) && fs::exists(gbk) ? gbk : name;
}

// The destination's bytes behind the mark, from the buffer functions.
std::string Converted(const std::string& text, int target)
{
    const size_t capacity = 5 * text.size() + 1;
    std::string source = text, output(capacity + 1, '\0');
    source.resize(capacity + 1);
    const auto convert = target == ENCODE_UTF8 ? TQ_ToUtf8 : target == ENCODE_GBK ? TQ_ToGBK : TQ_ToUnicode;
    const int code = TQ_CodeDetect(text.data(), text.size());
    output.resize(convert(source.data(), text.size(), output.data(), capacity, code));
    return output;
}

void Check(const Job& job)
{
    const std::string source = Resolved(job.source), destination = Resolved(job.destination);
    const std::string given = job.destination != nullptr ? job.destination : "";
    const auto before = Files();
    std::string text = fs::is_directory(source) ? "" : ReadBytes(source);
    const bool isEmpty = text.empty() && !fs::is_directory(source);
    text.erase(std::remove(text.begin(), text.end(), '\0'), text.end());

    g_sLastErrorMessage.clear();
    const int64_t result = job.Run();
    auto after = Files();
    // The day's logs, the only ones named so.
    std::erase_if(after, [](const auto& file) { return isdigit(file.first.front()) != 0; });
    if (text.empty()) {
        REQUIRE(result == -1 && after == before);
        REQUIRE(g_sLastErrorMessage == (isEmpty ? "Error read file " + source : ""));
    } else if (result == -1) {
        REQUIRE(after == before && g_sLastErrorMessage == "Fail writing file " + given);
        REQUIRE(destination.empty() || fs::is_directory(destination) ||
                !fs::exists(fs::absolute(destination).parent_path()));
    } else {
        const bool isKnown =
            job.target == ENCODE_UTF8 || job.target == ENCODE_GBK || job.target == ENCODE_UNICODE;
        const std::string converted = isKnown ? Converted(text, job.target) : "";
        const char* const mark = job.target == ENCODE_UTF8      ? UTF8_BYTE_ORDER_MARK
                                 : job.target == ENCODE_UNICODE ? "\xFF\xFE"
                                                                : "";
        REQUIRE(result == static_cast<int64_t>(converted.size()) && g_sLastErrorMessage.empty());
        REQUIRE(ReadBytes(destination) == mark + converted);
    }
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size)
{
    LoadShippedModel();
    const TempFolder folder;
    g_sLogPath.clear();
    fs::create_directory("folder");

    Input input(data, size);
    constexpr Job JOBS[] = {{TQ_ToGBKFile, ENCODE_GBK, nullptr, nullptr},
                            {TQ_ToUnicodeFile, ENCODE_UNICODE, nullptr, nullptr},
                            {TQ_ToUtf8File, ENCODE_UTF8, nullptr, nullptr},
                            {nullptr, 0, nullptr, nullptr}};
    Job job = JOBS[input.Byte() % 4];
    const unsigned target = input.Byte(), sourceKind = input.Byte(), destinationKind = input.Byte();
    if (job.convert == nullptr) job.target = static_cast<int>(target) - (target < 0x80 ? 0 : 0x100);
    const std::string free = std::string("n") + Harmless(input.Take(input.Byte() % 64));
    const std::string absolute = folder.Path() + "/source", content = input.Rest();

    const char* const sources[] = {"source",         free.c_str(), free.c_str(), free.c_str(),
                                   absolute.c_str(), "folder",     "",           nullptr};
    job.source = sources[sourceKind % 8];
    const char* const destinations[] = {"result",         job.source, free.c_str(), "folder/result",
                                        "missing/result", "folder",   "",           nullptr};
    job.destination = destinations[destinationKind % 8];

    std::string gbk;
    UTF8ToANSI(free.c_str(), gbk);
    if (sourceKind % 8 == 1) WriteBytes(free, content);
    if (sourceKind % 8 == 2 && !gbk.empty()) WriteBytes(gbk, content);
    if (sourceKind % 8 == 0 || sourceKind % 8 == 4) WriteBytes("source", content);
    if (destinationKind / 8 % 2 == 1) WriteBytes("result", OLD);
    Check(job);
    return 0;
}
