// From texts to statistics: the texts of a class are a folder, and each file in it is counted.
//
// Text files (*.txt) are lines of UTF-8, in classes of foreign text lines of bytes. Data (*.bin, in classes
// of bytes) is counted in pieces. Bytes are counted as characters of their own: see ForeignToken.
#ifndef MODEL_BUILDER_COUNTING_H
#define MODEL_BUILDER_COUNTING_H

#include <iosfwd>
#include <string>
#include <vector>

#include "Classes.h"

// Reads texts/CLASS/* and writes statistics/CLASS.txt for every class that has texts there; the others keep
// their counts. Nothing is written unless all could be counted. Notices and a line a class go to `report`.
// Throws std::runtime_error for a folder that is no class's, and for text that is not what its class wants.
void CountTexts(const std::string& texts, const std::vector<TextClass>& classes,
                const std::string& statistics, std::ostream& report);

#endif  // MODEL_BUILDER_COUNTING_H
