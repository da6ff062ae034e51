#include "Codec.h"

#include <algorithm>
#include <stdexcept>

#include "IconvCodec.h"
#include "PairCodec.h"
#include "UnicodeCodec.h"

namespace
{
// Large enough for the engine to be at its speed, small enough for a piece in all its forms to stay in the
// processor's second cache. After a piece that did not come back, pieces are short for a while, so that a
// text with many odd characters is not done twice.
constexpr size_t MOST = 1 << 13, LEAST = 1 << 6;
}  // namespace

size_t Decoder::Read(std::string_view text, std::u16string& units)
{
    size_t used = 0;
    for (size_t size = MOST; used < text.size();) {
        std::string_view piece = text.substr(used);
        piece = piece.substr(0, PieceEnd(piece, std::min(size, piece.size())));
        if (!piece.empty() && ReadPiece(piece, units)) {
            used += piece.size();
            size = std::min(2 * size, MOST);
            continue;
        }
        size = LEAST;
        for (const size_t end = std::min(used + LEAST, text.size()); used < end;) {
            const Character next = First(text.substr(used));
            if (next.fault != Fault::NONE) return used;
            AppendUnits(units, next.codePoint);
            used += next.length;
        }
    }
    return used;
}

size_t Encoder::Write(std::u16string_view units, std::string& bytes)
{
    size_t used = 0;
    for (size_t size = MOST; used < units.size();) {
        std::u16string_view piece = units.substr(used, size);
        if (piece.size() > 1 && IsHighSurrogate(piece.back())) piece.remove_suffix(1);
        if (WritePiece(piece, bytes)) {
            used += piece.size();
            size = std::min(2 * size, MOST);
            continue;
        }
        size = LEAST;
        for (const size_t end = std::min(used + LEAST, units.size()); used < end;) {
            const Character next = FirstOfUnits(units.substr(used));
            if (!WriteOne(next.codePoint, bytes)) return used;
            used += next.length;
        }
    }
    return used;
}

void Encoder::WriteSubstitute(std::string& bytes)
{
    if (!WriteOne(REPLACEMENT, bytes)) WriteOne('?', bytes);
}

std::unique_ptr<Decoder> MakeDecoder(const Encoding& encoding)
{
    switch (encoding.scheme) {
        case Scheme::PAIRS:
            return MakePairDecoder(encoding.code);
        case Scheme::HZ:
            return MakeHzDecoder();
        case Scheme::ICONV:
            return MakeIconvDecoder(encoding);
        default:
            return MakeUnicodeDecoder(encoding);
    }
}

std::unique_ptr<Encoder> MakeEncoder(const Encoding& encoding)
{
    switch (encoding.scheme) {
        case Scheme::PAIRS:
            return MakePairEncoder(encoding.code);
        case Scheme::HZ:
            throw std::runtime_error("HZ can be read, but not written");
        case Scheme::ICONV:
            return MakeIconvEncoder(encoding);
        default:
            return MakeUnicodeEncoder(encoding);
    }
}

void AppendUnits(std::u16string& units, char32_t codePoint)
{
    if (codePoint > 0xFFFF) units += static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10));
    units += static_cast<char16_t>(codePoint > 0xFFFF ? 0xDC00 + (codePoint & 0x3FF) : codePoint);
}

Character FirstOfUnits(std::u16string_view units)
{
    if (units.size() < 2 || !IsHighSurrogate(units[0]) || !IsLowSurrogate(units[1])) return {1, units[0]};
    return {2, 0x10000 + ((units[0] - 0xD800U) << 10) + (units[1] - 0xDC00U)};
}
