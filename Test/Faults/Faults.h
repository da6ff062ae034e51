// Faults to order, in the program that is linked with Interposer.cpp: its allocator and its reads.
#ifndef TEST_FAULTS_H
#define TEST_FAULTS_H

#include <cstddef>
#include <functional>

// From now on the `first`th allocation of the process fails (counted from 1), the C library's own included,
// and with `andLater` every one behind it. The other ends that and returns how many were refused.
void FailAllocations(long first, bool andLater);
long AllocateAgain();

// Blocks allocated and not freed.
long LiveBlocks();

// Called before each fread with the number of elements asked for; so many as it returns are read.
extern std::function<size_t(size_t)> g_onRead;

#endif  // TEST_FAULTS_H
