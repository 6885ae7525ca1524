// The checked arithmetic compared with exact arithmetic of 128 bits, over boundary values and random pairs.
#include "gen_math_sys.h"

#include "tests/support/internal_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <numeric>
#include <optional>
#include <ostream>
#include <random>
#include <string>
#include <vector>

using testing::ExitedWithCode;

namespace {

__extension__ using Exact = __int128;

template <typename T>
constexpr T LEAST = std::numeric_limits<T>::min();
template <typename T>
constexpr T GREATEST = std::numeric_limits<T>::max();

template <typename T>
bool fits(Exact value)
{
    return LEAST<T> <= value && value <= GREATEST<T>;
}

// Significant bits of the magnitude, by the processor's own count.
int bit_length(std::int64_t value)
{
    std::uint64_t const magnitude =
        value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    return magnitude == 0 ? 0 : 64 - __builtin_clzll(magnitude);
}

// The products that fit and yet count as an overflow. There are no others: add_of() and subtract_of() are exact, and
// nothing that doesn't fit is passed over.
bool is_refused_product(int a, int b)
{
    return Exact{a} * b == LEAST<int>;
}
bool is_refused_product(std::int64_t a, std::int64_t b)
{
    return bit_length(a) + bit_length(b) > 63;
}

// The number of comparisons so far, and the first wrong result.
struct Comparison
{
    std::uint64_t pair_count = 0;
    std::uint64_t overflow_count = 0; // of sums, differences and products
    std::uint64_t refused_count = 0;  // products that fit
    std::string fault;
};

template <typename T>
void compare(Comparison &comparison, char const *what, T a, T b, T result, bool overflow, Exact exact, bool is_refused)
{
    bool const is_overflow = !fits<T>(exact);
    comparison.overflow_count += is_overflow;
    comparison.refused_count += !is_overflow && is_refused;
    if (result == static_cast<T>(exact) && overflow == (is_overflow || is_refused))
        return;
    comparison.fault = std::string(what) + ' ' + std::to_string(a) + ", " + std::to_string(b) + " gives " +
                       std::to_string(result) + (overflow ? " and an overflow" : " and no overflow");
}

template <typename T>
void compare_pair(Comparison &comparison, T a, T b)
{
    ++comparison.pair_count;
    bool overflow = false;
    T result = GEN_MATH::add_of(a, b, overflow);
    compare(comparison, "add_of", a, b, result, overflow, Exact{a} + b, false);
    overflow = false;
    result = GEN_MATH::subtract_of(a, b, overflow);
    compare(comparison, "subtract_of", a, b, result, overflow, Exact{a} - b, false);
    overflow = false;
    result = GEN_MATH::multiply_of(a, b, overflow);
    compare(comparison, "multiply_of", a, b, result, overflow, Exact{a} * b, is_refused_product(a, b));
}

// All powers of two and their neighbours, the ends of the type, and the roots of the greatest value.
template <typename T>
std::vector<T> boundary_values()
{
    std::vector<T> values = {0, LEAST<T>, LEAST<T> + 1, GREATEST<T>, GREATEST<T> - 1};
    for (int bit = 0; bit < std::numeric_limits<T>::digits; ++bit)
        for (T const near : {-1, 0, 1}) {
            values.push_back((T{1} << bit) + near);
            values.push_back(-(T{1} << bit) - near);
        }
    T const root = sizeof(T) == 4 ? T{46340} : static_cast<T>(3037000499);
    for (T const near : {-1, 0, 1, 2}) {
        values.push_back(root + near);
        values.push_back(-root - near);
    }
    return values;
}

// Numbers of every length alike.
template <typename T>
class RandomNumbers
{
public:
    T next()
    {
        constexpr int SHORTEST_SHIFT = 64 - std::numeric_limits<T>::digits;
        std::uint64_t const drawn = m_engine();
        auto const magnitude = static_cast<T>(m_engine() >> (SHORTEST_SHIFT + drawn % std::numeric_limits<T>::digits));
        return (drawn >> 32) % 2 == 0 ? magnitude : static_cast<T>(-1 - magnitude);
    }

private:
    std::mt19937_64 m_engine{20261114};
};

// The steps of gcd() one by one; nothing where one would divide the most negative value by -1.
template <typename T>
std::optional<T> remainder(T dividend, T divisor)
{
    if (dividend == LEAST<T> && divisor == -1)
        return std::nullopt;
    return dividend % divisor;
}

template <typename T>
std::optional<T> stepwise_gcd(T x, T y)
{
    if (x == 0)
        return y;
    if (y == 0)
        return x;
    std::optional<T> b = x < y ? remainder(y, x) : y;
    if (b == T{0})
        return x;
    std::optional<T> a = x;
    for (;;) {
        if (!b || !(a = remainder(*a, *b)))
            return std::nullopt;
        if (*a == 0)
            return b;
        if (!(b = remainder(*b, *a)))
            return std::nullopt;
        if (*b == 0)
            return a;
    }
}

template <typename T>
std::string gcd_fault(T x, T y)
{
    std::optional<T> const expected = stepwise_gcd(x, y);
    if (!expected) // ends the process, see the death tests
        return {};
    T const result = GEN_MATH::gcd(x, y);
    if (result == *expected)
        return {};
    return "gcd " + std::to_string(x) + ", " + std::to_string(y) + " gives " + std::to_string(result);
}

template <typename T>
class GenMath : public testing::Test
{
};
template <typename T>
class GenMathDeathTest : public testing::Test
{
};
struct TypeName
{
    template <typename T>
    static std::string GetName(int)
    {
        return sizeof(T) == 4 ? "int" : "int64";
    }
};
using Types = testing::Types<int, std::int64_t>;
TYPED_TEST_SUITE(GenMath, Types, TypeName);
TYPED_TEST_SUITE(GenMathDeathTest, Types, TypeName);

} // namespace

