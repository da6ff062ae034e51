// Faults to order, in the program that is linked with Interposer.cpp: its allocator and some calls of the C
// library's.
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

// What is called, where it is set, with or in the place of a function of the C library's.
struct Hooks {
    std::function<size_t(size_t)> fread;  // told the number of elements asked for, says how many are read
    std::function<void(const char*, int)> access;  // told the name and the mode
    std::function<char*(char*, size_t)> getcwd;    // instead
    std::function<int()> fstat;                    // instead
    std::function<void()> pthread_mutex_lock;      // before
};
extern Hooks g_hooks;

#endif  // TEST_FAULTS_H
