// Reading and printing of the recipe by name.
#include "Recipe.h"

#include <iomanip>
#include <ostream>
#include <sstream>
#include <stdexcept>

#include "PortableMath.h"

namespace
{
template <typename Number>
void Assign(Number& number, const std::string& name, const std::string& value)
{
    std::istringstream in(value);
    if (value.starts_with("-") != (value[0] == '-' && Number(-1) < Number(0)) || !(in >> number) ||
        in.peek() != std::istringstream::traits_type::eof())
        throw std::runtime_error("'" + value + "' is not a valid value for " + name);
}

// Words in indented lines.
void PrintWrapped(const std::string& text, std::ostream& out)
{
    constexpr size_t WIDTH = 100;
    std::istringstream words(text);
    if (text.empty()) return;
    std::string line = "   ";
    for (std::string word; words >> word; line += ' ' + word) {
        if (line.size() + 1 + word.size() <= WIDTH) continue;
        out << line << '\n';
        line = "   ";
    }
    out << line << '\n';
}
}  // namespace

void Recipe::Set(const std::string& assignment)
{
    const size_t sign = assignment.find('=');
    const std::string wanted = assignment.substr(0, sign);
    const std::string text = sign == std::string::npos ? "" : assignment.substr(sign + 1);
#define RECIPE_NUMBER(type, name, value, unit, reason) \
    if (wanted == #name) return Assign(name, wanted, text);
#include "RecipeNumbers.inc"
#undef RECIPE_NUMBER
    throw std::runtime_error("the recipe has no number '" + wanted + "'; `ModelBuilder recipe` lists them");
}

void Recipe::Print(std::ostream& out) const
{
#define RECIPE_NUMBER(type, name, value, unit, reason) out << #name << '=' << (name) << ' ' << (unit) << '\n';
#include "RecipeNumbers.inc"
#undef RECIPE_NUMBER
}

void Recipe::PrintReasons(std::ostream& out) const
{
#define RECIPE_NUMBER(type, name, value, unit, reason)      \
    out << #name << '=' << (name) << ' ' << (unit) << '\n'; \
    PrintWrapped((reason), out);
#include "RecipeNumbers.inc"
#undef RECIPE_NUMBER
}

double Recipe::OddsOfUnit() const
{
    return 1 / PortableExp(-1 / unitsANat);
}
