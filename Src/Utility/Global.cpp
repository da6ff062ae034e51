// Process-wide state. The strings are constructed before the initialisers of every other file, so that even a
// call made by some other object's constructor finds them ready.
#include "Global.h"

#define BEFORE_ALL_OTHERS gnu::init_priority(101)

[[BEFORE_ALL_OTHERS]] std::string g_sDefaultDir;
[[BEFORE_ALL_OTHERS]] std::string g_sDataPath;
[[BEFORE_ALL_OTHERS]] std::string g_sLastErrorMessage;
[[BEFORE_ALL_OTHERS]] std::string g_sLogPath;

bool g_bLog = true;
int g_nEncodeType = 0;
CBufferManager* g_pBufManager = nullptr;
pthread_mutex_t g_mutex = PTHREAD_MUTEX_INITIALIZER;
