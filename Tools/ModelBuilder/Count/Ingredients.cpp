// Reads the committed figures of a data folder.
#include "Ingredients.h"

#include <filesystem>
#include <stdexcept>

Ingredients::Ingredients(const std::string& data, const Recipe& theRecipe)
    : recipe(theRecipe), encoder(data + "/Mappings")
{
    for (const TextClass& kind : ReadClasses(data + "/Classes.txt")) {
        const std::string counts = data + "/Statistics/" + kind.name + ".txt";
        if (!std::filesystem::exists(counts))
            throw std::runtime_error("the class '" + kind.name + "' has no counts in " + counts +
                                     "; run ModelBuilder count with texts of this class first");
        CountedClass counted{.kind = kind, .counts = Statistics::Read(counts)};
        for (const auto& [character, entry] : counted.counts.characters) counted.size += entry.total;
        classes.push_back(std::move(counted));
    }
}

double Ingredients::WeightOfScript(bool traditional) const
{
    double sum = 0;
    for (const CountedClass& counted : classes)
        if (IsChinese(counted.kind.role) && counted.kind.isTraditional == traditional)
            sum += counted.kind.weight;
    return sum;
}

double Ingredients::WeightOfWorld() const
{
    double sum = 0;
    for (const CountedClass& counted : classes)
        if (counted.kind.role == Role::WORLD) sum += counted.kind.weight;
    return sum;
}