// Sums, differences, products.

TYPED_TEST(GenMath, DiffersFromExactArithmeticOnlyWhereReported)
{
    Comparison boundary;
    std::vector<TypeParam> const values = boundary_values<TypeParam>();
    for (TypeParam const a : values)
        for (TypeParam const b : values)
            compare_pair(boundary, a, b);
    EXPECT_EQ(boundary.fault, "");
    EXPECT_GT(boundary.overflow_count, boundary.pair_count / 100);
    EXPECT_GT(boundary.refused_count, 0U);

    constexpr std::uint64_t RANDOM_PAIRS = 10000000;
    Comparison random;
    RandomNumbers<TypeParam> numbers;
    while (random.pair_count < RANDOM_PAIRS) {
        TypeParam const a = numbers.next();
        compare_pair(random, a, numbers.next());
    }
    EXPECT_EQ(random.fault, "");
    EXPECT_GT(random.overflow_count, RANDOM_PAIRS / 10);
}

TYPED_TEST(GenMath, TheFlagIsStickyAndChangesNoResult)
{
    using Operation = TypeParam (*)(TypeParam, TypeParam, bool &);
    constexpr Operation OPERATIONS[] = {&GEN_MATH::add_of<TypeParam>, &GEN_MATH::subtract_of<TypeParam>,
                                        &GEN_MATH::multiply_of<TypeParam>};
    std::vector<TypeParam> const values = boundary_values<TypeParam>();
    for (Operation const operation : OPERATIONS)
        for (TypeParam const a : values)
            for (TypeParam const b : values) {
                bool fresh = false;
                bool set = true;
                TypeParam const result = operation(a, b, fresh);
                ASSERT_EQ(operation(a, b, set), result) << a << ", " << b;
                ASSERT_TRUE(set) << a << ", " << b;
            }
}

namespace {

template <typename T>
struct OperationCase
{
    T (*operation)(T, T, bool &);
    T a;
    T b;
    T result;
    bool overflow;
};

template <typename T>
void expect_case(OperationCase<T> const &c)
{
    bool overflow = false;
    EXPECT_EQ(c.operation(c.a, c.b, overflow), c.result) << c.a << ", " << c.b;
    EXPECT_EQ(overflow, c.overflow) << c.a << ", " << c.b;
}

} // namespace

