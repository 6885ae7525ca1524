#include "gen_string_sys.h"
#include "tests/support/internal_error.h"
#include "tests/support/texts.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace {

// A buffer of x, with a text and its terminator at the start if there is one.
std::string buffer_of(std::size_t size, char const *text = nullptr)
{
    std::string buffer(size, 'x');
    if (text != nullptr)
        std::strcpy(buffer.data(), text);
    return buffer;
}

// A text written with 0 for each terminator.
std::string with_zeros(std::string text)
{
    std::replace(text.begin(), text.end(), '0', '\0');
    return text;
}

} // namespace

TEST(GenRepeatStr, RepeatsAText)
{
    struct Case
    {
        std::string text;
        int num_reps;
        std::string result;
    };
    for (Case const &c : {
             Case{"ab", 0, ""},
             Case{"ab", 1, "ab"},
             Case{"ab", 3, "ababab"},
             Case{"-", 80, std::string(80, '-')},
             Case{"", 0, ""},
             Case{"", 5, ""},
             Case{"", std::numeric_limits<int>::max(), ""},
             Case{std::string("\0", 1), 3, std::string(3, '\0')},
         })
        EXPECT_EQ(gen_repeat_str(c.text, c.num_reps), c.result) << shown(c.text) << ", " << c.num_reps;
}

TEST(GenRepeatStrDeathTest, EndsOnANegativeCount)
{
    for (int num_reps : {-1, std::numeric_limits<int>::min()})
        EXPECT_EXIT(gen_repeat_str("a", num_reps), testing::ExitedWithCode(INTERNAL_ERROR_STATUS),
                    dies_with("num_reps >= 0", "gen_string*"))
            << "count " << num_reps;
}

// Texts with a terminator.

TEST(GenIsEmptyString, HoldsForNullAndTheEmptyText)
{
    EXPECT_TRUE(gen_is_empty_string(nullptr));
    EXPECT_TRUE(gen_is_empty_string(""));
    EXPECT_FALSE(gen_is_empty_string(" "));
    EXPECT_FALSE(gen_is_empty_string("abc"));
}

TEST(GenStrlen, IsZeroForNull)
{
    EXPECT_EQ(gen_strlen(nullptr), 0);
    EXPECT_EQ(gen_strlen(""), 0);
    EXPECT_EQ(gen_strlen("abc"), 3);
}

TEST(GenStrcpy, CopiesAndTakesANullOnEitherSide)
{
    std::string dst = buffer_of(5);
    EXPECT_EQ(gen_strcpy(dst.data(), "abc"), dst.data());
    EXPECT_EQ(dst, with_zeros("abc0x"));
    EXPECT_EQ(gen_strcpy(dst.data(), nullptr), dst.data());
    EXPECT_EQ(dst, with_zeros("0bc0x"));
    EXPECT_EQ(gen_strcpy(nullptr, "abc"), nullptr);
}

// The results are the bytes of a buffer of eight x, a terminator written as 0.
struct CopyCase
{
    char const *src;
    std::uint64_t count;
    char const *result;
};
constexpr CopyCase STRNCPY_CASES[] = {
    {"abc", 0, "0xxxxxxx"},
    {"abc", 1, "a0xxxxxx"},
    {"abc", 2, "ab0xxxxx"},
    {"abc", 3, "abc0xxxx"},
    {"abc", 4, "abc0xxxx"}, // one place left over
    {"abc", 5, "abc0xxxx"}, // two left over: one byte, the terminator's, is zeroed
    {"abc", 6, "abc00xxx"},
    {"abc", 7, "abc000xx"},
    {"abc", 8, "abc0000x"}, // the byte at index 7 keeps its
                            // value
    {"abcdefg", 7, "abcdefg0"},
    {"abcdefghij", 7, "abcdefg0"},
    {"", 0, "0xxxxxxx"},
    {"", 1, "0xxxxxxx"},
    {"", 2, "0xxxxxxx"},
    {"", 3, "00xxxxxx"},
    {nullptr, 0, "0xxxxxxx"},
    {nullptr, 5, "0xxxxxxx"},
};
TEST(GenStrncpy, TerminatesAndZeroesAllButTheLastPlace)
{
    for (CopyCase const &c : STRNCPY_CASES) {
        std::string dst = buffer_of(8);
        EXPECT_EQ(gen_strncpy(dst.data(), c.src, c.count), dst.data());
        EXPECT_EQ(dst, with_zeros(c.result)) << testing::PrintToString(c.src) << ", " << c.count;
    }
    EXPECT_EQ(gen_strncpy(nullptr, "abc", 3), nullptr);
}

