#include "sys/sys_text.h"

#include <gtest/gtest.h>

#include <iterator>

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

struct PrintableCase
{
    std::string_view text;
    std::string_view printable;
};
constexpr PrintableCase PRINTABLE_CASES[] = {
    {"", ""},
    {"a b~", "a b~"},
    // control characters as single bytes, and the bytes next to them
    {std::string_view("\0\x01\t\n\x1b[2J\x1f \x7e\x7f", 12), "?????[2J? ~?"},
    {"\x80\x85\x9b\x9f\xa0\xff", "????\xa0\xff"},
    // and as characters of UTF-8
    {"\xc2\x80-\xc2\x9b-\xc2\x9f-\xc2\xa0", "?-?-?-\xc2\xa0"},
    // the first and the last characters of two, three and four bytes, and those next to the surrogates
    {"\xc2\xa0\xdf\xbf", "\xc2\xa0\xdf\xbf"},
    {"\xe0\xa0\x80\xed\x9f\xbf\xee\x80\x80\xef\xbf\xbf", "\xe0\xa0\x80\xed\x9f\xbf\xee\x80\x80\xef\xbf\xbf"},
    {"\xf0\x90\x80\x80\xf3\x80\x80\x80\xf4\x8f\xbf\xbf", "\xf0\x90\x80\x80\xf3\x80\x80\x80\xf4\x8f\xbf\xbf"},
    // not UTF-8: longer than needed, surrogates, codes above the last, incomplete, other first bytes
    {"\xc0\x9b\xc1\x9b", "\xc0?\xc1?"},
    {"\xe0\x9f\x80", "\xe0??"},
    {"\xed\xa0\x80", "\xed\xa0?"},
    {"\xf0\x8f\x80\x80", "\xf0???"},
    {"\xf4\x90\x80\x80", "\xf4???"},
    {"\xf5\x80\x80\x80", "\xf5???"},
    {"\xe2\x82z\xe2\x82", "\xe2?z\xe2?"},
    {"\xf0\x90\x80z\xf0\x90\xc3\x9b", "\xf0??z\xf0?\xc3\x9b"},
    {"\xc3z\xc3", "\xc3z\xc3"},
};

TEST(SysPrintable, ReplacesControlCharactersAndNothingElse)
{
    for (PrintableCase const &c : PRINTABLE_CASES)
        EXPECT_EQ(sys_printable(c.text, '?'), c.printable) << testing::PrintToString(c.text);
    EXPECT_EQ(sys_printable("a\nb\xc2\x85", ' '), "a b ");
}

TEST(SysWholeCharacters, DividesNoCharacterOfUtf8)
{
    std::string_view const text = "a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80z"; // of 1, 2, 3, 4 and 1 bytes
    constexpr std::size_t LENGTHS[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11, 11};
    for (std::size_t size = 0; size < std::size(LENGTHS); ++size)
        EXPECT_EQ(sys_whole_characters(text, size), text.substr(0, LENGTHS[size])) << size;
    // Bytes that are no UTF-8 are divided anywhere.
    EXPECT_EQ(sys_whole_characters("\xa4\xa4\xa4\xa4\xa4", 3), "\xa4\xa4\xa4");
    EXPECT_EQ(sys_whole_characters("\xe2z\xac", 2), "\xe2z");
}

} // namespace
