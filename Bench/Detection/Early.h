// How much of a large file decides it: the shortest head after which the rest no longer matters.
//
// The rest is replaced by four times as much text in another encoding; a head that still carries the answer
// has ended the walk. Files that no head decides are read to their end.
#ifndef BENCH_DETECTION_EARLY_H
#define BENCH_DETECTION_EARLY_H

#include <string>

// Prints one line an encoding: files, how many are decided early, the median head, and wrong answers. Then
// the same of every whole file, those of other languages and foreign ones included: no early answer may be
// wrong.
void PrintEarly(const std::string& folder);

#endif  // BENCH_DETECTION_EARLY_H
