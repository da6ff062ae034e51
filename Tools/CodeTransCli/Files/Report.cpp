#include "Report.h"

#include "Names.h"

ExitStatus StatusOf(Outcome outcome)
{
    switch (outcome) {
        case Outcome::LOSSY:
            return WITH_LOSSES;
        case Outcome::UNDECIDED:
        case Outcome::REFUSED:
            return NOT_DONE;
        case Outcome::FAILED:
            return FAILED;
        default:
            return DONE;
    }
}

std::string Remark(const std::string& name, const std::string& text)
{
    return "codetrans: " + Readable(name) + ": " + text + "\n";
}
