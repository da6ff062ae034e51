// codetrans: names the encoding of files and converts them, from the command line.
//
// Results go to standard output, everything else to standard error.
#include <csignal>

#include "CommandLine.h"

int main(int argc, char** argv)
{
    // A file that grows too large is an error of writing, and not the end of the process.
    signal(SIGXFSZ, SIG_IGN);
    return RunCommandLine(argc, argv);
}
