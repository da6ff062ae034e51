// Bytes of foreign text as characters, so that they are counted and drawn like text.
//
// In text a byte below 80 is itself, another one U+0100 plus the byte, and a pair of a two-byte encoding
// U+4000 + 192 * (lead - 80) + (trail - 40). In data, where control characters count as well, every byte is
// U+0100 plus the byte.
#ifndef MODEL_BUILDER_FOREIGN_TOKENS_H
#define MODEL_BUILDER_FOREIGN_TOKENS_H

#include <string>

#include "Classes.h"

// The bytes of one line as characters, by the class's role.
std::wstring TokensOf(const std::string& bytes, Role role);
std::wstring TokensOfData(const std::string& bytes);

// The bytes of one such character.
std::string BytesOfToken(wchar_t token);

#endif  // MODEL_BUILDER_FOREIGN_TOKENS_H
