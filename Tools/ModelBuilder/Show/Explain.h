// Why a text is decided as it is: the walk byte by byte, the sums, and the rules of the decision.
#ifndef MODEL_BUILDER_EXPLAIN_H
#define MODEL_BUILDER_EXPLAIN_H

#include <iosfwd>
#include <string>

#include "Encoder.h"
#include "States.h"

// The table of the walk over `bytes`, `rows` bytes of it at most, then the decision with its reasons.
void ExplainWalk(const States& states, const std::string& bytes, size_t rows, std::ostream& out);

// Two readings beside each other: the characters of each, what each gains at every byte, and which is ahead.
void ExplainReadings(const States& states, const CEncoder& encoder, const std::string& bytes, Candidate left,
                     Candidate right, size_t rows, std::ostream& out);

// GBK, Big5, UTF-8 or UTF-16LE in any case; throws std::runtime_error for any other name.
Candidate CandidateOf(const std::string& name);

#endif  // MODEL_BUILDER_EXPLAIN_H
