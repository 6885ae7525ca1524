// Random draws that are the same for one seed on every platform.
#ifndef FITTER_DRAWS_H
#define FITTER_DRAWS_H

#include "gen_rand_sys.h"

#include <cstdint>

namespace fitter {

/// A draw of 30 bits consists of two numbers of the library's generator, which have 15 bits each.
class Draws
{
public:
    explicit Draws(std::uint32_t seed) : m_random(static_cast<long>(seed)) {}

    /// From 0 to `count` - 1; `count` is from 1 to 2^30.
    std::uint32_t below(std::uint32_t count)
    {
        return static_cast<std::uint32_t>((std::uint64_t{draw()} * count) >> DRAW_BITS);
    }

    /// From `low` to `high`, both included.
    int between(int low, int high) { return low + static_cast<int>(below(static_cast<std::uint32_t>(high - low) + 1)); }

    /// From 0 up to, not including, 1.
    double fraction() { return draw() * (1.0 / (1 << DRAW_BITS)); }

private:
    static constexpr int DRAW_BITS = 30;

    std::uint32_t draw()
    {
        auto const high = static_cast<std::uint32_t>(m_random.get_rand());
        return high << (DRAW_BITS / 2) | static_cast<std::uint32_t>(m_random.get_rand());
    }

    GEN_RAND m_random;
};

} // namespace fitter

#endif
