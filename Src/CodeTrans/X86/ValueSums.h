// What a row of nodes' values adds to the scores, and the high bytes of a stretch of text.
#ifndef CODETRANS_X86_VALUE_SUMS_H
#define CODETRANS_X86_VALUE_SUMS_H

#include "Detection.h"

namespace fast
{
constexpr unsigned long MOST_VALUES = 2048;  // of a row: lanes of 16 bits hold an eighth of their digits
constexpr unsigned VALUES_PADDING = 8;       // room behind a row

// Adds the values up to `end` to the scores; writes behind them. A decisive one ends it: then the scores are
// worth nothing but its code.
void AddValues(int* values, int* end, Scores& scores);

int CountHighBytes(const unsigned char* text, unsigned long size);
}  // namespace fast

#endif  // CODETRANS_X86_VALUE_SUMS_H
