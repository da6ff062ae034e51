// The automaton by names: every state that the detector has, and the one step from state to state.
//
// This is an Aho-Corasick automaton whose failure links are chosen: they follow the rules of the regions (see
// Regions.h) and not the longest known suffix. It is slow, and plain; Automaton.h packs it and walks fast.
#ifndef MODEL_BUILDER_STATES_H
#define MODEL_BUILDER_STATES_H

#include <map>

#include "Bytes.h"
#include "Regions.h"

struct State {
    int value = TRIE_VALUE_NONE;
    Region onward = BY_RULE;  // the region to whose root it falls back instead
    bool operator==(const State&) const = default;
};

// Kept sorted, so that equal automata pack to equal bytes.
using States = std::map<StateName, State>;

// Adds a state and the states on the way to it, without values.
void AddState(States& states, Region region, const std::string& path);

// The states that every automaton has: the regions' roots and the children that the table gives them.
States BasicStates();

// The state that a failure leads to: the rules are followed until they name one that exists.
StateName ExistingFallBack(const States& states, const StateName& state);

// The state that the walk is in after `state` and `byte`.
StateName Step(const States& states, StateName state, char byte);

// Gives each state that was not in `before` the value of the state that the walk would be in without it. To
// be done before any of the new ones is sent onward.
void InheritValues(States& states, const States& before);

#endif  // MODEL_BUILDER_STATES_H
