#include "Margin.h"

#include <algorithm>
#include <string_view>

#include "FastPaths.h"

namespace
{
int64_t Lead(const Scores& scores, int code)
{
    const struct {
        int code;
        unsigned sum;
    } candidates[] = {{ENCODE_GBK, scores.sumGbk},
                      {ENCODE_BIG5, scores.sumBig5},
                      {ENCODE_UTF8, scores.sumUtf8},
                      {ENCODE_UNICODE, scores.sumUnicode}};
    int64_t own = 0, others = 0;
    for (const auto& candidate : candidates) {
        const int64_t sum = static_cast<int>(candidate.sum);
        if (candidate.code == code)
            own = sum;
        else
            others = std::max(others, sum);
    }
    return own - others;
}
}  // namespace

Answer AnswerOf(const Scores& scores)
{
    const int code = Decide(scores);
    if (code == ENCODE_UNKNOWN) return {code, 0, false};
    if (scores.decidedCode != 0) return {code, MOST_MARGIN, false};
    constexpr int64_t FEW = 4;  // bytes: two characters of GBK or Big5
    const int64_t lead = std::max(Lead(scores, code), int64_t{0});
    const bool divides = code != ENCODE_UTF8 && scores.highBytes > FEW;
    const int64_t margin = divides ? lead * FEW / scores.highBytes : lead;
    const bool ascii = code == ENCODE_GBK && scores.highBytes == 0;
    return {code, static_cast<int>(std::min<int64_t>(margin, MOST_MARGIN)), ascii};
}

void WalkOn(const char* text, unsigned long length, WalkPosition& position)
{
    const auto nodeCount = static_cast<unsigned>(CodeTrans_TrieNodeCount());
    if (g_pstTrieTable == nullptr || nodeCount == 0) return;
    if (FastPathsOn())
        FastWalk(g_pstTrieTable, nodeCount, text, length, position);
    else
        Walk(g_pstTrieTable, nodeCount, text, length, position);
}

Answer AnswerFor(const char* text, unsigned long length)
{
    WalkPosition position;
    WalkOn(text, length, position);
    return AnswerOf(position.scores);
}

unsigned long MarkLength(int code, const char* text, unsigned long length)
{
    const std::string_view bytes(text, length);
    if (code == ENCODE_UTF8 && bytes.substr(0, 3) == "\xEF\xBB\xBF") return 3;
    if (code == ENCODE_UNICODE && bytes.substr(0, 2) == "\xFF\xFE") return 2;
    return 0;
}
