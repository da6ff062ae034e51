// Training of the states' values: multinomial logistic regression over the states that a sample visits.
//
// A state's weight for an encoding is its own plus its group's, so that rare states inherit from their like.
// A pair beyond ASCII starts from its share in each encoding. One that UTF-8 cannot hold has no group and
// learns slowly, since the statistics say nearly all that there is to say of it.
// States that ASCII alone can enter tell UTF-16LE from the rest and nothing else. All arithmetic is IEEE
// double with basic operations and square roots only, in a fixed order: the same input gives the same digits
// on every machine.
#ifndef MODEL_BUILDER_TRAINER_H
#define MODEL_BUILDER_TRAINER_H

#include <cstdint>

#include "Automaton.h"
#include "Samples.h"

struct TrainingPlan {
    uint64_t samples = 8'000'000;
    uint64_t seed = 1;
};

// Sets the value of every state that carries one. Progress goes to stderr.
void TrainValues(States& states, const CSampleSource& source, const CEncoder& encoder,
                 const TrainingPlan& plan);

#endif  // MODEL_BUILDER_TRAINER_H
