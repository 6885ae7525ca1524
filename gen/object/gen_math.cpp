#include "gen_math_sys.h"

#include "gen/base/gen_assert.h"

#include <algorithm>

template <typename T>
T GEN_MATH::gcd(T x, T y)
{
    T result = std::max(x, y);
    T divisor = std::min(x, y);
    while (divisor != 0) {
        T const remainder = result % divisor;
        result = divisor;
        divisor = remainder;
    }
    return result;
}

template <typename T>
T GEN_MATH::gcd(T x, T y, T z)
{
    return gcd(x, gcd(y, z));
}

template <typename T>
void GEN_MATH::gcd_simplify(T &x, T &y)
{
    T const divisor = gcd(x, y);
    if (divisor < 2)
        return;
    x /= divisor;
    y /= divisor;
}

template <typename T>
T GEN_MATH::lcm_of(T x, T y, bool &overflow)
{
    GEN_ASSERT(x != 0 || y != 0, "x != 0 || y != 0");
    return multiply_of(x, y / gcd(x, y), overflow);
}

template <typename T>
T GEN_MATH::lcm_of(T x, T y, T z, bool &overflow)
{
    GEN_ASSERT(x != 0 || y != 0 || z != 0, "x != 0 || y != 0 || z != 0");
    return multiply_of(multiply_of(x, y / gcd(x, y, z), overflow), z, overflow);
}

template <typename T>
void GEN_MATH::add_fractions_of(T numerator1, T denominator1, T numerator2, T denominator2, T &numerator,
                                T &denominator, bool &overflow)
{
    GEN_ASSERT(denominator1 != 0 && denominator2 != 0, "denominator1 != 0 && denominator2 != 0");
    T const common = lcm_of(denominator1, denominator2, overflow);
    T const second = multiply_of(numerator2, common / denominator2, overflow);
    T const first = multiply_of(numerator1, common / denominator1, overflow);
    numerator = add_of(first, second, overflow);
    denominator = common;
    gcd_simplify(numerator, denominator);
}

// Used only inside the library.
template int GEN_MATH::lcm_of(int, int, bool &);
template std::int64_t GEN_MATH::lcm_of(std::int64_t, std::int64_t, bool &);

// Exported, including the functions whose definitions callers see.
template GEN_API int GEN_MATH::add_of(int, int, bool &);
template GEN_API std::int64_t GEN_MATH::add_of(std::int64_t, std::int64_t, bool &);
template GEN_API int GEN_MATH::subtract_of(int, int, bool &);
template GEN_API std::int64_t GEN_MATH::subtract_of(std::int64_t, std::int64_t, bool &);
template GEN_API int GEN_MATH::multiply_of(int, int, bool &);
template GEN_API std::int64_t GEN_MATH::multiply_of(std::int64_t, std::int64_t, bool &);
template GEN_API int GEN_MATH::gcd(int, int);
template GEN_API std::int64_t GEN_MATH::gcd(std::int64_t, std::int64_t);
template GEN_API int GEN_MATH::gcd(int, int, int);
template GEN_API std::int64_t GEN_MATH::gcd(std::int64_t, std::int64_t, std::int64_t);
template GEN_API void GEN_MATH::gcd_simplify(int &, int &);
template GEN_API void GEN_MATH::gcd_simplify(std::int64_t &, std::int64_t &);
template GEN_API std::int64_t GEN_MATH::lcm_of(std::int64_t, std::int64_t, std::int64_t, bool &);
template GEN_API void GEN_MATH::add_fractions_of(int, int, int, int, int &, int &, bool &);
template GEN_API void GEN_MATH::add_fractions_of(std::int64_t, std::int64_t, std::int64_t, std::int64_t, std::int64_t &,
                                                 std::int64_t &, bool &);
