// Reading a file, or a stretch of it, into memory in one piece.
//
// The result of a read is the number of bytes asked for, even where the file had fewer. The string form drops
// every zero byte, so a UTF-16LE file reaches its caller without them.
#include <strings.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <new>

#include "Utility.h"
#include "global_linux.h"

namespace
{
constexpr unsigned long NOT_OPENED = ULONG_MAX;

bool MakeRoom(std::string& content, unsigned long count)
{
    try {
        if (count < content.max_size()) content.resize(count);
        return count == content.size();
    } catch (const std::bad_alloc&) {
        return false;
    }
}
}  // namespace

CReadFile::CReadFile()
    : m_fpFileRead(nullptr),
      m_mutex(PTHREAD_MUTEX_INITIALIZER),
      m_nReaderCount(0),
      m_bOpening(false),
      m_nFileSize(0)
{
}

CReadFile::~CReadFile()
{
    pthread_mutex_destroy(&m_mutex);
    if (m_fpFileRead != nullptr) fclose(m_fpFileRead);
}

bool CReadFile::Holds(const char* name)
{
    const CMutexGuard guard(m_mutex);
    return strcasecmp(name, m_sFileName.c_str()) == 0;
}

bool CReadFile::Open(const char* name)
{
    while (m_nReaderCount >= 1) YieldProcessor();
    // Whatever may throw stays outside the swap: half of one would leave other threads waiting, or the old
    // name to the new file.
    std::string opened = name;
    FILE* const file = fopen(name, "rb");
    if (file == nullptr) {
        m_bOpening = false;
        WriteLog("Failed open file  " + opened, nullptr, false);
        return false;
    }

    const long size = FileSize(file);
    {
        const CMutexGuard guard(m_mutex);
        m_bOpening = true;
        if (m_fpFileRead != nullptr) fclose(m_fpFileRead);
        m_fpFileRead = file;
        m_nFileSize = std::max(size, 0L);
        m_sFileName.swap(opened);
        m_bOpening = false;
    }
    if (size < 0) {
        WriteError("_fstat( _fileno(m_fpFileRead) failed", nullptr);
        WriteError(name, nullptr);
    }
    return true;
}

long CReadFile::ReadHeld(char* buffer, long nOffset, unsigned long nReadSize)
{
    const CMutexGuard guard(m_mutex);
    if (m_fpFileRead == nullptr) {
        buffer[0] = 0;
        return 0;
    }
    ++m_nReaderCount;
    fseek(m_fpFileRead, nOffset, SEEK_SET);
    const size_t supplied = fread(buffer, 1, nReadSize, m_fpFileRead);
    memset(buffer + supplied, 0, nReadSize - supplied + 1);
    --m_nReaderCount;
    return static_cast<long>(nReadSize);
}

// The number of bytes to read, from the file held after this.
unsigned long CReadFile::Prepare(const char* name, unsigned long nReadSize, bool bWhole)
{
    while (m_bOpening) YieldProcessor();
    if (!Holds(name) && !Open(name)) return NOT_OPENED;
    return nReadSize == 0 && bWhole ? static_cast<unsigned long>(m_nFileSize) : nReadSize;
}

long CReadFile::ReadFile(const char* name, char** buffer, long nOffset, unsigned long nReadSize, bool bWhole)
{
    const unsigned long count = Prepare(name, nReadSize, bWhole);
    if (count == NOT_OPENED) return 0;
    *buffer = count < LONG_MAX ? new (std::nothrow) char[count + 1] : nullptr;
    return *buffer != nullptr ? ReadHeld(*buffer, nOffset, count) : 0;
}

long CReadFile::ReadFile(const char* name, std::string& content, long nOffset, unsigned long nReadSize,
                         bool bWhole)
{
    // Into a text of its own: `name` may lie in `content`.
    std::string text;
    const unsigned long count = Prepare(name, nReadSize, bWhole);
    if (count > 0 && MakeRoom(text, count) && ReadHeld(text.data(), nOffset, count) > 0) {
        // Most files have no zero: looking for the first is many times faster than moving every byte.
        const size_t zero = text.find('\0');
        if (zero != std::string::npos)
            text.erase(std::remove(text.begin() + static_cast<long>(zero), text.end(), '\0'), text.end());
        content.swap(text);
        return static_cast<long>(content.size());
    }
    // In this order: a name that lies in the content is missing from the message.
    content.clear();
    ReportError(std::string("Error read file ") + name);
    return 0;
}

long ReadFile(const char* name, char** buffer, long nOffset, unsigned long nReadSize, bool bWhole)
{
    return CReadFile().ReadFile(name, buffer, nOffset, nReadSize, bWhole);
}

long ReadFile(const char* name, std::string& content, long nOffset, unsigned long nReadSize, bool bWhole)
{
    return CReadFile().ReadFile(name, content, nOffset, nReadSize, bWhole);
}
