// Reading and writing one encoding, each piece proven.
//
// Between two encodings, text passes as UTF-16 code units, surrogate pairs among them, so that every encoding
// needs one decoder and one encoder. Both work on pieces at the engine's full speed and prove what it did:
// what was read is written back and compared with the source, and what was written is read back and compared
// with the units. A piece that does not come back is done again character by character, with the rules of the
// encoding written out; that plain way decides what is a character and what has no place.
#ifndef CODETRANSCLI_CODEC_H
#define CODETRANSCLI_CODEC_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "Encoding.h"

// Stands for a character that could not be read.
constexpr char16_t REPLACEMENT = 0xFFFD;

enum class Fault {
    NONE,
    MALFORMED,  // no character of the encoding
    CUT,        // the text ends inside the character
    LONE_HALF,  // half of a surrogate pair
};

struct Character {
    size_t length = 1;  // bytes; never 0
    char32_t codePoint = 0;
    Fault fault = Fault::NONE;
};

class Decoder
{
public:
    virtual ~Decoder() = default;

    // Appends the code units of the characters at the start of `text`, up to the first that cannot be read.
    // Returns the bytes that they take.
    virtual size_t Read(std::string_view text, std::u16string& units);

    // The length of the whole characters at the start of `text`, as far as lengths tell.
    size_t WholeLength(std::string_view text) const { return PieceEnd(text, text.size() - 1); }

    // The character, or what is none, at the start of `text`, which is not empty.
    virtual Character First(std::string_view text) = 0;

protected:
    // Appends what the whole piece says, proven; or does nothing and returns false.
    virtual bool ReadPiece(std::string_view piece, std::u16string& units) = 0;
    // How much of the first `size` bytes of `text`, which begins with a character, makes a good piece.
    virtual size_t PieceEnd(std::string_view text, size_t size) const = 0;
};

class Encoder
{
public:
    virtual ~Encoder() = default;

    // Appends the bytes of the characters at the start of `units`, up to the first that has no place in the
    // encoding. Returns the units that they take. A pair of surrogates is never cut.
    virtual size_t Write(std::u16string_view units, std::string& bytes);

    // Appends what stands for a character that has no place.
    virtual void WriteSubstitute(std::string& bytes);

protected:
    // As with Decoder.
    virtual bool WritePiece(std::u16string_view piece, std::string& bytes) = 0;
    // False, with nothing appended, where the character has no place.
    virtual bool WriteOne(char32_t codePoint, std::string& bytes) = 0;
};

// PAIRS needs the model to be loaded. Throws std::runtime_error where the encoding cannot be written (HZ).
std::unique_ptr<Decoder> MakeDecoder(const Encoding& encoding);
std::unique_ptr<Encoder> MakeEncoder(const Encoding& encoding);

inline bool IsHighSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

inline bool IsLowSurrogate(char32_t unit)
{
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

inline bool IsSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit <= 0xDFFF;
}

// One unit, or two above U+FFFF.
void AppendUnits(std::u16string& units, char32_t codePoint);

// The character at the start of `units`, which is not empty; `length` is in units. A lone surrogate stands
// for itself.
Character FirstOfUnits(std::u16string_view units);

#endif  // CODETRANSCLI_CODEC_H
