#include "NameJudge.h"

#include <CodeTrans.h>

#include <algorithm>

#include "Garbled.h"
#include "GbkOrBig5.h"
#include "Reading.h"
#include "UnicodeCodec.h"

namespace
{
using Kind = NameVerdict::Kind;

// All bytes beyond ASCII are letters of Western languages in CP437, none of which begins a common hanzi.
bool AreWestern(const std::vector<std::string>& names)
{
    const auto isWestern = [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x9B || (byte >= 0xA0 && byte <= 0xA5) || byte == 0xE1;
    };
    return std::all_of(names.begin(), names.end(), [&](const std::string& name) {
        return std::all_of(name.begin(), name.end(), isWestern);
    });
}

bool IsDoubleByte(std::optional<NameEncoding> encoding)
{
    return encoding == NameEncoding::GB || encoding == NameEncoding::BIG_5;
}

// Whether `name`, which is valid UTF-8, is rather meant as `encoding`.
bool IsRather(const std::string& name, NameEncoding encoding)
{
    return IsPlausible(name, encoding == NameEncoding::GB ? GBK : BIG5);
}

class Judge
{
public:
    Judge(const std::vector<std::string>& names, const NameRules& rules) : m_names(names), m_rules(rules)
    {
        m_judgement.verdicts.resize(names.size());
        for (size_t i = 0; i < names.size(); ++i) {
            if (AsciiLength(names[i]) == names[i].size()) continue;
            if (!DecodeName(names[i], NameEncoding::UTF_8))
                m_raw.push_back(i);
            else if (IsRather(names[i], NameEncoding::GB) || IsRather(names[i], NameEncoding::BIG_5))
                m_doubtful.push_back(i);
            else
                m_utf8.push_back(i);
        }
    }

    NameJudgement Run()
    {
        DecideEncoding();
        for (const size_t i : m_raw) {
            if (m_judgement.encoding)
                Convert(i);
            else
                Undecided(i, m_why);
        }
        for (const size_t i : m_doubtful) {
            if (IsDoubleByte(m_judgement.encoding) && IsRather(m_names[i], *m_judgement.encoding))
                Convert(i);
            else if (!m_rules.from)
                Undecided(i, "can be read as UTF-8 and as GBK or Big5; --from decides");
        }
        if (m_rules.undo) RestoreGarbled();
        return std::move(m_judgement);
    }

private:
    void DecideEncoding()
    {
        std::vector<std::string> raw;
        for (const size_t i : m_raw) raw.push_back(m_names[i]);
        if (m_rules.from) {
            if (AllReadable(raw, *m_rules.from)) m_judgement.encoding = m_rules.from;
            m_why =
                std::string("is not UTF-8, and not all such names can be read as ") + TitleOf(*m_rules.from);
        } else if (!raw.empty()) {
            const bool western = m_rules.western && AreWestern(raw);
            m_judgement.encoding = western ? NameEncoding::CP437 : GbkOrBig5(raw);
            m_why = "is not UTF-8, and such names together are not clearly GBK or Big5; --from decides";
        }
    }

    void Convert(size_t i)
    {
        const auto text = DecodeName(m_names[i], *m_judgement.encoding);
        m_judgement.verdicts[i] = {Kind::WRONG, *EncodeName(*text, NameEncoding::UTF_8), {}};
    }

    void Undecided(size_t i, const std::string& why) { m_judgement.verdicts[i] = {Kind::UNDECIDED, {}, why}; }

    void RestoreGarbled()
    {
        GarbledNames garbled(m_rules.from);
        for (const size_t i : m_utf8) garbled.Add(i, *DecodeName(m_names[i], NameEncoding::UTF_8));
        for (const auto& [i, restored] : garbled.Restore()) {
            if (restored.why.empty())
                m_judgement.verdicts[i] = {Kind::WRONG, restored.name, {}};
            else
                Undecided(i, restored.why);
        }
    }

    const std::vector<std::string>& m_names;
    const NameRules& m_rules;
    std::vector<size_t> m_raw, m_doubtful, m_utf8;  // not UTF-8; UTF-8 by chance, perhaps; UTF-8
    NameJudgement m_judgement;
    std::string m_why;  // the encoding of `m_raw` is not known
};
}  // namespace

NameJudgement JudgeNames(const std::vector<std::string>& names, const NameRules& rules)
{
    return Judge(names, rules).Run();
}
