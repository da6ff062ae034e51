// The nodes are read from the model files themselves, and asked by the library's walk and decision.
#include "Compare.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iomanip>
#include <map>
#include <ostream>
#include <stdexcept>
#include <vector>

#include "Detection.h"
#include "ModelFile.h"
#include "TextFile.h"

namespace
{
namespace fs = std::filesystem;

struct Model {
    std::vector<TrieNode> nodes;

    int AnswerTo(const std::string& bytes) const
    {
        return Decide(Walk(nodes.data(), static_cast<unsigned>(nodes.size()), bytes.data(), bytes.size()));
    }
};

struct Tally {
    size_t all = 0;
    std::array<size_t, 2> right{};  // by model
};

constexpr const char* LABELS[CANDIDATES] = {"gbk", "big5", "utf-8", "utf-16le"};

// What the folder's name says.
int CodeOfLabel(const std::string& label)
{
    if (label == "undecided") return ENCODE_UNKNOWN;
    for (const Candidate c : ALL_CANDIDATES)
        if (label == LABELS[c]) return CODES[c];
    throw std::runtime_error("the folder '" + label +
                             "' must be named gbk, big5, utf-8, utf-16le or undecided");
}

size_t LengthOf(const std::string& line, size_t at, int code)
{
    const auto first = static_cast<unsigned char>(line[at]);
    if (code == ENCODE_UNICODE) return 2;
    if (first < 0x80 || code == ENCODE_UNKNOWN) return 1;
    if (code != ENCODE_UTF8) return 2;
    return first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
}

// The first `count` characters; empty where there are fewer.
std::string FirstOf(const std::string& line, size_t count, int code)
{
    size_t at = 0;
    for (; count > 0 && at < line.size(); --count) at += LengthOf(line, at, code);
    return count > 0 || at > line.size() ? "" : line.substr(0, at);
}

std::vector<std::string> LinesOf(const std::string& content, int code)
{
    std::vector<std::string> lines(1);
    const size_t width = code == ENCODE_UNICODE ? 2 : 1;
    for (size_t i = 0; i < content.size(); i += width) {
        const std::string unit = content.substr(i, width);
        if (unit[0] == '\n' && (width == 1 || unit.back() == 0)) {
            lines.emplace_back();
        } else {
            lines.back() += unit;
        }
    }
    return lines;
}

// Lines of ASCII are GBK to the library and say nothing of the file.
bool IsJudged(const std::string& piece)
{
    return std::any_of(piece.begin(), piece.end(), [](char c) { return (c & 0x80) != 0 || c == 0; });
}

class CComparison
{
public:
    CComparison(const std::string& oldModel, const std::string& newModel)
        : m_models{Model{.nodes = NodesOfModel(ReadFile(oldModel))},
                   Model{.nodes = NodesOfModel(ReadFile(newModel))}}
    {
    }

    void Add(const std::string& label, const fs::path& file)
    {
        const int code = CodeOfLabel(label);
        const std::string content = ReadFile(file.string());
        const std::array<bool, 2> whole = Judge(label, "whole files", content, code);
        if (whole[0] != whole[1]) m_changed.push_back((whole[1] ? "better: " : "worse:  ") + file.string());
        for (const std::string& line : LinesOf(content, code)) {
            Judge(label, "lines", line, code);
            Judge(label, "4 characters", FirstOf(line, 4, code), code);
            Judge(label, "16 characters", FirstOf(line, 16, code), code);
        }
    }

    void Print(std::ostream& out) const
    {
        out << std::left << std::setw(12) << "label" << std::setw(16) << "texts" << std::right << std::setw(9)
            << "number" << std::setw(9) << "old %" << std::setw(9) << "new %" << '\n'
            << std::fixed << std::setprecision(2);
        for (const auto& [key, tally] : m_tallies) {
            out << std::left << std::setw(12) << key.first << std::setw(16) << key.second << std::right
                << std::setw(9) << tally.all;
            for (const size_t right : tally.right)
                out << std::setw(9) << 100.0 * static_cast<double>(right) / static_cast<double>(tally.all);
            out << '\n';
        }
        for (const std::string& line : m_changed) out << line << '\n';
    }

private:
    std::array<bool, 2> Judge(const std::string& label, const std::string& kind, const std::string& piece,
                              int code)
    {
        std::array<bool, 2> right{};
        if (!IsJudged(piece)) return right;
        Tally& tally = m_tallies[{label, kind}];
        ++tally.all;
        for (size_t m = 0; m < right.size(); ++m)
            tally.right[m] += right[m] = m_models[m].AnswerTo(piece) == code;
        return right;
    }

    std::array<Model, 2> m_models;
    std::map<std::pair<std::string, std::string>, Tally> m_tallies;  // by label and kind of piece
    std::vector<std::string> m_changed;
};
}  // namespace

void CompareModels(const std::string& oldModel, const std::string& newModel, const std::string& folder,
                   std::ostream& out)
{
    if (!fs::is_directory(folder)) throw std::runtime_error(folder + " is not a folder");
    CComparison comparison(oldModel, newModel);
    std::map<std::string, std::string> files;  // path to label, sorted
    for (const auto& label : fs::directory_iterator(folder)) {
        if (!label.is_directory()) continue;
        const std::string name = label.path().filename().string();
        CodeOfLabel(name);
        for (const auto& entry : fs::recursive_directory_iterator(label.path()))
            if (entry.is_regular_file()) files[entry.path().string()] = name;
    }
    for (const auto& [path, label] : files) comparison.Add(label, path);
    comparison.Print(out);
}
