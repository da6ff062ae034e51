// Names between bytes and Unicode, strictly: nothing is skipped or replaced.
//
// Besides the encodings that Chinese names are in, there are those that such names are read in by mistake.
#ifndef CODETRANSCLI_NAMEENCODING_H
#define CODETRANSCLI_NAMEENCODING_H

#include <optional>
#include <string>
#include <string_view>

enum class NameEncoding {
    UTF_8,
    GB,  // with the euro sign at 80
    BIG_5,
    CP936,  // GBK as Windows reads it: undefined pairs are characters of the private use area
    LATIN1,
    WINDOWS_1252,
    CP437,
    CP850
};

// "GBK"
const char* TitleOf(NameEncoding encoding);

// Nothing where a byte is no character of `encoding`. GBK and Big5 need the model.
std::optional<std::u32string> DecodeName(std::string_view name, NameEncoding encoding);

// Nothing where `encoding` lacks a character.
std::optional<std::string> EncodeName(std::u32string_view text, NameEncoding encoding);

// One of the 3,755 hanzi of the first level of GBK, or the 5,401 of Big5; for UTF-8, of either.
bool IsCommonHanzi(char32_t character, NameEncoding encoding);

#endif  // CODETRANSCLI_NAMEENCODING_H
