// Wrong conversions of Chinese names, and how they are undone: the name was in one encoding, was read in
// another, and what came of it was stored in UTF-8.
#ifndef CODETRANSCLI_MISHAP_H
#define CODETRANSCLI_MISHAP_H

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "NameEncoding.h"

struct Mishap {
    NameEncoding meant, read;
};

// UTF-8 first: it is the hardest to meet by chance.
constexpr std::array<Mishap, 13> MISHAPS = {{
    {NameEncoding::UTF_8, NameEncoding::CP936},
    {NameEncoding::UTF_8, NameEncoding::WINDOWS_1252},
    {NameEncoding::UTF_8, NameEncoding::LATIN1},
    {NameEncoding::UTF_8, NameEncoding::CP437},
    {NameEncoding::UTF_8, NameEncoding::CP850},
    {NameEncoding::GB, NameEncoding::WINDOWS_1252},
    {NameEncoding::GB, NameEncoding::LATIN1},
    {NameEncoding::GB, NameEncoding::CP437},
    {NameEncoding::GB, NameEncoding::CP850},
    {NameEncoding::BIG_5, NameEncoding::WINDOWS_1252},
    {NameEncoding::BIG_5, NameEncoding::LATIN1},
    {NameEncoding::BIG_5, NameEncoding::CP437},
    {NameEncoding::BIG_5, NameEncoding::CP850},
}};

struct Undone {
    std::string bytes;     // before the mishap
    std::u32string text;   // what they mean
    bool certain = false;  // two hanzi or more, three of four common, and not `western`
    bool western = false;  // the garbled name could be one in a Western language
};

// Nothing unless the mishap can be undone, its repetition gives `garbled` again, and the result is plausible
// as a Chinese name.
std::optional<Undone> Undo(std::u32string_view garbled, const Mishap& mishap);

struct Plausibility {
    size_t hanzi = 0, common = 0;
    size_t strange = 0;  // neither hanzi, ASCII, nor signs that stand in Chinese text
};

Plausibility PlausibilityOf(std::u32string_view text, NameEncoding encoding);

// Whether most characters beyond ASCII stand alone between ASCII, as accents do in Western names: those of
// Chinese text stand together, whatever single bytes they are read as.
bool IsScattered(std::u32string_view text);

// Whether most hanzi stand in Western words, few together beside a small letter, so that `encoding` is the
// wrong one. In Big5, where letters of ASCII are second bytes, two in a row are few.
bool IsInWords(std::u32string_view text, NameEncoding encoding);

#endif  // CODETRANSCLI_MISHAP_H
