// Text files in and out: whole lines, UTF-8 as wide characters, and the escaping of the statistics'
// characters.
//
// Every text of the builder is a std::wstring of Basic Multilingual Plane characters; what lies beyond it was
// dropped on reading. Any failure to read or write throws std::runtime_error with the file's name.
#ifndef MODEL_BUILDER_TEXT_FILE_H
#define MODEL_BUILDER_TEXT_FILE_H

#include <string>
#include <vector>

std::vector<std::string> ReadLines(const std::string& path);
void WriteFile(const std::string& path, const std::string& content);
std::string ReadFile(const std::string& path);

// Whether the bytes are UTF-8 throughout.
bool IsUtf8(const std::string& bytes);

std::wstring DecodeLine(const std::string& utf8);
void AppendUtf8(std::string& to, wchar_t character);

// Hexadecimal digits of a byte string, and back.
std::string ToHex(const std::string& bytes);
std::string FromHex(const std::string& digits);

#endif  // MODEL_BUILDER_TEXT_FILE_H
