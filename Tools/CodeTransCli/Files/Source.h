// The bytes of one source, through a window: what was read and has not been used yet.
#ifndef CODETRANSCLI_SOURCE_H
#define CODETRANSCLI_SOURCE_H

#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

class Source
{
public:
    // "-" is standard input. Throws std::system_error, as all of it does.
    explicit Source(const std::string& path);
    ~Source();
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    // Reads until the window has `size` bytes or goes to the end of the source. Returns the window, which is
    // good until the next Fill.
    std::string_view Fill(size_t size);
    std::string_view Window() const { return {m_buffer.get() + m_begin, m_end - m_begin}; }
    bool IsAtEnd() const { return m_isAtEnd; }  // nothing lies behind the window

    // Takes `count` bytes off the start of the window.
    void Use(size_t count) { m_begin += count; }

    // Bytes read so far.
    uint64_t Size() const { return m_size; }
    const struct stat& Status() const { return m_status; }
    bool IsRegular() const { return S_ISREG(m_status.st_mode); }

    // Throws std::runtime_error when the file at `path` is no longer as it was when it was opened.
    void CheckUnchanged(const std::string& path) const;

private:
    void MakeRoom(size_t size);

    int m_descriptor;
    std::string m_name;
    struct stat m_status = {};
    std::unique_ptr<char[]> m_buffer;
    size_t m_capacity = 0, m_begin = 0, m_end = 0;
    uint64_t m_size = 0;
    bool m_isAtEnd = false;
};

// Throws std::system_error with the current errno.
[[noreturn]] void Fail(const std::string& what);

#endif  // CODETRANSCLI_SOURCE_H
