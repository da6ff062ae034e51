// What texts hold that no dictionary does: runs of signs, terminals' colours, Windows line ends, damage.
#ifndef MODEL_BUILDER_ODDITIES_H
#define MODEL_BUILDER_ODDITIES_H

#include <string>

#include "Random.h"

void EndLinesAsWindows(std::wstring& text);

// One to six signs: kana, Zhuyin, full-width forms, frames.
void InsertRun(std::wstring& text, CRandom& random);

// Terminals' colours, as bulletin boards use them.
void InsertEscapes(std::wstring& text, CRandom& random);

// Half a character lost at an end, or one stray byte; nothing in texts of less than twelve bytes.
void Damage(std::string& bytes, CRandom& random);

// Text that machines write: numbers, hexadecimal digits, Base64, rules.
std::string MachineText(size_t length, CRandom& random);

#endif  // MODEL_BUILDER_ODDITIES_H
