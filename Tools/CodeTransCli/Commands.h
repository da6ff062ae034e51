// The program's commands, each with its options as parsed. All return an ExitStatus.
#ifndef CODETRANSCLI_COMMANDS_H
#define CODETRANSCLI_COMMANDS_H

#include <optional>
#include <string>
#include <vector>

#include "Encoding.h"
#include "TextChanges.h"

struct CommonOptions {
    std::string directory;  // whose Data folder holds the model; empty: look for it
    bool quiet = false, verbose = false;
};

// Which files.
struct FileOptions {
    std::vector<std::string> files;
    bool recursive = false;
    std::vector<std::string> include, exclude;  // patterns for the names in folders
    std::string listFile;                       // further names stand in it, "-" is standard input
    bool zeroSeparated = false;                 // the names in the list end with a zero byte, not a line end
    size_t jobs = 0;                            // processes that share the work; 0: one for each processor
};

struct DetectOptions {
    FileOptions input;
    bool json = false;
    bool printNames = false;        // nothing but the names, each with a zero byte behind
    std::vector<std::string> only;  // encodings, as the user names them: no other file is shown
};

struct ConvertOptions {
    FileOptions input;
    const Encoding* to = nullptr;
    const Encoding* from = nullptr;  // null: detected
    bool fromEitherOrder = false;    // --from names UTF-16 or UTF-32 without a byte order
    std::string out;                 // empty: in place, or standard output
    bool inPlace = false, lossy = false, dryRun = false, json = false;
    bool force = false;    // follow `from`, although the file seems to be in the target encoding already
    bool byLines = false;  // each line in an encoding of its own
    int sure = 0;          // the least margin that is enough
    std::string backupSuffix;
    std::optional<bool> mark;  // as asked for
    LineEnd lineEnd = LineEnd::KEPT;
    bool fixDeclarations = false;
};

struct RestoreOptions {
    FileOptions input;
    std::string backupSuffix;  // empty: by the record
    bool dryRun = false, force = false;
};

int Detect(const CommonOptions& common, const DetectOptions& options);
int Convert(const CommonOptions& common, const ConvertOptions& options);
int Restore(const CommonOptions& common, const RestoreOptions& options);
int Doctor(const CommonOptions& common);

#endif  // CODETRANSCLI_COMMANDS_H
