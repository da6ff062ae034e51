// The committed text list of the detector's states and their values, from which the model is packed.
//
// A line names a parent: its region and path; then each child: its byte, a colon, and '-' or the four
// adjustments for GBK, Big5, UTF-16LE and UTF-8, then '*' if an all-zero value is to count, '!' and a code if
// the state decides.
#ifndef MODEL_BUILDER_PATTERNS_H
#define MODEL_BUILDER_PATTERNS_H

#include <string>

#include "Automaton.h"

void WritePatterns(const StateValues& states, const std::string& path);
StateValues ReadPatterns(const std::string& path);

#endif  // MODEL_BUILDER_PATTERNS_H
