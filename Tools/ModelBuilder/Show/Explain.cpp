// The walk is done by names, so that each step can say where it fell back to; the totals are the library's.
#include "Explain.h"

#include <algorithm>
#include <cctype>
#include <iomanip>
#include <iterator>
#include <map>
#include <ostream>
#include <sstream>
#include <stdexcept>

#include "Automaton.h"
#include "TextFile.h"

namespace
{
std::string NameText(const StateName& state)
{
    std::string text{static_cast<char>(state.region)};
    if (!state.path.empty()) text.append(" ").append(ToHex(state.path));
    return text;
}

std::string ByteText(char byte)
{
    const bool isPrintable = byte >= 0x20 && byte < 0x7F;
    return ToHex({byte}) + (isPrintable ? std::string{' ', '\'', byte, '\''} : std::string());
}

// One step of the walk, with the states that had no child for the byte.
struct Entered {
    StateName state;
    std::string fallen;
};

Entered StepWithTrace(const States& states, StateName state, char byte)
{
    Entered entered;
    while (!states.contains({.region = state.region, .path = state.path + byte})) {
        state = ExistingFallBack(states, state);
        entered.fallen += (entered.fallen.empty() ? "" : ", ") + NameText(state);
    }
    entered.state = {.region = state.region, .path = state.path + byte};
    return entered;
}

void PrintHeading(std::ostream& out)
{
    out << std::left << std::setw(8) << "offset" << std::setw(9) << "byte" << std::setw(16) << "state"
        << std::setw(24) << "after falling back to";
    for (const char* name : CANDIDATE_NAMES) out << std::right << std::setw(10) << name;
    out << "   sums\n";
}

void PrintStep(size_t offset, char byte, const Entered& entered, int value, const Digits& sums,
               std::ostream& out)
{
    out << std::left << std::setw(8) << offset << std::setw(9) << ByteText(byte) << std::setw(16)
        << NameText(entered.state) << std::setw(24) << entered.fallen << std::right;
    const Digits add = DigitsOf(value);
    for (const int digit : add) {
        if (value == TRIE_VALUE_NONE) {
            out << std::setw(10) << '-';
        } else {
            out << std::setw(10) << std::showpos << digit << std::noshowpos;
        }
    }
    out << "  ";
    for (const int sum : sums) out << ' ' << sum;
    if (TrieValueCode(value) != 0) out << "  ends the walk with code " << TrieValueCode(value);
    out << '\n';
}

std::string AnswerText(int code)
{
    const auto* found = std::find(std::begin(CODES), std::end(CODES), code);
    return found == std::end(CODES) ? "undecided" : CANDIDATE_NAMES[found - std::begin(CODES)];
}

// The decision's rules in their order, with the numbers at hand. What it comes to is asked of the library.
void PrintDecision(const Scores& s, std::ostream& out)
{
    out << s.highBytes << " bytes beyond ASCII\n";
    if (s.decidedCode != 0) {
        out << "a state ended the walk: " << AnswerText(s.decidedCode) << '\n';
        return;
    }
    const struct {
        Candidate candidate;
        unsigned sum;
        long positive, part;
        const char* partName;
    } rows[] = {{CANDIDATE_GBK, s.sumGbk, s.positiveGbk, 4, "a quarter"},
                {CANDIDATE_BIG5, s.sumBig5, s.positiveBig5, 4, "a quarter"},
                {CANDIDATE_UTF8, s.sumUtf8, s.positiveUtf8, 6, "a sixth"}};
    for (const auto& row : rows) {
        out << std::left << std::setw(9) << CANDIDATE_NAMES[row.candidate] << "sum "
            << static_cast<int>(row.sum) << ", " << row.positive << " positive states; it needs ";
        if (row.candidate == CANDIDATE_GBK && s.highBytes == 0) {
            out << "none, because all bytes are ASCII\n";
        } else {
            out << "more than " << s.highBytes / row.part << " (" << row.partName << " of those bytes)\n";
        }
    }
    out << "UTF-16LE sum " << static_cast<int>(s.sumUnicode) << ", " << s.positiveUnicode << " positive and "
        << s.nonPositiveUnicode << " other states; it needs " << 10 * s.nonPositiveUnicode + 1
        << " (ten for each other state, plus one)\n"
        << "the highest sum wins, of equal ones the first; without enough positive states the text is "
           "undecided, but for UTF-16LE the next sum decides\n"
        << "answer: " << AnswerText(Decide(s)) << '\n';
}

// The characters of a reading by the offset of their last byte; bytes that are none are left out.
std::map<size_t, std::string> CharactersOf(const CEncoder& encoder, const std::string& bytes,
                                           Candidate candidate)
{
    std::map<size_t, std::string> characters;
    for (size_t i = 0; i < bytes.size();) {
        size_t length = 1;
        for (size_t tried = 1; tried <= 4 && i + tried <= bytes.size(); ++tried) {
            const std::string piece = bytes.substr(i, tried);
            std::string utf8 = IsUtf8(piece) && candidate == CANDIDATE_UTF8 ? piece : "";
            if (candidate != CANDIDATE_UTF8)
                for (const wchar_t c : encoder.Decode(candidate, piece)) AppendUtf8(utf8, c);
            if (utf8.empty()) continue;
            const bool isControl = utf8.size() == 1 && static_cast<unsigned char>(utf8[0]) < 0x20;
            characters[i + tried - 1] = isControl ? "." : utf8;
            length = tried;
            break;
        }
        i += length;
    }
    return characters;
}
}  // namespace

