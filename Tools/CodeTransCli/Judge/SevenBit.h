// Encodings whose bytes are all ASCII, and UTF-16 and UTF-32 without a byte-order mark.
#ifndef CODETRANSCLI_SEVEN_BIT_H
#define CODETRANSCLI_SEVEN_BIT_H

#include <string_view>

#include "Encoding.h"

// HZ, UTF-7 or an ISO 2022 encoding, if `text`, which is ASCII, has the sequences of one and can be read in
// it; else null. Text of C or shell can look like UTF-7 or HZ by chance.
const Encoding* FindSevenBit(std::string_view text);

// Whether `text`, which can be read as HZ, has two hanzi or more and only common ones: GB 2312's rows of
// punctuation (21 to 23) and of the first level (30 to 57). That is hardly ever chance.
bool HasCommonHz(std::string_view text);

// UTF-32 if all of `text` is; else null.
const Encoding* FindUtf32(std::string_view text);

#endif  // CODETRANSCLI_SEVEN_BIT_H
