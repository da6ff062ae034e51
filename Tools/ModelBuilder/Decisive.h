// States that end the walk: the seam of two lines that can only be in one encoding.
//
// Full-width punctuation at the end of a line, the line end, and a common character at the start of the next:
// both lines must be in the same encoding, so one odd line in a file decides nothing. A seam is admitted when
// the other encodings' statistics make it a million times less likely than its own.
#ifndef MODEL_BUILDER_DECISIVE_H
#define MODEL_BUILDER_DECISIVE_H

#include "Automaton.h"
#include "Samples.h"

// Adds the states, after training: those on the way get the value of the state that they stand in for. A
// table of at most `nodes` slots is the limit.
void AddDecisiveStates(StateValues& states, const CSampleSource& source, const CEncoder& encoder,
                       size_t nodes);

#endif  // MODEL_BUILDER_DECISIVE_H
