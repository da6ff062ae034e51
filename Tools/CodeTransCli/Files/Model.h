// Where the model lies, whether it is whole, and loading it.
//
// TQ_Init would log and print where it fails, so the engine's own function loads it.
#ifndef CODETRANSCLI_MODEL_H
#define CODETRANSCLI_MODEL_H

#include <cstddef>
#include <string>
#include <vector>

// The folders that may hold Data/CodeTrans.model, the first that does wins: `chosen` alone unless it is
// empty, else those beside the program, else the one installed.
std::vector<std::string> ModelFolders(const std::string& chosen);

std::string ModelFile(const std::string& folder);

// This program.
std::string ProgramFile();

// The first of `folders` that has a model, or empty.
std::string FindModel(const std::vector<std::string>& folders);

struct ModelState {
    size_t bytes = 0, nodes = 0;
    std::string
        fault;  // empty when the file is whole and, if `thorough`, every node that can be reached is sound
};
ModelState CheckModel(const std::string& file, bool thorough);

bool LoadModel(const std::string& file);

#endif  // CODETRANSCLI_MODEL_H
