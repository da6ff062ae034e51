// Portability shims over POSIX.
#include "global_linux.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

void YieldProcessor()
{
    sleep(0);
}

bool FileExists(const char* name)
{
    return access(name, F_OK) == 0;
}

long FileSize(FILE* file)
{
    struct stat status;
    return fstat(fileno(file), &status) == 0 ? status.st_size : -1;
}

FILE* OpenToOverwrite(const char* name)
{
    constexpr mode_t PERMISSIONS = 0666;  // less those that the process's mask takes away
    const int descriptor = open(name, O_WRONLY | O_CREAT, PERMISSIONS);
    if (descriptor < 0) return nullptr;
    FILE* const file = fdopen(descriptor, "wb");
    if (file == nullptr) close(descriptor);
    return file;
}

void Truncate(FILE* file)
{
    // Pipes and devices have no size, and are written all the same.
    [[maybe_unused]] const int result = ftruncate(fileno(file), 0);
}

std::string CurrentDirectory()
{
    char buffer[1000] = {};
    // What the call returns is not looked at: a failure mostly leaves the buffer empty, and the caller finds
    // out when it opens a file there.
    [[maybe_unused]] const char* const result = getcwd(buffer, sizeof buffer);
    return std::string(buffer, strnlen(buffer, sizeof buffer));
}

struct tm LocalTime(time_t clock)
{
    struct tm local = {};
    localtime_r(&clock, &local);
    return local;
}
