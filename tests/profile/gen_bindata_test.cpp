#include "gen_bindata_sys.h"

#include "tests/support/internal_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

using testing::ExitedWithCode;

namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();

// A histogram that lives to the end of the process: its destructor's check would fail.
GEN_BINDATA &kept(GEN_BINDATA *histogram)
{
    static auto &all = *new std::vector<GEN_BINDATA *>;
    all.push_back(histogram);
    return *histogram;
}

} // namespace

static_assert(!std::is_copy_constructible_v<GEN_BINDATA>);

TEST(GenBindata, PutsAValueIntoItsBin)
{
    struct Case
    {
        double low;
        double high;
        std::uint64_t num_bins;
        double item;
        std::uint64_t bin;
    };
    constexpr Case CASES[] = {
        {0, 10, 5, 0, 0},
        {0, 10, 5, 1.99, 0},
        {0, 10, 5, 2, 1},
        {0, 10, 5, 9.99, 4},
        {0, 10, 5, 10, 4}, // the upper bound belongs to the last bin
        {-1, 1, 4, -1, 0},
        {-1, 1, 4, -0.5, 1},
        {-1, 1, 4, 0, 2},
        {-1, 1, 4, 1, 3},
        {0, 1, 1, 0.5, 0},
        {0, 1, 1, 1, 0},
        {0, 1, 1000000, 0.9999999, 999999},
        // A range too narrow, or too wide, for the width of its bins.
        {0, std::numeric_limits<double>::denorm_min(), 5, std::numeric_limits<double>::denorm_min(), 4},
        {-1.7e308, 1.7e308, 2, 1.7e308, 1},
    };
    for (Case const &c : CASES) {
        GEN_BINDATA &histogram = kept(new GEN_BINDATA(c.low, c.high, c.num_bins));
        EXPECT_EQ(histogram.bin(c.item), c.bin) << c.item << " in " << c.low << ".." << c.high;
        EXPECT_EQ(histogram.size(), 0u);
        histogram.add_item(c.item);
        EXPECT_EQ(histogram.item_count(c.bin), 1u) << c.item;
        EXPECT_EQ(histogram.size(), 1u);
    }
}

TEST(GenBindata, CountsEachBin)
{
    GEN_BINDATA histogram(0, 10, 5);
    EXPECT_EQ(histogram.num_bins(), 5u);
    for (int i = 0; i <= 100; ++i)
        histogram.add_item(i / 10.0);
    EXPECT_EQ(histogram.size(), 101u);
    std::uint64_t const counts[] = {20, 20, 20, 20, 21};
    for (std::uint64_t bin = 0; bin < 5; ++bin)
        EXPECT_EQ(histogram.item_count(bin), counts[bin]) << bin;
}

TEST(GenBindata, HasBoundsForAnyNumber)
{
    GEN_BINDATA const histogram(-1, 1, 4);
    EXPECT_EQ(histogram.lowbound(0), -1.0);
    EXPECT_EQ(histogram.highbound(0), -0.5);
    EXPECT_EQ(histogram.lowbound(4), 1.0);
    EXPECT_EQ(histogram.highbound(1000), 499.5);
    EXPECT_EQ(histogram.highbound(std::numeric_limits<std::uint64_t>::max()), -1.0); // counted on from 0
}

TEST(GenBindata, MayHaveNoBins)
{
    GEN_BINDATA const histogram(0, 10, 0);
    EXPECT_EQ(histogram.num_bins(), 0u);
    EXPECT_EQ(histogram.size(), 0u);
    EXPECT_FALSE(std::isfinite(histogram.highbound(0)));
    EXPECT_EQ(histogram.bin(5), std::numeric_limits<std::uint64_t>::max()); // the one before 0
}

// The counts are released once, by the last of the two.
TEST(GenBindata, SharesItsCountsAfterAnAssignment)
{
    GEN_BINDATA histogram(0, 10, 5);
    {
        GEN_BINDATA other(0, 1, 2);
        other = histogram;
        EXPECT_EQ(other.num_bins(), 5u);
        EXPECT_EQ(other.highbound(0), 2.0);
    }
    histogram = *&histogram;
    histogram.add_item(3);
    EXPECT_EQ(histogram.item_count(1), 1u);
}

TEST(GenBindata, CountsIntoTheSameBinsAfterAnAssignment)
{
    GEN_BINDATA &histogram = kept(new GEN_BINDATA(0, 10, 5));
    GEN_BINDATA &other = kept(new GEN_BINDATA(0, 10, 5));
    other = histogram;
    histogram.add_item(3);
    other.add_item(3);
    EXPECT_EQ(histogram.item_count(1), 2u);
    EXPECT_EQ(other.item_count(1), 2u);
    EXPECT_EQ(histogram.size(), 1u);
    EXPECT_EQ(other.size(), 1u);
}

TEST(GenBindataDeathTest, EndsAtABrokenCondition)
{
    struct Case
    {
        void (*act)();
        char const *text;
    };
    constexpr Case CASES[] = {
        {[] { GEN_BINDATA const histogram(1, 1, 5); }, "m_high > m_low"},
        {[] { GEN_BINDATA const histogram(2, 1, 5); }, "m_high > m_low"},
        {[] { GEN_BINDATA const histogram(0, std::nan(""), 5); }, "m_high > m_low"},
        {[] { GEN_BINDATA(0, 10, 5).add_item(10.01); }, "item >= m_low && item <= m_high"},
        {[] { GEN_BINDATA(0, 10, 5).add_item(-0.01); }, "item >= m_low && item <= m_high"},
        {[] { GEN_BINDATA(0, 10, 5).add_item(std::nan("")); }, "item >= m_low && item <= m_high"},
        {[] { GEN_BINDATA(0, 10, 5).bin(10.01); }, "item >= m_low && item <= m_high"},
        {[] { GEN_BINDATA(0, 10, 5).item_count(5); }, "0 <= bin && bin < m_num_bins"},
        {[] { GEN_BINDATA(0, 10, 0).item_count(0); }, "0 <= bin && bin < m_num_bins"},
        {[] { GEN_BINDATA(0, 10, 0).add_item(5); }, "0 <= bin && bin < m_num_bins"},
        // Both count into one array, but each checks its own total.
        {[] {
             GEN_BINDATA histogram(0, 10, 5);
             GEN_BINDATA other(0, 10, 5);
             other = histogram;
             histogram.add_item(3);
         },
         "total == m_num_items"},
        // Bins of an endless range have no bounds.
        {[] { GEN_BINDATA const histogram(-INFINITE, INFINITE, 2); }, "lowbound(i+1) == highbound(i)"},
    };
    for (Case const &c : CASES)
        EXPECT_EXIT(c.act(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_with(c.text, "gen_bindata")) << c.text;
}
