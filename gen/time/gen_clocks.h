// One reading of both clocks of the profile bins, the CPU clock first. Every open and close of a bin takes one.
#ifndef GEN_CLOCKS_H
#define GEN_CLOCKS_H

#include "gen/os/gen_os.h"

struct GEN_CLOCKS
{
    std::int64_t m_cpu_nsec = 0; ///< gen_get_usec_cpu() times 1000
    std::int64_t m_ticks = 0;    ///< gen_get_hires_ticks()
};

inline GEN_CLOCKS operator-(GEN_CLOCKS const &a, GEN_CLOCKS const &b)
{
    return {a.m_cpu_nsec - b.m_cpu_nsec, a.m_ticks - b.m_ticks};
}

/// Reads gen_get_usec_cpu() and gen_get_hires_ticks().
GEN_CLOCKS gen_read_clocks_one_by_one();

/// Same as gen_read_clocks_one_by_one(), with one query for both clocks if the system has such a query.
inline GEN_CLOCKS gen_read_clocks()
{
    std::uint64_t cpu_units, ticks;
    if (!gen_os_read_cpu_sum_and_counter(cpu_units, ticks))
        return gen_read_clocks_one_by_one();
    // Cut to microseconds, as gen_get_usec_cpu() does.
    return {static_cast<std::int64_t>(cpu_units / 10 * 1000), static_cast<std::int64_t>(ticks)};
}

#endif
