// First fit: each family of children takes the lowest base at which all of its slots are free.
#include "DoubleArray.h"

#include <algorithm>

namespace
{
constexpr int FREE = -1;

class CPacker
{
public:
    explicit CPacker(const std::vector<PackableState>& states) : m_states(states), m_children(states.size())
    {
        for (size_t s = 0; s < states.size(); ++s)
            if (states[s].parent >= 0) m_children[Index(states[s].parent)].push_back(static_cast<int>(s));
        m_base.assign(states.size(), 0);
        m_nodeOf.assign(states.size(), FREE);
    }

    PackedTrie Pack()
    {
        Occupy(0, 0);
        for (const int s : BySize()) Place(s);
        for (size_t s = 0; s < m_states.size(); ++s)
            if (m_nodeOf[s] == FREE) Occupy(static_cast<int>(s), FirstFree(0));
        return Table();
    }

private:
    static size_t Index(int i) { return static_cast<size_t>(i); }

    // States with children, the largest families first, in the order of the list otherwise.
    std::vector<int> BySize() const
    {
        std::vector<int> order;
        for (size_t s = 0; s < m_states.size(); ++s)
            if (!m_children[s].empty()) order.push_back(static_cast<int>(s));
        std::stable_sort(order.begin(), order.end(), [this](int a, int b) {
            return m_children[Index(a)].size() > m_children[Index(b)].size();
        });
        return order;
    }

    int FirstFree(int from) const
    {
        while (Index(from) < m_taken.size() && m_taken[Index(from)]) ++from;
        return from;
    }

    void Occupy(int state, int slot)
    {
        if (Index(slot) >= m_taken.size()) m_taken.resize(Index(slot) + 1, false);
        m_taken[Index(slot)] = true;
        m_nodeOf[Index(state)] = slot;
    }

    bool Fits(const std::vector<int>& family, int base) const
    {
        return std::all_of(family.begin(), family.end(), [&](int child) {
            const size_t slot = Index(base + m_states[Index(child)].byte);
            return slot >= m_taken.size() || !m_taken[slot];
        });
    }

    // The lowest base at which all children of `state` find free slots. Slots below m_full are all taken.
    void Place(int state)
    {
        const std::vector<int>& family = m_children[Index(state)];
        const int first = m_states[Index(family.front())].byte;
        m_full = FirstFree(m_full);
        int slot = m_full;
        while (slot < first || !Fits(family, slot - first)) slot = FirstFree(slot + 1);
        m_base[Index(state)] = slot - first;
        for (const int child : family) Occupy(child, slot - first + m_states[Index(child)].byte);
    }

    PackedTrie Table() const
    {
        const int largest = *std::max_element(m_base.begin(), m_base.end());
        PackedTrie packed;
        packed.nodes.assign(std::max(m_taken.size(), Index(largest) + 256), {0, FREE, 0, TRIE_VALUE_NONE});
        packed.nodeOf = m_nodeOf;
        for (size_t s = 0; s < m_states.size(); ++s) {
            const PackableState& state = m_states[s];
            TrieNode& node = packed.nodes[Index(m_nodeOf[s])];
            node.nBase = m_base[s];
            node.nCheck = state.parent < 0 ? FREE : m_nodeOf[Index(state.parent)];
            node.nFail = m_nodeOf[Index(state.fail)];
            node.nValue = state.value;
        }
        return packed;
    }

    const std::vector<PackableState>& m_states;
    std::vector<std::vector<int>> m_children;
    std::vector<int> m_base, m_nodeOf;
    std::vector<bool> m_taken;
    int m_full = 0;
};
}  // namespace

PackedTrie PackStates(const std::vector<PackableState>& states)
{
    return CPacker(states).Pack();
}
