// What is timed, by kind. Each adds its benchmarks to Google Benchmark's list.
#ifndef BENCH_BENCH_H
#define BENCH_BENCH_H

void RegisterConversions();

// `everyByte`: the parent of the Data folder with a copy of the model in which nothing ends the walk early.
void RegisterDetection(const char* shipped, const char* everyByte);

#endif  // BENCH_BENCH_H
