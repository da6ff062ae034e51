// What the bytes of a source are: by a byte-order mark, by being valid UTF-8, by the escape sequences of a
// seven-bit encoding, or else by the detector's answer.
#ifndef CODETRANSCLI_IDENTITY_H
#define CODETRANSCLI_IDENTITY_H

#include <string>
#include <string_view>

#include "Encoding.h"

// Of a source that is longer, the decision is taken on so much of it, from its first byte beyond ASCII on.
constexpr size_t HEAD_BYTES = 4 << 20;

struct Identity {
    const Encoding* encoding = nullptr;  // null for binaries, and where it could not be told
    size_t mark = 0;                     // bytes of the byte-order mark
    int margin = 0;                      // how clear it is: see Margin.h; MOST_MARGIN where it is certain
    bool ascii = false;                  // nothing but ASCII: GBK, Big5 and UTF-8 at once
    bool binary = false;
    std::string doubt;  // why a conversion should not follow the encoding, or empty
};

// `head` is the start of the text, or all of it.
Identity Identify(std::string_view head, bool isWhole);

// Whether all of `text` can be read in `encoding`.
bool CanBeRead(std::string_view text, const Encoding& encoding);

#endif  // CODETRANSCLI_IDENTITY_H
