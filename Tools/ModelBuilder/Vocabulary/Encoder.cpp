// The inverse of a mapping table, and the four encodings by it.
#include "Encoder.h"

#include <sstream>
#include <stdexcept>

#include "STLCodeTrans.h"
#include "TextFile.h"

namespace
{
std::vector<uint16_t> Inverse(const std::vector<uint16_t>& mapping)
{
    std::vector<uint16_t> pairs(65536, 0);
    const auto take = [&](unsigned firstLead, unsigned lastLead, bool signsOnly) {
        for (unsigned lead = firstLead; lead <= lastLead; ++lead)
            for (unsigned trail = 0x40; trail <= 0xFE; ++trail) {
                const auto pair = static_cast<uint16_t>(lead << 8 | trail);
                const uint16_t code =
                    mapping[PairIndex(static_cast<unsigned char>(lead), static_cast<unsigned char>(trail))];
                const bool isHanzi = code >= 0x4E00 && code < 0xA000;
                if (code != UNDEFINED_CODE && pairs[code] == 0 && !(signsOnly && isHanzi)) pairs[code] = pair;
            }
    };
    take(0xA1, 0xA3, true);
    take(0xA4, 0xFE, false);
    take(0x81, 0xA3, false);
    return pairs;
}
}  // namespace

std::vector<uint16_t> ReadMapping(const std::string& path)
{
    std::vector<uint16_t> mapping(MAPPING_ENTRIES, UNDEFINED_CODE);
    for (const std::string& line : ReadLines(path)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream cells(line);
        std::string cell;
        cells >> cell;
        const std::string pair = FromHex(cell);
        if (pair.size() != 2) throw std::runtime_error("a line does not begin with a byte pair in " + path);
        const auto lead = static_cast<unsigned char>(pair[0]);
        for (auto trail = static_cast<unsigned char>(pair[1]); cells >> cell; ++trail)
            if (cell != "----")
                mapping[PairIndex(lead, trail)] = static_cast<uint16_t>(std::stoi(cell, nullptr, 16));
    }
    return mapping;
}

CEncoder::CEncoder(const std::string& mappings)
    : m_gbk(ReadMapping(mappings + "/GBK.txt")),
      m_big5(ReadMapping(mappings + "/Big5.txt")),
      m_gbkPairs(Inverse(m_gbk)),
      m_big5Pairs(Inverse(m_big5))
{
}

unsigned CEncoder::Pair(Candidate candidate, wchar_t character) const
{
    if (character > 0xFFFF) return 0;
    return (candidate == CANDIDATE_GBK ? m_gbkPairs : m_big5Pairs)[static_cast<size_t>(character) & 0xFFFF];
}

bool CEncoder::Has(Candidate candidate, wchar_t character) const
{
    if (character < 0x80 || candidate == CANDIDATE_UTF8 || candidate == CANDIDATE_UNICODE) return true;
    return Pair(candidate, character) != 0;
}

namespace
{
void AppendUnit(std::string& to, unsigned unit)
{
    to += static_cast<char>(unit & 0xFF);
    to += static_cast<char>(unit >> 8);
}

// Little-endian; a character beyond U+FFFF is two units, a high and a low surrogate.
void AppendUtf16(std::string& to, unsigned code)
{
    if (code > 0xFFFF) AppendUnit(to, 0xD800 + ((code - 0x10000) >> 10));
    AppendUnit(to, code > 0xFFFF ? 0xDC00 + (code & 0x3FF) : code);
}
}  // namespace

std::string CEncoder::Encode(Candidate candidate, const std::wstring& text) const
{
    std::string bytes;
    for (const wchar_t c : text) {
        if (candidate == CANDIDATE_UNICODE) {
            AppendUtf16(bytes, static_cast<unsigned>(c));
        } else if (candidate == CANDIDATE_UTF8) {
            AppendUtf8(bytes, c);
        } else if (c < 0x80) {
            bytes += static_cast<char>(c);
        } else if (const unsigned pair = Pair(candidate, c); pair != 0) {
            bytes += static_cast<char>(pair >> 8);
            bytes += static_cast<char>(pair & 0xFF);
        }
    }
    return bytes;
}

std::wstring CEncoder::Decode(Candidate candidate, const std::string& bytes) const
{
    std::wstring text;
    for (size_t i = 0; i < bytes.size(); ++i) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        if (candidate != CANDIDATE_UNICODE && first < 0x80) {
            text += static_cast<wchar_t>(first);
            continue;
        }
        if (++i == bytes.size()) return L"";
        const auto second = static_cast<unsigned char>(bytes[i]);
        if (candidate == CANDIDATE_UNICODE) {
            text += static_cast<wchar_t>(second << 8 | first);
            continue;
        }
        const uint16_t code = (candidate == CANDIDATE_GBK ? m_gbk : m_big5)[PairIndex(first, second)];
        if (second < 0x40 || code == UNDEFINED_CODE) return L"";
        text += static_cast<wchar_t>(code);
    }
    return text;
}
