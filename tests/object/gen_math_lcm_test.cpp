// The common multiple of two, which only the addition of fractions uses: the source is compiled into this executable.
#include "gen_math_sys.h"

#include "tests/support/internal_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

using testing::ExitedWithCode;

namespace {

// An explicit instantiation may name a private member, which lcm_of() then gives for its tag.
struct OfInt
{
    using Number = int;
    using Member = Number (*)(Number, Number, bool &);
    friend Member lcm_of(OfInt);
};
struct OfInt64
{
    using Number = std::int64_t;
    using Member = Number (*)(Number, Number, bool &);
    friend Member lcm_of(OfInt64);
};
template <typename Tag, typename Tag::Member MEMBER>
struct Opened
{
    friend typename Tag::Member lcm_of(Tag) { return MEMBER; }
};
template struct Opened<OfInt, &GEN_MATH::lcm_of>;
template struct Opened<OfInt64, &GEN_MATH::lcm_of>;

template <typename T>
class GenMathLcm : public testing::Test
{
};
template <typename T>
class GenMathLcmDeathTest : public testing::Test
{
};
struct TypeName
{
    template <typename Tag>
    static std::string GetName(int)
    {
        return sizeof(typename Tag::Number) == 4 ? "int" : "int64";
    }
};
using Types = testing::Types<OfInt, OfInt64>;
TYPED_TEST_SUITE(GenMathLcm, Types, TypeName);
TYPED_TEST_SUITE(GenMathLcmDeathTest, Types, TypeName);

} // namespace

TYPED_TEST(GenMathLcm, KeepsASignWhereTheArithmeticPutsIt)
{
    using Number = typename TypeParam::Number;
    struct Case
    {
        Number x;
        Number y;
        Number multiple;
        bool overflow;
    };
    constexpr Number MAX = std::numeric_limits<Number>::max();
    constexpr Case CASES[] = {
        {4, 6, 12, false},
        {6, 4, 12, false},
        {1, 1, 1, false},
        {4, 4, 4, false},
        {4, -6, 12, false}, // by a divisor of -2
        {-4, 6, -12, false},
        {-6, 4, 12, false},   // by 2, by -2
        {-4, -6, -12, false}, // by -2
        {0, 5, 0, false},
        {5, 0, 0, false},
        {0, -5, 0, false},
        {-5, 0, 0, false},
        {MAX, MAX - 1, -MAX + 1, true},
    };
    for (Case const &c : CASES) {
        bool overflow = false;
        EXPECT_EQ(lcm_of(TypeParam())(c.x, c.y, overflow), c.multiple) << c.x << ", " << c.y;
        EXPECT_EQ(overflow, c.overflow) << c.x << ", " << c.y;
        overflow = true;
        EXPECT_EQ(lcm_of(TypeParam())(c.x, c.y, overflow), c.multiple) << c.x << ", " << c.y;
        EXPECT_TRUE(overflow) << c.x << ", " << c.y;
    }
}

TYPED_TEST(GenMathLcmDeathTest, ZerosAreAnInternalError)
{
    bool overflow = false;
    EXPECT_EXIT(lcm_of(TypeParam())(0, 0, overflow), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("x != 0 || y != 0", "gen_math"));
}
