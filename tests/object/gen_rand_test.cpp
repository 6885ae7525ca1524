#include "gen_rand_sys.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>

namespace {

std::array<int, 5> first_numbers(GEN_RAND &random)
{
    std::array<int, 5> numbers;
    for (int &number : numbers)
        number = random.get_rand();
    return numbers;
}

struct SequenceCase
{
    long seed;
    std::array<int, 5> numbers;
};
constexpr SequenceCase SEQUENCES[] = {
    {0, {38, 7719, 21238, 2437, 8855}},
    {1, {41, 18467, 6334, 26500, 19169}},
    {-1, {35, 29739, 3374, 11141, 31308}},
    {std::numeric_limits<std::int32_t>::min(), {38, 7719, 21238, 2437, 8855}}, // bit 31 never comes down
    {std::numeric_limits<std::int32_t>::max(), {35, 29739, 3374, 11141, 31308}},
};

} // namespace

TEST(GenRand, GivesTheSequenceOfItsSeed)
{
    for (SequenceCase const &c : SEQUENCES) {
        GEN_RAND random(c.seed);
        EXPECT_EQ(first_numbers(random), c.numbers) << "seed " << c.seed;
    }
}

TEST(GenRand, BeginsAgainWithASeed)
{
    GEN_RAND random(12345);
    for (SequenceCase const &c : SEQUENCES) {
        random.set_seed(c.seed);
        EXPECT_EQ(first_numbers(random), c.numbers) << "seed " << c.seed;
    }
}

TEST(GenRand, HasSeedZeroByDefault)
{
    GEN_RAND random;
    EXPECT_EQ(first_numbers(random), SEQUENCES[0].numbers);
}

TEST(GenRand, TakesTheLow32BitsOfASeed)
{
    // Where a long has 32 bits, all of them count.
    constexpr auto WIDE = static_cast<long>(0x123456789abcdef0);
    GEN_RAND wide(WIDE);
    GEN_RAND low(static_cast<long>(0x9abcdef0));
    EXPECT_EQ(first_numbers(wide), first_numbers(low));
}

TEST(GenRand, ObjectsAndCopiesAreIndependent)
{
    GEN_RAND first(7);
    GEN_RAND second(7);
    for (int i = 0; i < 1000; ++i) {
        GEN_RAND copy(first);
        int const number = first.get_rand();
        EXPECT_EQ(number, second.get_rand()) << "number " << i;
        EXPECT_EQ(number, copy.get_rand()) << "number " << i;
    }
}

TEST(GenRand, StaysInRangeAndReachesItsEnds)
{
    GEN_RAND random;
    int least = std::numeric_limits<int>::max();
    int greatest = std::numeric_limits<int>::min();
    int last = 0;
    for (int i = 0; i < 1000000; ++i) {
        last = random.get_rand();
        least = std::min(least, last);
        greatest = std::max(greatest, last);
    }
    EXPECT_EQ(least, 0);
    EXPECT_EQ(greatest, 32767);
    EXPECT_EQ(last, 7608); // the millionth
}
