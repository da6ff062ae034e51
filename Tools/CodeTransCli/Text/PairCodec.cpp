// Reading takes the table as it is, writing its inverse, so that what was read can be written again. GBK's
// euro sign is the single byte 80.
#include "PairCodec.h"

#include <FastPaths.h>
#include <STLCodeTrans.h>

#include <algorithm>
#include <bit>

#include "PairTable.h"

namespace
{
static_assert(std::endian::native == std::endian::little,
              "the engine's code units are low byte first, and are used here as they are");

constexpr char16_t EURO = 0x20AC;
constexpr unsigned char EURO_IN_GBK = 0x80;

unsigned Byte(std::string_view text, size_t i)
{
    return static_cast<unsigned char>(text[i]);
}

bool Between(unsigned value, unsigned first, unsigned last)
{
    return value >= first && value <= last;
}

// Appends the units of all of `piece` as the engine reads it, odd bytes and all.
void ReadByEngine(std::string_view piece, int code, std::u16string& units)
{
    const size_t had = units.size();
    units.resize(had + piece.size());
    unsigned long size = 2 * piece.size();
    const unsigned long written = GBKBig5_ToUnicode(code, piece.data(), piece.size(),
                                                    reinterpret_cast<char*>(units.data() + had), size);
    units.resize(had + written / 2);
}

// Writes the bytes of `units` as the engine does, and returns their number.
size_t WriteByEngine(std::u16string_view units, char* out)
{
    const char* const source = reinterpret_cast<const char*>(units.data());
    return (FastPathsOn() ? FastUtf16ToGbk : PlainUtf16ToGbk)(source, units.size(), out).written;
}

// Appends the bytes of all of `piece`. What has no place becomes what does not come back.
void WriteByTable(std::u16string_view piece, int code, std::string& bytes)
{
    const size_t had = bytes.size();
    bytes.resize(had + 2 * piece.size() + 2);
    if (code == ENCODE_GBK) {
        bytes.resize(had + WriteByEngine(piece, bytes.data() + had));
        return;
    }
    const std::vector<unsigned short>& pairs = PairsOf(code);
    char* out = bytes.data() + had;
    for (const char16_t unit : piece) {
        const unsigned pair = unit < 0x80 ? unit : pairs[unit];
        *out = static_cast<char>(pair >> 8);
        out += unit >= 0x80;
        *out++ = static_cast<char>(pair & 0xFF);
    }
    bytes.resize(static_cast<size_t>(out - bytes.data()));
}

class PairDecoder : public Decoder
{
public:
    explicit PairDecoder(int code) : m_code(code) {}

    // A trail byte that cannot be one is left alone: it is more likely the next character.
    Character First(std::string_view text) override
    {
        const unsigned lead = Byte(text, 0);
        if (lead < 0x80) return {1, lead};
        if (lead == EURO_IN_GBK && m_code == ENCODE_GBK) return {1, EURO};
        if (lead == 0x80 || lead == 0xFF) return {1, 0, Fault::MALFORMED};
        if (text.size() < 2) return {1, 0, Fault::CUT};
        const unsigned trail = Byte(text, 1);
        const char16_t unit = UnitOf(m_code, lead, trail);
        if (unit != REPLACEMENT) return {2, unit};
        const bool whole = Between(trail, 0x80, 0xFE) || Between(trail, 0x40, 0x7E);
        const bool pair = whole && !(m_code == ENCODE_BIG5 && Between(trail, 0x80, 0xA0));
        return {pair ? 2U : 1U, 0, Fault::MALFORMED};
    }

protected:
    bool ReadPiece(std::string_view piece, std::u16string& units) override
    {
        const size_t had = units.size();
        ReadByEngine(piece, m_code, units);
        m_back.clear();
        WriteByTable(std::u16string_view(units).substr(had), m_code, m_back);
        if (m_back == piece) return true;
        units.resize(had);
        return false;
    }

    // Behind a byte that is no part of a pair if there is one, else by going from pair to pair.
    size_t PieceEnd(std::string_view text, size_t size) const override
    {
        if (size == text.size()) return size;
        constexpr size_t SEARCHED = 256;
        for (size_t end = size; end > 0 && end + SEARCHED > size; --end)
            if (Byte(text, end - 1) < 0x40) return end;
        size_t end = 0;
        while (end < size) end += Byte(text, end) < 0x80 ? 1 : 2;
        return std::min(end, text.size());
    }

private:
    int m_code;
    std::string m_back;
};

class PairEncoder : public Encoder
{
public:
    explicit PairEncoder(int code) : m_code(code) {}

