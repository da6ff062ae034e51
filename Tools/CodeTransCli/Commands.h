// The program's commands, each with its options as parsed. All return an ExitStatus.
#ifndef CODETRANSCLI_COMMANDS_H
#define CODETRANSCLI_COMMANDS_H

#include <optional>
#include <string>
#include <vector>

struct CommonOptions {
    std::string directory;  // whose Data folder holds the model; empty: look for it
    bool quiet = false, verbose = false;
};

struct DetectOptions {
    std::vector<std::string> files;
    bool json = false, recursive = false;
    size_t jobs = 1;
};

struct ConvertOptions {
    std::vector<std::string> files;
    int to = 0;
    std::optional<int> from;
    std::string out;  // empty: in place, or standard output
    bool inPlace = false, recursive = false, lossy = false;
    bool force = false;  // follow `from`, although the file seems to be in the target encoding already
    std::string backupSuffix;
    std::optional<bool> mark;  // as asked for
    size_t jobs = 1;
};

int Detect(const CommonOptions& common, const DetectOptions& options);
int Convert(const CommonOptions& common, const ConvertOptions& options);
int Doctor(const CommonOptions& common);

#endif  // CODETRANSCLI_COMMANDS_H
