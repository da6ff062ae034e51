// Multinomial logistic regression: the weights of the states, learned one sample at a time.
//
// A sample's sum for a candidate is that of the weights of the states that it enters; softmax makes
// probabilities of the four sums, and each sample moves the weights of its states along the gradient of the
// right answer's logarithm. AdaGrad scales the steps: what has moved much moves less. A state's weight is its
// own plus its group's. States that ASCII alone can enter tell UTF-16LE from the rest and nothing else.
#ifndef MODEL_BUILDER_REGRESSION_H
#define MODEL_BUILDER_REGRESSION_H

#include <string>
#include <unordered_map>
#include <vector>

#include "Automaton.h"
#include "Features.h"
#include "Priors.h"
#include "Samples.h"

// One state that carries a value.
struct Feature {
    const StateName* name;
    bool ascii = false;        // ASCII alone enters it
    bool pair = false;         // it ends a pair
    bool counted = false;      // a pair that is no character of UTF-8: the statistics say nearly all of it
    bool utf8 = true;          // it may stand in UTF-8
    bool silent = false;       // it has turned out to do harm, and says nothing any more
    int own = -1, group = -1;  // its parameters
    std::array<uint32_t, CANDIDATES> seen{};  // visits in training
};

class CRegression
{
public:
    CRegression(const States& states, const Ingredients& from);

    // One step of gradient descent at `rate`; whether the sample was decided wrongly before it.
    bool Learn(const Sample& sample, double rate);

    std::vector<Feature>& Features() { return m_features; }
    const std::vector<Feature>& Features() const { return m_features; }

    // The weight of a state: its own and its group's.
    Weights WeightOf(const Feature& feature) const;

private:
    struct Parameter {
        Weights weight{};
        Weights origin{};   // where it started, and is drawn back to
        Weights squares{};  // sums of squared gradients
    };

    Feature NewFeature(const StateName& name, const CPriors& priors);
    int GroupParameter(const std::string& group);
    void FindVisited(const std::string& bytes);
    void Add(Weights& sum, const Feature& feature) const;
    void Step(const Feature& feature, const Weights& gradient, double rate);
    void Step(Parameter& parameter, size_t candidate, double gradient, double rate) const;

    const Recipe& m_recipe;
    CAutomaton m_automaton;
    std::vector<int> m_feature;  // by node; -1 for none
    std::vector<Feature> m_features;
    std::vector<Parameter> m_parameters;
    std::unordered_map<std::string, int> m_groups;
    std::vector<size_t> m_visited;  // features of the sample at hand
};

#endif  // MODEL_BUILDER_REGRESSION_H