    // The ideographic space.
    void WriteSubstitute(std::string& bytes) override
    {
        bytes += m_code == ENCODE_GBK ? "\xA1\xA1" : "\xA1\x40";
    }

protected:
    bool WritePiece(std::u16string_view piece, std::string& bytes) override
    {
        const size_t had = bytes.size();
        WriteByTable(piece, m_code, bytes);
        m_back.clear();
        ReadByEngine(std::string_view(bytes).substr(had), m_code, m_back);
        if (m_back == piece) return true;
        bytes.resize(had);
        return false;
    }

    bool WriteOne(char32_t codePoint, std::string& bytes) override
    {
        if (codePoint < 0x80) {
            bytes += static_cast<char>(codePoint);
            return true;
        }
        if (codePoint == EURO && m_code == ENCODE_GBK) {
            bytes += static_cast<char>(EURO_IN_GBK);
            return true;
        }
        const unsigned pair = codePoint <= 0xFFFF ? PairsOf(m_code)[codePoint] : 0;
        if (pair == 0) return false;
        bytes += static_cast<char>(pair >> 8);
        bytes += static_cast<char>(pair & 0xFF);
        return true;
    }

private:
    int m_code;
    std::u16string m_back;
};

// "~{" begins pairs of seven-bit bytes, "~}" ends them; "~~" is a tilde, and "~" at the end of a line joins
// it with the next.
class HzDecoder : public Decoder
{
public:
    Character First(std::string_view text) override
    {
        const Step step = Next(text, m_inPairs);
        return {step.length, step.codePoint, step.fault};
    }

    size_t Read(std::string_view text, std::u16string& units) override
    {
        size_t used = 0;
        while (used < text.size()) {
            const Step step = Next(text.substr(used), m_inPairs);
            if (step.fault != Fault::NONE) break;
            if (step.isCharacter) AppendUnits(units, step.codePoint);
            m_inPairs = step.inPairs;
            used += step.length;
        }
        return used;
    }

protected:
    bool ReadPiece(std::string_view, std::u16string&) override { return false; }
    size_t PieceEnd(std::string_view, size_t size) const override { return size; }

private:
    struct Step {
        size_t length;
        char32_t codePoint;
        Fault fault;
        bool isCharacter, inPairs;
    };

    static Step Next(std::string_view text, bool inPairs)
    {
        const unsigned first = Byte(text, 0);
        if (first >= 0x80) return {1, 0, Fault::MALFORMED, false, inPairs};
        if (first == '~') {
            if (text.size() < 2) return {1, 0, Fault::CUT, false, inPairs};
            const char second = text[1];
            if (second == '{' && !inPairs) return {2, 0, Fault::NONE, false, true};
            if (second == '}' && inPairs) return {2, 0, Fault::NONE, false, false};
            if (second == '\n' && !inPairs) return {2, 0, Fault::NONE, false, false};
            if (second == '~' && !inPairs) return {2, '~', Fault::NONE, true, false};
            return {1, 0, Fault::MALFORMED, false, inPairs};
        }
        // A line end ends the pairs, too.
        if (!inPairs || first == '\n' || first == '\r') return {1, first, Fault::NONE, true, false};
        if (text.size() < 2) return {1, 0, Fault::CUT, false, inPairs};
        const unsigned second = Byte(text, 1);
        const bool valid = Between(first, 0x21, 0x77) && Between(second, 0x21, 0x7E);
        const char16_t unit = valid ? UnitOf(ENCODE_GBK, first | 0x80, second | 0x80) : REPLACEMENT;
        if (unit == REPLACEMENT) return {1, 0, Fault::MALFORMED, false, inPairs};
        return {2, unit, Fault::NONE, true, true};
    }

    bool m_inPairs = false;
};
}  // namespace

std::unique_ptr<Decoder> MakePairDecoder(int code)
{
    return std::make_unique<PairDecoder>(code);
}

std::unique_ptr<Encoder> MakePairEncoder(int code)
{
    return std::make_unique<PairEncoder>(code);
}

std::unique_ptr<Decoder> MakeHzDecoder()
{
    return std::make_unique<HzDecoder>();
}
