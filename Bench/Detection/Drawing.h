// What those who draw samples share: texts read from files, encoding through ICU, which is none of the
// library's own code, and the growing set of samples with its random numbers.
#ifndef BENCH_DETECTION_DRAWING_H
#define BENCH_DETECTION_DRAWING_H

#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "Corpus.h"

using Text = std::u16string;

struct Encoding {
    const char* name;
    const char* converter;
    int answer;
};
enum EncodingIndex { GBK_INDEX, BIG5_INDEX, UTF8_INDEX, UTF16_INDEX };
extern const Encoding ENCODINGS[4];

std::string ReadAll(const std::filesystem::path& path);
std::vector<std::filesystem::path> FilesIn(const std::filesystem::path& folder);
std::vector<std::string> LinesOf(const std::string& bytes);
Text FromUtf8(const std::string& bytes);
// Empty when ICU's converter of that name lacks a character of the text.
std::string Encode(const char* converter, const Text& text);
bool IsUtf8(const std::string& bytes);
bool IsHan(char16_t c);
// The least number of hanzi in a window of that many characters that counts as Chinese.
int LeastHan(int length);

class CSampleSet
{
public:
    CSampleSet(std::string folder, int count) : m_folder(std::move(folder)), m_count(count) {}

    std::filesystem::path Folder() const { return m_folder; }
    int Count() const { return m_count; }
    size_t Below(size_t bound) { return static_cast<size_t>(m_random() % bound); }

    template <class Item>
    void Shuffle(std::vector<Item>& items)
    {
        std::shuffle(items.begin(), items.end(), m_random);
    }

    void Add(const char* test, const Encoding& encoding, const std::string& kind, int length,
             std::string bytes)
    {
        m_samples.push_back({test, encoding.name, kind, length, std::move(bytes), encoding.answer});
    }
    // A sample that is none of the library's encodings.
    void AddForeign(const char* test, const std::string& kind, int length, std::string bytes);
    // Cuts Count() pieces of that many bytes anywhere; `fits` says which are wanted.
    void AddPieces(const std::string& bytes, int length, const std::function<bool(const std::string&)>& fits,
                   const std::function<void(std::string)>& add);

    std::vector<JudgedSample> Take() { return std::move(m_samples); }

private:
    std::string m_folder;
    int m_count;
    std::mt19937_64 m_random{20240229};
    std::vector<JudgedSample> m_samples;
};

// The kinds of running Chinese text: "hans/novel" and its characters.
struct ChineseText {
    std::string kind;
    Text text;
};
std::vector<ChineseText> ChineseTexts(const std::filesystem::path& folder);

void DrawChinese(CSampleSet& set);         // windows, sparse, pieces, mixed, files, lines
void DrawChineseEdges(CSampleSet& set);    // word, headless, gb18030, mark, twins
void DrawRareCharacters(CSampleSet& set);  // supplement, forms, art-line, art-file
void DrawWorld(CSampleSet& set);           // world-line, -piece, -file, world16-line, -piece, signs
void DrawForeign(CSampleSet& set);         // ascii, legacy, legacy-line, binary, unicode

#endif  // BENCH_DETECTION_DRAWING_H
