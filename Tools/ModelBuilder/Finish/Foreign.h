// The way out of text that is none of ours, and back.
//
// What cannot stand in Chinese text in any of the four encodings, or hardly ever does but is common in
// another language, leads to a region in which nothing is added: high bytes go by, positive states do not
// come up, and a text that is mostly so stays undecided. Two common characters of one encoding in a row lead
// back: a stray byte in Chinese text costs a few characters.
#ifndef MODEL_BUILDER_FOREIGN_H
#define MODEL_BUILDER_FOREIGN_H

#include "Samples.h"
#include "States.h"

// To be added after training.
void AddForeignStates(States& states, const Ingredients& from, const CSampleSource& source);

#endif  // MODEL_BUILDER_FOREIGN_H
