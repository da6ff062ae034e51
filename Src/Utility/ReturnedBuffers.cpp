// Text handed to callers who never free it: the last-error text, and a manager that frees the oldest copies
// in batches.
//
// The library itself creates no manager, so its copies live as long as the process. With one, a registered
// buffer stays valid through at least the next 10,001 registrations and at most 20,000.
#include <cstring>
#include <memory>

#include "STLCodeTrans.h"
#include "Utility.h"
#include "global_linux.h"

namespace
{
constexpr size_t KEEP = 2000;
constexpr size_t BATCH = KEEP * 5;
constexpr size_t THRESHOLD = KEEP * 10;
constexpr int ENCODE_TYPE_UTF8 = 1;

// Threads may fail at one time, and one may ask meanwhile.
pthread_mutex_t s_lastErrorMutex = PTHREAD_MUTEX_INITIALIZER;

char* NewCopy(const char* text)
{
    const size_t size = strlen(text) + 1;
    return static_cast<char*>(memcpy(new char[size], text, size));
}
}  // namespace

CBufferManager::CBufferManager() : m_mutex(PTHREAD_MUTEX_INITIALIZER), m_nReleasing(0) {}

CBufferManager::~CBufferManager()
{
    ReleaseBuf(true);
    pthread_mutex_destroy(&m_mutex);
}

void CBufferManager::Register(char* buffer)
{
    const CMutexGuard guard(m_mutex);
    m_vecBuffers.push_back(buffer);
}

char* CBufferManager::AddBuffer(char* buffer)
{
    ReleaseBuf(false);
    Register(buffer);
    return buffer;
}

char* CBufferManager::AddBuffer(const char* text)
{
    ReleaseBuf(false);
    std::unique_ptr<char[]> copy(NewCopy(text));
    Register(copy.get());
    return copy.release();
}

void CBufferManager::ReleaseBuf(bool all)
{
    const auto registered = [this] {
        const CMutexGuard guard(m_mutex);
        return m_vecBuffers.size();
    };
    const size_t count = all ? registered() : BATCH;
    if (!all && (m_nReleasing > 0 || registered() < THRESHOLD)) return;

    ++m_nReleasing;
    // Exactly THRESHOLD entries begin a pass, which then frees nothing, unless another thread has registered
    // one more meanwhile.
    if (all || registered() > THRESHOLD) FreeOldest(count);
    --m_nReleasing;
}

void CBufferManager::FreeOldest(size_t count)
{
    for (size_t i = 0; i < count; ++i) {
        const CMutexGuard guard(m_mutex);
        if (i >= m_vecBuffers.size()) break;  // another pass has erased meanwhile
        delete[] m_vecBuffers[i];
        m_vecBuffers[i] = nullptr;
    }
    const CMutexGuard guard(m_mutex);
    // After a release of all, the null entries stay until the manager goes.
    if (count < m_vecBuffers.size()) {
        const auto begin = m_vecBuffers.begin();
        m_vecBuffers.erase(begin, begin + static_cast<std::ptrdiff_t>(count));
    }
}

void ReportError(const std::string& message)
{
    std::string text = message;
    {
        const CMutexGuard guard(s_lastErrorMutex);
        g_sLastErrorMessage.swap(text);
    }
    WriteError(message, nullptr);
}

const char* GetLastErrorMsg()
{
    const auto lastError = [] {
        const CMutexGuard guard(s_lastErrorMutex);
        return g_sLastErrorMessage;
    };
    std::string text = lastError();
    if (g_nEncodeType == ENCODE_TYPE_UTF8) ANSIToUTF8(std::string(text).c_str(), text);
    std::unique_ptr<char[]> copy(NewCopy(text.c_str()));
    if (g_pBufManager != nullptr) g_pBufManager->AddBuffer(copy.get());
    return copy.release();
}
