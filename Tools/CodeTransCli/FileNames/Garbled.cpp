#include "Garbled.h"

#include <algorithm>

#include "GbkOrBig5.h"

void GarbledNames::Add(size_t number, std::u32string_view text)
{
    Garbled garbled;
    bool any = false;
    for (size_t i = 0; i < MISHAPS.size(); ++i) {
        if (m_from.value_or(MISHAPS[i].meant) == MISHAPS[i].meant) garbled.undone[i] = Undo(text, MISHAPS[i]);
        any = any || garbled.undone[i];
    }
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

// Those that can have happened to all names that have certainly been garbled, and certainly to half of them.
std::vector<size_t> GarbledNames::CommonMishaps() const
{
    std::vector<size_t> mishaps;
    for (size_t i = 0; i < MISHAPS.size(); ++i) {
        size_t all = 0, possible = 0, certain = 0;
        for (const auto& [number, garbled] : m_names) {
            if (!HasCertain(garbled)) continue;
            ++all;
            possible += garbled.undone[i].has_value();
            certain += IsCertain(garbled.undone[i]);
        }
        if (possible == all && 2 * certain >= all) mishaps.push_back(i);
    }
    return mishaps;
}

// Those among them that leave no doubt about what the names were: they all give the same.
std::vector<size_t> GarbledNames::TheMishaps() const
{
    std::vector<size_t> mishaps = CommonMishaps();
    if (mishaps.empty()) return {};
    const auto isUtf8 = [](size_t i) { return MISHAPS[i].meant == NameEncoding::UTF_8; };
    std::optional<NameEncoding> meant = m_from;
    if (std::any_of(mishaps.begin(), mishaps.end(), isUtf8)) {
        meant = NameEncoding::UTF_8;
    } else if (!m_from) {
        std::vector<std::string> names;
        for (const auto& [number, garbled] : m_names)
            if (HasCertain(garbled)) names.push_back(garbled.undone[mishaps.front()]->bytes);
        meant = GbkOrBig5(names);
    }
    const auto other = [&](size_t i) { return MISHAPS[i].meant != meant; };
    mishaps.erase(std::remove_if(mishaps.begin(), mishaps.end(), other), mishaps.end());
    for (const auto& [number, garbled] : m_names)
        for (const size_t i : mishaps)
            if (HasCertain(garbled) && garbled.undone[i]->text != garbled.undone[mishaps.front()]->text)
                return {};
    return mishaps;
}

std::map<size_t, GarbledNames::Restored> GarbledNames::Restore() const
{
    std::map<size_t, Restored> result;
    if (std::none_of(m_names.begin(), m_names.end(),
                     [&](const auto& name) { return HasCertain(name.second); }))
        return result;
    const std::vector<size_t> mishaps = TheMishaps();
    for (const auto& name : m_names) {
        const size_t number = name.first;
        const Garbled& garbled = name.second;
        const bool certain = HasCertain(garbled);
        const auto mishap =
            std::find_if(mishaps.begin(), mishaps.end(),
                         [&undone = garbled.undone](size_t i) { return undone[i].has_value(); });
        if (mishap == mishaps.end()) {
            if (certain)
                result[number].why =
                    std::string("is garbled, but it is not certain how") + (m_from ? "" : "; --from decides");
        } else if (certain || !garbled.undone[*mishap]->western) {
            result[number].name = *EncodeName(garbled.undone[*mishap]->text, NameEncoding::UTF_8);
        } else {
            result[number].why = std::string("is perhaps garbled, like others; --from ") +
                                 TitleOf(MISHAPS[*mishap].meant) + " converts it back";
        }
    }
    return result;
}
