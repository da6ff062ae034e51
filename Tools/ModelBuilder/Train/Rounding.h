// From learned weights to the whole digits of the model file (quantisation).
//
// A weight in nats times the units a nat is a digit. Adding the same to all four digits of a state changes no
// comparison of sums, but it changes how many positive states each encoding counts, which the decision asks
// for as well. So the digits are shifted until every encoding in whose text the state is at home has a
// positive one.
#ifndef MODEL_BUILDER_ROUNDING_H
#define MODEL_BUILDER_ROUNDING_H

#include "Regression.h"

// The share of each pair (a high byte first, or a blank and a high byte) in the foreign class that has it
// most.
using ForeignPairs = std::vector<double>;
ForeignPairs CountForeignPairs(const Ingredients& from, const CSampleSource& source);

class CRounding
{
public:
    CRounding(const CRegression& regression, const Ingredients& from, const ForeignPairs& foreign);

    // The packed value of a state.
    int ValueOf(const Feature& feature) const
    {
        return feature.ascii ? AsciiValue(feature) : MixedValue(feature);
    }

    // Whether an ASCII state speaks against UTF-16LE, of which it may be a common hanzi, and words are made
    // of it: it had better say nothing. The other way out (see AsciiValue) would count for the other
    // encodings wherever there is a word, even in languages that are none of ours.
    bool IsDoubtful(const Feature& feature) const;

private:
    bool IsAmbiguous(const Feature& feature, double weight) const;
    bool IsWellKnown(const std::string& pair) const;
    bool IsAtHomeInUnicode(const Feature& feature) const;
    double ShareOf(const Feature& feature, size_t candidate) const;
    bool IsForeign(const Feature& feature, size_t candidate) const;
    bool IsInUse(const Feature& feature, size_t candidate) const;
    int ShiftOf(const Feature& feature, const Digits& digits) const;
    int AsciiValue(const Feature& feature) const;
    int MixedValue(const Feature& feature) const;

    const CRegression& m_regression;
    const Ingredients& m_from;
    const Recipe& m_recipe;
    const ForeignPairs& m_foreign;
    Weights m_all{};  // visits of pairs in training, by candidate
};

#endif  // MODEL_BUILDER_ROUNDING_H
