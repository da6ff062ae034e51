// Training samples: text of many kinds and lengths, encoded, with the answer that the detector should give.
//
// Everything is drawn from the counts with a seeded generator, so sample n of a seed is the same everywhere.
#ifndef MODEL_BUILDER_SAMPLES_H
#define MODEL_BUILDER_SAMPLES_H

#include <string>
#include <vector>

#include "Characters.h"
#include "Ingredients.h"
#include "Sampler.h"

struct Sample {
    std::string bytes;
    Candidate answer = CANDIDATE_GBK;
    double weight = 1;
};

class CSampleSource
{
public:
    explicit CSampleSource(const Ingredients& ingredients);

    // Chinese text in one of the four encodings, text of other languages in UTF-8 or UTF-16LE, or ASCII alone
    // (answer GBK).
    Sample Draw(CRandom& random) const;

    // 16 to 80 characters of Chinese text in UTF-16BE or, by `kind`, in UTF-32 of either order of bytes.
    enum OtherUnicode { UTF16_BE, UTF32_LE, UTF32_BE, OTHER_UNICODE };
    std::string DrawOtherUnicode(OtherUnicode kind, CRandom& random) const;

    // 64 to 263 characters of a class of foreign text, an index of Ingredients::classes.
    std::string DrawForeign(size_t kind, CRandom& random) const;

private:
    std::string Ascii(size_t length, CRandom& random) const;
    std::wstring Chinese(bool traditional, size_t length, CRandom& random) const;
    std::wstring Sparse(bool traditional, size_t length, CRandom& random) const;
    void AddOddities(std::wstring& text, Candidate candidate, CRandom& random) const;
    void DrawRareHanzi(std::wstring& text, Candidate candidate, CRandom& random) const;
    Sample DrawAscii(CRandom& random) const;
    std::wstring World(size_t length, CRandom& random) const;
    Sample DrawWorld(CRandom& random) const;
    Sample DrawChinese(CRandom& random) const;

    const Ingredients& m_from;
    const Recipe& m_recipe;
    double m_scripts[2], m_world;      // the classes' weights, summed, by script and of the world's text
    std::vector<CSampler> m_samplers;  // by class
    size_t m_ascii = 0;                // the class of ASCII
    std::vector<wchar_t> m_hanzi[LEVELS];
};

#endif  // MODEL_BUILDER_SAMPLES_H
