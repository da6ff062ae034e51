// Stretches of text between encodings, by the library's exported buffer functions alone.
//
// Every conversion goes through UTF-16 code units, the one form that all encodings reach faithfully: no
// locale is needed, zero bytes survive, and each character of the source is one unit, so that places can be
// compared.
#ifndef CODETRANSCLI_TEXT_H
#define CODETRANSCLI_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Stands in a Block for a character that is no code unit.
constexpr char16_t REPLACEMENT = 0xFFFD;

struct Block {
    std::u16string units;      // one for each character, REPLACEMENT for what could not be read
    std::vector<size_t> lost;  // the indices of those, ascending
    size_t consumed = 0;       // bytes of the source
};

// The characters at the start of `text`, which goes to the end of the source: about `limit` bytes of them.
Block Decode(std::string_view text, int encoding, size_t limit);

// `encoding` is ENCODE_UTF8, ENCODE_GBK or ENCODE_UNICODE. What GBK lacks becomes the bytes A1 A1.
std::string Encode(std::u16string_view units, int encoding);

#endif  // CODETRANSCLI_TEXT_H
