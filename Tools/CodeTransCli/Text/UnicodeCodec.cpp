// UTF-8 is read and written by the engine, as wide characters of the Basic Multilingual Plane; a piece with
// anything beyond it goes character by character. The other forms are copied, with their bytes turned round
// where needed.
#include "UnicodeCodec.h"

#include <FastPaths.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

namespace
{
constexpr char32_t LAST_CODE_POINT = 0x10FFFF;

unsigned Byte(std::string_view text, size_t i)
{
    return static_cast<unsigned char>(text[i]);
}

bool Between(unsigned value, unsigned first, unsigned last)
{
    return value >= first && value <= last;
}

template <typename Value>
Value Load(const char* from)
{
    Value value;
    memcpy(&value, from, sizeof value);
    return value;
}

// Sequences of two to four bytes, by lead byte, and what the second byte may be.
struct Sequence {
    unsigned firstLead, lastLead;
    size_t length;
    unsigned firstSecond, lastSecond;
};

constexpr Sequence SEQUENCES[] = {
    {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF}, {0xE1, 0xEC, 3, 0x80, 0xBF},
    {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF}, {0xF0, 0xF0, 4, 0x90, 0xBF},
    {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F},
};

Character Follow(std::string_view text, const Sequence& sequence)
{
    char32_t codePoint = Byte(text, 0) & (0xFFU >> (sequence.length + 1));
    for (size_t i = 1; i < sequence.length; ++i) {
        if (i == text.size()) return {i, 0, Fault::CUT};
        const bool valid = i == 1 ? Between(Byte(text, 1), sequence.firstSecond, sequence.lastSecond)
                                  : Between(Byte(text, i), 0x80, 0xBF);
        if (!valid) return {i, 0, Fault::MALFORMED};
        codePoint = codePoint << 6 | (Byte(text, i) & 0x3F);
    }
    return {sequence.length, codePoint};
}

void AppendUtf8(std::string& bytes, char32_t codePoint)
{
    if (codePoint < 0x80) {
        bytes += static_cast<char>(codePoint);
        return;
    }
    const unsigned following = codePoint < 0x800 ? 1 : codePoint < 0x10000 ? 2 : 3;
    const unsigned lead = 0xFF00U >> (following + 1) & 0xFF;  // 1100 0000, 1110 0000, 1111 0000
    bytes += static_cast<char>(lead | codePoint >> (6 * following));
    for (unsigned i = following; i-- > 0;) bytes += static_cast<char>(0x80 | (codePoint >> (6 * i) & 0x3F));
}

// The bytes of three-byte characters at the start of `text`, but for those after E0 and ED, which need a
// closer look. Two characters of eight bytes at a time:
//   1110xxxx 10xxxxxx 10xxxxxx 1110xxxx 10xxxxxx 10xxxxxx ........ ........
size_t ThreeByteRun(std::string_view text)
{
    static_assert(std::endian::native == std::endian::little, "the masks are for low bytes first");
    size_t used = 0;
    for (; used + 8 <= text.size(); used += 6) {
        const auto bytes = Load<uint64_t>(text.data() + used);
        if ((bytes & 0x0000C0C0F0C0C0F0) != 0x00008080E08080E0) break;
        const unsigned first = bytes & 0x0F, second = bytes >> 24 & 0x0F;
        if (first == 0 || second == 0 || first == 0x0D || second == 0x0D) break;
    }
    return used;
}

// Wide characters of the engine to units and back. False where one is a surrogate.
bool Narrow(const wchar_t* wide, size_t count, char16_t* units)
{
    unsigned surrogates = 0;
    for (size_t i = 0; i < count; ++i) {
        units[i] = static_cast<char16_t>(wide[i]);
        surrogates |= (static_cast<unsigned>(wide[i]) & 0xF800) == 0xD800;
    }
    return surrogates == 0;
}

bool Widen(const char16_t* units, size_t count, wchar_t* wide)
{
    unsigned surrogates = 0;
    for (size_t i = 0; i < count; ++i) {
        wide[i] = units[i];
        surrogates |= (units[i] & 0xF800U) == 0xD800;
    }
    return surrogates == 0;
}

// What the engine's fast forms leave is done by its plain rules: nothing, on a machine without fast forms.
size_t Utf8ToWide(std::string_view text, wchar_t* wide)
{
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    const Progress fast =
        FastPathsOn() ? FastUtf8ToWide(bytes, text.size(), reinterpret_cast<char*>(wide)) : Progress{};
    size_t count = fast.written / sizeof(wchar_t);
    for (size_t at = fast.read; at < text.size();) {
        const Character next = FirstOfUtf8(text.substr(at));
        wide[count++] = next.fault == Fault::NONE ? static_cast<wchar_t>(next.codePoint) : 0;
        at += next.length;
    }
    return count;
}

void WideToUtf8(const wchar_t* wide, size_t count, std::string& bytes)
{
    const size_t had = bytes.size();
    bytes.resize(had + 3 * count + 64);
    const Progress fast =
        FastPathsOn() ? FastWideToUtf8(wide, count, reinterpret_cast<unsigned char*>(bytes.data() + had))
                      : Progress{};
    bytes.resize(had + fast.written);
    for (size_t i = fast.read; i < count; ++i) AppendUtf8(bytes, static_cast<char32_t>(wide[i]));
}

class Utf8Decoder : public Decoder
{
public:
    Character First(std::string_view text) override { return FirstOfUtf8(text); }

protected:
    bool ReadPiece(std::string_view piece, std::u16string& units) override
    {
        m_wide.resize(std::max(m_wide.size(), piece.size() + 8));
        const size_t count = Utf8ToWide(piece, m_wide.data());
        const size_t had = units.size();
        units.resize(had + count);
        m_back.clear();
        if (Narrow(m_wide.data(), count, units.data() + had)) WideToUtf8(m_wide.data(), count, m_back);
        if (m_back == piece) return true;
        units.resize(had);
        return false;
    }

