// A small generator of pseudo-random numbers whose sequence is the same on every platform and in every version. It is
// meant for repeatable shuffles and tie-breaks, not for cryptography. An object belongs to one thread at a time.
#ifndef GEN_RAND_SYS_H
#define GEN_RAND_SYS_H

#include "zel_export_sys.h"

#include <cstdint>

/// A linear congruential generator with a state of 32 bits, of which each number shows 15.
class GEN_RAND
{
public:
    GEN_API explicit GEN_RAND(long seed = 0);

    /// Restarts with a seed, of which only the low 32 bits are used.
    GEN_API void set_seed(long seed);

    /// The next number, from 0 to 32767. Seed 0 gives 38, 7719, 21238, 2437, 8855, ...
    GEN_API int get_rand();

private:
    std::uint32_t m_state;
};

#endif
