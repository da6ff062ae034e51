// Portability shims over POSIX.
#include "global_linux.h"

#include <sys/stat.h>
#include <unistd.h>

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

std::string CurrentDirectory()
{
    char buffer[1000] = {};
    // A failure leaves the buffer empty; the caller finds out when it opens a file there.
    return getcwd(buffer, sizeof buffer) != nullptr ? buffer : "";
}

struct tm LocalTime(time_t clock)
{
    struct tm local = {};
    localtime_r(&clock, &local);
    return local;
}
