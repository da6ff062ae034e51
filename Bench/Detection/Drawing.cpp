// What those who draw samples share; see Drawing.h.
#include "Drawing.h"

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "CodeTrans.h"

namespace fs = std::filesystem;

const Encoding ENCODINGS[4] = {{"gbk", "windows-936-2000", ENCODE_GBK},
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

std::vector<std::string> LinesOf(const std::string& bytes)
{
    std::istringstream in(bytes);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        if (!line.empty()) lines.push_back(line);
    return lines;
}

Text FromUtf8(const std::string& bytes)
{
    const icu::UnicodeString text = icu::UnicodeString::fromUTF8(bytes);
    return Text(text.getBuffer(), static_cast<size_t>(text.length()));
}

std::string Encode(const char* name, const Text& text)
{
    static const auto deleter = [](UConverter* converter) { ucnv_close(converter); };
    static std::map<std::string, std::unique_ptr<UConverter, decltype(deleter)>> converters;
    UErrorCode status = U_ZERO_ERROR;
    auto found = converters.find(name);
    if (found == converters.end()) {
        found = converters
                    .emplace(name, std::unique_ptr<UConverter, decltype(deleter)>(ucnv_open(name, &status),
                                                                                  deleter))
                    .first;
        if (U_FAILURE(status)) throw std::runtime_error(std::string("ICU has no converter ") + name);
        ucnv_setFromUCallBack(found->second.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                              &status);
    }
    std::string bytes(text.size() * 4 + 8, '\0');
    const int32_t length =
        ucnv_fromUChars(found->second.get(), bytes.data(), static_cast<int32_t>(bytes.size()), text.data(),
                        static_cast<int32_t>(text.size()), &status);
    if (U_FAILURE(status)) return "";
    bytes.resize(static_cast<size_t>(length));
    return bytes;
}

bool IsUtf8(const std::string& bytes)
{
    return icu::UnicodeString::fromUTF8(bytes).indexOf(char16_t{0xFFFD}) < 0;
}

bool IsHan(char16_t c)
{
    return c >= 0x3400 && c < 0xA000;
}

int LeastHan(int length)
{
    return length <= 4 ? length - 1 : length <= 8 ? 4 : length <= 16 ? 5 : length <= 32 ? 6 : 8;
}

void CSampleSet::AddForeign(const char* test, const std::string& kind, int length, std::string bytes)
{
    m_samples.push_back({test, "none", kind, length, std::move(bytes), ENCODE_UNKNOWN});
}

void CSampleSet::AddPieces(const std::string& bytes, int length,
                           const std::function<bool(const std::string&)>& fits,
                           const std::function<void(std::string)>& add)
{
    const auto size = static_cast<size_t>(length);
    if (bytes.size() <= size) return;
    for (int i = 0; i < m_count; ++i)
        if (std::string piece = bytes.substr(Below(bytes.size() - size), size); fits(piece))
            add(std::move(piece));
}

std::vector<ChineseText> ChineseTexts(const fs::path& folder)
{
    std::vector<ChineseText> texts;
    for (const char* script : {"hans", "hant"})
        for (const fs::path& path : FilesIn(folder / "windows" / script))
            texts.push_back({std::string(script) + '/' + path.stem().string(), FromUtf8(ReadAll(path))});
    return texts;
}
