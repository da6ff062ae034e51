// What became of one file, and the exit status that follows.
#ifndef CODETRANSCLI_REPORT_H
#define CODETRANSCLI_REPORT_H

#include <array>
#include <string>

enum ExitStatus {
    DONE = 0,
    NOT_DONE = 1,  // something undecided or refused
    WRONG_USAGE = 2,
    FAILED = 3,      // reading, writing, or the model
    WITH_LOSSES = 4  // converted by --lossy, and something was lost
};

// In the order in which they weigh for the exit status.
enum class Outcome { DONE, UNTOUCHED, SKIPPED, LOSSY, UNDECIDED, REFUSED, FAILED };
using OutcomeCounts = std::array<size_t, static_cast<size_t>(Outcome::FAILED) + 1>;

struct Report {
    Outcome outcome = Outcome::DONE;
    std::string result;  // for standard output
    std::string remark;  // for standard error
};

ExitStatus StatusOf(Outcome outcome);

// "codetrans: NAME: TEXT", a line.
std::string Remark(const std::string& name, const std::string& text);

#endif  // CODETRANSCLI_REPORT_H
