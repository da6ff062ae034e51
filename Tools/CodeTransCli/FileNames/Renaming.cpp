#include "Renaming.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace
{
// Where the file system cannot be asked not to overwrite: a second name and the removal of the first do not.
// A folder can have no second name, but it can only take the place of an empty folder.
int RenameWithoutFlag(int folder, const char* from, const char* to)
{
    struct stat status = {};
    if (fstatat(folder, from, &status, AT_SYMLINK_NOFOLLOW) != 0) return errno;
    if (!S_ISDIR(status.st_mode)) {
        if (linkat(folder, from, folder, to, 0) != 0) return errno;
        return unlinkat(folder, from, 0) == 0 ? 0 : errno;
    }
    if (fstatat(folder, to, &status, AT_SYMLINK_NOFOLLOW) == 0) return EEXIST;
    return renameat(folder, from, folder, to) == 0 ? 0 : errno;
}
}  // namespace

int Renaming::Do() const
{
    const int place = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (place < 0) return errno;
    int error = renameat2(place, from.c_str(), place, to.c_str(), RENAME_NOREPLACE) == 0 ? 0 : errno;
    if (error == EINVAL || error == ENOSYS) error = RenameWithoutFlag(place, from.c_str(), to.c_str());
    close(place);
    return error;
}
