#include "gen_iterator_sys.h"

#include "gen_path_sys.h"
#include "tests/support/internal_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::IsEmpty;

namespace {

enum class Level : std::int8_t
{
    LOWEST = -128,
    BELOW = -2,
    NONE = 0,
    ABOVE = 2,
    HIGHEST = 127,
};

template <typename Enum>
std::vector<int> values(Enum first, Enum end)
{
    std::vector<int> seen;
    for (Enum const value : GEN_ENUM_RANGE(first, end))
        seen.push_back(static_cast<int>(value));
    return seen;
}

} // namespace

TEST(GenEnumRange, GivesTheValuesFromTheFirstUpToTheEnd)
{
    EXPECT_THAT(values(Level::BELOW, Level::ABOVE), ElementsAre(-2, -1, 0, 1));
    EXPECT_THAT(values(GEN_LIB_VITAL, GEN_LIB_EDA_VIEWLOGIC), ElementsAre(19, 20, 21));
    EXPECT_EQ(values(Level::LOWEST, Level::HIGHEST).size(), 255U);
}

TEST(GenEnumRange, VisitsEveryLibraryTypeInOrder)
{
    int expected = 0;
    for (GEN_LIBRARY_TYPE const type : GEN_ENUM_RANGE(GEN_LIB_ROOT, GEN_LIB_SIZE))
        EXPECT_EQ(type, expected++);
    EXPECT_EQ(expected, 31);
}

TEST(GenEnumRange, IsEmptyWithoutAValueBelowTheEnd)
{
    EXPECT_THAT(values(Level::NONE, Level::NONE), IsEmpty());
    EXPECT_THAT(values(Level::ABOVE, Level::BELOW), IsEmpty());
    EXPECT_THAT(values(Level::LOWEST, Level::LOWEST), IsEmpty());
}

TEST(GenEnumRange, IsReadAtCompileTime)
{
    constexpr GEN_ENUM_RANGE RANGE(Level::BELOW, Level::NONE);
    static_assert(*RANGE.begin() == Level::BELOW && *++RANGE.begin() == static_cast<Level>(-1));
    static_assert(++ ++RANGE.begin() == RANGE.end());
}

TEST(GenEnumIterator, StepsAndCompares)
{
    GEN_ENUM_ITERATOR it(GEN_LIB_ROOT, GEN_LIB_VHDL);
    EXPECT_EQ(*it, GEN_LIB_ROOT);
    EXPECT_EQ(*it++, GEN_LIB_ROOT);
    EXPECT_EQ(*it, GEN_LIB_LIBRARIES);
    EXPECT_TRUE(it == GEN_ENUM_ITERATOR(GEN_LIB_LIBRARIES, GEN_LIB_VHDL));
    EXPECT_TRUE(it != GEN_ENUM_ITERATOR(GEN_LIB_ROOT, GEN_LIB_VHDL));
    EXPECT_TRUE(++it == GEN_ENUM_ITERATOR(GEN_LIB_VHDL, GEN_LIB_VHDL));
}

TEST(GenEnumIterator, StaysAtTheEnd)
{
    GEN_ENUM_ITERATOR it(Level::HIGHEST, Level::HIGHEST);
    GEN_ENUM_ITERATOR const end = it;
    EXPECT_TRUE(++it == end);
    EXPECT_TRUE(it++ == end);
    EXPECT_TRUE(it == end);
    EXPECT_TRUE(GEN_ENUM_ITERATOR(Level::ABOVE, Level::NONE) == GEN_ENUM_ITERATOR(Level::NONE, Level::NONE));
}

TEST(GenEnumIterator, WorksWithTheAlgorithms)
{
    GEN_ENUM_RANGE const range(GEN_LIB_ROOT, GEN_LIB_SIZE);
    EXPECT_EQ(std::distance(range.begin(), range.end()), 31);
    std::vector<GEN_LIBRARY_TYPE> const types(range.begin(), range.end());
    ASSERT_EQ(types.size(), 31U);
    EXPECT_EQ(types.back(), GEN_LIB_WYS_STUB);
}

TEST(GenEnumIteratorDeathTest, AnEndHasNoValue)
{
    auto const is_reported = dies_in_source("Cannot dereference an end enum iterator", "h/gen_iterator_sys.h");
    EXPECT_EXIT(*GEN_ENUM_RANGE(GEN_LIB_ROOT, GEN_LIB_SIZE).end(), ExitedWithCode(INTERNAL_ERROR_STATUS), is_reported);
    EXPECT_EXIT(*GEN_ENUM_RANGE(GEN_LIB_SIZE, GEN_LIB_ROOT).begin(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                is_reported);
    EXPECT_EXIT(*GEN_ENUM_ITERATOR<GEN_LIBRARY_TYPE>(), ExitedWithCode(INTERNAL_ERROR_STATUS), is_reported);
    EXPECT_EXIT(
        {
            GEN_ENUM_ITERATOR it(GEN_LIB_WYS_STUB, GEN_LIB_SIZE);
            *it++;
            *it;
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), is_reported);
}
