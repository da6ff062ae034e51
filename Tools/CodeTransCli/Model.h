// Where the model lies, whether it is whole, and loading it without a sound.
//
// The library loads what it is given and, when it cannot, writes a log file into the current folder and
// prints. So the model is looked at first, and loaded where no log file can come into being, with standard
// output turned away.
#ifndef CODETRANSCLI_MODEL_H
#define CODETRANSCLI_MODEL_H

#include <cstddef>
#include <string>
#include <vector>

// The folders that may hold Data/CodeTrans.model, the first that does wins: `chosen` alone unless it is
// empty, else those beside the library, else the one installed.
std::vector<std::string> ModelFolders(const std::string& chosen);

std::string ModelFile(const std::string& folder);

// The library that this process runs with.
std::string LibraryFile();

// The first of `folders` that has a model, or empty.
std::string FindModel(const std::vector<std::string>& folders);

struct ModelState {
    size_t bytes = 0, nodes = 0;
    std::string
        fault;  // empty when the file is whole and, if `thorough`, every node that can be reached is sound
};
ModelState CheckModel(const std::string& file, bool thorough);

// False when the library refuses.
bool LoadQuietly(const std::string& folder);

#endif  // CODETRANSCLI_MODEL_H
