// The figures of a bin, three clocks and three amounts of memory, and the arithmetic on them.
#ifndef GEN_PROFILE_BINS_METRICS_H
#define GEN_PROFILE_BINS_METRICS_H

#include "gen/time/gen_clocks.h"

#include <algorithm>
#include <array>
#include <cstdint>

/// Indices into GEN_PB_METRICS. The clocks come first.
enum GEN_PB_METRIC_INDEX : std::size_t
{
    GEN_PB_WC,        ///< ticks of gen_get_hires_ticks()
    GEN_PB_CPU,       ///< nanoseconds
    GEN_PB_WC_EST,    ///< nanoseconds, measured from the CPU clock
    GEN_PB_START_MEM, ///< bytes
    GEN_PB_END_MEM,   ///< bytes
    GEN_PB_PEAK_MEM,  ///< bytes
    GEN_PB_METRIC_COUNT
};
constexpr std::size_t GEN_PB_CLOCK_COUNT = 3;

/// The value of a memory metric before the first one is known.
constexpr std::int64_t GEN_PB_NO_MEMORY = -1;

/// One value of each metric, in the size of a cache line.
struct GEN_PB_METRICS
{
    std::array<std::int64_t, GEN_PB_METRIC_COUNT> m_values{};
    std::array<std::uint32_t, GEN_PB_CLOCK_COUNT> m_errors{}; ///< how often each clock went backward

    /// Adds the difference of two clock readings. The estimate starts as the CPU time.
    void add_interval(GEN_CLOCKS const &interval)
    {
        m_values[GEN_PB_WC] += interval.m_ticks;
        m_values[GEN_PB_CPU] += interval.m_cpu_nsec;
        m_values[GEN_PB_WC_EST] += interval.m_cpu_nsec;
    }

    /// Adds the clocks of `other`, the values `factor` times and the errors once.
    void add_clocks(GEN_PB_METRICS const &other, std::int64_t factor = 1)
    {
        for (std::size_t i = 0; i < GEN_PB_CLOCK_COUNT; ++i) {
            m_values[i] += other.m_values[i] * factor;
            m_errors[i] += other.m_errors[i];
        }
    }

    /// Subtracts the values of the clocks of `other`, but adds its errors.
    void subtract_clocks(GEN_PB_METRICS const &other)
    {
        for (std::size_t i = 0; i < GEN_PB_CLOCK_COUNT; ++i) {
            m_values[i] -= other.m_values[i];
            m_errors[i] += other.m_errors[i];
        }
    }

    /// Sets negative clocks to 0.
    void clamp_clocks()
    {
        for (std::size_t i = 0; i < GEN_PB_CLOCK_COUNT; ++i)
            m_values[i] = std::max<std::int64_t>(m_values[i], 0);
    }

    /// Sets negative clocks to 0 and counts an error for each of them.
    void count_backward_clocks()
    {
        for (std::size_t i = 0; i < GEN_PB_CLOCK_COUNT; ++i)
            if (m_values[i] < 0) {
                m_values[i] = 0;
                ++m_errors[i];
            }
    }
};

inline double gen_pb_seconds_of_nsec(std::int64_t nsec)
{
    return static_cast<double>(nsec) / 1e9;
}

/// Bytes in MiB, in double precision.
inline double gen_pb_mib(std::int64_t bytes)
{
    return static_cast<double>(bytes) * (1.0 / 1024) * (1.0 / 1024);
}

#endif
