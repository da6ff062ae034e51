// How likely a short text is in each encoding, by the statistics alone.
//
// A text's share is that of its first character times that of each further one behind the one before it,
// summed over the classes of Chinese text. What a class has not seen in a row falls back on the single
// characters.
#ifndef MODEL_BUILDER_LIKELIHOOD_H
#define MODEL_BUILDER_LIKELIHOOD_H

#include <array>
#include <string>
#include <vector>

#include "Encoder.h"
#include "Samples.h"

// By candidate.
using CandidateShares = std::array<double, CANDIDATES>;

// The encodings in which two bytes may be a character.
constexpr Candidate PAIR_CANDIDATES[] = {CANDIDATE_GBK, CANDIDATE_BIG5, CANDIDATE_UNICODE};

class CLikelihood
{
public:
    CLikelihood(const CSampleSource& source, const CEncoder& encoder);

    // The share of `bytes` in each of PAIR_CANDIDATES, of all texts of so many characters; 0 where they are
    // no whole characters of it.
    CandidateShares Of(const std::string& bytes) const;

    // The share of a text in one encoding.
    double Of(Candidate candidate, const std::wstring& text) const;

private:
    struct Class {
        const Statistics* counted;
        double weight;
        bool isWords, isTraditional;
        double all = 0;              // characters
        std::vector<double> rest{};  // by character: successors that are not listed
    };

    static Class Opened(const CSampleSource& source, const std::string& name, double weight);
    static double Alone(const Class& c, wchar_t character);
    static double Behind(const Class& c, wchar_t last, wchar_t character);
    static double InClass(const Class& c, const std::wstring& text);

    const CEncoder& m_encoder;
    std::vector<Class> m_classes;
    Class m_ascii;
};

#endif  // MODEL_BUILDER_LIKELIHOOD_H
