// The model file: two mapping tables, the node count, the nodes, all little-endian.
#ifndef MODEL_BUILDER_MODEL_FILE_H
#define MODEL_BUILDER_MODEL_FILE_H

#include <string>

#include "Encoder.h"
#include "States.h"
// Packs and returns the file's content.
std::string ModelContent(const CEncoder& encoder, const States& states);

// The nodes of a model file's content; throws std::runtime_error where it is none.
std::vector<TrieNode> NodesOfModel(const std::string& content);

#endif  // MODEL_BUILDER_MODEL_FILE_H
