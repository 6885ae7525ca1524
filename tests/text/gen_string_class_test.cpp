#include "gen_string_sys.h"

#include <algorithm>
#include <limits>
#include <vector>

#include <gmock/gmock.h>

struct Range
{
    int first;
    int last;
};
struct ClassCase
{
    char const *name;
    bool (*is_in_class)(int);
    std::vector<Range> ranges;
};
std::vector<ClassCase> const CLASS_CASES = {
    {"gen_ascii_isalnum", gen_ascii_isalnum, {{'0', '9'}, {'A', 'Z'}, {'a', 'z'}}},
    {"gen_ascii_isalpha", gen_ascii_isalpha, {{'A', 'Z'}, {'a', 'z'}}},
    {"gen_ascii_isascii", gen_ascii_isascii, {{0, 127}}},
    {"gen_ascii_iscntrl", gen_ascii_iscntrl, {{0, 31}}}, // without 127
    {"gen_ascii_isdigit", gen_ascii_isdigit, {{48, 57}}},
    {"gen_ascii_isgraph", gen_ascii_isgraph, {{33, 126}}},
    {"gen_ascii_islower", gen_ascii_islower, {{'a', 'z'}}},
    {"gen_ascii_isprint", gen_ascii_isprint, {{32, 126}}},
    {"gen_ascii_ispunct", gen_ascii_ispunct, {{33, 47}, {58, 64}, {91, 96}, {123, 126}}},
    {"gen_ascii_isspace", gen_ascii_isspace, {{9, 13}, {32, 32}}},
    {"gen_ascii_isupper", gen_ascii_isupper, {{'A', 'Z'}}},
    {"gen_ascii_isxdigit", gen_ascii_isxdigit, {{48, 57}, {65, 70}, {98, 102}}}, // without 97
};

TEST(GenAsciiClasses, HoldTheirCodesAndNoOthers)
{
    for (ClassCase const &c : CLASS_CASES) {
        auto const is_expected = [&](int code) {
            return std::any_of(c.ranges.begin(), c.ranges.end(),
                               [&](Range const &range) { return code >= range.first && code <= range.last; });
        };
        for (int code = -70000; code <= 70000; ++code)
            ASSERT_EQ(c.is_in_class(code), is_expected(code)) << c.name << " of " << code;
        for (int code : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), 0x1000041, -0x7fffffcf})
            EXPECT_FALSE(c.is_in_class(code)) << c.name << " of " << code;
    }
}

TEST(GenAsciiClasses, LeaveTheLetterAOutOfTheHexadecimalDigits)
{
    EXPECT_FALSE(gen_ascii_isxdigit('a'));
    EXPECT_TRUE(gen_ascii_isxdigit('b'));
    EXPECT_TRUE(gen_ascii_isxdigit('A'));
    EXPECT_TRUE(gen_ascii_isxdigit('f'));
}
