// GBK to and from wide characters and UTF-8 by the C library's multibyte functions, under the locale
// zh_CN.gbk.
//
// The locale is set on every call, for the whole process, and never restored. Where it does not exist, a
// message on standard output says so and the current locale's encoding stands in for GBK. A conversion that
// fails ends the text at the fault; only the two functions that return the C library's own result tell.
#include <clocale>
#include <cstdio>
#include <cstdlib>

#include "Bytes.h"
#include "STLCodeTrans.h"

namespace
{
void SetLocale()
{
    constexpr char LOCALE_NAME[] = "zh_CN.gbk";
    if (setlocale(LC_ALL, LOCALE_NAME) == nullptr) printf("Can't set the specified locale %s! ", LOCALE_NAME);
}
}  // namespace

unsigned long ANSIToUnicode(std::string const& src, std::wstring& dst)
{
    SetLocale();
    const auto buffer = ZeroedScratch<wchar_t>(src.size() + 1);
    const unsigned long converted = mbstowcs(buffer.get(), src.c_str(), src.size());
    dst = buffer.get();
    return converted;
}

unsigned long UnicodeToANSI(std::wstring const& src, std::string& dst)
{
    constexpr unsigned long LONGEST = 6;  // bytes a character in any encoding of a locale
    SetLocale();
    const auto buffer = ZeroedScratch<char>(LONGEST * src.size() + 1);
    const unsigned long converted = wcstombs(buffer.get(), src.c_str(), LONGEST * src.size());
    dst = buffer.get();
    return converted;
}

unsigned long ANSIToUTF8(char const* src, std::string& dst)
{
    std::wstring wide;
    ANSIToUnicode(src, wide);
    unsigned char* block = nullptr;
    // The length passes through 32 bits: a text of 2^31 characters and more is not converted.
    const auto length = static_cast<int>(wide.size());
    const unsigned long converted = unicode_to_utf8(wide.data(), static_cast<unsigned long>(length), &block);
    const std::unique_ptr<unsigned char, CFree> owner(block);
    if (block == nullptr) throw std::bad_alloc();
    dst = reinterpret_cast<const char*>(block);
    return converted;
}

unsigned long UTF8ToANSI(char const* src, std::string& dst)
{
    UnicodeToANSI(UtfStr2Unicode(src), dst);
    return 1;  // whatever came of it: the output alone tells
}
