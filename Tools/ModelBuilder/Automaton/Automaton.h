// The automaton packed as the library has it, with the names of its states: one type to walk, to ask and to
// write.
//
// Packing numbers the states and lays them out as a double array (DoubleArray.h). The step is the library's
// own (Src/CodeTrans/Detection.h), so what training sees is what detection does.
#ifndef MODEL_BUILDER_AUTOMATON_H
#define MODEL_BUILDER_AUTOMATON_H

#include <string>
#include <vector>

#include "Detection.h"
#include "DoubleArray.h"
#include "States.h"

class CAutomaton
{
public:
    // Keeps its own copy of nothing but the nodes: `states` must outlive it where names are asked for.
    explicit CAutomaton(const States& states);

    const std::vector<TrieNode>& Nodes() const { return m_nodes; }
    unsigned NodeCount() const { return static_cast<unsigned>(m_nodes.size()); }

    // The state of a node, or null for a slot that is none.
    const StateName* NameOf(int node) const { return m_names[static_cast<size_t>(node)]; }

    int Step(int node, unsigned char byte) const
    {
        for (;;) {
            const int child = trie::Child(m_nodes.data(), NodeCount(), node, byte);
            if (child != trie::NO_NODE) return child;
            node = trie::FailureLink(m_nodes.data(), NodeCount(), node);
        }
    }

    // Calls `visit(node, position)` for the node entered by each byte. Decisive states do not end this walk.
    template <typename Visit>
    void ForEachStep(const std::string& bytes, Visit visit) const
    {
        int node = trie::ROOT;
        for (size_t i = 0; i < bytes.size(); ++i)
            visit(node = Step(node, static_cast<unsigned char>(bytes[i])), i);
    }

    // The library's walk and decision.
    Scores ScoresOf(const std::string& bytes) const
    {
        return Walk(m_nodes.data(), NodeCount(), bytes.data(), bytes.size());
    }

private:
    std::vector<TrieNode> m_nodes;
    std::vector<const StateName*> m_names;  // by node
};

#endif  // MODEL_BUILDER_AUTOMATON_H
