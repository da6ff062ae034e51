// GBK to and from wide characters and UTF-8 by the C library's multibyte functions, under the locale
// zh_CN.gbk.
//
// Every call sets the locale, unless it is set already, for the whole process and never back. Where it does
// not exist, a message on standard output says so and the current locale's encoding stands in for GBK. A
// conversion that fails ends the text at the fault; only the two functions that return the C library's own
// result tell.
//
// Where the locale was set and is the GNU C library's GBK, a table gives the C library's own answers several
// times faster (TableOfLocale): up to the first character that it does not know, from where the C library
// goes on. The forms that write to a caller's buffer use it; those that make strings are the C library's
// alone.
#include <langinfo.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Bytes.h"
#include "FastPaths.h"
#include "STLCodeTrans.h"

namespace
{
constexpr char LOCALE_NAME[] = "zh_CN.gbk";

// Whether the locale is the one that was set last, by this name. Asking takes a fifth of the time that
// setting it again does (4 and 20 ns). A name at another address may belong to another thread, which frees it
// while it sets our locale: it is not looked into.
bool IsSet(const char* nameSetLast)
{
    const char* const name = setlocale(LC_ALL, nullptr);
    return name != nullptr && name == nameSetLast && strcmp(name, LOCALE_NAME) == 0;
}

bool SetLocale()
{
    static std::atomic<const char*> s_nameSetLast = nullptr;
    if (IsSet(s_nameSetLast)) return true;
    if (const char* const name = setlocale(LC_ALL, LOCALE_NAME)) {
        s_nameSetLast = name;
        return true;
    }
    printf("Can't set the specified locale %s! ", LOCALE_NAME);
    return false;
}

unsigned long LocaleToWide(std::string const& src, std::wstring& dst)
{
    const auto buffer = ZeroedScratch<wchar_t>(src.size() + 1);
    const unsigned long converted = mbstowcs(buffer.get(), src.c_str(), src.size());
    dst = buffer.get();
    return converted;
}

unsigned long WideToLocale(std::wstring const& src, std::string& dst)
{
    constexpr unsigned long LONGEST = 6;  // bytes a character in any encoding of a locale
    const auto buffer = ZeroedScratch<char>(LONGEST * src.size() + 1);
    const unsigned long converted = wcstombs(buffer.get(), src.c_str(), LONGEST * src.size());
    dst = buffer.get();
    return converted;
}

// CodeTable's two-byte codes, and whether the C library agrees with every one of them.
struct GbkTable {
    static constexpr unsigned FIRST_CODE = 0x8000;
    LocaleGbk gbk = {};
    bool isTheLocales = false;

    // In the locale to compare with.
    GbkTable()
    {
        std::string bytes;
        std::wstring wide;
        for (unsigned unit = 1; unit < 0x10000; ++unit) {
            const unsigned code = CodeTable[unit];
            if (unit >= 0x80 && code < FIRST_CODE) continue;
            if (unit >= 0x80) {
                gbk.sequences[code - FIRST_CODE] = Sequence(unit);
                bytes += static_cast<char>(code >> 8);
            }
            bytes += static_cast<char>(code & 0xFF);
            wide += static_cast<wchar_t>(unit);
        }
        std::string encoded;
        std::wstring decoded;
        LocaleToWide(bytes, decoded);
        WideToLocale(wide, encoded);
        isTheLocales = decoded == wide && encoded == bytes;
    }

    static uint32_t Sequence(unsigned unit)
    {
        unsigned char utf8[6] = {};
        unicode_to_utf8_one(unit, utf8, sizeof utf8);
        return utf8[0] | utf8[1] * 0x10000U | utf8[2] * 0x1000000U;
    }
};

// The table, if it may stand in for the C library in the locale that was just set (LC_CTYPE of this thread):
// null where the locale has another encoding or some other idea of GBK, and where fast forms are off.
const LocaleGbk* TableOfLocale()
{
    if (!FastPathsOn()) return nullptr;
    const char* const codeset = nl_langinfo(CODESET);
    if (codeset[0] != 'G' || codeset[1] != 'B' || codeset[2] != 'K' || codeset[3] != 0) return nullptr;
    static const GbkTable s_table;
    return s_table.isTheLocales ? &s_table.gbk : nullptr;
}

unsigned long LocaleToUtf8(char const* src, std::string& dst)
{
    std::wstring wide;
    LocaleToWide(src, wide);
    unsigned char* block = nullptr;
    // The length passes through 32 bits: a text of 2^31 characters and more is not converted.
    const auto length = static_cast<int>(wide.size());
    const unsigned long converted = unicode_to_utf8(wide.data(), static_cast<unsigned long>(length), &block);
    const std::unique_ptr<unsigned char, CFree> owner(block);
    if (block == nullptr) throw std::bad_alloc();
    dst = reinterpret_cast<const char*>(block);
    return converted;
}

// What the C library makes of the rest, behind the `at` bytes that there are, and a zero byte.
template <typename Convert>
unsigned long Finish(char* dst, unsigned long at, unsigned long room, bool isWhole, Convert convertRest)
{
    if (!isWhole) {
        std::string rest;
        convertRest(rest);
        const unsigned long count = std::min(rest.size(), room - at);
        memcpy(dst + at, rest.data(), count);
        at += count;
    }
    dst[at] = 0;
    return at;
}
}  // namespace

unsigned long ANSIToUnicode(std::string const& src, std::wstring& dst)
{
    SetLocale();
    return LocaleToWide(src, dst);
}

unsigned long UnicodeToANSI(std::wstring const& src, std::string& dst)
{
    SetLocale();
    return WideToLocale(src, dst);
}

unsigned long ANSIToUTF8(char const* src, std::string& dst)
{
    SetLocale();
    return LocaleToUtf8(src, dst);
}

unsigned long UTF8ToANSI(char const* src, std::string& dst)
{
    UnicodeToANSI(UtfStr2Unicode(src), dst);
    return 1;  // whatever came of it: the output alone tells
}

unsigned long ANSIToUTF8(char const* src, char* dst, unsigned long room)
{
    const bool wasSet = SetLocale();
    const unsigned long length = strlen(src);
    Progress at;
    if (wasSet && length <= INT_MAX && !Overlap(src, length + 1, dst, 3 * length + 1))
        if (const LocaleGbk* const table = TableOfLocale())
            at = FastGbkToUtf8(*table, src, length, dst, room);
    const bool isWhole = at.read >= length || at.written >= room;
    return Finish(dst, at.written, room, isWhole,
                  [&](std::string& rest) { LocaleToUtf8(src + at.read, rest); });
}

unsigned long UTF8ToANSI(char const* src, char* dst)
{
    const bool wasSet = SetLocale();
    src = SkipByteOrderMark(src);
    const unsigned long length = strlen(src);
    Progress at;
    if (wasSet && !Overlap(src, length + 1, dst, length + 1) && TableOfLocale() != nullptr)
        at = FastUtf8ToGbk(src, length, dst);
    return Finish(dst, at.written, ULONG_MAX, at.read >= length,
                  [&](std::string& rest) { WideToLocale(utf8_to_unicode(src + at.read), rest); });
}
