// The detectors that are compared; see Detectors.h.
#include "Detectors.h"

#include <enca.h>
#include <uchardet/uchardet.h>
#include <unicode/ucsdet.h>

#include <algorithm>
#include <memory>

#include "CodeTrans.h"

// zh-autoconvert's header has no prototypes; this is the one function used.
extern "C" int j_code(char* text, int length);

namespace
{
int Uchardet(const std::string& text)
{
    const std::unique_ptr<uchardet, decltype(&uchardet_delete)> detector(uchardet_new(), uchardet_delete);
    uchardet_handle_data(detector.get(), text.data(), text.size());
    uchardet_data_end(detector.get());
    return CodeOfName(uchardet_get_charset(detector.get()));
}

// The best match among the Chinese encodings, so that the hint is as good as the others'.
int Icu(const std::string& text)
{
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UCharsetDetector, decltype(&ucsdet_close)> detector(ucsdet_open(&status),
                                                                              ucsdet_close);
    ucsdet_setText(detector.get(), text.data(), static_cast<int32_t>(text.size()), &status);
    int32_t found = 0;
    const UCharsetMatch** matches = ucsdet_detectAll(detector.get(), &found, &status);
    for (int32_t i = 0; i < found && U_SUCCESS(status); ++i)
        if (const int code = CodeOfName(ucsdet_getName(matches[i], &status)); code > 0) return code;
    return found > 0 ? -1 : ENCODE_UNKNOWN;
}

int Enca(const std::string& text)
{
    static EncaAnalyser analyser = enca_analyser_alloc("zh");  // lives as long as the program
    const EncaEncoding found =
        enca_analyse_const(analyser, reinterpret_cast<const unsigned char*>(text.data()), text.size());
    const char* name = enca_charset_name(found.charset, ENCA_NAME_STYLE_ENCA);
    return name == nullptr ? ENCODE_UNKNOWN : CodeOfName(name);
}

int ZhAutoconvert(const std::string& text)
{
    std::string copy = text;
    const int code = j_code(copy.data(), static_cast<int>(copy.size()));
    return code == 1      ? ENCODE_GBK
           : code == 2    ? ENCODE_BIG5
           : code == 0x10 ? ENCODE_UNICODE
           : code == 0x40 ? ENCODE_UTF8
                          : ENCODE_UNKNOWN;
}
}  // namespace

int CodeOfName(std::string name)
{
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c); });
    if (name.empty() || name == "null" || name == "???" || name == "unknown") return ENCODE_UNKNOWN;
    if (name.starts_with("gb") || name == "ascii" || name == "us-ascii" || name == "hz") return ENCODE_GBK;
    if (name.starts_with("big5")) return ENCODE_BIG5;
    if (name == "utf-8") return ENCODE_UTF8;
    if (name == "utf-16le" || name == "ucs-2" || name == "utf-16") return ENCODE_UNICODE;
    return -1;
}

Detector OurDetector()
{
    return {"CodeTrans", [](const std::string& text) { return TQ_CodeDetect(text.data(), text.size()); }};
}

std::vector<Detector> OtherDetectors()
{
    return {{"uchardet", Uchardet}, {"ICU", Icu}, {"enca", Enca}, {"zh-autoconvert", ZhAutoconvert}};
}
