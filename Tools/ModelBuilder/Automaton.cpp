// Named states and their failure links; see Automaton.h.
#include "Automaton.h"

bool IsUtf8Lead(unsigned byte)
{
    return byte >= 0xC2 && byte <= 0xEF;
}

bool OpensUtf8(const std::string& path)
{
    return path.size() >= 2 && ByteAt(path, 0) >= 0xE0 && ByteAt(path, 0) <= 0xEF &&
           IsUtf8Tail(ByteAt(path, 1));
}

bool StartsWithUtf8Character(const std::string& path)
{
    return path.size() >= 3 && OpensUtf8(path) && IsUtf8Tail(ByteAt(path, 2));
}

bool LeadAfterAscii(const std::string& path)
{
    return path.size() == 2 && ByteAt(path, 0) < 0x80 && ByteAt(path, 1) > 0x80 && ByteAt(path, 1) < 0xA0;
}

void AddState(States& states, Region region, const std::string& path)
{
    for (size_t length = 0; length <= path.size(); ++length)
        states.try_emplace({region, path.substr(0, length)});
}

States BasicStates()
{
    States states;
    for (const char region : std::string("012345678CDEFGMNOPQRSTUXYZabcdefghstuv"))
        AddState(states, static_cast<Region>(region), "");
    for (int byte = 0; byte < 256; ++byte)
        for (const Region region : {REGION_START, REGION_MAIN})
            AddState(states, region, std::string(1, static_cast<char>(byte)));
    return states;
}

namespace
{
bool IsLineEnd(char byte)
{
    return byte == '\n' || byte == '\r';
}

// What a state of M means once its first unit is given up: the rest of its bytes, read from where that unit
// ended.
StateName WithoutFirstUnit(const std::string& path)
{
    if (path.size() < 2) return {IsLead(ByteAt(path, 0)) ? REGION_BROKEN : REGION_MAIN, ""};
    // A line end is one byte, unless it may be a unit of UTF-16LE with what follows.
    const unsigned second = ByteAt(path, 1);
    if (IsLineEnd(path[0]) && (path.size() > 2 ? second >= 0x80 : second >= 0xA0 && second != 0xFF))
        return {REGION_MAIN, path.substr(1)};
    if (LeadAfterAscii(path)) return {REGION_UNIT, path.substr(1)};
    if (!StartsWithUtf8Character(path))
        return path.size() == 2 && OpensUtf8(path) ? StateName{REGION_THIRD, ""}
                                                   : StateName{REGION_MAIN, path.substr(2)};
    if (path.size() <= 4) return {REGION_AFTER, path.substr(2)};
    if (ByteAt(path, 3) < 0x80) return {REGION_MAIN, path.substr(4)};
    return {REGION_SECOND, path.substr(3)};
}

// ASCII is left with its first byte that is none: a lead byte, or the second byte of a unit of UTF-16LE.
StateName WithinAscii(const StateName& state)
{
    const bool halfway =
        IsRegionOf(state.region, REGION_ASCII_TRAIL) || state.region == REGION_ASCII_ONLY_TRAIL;
    const bool maybeUnit =
        halfway && state.path.size() == 1 && ByteAt(state.path, 0) > 0x80 && ByteAt(state.path, 0) < 0xA0;
    return {maybeUnit ? REGION_UNIT : REGION_MAIN, state.path};
}

// Foreign text is taken by twos where the first byte may lead a pair, and by threes where it may be UTF-8.
StateName WithinForeign(const std::string& path)
{
    const bool goesOn = path.size() == 1 ? IsLead(ByteAt(path, 0)) : path.size() == 2 && OpensUtf8(path);
    return {goesOn ? REGION_FOREIGN_TRAIL : REGION_FOREIGN, ""};
}

// Behind a hint ASCII is skipped; anything else is read as ever.
StateName BehindHint(const StateName& state)
{
    const bool isUnicode = state.region == RegionOf(REGION_HINT, CANDIDATE_UNICODE) ||
                           state.region == RegionOf(REGION_NEXT_LINE, CANDIDATE_UNICODE);
    const std::string& path = state.path;
    const bool isAscii = !path.empty() && ByteAt(path, 0) < 0x80 &&
                         (isUnicode ? path.size() == 2 && path[1] == 0 : path.size() == 1);
    return isAscii ? StateName{state.region, ""} : StateName{REGION_MAIN, path};
}

StateName FallBack(const StateName& state)
{
    const std::string& path = state.path;
    switch (state.region) {
        case REGION_START:
            return {path.empty() ? REGION_START : REGION_MAIN, path};
        case REGION_MAIN:
            return path.empty() ? StateName{REGION_START, ""} : WithoutFirstUnit(path);
        case REGION_THIRD:
            return path.empty() ? StateName{REGION_MAIN, ""} : StateName{REGION_AFTER, path};
        case REGION_AFTER:
            if (path.size() < 2) return {REGION_MAIN, path};
            return IsUtf8Lead(ByteAt(path, 1)) ? StateName{REGION_SECOND, path.substr(1)}
                                               : StateName{REGION_MAIN, ""};
        case REGION_UNIT:
            return path.size() == 2 ? StateName{REGION_NEXT_UNIT, path.substr(1)}
                                    : StateName{REGION_MAIN, ""};
        case REGION_NEXT_UNIT:
            if (path.size() == 1) return {REGION_RARE_UNIT, ""};
            if (path.size() == 2 && ByteAt(path, 1) > 0x80 && ByteAt(path, 1) < 0xA0)
                return {REGION_UNIT, path.substr(1)};
            return {REGION_MAIN, ""};
        case REGION_RARE_UNIT:
            return {path.empty() ? REGION_MAIN : REGION_UNIT, path};
        case REGION_SECOND:
            if (path.size() < 2) return {REGION_MAIN, ""};
            if (path.size() == 2) return {OpensUtf8(path) ? REGION_MAIN : REGION_AFTER, path.substr(1)};
            return {REGION_MAIN, path.substr(3)};
        case REGION_BROKEN:
            return {REGION_MAIN, path};
        case REGION_ASCII_ONLY:
        case REGION_ASCII_ONLY_TRAIL:
            return WithinAscii(state);
        case REGION_FOREIGN:
            return path.empty() ? StateName{REGION_MAIN, ""} : WithinForeign(path);
        case REGION_FOREIGN_TRAIL:
            return {REGION_FOREIGN, ""};
        case REGION_SIGN_THIRD:
        case REGION_SIGN_LAST:
        case REGION_LOW_HALF:
        case REGION_HIGH_HALF:
            return {REGION_MAIN, ""};
        case REGION_ZEROS:
            if (path.empty() || !IsLead(ByteAt(path, 0))) return {REGION_FOREIGN, ""};
            return {REGION_MAIN, path};
        default:
            if (IsRegionOf(state.region, REGION_ASCII) || IsRegionOf(state.region, REGION_ASCII_TRAIL))
                return WithinAscii(state);
            if (IsRegionOf(state.region, REGION_RETURN)) return {REGION_FOREIGN, path};
            return path.empty() ? StateName{REGION_MAIN, ""} : BehindHint(state);
    }
}

}  // namespace

