#include "gen_time_sys.h"

#include "tests/support/internal_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <list>
#include <ostream>
#include <string>
#include <type_traits>

using testing::ExitedWithCode;

namespace {

struct Row
{
    int key;
    std::string short_name;
    std::string long_name;
    int magnitude;

    bool operator==(Row const &other) const
    {
        return key == other.key && short_name == other.short_name && long_name == other.long_name &&
               magnitude == other.magnitude;
    }
};
std::ostream &operator<<(std::ostream &out, Row const &row)
{
    return out << row.key << ' ' << row.short_name << ' ' << row.long_name << ' ' << row.magnitude;
}

Row const UNITS[] = {
    {0, "s", "second", 0},       {1, "ms", "millisecond", -3}, {2, "us", "microsecond", -6},
    {3, "ns", "nanosecond", -9}, {4, "ps", "picosecond", -12},
};
Row const FREQS[] = {
    {0, "Hz", "hertz", 0},
    {1, "kHz", "kilohertz", 3},
    {2, "MHz", "megahertz", 6},
    {3, "GHz", "gigahertz", 9},
};

static_assert(GEN_TIME_UNIT::UNIT_SECOND == 0 && GEN_TIME_UNIT::UNIT_MILLISECOND == 1 &&
              GEN_TIME_UNIT::UNIT_MICROSECOND == 2 && GEN_TIME_UNIT::UNIT_NANOSECOND == 3 &&
              GEN_TIME_UNIT::UNIT_PICOSECOND == 4);
static_assert(GEN_TIME_FREQ::FREQ_HERTZ == 0 && GEN_TIME_FREQ::FREQ_KILOHERTZ == 1 &&
              GEN_TIME_FREQ::FREQ_MEGAHERTZ == 2 && GEN_TIME_FREQ::FREQ_GIGAHERTZ == 3);
static_assert(std::is_empty_v<GEN_TIME_UNIT> && std::is_trivially_copyable_v<GEN_TIME_UNIT>);
static_assert(std::is_empty_v<GEN_TIME_FREQ> && std::is_trivially_copyable_v<GEN_TIME_FREQ>);

// The members are in the order of these initialisers.
constexpr GEN_TIME_UNIT_DATA UNIT_MEMBERS = {GEN_TIME_UNIT::UNIT_NANOSECOND, "short", "long", -9};
static_assert(UNIT_MEMBERS.unit == 3 && UNIT_MEMBERS.short_name[0] == 's' && UNIT_MEMBERS.long_name[0] == 'l' &&
              UNIT_MEMBERS.magnitude == -9);
constexpr GEN_TIME_FREQ_DATA FREQ_MEMBERS = {GEN_TIME_FREQ::FREQ_GIGAHERTZ, "short", "long", 9};
static_assert(FREQ_MEMBERS.freq == 3 && FREQ_MEMBERS.short_name[0] == 's' && FREQ_MEMBERS.long_name[0] == 'l' &&
              FREQ_MEMBERS.magnitude == 9);

Row row_of(GEN_TIME_UNIT_DATA const &data)
{
    return {data.unit, data.short_name, data.long_name, data.magnitude};
}
Row row_of(GEN_TIME_FREQ_DATA const &data)
{
    return {data.freq, data.short_name, data.long_name, data.magnitude};
}

// One table under test, so that each test is written once for both.
struct UnitTable
{
    using Class = GEN_TIME_UNIT;
    using Key = GEN_TIME_UNIT::UNIT_ENUM;
    using Data = GEN_TIME_UNIT_DATA;
    static constexpr char const *NAME = "unit";
    static constexpr int COUNT = 5;
    static constexpr Row const *ROWS = UNITS;
    static constexpr char const *FAULT = "Could not find index for time unit enum.";
};
struct FreqTable
{
    using Class = GEN_TIME_FREQ;
    using Key = GEN_TIME_FREQ::FREQ_ENUM;
    using Data = GEN_TIME_FREQ_DATA;
    static constexpr char const *NAME = "freq";
    static constexpr int COUNT = 4;
    static constexpr Row const *ROWS = FREQS;
    static constexpr char const *FAULT = "Could not find index for time freq enum.";
};

template <typename Table>
class GenTimeTable : public testing::Test
{
};
template <typename Table>
class GenTimeTableDeathTest : public testing::Test
{
};
struct TableName
{
    template <typename Table>
    static std::string GetName(int)
    {
        return Table::NAME;
    }
};
using Tables = testing::Types<UnitTable, FreqTable>;
TYPED_TEST_SUITE(GenTimeTable, Tables, TableName);
TYPED_TEST_SUITE(GenTimeTableDeathTest, Tables, TableName);

} // namespace

