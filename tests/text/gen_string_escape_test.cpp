#include "gen_string_sys.h"
#include "tests/support/texts.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>

struct EscapeCase
{
    std::string text;
    std::string result;
};
std::vector<EscapeCase> const ESCAPE_CASES = {
    {"", ""},
    {"abc", "abc"},
    {"\\nab", "\nab"},
    {"a\\rb\\tc\\n", "a\rb\tc\n"},
    {"\\a\\N\\0\\ \\'", "aN0 '"},
    {"\\\\", "\\"},
    {"\\\\n", "\\n"},
    {"\\\\\\n", "\\\n"},
    // A backslash at the end is dropped.
    {"\\", ""},
    {"a\\", "a"},
    {"\\\\\\", "\\"},
    // Within quotes nothing is decoded, and a backslash keeps no quote from closing.
    {"\"\\nab\"", "\"\\nab\""},
    {"\"a\\", "\"a\\"},
    {"\"\\\"\\n", "\"\\\"\n"},
    {"\"\\\\\"\\n", "\"\\\\\"\n"},
    {"\"a\"\\n\"\\n\"", "\"a\"\n\"\\n\""},
    // A quote that was decoded opens nothing.
    {"\\\"", "\""},
    {"\\\"\\n", "\"\n"},
    {"\\\"\\n\"\\n", "\"\n\"\\n"},
};

TEST(GenProcessEscapedQuotes, DecodesOutsideQuotes)
{
    for (EscapeCase const &c : ESCAPE_CASES) {
        std::string text = c.text;
        gen_process_escaped_quotes(text);
        EXPECT_EQ(text, c.result) << shown(c.text);

        std::vector<char> bytes = terminated(c.text);
        gen_process_escaped_quotes(bytes.data());
        EXPECT_EQ(std::string(bytes.data()), c.result) << shown(c.text);
    }
    gen_process_escaped_quotes(nullptr);
}

TEST(GenProcessEscapedQuotes, DecodesAfterEmbeddedZerosOfAString)
{
    std::string text("\0\\n\\\0", 5);
    gen_process_escaped_quotes(text);
    EXPECT_EQ(text, std::string("\0\n\0", 3));
}
