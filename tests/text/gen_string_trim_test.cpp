#include "gen_string_sys.h"
#include "tests/support/texts.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

struct TrimCase
{
    std::string text;
    std::string without_spaces;
    std::string without_white_spaces;
};
std::vector<TrimCase> const TRIM_CASES = {
    {"", "", ""},
    {" ", "", ""},
    {"    ", "", ""},
    {"a", "a", "a"},
    {"  a b  ", "a b", "a b"},
    {"a  ", "a", "a"},
    {"  a", "a", "a"},
    {"\t", "\t", ""},
    {" \t \t ", "\t \t", ""},
    {" \t a \n ", "\t a \n", "a"},
    {"\r\na\tb\r\n", "\r\na\tb\r\n", "a\tb"},
    {"\fa\v", "\fa\v", "\fa\v"},
    {std::string(" \0 ", 3), std::string("\0", 1), std::string("\0", 1)},
};

TEST(GenRemoveLeadingAndTrailingSpaces, RemovesBlanksAlone)
{
    for (TrimCase const &c : TRIM_CASES) {
        EXPECT_EQ(gen_remove_leading_and_trailing_spaces(c.text), c.without_spaces) << shown(c.text);
        std::string out = "former";
        gen_remove_leading_and_trailing_spaces(c.text, &out);
        EXPECT_EQ(out, c.without_spaces) << shown(c.text);
        std::string itself = c.text;
        gen_remove_leading_and_trailing_spaces(itself, &itself);
        EXPECT_EQ(itself, c.without_spaces) << shown(c.text);
        gen_remove_leading_and_trailing_spaces(c.text, nullptr);
    }
}

TEST(GenRemoveLeadingAndTrailingWhiteSpaces, RemovesFourCharacters)
{
    for (TrimCase const &c : TRIM_CASES) {
        EXPECT_EQ(gen_remove_leading_and_trailing_white_spaces(c.text), c.without_white_spaces) << shown(c.text);
        std::string out = "former";
        gen_remove_leading_and_trailing_white_spaces(c.text, &out);
        EXPECT_EQ(out, c.without_white_spaces) << shown(c.text);
        std::string itself = c.text;
        gen_remove_leading_and_trailing_white_spaces(itself, &itself);
        EXPECT_EQ(itself, c.without_white_spaces) << shown(c.text);
        gen_remove_leading_and_trailing_white_spaces(c.text, nullptr);
    }
}
