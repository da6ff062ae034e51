// A file with a line for each renaming, by which all can be taken back: the folder, the old name and the new
// one.
#ifndef CODETRANSCLI_UNDOLIST_H
#define CODETRANSCLI_UNDOLIST_H

#include <string>
#include <vector>

#include "Renaming.h"

// A name for the list in the current folder that no file has.
std::string NewUndoListName();

// Makes the file, which must not exist, and returns when it is on the disk. Throws std::system_error.
void WriteUndoList(const std::string& path, const std::vector<Renaming>& renamings);

// Throws std::runtime_error when the file is no such list, or not a whole one.
std::vector<Renaming> ReadUndoList(const std::string& path);

#endif  // CODETRANSCLI_UNDOLIST_H
