// The texts that are timed: drawn from Data/Statistics with a fixed seed, the same on every machine.
#ifndef BENCH_INPUTS_H
#define BENCH_INPUTS_H

#include <string>
#include <vector>

enum class Form { GBK, BIG5, UTF8, UTF16, WIDE };

// Texts of one kind in one form. A source is never the same twice in a row, so that no branch predictor knows
// it by heart; each is followed by four zero bytes.
struct Input {
    std::string name;  // "prose", "mixed", "mostly ASCII", with " 16 KB", " 1 KB" or " 64 B" for pieces
    std::vector<std::string> sources;
};

constexpr size_t TERMINATOR = 4;

// Prose, source code with about 9 % hanzi, and with 0.1 % (`traditional`: in Traditional characters): 1 MB of
// each, and pieces of the first two, cut between characters.
std::vector<Input> MakeInputs(Form form, bool traditional);

#endif  // BENCH_INPUTS_H
