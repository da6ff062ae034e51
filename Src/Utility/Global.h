// Process-wide state of the runtime support. Everything else lives on a stack or in a caller's buffer.
//
// The strings are ready before any call can run and stay until the process ends; no lock guards any of these
// but the last-error text and the log path (ReportError, WriteLog).
#ifndef GLOBAL_H
#define GLOBAL_H

#include <pthread.h>

#include <string>

class CBufferManager;

extern std::string g_sDefaultDir;        // the directory given to TQ_Init, as resolved
extern std::string g_sDataPath;          // g_sDefaultDir + "/Data"
extern std::string g_sLastErrorMessage;  // text of the last failure, local encoding
extern std::string g_sLogPath;           // default log directory; the first write without a directory sets it

extern bool g_bLog;                    // off: WriteLog and WriteError write nothing
extern int g_nEncodeType;              // 1: GetLastErrorMsg hands out UTF-8
extern CBufferManager* g_pBufManager;  // where GetLastErrorMsg registers its copies, if anywhere
extern pthread_mutex_t g_mutex;  // for programs that link the runtime support; the library takes it nowhere

#endif  // GLOBAL_H