TYPED_TEST(GenTimeTable, ListsItsRowsInOrder)
{
    std::list<typename TypeParam::Data> rows;
    EXPECT_EQ(TypeParam::Class::get_entire_list(&rows), TypeParam::COUNT);
    ASSERT_EQ(rows.size(), std::size_t{TypeParam::COUNT});
    Row const *expected = TypeParam::ROWS;
    for (typename TypeParam::Data const &row : rows)
        EXPECT_EQ(row_of(row), *expected++);
}

TYPED_TEST(GenTimeTable, AppendsRowsToWhatAListHas)
{
    std::list<typename TypeParam::Data> rows;
    TypeParam::Class::get_entire_list(&rows);
    EXPECT_EQ(TypeParam::Class::get_entire_list(&rows), TypeParam::COUNT);
    EXPECT_EQ(rows.size(), std::size_t{2 * TypeParam::COUNT});
    EXPECT_EQ(row_of(rows.back()), TypeParam::ROWS[TypeParam::COUNT - 1]);
    EXPECT_EQ(row_of(rows.front()), TypeParam::ROWS[0]);
}

TYPED_TEST(GenTimeTable, AppendsNamesToWhatAListHas)
{
    std::list<std::string> expected_long = {"one", "two"};
    std::list<std::string> expected_short = expected_long;
    std::list<std::string> long_names = expected_long;
    std::list<std::string> short_names = expected_short;
    for (int i = 0; i < TypeParam::COUNT; ++i) {
        expected_long.push_back(TypeParam::ROWS[i].long_name);
        expected_short.push_back(TypeParam::ROWS[i].short_name);
    }
    EXPECT_EQ(TypeParam::Class::get_long_name_list(&long_names), TypeParam::COUNT);
    EXPECT_EQ(TypeParam::Class::get_short_name_list(&short_names), TypeParam::COUNT);
    EXPECT_EQ(long_names, expected_long);
    EXPECT_EQ(short_names, expected_short);
}

TYPED_TEST(GenTimeTable, IsRightForEachKey)
{
    for (int i = 0; i < TypeParam::COUNT; ++i) {
        Row const &row = TypeParam::ROWS[i];
        auto const key = static_cast<typename TypeParam::Key>(row.key);
        EXPECT_EQ(TypeParam::Class::get_long_name(key), row.long_name) << row;
        EXPECT_EQ(TypeParam::Class::get_short_name(key), row.short_name) << row;
        EXPECT_EQ(TypeParam::Class::get_magnitude(key), row.magnitude) << row;
    }
}

TYPED_TEST(GenTimeTableDeathTest, AKeyOfNoRowIsAnInternalError)
{
    using Key = typename TypeParam::Key;
    using Class = typename TypeParam::Class;
    auto const fault = dies_with(TypeParam::FAULT, "gen_time_units");
    auto const past_the_end = static_cast<Key>(TypeParam::COUNT);
    EXPECT_EXIT(Class::get_long_name(past_the_end), ExitedWithCode(INTERNAL_ERROR_STATUS), fault);
    EXPECT_EXIT(Class::get_short_name(past_the_end), ExitedWithCode(INTERNAL_ERROR_STATUS), fault);
    EXPECT_EXIT(Class::get_magnitude(past_the_end), ExitedWithCode(INTERNAL_ERROR_STATUS), fault);
    EXPECT_EXIT(Class::get_magnitude(static_cast<Key>(-1)), ExitedWithCode(INTERNAL_ERROR_STATUS), fault);
    EXPECT_EXIT(Class::get_magnitude(static_cast<Key>(std::numeric_limits<int>::max())),
                ExitedWithCode(INTERNAL_ERROR_STATUS), fault);
}
