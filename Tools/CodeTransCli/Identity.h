// What the bytes of a source are: by a byte-order mark, by being flawless UTF-8, or else by the library's
// answer.
#ifndef CODETRANSCLI_IDENTITY_H
#define CODETRANSCLI_IDENTITY_H

#include <string>
#include <string_view>

struct Identity {
    int code = 0;        // ENCODE_UNKNOWN for binaries too
    size_t mark = 0;     // bytes of the byte-order mark
    bool ascii = false;  // nothing but ASCII: GBK and UTF-8 at once
    bool binary = false;
    std::string doubt;  // why a conversion should not follow the code, or empty
};

Identity Identify(std::string_view bytes);

#endif  // CODETRANSCLI_IDENTITY_H
