// Bytes by hand, so that every machine writes the same file.
#include "ModelFile.h"

#include <stdexcept>

#include "Automaton.h"

namespace
{
void AppendInteger(std::string& to, unsigned value, int bytes)
{
    for (int i = 0; i < bytes; ++i) to += static_cast<char>(value >> (8 * i) & 0xFF);
}

int IntegerAt(const std::string& content, size_t at)
{
    unsigned value = 0;
    for (size_t i = 0; i < 4; ++i) value |= ByteAt(content, at + i) << (8 * i);
    return static_cast<int>(value);
}

constexpr size_t NODES_AT = 4 * MAPPING_ENTRIES + 4, NODE_SIZE = 16;
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

std::vector<TrieNode> NodesOfModel(const std::string& content)
{
    const int count = content.size() < NODES_AT ? -1 : IntegerAt(content, NODES_AT - 4);
    if (count < 1 || content.size() < NODES_AT + NODE_SIZE * static_cast<size_t>(count))
        throw std::runtime_error("a model file is truncated or not a model file");
    std::vector<TrieNode> nodes;
    for (size_t at = NODES_AT; nodes.size() < static_cast<size_t>(count); at += NODE_SIZE)
        nodes.push_back({.nBase = IntegerAt(content, at),
                         .nCheck = IntegerAt(content, at + 4),
                         .nFail = IntegerAt(content, at + 8),
                         .nValue = IntegerAt(content, at + 12)});
    return nodes;
}
