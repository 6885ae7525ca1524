#include "gen_bp_parser_sys.h"

#include "tests/support/bp_reference.h"
#include "tests/support/internal_error.h"
#include "tests/support/texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace {

using testing::ExitedWithCode;

constexpr char UNBALANCED[] = "Unbalanced parenthesis\nParse Error: Bad term in equation\n";
constexpr char UNMATCHED[] = "Parse Error: Unmatched parenthesis in equation\n";
constexpr char NOTHING_INSIDE[] = "Parse Error: No subexpression within parentheses\n";
constexpr char BAD_SYMBOL[] = "Parse Error: Bad symbol(s) after terminal in equation\n";
constexpr char NO_LEFT_SIDE[] = "Missing left hand side of equation\n";
constexpr char NO_RIGHT_SIDE[] = "Missing right hand side of equation\n";

struct Rewriting
{
    std::string output;
    std::string errors;
    bool has_errors;
};

Rewriting rewrite(std::string const &text)
{
    GEN_BP_PARSER parser;
    Rewriting result{text, "not asked", false};
    result.has_errors = parser.parse_string(&result.output);
    parser.get_last_error(&result.errors);
    return result;
}

void expect_rewriting(std::string const &text, std::string const &output, std::string const &errors)
{
    SCOPED_TRACE(testing::Message() << "condition \"" << text << "\"");
    Rewriting const result = rewrite(text);
    EXPECT_EQ(result.output, output);
    EXPECT_EQ(result.errors, errors);
    EXPECT_EQ(result.has_errors, !errors.empty());
}

