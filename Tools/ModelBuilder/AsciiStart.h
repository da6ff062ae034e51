// Four pairs of ASCII characters at the start of a text are ASCII, whatever hanzi they would make in
// UTF-16LE.
//
// Three hanzi in ten are two printable ASCII bytes each in UTF-16LE, so single pairs leave doubt. The first
// two pairs speak as they learned to, the fourth takes all back that they can have said for UTF-16LE, and
// what follows says nothing until the first byte beyond ASCII, which gives that back.
#ifndef MODEL_BUILDER_ASCII_START_H
#define MODEL_BUILDER_ASCII_START_H

#include "Automaton.h"

// To be added after training.
void AddAsciiStart(States& states);

#endif  // MODEL_BUILDER_ASCII_START_H
