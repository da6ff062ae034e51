// The exported conversions and their rivals: glibc's iconv, the C library's locales, the converters of ICU
// and encoding_rs.
//
// All contenders of a task get the same bytes and must give the same text before any of them is timed.
#include <iconv.h>
#include <locale.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#ifdef BENCH_ICU
#include <unicode/ucnv.h>
#endif

#ifdef BENCH_ENCODING_RS
extern "C" {  // EncodingRs/src/lib.rs
size_t encoding_rs_to_utf16(bool big5, const char* source, size_t length, void* out, size_t room);
size_t encoding_rs_to_utf8(bool big5, const char* source, size_t length, char* out, size_t room);
size_t encoding_rs_from_utf8(bool big5, const char* source, size_t length, char* out, size_t room);
size_t encoding_rs_from_utf16(bool big5, const void* source, size_t length, char* out, size_t room);
}
#endif

#include "Bench.h"
#include "CodeTrans.h"
#include "Inputs.h"
#include "Ratios.h"

namespace
{
// Writes the converted source to `out` and returns the bytes written.
using Convert = std::function<size_t(const char* source, size_t length, char* out)>;

struct Contender {
    std::string name;
    Convert convert;
    bool givesWide;  // where the others give UTF-16
};

constexpr size_t ROOM = 8 << 20;

Convert Iconv(const char* to, const char* from)
{
    const iconv_t converter = iconv_open(to, from);
    return [converter](const char* source, size_t length, char* out) {
        char* in = const_cast<char*>(source);
        char* at = out;
        size_t room = ROOM;
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        iconv(converter, &in, &length, &at, &room);
        return static_cast<size_t>(at - out);
    };
}

// A locale for this thread alone, put on around each call. Null when the machine lacks it.
locale_t Locale(const char* name)
{
    return newlocale(LC_ALL_MASK, name, nullptr);
}

size_t ToWide(locale_t locale, const char* source, wchar_t* out)
{
    uselocale(locale);
    const size_t count = mbstowcs(out, source, ROOM / sizeof(wchar_t));
    uselocale(LC_GLOBAL_LOCALE);
    return count;
}

size_t FromWide(locale_t locale, const wchar_t* source, char* out)
{
    uselocale(locale);
    const size_t count = wcstombs(out, source, ROOM);
    uselocale(LC_GLOBAL_LOCALE);
    return count;
}

wchar_t* Between()
{
    static const std::unique_ptr<wchar_t[]> s_between(new wchar_t[ROOM / sizeof(wchar_t)]);
    return s_between.get();
}

void AddLocale(std::vector<Contender>& contenders, const char* from, const char* to, bool givesWide = false)
{
    const locale_t source = *from != 0 ? Locale(from) : nullptr, target = *to != 0 ? Locale(to) : nullptr;
    if ((*from != 0 && source == nullptr) || (*to != 0 && target == nullptr)) return;
    contenders.push_back({"C locale",
                          [source, target](const char* text, size_t, char* out) {
                              if (target == nullptr)
                                  return 4 * ToWide(source, text, reinterpret_cast<wchar_t*>(out));
                              if (source == nullptr)
                                  return FromWide(target, reinterpret_cast<const wchar_t*>(text), out);
                              ToWide(source, text, Between());
                              return FromWide(target, Between(), out);
                          },
                          givesWide});
}

void AddIcu([[maybe_unused]] std::vector<Contender>& contenders, [[maybe_unused]] const char* from,
            [[maybe_unused]] const char* to)
{
#ifdef BENCH_ICU
    UErrorCode opened = U_ZERO_ERROR;
    UConverter* const source = *from != 0 ? ucnv_open(from, &opened) : nullptr;
    UConverter* const target = *to != 0 ? ucnv_open(to, &opened) : nullptr;
    if (U_FAILURE(opened)) return;
    contenders.push_back(
        {"ICU",
         [source, target](const char* text, size_t length, char* out) {
             UErrorCode status = U_ZERO_ERROR;
             constexpr int32_t UNITS = ROOM / 2;
             if (target == nullptr)
                 return 2 * static_cast<size_t>(ucnv_toUChars(source, reinterpret_cast<UChar*>(out), UNITS,
                                                              text, static_cast<int32_t>(length), &status));
             if (source == nullptr)
                 return static_cast<size_t>(ucnv_fromUChars(target, out, UNITS,
                                                            reinterpret_cast<const UChar*>(text),
                                                            static_cast<int32_t>(length / 2), &status));
             UChar pivot[2048];
             UChar *from16 = pivot, *to16 = pivot;
             char* at = out;
             ucnv_convertEx(target, source, &at, out + ROOM, &text, text + length, pivot, &from16, &to16,
                            pivot + 2048, true, true, &status);
             return static_cast<size_t>(at - out);
         },
         false});
#endif
}

// Of GBK, and of Big5 to UTF-16.
void AddEncodingRs([[maybe_unused]] std::vector<Contender>& contenders,
                   [[maybe_unused]] const std::string& from, [[maybe_unused]] const std::string& to)
{
#ifdef BENCH_ENCODING_RS
    const bool big5 = from == "BIG5";
    Convert convert;
    if (from == "UTF-16LE" && to == "GBK")
        convert = [](const char* source, size_t length, char* out) {
            return encoding_rs_from_utf16(false, source, length / 2, out, ROOM);
        };
    else if (from == "UTF-8" && to == "GBK")
        convert = [](const char* source, size_t length, char* out) {
            return encoding_rs_from_utf8(false, source, length, out, ROOM);
        };
    else if (to == "UTF-16LE")
        convert = [big5](const char* source, size_t length, char* out) {
            return 2 * encoding_rs_to_utf16(big5, source, length, out, ROOM / 2);
        };
    else if (from == "GBK" && to == "UTF-8")
        convert = [](const char* source, size_t length, char* out) {
            return encoding_rs_to_utf8(false, source, length, out, ROOM);
        };
    else
        return;
    contenders.push_back({"encoding_rs", convert, false});
#endif
}

std::string Narrowed(const std::string& wide)
{
    std::string units;
    for (size_t i = 0; i < wide.size(); i += 4) units.append(wide, i, 2);
    return units;
}

std::string OutputOf(const Contender& contender, const std::string& source, char* out)
{
    const std::string output(out, contender.convert(source.data(), source.size() - TERMINATOR, out));
    return contender.givesWide ? Narrowed(output) : output;
}

void RegisterTask(const std::string& task, const std::vector<Input>& inputs,
                  const std::vector<Contender>& contenders)
{
    static const std::unique_ptr<char[]> s_out(new char[ROOM]);
    char* const out = s_out.get();
    for (const Input& input : inputs) {
        for (const Contender& contender : contenders) {
            for (const std::string& source : input.sources)
                if (OutputOf(contender, source, out) != OutputOf(contenders[0], source, out)) {
                    fprintf(stderr, "%s, %s: %s does not give the same text\n", task.c_str(),
                            input.name.c_str(), contender.name.c_str());
                    exit(EXIT_FAILURE);
                }
            Register(task, input.name, contender.name, input.sources,
                     [convert = contender.convert, out](const std::string& source) {
                         benchmark::DoNotOptimize(convert(source.data(), source.size() - TERMINATOR, out));
                         benchmark::ClobberMemory();
                     });
        }
    }
}

using Exported = size_t(const char*, size_t, char*, size_t, int);

// `unit`: what a source length counts, in bytes.
Contender Ours(Exported* function, int code, size_t unit = 1)
{
    return {"ours",
            [function, code, unit](const char* source, size_t length, char* out) {
                const size_t result = function(source, length / unit, out, ROOM, code);
                return function == TQ_ToGBK && code == ENCODE_UNICODE ? strlen(out) : result;
            },
            false};
}

void RegisterConverting(const char* task, const std::vector<Input>& inputs, const Contender& ours,
                        const char* from, const char* to, const char* fromLocale, const char* toLocale)
{
    std::vector<Contender> contenders{ours, {"iconv", Iconv(to, from), false}};
    const bool toUnits = strcmp(to, "UTF-16LE") == 0, fromUnits = strcmp(from, "UTF-16LE") == 0;
    if (!fromUnits) AddLocale(contenders, fromLocale, toLocale, toUnits);
    AddIcu(contenders, fromUnits ? "" : from, toUnits ? "" : to);
    AddEncodingRs(contenders, from, to);
    RegisterTask(task, inputs, contenders);
}

void RegisterCopying(const char* task, const std::vector<Input>& inputs, Exported* function, int code)
{
    const Contender ours = {"ours",
                            [function, code](const char* source, size_t length, char* out) {
                                return function(source, length, out, length, code);
                            },
                            false};
    const Contender copy = {"memcpy",
                            [](const char* source, size_t length, char* out) {
                                memcpy(out, source, length);
                                return length;
                            },
                            false};
    RegisterTask(task, inputs, {ours, copy});
}
}  // namespace

