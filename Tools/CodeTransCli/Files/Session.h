// What detect and convert share: the model, and a run over the inputs whose results go to standard output and
// whose remarks go to standard error.
#ifndef CODETRANSCLI_SESSION_H
#define CODETRANSCLI_SESSION_H

#include <functional>

#include "Commands.h"
#include "Inputs.h"
#include "Report.h"
#include "Workers.h"

// Loads the model; false, with a message, when there is none.
bool Begin(const CommonOptions& common);

struct Session {
    const CommonOptions& common;
    const Inputs& inputs;
    size_t jobs;
    bool bar;  // wanted, if the work is long and someone is looking
    // As for Workers. Exceptions become reports.
    std::function<void(size_t task, const Workers::Progress&, const Workers::Send&)> work;
    std::function<void(const Workers::Send&)> finish = [](const Workers::Send&) {};

    // The exit status, and how many inputs came to each outcome.
    int Run(OutcomeCounts& counts) const;
};

#endif  // CODETRANSCLI_SESSION_H
