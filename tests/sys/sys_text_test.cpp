#include "sys/sys_text.h"

#include <gtest/gtest.h>

namespace {

struct LineCase
{
    char const *text;
    char const *key;
    bool is_there;
    char const *rest;
};
constexpr LineCase LINE_CASES[] = {
    {"Name:\tfitter\nTracerPid:\t0\n", "TracerPid:", true, "\t0"},
    {"Name:\tfitter\nTracerPid:\t0\n", "Name:", true, "\tfitter"},
    // The first of two, the last without a line feed, one without a value.
    {"a=1\na=2\n", "a=", true, "1"},
    {"b=1\na=2", "a=", true, "2"},
    {"a=\nb=\n", "a=", true, ""},
    {"\n\na=1\n", "a=", true, "1"},
    {"a=1\n", "", true, "a=1"},
    // Only at the start of a line.
    {"xa=1\n a=2\n", "a=", false, nullptr},
    {"a\n=1\n", "a=", false, nullptr},
    {"a", "a=", false, nullptr},
    {"", "a=", false, nullptr},
    {"", "", false, nullptr},
};

TEST(SysFindLine, GivesTheRestOfTheFirstLineWithTheKey)
{
    for (LineCase const &c : LINE_CASES) {
        std::string_view rest = "before";
        EXPECT_EQ(sys_find_line(c.text, c.key, rest), c.is_there) << c.text;
        EXPECT_EQ(rest, c.is_there ? c.rest : "before") << c.text;
    }
}

struct TextCase
{
    char const *text;
    char const *result;
};
constexpr TextCase WHOLE_LINES_CASES[] = {
    {"a\nb\n", "a\nb\n"}, {"a\nb", "a\n"}, {"\n", "\n"}, {"\nb", "\n"}, {"a", ""}, {"", ""},
};

TEST(SysWholeLines, LeavesOutALineThatMayBeCutOff)
{
    for (TextCase const &c : WHOLE_LINES_CASES)
        EXPECT_EQ(sys_whole_lines(c.text), c.result) << c.text;
}

constexpr TextCase BLANKS_CASES[] = {
    {" \t 1 ", "1 "}, {"1", "1"}, {"\n 1", "\n 1"}, {" \t", ""}, {"", ""},
};

TEST(SysSkipBlanks, RemovesBlanksAndTabulatorsAtTheStart)
{
    for (TextCase const &c : BLANKS_CASES) {
        std::string_view text = c.text;
        sys_skip_blanks(text);
        EXPECT_EQ(text, c.result) << '"' << c.text << '"';
    }
}

struct NumberCase
{
    char const *text;
    bool is_there;
    std::uint64_t number;
    char const *rest;
};
constexpr NumberCase NUMBER_CASES[] = {
    {"0", true, 0, ""},
    {"007 kB", true, 7, " kB"},
    {"18446744073709551615\n", true, 18446744073709551615U, "\n"},
    {"2596.122", true, 2596, ".122"},
    {"18446744073709551616", false, 0, nullptr},
    {"-1", false, 0, nullptr},
    {"+1", false, 0, nullptr},
    {" 1", false, 0, nullptr},
    {"x", false, 0, nullptr},
    {"", false, 0, nullptr},
};

TEST(SysTakeNumber, RemovesADecimalNumber)
{
    for (NumberCase const &c : NUMBER_CASES) {
        std::string_view text = c.text;
        std::uint64_t number = 4711;
        EXPECT_EQ(sys_take_number(text, number), c.is_there) << c.text;
        EXPECT_EQ(number, c.is_there ? c.number : 4711) << c.text;
        EXPECT_EQ(text, c.is_there ? c.rest : c.text) << c.text;
    }
}

TEST(SysTakeNumber, RefusesWhatDoesNotFitTheType)
{
    std::string_view text = "4294967296";
    unsigned number = 4711;
    EXPECT_FALSE(sys_take_number(text, number));
    EXPECT_EQ(number, 4711U);
    EXPECT_EQ(text, "4294967296");
}

// The status text of a process, in part.
constexpr char STATUS[] = "Name:\tfitter\nUmask:\t0022\nState:\tR (running)\nTgid:\t12\nNgid:\t0\nPid:\t12\nPPid:\t3\n"
                          "TracerPid:\t4711\nUid:\t0\t0\t0\t0\n";

TEST(SysFindNumber, SkipsTheBlanksAfterTheKey)
{
    std::uint64_t number = 0;
    EXPECT_TRUE(sys_find_number(STATUS, "TracerPid:", number));
    EXPECT_EQ(number, 4711U);
    EXPECT_TRUE(sys_find_number(STATUS, "Pid:", number));
    EXPECT_EQ(number, 12U);
    EXPECT_TRUE(sys_find_number("MemTotal:  24576000 kB\n", "MemTotal:", number));
    EXPECT_EQ(number, 24576000U);
    EXPECT_TRUE(sys_find_number("a=1", "a=", number));
    EXPECT_EQ(number, 1U);
}

TEST(SysFindNumber, LeavesTheNumberAloneIfThereIsNone)
{
    for (char const *key : {"Tracer:", "State:", "Name:", "Uid:\t0\t0\t0\t0"}) {
        std::uint64_t number = 4711;
        EXPECT_FALSE(sys_find_number(STATUS, key, number)) << key;
        EXPECT_EQ(number, 4711U) << key;
    }
}

} // namespace
