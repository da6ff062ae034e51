// Which files the command line means.
#ifndef CODETRANSCLI_INPUTS_H
#define CODETRANSCLI_INPUTS_H

#include <cstdint>
#include <string>
#include <vector>

#include "Commands.h"

struct Input {
    std::string path;      // "-" is standard input
    std::string relative;  // to the folder that was named; the file's own name for a file that was
    bool walked = false;   // found in a folder
};

struct Inputs {
    std::vector<Input> files;
    std::vector<std::string> remarks;  // on what was passed over
    std::vector<std::string> failures;
    uint64_t bytes = 0;

    // Keeps one of several names that lead to the same file through links.
    void DropAliases();
};

struct BackupOptions {
    bool passedOver = false;
    std::string suffix;  // files that end in it are backups, too
};

// Folders are walked in the order of the names. Links to folders, the folders of version control, and what is
// no regular file are passed over; so are files in folders that no pattern of `include` or some pattern of
// `exclude` fits: the name, or the path below the folder where the pattern has a slash.
Inputs CollectInputs(const FileOptions& options, const BackupOptions& backups);

// Whether a folder of this name is version control's own, which no command enters.
bool IsVersionControl(const std::string& name);

#endif  // CODETRANSCLI_INPUTS_H
