// A small generator of pseudo-random numbers whose sequence is the same on every platform and in every version: for
// repeatable shuffles and tie-breaks, not for secrets. An object belongs to one thread.
#ifndef GEN_RAND_SYS_H
#define GEN_RAND_SYS_H

#include "zel_export_sys.h"

#include <cstdint>

/// A linear congruential generator of 32 bits, which shows 15 of them.
class GEN_RAND
{
public:
    GEN_API explicit GEN_RAND(long seed = 0);

    /// Begins the sequence of a seed, of which the low 32 bits count.
    GEN_API void set_seed(long seed);

    /// The next number, from 0 to 32767. Seed 0 gives 38, 7719, 21238, 2437, 8855, ...
    GEN_API int get_rand();

private:
    std::uint32_t m_state;
};

#endif
