// The judge's samples; see Corpus.h. Encoding goes through ICU, which is none of the library's own code.
#include "Corpus.h"

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>

#include "CodeTrans.h"

namespace
{
using Text = std::u16string;
namespace fs = std::filesystem;

struct Encoding {
    const char* name;
    const char* converter;
    int answer;
};
const Encoding ENCODINGS[] = {{"gbk", "windows-936-2000", ENCODE_GBK},
                              {"big5", "windows-950-2000", ENCODE_BIG5},
                              {"utf8", "UTF-8", ENCODE_UTF8},
                              {"utf16", "UTF-16LE", ENCODE_UNICODE}};

std::string ReadAll(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

std::vector<fs::path> FilesIn(const fs::path& folder)
{
    std::vector<fs::path> files;
    if (fs::is_directory(folder))
        for (const auto& entry : fs::recursive_directory_iterator(folder))
            if (entry.is_regular_file()) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

bool IsHan(char16_t c)
{
    return c >= 0x3400 && c < 0xA000;
}

// Empty when the encoding lacks a character of the text.
std::string Encode(const Encoding& encoding, const Text& text)
{
    UErrorCode status = U_ZERO_ERROR;
    static const auto deleter = [](UConverter* converter) { ucnv_close(converter); };
    const std::unique_ptr<UConverter, decltype(deleter)> converter(ucnv_open(encoding.converter, &status),
                                                                   deleter);
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    std::string bytes(text.size() * 4 + 8, '\0');
    const int32_t length = ucnv_fromUChars(converter.get(), bytes.data(), static_cast<int32_t>(bytes.size()),
                                           text.data(), static_cast<int32_t>(text.size()), &status);
    if (U_FAILURE(status)) return "";
    bytes.resize(static_cast<size_t>(length));
    return bytes;
}

bool IsUtf8(const std::string& bytes)
{
    return icu::UnicodeString::fromUTF8(bytes).indexOf(char16_t{0xFFFD}) < 0;
}

std::ptrdiff_t HanIn(const Encoding& encoding, const std::string& bytes)
{
    const icu::UnicodeString text(bytes.data(), static_cast<int32_t>(bytes.size()), encoding.converter);
    return std::count_if(text.getBuffer(), text.getBuffer() + text.length(), IsHan);
}

int LeastHan(int length)
{
    return length <= 4 ? length - 1 : length <= 8 ? 4 : length <= 16 ? 5 : length <= 32 ? 6 : 8;
}

class CDrawer
{
public:
    CDrawer(std::string folder, int count) : m_folder(std::move(folder)), m_count(count) {}

    std::vector<JudgedSample> Draw()
    {
        for (const char* script : {"hans", "hant"})
            for (const fs::path& path : FilesIn(fs::path(m_folder) / "windows" / script)) {
                const icu::UnicodeString text = icu::UnicodeString::fromUTF8(ReadAll(path));
                const std::string kind = std::string(script) + '/' + path.stem().string();
                Windows(Text(text.getBuffer(), static_cast<size_t>(text.length())), kind);
            }
        WholeFiles();
        AsciiPieces();
        ForeignPieces();
        return std::move(m_samples);
    }

private:
    size_t Below(size_t bound) { return static_cast<size_t>(m_random() % bound); }

    void Windows(const Text& text, const std::string& kind)
    {
        for (const Encoding& encoding : ENCODINGS) {
            if (encoding.answer == ENCODE_BIG5 && kind.starts_with("hans")) continue;
            for (const int length : {2, 3, 4, 6, 8, 16, 32, 64, 200})
                Window(text, kind, encoding, "windows", length, LeastHan(length), length);
            Window(text, kind, encoding, "sparse", 24, 1, 2);
            Pieces(text, kind, encoding);
            Mixed(text, kind, encoding);
        }
    }

    // Windows of `length` units with `least` to `most` hanzi.
    void Window(const Text& text, const std::string& kind, const Encoding& encoding, const char* test,
                int length, int least, int most)
    {
        const auto size = static_cast<size_t>(length);
        if (text.size() <= size) return;
        int found = 0;
        for (int tries = 0; found < m_count && tries < m_count * 60; ++tries) {
            const Text window = text.substr(Below(text.size() - size), size);
            const auto han = std::count_if(window.begin(), window.end(), IsHan);
            if (han < least || han > most) continue;
            if (std::string bytes = Encode(encoding, window); !bytes.empty()) {
                m_samples.push_back({test, encoding.name, kind, length, std::move(bytes), encoding.answer});
                ++found;
            }
        }
    }

    // 300 bytes cut anywhere, half of them in mid-character, a third with one stray byte.
    void Pieces(const Text& text, const std::string& kind, const Encoding& encoding)
    {
        for (int i = 0; i < m_count; ++i) {
            if (text.size() <= 330) return;
            std::string bytes = Encode(encoding, text.substr(Below(text.size() - 330), 330));
            const bool wide = encoding.answer == ENCODE_UNICODE;
            if (bytes.size() < 310) continue;
            bytes = bytes.substr(wide ? 2 * Below(4) : Below(9), 300);
            if (i % 3 == 0)
                bytes.insert(wide ? bytes.size() - 1 : Below(bytes.size()), 1,
                             static_cast<char>(0x80 + Below(128)));
            m_samples.push_back({"pieces", encoding.name, kind, 300, std::move(bytes), encoding.answer});
        }
    }

    // Files of 2,000 characters that begin with something else: one line in another encoding, a screen of
    // English, of another language; or that hold one name in another encoding. What prevails is the answer.
    void Mixed(const Text& text, const std::string& kind, const Encoding& encoding)
    {
        const std::vector<fs::path> foreign = FilesIn(fs::path(m_folder) / "foreign");
        if (encoding.answer == ENCODE_UNICODE || text.size() <= 2100 || foreign.empty()) return;
        const std::string english = ReadAll(fs::path(m_folder) / "ascii" / "english.txt");
        for (int i = 0; i < m_count / 5; ++i) {
            std::string bytes = Encode(encoding, text.substr(Below(text.size() - 2000), 2000));
            const Encoding& other = ENCODINGS[Below(3)];
            Text line = text.substr(Below(text.size() - 100), 5 + Below(60));
            line = line.substr(0, line.find(u'\n'));
            const std::string odd = Encode(other, line);
            if (bytes.empty() || odd.empty() || other.answer == encoding.answer) continue;
            const std::string strange = ReadAll(foreign[Below(foreign.size())]).substr(0, 400);
            const std::string heads[] = {
                odd + '\n', english.substr(Below(english.size() - 1200), 1200) + '\n', strange + '\n'};
            for (const std::string& head : heads)
                m_samples.push_back({"mixed", encoding.name, kind, 2000, head + bytes, encoding.answer});
            bytes.insert(bytes.find('\n') == std::string::npos ? 0 : bytes.find('\n') + 1,
                         odd.substr(0, 6) + '\n');
            m_samples.push_back({"mixed", encoding.name, kind, 2000, bytes, encoding.answer});
        }
    }

    void WholeFiles()
    {
        for (const Encoding& encoding : ENCODINGS)
            for (const fs::path& path : FilesIn(fs::path(m_folder) / "files" / encoding.name)) {
                const std::string bytes = ReadAll(path);
                const bool legacy = path.filename().string().starts_with("legacy");
                if (legacy && IsUtf8(bytes)) continue;
                const std::string kind = legacy                                   ? "legacy"
                                         : path.filename().string().back() == 't' ? "hant/page"
                                                                                  : "hans/page";
                m_samples.push_back({"files", encoding.name, kind, 0, bytes, encoding.answer});
                if (encoding.answer != ENCODE_UNICODE) Lines(bytes, kind, encoding);
            }
    }

    // Lines with two hanzi or more; every line of a small file, some of a large one.
    void Lines(const std::string& bytes, const std::string& kind, const Encoding& encoding)
    {
        std::istringstream in(bytes);
        std::vector<std::string> lines;
        for (std::string line; std::getline(in, line);) {
            // Old files mix: a line of them that reads as UTF-8 throughout is UTF-8.
            const bool isMixed = encoding.answer != ENCODE_UTF8 && line.size() > 8 && IsUtf8(line);
            if (HanIn(encoding, line) >= 2 && !isMixed) lines.push_back(line);
        }
        std::shuffle(lines.begin(), lines.end(), m_random);
        lines.resize(std::min<size_t>(lines.size(), kind == "legacy" ? 400 : 10));
        for (std::string& line : lines)
            m_samples.push_back({"lines", encoding.name, kind, 0, std::move(line), encoding.answer});
    }

    void AsciiPieces()
    {
        for (const fs::path& path : FilesIn(fs::path(m_folder) / "ascii"))
            for (const int length : {2, 3, 4, 5, 6, 7, 8, 9, 10, 12, 16, 24, 32, 64, 300})
                CutPieces(path, "ascii", length, ENCODE_GBK);
    }

    void ForeignPieces()
    {
        for (const fs::path& path : FilesIn(fs::path(m_folder) / "foreign"))
            for (const int length : {64, 128, 256, 1024, 4096})
                CutPieces(path, "foreign", length, ENCODE_UNKNOWN);
    }

    void CutPieces(const fs::path& path, const char* test, int length, int answer)
    {
        const std::string bytes = ReadAll(path);
        const auto size = static_cast<size_t>(length);
        if (bytes.size() <= size) return;
        for (int i = 0; i < m_count; ++i) {
            std::string piece = bytes.substr(Below(bytes.size() - size), size);
            const auto high = std::count_if(piece.begin(), piece.end(), [](char c) { return c < 0; });
            if (answer == ENCODE_UNKNOWN && high < length / 16) continue;  // ASCII by chance
            m_samples.push_back({test, "none", path.stem().string(), length, std::move(piece), answer});
        }
    }

    std::string m_folder;
    int m_count;
    std::mt19937_64 m_random{20240229};
    std::vector<JudgedSample> m_samples;
};
}  // namespace

std::vector<JudgedSample> DrawSamples(const std::string& folder, int count)
{
    return CDrawer(folder, count).Draw();
}

std::vector<JudgedSample> DrawLargeFiles(const std::string& folder)
{
    std::vector<JudgedSample> files;
    for (const char* script : {"hans", "hant"})
        for (const fs::path& path : FilesIn(fs::path(folder) / "windows" / script))
            for (const Encoding& encoding : ENCODINGS) {
                if (encoding.answer == ENCODE_BIG5 && std::string(script) == "hans") continue;
                std::istringstream lines(ReadAll(path));
                std::string bytes;
                for (std::string line; bytes.size() < 1'000'000 && std::getline(lines, line);) {
                    const icu::UnicodeString text = icu::UnicodeString::fromUTF8(line + '\n');
                    bytes += Encode(encoding, Text(text.getBuffer(), static_cast<size_t>(text.length())));
                }
                files.push_back({"early", encoding.name, std::string(script) + '/' + path.stem().string(), 0,
                                 bytes, encoding.answer});
            }
    return files;
}