    size_t PieceEnd(std::string_view text, size_t size) const override
    {
        if (size == text.size()) return size;
        size_t end = size;
        for (int i = 0; i < 3 && end > 0 && Between(Byte(text, end), 0x80, 0xBF); ++i) --end;
        return end > 0 ? end : size;
    }

private:
    std::vector<wchar_t> m_wide;
    std::string m_back;
};

class Utf8Encoder : public Encoder
{
protected:
    bool WritePiece(std::u16string_view piece, std::string& bytes) override
    {
        m_wide.resize(std::max(m_wide.size(), piece.size()));
        if (!Widen(piece.data(), piece.size(), m_wide.data())) return false;
        const size_t had = bytes.size();
        WideToUtf8(m_wide.data(), piece.size(), bytes);
        m_back.resize(std::max(m_back.size(), bytes.size() - had + 8));
        const size_t count = Utf8ToWide(std::string_view(bytes).substr(had), m_back.data());
        if (count == piece.size() &&
            std::equal(m_wide.begin(), m_wide.begin() + static_cast<std::ptrdiff_t>(count), m_back.begin()))
            return true;
        bytes.resize(had);
        return false;
    }

    bool WriteOne(char32_t codePoint, std::string& bytes) override
    {
        if (IsSurrogate(codePoint)) return false;
        AppendUtf8(bytes, codePoint);
        return true;
    }

private:
    std::vector<wchar_t> m_wide, m_back;
};

// UTF-16 and UTF-32, whose characters are units of the same size: `Unit` is char16_t or char32_t.
template <typename Unit>
Unit InOrder(Unit unit, bool bigEndian)
{
    if (!bigEndian) return unit;
    if constexpr (sizeof(Unit) == 2)
        return __builtin_bswap16(unit);
    else
        return __builtin_bswap32(unit);
}

template <typename Unit>
class UnitDecoder : public Decoder
{
public:
    explicit UnitDecoder(bool bigEndian) : m_bigEndian(bigEndian) {}

    Character First(std::string_view text) override
    {
        if (text.size() < sizeof(Unit)) return {text.size(), 0, Fault::CUT};
        const char32_t first = At(text, 0);
        if (first > LAST_CODE_POINT) return {sizeof(Unit), 0, Fault::MALFORMED};
        if (!IsSurrogate(first)) return {sizeof(Unit), first};
        if (sizeof(Unit) == 4 || IsLowSurrogate(first)) return {sizeof(Unit), 0, Fault::LONE_HALF};
        if (text.size() < 2 * sizeof(Unit)) return {text.size(), 0, Fault::CUT};
        const char32_t second = At(text, 1);
        if (!IsLowSurrogate(second)) return {sizeof(Unit), 0, Fault::LONE_HALF};
        return {2 * sizeof(Unit), 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00)};
    }

protected:
    bool ReadPiece(std::string_view piece, std::u16string& units) override
    {
        if (piece.size() % sizeof(Unit) != 0) return false;
        const size_t had = units.size(), count = piece.size() / sizeof(Unit);
        units.resize(had + count);
        char16_t* const out = units.data() + had;
        unsigned odd = 0;
        for (size_t i = 0; i < count; ++i) {
            const char32_t unit = At(piece, i);
            out[i] = static_cast<char16_t>(unit);
            odd |= unit > 0xFFFF || (unit & 0xF800) == 0xD800;
        }
        if (odd != 0) units.resize(had);
        return odd == 0;
    }

    size_t PieceEnd(std::string_view text, size_t size) const override
    {
        return size == text.size() ? size : size / sizeof(Unit) * sizeof(Unit);
    }

private:
    char32_t At(std::string_view text, size_t index) const
    {
        return InOrder(Load<Unit>(text.data() + sizeof(Unit) * index), m_bigEndian);
    }

    bool m_bigEndian;
};

