// Pairs, and sequences of two pairs, that another language has and text of ours next to never.
//
// They lead into the foreign region (Foreign.h). A single pair must be next to impossible in our text: names
// are made of rare ones, and what may be a hanzi of UTF-16LE is met by more ways than the statistics know.
#ifndef MODEL_BUILDER_FOREIGN_SEQUENCES_H
#define MODEL_BUILDER_FOREIGN_SEQUENCES_H

#include "Samples.h"
#include "States.h"

void AddForeignSequences(States& states, const Ingredients& from, const CSampleSource& source);

#endif  // MODEL_BUILDER_FOREIGN_SEQUENCES_H
