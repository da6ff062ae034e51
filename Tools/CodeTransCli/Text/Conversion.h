// A text on its way from one encoding to another, piece by piece, and what would be lost on it.
#ifndef CODETRANSCLI_CONVERSION_H
#define CODETRANSCLI_CONVERSION_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Codec.h"

struct Loss {
    uint64_t line, column;  // from 1; columns are characters
    std::string what;
};

struct Losses {
    uint64_t count = 0;
    std::vector<Loss> described;  // the first of them
};

// Where in a text, in lines and characters.
class Place
{
public:
    uint64_t Line() const { return m_line; }
    uint64_t Column() const { return m_column; }
    void Pass(std::u16string_view units);

    // Goes on by what another place has passed from the start of a text.
    void Pass(const Place& passed);

private:
    uint64_t m_line = 1, m_column = 1;
};

class Conversion
{
public:
    // Without `to`, the text is only read. Describes at most `describe` losses.
    Conversion(const Encoding& from, const Encoding* to, size_t describe);

    // The next piece of the text, without a byte-order mark. Appends its converted form to `out`, with
    // something in place of what is lost. Returns the bytes used: all of them, but for a character that is
    // cut at the end of a piece that is not the last.
    size_t Pass(std::string_view text, bool isLast, std::string& out);

    // Changes the units of each piece before they are written, and returns whether it did.
    using Change = std::function<bool(std::u16string& units, bool isLast)>;
    void ChangeBy(Change change) { m_change = std::move(change); }

    // Goes on where another conversion of the same text ended.
    void GoOnFrom(const Conversion& other)
    {
        m_place = other.m_place;
        m_losses = other.m_losses;
    }

    const Losses& Lost() const { return m_losses; }

    // Adds what another conversion did with the next piece of the text, as if this one had done it. `out` is
    // what there was before.
    void Join(const Conversion& next, const std::string& out);

    // How long `out` was when the first of them was met.
    size_t OutBeforeLoss() const { return m_outBeforeLoss; }

private:
    void WriteUnits(std::string_view text, std::string& out);
    void Lose(const std::string& what, const std::string& out);
    std::string BytesOfUnit(std::string_view text, size_t index) const;

    const Encoding& m_from;
    const Encoding* m_to;
    size_t m_describe;
    std::unique_ptr<Decoder> m_decoder;
    std::unique_ptr<Encoder> m_encoder;
    Change m_change;
    std::u16string m_units;
    bool m_areChanged = false;
    Place m_place;
    Losses m_losses;
    size_t m_outBeforeLoss = 0;
};

#endif  // CODETRANSCLI_CONVERSION_H
