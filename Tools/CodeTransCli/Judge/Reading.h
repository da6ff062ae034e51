// Texts that are valid UTF-8, ASCII among them, and whether they can be meant as something else.
#ifndef CODETRANSCLI_READING_H
#define CODETRANSCLI_READING_H

#include <string_view>

#include "Encoding.h"

// More than one byte in eight, as where ASCII stands in UTF-16LE.
bool HasManyZeros(std::string_view text);

// Whether `text`, which is valid UTF-8, can be meant as `encoding`.
//
// GBK and Big5: each character beyond ASCII takes two bytes, and these are a common hanzi there. UTF-16LE:
// the length is even, all units are hanzi or ASCII, and the library answers UTF-16LE; or many bytes are zero,
// which is enough. Else not where the characters beyond ASCII are letters of one alphabet, or one of them
// stands alone beside an ASCII letter, or takes more than two bytes.
//
// GB18030 as GBK; UTF-16BE as UTF-16LE with the bytes turned round; UTF-32 where all of the text can be read
// in it; HZ, UTF-7 and the ISO 2022 encodings where the text has their sequences. In any other encoding only
// text that is short, can be read in it, and has nothing of what speaks for UTF-8 above. ASCII is not
// plausible in an encoding that is the same for it.
bool IsPlausible(std::string_view text, const Encoding& encoding);

// The encoding of `text`, which has something beyond ASCII and of which the detector says `answer`: UTF-8
// where the text is valid UTF-8, unless it is short and plausible as what the detector says. Text that is
// not whole may end inside a character.
int Settled(std::string_view text, bool isWhole, int answer);

#endif  // CODETRANSCLI_READING_H
