// What the regression learns of a state: whether it carries a value, and with which others it shares weights.
#ifndef MODEL_BUILDER_FEATURES_H
#define MODEL_BUILDER_FEATURES_H

#include <string>

#include "States.h"

// Whether entering the state says something: leads and other states half-way through a character do not.
bool CarriesValue(const StateName& state);

// A state of the main region, or behind ASCII, that ends a pair.
inline bool IsPair(const StateName& state)
{
    return (state.region == REGION_MAIN || state.region == REGION_WORD) && state.path.size() == 2;
}

// States of one group share a part of their weights, so that rare ones inherit from their like.
std::string GroupOf(const StateName& state);

#endif  // MODEL_BUILDER_FEATURES_H
