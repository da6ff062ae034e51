// From texts to statistics: which sources make up which class, and how words are weighed.
//
// The classes are fixed here, since the trainer's recipes name them. Sources are the files that fetch-texts
// leaves.
#ifndef MODEL_BUILDER_COUNTING_H
#define MODEL_BUILDER_COUNTING_H

#include <string>

// Reads texts/CLASS/*.txt and writes one statistics file a class into `statistics`; a report goes to stderr.
void CountTexts(const std::string& texts, const std::string& statistics);

#endif  // MODEL_BUILDER_COUNTING_H
