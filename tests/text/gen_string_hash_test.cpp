#include "gen_string_sys.h"
#include "tests/support/internal_error.h"
#include "tests/support/texts.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

struct HashCase
{
    std::string name;
    std::string changed;
    std::uint32_t hash;
};
std::vector<HashCase> const HASH_CASES = {
    {"a", "a", 0x38313A08}, {"abc", "abc", 0x2F8DB6B8}, {"a b  ", "a_b", 0x25095E3F}, {"", "", 0}, {"   ", "", 0},
};
TEST(GenCrcStringToDword, GivesTheReferenceValues)
{
    for (HashCase const &c : HASH_CASES) {
        std::vector<char> bytes = terminated(c.name);
        EXPECT_EQ(gen_crc_string_to_dword(bytes.data()), c.hash) << shown(c.name);
        EXPECT_EQ(std::string(bytes.data()), c.changed) << shown(c.name);
    }
}

TEST(GenCrcStringToDword, ReplacesWhatHasNoPlaceInAnIdentifier)
{
    std::string const from = " !#$%&'+./:<=()->?[\\]|";
    std::string const to = "_EFRCKTMLIUADQPJBGOHNS";
    ASSERT_EQ(from.size(), to.size());
    for (int code = 1; code < 256; ++code) {
        std::string name{static_cast<char>(code), 'z'};
        std::size_t const row = from.find(static_cast<char>(code));
        std::string const expected{row == std::string::npos ? name[0] : to[row], 'z'};
        gen_crc_string_to_dword(name.data());
        EXPECT_EQ(name, expected) << "code " << code;
    }
}

TEST(GenCrcStringToDword, GoesBitByBitFromTheLowest)
{
    for (int first = 1; first < 256; ++first) {
        std::string name{static_cast<char>(first), static_cast<char>(255 - first / 2), 'Q'};
        std::uint32_t const hash = gen_crc_string_to_dword(name.data());
        std::uint32_t value = 0xffffffff;
        for (unsigned char c : name)
            for (int bit = 0; bit < 8; ++bit, c = static_cast<unsigned char>(c >> 1)) {
                bool const is_set = ((value ^ c) & 1) != 0;
                value >>= 1;
                if (is_set)
                    value ^= 0x48728408;
            }
        EXPECT_EQ(hash, value) << shown(name);
    }
}

TEST(GenHashNextSize, GivesTheLargestPrimeBelowAPowerOfTwo)
{
    constexpr std::uint64_t SIZES[] = {
        13,       31,       61,       127,       251,       509,       1021,       2039,       4093,       8191,
        16381,    32749,    65521,    131071,    262139,    524287,    1048573,    2097143,    4194301,    8388593,
        16777213, 33554393, 67108859, 134217689, 268435399, 536870909, 1073741789, 2147483647, 4294967291,
    };
    std::uint64_t former = 0;
    for (std::uint64_t size : SIZES) {
        EXPECT_EQ(gen_hash_next_size(size), size);
        EXPECT_EQ(gen_hash_next_size(size - 1), size);
        EXPECT_EQ(gen_hash_next_size(former == 0 ? 0 : former + 1), size);
        former = size;
    }
    EXPECT_EQ(gen_hash_next_size(14), 31u);
}

TEST(GenHashNextSizeDeathTest, EndsAboveTheLastSize)
{
    for (std::uint64_t n : {std::uint64_t{4294967292}, ~std::uint64_t{0}})
        EXPECT_EXIT(gen_hash_next_size(n), testing::ExitedWithCode(INTERNAL_ERROR_STATUS),
                    dies_with("rval != 0", "gen_string*"))
            << n;
}
