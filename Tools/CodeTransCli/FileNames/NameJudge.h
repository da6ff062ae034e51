// What a group of file names was meant to be: the names of a folder tree, or of an archive.
//
// Names are short, so they are judged together: all names that are not UTF-8 are taken for GBK or all for
// Big5, and all that were garbled by a wrong conversion are taken to have been garbled by the same one.
#ifndef CODETRANSCLI_NAMEJUDGE_H
#define CODETRANSCLI_NAMEJUDGE_H

#include <optional>
#include <string>
#include <vector>

#include "NameEncoding.h"

struct NameVerdict {
    enum class Kind { RIGHT, WRONG, UNDECIDED };
    Kind kind = Kind::RIGHT;
    std::string name;  // the right one in UTF-8, where the name is wrong
    std::string why;   // what is undecided
};

struct NameRules {
    std::optional<NameEncoding> from;  // what the bytes were once, if the user knows
    bool undo = false;                 // names that were converted wrongly are converted back
    bool western = false;              // names can be in CP437, too
};

struct NameJudgement {
    std::vector<NameVerdict> verdicts;     // one for each name
    std::optional<NameEncoding> encoding;  // of those that are not UTF-8
};

NameJudgement JudgeNames(const std::vector<std::string>& names, const NameRules& rules);

#endif  // CODETRANSCLI_NAMEJUDGE_H
