// Kinds of states by region and length.
#include "Features.h"

bool CarriesValue(const StateName& state)
{
    const std::string& path = state.path;
    switch (state.region) {
        case REGION_THIRD:
        case REGION_LONE_PAIR:
            return path.size() == 1;
        case REGION_WORD:
        case REGION_HANGUL:
        case REGION_UNIT:
        case REGION_NEXT_UNIT:
        case REGION_AFTER:
            return path.size() == 2;
        case REGION_SECOND:
            return path.size() == 3 || (path.size() == 2 && !OpensUtf8(path));
        case REGION_MAIN:
            return path.size() == 2 || StartsWithUtf8Character(path);
        default:
            return false;
    }
}

std::string GroupOf(const StateName& state)
{
    const std::string& path = state.path;
    std::string group(1, state.region);
    const auto zone = [&](size_t i, int bits) {
        group.push_back(static_cast<char>(ByteAt(path, i) >> bits));
    };
    const bool latin = path.size() == 2 && state.region == REGION_MAIN && path[1] == 0;  // UTF-16LE below 100
    if (path.size() == 2 && state.region != REGION_AFTER && !latin) zone(0, 3);
    if (path.size() == 2) zone(1, state.region == REGION_AFTER ? 3 : 4);
    if (path.size() == 3) zone(0, 0);
    if (path.size() == 3) zone(1, 2);
    return group;
}
