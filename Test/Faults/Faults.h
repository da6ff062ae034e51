// Faults to order, in the program that is linked with Interposer.cpp: its allocator and its reads.
#ifndef TEST_FAULTS_H
#define TEST_FAULTS_H

#include <cstddef>
#include <functional>

// From construction to destruction the `first`th allocation of the process fails (counted from 1), the C
// library's own included, and with `andLater` every one behind it.
class FailingAllocations
{
public:
    FailingAllocations(long first, bool andLater);
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;
    long Refused() const;
};

// Blocks allocated and not freed.
long LiveBlocks();

// Called before each fread with the number of elements asked for; what it returns is read instead.
extern std::function<size_t(size_t)> g_onRead;

#endif  // TEST_FAULTS_H
