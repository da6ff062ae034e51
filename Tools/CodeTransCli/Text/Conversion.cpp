#include "Conversion.h"

#include <algorithm>
#include <cstdio>

namespace
{
std::string Hex(std::string_view bytes)
{
    std::string text;
    char digits[4];
    for (const char c : bytes) {
        snprintf(digits, sizeof digits, text.empty() ? "%02X" : " %02X", static_cast<unsigned char>(c));
        text += digits;
    }
    return text;
}

std::string CodePoint(char32_t value)
{
    char text[16];
    snprintf(text, sizeof text, "U+%04lX", static_cast<unsigned long>(value));
    return text;
}

std::string DescribeUnreadable(std::string_view bytes, Fault fault, const Encoding& from)
{
    switch (fault) {
        case Fault::CUT:
            return "the text ends inside a character: " + Hex(bytes);
        case Fault::LONE_HALF:
            return Hex(bytes) + " is half a surrogate pair";
        default:
            return Hex(bytes) + " is not a character in " + from.name;
    }
}
}  // namespace

void Place::Pass(std::u16string_view units)
{
    if (const size_t lastEnd = units.rfind(u'\n'); lastEnd != std::u16string_view::npos) {
        m_line += static_cast<uint64_t>(std::count(units.begin(), units.end(), u'\n'));
        m_column = 1;
        units.remove_prefix(lastEnd + 1);
    }
    const auto seconds = std::count_if(units.begin(), units.end(), IsLowSurrogate);
    m_column += units.size() - static_cast<uint64_t>(seconds);
}

void Place::Pass(const Place& passed)
{
    m_column = passed.m_line > 1 ? passed.m_column : m_column + passed.m_column - 1;
    m_line += passed.m_line - 1;
}

Conversion::Conversion(const Encoding& from, const Encoding* to, size_t describe)
    : m_from(from),
      m_to(to),
      m_describe(describe),
      m_decoder(MakeDecoder(from)),
      m_encoder(to != nullptr ? MakeEncoder(*to) : nullptr)
{
}

size_t Conversion::Pass(std::string_view text, bool isLast, std::string& out)
{
    size_t used = 0;
    while (used < text.size()) {
        m_units.clear();
        const size_t read = m_decoder->Read(text.substr(used), m_units);
        if (m_change) m_areChanged = m_change(m_units, isLast && used + read == text.size());
        WriteUnits(text.substr(used, read), out);
        used += read;
        if (used == text.size()) break;

        const Character odd = m_decoder->First(text.substr(used));
        if (odd.fault == Fault::CUT && !isLast) break;
        Lose(DescribeUnreadable(text.substr(used, odd.length), odd.fault, m_from), out);
        if (m_encoder != nullptr) m_encoder->WriteSubstitute(out);
        m_place.Pass(u"?");
        used += odd.length;
    }
    return used;
}

void Conversion::Join(const Conversion& next, const std::string& out)
{
    if (m_losses.count == 0) m_outBeforeLoss = out.size() + next.m_outBeforeLoss;
    for (const Loss& loss : next.m_losses.described) {
        if (m_losses.described.size() >= m_describe) break;
        const uint64_t column = loss.line == 1 ? m_place.Column() + loss.column - 1 : loss.column;
        m_losses.described.push_back({m_place.Line() + loss.line - 1, column, loss.what});
    }
    m_losses.count += next.m_losses.count;
    m_place.Pass(next.m_place);
}

// `text` is where the units come from.
void Conversion::WriteUnits(std::string_view text, std::string& out)
{
    std::u16string_view rest = m_units;
    while (m_encoder != nullptr && !rest.empty()) {
        const size_t written = m_encoder->Write(rest, out);
        m_place.Pass(rest.substr(0, written));
        rest.remove_prefix(written);
        if (rest.empty()) break;

        const Character odd = FirstOfUnits(rest);
        const std::string bytes =
            m_losses.described.size() < m_describe ? BytesOfUnit(text, m_units.size() - rest.size()) : "";
        Lose(CodePoint(odd.codePoint) + (bytes.empty() ? "" : " (" + bytes + ")") + " does not exist in " +
                 m_to->name,
             out);
        m_encoder->WriteSubstitute(out);
        m_place.Pass(rest.substr(0, odd.length));
        rest.remove_prefix(odd.length);
    }
    m_place.Pass(rest);
}

void Conversion::Lose(const std::string& what, const std::string& out)
{
    if (++m_losses.count == 1) m_outBeforeLoss = out.size();
    if (m_losses.described.size() < m_describe)
        m_losses.described.push_back({m_place.Line(), m_place.Column(), what});
}

// Of the source. Empty where the units were changed, and for encodings that cannot be read from the middle.
std::string Conversion::BytesOfUnit(std::string_view text, size_t index) const
{
    if (m_areChanged || m_from.scheme == Scheme::ICONV || m_from.scheme == Scheme::HZ) return {};
    for (size_t units = 0;;) {
        const Character next = m_decoder->First(text);
        if (units >= index) return Hex(text.substr(0, next.length));
        units += next.codePoint > 0xFFFF ? 2 : 1;
        text.remove_prefix(next.length);
    }
}
