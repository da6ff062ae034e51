// The four encodings as people name them, and their byte-order marks.
#ifndef CODETRANSCLI_ENCODING_H
#define CODETRANSCLI_ENCODING_H

#include <CodeTrans.h>

#include <optional>
#include <string>
#include <string_view>

// "GBK", "Big5", "UTF-8", "UTF-16LE", or "unknown".
const char* EncodingName(int code);

// The encoding that the user calls `name`, in any case and by its usual other names.
std::optional<int> EncodingNamed(std::string name);

// Empty where the encoding has none.
std::string_view ByteOrderMark(int code);

#endif  // CODETRANSCLI_ENCODING_H
