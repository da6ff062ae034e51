// GBK and Big5, by the mapping tables of the model; and HZ, which writes GB 2312's pairs in seven bits.
#ifndef CODETRANSCLI_PAIR_CODEC_H
#define CODETRANSCLI_PAIR_CODEC_H

#include "Codec.h"

// `code` is ENCODE_GBK or ENCODE_BIG5.
std::unique_ptr<Decoder> MakePairDecoder(int code);
std::unique_ptr<Encoder> MakePairEncoder(int code);

std::unique_ptr<Decoder> MakeHzDecoder();

#endif  // CODETRANSCLI_PAIR_CODEC_H
