// What single bytes and pairs of bytes may be, in the words that all stages use.
//
// A path is a string of bytes. A lead byte is the first of a two-byte character of GBK or Big5, a trail byte
// the second. A tail byte is one of UTF-8 behind the first.
#ifndef MODEL_BUILDER_BYTES_H
#define MODEL_BUILDER_BYTES_H

#include <algorithm>
#include <string>

inline unsigned ByteAt(const std::string& path, size_t i)
{
    return static_cast<unsigned char>(path[i]);
}

inline std::string OneByte(unsigned byte)
{
    return {static_cast<char>(byte)};
}

inline std::string TwoBytes(unsigned first, unsigned second)
{
    return {static_cast<char>(first), static_cast<char>(second)};
}

inline bool IsAscii(const std::string& bytes)
{
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

constexpr bool IsLead(unsigned byte)
{
    return byte > 0x80 && byte < 0xFF;
}

// Lead bytes of GBK that are high bytes of hanzi in UTF-16LE as well.
constexpr bool IsLeadAndHighByte(unsigned byte)
{
    return byte > 0x80 && byte < 0xA0;
}

// Of a character of two or three bytes.
constexpr bool IsUtf8Lead(unsigned byte)
{
    return byte >= 0xC2 && byte <= 0xEF;
}

constexpr bool IsUtf8LeadOfThree(unsigned byte)
{
    return byte >= 0xE0 && byte <= 0xEF;
}

constexpr bool IsUtf8Tail(unsigned byte)
{
    return byte >= 0x80 && byte < 0xC0;
}

// The first two bytes of a character of three.
inline bool OpensUtf8(const std::string& path)
{
    return path.size() >= 2 && IsUtf8LeadOfThree(ByteAt(path, 0)) && IsUtf8Tail(ByteAt(path, 1));
}

inline bool StartsWithUtf8Character(const std::string& path)
{
    return path.size() >= 3 && OpensUtf8(path) && IsUtf8Tail(ByteAt(path, 2));
}

// Two bytes that may stand in UTF-8: a lead byte and a tail byte.
inline bool IsPartOfUtf8(const std::string& pair)
{
    return IsUtf8Lead(ByteAt(pair, 0)) && IsUtf8Tail(ByteAt(pair, 1));
}

// ASCII and a lead byte, or a unit of UTF-16LE.
inline bool LeadAfterAscii(const std::string& path)
{
    return path.size() == 2 && ByteAt(path, 0) < 0x80 && IsLeadAndHighByte(ByteAt(path, 1));
}

constexpr bool IsLineEnd(char byte)
{
    return byte == '\n' || byte == '\r';
}

// A control character that no text has. Those that it may have end lines and pages, indent, and escape.
constexpr bool IsUnusedControl(unsigned code)
{
    return code == 0x7F ||
           (code < 0x20 && code != '\t' && code != '\n' && code != '\f' && code != '\r' && code != 0x1B);
}

#endif  // MODEL_BUILDER_BYTES_H
