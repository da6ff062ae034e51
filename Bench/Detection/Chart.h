// A line chart of accuracy against length as SVG; lengths are spaced by their order, errors by their
// logarithm.
#ifndef BENCH_DETECTION_CHART_H
#define BENCH_DETECTION_CHART_H

#include <string>
#include <utility>
#include <vector>

struct ChartLine {
    std::string name;
    std::vector<std::pair<int, double>> points;  // length, percent right
};

void DrawChart(const std::vector<ChartLine>& lines, const std::string& path);

#endif  // BENCH_DETECTION_CHART_H
