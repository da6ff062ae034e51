// What texts hold that no dictionary does: runs of signs, terminals' colours, Windows line ends, damage.
#ifndef MODEL_BUILDER_ODDITIES_H
#define MODEL_BUILDER_ODDITIES_H

#include <string>

#include "Random.h"
#include "Recipe.h"

void EndLinesAsWindows(std::wstring& text);

// A few signs in a row: kana, Zhuyin, full-width forms, frames.
void InsertRun(std::wstring& text, const Recipe& recipe, CRandom& random);

// Terminals' colours, as bulletin boards use them.
void InsertEscapes(std::wstring& text, const Recipe& recipe, CRandom& random);

// A few signs of print, of trade and of measure, or accented letters, as English text has them.
void InsertSigns(std::wstring& text, const Recipe& recipe, CRandom& random);

// A few emoji, joined or with a skin's colour now and then.
void InsertEmoji(std::wstring& text, const Recipe& recipe, CRandom& random);

// Lines of frames, blocks, bullets and rules, as terminals show them.
std::wstring Art(size_t length, const Recipe& recipe, CRandom& random);

// A few characters in the four bytes of GB18030, between two others of GBK text.
void InsertFourBytes(std::string& bytes, const Recipe& recipe, CRandom& random);

// Half a character lost at an end, or one stray byte; nothing in very short texts.
void Damage(std::string& bytes, const Recipe& recipe, CRandom& random);

// Text that machines write: numbers, hexadecimal digits, Base64, rules.
std::string MachineText(size_t length, CRandom& random);

#endif  // MODEL_BUILDER_ODDITIES_H
