// Detection in pieces, with a margin: how clearly the text speaks for the answer.
//
// TQ_CodeDetect gives a code and nothing else. Programs that convert in place, and those that show an answer
// to a person, need to know when it rests on little. They link the engine itself and ask here.
//
// The margin counts points of the detector's score. Take the sum of the encoding that is answered, less the
// best sum of the other three, or less 0 if none of them is above 0: that is its lead. Where the text has
// more than four bytes of 80 and above, the lead is divided by their number and multiplied by four, so that a
// long text needs the same lead a character as a short one. UTF-8's lead is taken as it is: the longer a
// text is, the less likely it is UTF-8 by chance. Text that no longer leaves a choice, because the walk met a
// decisive node, has MOST_MARGIN, which is also the greatest that is given. An undecided text has 0.
//
// ENOUGH_MARGIN was chosen on lines of 22 encodings that are not Chinese, of which the detector calls 21 %
// GBK, Big5 or UTF-16LE: 92 % of those have less. So have 8 % of the texts of two characters in GBK or Big5
// that it names rightly, 2.6 % of those of four, 0.4 % of eight and 0.1 % of sixteen.
#ifndef CODETRANS_MARGIN_H
#define CODETRANS_MARGIN_H

#include "Detection.h"

constexpr int MOST_MARGIN = 100;
constexpr int ENOUGH_MARGIN = 10;

struct Answer {
    int code;    // as CodeTrans_CodeDetect gives it
    int margin;  // 0 to MOST_MARGIN
    bool ascii;  // GBK, and no byte of 80 and above was met
};

// What the walk's totals say.
Answer AnswerOf(const Scores& scores);

// Walks on over the next piece of a text, by the model that is loaded. Does nothing without one, and once
// scores.decidedCode is not 0. Reentrant while the model stays loaded.
void WalkOn(const char* text, unsigned long length, WalkPosition& position);

// The answer for a whole text, with the code that CodeTrans_CodeDetect gives. A model must be loaded.
// Reentrant while it stays so.
Answer AnswerFor(const char* text, unsigned long length);

// Bytes of the byte-order mark with which a text in the encoding `code` begins: 3 for UTF-8, 2 for UTF-16LE,
// 0 without a mark.
unsigned long MarkLength(int code, const char* text, unsigned long length);

#endif  // CODETRANS_MARGIN_H
