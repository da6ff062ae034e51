// UTF-8, UTF-16, UTF-32 and ASCII.
#ifndef CODETRANSCLI_UNICODE_CODEC_H
#define CODETRANSCLI_UNICODE_CODEC_H

#include "Codec.h"

std::unique_ptr<Decoder> MakeUnicodeDecoder(const Encoding& encoding);
std::unique_ptr<Encoder> MakeUnicodeEncoder(const Encoding& encoding);

// The bytes of well-formed UTF-8 at the start of `text`: no overlong forms, no surrogates, nothing above
// U+10FFFF. A character that the end of `text` cuts is not among them.
size_t Utf8Length(std::string_view text);

bool IsFlawlessUtf8(std::string_view text);

// The character at the start of `text`, which is not empty.
Character FirstOfUtf8(std::string_view text);

// The length of `text` up to its first byte of 80 and above.
size_t AsciiLength(std::string_view text);

#endif  // CODETRANSCLI_UNICODE_CODEC_H