template <typename Unit>
class UnitEncoder : public Encoder
{
public:
    explicit UnitEncoder(bool bigEndian) : m_bigEndian(bigEndian) {}

protected:
    bool WritePiece(std::u16string_view piece, std::string& bytes) override
    {
        if (std::any_of(piece.begin(), piece.end(), IsSurrogate)) return false;
        const size_t had = bytes.size();
        bytes.resize(had + sizeof(Unit) * piece.size());
        char* const out = bytes.data() + had;
        for (size_t i = 0; i < piece.size(); ++i) {
            const Unit unit = InOrder<Unit>(piece[i], m_bigEndian);
            memcpy(out + sizeof(Unit) * i, &unit, sizeof unit);
        }
        return true;
    }

    bool WriteOne(char32_t codePoint, std::string& bytes) override
    {
        if (IsSurrogate(codePoint)) return false;
        std::u16string pair;
        AppendUnits(pair, codePoint);
        if (sizeof(Unit) == 4)
            Append(static_cast<Unit>(codePoint), bytes);
        else
            for (const char16_t half : pair) Append(half, bytes);
        return true;
    }

private:
    void Append(Unit unit, std::string& bytes) const
    {
        unit = InOrder(unit, m_bigEndian);
        bytes.append(reinterpret_cast<const char*>(&unit), sizeof unit);
    }

    bool m_bigEndian;
};

class AsciiDecoder : public Decoder
{
public:
    Character First(std::string_view text) override
    {
        const unsigned byte = Byte(text, 0);
        return {1, byte, byte < 0x80 ? Fault::NONE : Fault::MALFORMED};
    }

protected:
    bool ReadPiece(std::string_view piece, std::u16string& units) override
    {
        if (AsciiLength(piece) != piece.size()) return false;
        units.append(piece.begin(), piece.end());
        return true;
    }
    size_t PieceEnd(std::string_view, size_t size) const override { return size; }
};

class AsciiEncoder : public Encoder
{
protected:
    bool WritePiece(std::u16string_view piece, std::string& bytes) override
    {
        if (std::any_of(piece.begin(), piece.end(), [](char16_t unit) { return unit >= 0x80; })) return false;
        bytes.append(piece.begin(), piece.end());
        return true;
    }
    bool WriteOne(char32_t codePoint, std::string& bytes) override
    {
        if (codePoint >= 0x80) return false;
        bytes += static_cast<char>(codePoint);
        return true;
    }
};
}  // namespace

Character FirstOfUtf8(std::string_view text)
{
    const unsigned lead = Byte(text, 0);
    if (lead < 0x80) return {1, lead};
    for (const Sequence& sequence : SEQUENCES)
        if (Between(lead, sequence.firstLead, sequence.lastLead)) return Follow(text, sequence);
    return {1, 0, Fault::MALFORMED};
}

size_t AsciiLength(std::string_view text)
{
    size_t used = 0;
    for (; used + 32 <= text.size(); used += 32) {
        const char* const at = text.data() + used;
        const uint64_t all =
            Load<uint64_t>(at) | Load<uint64_t>(at + 8) | Load<uint64_t>(at + 16) | Load<uint64_t>(at + 24);
        if ((all & 0x8080808080808080) != 0) break;
    }
    while (used < text.size() && Byte(text, used) < 0x80) ++used;
    return used;
}

size_t Utf8Length(std::string_view text)
{
    size_t used = 0;
    while (used < text.size()) {
        if (Byte(text, used) < 0x80)
            used += AsciiLength(text.substr(used));
        else
            used += ThreeByteRun(text.substr(used));
        if (used == text.size()) break;
        const Character next = FirstOfUtf8(text.substr(used));
        if (next.fault != Fault::NONE) break;
        used += next.length;
    }
    return used;
}

bool IsFlawlessUtf8(std::string_view text)
{
    return Utf8Length(text) == text.size();
}

std::unique_ptr<Decoder> MakeUnicodeDecoder(const Encoding& encoding)
{
    switch (encoding.scheme) {
        case Scheme::UTF8:
            return std::make_unique<Utf8Decoder>();
        case Scheme::UTF16:
            return std::make_unique<UnitDecoder<char16_t>>(encoding.bigEndian);
        case Scheme::UTF32:
            return std::make_unique<UnitDecoder<char32_t>>(encoding.bigEndian);
        default:
            return std::make_unique<AsciiDecoder>();
    }
}

std::unique_ptr<Encoder> MakeUnicodeEncoder(const Encoding& encoding)
{
    switch (encoding.scheme) {
        case Scheme::UTF8:
            return std::make_unique<Utf8Encoder>();
        case Scheme::UTF16:
            return std::make_unique<UnitEncoder<char16_t>>(encoding.bigEndian);
        case Scheme::UTF32:
            return std::make_unique<UnitEncoder<char32_t>>(encoding.bigEndian);
        default:
            return std::make_unique<AsciiEncoder>();
    }
}