TEST(GenMathOfInt, WrapsAndReports)
{
    constexpr auto ADD = &GEN_MATH::add_of<int>;
    constexpr auto SUBTRACT = &GEN_MATH::subtract_of<int>;
    constexpr auto MULTIPLY = &GEN_MATH::multiply_of<int>;
    constexpr int MIN = LEAST<int>;
    constexpr int MAX = GREATEST<int>;
    OperationCase<int> const cases[] = {
        {ADD, MAX, 1, MIN, true},
        {ADD, MIN, -1, MAX, true},
        {ADD, MIN, MIN, 0, true},
        {ADD, MAX, MIN, -1, false},
        {SUBTRACT, 0, MIN, MIN, true},
        {SUBTRACT, -1, MIN, MAX, false},
        {SUBTRACT, MIN, 1, MAX, true},
        {MULTIPLY, 46341, 46341, -2147479015, true},
        {MULTIPLY, 46340, 46340, 2147395600, false},
        {MULTIPLY, -1, MIN, MIN, true},
        {MULTIPLY, MIN, MIN, 0, true},
        {MULTIPLY, 0, MIN, 0, false},
        {MULTIPLY, 0, 0, 0, false},
        // The most negative value is no product.
        {MULTIPLY, -65536, 32768, MIN, true},
        {MULTIPLY, 1, MIN, MIN, true},
        {MULTIPLY, 2, -1073741824, MIN, true},
        {MULTIPLY, 1, MIN + 1, MIN + 1, false},
        {MULTIPLY, -1, MAX, -MAX, false},
    };
    for (OperationCase<int> const &c : cases)
        expect_case(c);
}

TEST(GenMathOfInt64, WrapsAndReports)
{
    using T = std::int64_t;
    constexpr auto ADD = &GEN_MATH::add_of<T>;
    constexpr auto SUBTRACT = &GEN_MATH::subtract_of<T>;
    constexpr auto MULTIPLY = &GEN_MATH::multiply_of<T>;
    constexpr T MIN = LEAST<T>;
    constexpr T MAX = GREATEST<T>;
    constexpr T ONE = 1;
    OperationCase<T> const cases[] = {
        {ADD, MAX, 1, MIN, true},
        {SUBTRACT, 0, MIN, MIN, true},
        {SUBTRACT, -1, MIN, MAX, false},
        {MULTIPLY, 0, 0, 0, false},
        {MULTIPLY, 1, ONE << 61, ONE << 61, false},               // 1 + 62 bits
        {MULTIPLY, ONE << 31, ONE << 30, ONE << 61, false},       // 32 + 31
        {MULTIPLY, -(ONE << 31), ONE << 30, -(ONE << 61), false}, // 32 + 31
        {MULTIPLY, 0, MAX, 0, false},                             // 0 + 63
        {MULTIPLY, MIN, MIN, 0, true},
        {MULTIPLY, ONE << 32, ONE << 32, 0, true},
        {MULTIPLY, -1, MIN, MIN, true},
        // The lengths alone decide, so these don't count as fitting.
        {MULTIPLY, 1, ONE << 62, ONE << 62, true},         // 1 + 63
        {MULTIPLY, 3, ONE << 61, (ONE << 61) * 3, true},   // 2 + 62
        {MULTIPLY, ONE << 31, ONE << 31, ONE << 62, true}, // 32 + 32
        {MULTIPLY, 1, MAX, MAX, true},                     // 1 + 63
        {MULTIPLY, 1, MIN, MIN, true},                     // 1 + 64
        {MULTIPLY, 0, MIN, 0, true},                       // 0 + 64
        {MULTIPLY, MIN, 0, 0, true},
    };
    for (OperationCase<T> const &c : cases)
        expect_case(c);
}

TEST(GenMathOfInt, AChainReportsAtItsEnd)
{
    bool overflow = true;
    EXPECT_EQ(GEN_MATH::add_of(1, 1, overflow), 2);
    EXPECT_TRUE(overflow);

    overflow = false;
    int value = GEN_MATH::add_of(GREATEST<int>, 1, overflow);
    value = GEN_MATH::subtract_of(value, 1, overflow); // back in range
    EXPECT_EQ(value, GREATEST<int>);
    EXPECT_TRUE(overflow);
}

// Greatest common divisors.

