// All of the program but the process around it.
#ifndef CODETRANSCLI_COMMAND_LINE_H
#define CODETRANSCLI_COMMAND_LINE_H

// Does what `argv` asks for and returns an ExitStatus. Throws nothing. With `endsProcess`, nothing but the
// end of the process may follow; some memory is left to that.
int RunCommandLine(int argc, char** argv, bool endsProcess = false);

#endif  // CODETRANSCLI_COMMAND_LINE_H
