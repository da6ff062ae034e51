// The model builder: texts -> statistics -> patterns -> model, one command a step.
#include <cstring>
#include <exception>
#include <iostream>
#include <map>

#include "AsciiStart.h"
#include "Counting.h"
#include "Decisive.h"
#include "Foreign.h"
#include "ModelFile.h"
#include "Patterns.h"
#include "Shape.h"
#include "ShortTexts.h"
#include "TextFile.h"
#include "Trainer.h"

namespace
{
constexpr char USAGE[] =
    "usage: ModelBuilder count TEXTS DATA        count TEXTS/CLASS/*.txt into DATA/Statistics\n"
    "       ModelBuilder train DATA [SAMPLES]    train DATA/Patterns.txt from DATA/Statistics\n"
    "       ModelBuilder build DATA OUTPUT [--without-decisive]\n"
    "                                            pack DATA/Mappings and DATA/Patterns.txt into a model\n";

// What two million bytes hold, mapping tables and gaps in the node array included.
constexpr size_t MOST_STATES = 118'200;

// Characters of the Simplified and Traditional classes that occur often enough for UTF-8 states of their own.
std::vector<wchar_t> CommonCharacters(const CSampleSource& source, double least)
{
    std::map<wchar_t, double> share;
    for (const char* name :
         {"hans-prose", "hans-tech", "hans-words", "hant-prose", "hant-tech", "hant-words"}) {
        const Statistics& counted = source.Counted(name);
        double all = 0;
        for (const auto& [character, entry] : counted.characters) all += entry.total;
        for (const auto& [character, entry] : counted.characters) share[character] += entry.total / all;
    }
    std::vector<wchar_t> common;
    for (const auto& [character, sum] : share)
        if (sum > least) common.push_back(character);
    return common;
}

// What is known beyond training: see the headers of the four.
void Finish(States& states, const CSampleSource& source, const CEncoder& encoder)
{
    AddAsciiStart(states);
    AddDecisiveStates(states, source, encoder);
    AddForeignStates(states, source, encoder);
    CorrectShortTexts(states, source, encoder, MOST_STATES);
}

void Train(const std::string& data, const std::string& samples)
{
    const CEncoder encoder(data + "/Mappings");
    const CSampleSource source(data + "/Statistics", encoder);
    States states = ShapeOfDetector(encoder, CommonCharacters(source, 1e-5), CommonCharacters(source, 5e-5));
    std::cerr << states.size() << " states\n";
    TrainingPlan plan;
    if (!samples.empty()) plan.samples = std::stoull(samples);
    TrainValues(states, source, encoder, plan);
    Finish(states, source, encoder);
    WritePatterns(states, data + "/Patterns.txt");
}

void Build(const std::string& data, const std::string& output, bool decisive)
{
    States states = ReadPatterns(data + "/Patterns.txt");
    if (!decisive) DropDecisiveStates(states);
    const std::string content = ModelContent(CEncoder(data + "/Mappings"), states);
    WriteFile(output, content);
    std::cerr << states.size() << " states, " << content.size() << " bytes\n";
}

int Run(int argc, char** argv)
{
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "count" && argc == 4) {
        CountTexts(argv[2], std::string(argv[3]) + "/Statistics");
    } else if (command == "train" && (argc == 3 || argc == 4)) {
        Train(argv[2], argc == 4 ? argv[3] : "");
    } else if (command == "build" &&
               (argc == 4 || (argc == 5 && strcmp(argv[4], "--without-decisive") == 0))) {
        Build(argv[2], argv[3], argc == 4);
    } else {
        std::cerr << USAGE;
        return 2;
    }
    return 0;
}
}  // namespace

int main(int argc, char** argv)
{
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "ModelBuilder: " << error.what() << '\n';
        return 1;
    }
}
