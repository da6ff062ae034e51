// Which form runs, and what stands for the fast forms where there are none.
#include "FastPaths.h"

namespace
{
bool ProcessorCan()
{
#if defined(__x86_64__)
    __builtin_cpu_init();  // this may run before the compiler's own start-up code
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
           __builtin_cpu_supports("popcnt");
#else
    return false;
#endif
}

bool s_bOn = ProcessorCan();
}  // namespace

bool FastPathsOn()
{
    return s_bOn;
}

void SwitchFastPaths(bool on)
{
    s_bOn = on && ProcessorCan();
}

#if !defined(__x86_64__)
Progress FastPairsToUtf16(const unsigned short*, const char*, unsigned long, char*, unsigned long)
{
    return {};
}

Progress FastUtf8ToWide(const unsigned char*, unsigned long, char*)
{
    return {};
}

Progress FastWideToUtf8(const wchar_t*, unsigned long, unsigned char*)
{
    return {};
}

Progress FastUtf16ToGbk(const char*, unsigned long, char*)
{
    return {};
}

Progress FastGbkToUtf8(const unsigned short*, const char*, unsigned long, char*, unsigned long)
{
    return {};
}

Progress FastUtf8ToGbk(const char*, unsigned long, char*)
{
    return {};
}
#endif
