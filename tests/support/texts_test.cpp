#include "tests/support/texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

TEST(Shown, WritesEscapes)
{
    EXPECT_EQ(shown("a\"b\n"), "\"a\\\"b\\n\"");
    EXPECT_EQ(shown(""), "\"\"");
}

TEST(Terminated, EndsWithOneNull)
{
    EXPECT_THAT(terminated("ab"), ElementsAre('a', 'b', '\0'));
    EXPECT_THAT(terminated(""), ElementsAre('\0'));
}

TEST(Repeated, JoinsCopies)
{
    EXPECT_EQ(repeated("ab", 3), "ababab");
    EXPECT_EQ(repeated("ab", 0), "");
    EXPECT_EQ(repeated("", 5), "");
}

TEST(CountOf, CountsWithoutOverlaps)
{
    EXPECT_EQ(count_of("aaaaa", "aa"), 2U);
    EXPECT_EQ(count_of("abcab", "ab"), 2U);
    EXPECT_EQ(count_of("abc", "d"), 0U);
    EXPECT_EQ(count_of("", "d"), 0U);
}

TEST(LinesOf, MarksALineWithoutAnEnd)
{
    EXPECT_THAT(lines_of(""), ElementsAre());
    EXPECT_THAT(lines_of("\n"), ElementsAre(""));
    EXPECT_THAT(lines_of("a\n\nb\n"), ElementsAre("a", "", "b"));
    EXPECT_THAT(lines_of("a\nb"), ElementsAre("a", "b (without a line end)"));
}

TEST(LinesOf, TakesTheGivenEndAlone)
{
    EXPECT_THAT(lines_of("a\r\nb\nc\r\n", "\r\n"), ElementsAre("a", "b\nc"));
    EXPECT_THAT(lines_of("a\r\n"), ElementsAre("a\r"));
}

TEST(WithoutCarriageReturns, RemovesEach)
{
    EXPECT_EQ(without_carriage_returns("\ra\r\r\nb\r"), "a\nb");
}
