// Four pairs of ASCII characters at the start of a text are ASCII, whatever hanzi they would make in
// UTF-16LE.
//
// Three hanzi in ten are two printable ASCII bytes each in UTF-16LE, so single pairs leave doubt. The first
// pair, which may be all there is, says a little less for UTF-16LE than it learned to, and the second, or a
// byte beyond ASCII in its place, makes up for that. The third says a little. The fourth takes all back that
// the first two can have said for UTF-16LE, and what follows says nothing until the first byte beyond ASCII,
// which gives that back.
// A third or fourth pair that is far more frequent in ASCII than in UTF-16LE ends the count, and there is no
// doubt any more.
#ifndef MODEL_BUILDER_ASCII_START_H
#define MODEL_BUILDER_ASCII_START_H

#include "Ingredients.h"
#include "States.h"

// To be added after training.
void AddAsciiStart(States& states, const Ingredients& from);

#endif  // MODEL_BUILDER_ASCII_START_H
