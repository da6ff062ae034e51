// Pairs, and sequences of two pairs, that another language has and text of ours next to never.
//
// They lead into the foreign region (Foreign.h). A single pair must be next to impossible in our text: names
// are made of rare ones, and what may be a hanzi of UTF-16LE is met by more ways than the statistics know. Of
// sequences there are many more than states to spend on them, so those are used that keep the most drawn
// foreign text from being taken for ours.
#ifndef MODEL_BUILDER_FOREIGN_SEQUENCES_H
#define MODEL_BUILDER_FOREIGN_SEQUENCES_H

#include "Samples.h"
#include "States.h"

// Sends the pairs away. Returns the sequences that may be sent away, each as a number of 32 bits.
std::vector<uint32_t> AddForeignPairs(States& states, const Ingredients& from, const CSampleSource& source);

// Sends those away that leave most foreign text undecided. To be added after all other foreign states.
void AddForeignSequences(States& states, const std::vector<uint32_t>& sequences, const Ingredients& from,
                         const CSampleSource& source);

#endif  // MODEL_BUILDER_FOREIGN_SEQUENCES_H
