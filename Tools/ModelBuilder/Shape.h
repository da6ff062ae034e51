// Which states the detector has, which of them carry a value, and which share experience.
//
// Every pair that GBK or Big5 may hold has a state, legal or not yet assigned, so that text stays in step; so
// has every UTF-16LE unit of a character that either knows. UTF-8 characters have two states each where they
// are common.
#ifndef MODEL_BUILDER_SHAPE_H
#define MODEL_BUILDER_SHAPE_H

#include <vector>

#include "Automaton.h"
#include "Encoder.h"

// `known` are the characters that are expected behind a doubtful unit of UTF-16LE, `common` those that
// deserve UTF-8 states of their own.
States ShapeOfDetector(const CEncoder& encoder, const std::vector<wchar_t>& known,
                       const std::vector<wchar_t>& common);

// Whether entering the state says something: leads and other states half-way through a character do not.
bool CarriesValue(const StateName& state);

// Entered by ASCII bytes alone.
bool IsAscii(const StateName& state);

// States of one group share a part of their weights; an empty name is no group.
std::string GroupOf(const StateName& state);

#endif  // MODEL_BUILDER_SHAPE_H
