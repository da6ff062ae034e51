// What is aimed at, and how far it is reached.
#ifndef BENCH_DETECTION_TARGETS_H
#define BENCH_DETECTION_TARGETS_H

#include <vector>

#include "Report.h"

// One line a target: the figure aimed at and ours, the worst encoding or kind where one may not fall behind,
// "met" or "missed". Then the languages and kinds that fall behind.
void PrintTargets(const std::vector<JudgedSample>& samples, const std::vector<int>& answers);

#endif  // BENCH_DETECTION_TARGETS_H
