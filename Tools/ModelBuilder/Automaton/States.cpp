// Failure links by the rules of the regions; the start's states follow their twins.
#include "States.h"

void AddState(States& states, Region region, const std::string& path)
{
    StateName name{.region = region, .path = ""};
    states.try_emplace(name);
    for (const char byte : path) {
        name.path += byte;
        states.try_emplace(name);
    }
}

States BasicStates()
{
    States states;
    for (const RegionRow& row : RegionTable())
        for (int i = 0; i < row.count; ++i) {
            AddState(states, RegionOf(row.first, i), "");
            for (unsigned byte = 0; row.everyByte && byte < 0x100; ++byte)
                AddState(states, RegionOf(row.first, i), OneByte(byte));
        }
    return states;
}

StateName ExistingFallBack(const States& states, const StateName& state)
{
    const auto known = states.find(state);
    if (known != states.end() && known->second.onward != BY_RULE)
        return {.region = known->second.onward, .path = ""};
    // Where short texts have states of their own, a state is followed by what its twin would be followed by.
    if ((state.region == REGION_START || state.region == REGION_WORD) && state.path.size() > 1) {
        const StateName parent{.region = state.region, .path = state.path.substr(0, state.path.size() - 1)};
        return Step(states, ExistingFallBack(states, parent), state.path.back());
    }
    StateName target = RowOf(state.region).fallBack(state);
    while (!states.contains(target)) target = RowOf(target.region).fallBack(target);
    return target;
}

StateName Step(const States& states, StateName state, char byte)
{
    while (!states.contains({.region = state.region, .path = state.path + byte}))
        state = ExistingFallBack(states, state);
    return {.region = state.region, .path = state.path + byte};
}

void InheritValues(States& states, const States& before)
{
    for (auto& [name, state] : states) {
        if (before.contains(name)) continue;
        StateName twin = ExistingFallBack(states, name);
        while (!before.contains(twin)) twin = ExistingFallBack(states, twin);
        state.value = before.at(twin).value;
    }
}
