// Files as strings, and the forms in which characters and bytes stand in the builder's own files.
#include "TextFile.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "Bytes.h"
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

bool IsUtf8(const std::string& bytes)
{
    // The smallest code point that needs so many bytes behind the first.
    static constexpr unsigned LEAST[] = {0, 0x80, 0x800, 0x10000};
    for (size_t i = 0; i < bytes.size(); ++i) {
        const unsigned lead = ByteAt(bytes, i);
        if (lead < 0x80) continue;
        const unsigned tails = lead < 0xC2 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : lead < 0xF5 ? 3 : 0;
        if (tails == 0 || i + tails >= bytes.size()) return false;
        unsigned code = lead & (0x3FU >> tails);
        for (unsigned t = 0; t < tails; ++t) {
            if (!IsUtf8Tail(ByteAt(bytes, ++i))) return false;
            code = code << 6 | (ByteAt(bytes, i) & 0x3F);
        }
        if (code < LEAST[tails] || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return false;
    }
    return true;
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
