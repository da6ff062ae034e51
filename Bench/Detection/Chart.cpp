// The chart; see Chart.h.
#include "Chart.h"

#include <algorithm>
#include <cmath>
#include <fstream>

namespace
{
constexpr double LEFT = 70, TOP = 40, STEP = 70, HEIGHT = 400;
const char* const COLOURS[] = {"#c0392b", "#2980b9", "#27ae60", "#8e44ad", "#d68910", "#616a6b"};

// 100 % wrong at the bottom, 0.01 % wrong or less at the top.
double HeightOf(double percentRight)
{
    const double wrong = std::clamp(100 - percentRight, 0.01, 100.0);
    return TOP + HEIGHT * (std::log10(wrong) + 2) / 4;
}

void DrawLine(std::ofstream& out, const ChartLine& line, size_t number)
{
    const char* colour = COLOURS[number % 6];
    out << "<polyline fill='none' stroke-width='2' stroke='" << colour << "' points='";
    for (size_t i = 0; i < line.points.size(); ++i)
        out << LEFT + STEP * static_cast<double>(i) << ',' << HeightOf(line.points[i].second) << ' ';
    const double y = TOP + 20 * static_cast<double>(number);
    out << "'/>\n<text x='" << LEFT + STEP * 9 << "' y='" << y << "' fill='" << colour << "'>" << line.name
        << "</text>\n";
}
}  // namespace

void DrawChart(const std::vector<ChartLine>& lines, const std::string& path)
{
    std::ofstream out(path);
    out << "<svg xmlns='http://www.w3.org/2000/svg' width='840' height='500' font-family='sans-serif' "
           "font-size='13'>\n"
           "<rect width='840' height='500' fill='white'/>\n<text x='70' y='20'>Samples detected "
           "correctly, all four encodings together, by length in characters</text>\n";
    for (const double right : {0.0, 90.0, 99.0, 99.9, 99.99}) {
        const double y = HeightOf(right);
        out << "<line x1='" << LEFT << "' x2='" << LEFT + STEP * 8 << "' y1='" << y << "' y2='" << y
            << "' stroke='#ddd'/>\n<text x='8' y='" << y + 4 << "'>" << right << " %</text>\n";
    }
    if (!lines.empty())
        for (size_t i = 0; i < lines[0].points.size(); ++i)
            out << "<text x='" << LEFT + STEP * static_cast<double>(i) - 6 << "' y='" << TOP + HEIGHT + 24
                << "'>" << lines[0].points[i].first << "</text>\n";
    for (size_t i = 0; i < lines.size(); ++i) DrawLine(out, lines[i], i);
    out << "</svg>\n";
}
