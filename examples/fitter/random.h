// Random numbers that are the same for one seed on every platform.
#ifndef FITTER_RANDOM_H
#define FITTER_RANDOM_H

#include <cstdint>

namespace fitter {

/// A generator with 64 bits of state (the splitmix step). Any seed is a good one.
class Random
{
public:
    explicit Random(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t next()
    {
        std::uint64_t value = (m_state += 0x9e3779b97f4a7c15u);
        value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9u;
        value = (value ^ (value >> 27)) * 0x94d049bb133111ebu;
        return value ^ (value >> 31);
    }

    /// From 0 to `count` - 1; `count` is not 0.
    std::uint32_t below(std::uint32_t count) { return static_cast<std::uint32_t>(((next() >> 32) * count) >> 32); }

    /// From `low` to `high`, both included.
    int between(int low, int high) { return low + static_cast<int>(below(static_cast<std::uint32_t>(high - low) + 1)); }

    /// From 0 up to, not including, 1.
    double fraction() { return static_cast<double>(next() >> 11) * 0x1p-53; }

private:
    std::uint64_t m_state;
};

} // namespace fitter

#endif
