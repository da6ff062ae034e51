// Shares of characters; see Shares.h.
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
}  // namespace

Shares SharesOf(const CSampleSource& source, const std::string& script)
{
    Shares shares;
    for (const char* genre : {"prose", "tech"}) {
        const Statistics& counted = source.Counted(script + '-' + genre);
        const Successors& lines = counted.characters.at(L'\n');
        for (const auto& [next, count] : lines.next) shares.starts[next] += 0.5 * count / lines.total;
        double all = 0;
        for (const auto& [character, entry] : counted.characters) all += entry.total;
        for (const auto& [character, entry] : counted.characters) {
            shares.anywhere[character] += 0.5 * entry.total / all;
            if (const auto end = entry.next.find(L'\n'); end != entry.next.end()) {
                shares.ends[character] += 0.5 * end->second / lines.total;
                shares.atEnd[character] += 0.5 * end->second / entry.total;
            }
            for (const auto& [next, count] : entry.next) {
                if (character < 0x80 || next < 0x80) continue;
                const auto found = counted.characters.find(next);
                if (found != counted.characters.end())
                    shares.lastWords[{character, next}] += 0.5 * count / all * PartBeforeAscii(found->second);
            }
        }
    }
    return shares;
}

double ShareOf(const CharacterShares& shares, wchar_t character)
{
    const auto found = shares.find(character);
    return found == shares.end() ? UNSEEN : found->second;
}