void RegisterConversions()
{
    static const auto gbk = MakeInputs(Form::GBK, false), big5 = MakeInputs(Form::BIG5, true),
                      utf8 = MakeInputs(Form::UTF8, false), utf16 = MakeInputs(Form::UTF16, false),
                      wide = MakeInputs(Form::WIDE, false);
    constexpr char GBK_LOCALE[] = "zh_CN.gbk", BIG5_LOCALE[] = "zh_TW.big5", UTF8_LOCALE[] = "C.utf8";
    RegisterConverting("GBK to UTF-16", gbk, Ours(TQ_ToUnicode, ENCODE_GBK), "GBK", "UTF-16LE", GBK_LOCALE,
                       "");
    RegisterConverting("Big5 to UTF-16", big5, Ours(TQ_ToUnicode, ENCODE_BIG5), "BIG5", "UTF-16LE",
                       BIG5_LOCALE, "");
    RegisterConverting("UTF-8 to wide", utf8, Ours(TQ_ToUnicode, ENCODE_UTF8), "UTF-8", "UTF-32LE",
                       UTF8_LOCALE, "");
    RegisterConverting("GBK to UTF-8", gbk, Ours(TQ_ToUtf8, ENCODE_GBK), "GBK", "UTF-8", GBK_LOCALE,
                       UTF8_LOCALE);
    RegisterConverting("wide to UTF-8", wide, Ours(TQ_ToUtf8, ENCODE_UNICODE, 4), "UTF-32LE", "UTF-8", "",
                       UTF8_LOCALE);
    RegisterConverting("UTF-8 to GBK", utf8, Ours(TQ_ToGBK, ENCODE_UTF8), "UTF-8", "GBK", UTF8_LOCALE,
                       GBK_LOCALE);
    RegisterConverting("UTF-16 to GBK", utf16, Ours(TQ_ToGBK, ENCODE_UNICODE, 2), "UTF-16LE", "GBK", "", "");
    RegisterCopying("UTF-8 copied", utf8, TQ_ToUtf8, ENCODE_UTF8);
    RegisterCopying("GBK copied", gbk, TQ_ToGBK, ENCODE_GBK);
    RegisterCopying("UTF-16 copied", utf16, TQ_ToUnicode, ENCODE_UNICODE);
}
