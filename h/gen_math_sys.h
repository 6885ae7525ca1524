// Integer arithmetic that reports overflow, for int and std::int64_t. There is no state; any thread may call any
// function.
//
// The functions named _of set their flag to true on overflow and never set it to false: set it to false once, run a
// chain of operations, and test it at the end. A result that doesn't fit is wrapped modulo 2^32 or 2^64.
//
//     bool overflow = false;
//     int const area = GEN_MATH::multiply_of(width, height, overflow);
//     int const total = GEN_MATH::add_of(area, border, overflow);
//     if (overflow) ...
//
// Divisions are not checked: if the most negative value is divided by -1, the process ends with the processor's
// division fault, as in a division by zero. This can happen in gcd() and in the functions that use it.
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
    /// a + b; the flag is set if and only if the sum doesn't fit.
    template <typename T>
    static T add_of(T a, T b, bool &overflow);

    /// a - b; the flag is set if and only if the difference doesn't fit.
    template <typename T>
    static T subtract_of(T a, T b, bool &overflow);

    /// a * b; the flag is set if the product doesn't fit, and also in these cases in which it fits:
    ///
    /// - for int, if the product is the most negative value: -65536 * 32768;
    /// - for std::int64_t, if the magnitudes of a and b together have more than 63 bits, even if the product is small:
    ///   1 * 2^62 (1 + 63 bits), 2^31 * 2^31 (32 + 32), 0 * -2^63 (0 + 64).
    template <typename T>
    static T multiply_of(T a, T b, bool &overflow);

    /// The greatest common divisor by Euclid's algorithm with the remainders of C++, so that its sign depends on those
    /// of the arguments; 0 for two zeros.
    ///
    ///     (4, 6) -> 2    (4, -6) -> -2    (-4, 6) -> 2    (-4, -6) -> -2    (0, -6) -> -6
    template <typename T>
    GEN_API static T gcd(T x, T y);

    /// gcd(x, gcd(y, z))
    template <typename T>
    GEN_API static T gcd(T x, T y, T z);

    /// Divides both by their gcd() if that is 2 or more; a negative gcd() changes nothing.
    ///
    ///     (-4, 6) -> (-2, 3)    (4, -6) -> (4, -6)
    template <typename T>
    GEN_API static void gcd_simplify(T &x, T &y);

    /// x * (y / gcd(x, y, z)) * z, with multiply_of() for each product: a common multiple, but in general not the least
    /// one. If all three are 0, it is the internal error "x != 0 || y != 0 || z != 0".
    ///
    ///     (2, 4, 8) -> 32
    template <typename T>
    GEN_API static T lcm_of(T x, T y, T z, bool &overflow);

    /// Stores numerator1 / denominator1 + numerator2 / denominator2 over a common denominator in `numerator` and
    /// `denominator`, after gcd_simplify(). A denominator of 0 is the internal error
    /// "denominator1 != 0 && denominator2 != 0". The resulting denominator may be negative.
    ///
    ///     1/2 + 1/3 -> 5/6
    template <typename T>
    GEN_API static void add_fractions_of(T numerator1, T denominator1, T numerator2, T denominator2, T &numerator,
                                         T &denominator, bool &overflow);

private:
    template <typename T>
    static constexpr bool IS_PROVIDED = std::is_same_v<T, int> || std::is_same_v<T, std::int64_t>;

    // The least common multiple, of either sign; x and y must not both be 0.
    template <typename T>
    static T lcm_of(T x, T y, bool &overflow);

    // The number of significant bits of the magnitude, 64 for the most negative value. A binary search for the most
    // significant bit, without special instructions, so that it costs the same on every processor.
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

// These three are defined here, so that they are inlined: each is cheaper than a call.

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
