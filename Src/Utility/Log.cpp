// Dated log files: one line a message, opened for each line and closed at once.
//
// Errors go to the day's ".err" file, other messages to its ".log" file. Logging never fails towards its
// caller: what cannot be written to a file is printed on standard output, and that is all.
#include "Utility.h"
#include "global_linux.h"

namespace
{
std::string FormatTime(const struct tm& local, const char* format)
{
    char text[100];
    return std::string(text, strftime(text, sizeof text, format, &local));
}

std::string TimeStamp(const struct tm& local)
{
    return FormatTime(local, "%Y-%m-%d %H:%M:%S");
}

std::string DefaultLogDirectory()
{
    static pthread_mutex_t s_mutex = PTHREAD_MUTEX_INITIALIZER;
    const CMutexGuard guard(s_mutex);
    if (g_sLogPath.empty()) g_sLogPath = CurrentDirectory();
    return g_sLogPath;
}

void Print(const std::string& stamp, const std::string& message)
{
    printf("[%s] %s\n", stamp.c_str(), message.c_str());
}
}  // namespace

// Callers link to this signature, so the message comes by value.
// cppcheck-suppress passedByValue
void WriteLog(std::string sMessage, const char* sLogDir, bool bError)
{
    if (!g_bLog) return;
    const struct tm local = LocalTime(time(nullptr));
    // A directory given with a trailing slash gets a second one.
    const std::string directory = sLogDir != nullptr ? sLogDir : DefaultLogDirectory();
    const std::string fileName = directory + "/" + FormatTime(local, "%Y%m%d") + (bError ? ".err" : ".log");
    const std::string stamp = TimeStamp(local);

    FILE* const file = fopen(fileName.c_str(), "ab");
    if (file == nullptr) {
        Print(stamp, sMessage);
        printf("Cannot write log file %s!\r\n", fileName.c_str());
        return;
    }
    fprintf(file, "[%s]\t%s\n", stamp.c_str(), sMessage.c_str());
    fclose(file);
}

void WriteError(std::string sMessage, const char* sLogDir)
{
    WriteLog(std::move(sMessage), sLogDir, true);
}

// cppcheck-suppress passedByValue
void WriteLog(FILE* stream, std::string sMessage)
{
    const std::string stamp = TimeStamp(LocalTime(time(nullptr)));
    if (stream == nullptr) {
        Print(stamp, sMessage);
        printf("Cannot write log file!\r\n");
        return;
    }
    fprintf(stream, "[%s] %s\n", stamp.c_str(), sMessage.c_str());
}
