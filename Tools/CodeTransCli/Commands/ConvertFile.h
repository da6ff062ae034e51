// One file into another encoding, whole or not at all.
#ifndef CODETRANSCLI_CONVERT_FILE_H
#define CODETRANSCLI_CONVERT_FILE_H

#include <memory>

#include "Commands.h"
#include "Inputs.h"
#include "Report.h"
#include "Target.h"
#include "Workers.h"

struct ConvertedFile {
    Report report;                   // as it will be true once the target is in its place
    std::unique_ptr<Target> target;  // prepared; null if nothing is left to do
};

// `threads` share the work where the file is long.
ConvertedFile ConvertFile(const CommonOptions& common, const ConvertOptions& options, const Input& input,
                          const Workers::Progress& progress, unsigned threads);

// Of a file that could not be read or written.
Report FailureReport(const ConvertOptions& options, const Input& input, const std::string& why);

#endif  // CODETRANSCLI_CONVERT_FILE_H
