// Runtime support: file names, whole-file reading, logs, the last-error text and buffers handed to callers.
//
// Plain global functions, so that other code can link to them by signature. Failures travel as return values;
// what is reported goes to g_sLastErrorMessage and the day's log files.
#ifndef UTILITY_H
#define UTILITY_H

#include <pthread.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <vector>

#include "Global.h"

// ---------------------------------------------------------------------------------------------------------
// FileNames.cpp

// Sets g_sDefaultDir: to `path`, or to its local-encoding form where only that exists; to the current
// directory when `path` is null or empty. Returns its text, valid until the next change.
const char* GetDefaultPath(const char* path);

// Puts into `result` the name under which to open `name`: `name` itself when it exists, else its form in the
// local encoding when that exists or `bSkipCheck` asks for it unseen, else `name`. True when it is the
// converted form.
bool GetAnsiFilename(const char* name, std::string& result, bool bSkipCheck);

// ---------------------------------------------------------------------------------------------------------
// FileReader.cpp

// Reads files whole or in stretches and keeps the last one open, so that reading the same name (case ignored)
// again does not reopen it. Threads may share a reader; reads run one at a time. Share it for one file at a
// time: a thread that reads by another name swaps the file for all.
class CReadFile
{
public:
    CReadFile();
    ~CReadFile();
    CReadFile(const CReadFile&) = delete;
    CReadFile& operator=(const CReadFile&) = delete;

    // Reads `nReadSize` bytes from `nOffset` on into a new zero-terminated *buffer, which the caller deletes
    // as an array, also when the result is 0. `bWhole` with a size of 0 reads as many bytes as the file has.
    // Returns the bytes asked for, however many the file supplied (the rest is zero), or 0: file not opened
    // (*buffer untouched), nothing asked for, no memory (*buffer null).
    long ReadFile(const char* name, char** buffer, long nOffset, unsigned long nReadSize, bool bWhole);

    // The same into a string, with all zero bytes removed. Returns the bytes kept. When there was nothing to
    // read, `content` is empty and the last-error text and the .err file name the file. `content` keeps what
    // it held until the read is done, so `name` may lie in it.
    long ReadFile(const char* name, std::string& content, long nOffset, unsigned long nReadSize, bool bWhole);

private:
    bool Holds(const char* name);
    bool Open(const char* name);
    unsigned long Prepare(const char* name, unsigned long nReadSize, bool bWhole);
    long ReadHeld(char* buffer, long nOffset, unsigned long nReadSize);

    std::string m_sFileName;
    FILE* m_fpFileRead;
    pthread_mutex_t m_mutex;
    std::atomic<int> m_nReaderCount;
    std::atomic<bool> m_bOpening;
    std::atomic<long> m_nFileSize;
};

// One read with a reader of its own: opens, reads, closes.
long ReadFile(const char* name, char** buffer, long nOffset, unsigned long nReadSize, bool bWhole);
long ReadFile(const char* name, std::string& content, long nOffset, unsigned long nReadSize, bool bWhole);

// ---------------------------------------------------------------------------------------------------------
// Log.cpp

// Appends a time-stamped line to the day's file ("20240517.err" or ".log") in `sLogDir`, or in g_sLogPath
// when that is null. A file that cannot be opened is reported on standard output with the message; nothing
// else tells.
void WriteLog(std::string sMessage, const char* sLogDir, bool bError);
void WriteError(std::string sMessage, const char* sLogDir);

// Writes a time-stamped line to the caller's stream, which is neither flushed nor closed. Ignores g_bLog.
void WriteLog(FILE* stream, std::string sMessage);

// ---------------------------------------------------------------------------------------------------------
// ReturnedBuffers.cpp

// Owns character arrays handed to callers and frees the oldest 10,000 when more than 20,000 are registered.
class CBufferManager
{
public:
    CBufferManager();
    ~CBufferManager();
    CBufferManager(const CBufferManager&) = delete;
    CBufferManager& operator=(const CBufferManager&) = delete;

    char* AddBuffer(char* buffer);      // takes the array over and returns it
    char* AddBuffer(const char* text);  // registers and returns a copy
    void ReleaseBuf(bool all);

private:
    void Register(char* buffer);
    void FreeOldest(size_t count);

    pthread_mutex_t m_mutex;
    std::vector<char*> m_vecBuffers;  // oldest first; null once freed
    std::atomic<int> m_nReleasing;
};

// Makes `message` the last-error text and appends it to the day's .err file. Any number of threads may.
void ReportError(const std::string& message);

// A new zero-terminated copy of the last-error text, in UTF-8 when g_nEncodeType is 1. Registered with
// g_pBufManager where there is one; otherwise, as in this library, it stays allocated for the life of the
// process.
const char* GetLastErrorMsg();

#endif  // UTILITY_H
