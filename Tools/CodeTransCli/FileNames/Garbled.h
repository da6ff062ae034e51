// Names of a group that a wrong conversion has garbled, each by the same one.
#ifndef CODETRANSCLI_GARBLED_H
#define CODETRANSCLI_GARBLED_H

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Mishap.h"

class GarbledNames
{
public:
    // `from` is what the names were once, if the user knows.
    explicit GarbledNames(std::optional<NameEncoding> from) : m_from(from) {}

    // `name` is `text` in UTF-8. Nothing happens where it is not garbled.
    void Add(size_t number, std::u32string_view text);

    struct Restored {
        std::string name;  // in UTF-8; empty where it is not certain
        std::string why;   // it is not
    };
    // By the number of the name; names that are not garbled are missing.
    std::map<size_t, Restored> Restore() const;

private:
    struct Garbled {
        std::array<std::optional<Undone>, MISHAPS.size()> undone;  // by each mishap
    };

    bool IsCertain(const std::optional<Undone>& undone) const;
    bool HasCertain(const Garbled& garbled) const;
    std::vector<size_t> CommonMishaps() const;
    std::vector<size_t> TheMishaps() const;

    std::optional<NameEncoding> m_from;
    std::map<size_t, Garbled> m_names;
};

#endif  // CODETRANSCLI_GARBLED_H