void ExplainWalk(const States& states, const std::string& bytes, size_t rows, std::ostream& out)
{
    PrintHeading(out);
    StateName state{.region = REGION_START, .path = ""};
    Digits sums{};
    for (size_t i = 0; i < std::min(rows, bytes.size()); ++i) {
        const Entered entered = StepWithTrace(states, state, bytes[i]);
        state = entered.state;
        const int value = states.at(state).value;
        for (size_t c = 0; c < CANDIDATES; ++c) sums[c] += DigitsOf(value)[c];
        PrintStep(i, bytes[i], entered, value, sums, out);
        if (TrieValueCode(value) != 0) break;
    }
    if (bytes.size() > rows) out << "... and " << bytes.size() - rows << " more bytes\n";
    out << '\n';
    PrintDecision(CAutomaton(states).ScoresOf(bytes), out);
}

void ExplainReadings(const States& states, const CEncoder& encoder, const std::string& bytes, Candidate left,
                     Candidate right, size_t rows, std::ostream& out)
{
    const auto leftCharacters = CharactersOf(encoder, bytes, left),
               rightCharacters = CharactersOf(encoder, bytes, right);
    const auto at = [](const std::map<size_t, std::string>& characters, size_t i) {
        const auto found = characters.find(i);
        return found == characters.end() ? std::string() : found->second;
    };
    out << "byte\t" << CANDIDATE_NAMES[left] << "\tadds\t" << CANDIDATE_NAMES[right] << "\tadds\t"
        << CANDIDATE_NAMES[left] << " ahead by\n";
    StateName state{.region = REGION_START, .path = ""};
    int ahead = 0;
    for (size_t i = 0; i < std::min(rows, bytes.size()); ++i) {
        state = Step(states, state, bytes[i]);
        const Digits add = DigitsOf(states.at(state).value);
        ahead += add[left] - add[right];
        out << ToHex({bytes[i]}) << '\t' << at(leftCharacters, i) << '\t' << add[left] << '\t'
            << at(rightCharacters, i) << '\t' << add[right] << '\t' << ahead << '\n';
    }
}

Candidate CandidateOf(const std::string& name)
{
    const auto lower = [](std::string text) {
        std::transform(text.begin(), text.end(), text.begin(),
                       [](unsigned char c) { return std::tolower(c); });
        return text;
    };
    for (const Candidate c : ALL_CANDIDATES)
        if (lower(name) == lower(CANDIDATE_NAMES[c])) return c;
    throw std::runtime_error("'" + name + "' is not one of GBK, Big5, UTF-8 and UTF-16LE");
}
