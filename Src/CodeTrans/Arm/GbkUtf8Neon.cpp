// Between GBK and UTF-8 on AArch64, where NEON is always there.
//
//     until the text is over
//         while 16 bytes are ASCII: copy them
//         while a character is not ASCII: look it up, and append its bytes
//         append a single ASCII character
//
// The other conversions go through the plain forms on this processor.
#include <arm_neon.h>

#include <algorithm>

#include "Bytes.h"
#include "FastPaths.h"
#include "STLCodeTrans.h"

namespace
{
constexpr unsigned long BLOCK = 16;

// Copies whole blocks of ASCII, as far as source and room have them.
void CopyAscii(const unsigned char* src, unsigned long size, unsigned char* out, unsigned long room,
               Progress& at)
{
    while (size - at.read >= BLOCK && room - at.written >= BLOCK) {
        const uint8x16_t bytes = vld1q_u8(src + at.read);
        if (vmaxvq_u8(bytes) >= 0x80) return;
        vst1q_u8(out + at.written, bytes);
        at += {BLOCK, BLOCK};
    }
}

// The bytes of an entry of LocaleGbk, as many as there is room for.
void AppendSequence(uint32_t sequence, unsigned char* out, unsigned long room, Progress& at)
{
    const unsigned char bytes[3] = {static_cast<unsigned char>(sequence),
                                    static_cast<unsigned char>(sequence >> 16),
                                    static_cast<unsigned char>(sequence >> 24)};
    const unsigned long length = std::min(bytes[2] != 0 ? 3UL : 2UL, room - at.written);
    memcpy(out + at.written, bytes, length);
    at.written += length;
}
}  // namespace

Progress FastGbkToUtf8(const LocaleGbk& gbk, const char* src, unsigned long srcLen, char* dst,
                       unsigned long room)
{
    const auto* const from = reinterpret_cast<const unsigned char*>(src);
    auto* const out = reinterpret_cast<unsigned char*>(dst);
    Progress at;
    while (at.read < srcLen && at.written < room) {
        if (from[at.read] < 0x80) {
            CopyAscii(from, srcLen, out, room, at);
            if (at.read < srcLen && at.written < room && from[at.read] < 0x80)
                out[at.written++] = from[at.read++];
            continue;
        }
        if (srcLen - at.read < 2) break;
        const uint32_t sequence = gbk.sequences[(from[at.read] & 0x7FU) << 8 | from[at.read + 1]];
        if (sequence == 0) break;
        AppendSequence(sequence, out, room, at);
        at.read += 2;
    }
    return at;
}

// A character of GBK is never longer than its UTF-8, so there is always room.
Progress FastUtf8ToGbk(const char* src, unsigned long srcLen, char* dst)
{
    const auto* const from = reinterpret_cast<const unsigned char*>(src);
    auto* const out = reinterpret_cast<unsigned char*>(dst);
    Progress at;
    while (at.read < srcLen) {
        if (from[at.read] < 0x80) CopyAscii(from, srcLen, out, srcLen, at);
        if (at.read == srcLen) break;
        const WideStep step = NextWide(from + at.read, srcLen - at.read);
        if (step.isCharacter) {
            const unsigned code = CodeTable[step.cp];
            if (step.length > 1 && code < 0x8000) break;
            if (step.length > 1) out[at.written++] = static_cast<unsigned char>(code >> 8);
            out[at.written++] = static_cast<unsigned char>(code);
        }
        at.read += step.length;
    }
    return at;
}
