// The allocator in front of the C library's or the sanitizer's, and hooks in front of the C library's calls.
//
// Every call in the process comes here, from the C library's own code too. Compiled without sanitizers, since
// the first calls come before their run time is ready.
#include <dlfcn.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "Faults.h"

#if defined(SANITIZED)
#define REAL(function) __interceptor_##function
#else
#define REAL(function) __libc_##function
#endif

namespace
{
std::atomic<long> g_countdown = 0;  // to the allocation that fails; 0: none ahead
std::atomic<bool> g_andLater = false;
std::atomic<long> g_refused = 0, g_live = 0;
constexpr size_t MOST = 1UL << 34;  // bytes: a greater wish fails on every machine alike

bool Refuse(size_t size)
{
    const bool fails = size > MOST || (g_countdown > 0 ? --g_countdown == 0 : g_andLater && g_refused > 0);
    g_refused += fails;
    if (fails) errno = ENOMEM;
    return fails;
}

void* Count(void* block)
{
    g_live += block != nullptr;
    return block;
}

void* New(size_t size)
{
    void* const block = malloc(size);
    return block != nullptr ? block : throw std::bad_alloc();
}
}  // namespace

void FailAllocations(long first, bool andLater)
{
    g_refused = 0;
    g_andLater = andLater;
    g_countdown = first;
}

long AllocateAgain()
{
    g_countdown = 0;
    g_andLater = false;
    return g_refused;
}

long LiveBlocks()
{
    return g_live;
}

// clang-format off
extern "C" {
void *REAL(malloc)(size_t), *REAL(calloc)(size_t, size_t), *REAL(realloc)(void*, size_t), REAL(free)(void*);
void* malloc(size_t size) { return Refuse(size) ? nullptr : Count(REAL(malloc)(size)); }
void* calloc(size_t count, size_t size) { return Refuse(size) ? nullptr : Count(REAL(calloc)(count, size)); }
void* realloc(void* old, size_t size) { return Refuse(size) ? nullptr : (g_live -= old != nullptr, Count(REAL(realloc)(old, size))); }
void free(void* block) { g_live -= block != nullptr; REAL(free)(block); }
}
void* operator new(size_t size) { return New(size); }
void* operator new[](size_t size) { return New(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return malloc(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return malloc(size); }
void operator delete(void* block) noexcept { free(block); }
void operator delete[](void* block) noexcept { free(block); }
void operator delete(void* block, size_t) noexcept { free(block); }
void operator delete[](void* block, size_t) noexcept { free(block); }
// clang-format on

Hooks g_hooks;

// The function that this program's own of that name hides.
#define HIDDEN(function) \
    static const auto s_hidden = reinterpret_cast<decltype(&(function))>(dlsym(RTLD_NEXT, #function));

// clang-format off
extern "C" {
size_t fread(void* to, size_t size, size_t count, FILE* file) { HIDDEN(fread) return s_hidden(to, size, g_hooks.fread ? g_hooks.fread(count) : count, file); }
int access(const char* name, int mode) noexcept { HIDDEN(access) if (g_hooks.access) g_hooks.access(name, mode); return s_hidden(name, mode); }
char* getcwd(char* buffer, size_t size) noexcept { HIDDEN(getcwd) return g_hooks.getcwd ? g_hooks.getcwd(buffer, size) : s_hidden(buffer, size); }
int fstat(int descriptor, struct stat* status) noexcept { HIDDEN(fstat) return g_hooks.fstat ? g_hooks.fstat() : s_hidden(descriptor, status); }
int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept { HIDDEN(pthread_mutex_lock) if (g_hooks.pthread_mutex_lock) g_hooks.pthread_mutex_lock(); return s_hidden(mutex); }
}
// clang-format on
