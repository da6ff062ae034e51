// States are numbered in their sorted order, so that equal automata give equal nodes.
#include "Automaton.h"

namespace
{
std::vector<PackableState> Numbered(const States& states)
{
    std::map<StateName, int> numbers;
    for (const auto& [name, entry] : states) numbers.emplace(name, static_cast<int>(numbers.size()));
    std::vector<PackableState> linked;
    for (const auto& [name, entry] : states) {
        PackableState state;
        if (!name.path.empty()) {
            state.parent =
                numbers.at({.region = name.region, .path = name.path.substr(0, name.path.size() - 1)});
            state.byte = static_cast<uint8_t>(name.path.back());
        }
        state.fail = numbers.at(ExistingFallBack(states, name));
        state.value = entry.value;
        linked.push_back(state);
    }
    return linked;
}
}  // namespace

CAutomaton::CAutomaton(const States& states)
{
    PackedTrie packed = PackStates(Numbered(states));
    m_nodes = std::move(packed.nodes);
    m_names.assign(m_nodes.size(), nullptr);
    size_t number = 0;
    for (const auto& [name, entry] : states) m_names[static_cast<size_t>(packed.nodeOf[number++])] = &name;
}