TYPED_TEST(GenMath, GcdFollowsTheSteps)
{
    std::string fault;
    for (TypeParam x = -60; x <= 60; ++x)
        for (TypeParam y = -60; y <= 60; ++y)
            fault += gcd_fault(x, y);
    std::vector<TypeParam> const values = boundary_values<TypeParam>();
    for (TypeParam const x : values)
        for (TypeParam const y : values)
            fault += gcd_fault(x, y);
    RandomNumbers<TypeParam> numbers;
    for (int i = 0; i < 200000; ++i) {
        TypeParam const x = numbers.next();
        fault += gcd_fault(x, numbers.next());
    }
    EXPECT_EQ(fault, "");
}

TYPED_TEST(GenMath, GcdIsGreatestButForItsSign)
{
    for (TypeParam x = -60; x <= 60; ++x)
        for (TypeParam y = -60; y <= 60; ++y) {
            TypeParam const result = GEN_MATH::gcd(x, y);
            ASSERT_EQ(result < 0 ? -result : result, std::gcd(x, y)) << x << ", " << y;
        }
}

TYPED_TEST(GenMath, GcdHasASignOfItsOwn)
{
    struct Case
    {
        TypeParam x;
        TypeParam y;
        TypeParam gcd;
    };
    constexpr Case CASES[] = {
        {0, 0, 0},
        {0, 5, 5},
        {5, 0, 5},
        {0, -5, -5},
        {-5, 0, -5},
        {4, 6, 2},
        {6, 4, 2},
        {4, -6, -2},
        {-4, 6, 2},
        {6, -4, 2},
        {-6, 4, -2},
        {4, 4, 4},
        {-4, -4, -4},
        {4, -4, -4},
        {-4, 4, -4},
        {-4, -6, -2},
        {1, 7, 1},
        {-1, 7, -1},
        {7, -1, -1},
        {1, LEAST<TypeParam>, 1},
        {LEAST<TypeParam>, 1, 1},
        {LEAST<TypeParam>, LEAST<TypeParam>, LEAST<TypeParam>},
        {0, LEAST<TypeParam>, LEAST<TypeParam>},
    };
    for (Case const &c : CASES)
        EXPECT_EQ(GEN_MATH::gcd(c.x, c.y), c.gcd) << c.x << ", " << c.y;
}

TYPED_TEST(GenMath, GcdOfThreeIsThatOfTheFirstAndTheGcdOfTheOthers)
{
    for (TypeParam x = -12; x <= 12; ++x)
        for (TypeParam y = -12; y <= 12; ++y)
            for (TypeParam z = -12; z <= 12; ++z)
                ASSERT_EQ(GEN_MATH::gcd(x, y, z), *stepwise_gcd(x, *stepwise_gcd(y, z))) << x << ", " << y << ", " << z;
    EXPECT_EQ((GEN_MATH::gcd<TypeParam>(12, 18, 30)), 6);
    EXPECT_EQ((GEN_MATH::gcd<TypeParam>(0, 0, 0)), 0);
    EXPECT_EQ((GEN_MATH::gcd<TypeParam>(0, 0, -7)), -7);
}

TYPED_TEST(GenMath, GcdSimplifyDividesByADivisorFromTwoOn)
{
    struct Case
    {
        TypeParam x;
        TypeParam y;
        TypeParam simple_x;
        TypeParam simple_y;
    };
    constexpr Case CASES[] = {
        {4, 6, 2, 3},   {-4, 6, -2, 3}, {4, -6, 4, -6},                 // a divisor of -2
        {-6, 4, -6, 4}, {6, -4, 3, -2}, {-4, -6, -4, -6}, {5, 7, 5, 7}, // a divisor of 1
        {-1, 7, -1, 7},                                                 // of -1
        {0, 0, 0, 0},   {0, 5, 0, 1},   {5, 0, 1, 0},     {0, 1, 0, 1}, {0, -5, 0, -5}, {-5, 0, -5, 0}, {9, 9, 1, 1},
    };
    for (Case const &c : CASES) {
        TypeParam x = c.x;
        TypeParam y = c.y;
        GEN_MATH::gcd_simplify(x, y);
        EXPECT_EQ(x, c.simple_x) << c.x << ", " << c.y;
        EXPECT_EQ(y, c.simple_y) << c.x << ", " << c.y;
    }
}

// Common multiples.

