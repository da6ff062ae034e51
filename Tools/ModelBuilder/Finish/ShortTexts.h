// Texts of two characters, put right one by one where the trained states miss what the statistics say.
//
// Weights that add up cannot hold every exception, and a text of three or four bytes is all exception. So
// each such text that the statistics know is weighed in every encoding that could have written it, the
// detector is asked for it, and the costliest of its errors get a state of their own, whose value adds up to
// the right answer. In longer texts it is the evidence of two characters, no more.
#ifndef MODEL_BUILDER_SHORT_TEXTS_H
#define MODEL_BUILDER_SHORT_TEXTS_H

#include "Ingredients.h"
#include "States.h"

// To be added last: what the detector says is what is put right. Ends at the recipe's most bytes.
void CorrectShortTexts(States& states, const Ingredients& from);

#endif  // MODEL_BUILDER_SHORT_TEXTS_H
