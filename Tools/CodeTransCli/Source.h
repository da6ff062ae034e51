// The bytes of one source: a regular file in a mapping, anything else read to its end.
#ifndef CODETRANSCLI_SOURCE_H
#define CODETRANSCLI_SOURCE_H

#include <sys/stat.h>

#include <string>
#include <string_view>

class Source
{
public:
    // "-" is standard input. Throws std::system_error.
    explicit Source(const std::string& path);
    ~Source();
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    std::string_view Bytes() const { return m_bytes; }
    const struct stat& Status() const { return m_status; }
    bool IsRegular() const { return S_ISREG(m_status.st_mode); }

    // Throws std::runtime_error when the file at `path` is no longer as it was when it was opened.
    void CheckUnchanged(const std::string& path) const;

private:
    void ReadToEnd(int descriptor, const std::string& path);

    struct stat m_status = {};
    void* m_mapping = nullptr;
    std::string m_content;
    std::string_view m_bytes;
};

// Throws std::system_error with the current errno.
[[noreturn]] void Fail(const std::string& what);

#endif  // CODETRANSCLI_SOURCE_H
