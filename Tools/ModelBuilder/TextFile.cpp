// Text files in and out; see TextFile.h.
#include "TextFile.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "STLCodeTrans.h"

std::string ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

std::vector<std::string> ReadLines(const std::string& path)
{
    std::istringstream content(ReadFile(path));
    std::vector<std::string> lines;
    for (std::string line; std::getline(content, line);) lines.push_back(line);
    return lines;
}

void WriteFile(const std::string& path, const std::string& content)
{
    std::ofstream out(path, std::ios::binary);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!out.flush()) throw std::runtime_error("cannot write " + path);
}

std::wstring DecodeLine(const std::string& utf8)
{
    return utf8_to_unicode(utf8.c_str());
}

void AppendUtf8(std::string& to, wchar_t character)
{
    unsigned char bytes[6];
    const int length = unicode_to_utf8_one(static_cast<unsigned long>(character), bytes, sizeof bytes);
    to.append(reinterpret_cast<char*>(bytes), static_cast<size_t>(length));
}

std::string ToHex(const std::string& bytes)
{
    static constexpr char DIGITS[] = "0123456789ABCDEF";
    std::string digits;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        digits += DIGITS[byte >> 4];
        digits += DIGITS[byte & 15];
    }
    return digits;
}

std::string FromHex(const std::string& digits)
{
    std::string bytes;
    for (size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}
