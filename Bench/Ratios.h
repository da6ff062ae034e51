// Collects the speeds of all contenders and prints them beside each other.
#ifndef BENCH_RATIOS_H
#define BENCH_RATIOS_H

#include <benchmark/benchmark.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

// One way of doing a task on a text, after `prepare` and one run, which are not timed. Benchmarks are named
// task/text/contender; the contender that the others are compared with is "ours".
void Register(
    const std::string& task, const std::string& text, const std::string& contender,
    const std::vector<std::string>& sources, std::function<void(const std::string&)> run,
    std::function<void()> prepare = [] {});

// Medians over the repetitions, and ours over the best of the others.
class CRatios : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override;
    void PrintTable();

private:
    std::vector<std::string> m_rows;  // in the order in which they came first
    std::map<std::string, std::vector<std::string>> m_contenders;
    std::map<std::string, std::vector<double>> m_speeds;  // bytes a second by full name
};

#endif  // BENCH_RATIOS_H
