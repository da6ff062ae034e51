#include "Garbled.h"

#include <algorithm>

#include "GbkOrBig5.h"

void GarbledNames::Add(size_t number, std::u32string text)
{
    Garbled garbled;
    bool any = false;
    for (size_t i = 0; i < MISHAPS.size(); ++i) {
        if (m_from.value_or(MISHAPS[i].meant) == MISHAPS[i].meant) garbled.undone[i] = Undo(text, MISHAPS[i]);
        any = any || garbled.undone[i];
    }
    garbled.text = std::move(text);
    if (any) m_names.emplace(number, std::move(garbled));
}

bool GarbledNames::IsCertain(const std::optional<Undone>& undone) const
{
    return undone && (undone->certain || m_from);
}

bool GarbledNames::HasCertain(const Garbled& garbled) const
{
    return std::any_of(garbled.undone.begin(), garbled.undone.end(),
                       [&](const std::optional<Undone>& undone) { return IsCertain(undone); });
}

// Those that can have happened to all names that have certainly been garbled.
std::vector<size_t> GarbledNames::CommonMishaps() const
{
    std::vector<size_t> mishaps;
    for (size_t i = 0; i < MISHAPS.size(); ++i)
        if (std::all_of(m_names.begin(), m_names.end(), [&](const auto& name) {
                return IsCertain(name.second.undone[i]) || !HasCertain(name.second);
            }))
            mishaps.push_back(i);
    return mishaps;
}

// The one among them that leaves no doubt about what the names were.
std::optional<size_t> GarbledNames::TheMishap() const
{
    std::vector<size_t> mishaps = CommonMishaps();
    const auto can = [&](NameEncoding meant) {
        return std::any_of(mishaps.begin(), mishaps.end(),
                           [&](size_t i) { return MISHAPS[i].meant == meant; });
    };
    const auto keep = [&](NameEncoding meant) {
        const auto other = [&](size_t i) { return MISHAPS[i].meant != meant; };
        mishaps.erase(std::remove_if(mishaps.begin(), mishaps.end(), other), mishaps.end());
    };
    if (can(NameEncoding::UTF8)) {
        keep(NameEncoding::UTF8);
    } else if (can(NameEncoding::GBK) && can(NameEncoding::BIG5)) {
        std::vector<std::string> names;
        for (const auto& [number, garbled] : m_names)
            if (HasCertain(garbled)) names.push_back(garbled.undone[mishaps.front()]->bytes);
        const std::optional<NameEncoding> meant = GbkOrBig5(names);
        if (!meant) return std::nullopt;
        keep(*meant);
    }
    for (const auto& [number, garbled] : m_names)
        for (const size_t i : mishaps)
            if (HasCertain(garbled) && garbled.undone[i]->text != garbled.undone[mishaps.front()]->text)
                return std::nullopt;
    return mishaps.empty() ? std::nullopt : std::optional(mishaps.front());
}

std::map<size_t, GarbledNames::Restored> GarbledNames::Restore() const
{
    std::map<size_t, Restored> result;
    if (std::none_of(m_names.begin(), m_names.end(),
                     [&](const auto& name) { return HasCertain(name.second); }))
        return result;
    const std::optional<size_t> mishap = TheMishap();
    for (const auto& [number, garbled] : m_names) {
        const bool certain = HasCertain(garbled);
        if (!mishap && certain) {
            result[number].why =

                std::string("was converted wrongly, and it is not certain how") +
                (m_from ? "" : "; --from decides");
        } else if (mishap && garbled.undone[*mishap]) {
            if (certain || !IsScattered(garbled.text))
                result[number].name = *EncodeName(garbled.undone[*mishap]->text, NameEncoding::UTF8);
            else
                result[number].why = std::string("was perhaps converted wrongly, as others were; --from ") +
                                     TitleOf(MISHAPS[*mishap].meant) + " converts it back";
        }
    }
    return result;
}