StateName ExistingFallBack(const States& states, const StateName& state)
{
    const auto known = states.find(state);
    if (known != states.end() && known->second.onward != BY_RULE) return {known->second.onward, ""};
    if (state.region == REGION_START && state.path.size() > 1) {
        const StateName parent{REGION_START, state.path.substr(0, state.path.size() - 1)};
        return Step(states, ExistingFallBack(states, parent), state.path.back());
    }
    StateName target = FallBack(state);
    while (!states.contains(target)) target = FallBack(target);
    return target;
}

StateName Step(const States& states, StateName state, char byte)
{
    while (!states.contains({state.region, state.path + byte})) state = ExistingFallBack(states, state);
    return {state.region, state.path + byte};
}

void InheritValues(States& states, const States& before)
{
    for (auto& [name, state] : states) {
        if (before.contains(name)) continue;
        StateName twin = ExistingFallBack(states, name);
        while (!before.contains(twin)) twin = ExistingFallBack(states, twin);
        state.value = before.at(twin).value;
    }
}

std::vector<PackableState> LinkStates(const States& states)
{
    std::map<StateName, int> numbers;
    for (const auto& [name, entry] : states) numbers.emplace(name, static_cast<int>(numbers.size()));
    std::vector<PackableState> linked;
    for (const auto& [name, entry] : states) {
        PackableState state;
        if (!name.path.empty()) {
            state.parent = numbers.at({name.region, name.path.substr(0, name.path.size() - 1)});
            state.byte = static_cast<uint8_t>(name.path.back());
        }
        state.fail = numbers.at(ExistingFallBack(states, name));
        state.value = entry.value;
        linked.push_back(state);
    }
    return linked;
}
