// Speeds of all contenders beside each other; see Ratios.h.
#include "Ratios.h"

#include <algorithm>
#include <cstdio>

#include "Inputs.h"

void Register(const std::string& task, const std::string& text, const std::string& contender,
              const std::vector<std::string>& sources, std::function<void(const std::string&)> run,
              std::function<void()> prepare)
{
    const auto loop = [&sources, run, prepare](benchmark::State& state) {
        prepare();
        run(sources[0]);
        size_t next = 0, bytes = 0;
        for (auto _ : state) {
            const std::string& source = sources[next];
            run(source);
            bytes += source.size() - TERMINATOR;
            if (++next == sources.size()) next = 0;
        }
        state.SetBytesProcessed(static_cast<int64_t>(bytes));
    };
    benchmark::RegisterBenchmark((task + "/" + text + "/" + contender).c_str(), loop);
}

void CRatios::ReportRuns(const std::vector<Run>& runs)
{
    for (const Run& run : runs) {
        if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
        const std::string name = run.run_name.function_name;
        const size_t slash = name.rfind('/');
        const std::string row = name.substr(0, slash), contender = name.substr(slash + 1);
        if (m_contenders.count(row) == 0) m_rows.push_back(row);
        std::vector<std::string>& contenders = m_contenders[row];
        if (std::find(contenders.begin(), contenders.end(), contender) == contenders.end())
            contenders.push_back(contender);
        m_speeds[name].push_back(run.counters.at("bytes_per_second"));
    }
}

void CRatios::PrintTable()
{
    const auto median = [&](const std::string& name) {
        std::vector<double>& speeds = m_speeds[name];
        std::sort(speeds.begin(), speeds.end());
        return speeds[speeds.size() / 2] / 1e9;
    };
    std::sort(m_rows.begin(), m_rows.end());
    printf("\n| task, text | CodeTrans, GB/s | others, GB/s | CodeTrans / best other |\n|---|---|---|---|\n");
    for (const std::string& row : m_rows) {
        double ours = 0, best = 0;
        std::string others;
        for (const std::string& contender : m_contenders[row]) {
            const double speed = median(row + "/" + contender);
            if (contender == "ours") {
                ours = speed;
                continue;
            }
            char text[100];
            snprintf(text, sizeof text, "%s%s %.3f", others.empty() ? "" : ", ", contender.c_str(), speed);
            others += text;
            best = std::max(best, speed);
        }
        printf("| %s | %.3f | %s | ", row.c_str(), ours, others.c_str());
        best > 0 ? printf("%.1f |\n", ours / best) : printf("|\n");
    }
}
