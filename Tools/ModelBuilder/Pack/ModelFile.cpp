// Bytes by hand, so that every machine writes the same file.
#include "ModelFile.h"

#include "Automaton.h"

namespace
{
void AppendInteger(std::string& to, unsigned value, int bytes)
{
    for (int i = 0; i < bytes; ++i) to += static_cast<char>(value >> (8 * i) & 0xFF);
}
}  // namespace

std::string ModelContent(const CEncoder& encoder, const States& states)
{
    std::string content;
    for (const std::vector<uint16_t>* mapping : {&encoder.Gbk(), &encoder.Big5()})
        for (const uint16_t code : *mapping) AppendInteger(content, code, 2);
    const std::vector<TrieNode> nodes = CAutomaton(states).Nodes();
    AppendInteger(content, static_cast<unsigned>(nodes.size()), 4);
    for (const TrieNode& node : nodes)
        for (const int field : {node.nBase, node.nCheck, node.nFail, node.nValue})
            AppendInteger(content, static_cast<unsigned>(field), 4);
    return content;
}
