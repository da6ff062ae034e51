// What a block of UTF-8 looks like, for blocks of any width.
//
// Each lead byte says how many bytes follow it. A block is plain when its bytes of 80 and above are just
// these:
//
//     bytes      61 E4 B8 AD C3 A9 62          a 中 é b
//     twos        .  1  .  .  1  .  .          C0 and above: one byte follows at least
//     threes      .  1  .  .  .  .  .          E0 and above: two
//     following   .  .  1  1  .  1  .          twos, one byte further on, and threes, two bytes further on
//
// What follows beyond the end of the block is carried over to the next.
#ifndef CODETRANS_X86_UTF8_BLOCK_H
#define CODETRANS_X86_UTF8_BLOCK_H

// `Mask` is an unsigned integer with a bit for each byte of the block, the first byte's lowest.
template <typename Mask>
class Utf8Block
{
public:
    static constexpr unsigned WIDTH = 8 * sizeof(Mask);  // bytes

    // The bytes from 80, C0, E0 and F0 on. `carry` is of the block before.
    constexpr Utf8Block(Mask high, Mask twos, Mask threes, Mask fours, Mask carry)
        : m_following(static_cast<Mask>(twos << 1 | threes << 2 | carry)),
          m_carry(static_cast<Mask>(twos >> (WIDTH - 1) | threes >> (WIDTH - 2))),
          m_isPlain(m_following == (high & ~twos) && fours == 0)
    {
    }

    // Whether all characters have one to three bytes, as many as their lead bytes say.
    constexpr bool IsPlain() const { return m_isPlain; }

    constexpr Mask Following() const { return m_following; }
    constexpr Mask Carry() const { return m_carry; }

    // Whether a character goes on behind the text, of which `left` bytes are left from the start of the
    // block.
    constexpr bool IsCut(unsigned long left) const
    {
        if (left < WIDTH) return m_following >> left != 0 || m_carry != 0;
        return left < WIDTH + 2 && m_carry >> (left - WIDTH) != 0;
    }

private:
    Mask m_following, m_carry;
    bool m_isPlain;
};

#endif  // CODETRANS_X86_UTF8_BLOCK_H
