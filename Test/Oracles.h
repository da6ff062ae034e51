// Slow and obvious forms of what the library does cleverly, for tests and fuzz targets.
#ifndef TEST_ORACLES_H
#define TEST_ORACLES_H

#include <string>
#include <vector>

#include "Detection.h"
#include "Shortcuts.h"

// Totals count for nothing once a node has decided.
inline bool SameWalk(const Scores& a, const Scores& b)
{
    return a.decidedCode != 0 ? a.decidedCode == b.decidedCode : a == b;
}

// The walk step by step, with its byte tried again after each failure, and the rules, all in wide arithmetic.
inline int DetectionOracle(const std::vector<TrieNode>& nodes, const std::string& text)
{
    const auto size = static_cast<long>(nodes.size());
    long sum[4] = {}, positive[4] = {}, nonPositive = 0, high = 0, state = 0, hops = 0, code = 0;
    for (size_t p = 0; p < text.size() && code == 0;) {
        const auto b = static_cast<unsigned char>(text[p]);
        high += b >= 0x80;
        const long t = nodes[static_cast<size_t>(state)].nBase + long{b};
        if (t >= 0 && t < size && nodes[static_cast<size_t>(t)].nCheck == state) {
            state = t;
            const int value = nodes[static_cast<size_t>(t)].nValue;
            const long digits = value & 0x3FFFF;
            const long add[4] = {digits % 20 - 9, digits / 20 % 20 - 9, digits / 8000 - 9,
                                 digits / 400 % 20 - 9};
            code = value >> 20;
            for (int e = 0; value != TRIE_VALUE_NONE && e < 4; ++e) {
                sum[e] += add[e];
                positive[e] += add[e] > 0;
            }
            nonPositive += value != TRIE_VALUE_NONE && add[3] <= 0;
        } else if (state != 0) {
            high -= b >= 0x80;
            const long fail = nodes[static_cast<size_t>(state)].nFail;
            state = fail >= 0 && fail < size && ++hops <= size ? fail : 0;
            continue;
        }
        hops = 0;
        ++p;
    }
    if (code != 0) return static_cast<int>(code);
    long best = sum[0];
    int result = positive[0] > high / 4 || high == 0 ? ENCODE_GBK : ENCODE_UNKNOWN;
    const int codes[] = {0, ENCODE_BIG5, ENCODE_UTF8}, shares[] = {0, 4, 6};
    for (int e = 1; e < 3; ++e)
        if (sum[e] > best) {
            best = sum[e];
            result = positive[e] > high / shares[e] ? codes[e] : ENCODE_UNKNOWN;
        }
    return sum[3] > best && positive[3] >= 10 * nonPositive + 1 ? ENCODE_UNICODE : result;
}

#endif  // TEST_ORACLES_H
