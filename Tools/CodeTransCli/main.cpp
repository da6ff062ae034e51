// codetrans: names the encoding of files and converts them, from the command line.
//
// Results go to standard output, everything else to standard error.
#include <clocale>

#include "CommandLine.h"

int main(int argc, char** argv)
{
    // For the width of characters alone.
    setlocale(LC_CTYPE, "C.UTF-8");
    return RunCommandLine(argc, argv);
}