TEST(GenMathOfInt64, LcmOfThreeDividesOnceOnly)
{
    struct Case
    {
        std::int64_t x;
        std::int64_t y;
        std::int64_t z;
        std::int64_t multiple;
        bool overflow;
    };
    constexpr std::int64_t MIN = LEAST<std::int64_t>;
    constexpr std::int64_t TWO_32 = std::int64_t{1} << 32;
    constexpr std::int64_t TWO_62 = std::int64_t{1} << 62;
    constexpr Case CASES[] = {
        {1, 1, 1, 1, false},
        {2, 4, 8, 32, false},
        {6, 4, 2, 24, false},
        {4, 6, 10, 120, false},
        {3, 5, 7, 105, false},
        {0, 0, 5, 0, false},
        {5, 0, 0, 0, false},
        {0, 5, 0, 0, false},
        {-2, 4, 8, 32, false}, // by a divisor of -2
        {2, -4, 8, -32, false},
        {2, 4, -8, -32, false},
        {TWO_32, 3, TWO_32, 0, true},
        {TWO_32, TWO_32, 1, 0, true},
        {0, 5, MIN, 0, true}, // 0 + 64 bits
        // The first two are multiplied first.
        {0, 3, TWO_62, 0, false},
        {TWO_62, 3, 0, 0, true},
    };
    for (Case const &c : CASES) {
        bool overflow = false;
        EXPECT_EQ(GEN_MATH::lcm_of(c.x, c.y, c.z, overflow), c.multiple) << c.x << ", " << c.y << ", " << c.z;
        EXPECT_EQ(overflow, c.overflow) << c.x << ", " << c.y << ", " << c.z;
        overflow = true;
        EXPECT_EQ(GEN_MATH::lcm_of(c.x, c.y, c.z, overflow), c.multiple) << c.x << ", " << c.y << ", " << c.z;
        EXPECT_TRUE(overflow) << c.x << ", " << c.y << ", " << c.z;
    }
}

// Fractions.

namespace {

template <typename T>
struct Fraction
{
    T numerator;
    T denominator;
    bool overflow;

    bool operator==(Fraction const &other) const
    {
        return numerator == other.numerator && denominator == other.denominator && overflow == other.overflow;
    }
    friend std::ostream &operator<<(std::ostream &out, Fraction const &f)
    {
        return out << f.numerator << '/' << f.denominator << (f.overflow ? " overflow" : "");
    }
};

template <typename T>
Fraction<T> add_fractions(T numerator1, T denominator1, T numerator2, T denominator2, bool overflow = false)
{
    Fraction<T> sum{99, 99, overflow};
    GEN_MATH::add_fractions_of(numerator1, denominator1, numerator2, denominator2, sum.numerator, sum.denominator,
                               sum.overflow);
    return sum;
}

} // namespace

TYPED_TEST(GenMath, AddsFractions)
{
    struct Case
    {
        TypeParam numerator1;
        TypeParam denominator1;
        TypeParam numerator2;
        TypeParam denominator2;
        Fraction<TypeParam> sum;
    };
    constexpr Case CASES[] = {
        {1, 2, 1, 3, {5, 6, false}},
        {1, 2, 1, 2, {1, 1, false}},
        {1, 4, 1, 6, {5, 12, false}},
        {1, 2, -1, 2, {0, 1, false}},
        {0, 3, 0, 7, {0, 1, false}},
        {-1, 2, -1, 3, {-5, 6, false}},
        // Signs stay where the arithmetic puts them.
        {1, -2, 1, 3, {1, -6, false}},
        {1, 2, 1, -3, {1, 6, false}},
        {1, 4, 1, -6, {1, 12, false}},
        {2, -6, 1, -3, {4, -6, false}}, // by a divisor of -2
    };
    for (Case const &c : CASES) {
        EXPECT_EQ(add_fractions(c.numerator1, c.denominator1, c.numerator2, c.denominator2), c.sum)
            << c.numerator1 << '/' << c.denominator1 << " + " << c.numerator2 << '/' << c.denominator2;
        Fraction<TypeParam> const flagged =
            add_fractions(c.numerator1, c.denominator1, c.numerator2, c.denominator2, /*overflow=*/true);
        EXPECT_EQ(flagged, (Fraction<TypeParam>{c.sum.numerator, c.sum.denominator, true})) << c.sum;
    }
}

