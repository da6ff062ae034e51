#include "Lines.h"

#include <Margin.h>

#include <algorithm>
#include <vector>

#include "Identity.h"
#include "Reading.h"
#include "StrayLines.h"
#include "UnicodeCodec.h"

LineReader::LineReader(std::string_view head, int sure) : m_sure(sure)
{
    std::map<const Encoding*, size_t> counts;
    while (!head.empty()) {
        const std::string_view line = head.substr(0, head.find('\n'));
        head.remove_prefix(std::min(line.size() + 1, head.size()));
        const Encoding* const encoding = ClearEncodingOf(line);
        if (encoding != nullptr && encoding != &ASCII) ++counts[encoding];
    }
    for (const Encoding* const encoding : {&UTF8, &GBK, &BIG5})
        if (counts[encoding] > counts[m_usual]) m_usual = encoding;
}

const Encoding* LineReader::ClearEncodingOf(std::string_view line) const
{
    if (AsciiLength(line) == line.size()) return &ASCII;
    if (IsUtf8BeyondChance(line)) return &UTF8;
    const Answer answer = AnswerFor(line.data(), line.size());
    const int code = Settled(line, true, answer.code);
    const bool certain = code == ENCODE_UTF8 && answer.code != ENCODE_UTF8;
    if (code == ENCODE_UNICODE || (!certain && answer.margin < m_sure)) return nullptr;
    const Encoding* const encoding = EncodingOf(code);
    return encoding != nullptr && CanBeRead(line, *encoding) ? encoding : nullptr;
}

const Encoding* LineReader::EncodingOfLine(std::string_view line)
{
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
    const Encoding* encoding = ClearEncodingOf(line);
    if (encoding == nullptr)
        for (const Encoding* const candidate : {m_usual, &UTF8, &GBK, &BIG5})
            if (encoding == nullptr && CanBeRead(line, *candidate)) encoding = candidate;
    if (encoding == nullptr) encoding = m_usual;
    ++m_counts[encoding->name];
    return encoding;
}

bool LineReader::AreAllIn(const Encoding& encoding) const
{
    return std::all_of(m_counts.begin(), m_counts.end(), [&](const auto& count) {
        return count.first == encoding.name || (encoding.holdsAscii && count.first == ASCII.name);
    });
}

std::string LineReader::Counts() const
{
    std::vector<std::string> parts;
    for (const auto& [name, count] : m_counts) parts.push_back(std::to_string(count) + " in " + name);
    std::string text;
    for (size_t i = 0; i < parts.size(); ++i)
        text += (i == 0 ? "" : i + 1 == parts.size() ? " and " : ", ") + parts[i];
    return text;
}
