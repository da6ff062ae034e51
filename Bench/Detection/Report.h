// What the judge writes: the table of all tests, the counts behind it, our errors.
#ifndef BENCH_DETECTION_REPORT_H
#define BENCH_DETECTION_REPORT_H

#include <string>
#include <vector>

#include "Chart.h"
#include "Corpus.h"

struct Tally {
    int right = 0, all = 0;
    void Add(bool isRight)
    {
        ++all;
        right += isRight;
    }
    double Percent() const { return all == 0 ? 0 : 100.0 * right / all; }
};

// A detector's answers to the samples, in their order; ours come first.
struct Verdicts {
    std::string name;
    std::vector<int> answers;
};

// The bytes as hexadecimal digits.
std::string Hex(const std::string& bytes);

// One row a test and length, one column a detector; our own figure by encoding behind.
void PrintTable(const std::vector<JudgedSample>& samples, const std::vector<Verdicts>& detectors);

// Right answers and all of each test, encoding, kind, length and detector.
void WriteTsv(const std::vector<JudgedSample>& samples, const std::vector<Verdicts>& detectors,
              const std::string& path);

// Our errors: test, encoding, kind, length, answer, the first bytes.
void WriteErrors(const std::vector<JudgedSample>& samples, const std::vector<int>& answers,
                 const std::string& path);

// Accuracy of the windows against their length, a line a detector.
std::vector<ChartLine> ChartLinesOf(const std::vector<JudgedSample>& samples,
                                    const std::vector<Verdicts>& detectors);

#endif  // BENCH_DETECTION_REPORT_H
