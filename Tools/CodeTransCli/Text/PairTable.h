// The pairs of GBK and Big5, as the model's tables read them, and which pair is written for a character.
//
// Of several pairs with the same character, the one is written that the engine's encoder writes for GBK; for
// Big5 it is the first from A140 on, but for seven characters where it is the second, as in browsers.
#ifndef CODETRANSCLI_PAIRTABLE_H
#define CODETRANSCLI_PAIRTABLE_H

#include <vector>

// The UTF-16 unit of a pair of `code`, ENCODE_GBK or ENCODE_BIG5, or REPLACEMENT where there is none.
char16_t UnitOf(int code, unsigned lead, unsigned trail);

// For each UTF-16 unit of 80 and above the pair that is written, lead byte first, or 0. Made at the first
// use: a process that only names encodings does without.
const std::vector<unsigned short>& PairsOf(int code);

#endif  // CODETRANSCLI_PAIRTABLE_H
