// Conversions between number types that are defined for every value.
#ifndef GEN_NUMERIC_H
#define GEN_NUMERIC_H

#include <cstdint>
#include <limits>

/// The whole part of `value`, cut towards zero. A value outside the range of 64 bits gives the nearest limit, and NaN
/// gives 0.
inline std::int64_t gen_truncate(double value)
{
    constexpr double LIMIT = 9223372036854775808.0; // 2^63, the first value that no longer fits
    if (value >= LIMIT)
        return std::numeric_limits<std::int64_t>::max();
    if (value >= -LIMIT)
        return static_cast<std::int64_t>(value);
    return value < -LIMIT ? std::numeric_limits<std::int64_t>::min() : 0;
}

#endif
