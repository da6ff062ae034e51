// The judge: how often each detector names the right encoding, by test, encoding, kind of text and length.
//
// Usage: DetectionJudge ROOT TEXTS OUTPUT [COUNT [JSCHARDET]]
//   ROOT       folder whose Data/CodeTrans.model is judged
//   TEXTS      what fetch-judge-texts collected (its folder "judge")
//   OUTPUT     folder for accuracy.tsv, accuracy.svg and errors.txt (our errors: test, kind, answer, bytes)
//   COUNT      samples a cell, 100 by default; +COUNT judges the library alone
//   JSCHARDET  folder of the npm package, judged through node
// The table goes to standard output, then how many bytes of a file decide it (Early.h).
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <map>
#include <stdexcept>

#include "Chart.h"
#include "CodeTrans.h"
#include "Corpus.h"
#include "Detectors.h"
#include "Early.h"

namespace
{
struct Tally {
    int right = 0, all = 0;
    double Percent() const { return all == 0 ? 0 : 100.0 * right / all; }
};

std::string Hex(const std::string& bytes)
{
    std::string hex;
    for (const char c : bytes) {
        hex += "0123456789abcdef"[static_cast<unsigned char>(c) >> 4];
        hex += "0123456789abcdef"[static_cast<unsigned char>(c) & 15];
    }
    return hex;
}

// jschardet's answers, by a node process that reads the samples from a file.
std::vector<int> AskJschardet(const std::vector<JudgedSample>& samples, const std::string& output,
                              const std::string& package)
{
    const std::string in = output + "/samples.hex", out = output + "/jschardet.txt";
    std::ofstream file(in);
    for (const JudgedSample& sample : samples) file << Hex(sample.bytes.substr(0, 20000)) << '\n';
    file.close();
    const std::string command =
        "node '" DETECTION_BENCH_FOLDER "/jschardet.cjs' '" + package + "' < '" + in + "' > '" + out + "'";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("node failed");
    std::vector<int> answers;
    std::ifstream names(out);
    for (std::string name; std::getline(names, name);) answers.push_back(CodeOfName(name));
    std::remove(in.c_str());
    std::remove(out.c_str());
    if (answers.size() != samples.size()) throw std::runtime_error("jschardet gave too few answers");
    return answers;
}

struct Verdicts {
    std::string name;
    std::vector<int> answers;
};

void WriteTsv(const std::vector<JudgedSample>& samples, const std::vector<Verdicts>& detectors,
              const std::string& path)
{
    std::map<std::string, Tally> cells;
    for (const Verdicts& detector : detectors)
        for (size_t i = 0; i < samples.size(); ++i) {
            const JudgedSample& s = samples[i];
            Tally& cell = cells[s.test + '\t' + s.encoding + '\t' + s.kind + '\t' + std::to_string(s.length) +
                                '\t' + detector.name];
            ++cell.all;
            cell.right += detector.answers[i] == s.answer;
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
        if (answers[i] != samples[i].answer)
            out << samples[i].test << '\t' << samples[i].encoding << '\t' << samples[i].kind << '\t'
                << samples[i].length << '\t' << answers[i] << '\t' << Hex(samples[i].bytes.substr(0, 200))
                << '\n';
}

// One row a test and length, one column a detector; our own figure by encoding behind.
void PrintTable(const std::vector<JudgedSample>& samples, const std::vector<Verdicts>& detectors)
{
    std::map<std::pair<std::string, int>, std::vector<Tally>> rows;
    std::map<std::pair<std::string, int>, std::map<std::string, Tally>> ours;
    for (size_t i = 0; i < samples.size(); ++i) {
        const JudgedSample& s = samples[i];
        // Foreign text by kind, the rest by length.
        const std::pair<std::string, int> key{
            s.test == "foreign" || s.test == "ascii" ? s.test + ' ' + s.kind : s.test, s.length};
        std::vector<Tally>& row = rows[key];
        row.resize(detectors.size());
        for (size_t d = 0; d < detectors.size(); ++d) {
            ++row[d].all;
            row[d].right += detectors[d].answers[i] == s.answer;
        }
        Tally& own = ours[key][s.encoding];
        ++own.all;
        own.right += detectors[0].answers[i] == s.answer;
    }
    std::cout << std::left << std::setw(22) << "test" << std::right << std::setw(7) << "length"
              << std::setw(8) << "samples";
    for (const Verdicts& detector : detectors) std::cout << std::setw(16) << detector.name;
    std::cout << "   ours by encoding\n" << std::fixed << std::setprecision(2);
    for (const auto& [key, row] : rows) {
        std::cout << std::left << std::setw(22) << key.first << std::right << std::setw(7) << key.second
                  << std::setw(8) << row[0].all;
        for (const Tally& cell : row) std::cout << std::setw(16) << cell.Percent();
        std::cout << "  ";
        for (const auto& [encoding, cell] : ours[key]) std::cout << ' ' << encoding << ' ' << cell.Percent();
        std::cout << '\n';
    }
}

std::vector<ChartLine> LinesOf(const std::vector<JudgedSample>& samples,
                               const std::vector<Verdicts>& detectors)
{
    std::vector<ChartLine> lines;
    for (const Verdicts& detector : detectors) {
        std::map<int, Tally> lengths;
        for (size_t i = 0; i < samples.size(); ++i) {
            if (samples[i].test != "windows") continue;
            Tally& cell = lengths[samples[i].length];
            ++cell.all;
            cell.right += detector.answers[i] == samples[i].answer;
        }
        ChartLine line{detector.name, {}};
        for (const auto& [length, cell] : lengths) line.points.emplace_back(length, cell.Percent());
        lines.push_back(line);
    }
    return lines;
}

int Judge(int argc, char** argv)
{
    const std::string output = argv[3], count = argc > 4 ? argv[4] : "100";
    if (TQ_Init(argv[1], nullptr) != 1)
        throw std::runtime_error(std::string("no model in ") + argv[1] + "/Data");
    const std::vector<JudgedSample> samples = DrawSamples(argv[2], std::abs(std::atoi(count.c_str())));
    std::vector<Detector> detectors = OtherDetectors();
    if (count[0] == '+') detectors.clear();
    detectors.insert(detectors.begin(), OurDetector());
    std::vector<Verdicts> verdicts;
    for (const Detector& detector : detectors) {
        std::cerr << detector.name << '\n';
        verdicts.push_back({detector.name, {}});
        for (const JudgedSample& sample : samples)
            verdicts.back().answers.push_back(detector.detect(sample.bytes));
    }
    if (argc > 5) verdicts.push_back({"jschardet", AskJschardet(samples, output, argv[5])});
    PrintTable(samples, verdicts);
    WriteTsv(samples, verdicts, output + "/accuracy.tsv");
    WriteErrors(samples, verdicts[0].answers, output + "/errors.txt");
    DrawChart(LinesOf(samples, verdicts), output + "/accuracy.svg");
    PrintEarly(argv[2]);
    TQ_Exit();
    return 0;
}
}  // namespace

int main(int argc, char** argv)
{
    if (argc < 4) {
        std::cerr << "usage: DetectionJudge ROOT TEXTS OUTPUT [[+]COUNT [JSCHARDET]]\n";
        return 2;
    }
    try {
        return Judge(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "DetectionJudge: " << error.what() << '\n';
        return 1;
    }
}
