// The commands of the model builder, one function each.
#include <exception>
#include <filesystem>
#include <iostream>
#include <map>
#include <stdexcept>
#include <vector>

#include "AsciiStart.h"
#include "Compare.h"
#include "Counting.h"
#include "Decisive.h"
#include "Explain.h"
#include "Foreign.h"
#include "ModelFile.h"
#include "Patterns.h"
#include "Shape.h"
#include "ShortTexts.h"
#include "TextFile.h"
#include "Training.h"

namespace
{
constexpr char USAGE[] =
    "usage: ModelBuilder count TEXTS DATA     count TEXTS/CLASS/*.txt into DATA/Statistics\n"
    "       ModelBuilder train DATA [--set NAME=VALUE]... [--short]\n"
    "                                         train DATA/Patterns.txt from DATA/Statistics;\n"
    "                                         --short: with a tenth of the samples, for trials\n"
    "       ModelBuilder build DATA OUTPUT [--without-decisive]\n"
    "                                         pack DATA/Mappings and DATA/Patterns.txt into a model\n"
    "       ModelBuilder explain DATA FILE [--readings LEFT,RIGHT] [--bytes N]\n"
    "                                         show how a file is detected: the state for each byte and\n"
    "                                         what it adds; --readings: compare two encodings\n"
    "       ModelBuilder compare OLD NEW FOLDER\n"
    "                                         compare the accuracy of two models on FOLDER/LABEL/*; LABEL "
    "is\n"
    "                                         gbk, big5, utf-8, utf-16le or undecided\n"
    "       ModelBuilder recipe               print the numbers that training depends on, with their "
    "reasons\n"
    "       ModelBuilder regions              print the table of the automaton's regions\n";

constexpr uint64_t SHORT_TRAINING = 10;

using Arguments = std::vector<std::string>;

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

void Count(const Arguments& arguments)
{
    const std::string& data = arguments.at(1);
    CountTexts(arguments.at(0), ReadClasses(data + "/Classes.txt"), data + "/Statistics", std::cerr);
}

Recipe RecipeFrom(const Arguments& options)
{
    Recipe recipe;
    for (size_t i = 0; i < options.size(); ++i) {
        if (options[i] == "--short") {
            recipe.samples /= SHORT_TRAINING;
        } else if (options[i] == "--set" && i + 1 < options.size()) {
            recipe.Set(options[++i]);
        } else {
            throw UsageError("unknown option '" + options[i] + "' of train");
        }
    }
    return recipe;
}

void Train(const Arguments& arguments)
{
    const std::string& data = arguments.at(0);
    const Ingredients from(data, RecipeFrom({arguments.begin() + 1, arguments.end()}));
    from.recipe.Print(std::cerr);
    const CSampleSource source(from);
    States states = ShapeOfDetector(from);
    std::cerr << states.size() << " states\n";
    TrainValues(states, from, source);
    AddAsciiStart(states, from);
    AddDecisiveStates(states, from);
    AddForeignStates(states, from, source);
    CorrectShortTexts(states, from);
    WritePatterns(states, data + "/Patterns.txt");
}

void Build(const Arguments& arguments)
{
    const std::string &data = arguments.at(0), &output = arguments.at(1);
    States states = ReadPatterns(data + "/Patterns.txt");
    if (arguments.size() == 3) {
        if (arguments[2] != "--without-decisive")
            throw UsageError("unknown option '" + arguments[2] + "' of build");
        DropDecisiveStates(states);
    }
    const std::string content = ModelContent(CEncoder(data + "/Mappings"), states);
    WriteFile(output, content);
    std::cerr << states.size() << " states, " << content.size() << " bytes\n";
}

size_t CountFrom(const std::string& text)
{
    if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != std::string::npos)
        throw UsageError("'" + text + "' is not a number of bytes");
    return std::stoul(text);
}

void Explain(const Arguments& arguments)
{
    constexpr size_t ROWS = 100;
    const std::string& data = arguments.at(0);
    const std::string bytes = ReadFile(arguments.at(1));
    const States states = ReadPatterns(data + "/Patterns.txt");
    size_t rows = ROWS;
    std::string readings;
    for (size_t i = 2; i < arguments.size(); ++i) {
        if (arguments[i] == "--readings" && i + 1 < arguments.size()) {
            readings = arguments[++i];
        } else if (arguments[i] == "--bytes" && i + 1 < arguments.size()) {
            rows = CountFrom(arguments[++i]);
        } else {
            throw UsageError("unknown option '" + arguments[i] + "' of explain");
        }
    }
    if (readings.empty()) return ExplainWalk(states, bytes, rows, std::cout);
    const size_t comma = readings.find(',');
    if (comma == std::string::npos) throw UsageError("--readings takes two encodings, LEFT,RIGHT");
    ExplainReadings(states, CEncoder(data + "/Mappings"), bytes, CandidateOf(readings.substr(0, comma)),
                    CandidateOf(readings.substr(comma + 1)), rows, std::cout);
}

void Compare(const Arguments& arguments)
{
    CompareModels(arguments.at(0), arguments.at(1), arguments.at(2), std::cout);
}

void PrintRecipe(const Arguments&)
{
    Recipe().PrintReasons(std::cout);
}

void PrintRegionTable(const Arguments&)
{
    PrintRegions(std::cout);
}

struct Command {
    void (*run)(const Arguments&);
    size_t least, most;  // arguments
};

const std::map<std::string, Command> COMMANDS = {
    {"count", {.run = Count, .least = 2, .most = 2}},
    {"train", {.run = Train, .least = 1, .most = 1000}},
    {"build", {.run = Build, .least = 2, .most = 3}},
    {"explain", {.run = Explain, .least = 2, .most = 6}},
    {"compare", {.run = Compare, .least = 3, .most = 3}},
    {"recipe", {.run = PrintRecipe, .least = 0, .most = 0}},
    {"regions", {.run = PrintRegionTable, .least = 0, .most = 0}}};

void Run(const Arguments& all)
{
    const auto command = all.empty() ? COMMANDS.end() : COMMANDS.find(all[0]);
    if (command == COMMANDS.end())
        throw UsageError(all.empty() ? "no command given" : "unknown command '" + all[0] + "'");
    const Arguments arguments(all.begin() + 1, all.end());
    if (arguments.size() < command->second.least || arguments.size() > command->second.most)
        throw UsageError("wrong number of arguments for '" + all[0] + "'");
    command->second.run(arguments);
}
}  // namespace

int main(int argc, char** argv)
{
    try {
        Run({argv + 1, argv + argc});
        return 0;
    } catch (const UsageError& error) {
        std::cerr << "ModelBuilder: " << error.what() << '\n' << USAGE;
        return 2;
    } catch (const std::exception& error) {
        std::cerr << "ModelBuilder: " << error.what() << '\n';
        return 1;
    }
}
