// Texts that are flawless UTF-8, ASCII among them, and whether they can be meant as something else.
#ifndef CODETRANSCLI_READING_H
#define CODETRANSCLI_READING_H

#include <string_view>

bool IsAscii(std::string_view text);

// More than one byte in eight, as where ASCII stands in UTF-16LE.
bool HasManyZeros(std::string_view text);

// Whether `text`, which is flawless UTF-8, can be meant as `encoding`.
//
// GBK and Big5: each character beyond ASCII takes two bytes, and these are a common hanzi there. UTF-16LE:
// the length is even, all units are hanzi or ASCII, and the library answers UTF-16LE; or many bytes are zero,
// which is enough. Else not where the characters beyond ASCII are letters of one alphabet, or one of them
// stands alone beside an ASCII letter, or takes more than two bytes.
bool IsPlausible(std::string_view text, int encoding);

// The encoding of `text`, of which the library says `answer`: UTF-8 where the text is flawless UTF-8 with
// anything beyond ASCII, unless it is short and plausible as what the library says.
int Settled(std::string_view text, int answer);

#endif  // CODETRANSCLI_READING_H