TEST(GenStrncpy, ReadsNothingAfterTheCount)
{
    std::vector<char> const src = {'a', 'b'};
    std::string dst = buffer_of(4);
    gen_strncpy(dst.data(), src.data(), 2);
    EXPECT_EQ(dst, with_zeros("ab0x"));
}

TEST(GenStrcat, AppendsAndTakesANullOnEitherSide)
{
    std::string dst = buffer_of(8, "ab");
    EXPECT_EQ(gen_strcat(dst.data(), "cd"), dst.data());
    EXPECT_EQ(dst, with_zeros("abcd0xxx"));
    EXPECT_EQ(gen_strcat(dst.data(), nullptr), dst.data());
    EXPECT_EQ(dst, with_zeros("abcd0xxx"));
    EXPECT_EQ(gen_strcat(nullptr, "cd"), nullptr);
    EXPECT_EQ(gen_strcat(nullptr, nullptr), nullptr);
}

constexpr CopyCase STRLCPY_CASES[] = {
    {"abc", 0, "xxxxxxxx"}, {"abc", 1, "0xxxxxxx"}, {"abc", 2, "a0xxxxxx"}, {"abc", 3, "ab0xxxxx"},
    {"abc", 4, "abc0xxxx"}, {"abc", 8, "abc0xxxx"}, {"", 0, "xxxxxxxx"},    {"", 1, "0xxxxxxx"},
};
TEST(GenStrlcpy, CutsToTheSizeAndReturnsTheWholeLength)
{
    for (CopyCase const &c : STRLCPY_CASES) {
        std::string dst = buffer_of(8);
        EXPECT_EQ(gen_strlcpy(dst.data(), c.src, c.count), std::strlen(c.src)) << c.src << ", " << c.count;
        EXPECT_EQ(dst, with_zeros(c.result)) << c.src << ", " << c.count;
    }
}

// After "ab" in a buffer of eight.
constexpr CopyCase STRLCAT_CASES[] = {
    {"cd", 0, "ab0xxxxx"}, {"cd", 1, "ab0xxxxx"}, {"cd", 2, "ab0xxxxx"}, {"cd", 3, "ab0xxxxx"},
    {"cd", 4, "abc0xxxx"}, {"cd", 5, "abcd0xxx"}, {"cd", 8, "abcd0xxx"}, {"", 8, "ab0xxxxx"},
};
TEST(GenStrlcat, CutsToTheSizeAndReturnsBothLengths)
{
    for (CopyCase const &c : STRLCAT_CASES) {
        std::string dst = buffer_of(8, "ab");
        EXPECT_EQ(gen_strlcat(dst.data(), c.src, c.count), 2 + std::strlen(c.src)) << c.src << ", " << c.count;
        EXPECT_EQ(dst, with_zeros(c.result)) << c.src << ", " << c.count;
    }
}

TEST(GenStrrev, ReversesInPlace)
{
    struct Case
    {
        char const *text;
        char const *result;
    };
    for (Case const &c : {Case{"", ""}, Case{"a", "a"}, Case{"ab", "ba"}, Case{"abc", "cba"}, Case{"a b!", "!b a"}}) {
        std::vector<char> bytes = terminated(c.text);
        EXPECT_EQ(gen_strrev(bytes.data()), bytes.data());
        EXPECT_STREQ(bytes.data(), c.result) << c.text;
    }
    EXPECT_EQ(gen_strrev(nullptr), nullptr);
}
