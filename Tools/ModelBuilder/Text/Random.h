// Random numbers that are the same on every machine: integers only, and a generator of our own.
#ifndef MODEL_BUILDER_RANDOM_H
#define MODEL_BUILDER_RANDOM_H

#include <cstddef>
#include <cstdint>

// Sebastiano Vigna's SplitMix64 step, public domain.
class CRandom
{
public:
    explicit CRandom(uint64_t seed) : m_state(seed) {}

    uint64_t Next()
    {
        m_state += 0x9E3779B97F4A7C15ULL;
        uint64_t z = m_state;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }

    // 0 to bound - 1.
    uint32_t Below(uint32_t bound) { return static_cast<uint32_t>((Next() >> 32) * bound >> 32); }
    uint32_t Below(size_t bound) { return Below(static_cast<uint32_t>(bound)); }
    uint32_t Below(int bound) { return Below(static_cast<uint32_t>(bound)); }

    bool Chance(uint32_t percent) { return Below(100) < percent; }

private:
    uint64_t m_state;
};

#endif  // MODEL_BUILDER_RANDOM_H
