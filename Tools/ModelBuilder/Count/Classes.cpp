// The list of classes: a line each, columns apart by blanks, the title last.
#include "Classes.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "TextFile.h"

namespace
{
constexpr struct {
    const char* name;
    Role role;
} ROLES[] = {{"prose", Role::PROSE}, {"tech", Role::TECH},   {"words", Role::WORDS}, {"ascii", Role::ASCII},
             {"world", Role::WORLD}, {"bytes", Role::BYTES}, {"pairs", Role::PAIRS}, {"kana", Role::KANA}};

bool ParseRole(const std::string& text, Role& role)
{
    const auto* found = std::find_if(std::begin(ROLES), std::end(ROLES),
                                     [&](const auto& known) { return text == known.name; });
    if (found != std::end(ROLES)) role = found->role;
    return found != std::end(ROLES);
}

// What is wrong with the line, or nothing.
std::string ParseClass(const std::string& line, TextClass& parsed)
{
    std::istringstream cells(line);
    std::string role, script;
    if (!(cells >> parsed.name >> role >> script >> parsed.weight >> parsed.pairs))
        return "a class needs a name, a role, a script, a weight and a number of pairs";
    if (parsed.weight < 0) return "a weight must be 0 or more";
    if (!ParseRole(role, parsed.role)) return "there is no role '" + role + "'";
    if (script != "hans" && script != "hant" && script != "-") return "there is no script '" + script + "'";
    if (IsChinese(parsed.role) == (script == "-"))
        return "classes of Chinese text must have the script hans or hant, and others must not";
    parsed.isTraditional = script == "hant";
    std::getline(cells >> std::ws, parsed.title);
    return parsed.title.empty() ? "a class needs a title" : "";
}

}  // namespace

std::vector<TextClass> ReadClasses(const std::string& path)
{
    std::vector<TextClass> classes;
    size_t number = 0;
    for (const std::string& line : ReadLines(path)) {
        ++number;
        if (line.empty() || line[0] == '#') continue;
        TextClass parsed;
        std::string fault = ParseClass(line, parsed);
        if (std::any_of(classes.begin(), classes.end(),
                        [&](const TextClass& known) { return known.name == parsed.name; }))
            fault = "the class '" + parsed.name + "' is listed twice";
        if (!fault.empty())
            throw std::runtime_error((path + ", line ").append(std::to_string(number)).append(": " + fault));
        classes.push_back(parsed);
    }
    return classes;
}
