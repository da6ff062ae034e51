// The four encodings that the detector chooses from, in one order everywhere, and what a state adds to each.
//
// The order is the one in which the library weighs them: of equal sums the earlier wins. The model file packs
// the four numbers in another order; DigitsOf and PackDigits are the only places that know of it.
#ifndef MODEL_BUILDER_CANDIDATES_H
#define MODEL_BUILDER_CANDIDATES_H

#include <array>

#include "STLCodeTrans.h"

enum Candidate { CANDIDATE_GBK, CANDIDATE_BIG5, CANDIDATE_UTF8, CANDIDATE_UNICODE, CANDIDATES };

constexpr Candidate ALL_CANDIDATES[] = {CANDIDATE_GBK, CANDIDATE_BIG5, CANDIDATE_UTF8, CANDIDATE_UNICODE};

// The encodings in which two bytes may be a character of Chinese text.
constexpr Candidate PAIR_CANDIDATES[] = {CANDIDATE_GBK, CANDIDATE_BIG5, CANDIDATE_UNICODE};

constexpr const char* CANDIDATE_NAMES[CANDIDATES] = {"GBK", "Big5", "UTF-8", "UTF-16LE"};

// The library's codes.
constexpr int CODES[CANDIDATES] = {ENCODE_GBK, ENCODE_BIG5, ENCODE_UTF8, ENCODE_UNICODE};

// What entering a state adds to each candidate's sum. The file has room for -9 to +10, for UTF-8 up to +23.
using Digits = std::array<int, CANDIDATES>;

constexpr int LEAST_DIGIT = -9;

constexpr int MostDigit(size_t candidate)
{
    return candidate == CANDIDATE_UTF8 ? 23 : 10;
}

constexpr int PackDigits(const Digits& add, int code = 0)
{
    return PackTrieValue(code, {.gbk = add[CANDIDATE_GBK],
                                .big5 = add[CANDIDATE_BIG5],
                                .unicode = add[CANDIDATE_UNICODE],
                                .utf8 = add[CANDIDATE_UTF8]});
}

constexpr Digits DigitsOf(int value)
{
    const TrieAdjustments add = UnpackTrieValue(value);
    Digits digits{};
    digits[CANDIDATE_GBK] = add.gbk;
    digits[CANDIDATE_BIG5] = add.big5;
    digits[CANDIDATE_UTF8] = add.utf8;
    digits[CANDIDATE_UNICODE] = add.unicode;
    return digits;
}

// The same for all but one candidate.
constexpr int PackAllBut(Candidate one, int its, int others)
{
    Digits digits{others, others, others, others};
    digits[one] = its;
    return PackDigits(digits);
}

// Adds nothing, but counts against UTF-16LE, which needs ten positive states for each such one.
constexpr int COUNTS_AGAINST_UNICODE = TRIE_VALUE_NONE | TRIE_VALUE_COUNTED;

// Ends the walk with the candidate's code.
constexpr int Decisive(Candidate candidate)
{
    return PackDigits({0, 0, 0, 0}, CODES[candidate]);
}

#endif  // MODEL_BUILDER_CANDIDATES_H
