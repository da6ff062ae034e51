// The arithmetic of the characters that stand for foreign bytes.
#include "ForeignTokens.h"

#include "Bytes.h"

namespace
{
constexpr unsigned FIRST_BYTE = 0x100, FIRST_PAIR = 0x4000, TRAILS = 192;

bool LeadsPair(unsigned byte, Role role)
{
    const bool isHalfWidthKana = role == Role::KANA && byte >= 0xA0 && byte < 0xE0;
    return role != Role::BYTES && byte > 0x80 && byte != 0xA0 && !isHalfWidthKana;
}
}  // namespace

std::wstring TokensOf(const std::string& bytes, Role role)
{
    std::wstring tokens;
    for (size_t i = 0; i < bytes.size(); ++i) {
        const unsigned byte = ByteAt(bytes, i);
        unsigned token = byte < 0x80 ? byte : FIRST_BYTE + byte;
        if (LeadsPair(byte, role) && i + 1 < bytes.size() && ByteAt(bytes, i + 1) >= 0x40)
            token = FIRST_PAIR + TRAILS * (byte - 0x80) + ByteAt(bytes, ++i) - 0x40;
        tokens += static_cast<wchar_t>(token);
    }
    return tokens;
}

std::wstring TokensOfData(const std::string& bytes)
{
    std::wstring tokens;
    for (size_t i = 0; i < bytes.size(); ++i) tokens += static_cast<wchar_t>(FIRST_BYTE + ByteAt(bytes, i));
    return tokens;
}

std::string BytesOfToken(wchar_t token)
{
    const unsigned code = static_cast<unsigned>(token) & 0xFFFF;
    if (code < FIRST_PAIR) return OneByte(code & 0xFF);
    return TwoBytes(0x80 + (code - FIRST_PAIR) / TRAILS, 0x40 + (code - FIRST_PAIR) % TRAILS);
}
