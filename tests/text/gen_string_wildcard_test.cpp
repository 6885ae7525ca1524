#include "gen_string_sys.h"
#include "tests/support/internal_error.h"
#include "tests/support/texts.h"

#include <boost/regex.hpp>

#include <string>
#include <vector>

#include <gmock/gmock.h>

TEST(GenHasWildcardChars, FindsAsterisksAndQuestionMarks)
{
    EXPECT_FALSE(gen_has_wildcard_chars(nullptr));
    EXPECT_FALSE(gen_has_wildcard_chars(""));
    for (int code = 1; code < 256; ++code) {
        bool const is_wildcard = code == '*' || code == '?';
        char const c = static_cast<char>(code);
        for (std::string const &text : {std::string{c}, std::string{'a', c}, std::string{c, 'b'}})
            EXPECT_EQ(gen_has_wildcard_chars(text.c_str()), is_wildcard) << shown(text);
    }
    EXPECT_TRUE(gen_has_wildcard_chars("a?b*"));
}

struct WildcardCase
{
    std::string wildcard;
    std::string expression;
};
std::vector<WildcardCase> const WILDCARD_CASES = {
    {"", ""},
    {"a*.txt", "[aA].*\\.[tT][xX][tT]"},
    {"x", "[xX]"},
    {"X", "[xX]"},
    {"?", "."},
    {"**", ".*.*"},
    {"().[\\]|", "\\(\\)\\.\\[\\\\\\]\\|"},
    {"+^${}", "+^${}"}, // live in the expression
    {"0_9 -/:\"#\x80\xff", "0_9 -/:\"#\x80\xff"},
    {std::string("a\0b", 3), std::string("[aA]\0[bB]", 9)},
};

TEST(GenWildcardToRegExpr, RewritesEachCharacterOnce)
{
    for (WildcardCase const &c : WILDCARD_CASES) {
        std::string text = c.wildcard;
        gen_wildcard_to_reg_expr(&text, /*anchor=*/false);
        EXPECT_EQ(text, c.expression) << shown(c.wildcard);
        text = c.wildcard;
        gen_wildcard_to_reg_expr(&text, /*anchor=*/true);
        EXPECT_EQ(text, '^' + c.expression + '$') << shown(c.wildcard);
    }
}

TEST(GenWildcardToRegExpr, RewritesEveryByte)
{
    for (int code = 0; code < 256; ++code) {
        char const c = static_cast<char>(code);
        std::string expected{c};
        if (c == '*')
            expected = ".*";
        else if (c == '?')
            expected = ".";
        else if (gen_ascii_isalpha(code))
            expected = std::string{'[', gen_ascii_tolower(code), gen_ascii_toupper(code), ']'};
        else if (std::string("().[\\]|").find(c) != std::string::npos)
            expected = std::string{'\\', c};
        std::string text{c};
        gen_wildcard_to_reg_expr(&text, /*anchor=*/false);
        EXPECT_EQ(text, expected) << "code " << code;
    }
}

TEST(GenWildcardToRegExpr, MatchesWhateverTheCase)
{
    std::string text = "Net|a?c[*].q(1)";
    gen_wildcard_to_reg_expr(&text, /*anchor=*/true);
    boost::regex const expression(text);
    for (char const *name : {"Net|abc[].q(1)", "NET|A0C[12].Q(1)", "net|a]C[|].q(1)"})
        EXPECT_TRUE(boost::regex_match(name, expression)) << name;
    for (char const *name : {"Net|ac[].q(1)", "Net|abc[]xq(1)", "Net", "Net|abc[].q1", "xNet|abc[].q(1)"})
        EXPECT_FALSE(boost::regex_match(name, expression)) << name;
}

TEST(GenWildcardToRegExprDeathTest, EndsOnNull)
{
    EXPECT_EXIT(gen_wildcard_to_reg_expr(nullptr, true), testing::ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("wildcard != 0", "gen_string*"));
}
