// What is aimed at; see Targets.h.
#include "Targets.h"

#include <iomanip>
#include <iostream>
#include <map>
#include <string>

namespace
{
constexpr int ANY = 1 << 20;
constexpr double NONE = 0;

// Samples of a test with lengths from `least` to `most`, and of one kind where one is named: percent right in
// all, of each encoding, of each kind (and length) that has twenty samples and more.
struct Target {
    const char *name, *test, *kind;
    int least, most;
    double all, encoding, each;
};
const Target TARGETS[] = {
    {"UTF-8, other languages: lines", "world-line", "", 0, ANY, 99.5, NONE, 98},
    {"UTF-8, other languages: pieces of 1,000 bytes", "world-piece", "", 0, ANY, 100, NONE, NONE},
    {"UTF-8, other languages: whole files", "world-file", "", 0, ANY, 100, NONE, NONE},
    {"ASCII with symbols in UTF-8", "signs", "", 0, ANY, 99, NONE, NONE},
    {"UTF-16LE, other languages: lines", "world16-line", "", 0, ANY, 99, NONE, NONE},
    {"UTF-16LE, other languages: 500 characters", "world16-piece", "", 0, ANY, 100, NONE, NONE},
    {"Chinese beyond U+FFFF", "supplement", "", 8, ANY, 99.9, NONE, NONE},
    {"Chinese with small forms, kana, Hangul ...", "forms", "", 8, ANY, 99.9, NONE, NONE},
    {"terminal art: lines", "art-line", "", 0, ANY, 97, NONE, NONE},
    {"terminal art: whole files", "art-file", "", 0, ANY, 99.9, NONE, NONE},
    {"one word among ASCII, after a boundary", "word", "", 0, ANY, 99.3, NONE, NONE},
    {"one or two hanzi among ASCII, anywhere", "sparse", "", 0, ANY, 99.3, NONE, NONE},
    {"GBK without its first byte", "headless", "", 8, ANY, 99, NONE, NONE},
    {"Chinese, 2 characters", "windows", "", 2, 2, 99.4, 99.1, NONE},
    {"Chinese, 3 characters", "windows", "", 3, 3, 99.9, 99.6, NONE},
    {"Chinese, 4 characters", "windows", "", 4, 4, 99.9, 99.6, NONE},
    {"Chinese, 6 characters", "windows", "", 6, 6, 99.95, 99.9, NONE},
    {"Chinese, 8 characters", "windows", "", 8, 8, 99.97, 99.92, NONE},
    {"Chinese, 16 characters and more", "windows", "", 16, ANY, 99.99, 99.94, NONE},
    {"real legacy files", "files", "legacy", 0, ANY, 99.9, NONE, NONE},
    {"lines of real legacy files", "lines", "legacy", 0, ANY, 99.7, NONE, NONE},
    {"Chinese pieces of 300 bytes", "pieces", "", 0, ANY, 99.8, NONE, NONE},
    {"Chinese whole files, converted", "files", "", 0, ANY, NONE, NONE, NONE},
    {"Chinese mixed files", "mixed", "", 0, ANY, NONE, NONE, NONE},
    {"GBK that is valid UTF-8, and the reverse", "twins", "", 0, ANY, NONE, NONE, NONE},
    {"legacy encodings from 64 bytes", "legacy", "", 64, 255, NONE, NONE, 95},
    {"legacy encodings from 256 bytes", "legacy", "", 256, ANY, NONE, NONE, 99},
    {"legacy encodings: lines of 30 bytes and more", "legacy-line", "", 30, ANY, NONE, NONE, 85},
    {"binary data from 64 bytes", "binary", "", 64, 255, NONE, NONE, 95},
    {"binary data from 256 bytes", "binary", "", 256, ANY, NONE, NONE, 99},
    {"ASCII below 8 bytes", "ascii", "", 0, 7, 99, NONE, NONE},
    {"ASCII from 8 bytes", "ascii", "", 8, ANY, 100, NONE, NONE},
    {"UTF-16BE and UTF-32", "unicode", "", 64, ANY, NONE, NONE, 95},
    {"GB18030 with four-byte characters", "gb18030", "", 16, ANY, 99.9, NONE, NONE},
    {"two characters after a byte-order mark", "mark", "", 0, ANY, 100, NONE, NONE},
};

struct Worst {
    std::string name;
    double percent = 100;
};

Worst WorstOf(const std::map<std::string, Tally>& cells, int fewest)
{
    Worst worst;
    for (const auto& [name, cell] : cells)
        if (cell.all >= fewest && cell.Percent() < worst.percent) worst = {name, cell.Percent()};
    return worst;
}

struct Result {
    Tally all;
    std::map<std::string, Tally> encodings, kinds;
};

Result ResultOf(const Target& target, const std::vector<JudgedSample>& samples,
                const std::vector<int>& answers)
{
    Result result;
    for (size_t i = 0; i < samples.size(); ++i) {
        const JudgedSample& s = samples[i];
        if (s.test != target.test || s.length < target.least || s.length > target.most) continue;
        if (*target.kind != '\0' && s.kind != target.kind) continue;
        const bool isRight = IsRight(s, answers[i]);
        result.all.Add(isRight);
        result.encodings[s.encoding].Add(isRight);
        result.kinds[s.length > 30 ? s.kind + ' ' + std::to_string(s.length) : s.kind].Add(isRight);
    }
    return result;
}

// "99.31 (99.40)": ours, and what is aimed at where something is.
void PrintFigure(double figure, double target, const std::string& name)
{
    std::cout << "  " << name << (name.empty() ? "" : " ") << figure;
    if (target > 0) std::cout << " (" << target << ')';
}

void PrintBehind(const Target& target, const Result& result)
{
    std::cout << "    below " << target.each << ':';
    for (const auto& [name, cell] : result.kinds)
        if (cell.all >= 20 && cell.Percent() < target.each)
            std::cout << ' ' << name << ' ' << cell.Percent() << ',';
    std::cout << '\n';
}
}  // namespace

void PrintTargets(const std::vector<JudgedSample>& samples, const std::vector<int>& answers)
{
    int met = 0, missed = 0;
    std::cout << "\nours, and in brackets what is aimed at\n" << std::fixed << std::setprecision(2);
    for (const Target& target : TARGETS) {
        const Result result = ResultOf(target, samples, answers);
        const Worst encoding = WorstOf(result.encodings, 1), kind = WorstOf(result.kinds, 20);
        const bool isMet = result.all.all > 0 && result.all.Percent() >= target.all &&
                           encoding.percent >= target.encoding && kind.percent >= target.each;
        const bool isAimed = target.all + target.encoding + target.each > 0;
        met += isAimed && isMet;
        missed += isAimed && !isMet;
        std::cout << (!isAimed ? "       "
                      : isMet  ? "met    "
                               : "missed ")
                  << std::left << std::setw(48) << target.name << std::right << std::setw(7)
                  << result.all.all;
        PrintFigure(result.all.Percent(), target.all, "");
        if (target.encoding > 0 || !isAimed) PrintFigure(encoding.percent, target.encoding, encoding.name);
        if (target.each > 0) PrintFigure(kind.percent, target.each, kind.name);
        std::cout << '\n';
        if (kind.percent < target.each) PrintBehind(target, result);
    }
    std::cout << met << " met, " << missed << " missed\n";
}
