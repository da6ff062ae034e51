// Portability shims: the POSIX calls of the runtime support under one roof.
#ifndef GLOBAL_LINUX_H
#define GLOBAL_LINUX_H

#include <pthread.h>

#include <cstdio>
#include <ctime>
#include <string>

// Gives the processor to other threads.
void YieldProcessor();

bool FileExists(const char* name);

// The size in bytes of an open file, -1 when its status cannot be queried.
long FileSize(FILE* file);

// Opens `name` for writing from its beginning, creating it if need be; null on failure. What it held stays
// until Truncate, as far as it is not written over.
FILE* OpenToOverwrite(const char* name);

// Removes what the file holds, where it is of a kind that has a size.
void Truncate(FILE* file);

// Up to 999 bytes of it. When it cannot be told, what the system left of it: nothing, as a rule.
std::string CurrentDirectory();

struct tm LocalTime(time_t clock);

// Holds a mutex for a scope.
class CMutexGuard
{
public:
    explicit CMutexGuard(pthread_mutex_t& mutex) : m_mutex(mutex) { pthread_mutex_lock(&m_mutex); }
    ~CMutexGuard() { pthread_mutex_unlock(&m_mutex); }
    CMutexGuard(const CMutexGuard&) = delete;
    CMutexGuard& operator=(const CMutexGuard&) = delete;

private:
    pthread_mutex_t& m_mutex;
};

#endif  // GLOBAL_LINUX_H
