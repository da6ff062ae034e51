// Work on many files in several processes; reports come back in the order of the files.
//
// Processes, not threads: what a damaged disk or a full memory does to one file stays with that file. A
// single file is worked on in this process, as starting another one would take longer than most files do.
#ifndef CODETRANSCLI_WORKERS_H
#define CODETRANSCLI_WORKERS_H

#include <cstddef>
#include <cstdint>
#include <functional>

#include "Report.h"

struct Workers {
    size_t tasks = 0;
    size_t processes = 1;

    // Runs in a worker; tells the bytes that it has done, as it goes. The report may be sent with a later
    // task's, or by `finish`, which runs once in each worker when no task is left.
    using Progress = std::function<void(uint64_t bytes)>;
    using Send = std::function<void(size_t task, const Report& report)>;
    std::function<void(size_t task, const Progress& progress, const Send& send)> work;
    std::function<void(const Send& send)> finish;

    // Runs in this process: each report in its turn, and now and then the bytes done by all.
    std::function<void(size_t task, const Report& report)> done;
    Progress shown;

    void Run() const;
};

#endif  // CODETRANSCLI_WORKERS_H
