// What the judge writes; see Report.h.
#include "Report.h"

#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <set>

std::string Hex(const std::string& bytes)
{
    std::string hex;
    for (const char c : bytes) {
        hex += "0123456789abcdef"[static_cast<unsigned char>(c) >> 4];
        hex += "0123456789abcdef"[static_cast<unsigned char>(c) & 15];
    }
    return hex;
}

void WriteTsv(const std::vector<JudgedSample>& samples, const std::vector<Verdicts>& detectors,
              const std::string& path)
{
    std::map<std::string, Tally> cells;
    for (const Verdicts& detector : detectors)
        for (size_t i = 0; i < samples.size(); ++i) {
            const JudgedSample& s = samples[i];
            cells[s.test + '\t' + s.encoding + '\t' + s.kind + '\t' + std::to_string(s.length) + '\t' +
                  detector.name]
                .Add(IsRight(s, detector.answers[i]));
        }
    std::ofstream out(path);
    out << "test\tencoding\tkind\tlength\tdetector\tright\tall\n";
    for (const auto& [key, cell] : cells) out << key << '\t' << cell.right << '\t' << cell.all << '\n';
}

void WriteErrors(const std::vector<JudgedSample>& samples, const std::vector<int>& answers,
                 const std::string& path)
{
    std::ofstream out(path);
    for (size_t i = 0; i < samples.size(); ++i)
        if (!IsRight(samples[i], answers[i]))
            out << samples[i].test << '\t' << samples[i].encoding << '\t' << samples[i].kind << '\t'
                << samples[i].length << '\t' << answers[i] << '\t' << Hex(samples[i].bytes.substr(0, 200))
                << '\n';
}

void PrintTable(const std::vector<JudgedSample>& samples, const std::vector<Verdicts>& detectors)
{
    static const std::set<std::string> BY_KIND{"ascii",  "legacy",  "legacy-line",
                                               "binary", "unicode", "signs"};
    std::map<std::pair<std::string, int>, std::vector<Tally>> rows;
    std::map<std::pair<std::string, int>, std::map<std::string, Tally>> ours;
    for (size_t i = 0; i < samples.size(); ++i) {
        const JudgedSample& s = samples[i];
        const std::pair<std::string, int> key{BY_KIND.contains(s.test) ? s.test + ' ' + s.kind : s.test,
                                              s.length};
        std::vector<Tally>& row = rows[key];
        row.resize(detectors.size());
        for (size_t d = 0; d < detectors.size(); ++d) row[d].Add(IsRight(s, detectors[d].answers[i]));
        ours[key][s.encoding].Add(IsRight(s, detectors[0].answers[i]));
    }
    std::cout << std::left << std::setw(26) << "test" << std::right << std::setw(7) << "length"
              << std::setw(8) << "samples";
    for (const Verdicts& detector : detectors) std::cout << std::setw(16) << detector.name;
    std::cout << "   ours by encoding\n" << std::fixed << std::setprecision(2);
    for (const auto& [key, row] : rows) {
        std::cout << std::left << std::setw(26) << key.first << std::right << std::setw(7) << key.second
                  << std::setw(8) << row[0].all;
        for (const Tally& cell : row) std::cout << std::setw(16) << cell.Percent();
        std::cout << "  ";
        for (const auto& [encoding, cell] : ours[key]) std::cout << ' ' << encoding << ' ' << cell.Percent();
        std::cout << '\n';
    }
}

std::vector<ChartLine> ChartLinesOf(const std::vector<JudgedSample>& samples,
                                    const std::vector<Verdicts>& detectors)
{
    std::vector<ChartLine> lines;
    for (const Verdicts& detector : detectors) {
        std::map<int, Tally> lengths;
        for (size_t i = 0; i < samples.size(); ++i)
            if (samples[i].test == "windows")
                lengths[samples[i].length].Add(IsRight(samples[i], detector.answers[i]));
        ChartLine line{detector.name, {}};
        for (const auto& [length, cell] : lengths) line.points.emplace_back(length, cell.Percent());
        lines.push_back(line);
    }
    return lines;
}
