// Where the characters of a text begin and end, by the rules of each encoding, without any table.
//
// The library skips or swallows what is not well-formed, and reads the bytes after it as it can. So the tool
// walks the text first: what this walk calls WHOLE is what the library turns into exactly one code unit each,
// and everything else stays outside the library and is named to the user.
#ifndef CODETRANSCLI_CHARACTERS_H
#define CODETRANSCLI_CHARACTERS_H

#include <cstddef>
#include <string_view>

enum class Form {
    WHOLE,      // one code unit, if the encoding's table has it
    EURO,       // GBK's single byte 80, which the library takes for a lead byte
    MALFORMED,  // no character of the encoding
    CUT,        // the text ends inside the character
    BEYOND,     // a character above U+FFFF
    LONE_HALF   // half of such a character, in UTF-16LE
};

struct Character {
    size_t length = 1;  // bytes; never 0
    Form form = Form::WHOLE;
};

// The first character of `text`, which is not empty.
Character FirstCharacter(std::string_view text, int encoding);

// The number of bytes of the WHOLE characters at the start of `text`; none begins at or after `limit`.
size_t WholeLength(std::string_view text, int encoding, size_t limit);

// Whether all of `text` is well-formed UTF-8, characters above U+FFFF among it.
bool IsFlawlessUtf8(std::string_view text);

#endif  // CODETRANSCLI_CHARACTERS_H
