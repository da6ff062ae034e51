// TQ_CodeDetect and its rivals: uchardet, ICU's detector, enca with the hint that the text is Chinese.
//
// Ours runs twice: with the shipped model, whose decisive nodes end most walks early, and with a copy without
// those, so that every byte is walked. The others' answers are not held against them here; Detection/ judges
// them.
#ifdef BENCH_ENCA
#include <enca.h>
#endif
#ifdef BENCH_UCHARDET
#include <uchardet/uchardet.h>
#endif
#ifdef BENCH_ICU
#include <unicode/ucsdet.h>
#endif

#include <cstdio>
#include <cstdlib>

#include "Bench.h"
#include "CodeTrans.h"
#include "Inputs.h"
#include "Ratios.h"

namespace
{
using Detect = void(const char* text, size_t length);

void Ours(const char* text, size_t length)
{
    benchmark::DoNotOptimize(TQ_CodeDetect(text, length));
}

struct Rival {
    const char* name;
    Detect* detect;
};

const Rival RIVALS[] = {
#ifdef BENCH_UCHARDET
    {"uchardet",
     [](const char* text, size_t length) {
         const uchardet_t detector = uchardet_new();
         uchardet_handle_data(detector, text, length);
         uchardet_data_end(detector);
         benchmark::DoNotOptimize(uchardet_get_charset(detector));
         uchardet_delete(detector);
     }},
#endif
#ifdef BENCH_ICU
    {"ICU",
     [](const char* text, size_t length) {
         UErrorCode status = U_ZERO_ERROR;
         UCharsetDetector* const detector = ucsdet_open(&status);
         ucsdet_setText(detector, text, static_cast<int32_t>(length), &status);
         benchmark::DoNotOptimize(ucsdet_detect(detector, &status));
         ucsdet_close(detector);
     }},
#endif
#ifdef BENCH_ENCA
    {"enca",
     [](const char* text, size_t length) {
         static const EncaAnalyser s_analyser = enca_analyser_alloc("zh");
         benchmark::DoNotOptimize(
             enca_analyse_const(s_analyser, reinterpret_cast<const unsigned char*>(text), length).charset);
     }},
#endif
};

// Loads the model unless it is the one loaded, and lets the library make the tables that it makes after a
// megabyte of text, some twenty milliseconds that would fall into one row or another.
void UseModel(const char* folder)
{
    static const char* s_loaded = nullptr;
    if (s_loaded == folder) return;
    TQ_Exit();
    if (TQ_Init(folder, nullptr) != 1) {
        fprintf(stderr, "No model in %s/Data\n", folder);
        exit(EXIT_FAILURE);
    }
    s_loaded = folder;
    const std::string text(2 << 20, 'a');
    Ours(text.data(), text.size());
}

void RegisterOurs(const char* folder, const std::string& task, const Input& input, int code)
{
    UseModel(folder);
    for (const std::string& source : input.sources)
        if (input.sources.size() == 1 && TQ_CodeDetect(source.data(), source.size() - TERMINATOR) != code) {
            fprintf(stderr, "%s, %s: our own answer is wrong\n", task.c_str(), input.name.c_str());
            exit(EXIT_FAILURE);
        }
    Register(
        task, input.name, "ours", input.sources,
        [](const std::string& source) { Ours(source.data(), source.size() - TERMINATOR); },
        [folder] { UseModel(folder); });
}

void RegisterTexts(const std::string& form, int code, const std::vector<Input>& inputs, const char* shipped,
                   const char* everyByte)
{
    const std::pair<std::string, const char*> tasks[] = {{"detect " + form, shipped},
                                                         {"detect " + form + " by every byte", everyByte}};
    for (const Input& input : inputs)
        for (const auto& [task, folder] : tasks) {
            RegisterOurs(folder, task, input, code);
            for (const Rival& rival : RIVALS)
                Register(task, input.name, rival.name, input.sources, [rival](const std::string& source) {
                    rival.detect(source.data(), source.size() - TERMINATOR);
                });
        }
}
}  // namespace

void RegisterDetection(const char* shipped, const char* everyByte)
{
    static const auto gbk = MakeInputs(Form::GBK, false), big5 = MakeInputs(Form::BIG5, true),
                      utf8 = MakeInputs(Form::UTF8, false), utf16 = MakeInputs(Form::UTF16, false);
    RegisterTexts("GBK", ENCODE_GBK, gbk, shipped, everyByte);
    RegisterTexts("Big5", ENCODE_BIG5, big5, shipped, everyByte);
    RegisterTexts("UTF-8", ENCODE_UTF8, utf8, shipped, everyByte);
    RegisterTexts("UTF-16", ENCODE_UNICODE, utf16, shipped, everyByte);
}