TEST(GenMathOfInt, AddFractionsReportsEachOverflow)
{
    EXPECT_EQ(add_fractions(1, 65536, 1, 65537), (Fraction<int>{1, 65536, true}));        // of the denominators
    EXPECT_EQ(add_fractions(1, 2, 1073741824, 3), (Fraction<int>{-2147483645, 6, true})); // of the second numerator
    EXPECT_EQ(add_fractions(1073741824, 2, 1, 3), (Fraction<int>{-1073741822, 6, true})); // of the first
    EXPECT_EQ(add_fractions(2147483647, 1, 1, 1), (Fraction<int>{LEAST<int>, 1, true}));  // of the sum
    EXPECT_EQ(add_fractions(2147483646, 1, 1, 1), (Fraction<int>{2147483647, 1, false}));
}

TYPED_TEST(GenMath, ASumOfFractionsWithoutOverflowIsExact)
{
    RandomNumbers<TypeParam> numbers;
    constexpr TypeParam LIMIT = sizeof(TypeParam) == 4 ? 1000 : 1000000;
    for (int i = 0; i < 100000; ++i) {
        TypeParam const n1 = numbers.next() % LIMIT;
        TypeParam const d1 = numbers.next() % LIMIT;
        TypeParam const n2 = numbers.next() % LIMIT;
        TypeParam const d2 = numbers.next() % LIMIT;
        if (d1 == 0 || d2 == 0)
            continue;
        Fraction<TypeParam> const sum = add_fractions(n1, d1, n2, d2);
        if (sum.overflow)
            continue;
        Exact const crosswise = (Exact{n1} * d2 + Exact{n2} * d1) * sum.denominator;
        ASSERT_TRUE(crosswise == Exact{sum.numerator} * d1 * d2)
            << n1 << '/' << d1 << " + " << n2 << '/' << d2 << " gives " << sum;
        ASSERT_LT(GEN_MATH::gcd(sum.numerator, sum.denominator), 2) << sum;
    }
}

// Faults.

TYPED_TEST(GenMathDeathTest, ADenominatorOfZeroIsAnInternalError)
{
    auto const fault = dies_with("denominator1 != 0 && denominator2 != 0", "gen_math");
    EXPECT_EXIT(add_fractions<TypeParam>(1, 0, 1, 3), ExitedWithCode(INTERNAL_ERROR_STATUS), fault);
    EXPECT_EXIT(add_fractions<TypeParam>(1, 3, 1, 0), ExitedWithCode(INTERNAL_ERROR_STATUS), fault);
    EXPECT_EXIT(add_fractions<TypeParam>(1, 0, 1, 0), ExitedWithCode(INTERNAL_ERROR_STATUS), fault);
}

TEST(GenMathOfInt64DeathTest, ACommonMultipleOfZerosIsAnInternalError)
{
    bool overflow = false;
    std::int64_t const zero = 0;
    EXPECT_EXIT(GEN_MATH::lcm_of(zero, zero, zero, overflow), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("x != 0 || y != 0 || z != 0", "gen_math"));
}

namespace {

// Ends a process by a division fault at once, where otherwise wine would start its debugger.
void catch_division_fault()
{
    std::signal(SIGFPE, [](int) { std::_Exit(EXIT_FAILURE); });
}

} // namespace

TEST(GenMathOfIntDeathTest, TheMostNegativeValueThroughMinusOneEndsTheProcess)
{
    EXPECT_FALSE(stepwise_gcd(-1, LEAST<int>));
    EXPECT_DEATH((catch_division_fault(), GEN_MATH::gcd(-1, LEAST<int>)), "");
    EXPECT_FALSE(stepwise_gcd(LEAST<int>, -1));
    EXPECT_DEATH((catch_division_fault(), GEN_MATH::gcd(LEAST<int>, -1)), "");
}

TEST(GenMathOfInt64DeathTest, TheMostNegativeDenominatorOverADivisorOfMinusOneEndsTheProcess)
{
    constexpr std::int64_t THREE = 3;
    EXPECT_EQ(GEN_MATH::gcd(-THREE, LEAST<std::int64_t>), -1);
    EXPECT_DEATH((catch_division_fault(), add_fractions<std::int64_t>(1, -THREE, 1, LEAST<std::int64_t>)), "");
}
