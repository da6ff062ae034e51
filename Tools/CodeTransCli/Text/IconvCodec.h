// Encodings that only the C library's iconv knows.
#ifndef CODETRANSCLI_ICONV_CODEC_H
#define CODETRANSCLI_ICONV_CODEC_H

#include "Codec.h"

// Throw std::runtime_error where iconv does not know the encoding.
std::unique_ptr<Decoder> MakeIconvDecoder(const Encoding& encoding);
std::unique_ptr<Encoder> MakeIconvEncoder(const Encoding& encoding);

#endif  // CODETRANSCLI_ICONV_CODEC_H
