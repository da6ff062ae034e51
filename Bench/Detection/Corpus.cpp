// All samples, and whole files; see Corpus.h.
#include "Corpus.h"

#include "CodeTrans.h"
#include "Drawing.h"

namespace fs = std::filesystem;

bool IsRight(const JudgedSample& sample, int answer)
{
    return answer == sample.answer || (sample.answer == ENCODE_UNKNOWN && answer == -1);
}

std::vector<JudgedSample> DrawSamples(const std::string& folder, int count)
{
    CSampleSet set(folder, count);
    DrawChinese(set);
    DrawChineseEdges(set);
    DrawRareCharacters(set);
    DrawWorld(set);
    DrawForeign(set);
    return set.Take();
}

std::vector<JudgedSample> DrawLargeFiles(const std::string& folder)
{
    std::vector<JudgedSample> files;
    for (const ChineseText& chinese : ChineseTexts(folder))
        for (const Encoding& encoding : ENCODINGS) {
            if (encoding.answer == ENCODE_BIG5 && chinese.kind.starts_with("hans")) continue;
            std::string bytes;
            for (size_t start = 0; start < chinese.text.size() && bytes.size() < 1'000'000;) {
                const size_t end = std::min(chinese.text.find(u'\n', start), chinese.text.size() - 1);
                bytes += Encode(encoding.converter, chinese.text.substr(start, end + 1 - start));
                start = end + 1;
            }
            files.push_back({"early", encoding.name, chinese.kind, 0, bytes, encoding.answer});
        }
    return files;
}

std::vector<JudgedSample> DrawWholeFiles(const std::string& folder)
{
    std::vector<JudgedSample> files;
    for (const Encoding& encoding : ENCODINGS)
        for (const fs::path& path : FilesIn(fs::path(folder) / "files" / encoding.name)) {
            const std::string bytes = ReadAll(path);
            // A few old files were rewritten in UTF-8 under their old names.
            if (encoding.answer == ENCODE_UTF8 || !IsUtf8(bytes))
                files.push_back({"whole", encoding.name, "chinese", 0, bytes, encoding.answer});
        }
    for (const fs::path& path : FilesIn(fs::path(folder) / "world" / "files"))
        files.push_back(
            {"whole", "utf8", path.parent_path().filename().string(), 0, ReadAll(path), ENCODE_UTF8});
    for (const fs::path& path : FilesIn(fs::path(folder) / "foreign" / "files"))
        files.push_back(
            {"whole", "none", path.parent_path().filename().string(), 0, ReadAll(path), ENCODE_UNKNOWN});
    return files;
}
