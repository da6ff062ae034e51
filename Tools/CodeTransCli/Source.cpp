#include "Source.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace
{
// Of the file itself, where a link has lost it: "No such file" alone would puzzle who sees the link.
std::string Missing(const std::string& path)
{
    std::error_code error;
    if (errno != ENOENT || !fs::is_symlink(path, error)) return "cannot open";
    errno = ENOENT;
    return "is a link to " + fs::read_symlink(path, error).string() + ", which is missing";
}
}  // namespace

void Fail(const std::string& what)
{
    throw std::system_error(errno, std::generic_category(), what);
}

Source::Source(const std::string& path)
{
    const int descriptor = path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) Fail(Missing(path));
    try {
        if (fstat(descriptor, &m_status) != 0) Fail("cannot read");
        const auto size = static_cast<size_t>(m_status.st_size);
        if (path != "-" && IsRegular() && size > 0)
            m_mapping = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor, 0);
        if (m_mapping == MAP_FAILED) m_mapping = nullptr;
        if (m_mapping != nullptr)
            m_bytes = {static_cast<const char*>(m_mapping), size};
        else
            ReadToEnd(descriptor, path);
    } catch (...) {
        close(descriptor);
        throw;
    }
    close(descriptor);
}

Source::~Source()
{
    if (m_mapping != nullptr) munmap(m_mapping, m_bytes.size());
}

void Source::ReadToEnd(int descriptor, const std::string& path)
{
    constexpr size_t STEP = 1 << 20;
    for (;;) {
        const size_t had = m_content.size();
        m_content.resize(had + STEP);
        const ssize_t got = read(descriptor, m_content.data() + had, STEP);
        if (got < 0 && errno != EINTR) Fail(path == "-" ? "cannot read standard input" : "cannot read");
        m_content.resize(had + static_cast<size_t>(got > 0 ? got : 0));
        if (got == 0) break;
    }
    m_bytes = m_content;
}

void Source::CheckUnchanged(const std::string& path) const
{
    struct stat now = {};
    const bool same = stat(path.c_str(), &now) == 0 && now.st_ino == m_status.st_ino &&
                      now.st_dev == m_status.st_dev && now.st_size == m_status.st_size &&
                      now.st_mtim.tv_sec == m_status.st_mtim.tv_sec &&
                      now.st_mtim.tv_nsec == m_status.st_mtim.tv_nsec;
    if (!same) throw std::runtime_error("changed while it was being converted; left as it is now");
}
