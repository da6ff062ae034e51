#include "Source.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace
{
constexpr size_t LEAST_ROOM = 1 << 16;

// For a link to a missing file, says so: "No such file" alone would confuse a user who sees the link.
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
    : m_descriptor(path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC)),
      m_name(path == "-" ? " standard input" : "")
{
    if (m_descriptor < 0) Fail(Missing(path));
    if (fstat(m_descriptor, &m_status) == 0) return;
    close(m_descriptor);
    Fail("cannot read");
}

Source::~Source()
{
    close(m_descriptor);
}

// At the end of the buffer. A file's size is only a hint: it may grow, or be 0 below /proc.
void Source::MakeRoom(size_t size)
{
    if (m_begin + size <= m_capacity) return;
    const size_t held = m_end - m_begin;
    if (size > m_capacity) {
        const auto whole = static_cast<size_t>(IsRegular() ? m_status.st_size + 1 : 0);
        const size_t grown = std::min(size, std::max({2 * m_capacity, whole, LEAST_ROOM}));
        std::unique_ptr<char[]> buffer(new char[grown]);
        if (held > 0) memcpy(buffer.get(), m_buffer.get() + m_begin, held);
        m_buffer = std::move(buffer);
        m_capacity = grown;
    } else {
        memmove(m_buffer.get(), m_buffer.get() + m_begin, held);
    }
    m_begin = 0;
    m_end = held;
}

std::string_view Source::Fill(size_t size)
{
    while (!m_isAtEnd && m_end - m_begin < size) {
        if (m_end == m_capacity || m_begin + size > m_capacity) MakeRoom(size);
        const ssize_t got = read(m_descriptor, m_buffer.get() + m_end, m_capacity - m_end);
        if (got < 0 && errno != EINTR) Fail("cannot read" + m_name);
        m_isAtEnd = got == 0;
        if (got <= 0) continue;
        m_end += static_cast<size_t>(got);
        m_size += static_cast<uint64_t>(got);
    }
    return Window();
}

void Source::CheckUnchanged(const std::string& path) const
{
    struct stat now = {};
    const bool same = stat(path.c_str(), &now) == 0 && now.st_ino == m_status.st_ino &&
                      now.st_dev == m_status.st_dev && now.st_size == m_status.st_size &&
                      now.st_mtim.tv_sec == m_status.st_mtim.tv_sec &&
                      now.st_mtim.tv_nsec == m_status.st_mtim.tv_nsec;
    if (!same) throw std::runtime_error("changed during the conversion, not replaced");
}
