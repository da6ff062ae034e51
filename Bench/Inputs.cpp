// The texts that are timed; see Inputs.h.
#include "Inputs.h"

#include <iconv.h>

#include "Encoder.h"
#include "Sampler.h"

namespace
{
constexpr char DATA[] = CODETRANS_SOURCE_DIRECTORY "/Data/";
constexpr size_t WHOLE = 1 << 20;
constexpr double PERCENT_OF_MIXED = 9, PERCENT_OF_ASCII = 0.1;

CSampler Sampler(const std::string& name)
{
    return CSampler(Statistics::Read(std::string(DATA) + "Statistics/" + name + ".txt"));
}

// Characters that every contender knows by the same code: those of the C library's BIG5 or GBK.
class CCommon
{
public:
    explicit CCommon(bool traditional)
        : m_candidate(traditional ? CANDIDATE_BIG5 : CANDIDATE_GBK),
          m_encoder(std::string(DATA) + "Mappings"),
          m_decoder(iconv_open("UTF-16LE", traditional ? "BIG5" : "GBK"))
    {
    }
    ~CCommon() { iconv_close(m_decoder); }

    std::wstring Of(const std::wstring& text) const
    {
        std::wstring common;
        for (const wchar_t c : text)
            if (c == '\n' || (c >= 0x20 && c < 0x7F) || (c >= 0x3000 && IsSame(c))) common += c;
        return common;
    }

private:
    bool IsSame(wchar_t character) const
    {
        std::string pair = m_encoder.Encode(m_candidate, std::wstring(1, character));
        unsigned char unit[2] = {};
        char *in = pair.data(), *out = reinterpret_cast<char*>(unit);
        size_t inLeft = pair.size(), outLeft = sizeof unit;
        return inLeft == 2 && iconv(m_decoder, &in, &inLeft, &out, &outLeft) == 0 &&
               (unit[0] | unit[1] << 8) == character;
    }

    Candidate m_candidate;
    CEncoder m_encoder;
    iconv_t m_decoder;
};

std::wstring Prose(bool traditional)
{
    CRandom random(1);
    return CCommon(traditional)
        .Of(Sampler(traditional ? "hant-prose" : "hans-prose").Text(WHOLE, 50, random));
}

// Lines of programs and prose in English with a remark in Chinese behind some, so that `percent` of the
// characters are hanzi.
std::wstring WithRemarks(bool traditional, const std::wstring& prose, double percent)
{
    CRandom random(2);
    const std::wstring english = CCommon(traditional).Of(Sampler("ascii").Text(WHOLE, 50, random));
    std::wstring text;
    size_t hanzi = 0, from = 0;
    for (const wchar_t c : english) {
        if (c == '\n' && static_cast<double>(hanzi) * 100 < static_cast<double>(text.size()) * percent) {
            text += L"  // ";
            const size_t length = 4 + random.Below(24);
            for (const wchar_t remark : prose.substr(from, length))
                if (remark >= 0x80) ++hanzi, text += remark;
            from = (from + length) % (prose.size() - 100);
        }
        text += c;
    }
    return text;
}

std::string Encode(const CEncoder& encoder, Form form, const std::wstring& text)
{
    if (form == Form::WIDE)
        return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t)};
    constexpr Candidate CANDIDATE_OF[] = {CANDIDATE_GBK, CANDIDATE_BIG5, CANDIDATE_UTF8, CANDIDATE_UNICODE};
    return encoder.Encode(CANDIDATE_OF[static_cast<int>(form)], text);
}

// Pieces of at most `size` bytes, as many as `count`.
Input Pieces(const std::string& name, const CEncoder& encoder, Form form, const std::wstring& text,
             size_t size, size_t count)
{
    Input input{name, {}};
    std::string piece;
    for (const wchar_t c : text) {
        const std::string next = Encode(encoder, form, std::wstring(1, c));
        if (piece.size() + next.size() > size) {
            input.sources.push_back(piece + std::string(TERMINATOR, '\0'));
            piece.clear();
            if (input.sources.size() == count) break;
        }
        piece += next;
    }
    return input;
}
}  // namespace

std::vector<Input> MakeInputs(Form form, bool traditional)
{
    const CEncoder encoder(std::string(DATA) + "Mappings");
    const std::wstring prose = Prose(traditional), mixed = WithRemarks(traditional, prose, PERCENT_OF_MIXED),
                       ascii = WithRemarks(traditional, prose, PERCENT_OF_ASCII);
    return {Pieces("prose", encoder, form, prose + prose + prose, WHOLE, 1),
            Pieces("mixed", encoder, form, mixed + mixed, WHOLE, 1),
            Pieces("mostly ASCII", encoder, form, ascii + ascii, WHOLE, 1),
            Pieces("prose 16 KB", encoder, form, prose, 16384, 60),
            Pieces("prose 1 KB", encoder, form, prose, 1024, 200),
            Pieces("prose 64 B", encoder, form, prose, 64, 1000),
            Pieces("mixed 64 B", encoder, form, mixed, 64, 1000)};
}
