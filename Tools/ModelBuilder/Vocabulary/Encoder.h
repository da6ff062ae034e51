// The mapping tables as text, and from them the encoding of training text in each of the four encodings.
//
// A pair that no table defines decodes to U+FFFD. Of several pairs for one character the encoder takes the
// lowest with a lead byte of A1 and above, as other programs do, and only then the lowest of all; one among
// the signs (A1-A3) only for hanzi that have no other.
#ifndef MODEL_BUILDER_ENCODER_H
#define MODEL_BUILDER_ENCODER_H

#include <cstdint>
#include <string>
#include <vector>

#include "Candidates.h"

constexpr uint16_t UNDEFINED_CODE = 0xFFFD;

// A mapping table of MAPPING_ENTRIES code units, as the model file holds it.
std::vector<uint16_t> ReadMapping(const std::string& path);

class CEncoder
{
public:
    // `mappings` is the folder with GBK.txt and Big5.txt.
    explicit CEncoder(const std::string& mappings);

    const std::vector<uint16_t>& Gbk() const { return m_gbk; }
    const std::vector<uint16_t>& Big5() const { return m_big5; }

    // The pair (lead byte high) for a character; 0 where the encoding lacks it.
    unsigned Pair(Candidate candidate, wchar_t character) const;

    // Whether the encoding has the character.
    bool Has(Candidate candidate, wchar_t character) const;

    // Encodes `text`; characters that the encoding lacks are left out.
    std::string Encode(Candidate candidate, const std::wstring& text) const;

    // What `bytes` are in GBK, Big5 or UTF-16LE; empty where they are no whole characters of it.
    std::wstring Decode(Candidate candidate, const std::string& bytes) const;

private:
    std::vector<uint16_t> m_gbk, m_big5;            // pair to character
    std::vector<uint16_t> m_gbkPairs, m_big5Pairs;  // character to pair
};

#endif  // MODEL_BUILDER_ENCODER_H
