#include "gen/base/gen_machine_text.h"

#include <gtest/gtest.h>

namespace {

struct ListCase
{
    char const *text;
    std::uint64_t mask;
};
constexpr ListCase LISTS[] = {
    {"0\n", 0x1},
    {"0-1\n", 0x3},
    {"0-3,8", 0x10f},
    {"1,3,5-6\n", 0x6a},
    {"0-63\n", 0xffffffffffffffff},
    {"63\n", 0x8000000000000000},
    {"0,60-127\n", 0xf000000000000001}, // from 64 on there are no bits
    {"64-4294967295\n", 0},
    {"3-1\n", 0},
};

struct FrequencyCase
{
    char const *text;
    int mhz;
};
constexpr FrequencyCase PROCESSOR_FREQUENCIES[] = {
    {"processor\t: 0\nmodel name\t: X 2.5 GHz\ncpu MHz\t\t: 2596.122\ncache size\t: 512 KB\n", 2596},
    {"cpu MHz : 800\n", 800},
    {"cpu MHz\t\t: 1000.000\n\nprocessor\t: 1\ncpu MHz\t\t: 2000.000\n", 1000},
    {"cpu MHz\t\t: 2999.999", 2999},
};
constexpr FrequencyCase BASE_FREQUENCIES[] = {{"2400000\n", 2400}, {"999\n", 0}, {"3599999", 3599}};

} // namespace

TEST(GenReadProcessorList, GivesAMask)
{
    for (ListCase const &c : LISTS) {
        std::uint64_t mask = 4711;
        EXPECT_TRUE(gen_read_processor_list(c.text, mask)) << c.text;
        EXPECT_EQ(mask, c.mask) << c.text;
    }
}

TEST(GenReadProcessorList, LeavesTheMaskAloneIfItIsNone)
{
    for (char const *const text : {"", "\n", "all", "0-", "0-x", "1,", "1,,2", "-1", "99999999999"}) {
        std::uint64_t mask = 4711;
        EXPECT_FALSE(gen_read_processor_list(text, mask)) << text;
        EXPECT_EQ(mask, 4711U) << text;
    }
}

TEST(GenReadBaseFrequency, CountsKilohertz)
{
    for (FrequencyCase const &c : BASE_FREQUENCIES) {
        int mhz = 4711;
        EXPECT_TRUE(gen_read_base_frequency(c.text, mhz)) << c.text;
        EXPECT_EQ(mhz, c.mhz) << c.text;
    }
    for (char const *const text : {"", "\n", "unknown", "-1"}) {
        int mhz = 4711;
        EXPECT_FALSE(gen_read_base_frequency(text, mhz)) << text;
        EXPECT_EQ(mhz, 4711) << text;
    }
}

TEST(GenReadProcessorFrequency, IsThatOfTheFirstProcessor)
{
    for (FrequencyCase const &c : PROCESSOR_FREQUENCIES) {
        int mhz = 4711;
        EXPECT_TRUE(gen_read_processor_frequency(c.text, mhz)) << c.text;
        EXPECT_EQ(mhz, c.mhz) << c.text;
    }
    for (char const *const text : {"", "processor : 0\n", "cpu MHz", "cpu MHz : \n", "cpu MHz : unknown\n"}) {
        int mhz = 4711;
        EXPECT_FALSE(gen_read_processor_frequency(text, mhz)) << text;
        EXPECT_EQ(mhz, 4711) << text;
    }
}
