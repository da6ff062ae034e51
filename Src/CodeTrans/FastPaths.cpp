// Which form runs, and what stands for the fast forms where there are none.
#include "FastPaths.h"

#include "Detection.h"

Forms BestForms()
{
#if defined(__x86_64__)
    __builtin_cpu_init();  // this may run before the compiler's own start-up code
    if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("bmi") ||
        !__builtin_cpu_supports("bmi2") || !__builtin_cpu_supports("popcnt"))
        return Forms::PLAIN;
    // One by one: a virtual machine may hide any of them.
    const bool hasAvx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                           __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl") &&
                           __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2");
    return hasAvx512 ? Forms::AVX512 : Forms::AVX2;
#elif defined(__aarch64__)
    return Forms::NEON;
#else
    return Forms::PLAIN;
#endif
}

namespace
{
Forms s_forms = BestForms();
}  // namespace

Forms FormsInUse()
{
    return s_forms;
}

void UseForms(Forms forms)
{
    s_forms = forms;
}

// These go through the plain forms, or leave all to their callers, who do that.
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

Progress FastUtf16ToGbk(const char* src, unsigned long count, char* dst)
{
    return PlainUtf16ToGbk(src, count, dst);
}

#if !defined(__aarch64__)
Progress FastGbkToUtf8(const LocaleGbk&, const char*, unsigned long, char*, unsigned long)
{
    return {};
}

Progress FastUtf8ToGbk(const char*, unsigned long, char*)
{
    return {};
}
#endif

void FastWalk(const TrieNode* trie, unsigned nodeCount, const char* text, unsigned long length,
              WalkPosition& position)
{
    Walk(trie, nodeCount, text, length, position);
}
#endif
