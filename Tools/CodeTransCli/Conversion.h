// A whole text from one encoding to another, with proof of what arrives.
//
// The library reports no error, so nothing that it writes is believed: each block is decoded, encoded,
// decoded again from the bytes that would be written, and compared unit by unit. What differs, and what could
// not be read in the first place, is a loss with a place and a cause.
#ifndef CODETRANSCLI_CONVERSION_H
#define CODETRANSCLI_CONVERSION_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

struct Loss {
    size_t line, column;  // from 1; columns are characters
    std::string what;
};

struct Losses {
    size_t count = 0;
    std::vector<Loss> described;  // the first of them
};

// Gets the result piece by piece, each with the number of source bytes that it came from.
using Sink = std::function<void(std::string_view bytes, size_t consumed)>;

// `text` has no byte-order mark, and none is written. Describes at most `describe` losses.
Losses Convert(std::string_view text, int from, int to, size_t describe, const Sink& sink);

// What of `text` is no character of `encoding`; a character beyond U+FFFF is one.
Losses FindUnreadable(std::string_view text, int encoding, size_t describe);

#endif  // CODETRANSCLI_CONVERSION_H
