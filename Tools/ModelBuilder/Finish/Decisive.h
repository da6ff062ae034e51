// States that end the walk: the seam of two lines that can only be in one encoding.
//
// A hint is a full-width mark or a word that the other encodings hardly know. Behind it ASCII is skipped;
// where a line ends and the next piece of text beyond ASCII starts as text in the hint's encoding does, and
// in no other, the walk ends. Two lines must agree for that, so one odd line in a file, or a name in another
// encoding, decides nothing.
#ifndef MODEL_BUILDER_DECISIVE_H
#define MODEL_BUILDER_DECISIVE_H

#include "Ingredients.h"
#include "States.h"

// To be added after training.
void AddDecisiveStates(States& states, const Ingredients& from);

// Takes them out again, but for the byte-order marks, so that the whole walk can be timed and judged.
void DropDecisiveStates(States& states);

#endif  // MODEL_BUILDER_DECISIVE_H