struct CleanCase
{
    char const *text;
    char const *output;
};
constexpr CleanCase CLEAN_CASES[] = {
    {"", ""},
    {" \t\r\n", ""},
    {"a=1", "EQUAL_TO(HPATH(a),BUS(1))"},
    {"a>1", "GREATER_THAN(HPATH(a),BUS(1))"},
    {"a<1", "LESS_THAN(HPATH(a),BUS(1))"},
    {"(a=1)&&(b=0)", "LOGICAL_AND(EQUAL_TO(HPATH(a),BUS(1)),EQUAL_TO(HPATH(b),BUS(0)))"},
    {"(a=1)||(b=0)", "LOGICAL_OR(EQUAL_TO(HPATH(a),BUS(1)),EQUAL_TO(HPATH(b),BUS(0)))"},
    {"(a=1)&&b", "LOGICAL_AND(EQUAL_TO(HPATH(a),BUS(1)),HPATH(b))"},
    {"((a=1)&&(b))=c", "EQUAL_TO(LOGICAL_AND(EQUAL_TO(HPATH(a),BUS(1)),HPATH(b)),HPATH(c))"},
    // parentheses vanish
    {"(((a)))", "HPATH(a)"},
    {"((a)=(1))", "EQUAL_TO(HPATH(a),BUS(1))"},
    // NOT goes up to the split
    {"~a", "NOT(HPATH(a))"},
    {"~~a", "NOT(NOT(HPATH(a)))"},
    {"~", "NOT()"},
    {"~a=1", "EQUAL_TO(NOT(HPATH(a)),BUS(1))"},
    {"~(a=1)", "NOT(EQUAL_TO(HPATH(a),BUS(1)))"},
    {"a=~b", "EQUAL_TO(HPATH(a),NOT(HPATH(b)))"},
    {"~(a)&&~(b)", "LOGICAL_AND(NOT(HPATH(a)),NOT(HPATH(b)))"},
    // the weakest operator splits
    {"(a)&&(b)||(c)", "LOGICAL_OR(LOGICAL_AND(HPATH(a),HPATH(b)),HPATH(c))"},
    {"(a)||(b)&&(c)", "LOGICAL_OR(HPATH(a),LOGICAL_AND(HPATH(b),HPATH(c)))"},
    {"a=(b)&&(c)", "LOGICAL_AND(EQUAL_TO(HPATH(a),HPATH(b)),HPATH(c))"},
    {"(a)&&b=c", "LOGICAL_AND(HPATH(a),EQUAL_TO(HPATH(b),HPATH(c)))"},
    {"a>(b)||(c)<d", "LOGICAL_OR(GREATER_THAN(HPATH(a),HPATH(b)),LESS_THAN(HPATH(c),HPATH(d)))"},
    {"a>b=c", "EQUAL_TO(GREATER_THAN(HPATH(a),HPATH(b)),HPATH(c))"},
    {"a=b>c", "EQUAL_TO(HPATH(a),GREATER_THAN(HPATH(b),HPATH(c)))"},
    {"a<b>c", "GREATER_THAN(LESS_THAN(HPATH(a),HPATH(b)),HPATH(c))"},
    {"a>b<c", "GREATER_THAN(HPATH(a),LESS_THAN(HPATH(b),HPATH(c)))"},
    {"a<b=c", "EQUAL_TO(LESS_THAN(HPATH(a),HPATH(b)),HPATH(c))"},
    // the leftmost of equals splits
    {"a=b=c", "EQUAL_TO(HPATH(a),EQUAL_TO(HPATH(b),HPATH(c)))"},
    {"a>b>c", "GREATER_THAN(HPATH(a),GREATER_THAN(HPATH(b),HPATH(c)))"},
    {"a<b<c", "LESS_THAN(HPATH(a),LESS_THAN(HPATH(b),HPATH(c)))"},
    {"(a)&&(b)&&(c)", "LOGICAL_AND(HPATH(a),LOGICAL_AND(HPATH(b),HPATH(c)))"},
    {"(a)||(b)||(c)", "LOGICAL_OR(HPATH(a),LOGICAL_OR(HPATH(b),HPATH(c)))"},
    {"((a)||(b))||(c)", "LOGICAL_OR(LOGICAL_OR(HPATH(a),HPATH(b)),HPATH(c))"},
    // time
    {"time", ""},
    {"(time)", ""},
    {"~time", "NOT()"},
    {"TIME=1ns", "TIME_EQ(1ns)"},
    {"TiMe<1ns", "TIME_LT(1ns)"},
    {"time=100ns", "TIME_EQ(100ns)"},
    {"time>a=1", "EQUAL_TO(TIME_GT(HPATH(a)),BUS(1))"},
    {"time=a>1", "TIME_EQ(GREATER_THAN(HPATH(a),BUS(1)))"},
    {"time=1=2", "TIME_EQ(EQUAL_TO(BUS(1),BUS(2)))"},
    {"time>=1", "EQUAL_TO(TIME_GT(),BUS(1))"},
    {"time=", "TIME_EQ()"}, // a time test does not miss its right side
    {"a=time", "EQUAL_TO(HPATH(a),)"},
    {"a=time=1", "EQUAL_TO(HPATH(a),TIME_EQ(BUS(1)))"},
    {"(time)=1", "EQUAL_TO(,BUS(1))"}, // the word must begin the range
    {"~time=1", "EQUAL_TO(NOT(),BUS(1))"},
    {"(time>5ns)&&(a=1)", "LOGICAL_AND(TIME_GT(5ns),EQUAL_TO(HPATH(a),BUS(1)))"},
    {"time>(5ns)&&(a=1)", "LOGICAL_AND(TIME_GT(5ns),EQUAL_TO(HPATH(a),BUS(1)))"},
    {"times=1", "EQUAL_TO(HPATH(times),BUS(1))"},
    {"tim=1", "EQUAL_TO(HPATH(tim),BUS(1))"},
    {"t ime=1", "TIME_EQ(BUS(1))"},
    // operands by their spelling
    {"5ns", "5ns"},
    {"1010", "BUS(1010)"},
    {"1x0", "BUS(1x0)"},
    {"Z9", "HPATH(Z9)"},
    {"0Z", "0Z"},
    {"[a", "[a"},
    {"a]", "HPATH(a])"},
    {"@", "BUS(@)"},
    {"`", "BUS(`)"},
    {"{", "BUS({)"},
    {"_a", "_a"},
    {"_", "BUS(_)"},
    {"!", "BUS(!)"},
    {"bus[3:0]", "HPATH(bus[3:0])"},
    {"|", "HPATH(|)"},
    {"|1", "HPATH(|1)"},
    {"|top|a=1", "EQUAL_TO(HPATH(|top|a),BUS(1))"},
    {"&", "BUS(&)"},
    {"&a", "&a"},
    {"%s%n", "%s%n"},
    // blanks have no meaning
    {"a b", "HPATH(ab)"},
    {" a = 1 ", "EQUAL_TO(HPATH(a),BUS(1))"},
    {"(a)& &(b)", "LOGICAL_AND(HPATH(a),HPATH(b))"},
    {"(a)|\t|(b)", "LOGICAL_OR(HPATH(a),HPATH(b))"},
    {"a\x01\x1f\x7f\x80\xff"
     "b",
     "HPATH(ab)"},
    // && and || after an operand are part of its text
    {"a && b", "HPATH(a&&b)"},
    {"a || b", "HPATH(a||b)"},
    {"time&&a", "HPATH(time&&a)"},
    {"time>5ns&&a=1", "EQUAL_TO(TIME_GT(5ns&&a),BUS(1))"},
    {"(a)|||b", "LOGICAL_OR(HPATH(a),HPATH(|b))"},
    {"(a)&&&b", "LOGICAL_AND(HPATH(a),&b)"},
    {"(a)&&&", "LOGICAL_AND(HPATH(a),BUS(&))"},
    {"a=|&&", "EQUAL_TO(HPATH(a),HPATH(|&&))"},
    {"a=&||", "EQUAL_TO(HPATH(a),BUS(&||))"},
};

