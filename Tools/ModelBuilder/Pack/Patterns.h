// The committed text list of the detector's states and their values, from which the model is packed.
//
// A line names a parent: its region and path; then each child: its byte, a colon, and '-' or the four
// adjustments for GBK, Big5, UTF-8 and UTF-16LE, then '*' if an all-zero value is to count, '!' and a code if
// the state decides, '>' and a region if it falls back to that one's root instead of what its own says.
#ifndef MODEL_BUILDER_PATTERNS_H
#define MODEL_BUILDER_PATTERNS_H

#include <string>

#include "States.h"

void WritePatterns(const States& states, const std::string& path);
States ReadPatterns(const std::string& path);

#endif  // MODEL_BUILDER_PATTERNS_H
