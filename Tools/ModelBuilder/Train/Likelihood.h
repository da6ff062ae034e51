// How likely a short text is in each encoding, by the statistics alone.
//
// A text's share is that of its first character times that of each further one behind the one before it,
// summed over the classes of Chinese text, and in UTF-8 and UTF-16LE over those of the world's text. What a
// class has not seen in a row falls back on the single characters.
#ifndef MODEL_BUILDER_LIKELIHOOD_H
#define MODEL_BUILDER_LIKELIHOOD_H

#include <array>
#include <string>
#include <vector>

#include "Ingredients.h"

// By candidate.
using CandidateShares = std::array<double, CANDIDATES>;

class CLikelihood
{
public:
    explicit CLikelihood(const Ingredients& from);

    // The share of `bytes` in each candidate, of all texts of so many characters; 0 where they are no whole
    // characters of it, and in UTF-8 where one of them takes three bytes.
    CandidateShares Of(const std::string& bytes) const;

    // The share of a text in one encoding.
    double Of(Candidate candidate, const std::wstring& text) const;

private:
    struct Class {
        const CountedClass* counted;
        std::vector<double> rest;  // by character: successors that are not listed
    };

    double WeightOf(Candidate candidate, const TextClass& kind) const;
    double Alone(const Class& c, wchar_t character) const;
    double Behind(const Class& c, wchar_t last, wchar_t character) const;
    double InClass(const Class& c, const std::wstring& text) const;

    const Ingredients& m_from;
    std::vector<Class> m_classes;  // of Chinese text and of the world's
    double m_scripts[2];           // the classes' weights, summed: of Simplified and of Traditional text
    double m_world;                // and of the world's
    Class m_ascii{};
};

#endif  // MODEL_BUILDER_LIKELIHOOD_H
