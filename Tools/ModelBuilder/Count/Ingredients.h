// What every stage of training works from: the recipe, the classes, their counts, the encoder.
#ifndef MODEL_BUILDER_INGREDIENTS_H
#define MODEL_BUILDER_INGREDIENTS_H

#include <string>
#include <vector>

#include "Classes.h"
#include "Encoder.h"
#include "Recipe.h"
#include "Statistics.h"

struct CountedClass {
    TextClass kind;
    Statistics counts;
    double size = 0;  // characters counted
};

struct Ingredients {
    // Reads Classes.txt, Mappings/ and Statistics/ of the folder `data`.
    Ingredients(const std::string& data, const Recipe& theRecipe);

    Recipe recipe;
    CEncoder encoder;
    std::vector<CountedClass> classes;  // in the order of the list

    // The weights of the classes of one script of Chinese text, and of the world's text, summed.
    double WeightOfScript(bool traditional) const;
    double WeightOfWorld() const;
};

#endif  // MODEL_BUILDER_INGREDIENTS_H
