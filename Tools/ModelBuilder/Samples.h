// Training samples: text of many kinds and lengths, encoded, with the answer that the detector should give.
//
// Everything is drawn from the statistics with a seeded generator, so sample n of a seed is the same
// everywhere.
#ifndef MODEL_BUILDER_SAMPLES_H
#define MODEL_BUILDER_SAMPLES_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Encoder.h"
#include "Sampler.h"

// How much of an encoding's text is Traditional, in percent.
constexpr uint32_t TraditionalPart(Candidate candidate)
{
    return candidate == CANDIDATE_BIG5 ? 100 : candidate == CANDIDATE_GBK ? 22 : 50;
}

// All of Big5 is Traditional, of which GBK text holds little: what both may be is Big5 more often.
constexpr double BIG5_WEIGHT = 1.25;

struct Sample {
    std::string bytes;
    Candidate answer = CANDIDATE_GBK;
    double weight = 1;
};

class CSampleSource
{
public:
    CSampleSource(const std::string& statistics, const CEncoder& encoder);

    // Chinese text in one of the four encodings, or ASCII alone (answer GBK).
    Sample Draw(CRandom& random) const;

    // Bytes of a kind (0 to 5) that is none of ours: other languages and programs.
    std::string DrawForeign(size_t kind, CRandom& random) const;

    const Statistics& Counted(const std::string& name) const { return m_counted.at(name); }

private:
    const CSampler& Class(const std::string& name) const { return m_classes.at(name); }
    std::string Ascii(size_t length, CRandom& random) const;
    std::wstring Chinese(bool traditional, size_t length, CRandom& random) const;
    std::wstring Sparse(bool traditional, size_t length, CRandom& random) const;
    void AddOddities(std::wstring& text, Candidate candidate, CRandom& random) const;

    const CEncoder& m_encoder;
    std::map<std::string, Statistics> m_counted;
    std::map<std::string, CSampler> m_classes;
    std::vector<wchar_t> m_levels[3];  // frequent, less frequent and rare hanzi by GBK's zones
};

#endif  // MODEL_BUILDER_SAMPLES_H
