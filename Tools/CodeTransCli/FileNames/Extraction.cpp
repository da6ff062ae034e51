#include "Extraction.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <system_error>

namespace
{
[[noreturn]] void Fail(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

bool IsDrive(const std::string& component)
{
    return component.size() >= 2 && isalpha(static_cast<unsigned char>(component[0])) != 0 &&
           component[1] == ':';
}
}  // namespace

Components ComponentsOf(std::string_view name)
{
    Components components;
    if (!name.empty() && (name[0] == '/' || name[0] == '\\')) throw Refusal("is an absolute path");
    for (size_t begin = 0; begin <= name.size();) {
        const size_t end = std::min(name.find_first_of("/\\", begin), name.size());
        const std::string component(name.substr(begin, end - begin));
        if (component == "..") throw Refusal("leads out of its folder by '..'");
        if (components.empty() && IsDrive(component)) throw Refusal("names a drive");
        if (!component.empty() && component != ".") components.push_back(component);
        begin = end + 1;
    }
    return components;
}

ExtractionFolder::ExtractionFolder(const std::string& path)
{
    if (mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) Fail("cannot create " + path);
    m_folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (m_folder < 0) Fail("cannot open " + path);
}

ExtractionFolder::~ExtractionFolder()
{
    close(m_folder);
}

unsigned long long ExtractionFolder::Room() const
{
    struct statvfs system = {};
    if (fstatvfs(m_folder, &system) != 0) Fail("cannot determine the free space");
    return static_cast<unsigned long long>(system.f_bavail) * system.f_frsize;
}

// The folder of the first `count` components, one after the other, so that no link is followed.
int ExtractionFolder::Open(const Components& components, size_t count) const
{
    int folder = fcntl(m_folder, F_DUPFD_CLOEXEC, 0);
    for (size_t i = 0; i < count && folder >= 0; ++i) {
        const char* const name = components[i].c_str();
        const bool made = mkdirat(folder, name, 0777) == 0 || errno == EEXIST;
        const int next = made ? openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC) : -1;
        const int error = errno;
        close(folder);
        folder = next;
        errno = error;
        if (next < 0 && (error == ENOTDIR || error == ELOOP))
            throw Refusal("a file or a link named " + components[i] + " is in the way");
    }
    if (folder < 0) Fail("cannot create its folder");
    return folder;
}

void ExtractionFolder::MakeFolder(const Components& components) const
{
    close(Open(components, components.size()));
}

ExtractionFolder::File::File(const ExtractionFolder& folder, const Components& components, bool executable)
    : m_folder(folder.Open(components, components.size() - 1)), m_name(components.back())
{
    m_file = openat(m_folder, m_name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                    executable ? 0777 : 0666);
    if (m_file >= 0) return;
    const int error = errno;
    close(m_folder);
    errno = error;
    if (error == EEXIST) throw Refusal("already exists");
    Fail("cannot be created");
}

ExtractionFolder::File::~File()
{
    if (m_file >= 0) {
        close(m_file);
        unlinkat(m_folder, m_name.c_str(), 0);
    }
    close(m_folder);
}

void ExtractionFolder::File::Write(std::string_view bytes) const
{
    while (!bytes.empty()) {
        const ssize_t size = write(m_file, bytes.data(), bytes.size());
        if (size < 0 && errno != EINTR) Fail("cannot be written");
        if (size > 0) bytes.remove_prefix(static_cast<size_t>(size));
    }
}

void ExtractionFolder::File::Keep(time_t time)
{
    const struct timespec times[] = {{time, 0}, {time, 0}};
    futimens(m_file, times);
    if (close(m_file) != 0) Fail("cannot be written");
    m_file = -1;
}
