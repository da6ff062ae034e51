// Lines in another encoding than the rest of their text.
#ifndef CODETRANSCLI_STRAYLINES_H
#define CODETRANSCLI_STRAYLINES_H

#include <string_view>

#include "Conversion.h"

// The lines of `text`, in GBK or Big5, that are UTF-8 beyond chance: flawless, with four characters of three
// bytes. None in the other encodings, where the lines of another cannot be read at all.
Losses FindUtf8Lines(std::string_view text, int encoding, size_t describe);

#endif  // CODETRANSCLI_STRAYLINES_H
