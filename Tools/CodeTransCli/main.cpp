// codetrans: names the encoding of files and converts them, from the command line.
//
// Results go to standard output, everything else to standard error.
#include <malloc.h>

#include <csignal>

#include "CommandLine.h"

int main(int argc, char** argv)
{
    // Buffers of a few hundred kilobytes come and go with each piece of a long text. Giving them back to the
    // system and asking for them again would take longer than the conversion.
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 32 << 20);
    // A file that grows too large is an error of writing, and not the end of the process.
    signal(SIGXFSZ, SIG_IGN);
    return RunCommandLine(argc, argv, true);
}