TEST(GenBpParser, RewritesConditions)
{
    for (CleanCase const &c : CLEAN_CASES)
        expect_rewriting(c.text, c.output, "");
}

TEST(GenBpParser, DropsZeros)
{
    expect_rewriting(std::string("a\0=\0001", 5), "EQUAL_TO(HPATH(a),BUS(1))", "");
    expect_rewriting(std::string("\0", 1), "", "");
}

TEST(GenBpParser, DistinguishesOperandsByFirstAndLastCharacter)
{
    auto const is_letter = [](int c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    std::string const no_operands = "()<=>~";
    for (int first = 33; first <= 126; ++first)
        for (int last = 33; last <= 126; ++last) {
            std::string const text{static_cast<char>(first), '0', static_cast<char>(last)};
            if (text.find_first_of(no_operands) != std::string::npos)
                continue;
            std::string const expected = first == '|' || is_letter(first) ? "HPATH(" + text + ")"
                                         : is_letter(last)                ? text
                                                                          : "BUS(" + text + ")";
            expect_rewriting(text, expected, "");
        }
}

TEST(GenBpParser, DropsWhatIsNotVisible)
{
    for (int code = 0; code < 256; ++code) {
        if (code >= 33 && code <= 126)
            continue;
        std::string const c(1, static_cast<char>(code));
        SCOPED_TRACE(testing::Message() << "code " << code);
        expect_rewriting("a" + c + "a" + c + "=" + c + "1", "EQUAL_TO(HPATH(aa),BUS(1))", "");
        expect_rewriting("(a)&" + c + "&" + c + "(b)", "LOGICAL_AND(HPATH(a),HPATH(b))", "");
    }
}

struct FaultyCase
{
    char const *text;
    char const *output;
    std::string errors;
};
FaultyCase const FAULTY_CASES[] = {
    // nothing inside
    {"()", "", NOTHING_INSIDE},
    {"(())", "", NOTHING_INSIDE},
    {"~()", "NOT()", NOTHING_INSIDE},
    {"a=()", "EQUAL_TO(HPATH(a),)", NOTHING_INSIDE},
    {"time=()", "TIME_EQ()", NOTHING_INSIDE},
    // a parenthesis without its partner
    {"(", "", UNMATCHED},
    {"((", "", std::string(UNMATCHED) + NOTHING_INSIDE},
    {"(((", "", std::string(UNMATCHED) + UNMATCHED},
    {"(a", "", std::string(UNMATCHED) + NOTHING_INSIDE},
    {"((a)", "", std::string(UNMATCHED) + NOTHING_INSIDE}, // the outer one takes the inner one's partner
    {"~(a", "NOT()", std::string(UNMATCHED) + NOTHING_INSIDE},
    {"~(", "NOT()", UNMATCHED},
    {"(a=b", "EQUAL_TO(HPATH(a),)", std::string(UNMATCHED) + NO_RIGHT_SIDE},
    {"(a=b=c", "EQUAL_TO(HPATH(a),EQUAL_TO(HPATH(b),))", std::string(UNMATCHED) + NO_RIGHT_SIDE},
    {"(a=(b", "", std::string(UNMATCHED) + UNBALANCED},
    {"a=(b", "", UNBALANCED},
    {"a=(", "", UNBALANCED},
    {"=(", "", UNBALANCED}, // before the missing side is seen
    {"a((=1", "HPATH(a)", BAD_SYMBOL},
    {"(a)||(b", "LOGICAL_OR(HPATH(a),)", std::string(UNMATCHED) + NOTHING_INSIDE},
    {"(a)&&(b", "", UNBALANCED},
    {"(a)||b=(", "LOGICAL_OR(HPATH(a),)", UNBALANCED},
    {"time=(", "", UNBALANCED},
    // after an operand
    {"a(b)", "HPATH(a)", BAD_SYMBOL},
    {"a~b", "HPATH(a)", BAD_SYMBOL},
    {"1(", "BUS(1)", BAD_SYMBOL},
    {"5ns()", "5ns", BAD_SYMBOL},
    {"time(a)", "", BAD_SYMBOL},
    {"time~", "", BAD_SYMBOL},
    {"time(a)=1", "EQUAL_TO(,BUS(1))", BAD_SYMBOL},
    {"a(b)=c(d)", "EQUAL_TO(HPATH(a),HPATH(c))", std::string(BAD_SYMBOL) + BAD_SYMBOL},
    {"a=1()", "EQUAL_TO(HPATH(a),BUS(1))", BAD_SYMBOL},
    // a missing side
    {"=1", "", NO_LEFT_SIDE},
    {"=", "", NO_LEFT_SIDE},
    {"&&", "", NO_LEFT_SIDE},
    {"||", "", NO_LEFT_SIDE},
    {">", "", NO_LEFT_SIDE},
    {"<", "", NO_LEFT_SIDE},
    {"&&a", "", NO_LEFT_SIDE},
    {"||(a", "", NO_LEFT_SIDE}, // the two bars end the search
    {"||(a))", "", NO_LEFT_SIDE},
    {"=a=b", "", NO_LEFT_SIDE},
    {"=a>b", "", NO_LEFT_SIDE},
    {"(=1)", "", NO_LEFT_SIDE},
    {"a=", "EQUAL_TO(HPATH(a),)", NO_RIGHT_SIDE},
    {"a>", "GREATER_THAN(HPATH(a),)", NO_RIGHT_SIDE},
    {"a<", "LESS_THAN(HPATH(a),)", NO_RIGHT_SIDE},
    {"(a)&&", "LOGICAL_AND(HPATH(a),)", NO_RIGHT_SIDE},
    {"(a)||", "LOGICAL_OR(HPATH(a),)", NO_RIGHT_SIDE},
    {"a==1", "EQUAL_TO(HPATH(a),)", NO_LEFT_SIDE},
    {"a=>1", "EQUAL_TO(HPATH(a),)", NO_LEFT_SIDE},
    {"a>=1", "EQUAL_TO(GREATER_THAN(HPATH(a),),BUS(1))", NO_RIGHT_SIDE},
    {"a<>1", "GREATER_THAN(LESS_THAN(HPATH(a),),BUS(1))", NO_RIGHT_SIDE},
    {"time==1", "TIME_EQ()", NO_LEFT_SIDE},
    {"(a)||||(b)", "LOGICAL_OR(HPATH(a),)", NO_LEFT_SIDE},
    {"(a)&&&&(b)", "LOGICAL_AND(HPATH(a),)", NO_LEFT_SIDE},
    {"(a)&&||(b)", "LOGICAL_OR(LOGICAL_AND(HPATH(a),),HPATH(b))", NO_RIGHT_SIDE},
    {"=(a)&&(b)", "LOGICAL_AND(,HPATH(b))", NO_LEFT_SIDE},
    // several lines, the left side's first
    {"()=a(b)", "EQUAL_TO(,HPATH(a))", std::string(NOTHING_INSIDE) + BAD_SYMBOL},
    {"a(b)=", "EQUAL_TO(HPATH(a),)", std::string(BAD_SYMBOL) + NO_RIGHT_SIDE},
    {"(a=)&&(=b)", "LOGICAL_AND(EQUAL_TO(HPATH(a),),)", std::string(NO_RIGHT_SIDE) + NO_LEFT_SIDE},
};

TEST(GenBpParser, RecordsErrorsAndGoesOn)
{
    for (FaultyCase const &c : FAULTY_CASES)
        expect_rewriting(c.text, c.output, c.errors);
}

// Every text of up to four of these.
TEST(GenBpParser, FollowsTheReference)
{
    constexpr char const *PIECES[] = {"a", "1", "5n", "time", "=", ">", "<", "~", "(", ")", "&&", "||"};
    std::vector<std::string> texts{""};
    std::size_t compared = 0;
    for (int length = 0; length < 4; ++length) {
        std::vector<std::string> longer;
        longer.reserve(texts.size() * std::size(PIECES));
        for (std::string const &text : texts)
            for (char const *piece : PIECES)
                longer.push_back(text + piece);
        texts = std::move(longer);
        for (std::string const &text : texts) {
            BpReference const reference(text);
            if (reference.is_internal_error())
                continue;
            ++compared;
            Rewriting const result = rewrite(text);
            ASSERT_EQ(result.output, reference.output()) << text;
            ASSERT_EQ(result.errors, reference.errors()) << text;
        }
    }
    EXPECT_GT(compared, 10000U);
}

struct ChainCase
{
    char const *term;
    char const *spelled;
    char const *call;
};
constexpr ChainCase CHAIN_CASES[] = {
    {"(a)", "||", "LOGICAL_OR("}, {"(a)", "&&", "LOGICAL_AND("}, {"a", "=", "EQUAL_TO("},
    {"a", ">", "GREATER_THAN("},  {"a", "<", "LESS_THAN("},
};

TEST(GenBpParser, RewritesLongChains)
{
    constexpr std::size_t COUNT = 100000;
    for (ChainCase const &c : CHAIN_CASES) {
        SCOPED_TRACE(c.spelled);
        std::string const term_and_operator = std::string(c.term) + c.spelled;
        std::string const opening = std::string(c.call) + "HPATH(a),";
        Rewriting const result = rewrite(repeated(term_and_operator, COUNT) + c.term);
        EXPECT_EQ(result.errors, "");
        EXPECT_TRUE(result.output == repeated(opening, COUNT) + "HPATH(a)" + std::string(COUNT, ')'));
    }
}

struct NestCase
{
    char const *front;
    char const *middle;
    char const *back;
    char const *output_front;
    char const *output_middle;
    char const *output_back;
};
constexpr NestCase NEST_CASES[] = {
    {"(", "a", ")", "", "HPATH(a)", ""},
    {"~", "a", "", "NOT(", "HPATH(a)", ")"},
    {"~(", "a", ")", "NOT(", "HPATH(a)", ")"},
    {"(", "a", "=1)", "EQUAL_TO(", "HPATH(a)", ",BUS(1))"},
    {"(1=", "a", ")", "EQUAL_TO(BUS(1),", "HPATH(a)", ")"},
    {"(", "(a)", "&&b)", "LOGICAL_AND(", "HPATH(a)", ",HPATH(b))"},
    {"(time=", "1", ")", "TIME_EQ(", "BUS(1)", ")"},
};

TEST(GenBpParser, RewritesDeepNests)
{
    constexpr std::size_t DEPTH = 100000;
    for (NestCase const &c : NEST_CASES) {
        SCOPED_TRACE(testing::Message() << c.front << "..." << c.back);
        Rewriting const result = rewrite(repeated(c.front, DEPTH) + c.middle + repeated(c.back, DEPTH));
        EXPECT_EQ(result.errors, "");
        EXPECT_TRUE(result.output ==
                    repeated(c.output_front, DEPTH) + c.output_middle + repeated(c.output_back, DEPTH));
    }
}

TEST(GenBpParser, RecordsErrorsOfDeepNests)
{
    constexpr std::size_t DEPTH = 100000;
    Rewriting const opened = rewrite(std::string(DEPTH, '('));
    EXPECT_EQ(opened.output, "");
    EXPECT_TRUE(opened.errors == repeated(UNMATCHED, DEPTH / 2) + NOTHING_INSIDE);
    Rewriting const empty = rewrite(std::string(DEPTH, '(') + std::string(DEPTH, ')'));
    EXPECT_EQ(empty.output, "");
    EXPECT_EQ(empty.errors, NOTHING_INSIDE);
    Rewriting const operators = rewrite(std::string(DEPTH, '='));
    EXPECT_EQ(operators.errors, NO_LEFT_SIDE);
}

TEST(GenBpParser, RewritesLongOperands)
{
    std::string const name(1000000, 'a');
    std::string const path = "|a" + std::string(1000000, '|');
    Rewriting const result = rewrite(name + "=" + path);
    EXPECT_EQ(result.errors, "");
    EXPECT_TRUE(result.output == "EQUAL_TO(HPATH(" + name + "),HPATH(" + path + "))");
}

TEST(GenBpParser, ReturnsNoErrorsBeforeTheParse)
{
    GEN_BP_PARSER parser;
    std::string errors = "replaced";
    parser.get_last_error(&errors);
    EXPECT_EQ(errors, "");
}

TEST(GenBpParser, CopiesWhatWasRecorded)
{
    GEN_BP_PARSER parser;
    std::string text = "a=";
    ASSERT_TRUE(parser.parse_string(&text));
    GEN_BP_PARSER const copy(parser);
    GEN_BP_PARSER assigned;
    assigned = copy;
    std::string errors;
    GEN_BP_PARSER(copy).get_last_error(&errors);
    EXPECT_EQ(errors, NO_RIGHT_SIDE);
    errors.clear();
    assigned.get_last_error(&errors);
    EXPECT_EQ(errors, NO_RIGHT_SIDE);
}

TEST(GenBpParser, ParsesAfterACopyBeforeTheParse)
{
    GEN_BP_PARSER parser;
    GEN_BP_PARSER copy(parser);
    std::string text = "a=1";
    EXPECT_FALSE(parser.parse_string(&text));
    text = "b=1";
    EXPECT_FALSE(copy.parse_string(&text));
    EXPECT_EQ(text, "EQUAL_TO(HPATH(b),BUS(1))");
}

class GenBpParserDeathTest : public testing::Test
{
protected:
    GenBpParserDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(GenBpParserDeathTest, EndsAtAParenthesisThatClosesNothing)
{
    for (char const *text : {"a)", ")", "(a)(b)", "(a))", "()a()", "(a)b", "(a)&(b)", "a=b)", "=1)", "(a)||(b))", "~)",
                             "(a)&&b)", "time)"}) {
        SCOPED_TRACE(text);
        EXPECT_EXIT(rewrite(text), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    dies_in_source("paren_count >= 0", "gen/gen_bp_parser*"));
    }
}

TEST_F(GenBpParserDeathTest, ServesForOneParse)
{
    GEN_BP_PARSER parser;
    std::string text = "a=1";
    ASSERT_FALSE(parser.parse_string(&text));
    // Copies have the same places of tokens that are gone.
    GEN_BP_PARSER copy(parser);
    GEN_BP_PARSER assigned;
    assigned = parser;
    for (GEN_BP_PARSER *used : {&parser, &copy, &assigned})
        EXPECT_EXIT(used->parse_string(&text), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    dies_in_source("token != 0", "gen/gen_bp_parser*"));
}

} // namespace
