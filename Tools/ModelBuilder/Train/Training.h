// The main run: samples are drawn and learned, and the weights become the states' values.
#ifndef MODEL_BUILDER_TRAINING_H
#define MODEL_BUILDER_TRAINING_H

#include "Samples.h"
#include "States.h"

// Sets the value of every state that carries one. Progress goes to stderr.
void TrainValues(States& states, const Ingredients& from, const CSampleSource& source);

#endif  // MODEL_BUILDER_TRAINING_H
