// Whole texts between encodings, by the library's exported buffer functions alone.
//
// Every conversion goes through UTF-16LE code units, the one form that all encodings reach faithfully, so
// that no locale is needed, zero bytes survive and what is lost can be counted.
#ifndef CODETRANSCLI_TEXT_H
#define CODETRANSCLI_TEXT_H

#include <cstddef>
#include <string>

struct Text {
    std::u16string units;  // without a byte-order mark
    size_t lost = 0;       // characters or bytes of the source that have no place in `units`
};

// `encoding` is one of the four codes.
Text Decode(const std::string& bytes, int encoding);

struct Encoded {
    std::string bytes;  // UTF-16LE starts with a byte-order mark, the others have none
    size_t lost = 0;    // characters that the target lacks
};

// `encoding` is ENCODE_UTF8, ENCODE_GBK or ENCODE_UNICODE.
Encoded Encode(const std::u16string& units, int encoding);

#endif  // CODETRANSCLI_TEXT_H
