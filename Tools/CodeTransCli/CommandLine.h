// All of the program but the process around it.
#ifndef CODETRANSCLI_COMMAND_LINE_H
#define CODETRANSCLI_COMMAND_LINE_H

// Does what `argv` asks for and returns an ExitStatus. Throws nothing.
int RunCommandLine(int argc, char** argv);

#endif  // CODETRANSCLI_COMMAND_LINE_H
