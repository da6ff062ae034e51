// The recipe: every tuned number of the builder, with its unit and what it trades.
//
// The numbers stand in RecipeNumbers.inc, one entry each. `train --set NAME=VALUE` changes one for a trial,
// and each training prints all of them. What follows from another number is computed here.
#ifndef MODEL_BUILDER_RECIPE_H
#define MODEL_BUILDER_RECIPE_H

#include <cstdint>
#include <iosfwd>
#include <string>

#include "Candidates.h"

struct Recipe {
#define RECIPE_NUMBER(type, name, value, unit, reason) type name = value;
#include "RecipeNumbers.inc"
#undef RECIPE_NUMBER

    // `assignment` is NAME=VALUE; throws std::runtime_error with a sentence where it is not.
    void Set(const std::string& assignment);

    // A line each: name, value, unit.
    void Print(std::ostream& out) const;

    // The same, each with its reason below.
    void PrintReasons(std::ostream& out) const;

    // How much of a candidate's Chinese text is Traditional, in percent.
    uint32_t TraditionalPart(Candidate candidate) const
    {
        return candidate == CANDIDATE_BIG5  ? 100
               : candidate == CANDIDATE_GBK ? traditionalInGbk
                                            : traditionalInUnicode;
    }

    // The odds that one unit of a digit stands for.
    double OddsOfUnit() const;
};

#endif  // MODEL_BUILDER_RECIPE_H
