// Integer arithmetic that tells overflow, for int and std::int64_t. Stateless; any thread may call anything.
//
// The flag of the functions named _of is sticky: set it to false once, run a chain of operations, and look at it at the
// end. An operation that overflows sets it and none clears it. It changes no result: what doesn't fit is always
// wrapped, modulo two to the width of the type.
//
//     bool overflow = false;
//     int const area = GEN_MATH::multiply_of(width, height, overflow);
//     int const total = GEN_MATH::add_of(area, border, overflow);
//     if (overflow) ...
//
// Divisions have no guard: where the most negative value comes to be divided by -1, the process ends with the
// processor's division fault, as by a division by zero. gcd() and what is built on it can come to that.
#ifndef GEN_MATH_SYS_H
#define GEN_MATH_SYS_H

#include "zel_export_sys.h"

#include <cstdint>
#include <limits>
#include <type_traits>

/// | function                                  | for int | for std::int64_t |
/// |-------------------------------------------|---------|------------------|
/// | add_of(), subtract_of(), multiply_of()    | yes     | yes              |
/// | gcd(), of two or three; gcd_simplify()    | yes     | yes              |
/// | lcm_of(), of three                        | no      | yes              |
/// | add_fractions_of()                        | yes     | yes              |
class GEN_MATH
{
public:
    /// a + b; the flag is exact.
    template <typename T>
    static T add_of(T a, T b, bool &overflow);

    /// a - b; the flag is exact.
    template <typename T>
    static T subtract_of(T a, T b, bool &overflow);

    /// a * b; the flag is stricter than exact. It is set whenever the product doesn't fit, and also
    ///
    /// - for int, if the product is the most negative value: -65536 * 32768;
    /// - for std::int64_t, if the magnitudes of a and b have more than 63 bits together, whatever the product:
    ///   1 * 2^62 (1 + 63 bits), 2^31 * 2^31 (32 + 32), 0 * -2^63 (0 + 64).
    template <typename T>
    static T multiply_of(T a, T b, bool &overflow);

    /// A greatest common divisor by Euclid's algorithm with the remainders of C++, so that its sign follows from the
    /// arguments; 0 for two zeros.
    ///
    ///     (4, 6) -> 2    (4, -6) -> -2    (-4, 6) -> 2    (-4, -6) -> -2    (0, -6) -> -6
    template <typename T>
    GEN_API static T gcd(T x, T y);

    /// gcd(x, gcd(y, z))
    template <typename T>
    GEN_API static T gcd(T x, T y, T z);

    /// Divides both by their gcd(), unless that is below 2: a negative one leaves the pair as it is.
    ///
    ///     (-4, 6) -> (-2, 3)    (4, -6) -> (4, -6)
    template <typename T>
    GEN_API static void gcd_simplify(T &x, T &y);

    /// x * (y / gcd(x, y, z)) * z, each product by multiply_of(): a common multiple, and in general not the least one.
    /// All three 0 is an internal error.
    ///
    ///     (2, 4, 8) -> 32
    template <typename T>
    GEN_API static T lcm_of(T x, T y, T z, bool &overflow);

    /// numerator1 / denominator1 + numerator2 / denominator2 over a common denominator, then gcd_simplify(). A
    /// denominator of 0 is an internal error. Signs stay where the arithmetic puts them, also below the line.
    ///
    ///     1/2 + 1/3 -> 5/6
    template <typename T>
    GEN_API static void add_fractions_of(T numerator1, T denominator1, T numerator2, T denominator2, T &numerator,
                                         T &denominator, bool &overflow);

private:
    template <typename T>
    static constexpr bool IS_PROVIDED = std::is_same_v<T, int> || std::is_same_v<T, std::int64_t>;

    // The least common multiple but for its sign; x and y must not both be 0.
    template <typename T>
    static T lcm_of(T x, T y, bool &overflow);

    // Significant bits of the magnitude, 64 for the most negative value. Alike on every processor: of 64 bits the half
    // that the highest one is in, half of that, and so on.
    static int bit_length(std::int64_t value)
    {
        std::uint64_t magnitude = value < 0 ? -static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
        int length = 0;
        for (int half = 32; half != 0; half /= 2) {
            int const shift = magnitude >> half != 0 ? half : 0;
            magnitude >>= shift;
            length += shift;
        }
        return length + static_cast<int>(magnitude);
    }
};

// Callers see the definitions of these three, each of which costs less than a call.

template <typename T>
T GEN_MATH::add_of(T a, T b, bool &overflow)
{
    static_assert(IS_PROVIDED<T>);
    T sum;
    if (__builtin_add_overflow(a, b, &sum))
        overflow = true;
    return sum;
}

template <typename T>
T GEN_MATH::subtract_of(T a, T b, bool &overflow)
{
    static_assert(IS_PROVIDED<T>);
    T difference;
    if (__builtin_sub_overflow(a, b, &difference))
        overflow = true;
    return difference;
}

template <typename T>
T GEN_MATH::multiply_of(T a, T b, bool &overflow)
{
    static_assert(IS_PROVIDED<T>);
    if constexpr (std::is_same_v<T, int>) {
        std::int64_t const product = std::int64_t{a} * b;
        if (product > std::numeric_limits<int>::max() || product < -std::numeric_limits<int>::max())
            overflow = true;
        return static_cast<int>(product);
    } else {
        if (bit_length(a) + bit_length(b) > std::numeric_limits<T>::digits)
            overflow = true;
        return static_cast<T>(static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b));
    }
}

#endif
