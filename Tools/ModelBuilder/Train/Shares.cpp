// Shares from the counts of whole classes.
#include "Shares.h"

namespace
{
constexpr double UNSEEN = 1e-8;

// Of the times that a character is followed by something, the part in which that is ASCII or the line end.
double PartBeforeAscii(const Successors& entry)
{
    double part = 0;
    for (const auto& [next, count] : entry.next)
        if (next < 0x80) part += count;
    return part / entry.total;
}

void AddShares(Shares& shares, const CountedClass& counted, double part)
{
    const auto& characters = counted.counts.characters;
    const Successors& lines = characters.at(L'\n');
    for (const auto& [next, count] : lines.next) shares.starts[next] += part * count / lines.total;
    for (const auto& [character, entry] : characters) {
        shares.anywhere[character] += part * entry.total / counted.size;
        if (const auto end = entry.next.find(L'\n'); end != entry.next.end()) {
            shares.ends[character] += part * end->second / lines.total;
            shares.atEnd[character] += part * end->second / entry.total;
        }
        for (const auto& [next, count] : entry.next) {
            if (character < 0x80 || next < 0x80) continue;
            const auto found = characters.find(next);
            if (found != characters.end())
                shares.lastWords[{character, next}] +=
                    part * count / counted.size * PartBeforeAscii(found->second);
        }
    }
}
}  // namespace

Shares SharesOf(const Ingredients& from, bool traditional)
{
    std::vector<const CountedClass*> classes;
    for (const CountedClass& counted : from.classes)
        if (IsChinese(counted.kind.role) && counted.kind.role != Role::WORDS &&
            counted.kind.isTraditional == traditional)
            classes.push_back(&counted);
    Shares shares;
    for (const CountedClass* counted : classes)
        AddShares(shares, *counted, 1.0 / static_cast<double>(classes.size()));
    return shares;
}

double ShareOf(const CharacterShares& shares, wchar_t character)
{
    const auto found = shares.find(character);
    return found == shares.end() ? UNSEEN : found->second;
}
