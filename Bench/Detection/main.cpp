// Measures how often each detector finds the right encoding, by test, encoding, kind of text and length.
//
// Usage: DetectionJudge ROOT TEXTS OUTPUT [COUNT [JSCHARDET]]
//   ROOT       folder that contains the model as Data/CodeTrans.model
//   TEXTS      a folder that fetch-judge-texts wrote: its folder "choose", "former" or "final"
//   OUTPUT     folder for accuracy.tsv, accuracy.svg and errors.txt (test, kind, answer, bytes)
//   COUNT      samples per kind, encoding and length, 100 by default; +COUNT measures the library alone
//   JSCHARDET  folder of the npm package, which is run by node
// Prints the table, then how many bytes of a file decide it (Early.h), then the targets.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "CodeTrans.h"
#include "Corpus.h"
#include "Detectors.h"
#include "Early.h"
#include "Report.h"
#include "Targets.h"

namespace
{
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
    DrawChart(ChartLinesOf(samples, verdicts), output + "/accuracy.svg");
    PrintEarly(argv[2]);
    PrintTargets(samples, verdicts[0].answers);
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
