// The steps of the parser one by one, and its internal errors as exceptions: over a stand-in for their report.
#include "gen_bp_parser_sys.h"

#include "err_sys.h"
#include "tests/support/bp_reference.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <list>
#include <new>
#include <random>
#include <string>
#include <vector>

namespace {

using testing::AllOf;
using testing::Field;
using testing::StartsWith;
using testing::Throws;

struct InternalError
{
    std::string expression;
    std::string module;
    std::string file;
};

bool l_is_memory_missing = false;

auto throws_internal_error(char const *expression)
{
    return Throws<InternalError>(AllOf(Field(&InternalError::expression, expression),
                                       Field(&InternalError::module, "GEN"),
                                       Field(&InternalError::file, StartsWith("gen/gen_bp_parser"))));
}

} // namespace

void err_report_internal_error(char const *expression, char const *module, char const *file, int)
{
    throw InternalError{expression, module, file};
}

void *operator new(std::size_t size, std::nothrow_t const &) noexcept
{
    return l_is_memory_missing ? nullptr : ::operator new(size);
}

namespace {

// An explicit instantiation may name private members; each becomes what member_of() gives for its tag.
template <typename Tag, typename Tag::Member MEMBER>
struct Opened
{
    friend typename Tag::Member member_of(Tag) { return MEMBER; }
};

using Token = std::list<BP_TOKEN *>::iterator;

#define OPEN_MEMBER(tag, name, ...)                                                                                    \
    struct tag                                                                                                         \
    {                                                                                                                  \
        using Member = __VA_ARGS__;                                                                                    \
        friend Member member_of(tag);                                                                                  \
    };                                                                                                                 \
    template struct Opened<tag, &GEN_BP_PARSER::name>

OPEN_MEMBER(TokensTag, m_tokens, std::list<BP_TOKEN *> GEN_BP_PARSER::*);
OPEN_MEMBER(StringTag, m_string, std::string GEN_BP_PARSER::*);
OPEN_MEMBER(ErrorTag, m_error, std::string GEN_BP_PARSER::*);
OPEN_MEMBER(TokenizeStringTag, tokenize_string, void (GEN_BP_PARSER::*)());
OPEN_MEMBER(ProcessTokenContentsTag, process_token_contents, void (GEN_BP_PARSER::*)(std::string *));
OPEN_MEMBER(AddTokenToListTag, add_token_to_list, void (GEN_BP_PARSER::*)(BP_TOKEN_TYPE, std::string const *));
OPEN_MEMBER(ParseTokenListTag, parse_token_list, bool (GEN_BP_PARSER::*)(Token, Token));
OPEN_MEMBER(GetFirstSubexpressionTag, get_first_subexpression, bool (GEN_BP_PARSER::*)(Token, Token, Token *, Token *));
OPEN_MEMBER(ExpressionHasMultipleTermsTag, expression_has_multiple_terms, bool (GEN_BP_PARSER::*)(Token, Token));

#undef OPEN_MEMBER

// A parser whose steps are open, and which releases its tokens.
class OpenParser
{
public:
    OpenParser() = default;
    explicit OpenParser(std::string const &text)
    {
        string() = text;
        tokenize();
        string().clear();
    }
    explicit OpenParser(BpReference::Tokens const &tokens)
    {
        for (BP_TOKEN const &token : tokens)
            add(token.m_type, &token.m_contents);
    }
    ~OpenParser()
    {
        for (BP_TOKEN const *token : tokens())
            delete token;
    }
    OpenParser(OpenParser const &) = delete;
    OpenParser &operator=(OpenParser const &) = delete;

    std::list<BP_TOKEN *> &tokens() { return m_parser.*member_of(TokensTag()); }
    std::string &string() { return m_parser.*member_of(StringTag()); }
    std::string &errors() { return m_parser.*member_of(ErrorTag()); }
    void tokenize() { (m_parser.*member_of(TokenizeStringTag()))(); }
    void process(std::string *current) { (m_parser.*member_of(ProcessTokenContentsTag()))(current); }
    void add(BP_TOKEN_TYPE type, std::string const *contents)
    {
        (m_parser.*member_of(AddTokenToListTag()))(type, contents);
    }
    bool parse(Token first, Token last) { return (m_parser.*member_of(ParseTokenListTag()))(first, last); }
    bool parse() { return parse(tokens().begin(), tokens().end()); }
    bool has_multiple_terms(Token first, Token last)
    {
        return (m_parser.*member_of(ExpressionHasMultipleTermsTag()))(first, last);
    }
    bool has_multiple_terms() { return has_multiple_terms(tokens().begin(), tokens().end()); }
    bool get_first_subexpression(Token first, Token last, Token *sub_begin, Token *operator_position)
    {
        return (m_parser.*member_of(GetFirstSubexpressionTag()))(first, last, sub_begin, operator_position);
    }

private:
    GEN_BP_PARSER m_parser;
};

std::string tokens_text(BpReference::Tokens const &tokens)
{
    constexpr char const *SPELLED[] = {"value", "path", "bus", "&&", "||", "=", ">", "<", "~", "time", "(", ")"};
    std::string text;
    for (BP_TOKEN const &token : tokens)
        text.append(SPELLED[token.m_type]) += ' ';
    return text;
}

// True if both end alike.
bool follows_reference(BpReference::Tokens const &tokens)
{
    BpReference const reference(tokens);
    OpenParser parser(tokens);
    try {
        parser.parse();
    } catch (InternalError const &error) {
        return reference.is_internal_error() && error.expression == "paren_count >= 0";
    }
    return !reference.is_internal_error() && parser.string() == reference.output() &&
           parser.errors() == reference.errors();
}

BP_TOKEN token_of(BP_TOKEN_TYPE type)
{
    constexpr char const *OPERANDS[] = {"5ns", "a", "1"};
    return {type, type <= BP_TOKEN_BUS ? OPERANDS[type] : ""};
}

} // namespace

// All runs of up to `length` tokens of the given types.
void expect_reference_followed(std::vector<BP_TOKEN_TYPE> const &types, std::size_t length)
{
    std::vector<std::size_t> places;
    BpReference::Tokens tokens;
    while (true) {
        ASSERT_TRUE(follows_reference(tokens)) << tokens_text(tokens);
        // counts on, in a number whose digits are types; one digit more after the largest value
        std::size_t digit = 0;
        while (digit < places.size() && ++places[digit] == types.size())
            places[digit++] = 0;
        if (digit == places.size())
            places.push_back(0);
        if (places.size() > length)
            return;
        tokens.clear();
        for (std::size_t const place : places)
            tokens.push_back(token_of(types[place]));
    }
}

TEST(GenBpParserRules, EveryShortRunOfTokensFollowsTheReference)
{
    std::vector<BP_TOKEN_TYPE> types;
    for (int type = BP_TOKEN_VALUE; type <= BP_TOKEN_RIGHT_PAREN; ++type)
        types.push_back(static_cast<BP_TOKEN_TYPE>(type));
    expect_reference_followed(types, 4);
}

TEST(GenBpParserRules, EveryNestOfAnOperatorFollowsTheReference)
{
    for (int type = BP_TOKEN_AND; type <= BP_TOKEN_NOT; ++type)
        expect_reference_followed(
            {BP_TOKEN_HPATH, static_cast<BP_TOKEN_TYPE>(type), BP_TOKEN_LEFT_PAREN, BP_TOKEN_RIGHT_PAREN}, 7);
}

TEST(GenBpParserRules, EveryMixOfOperatorsFollowsTheReference)
{
    expect_reference_followed(
        {BP_TOKEN_AND, BP_TOKEN_OR, BP_TOKEN_EQUAL, BP_TOKEN_GREATER, BP_TOKEN_LESS, BP_TOKEN_TIME, BP_TOKEN_HPATH}, 5);
}

TEST(GenBpParserRules, LongRunsFollowTheReference)
{
    std::mt19937 numbers(20261121);
    for (int run = 0; run < 20000; ++run) {
        // Well-formed for the most part: operands and operators take turns, and few parentheses miss a partner.
        BpReference::Tokens tokens;
        int depth = 0;
        std::size_t const length = 1 + numbers() % 60;
        while (tokens.size() < length) {
            while (numbers() % 3 == 0 && ++depth > 0)
                tokens.push_back(token_of(BP_TOKEN_LEFT_PAREN));
            if (numbers() % 5 == 0)
                tokens.push_back(token_of(BP_TOKEN_NOT));
            tokens.push_back(token_of(numbers() % 8 == 0 ? BP_TOKEN_TIME : BP_TOKEN_TYPE(numbers() % 3)));
            while (depth > 0 && numbers() % 3 == 0 && depth-- > 0)
                tokens.push_back(token_of(BP_TOKEN_RIGHT_PAREN));
            if (numbers() % 20 != 0)
                tokens.push_back(token_of(BP_TOKEN_TYPE(BP_TOKEN_AND + numbers() % 5)));
        }
        if (numbers() % 4 != 0)
            while (depth-- > 0)
                tokens.push_back(token_of(BP_TOKEN_RIGHT_PAREN));
        ASSERT_TRUE(follows_reference(tokens)) << tokens_text(tokens);
    }
}

TEST(GenBpParserRules, NumbersTheTypes)
{
    constexpr BP_TOKEN_TYPE TYPES[] = {
        BP_TOKEN_VALUE,   BP_TOKEN_HPATH, BP_TOKEN_BUS, BP_TOKEN_AND,  BP_TOKEN_OR,         BP_TOKEN_EQUAL,
        BP_TOKEN_GREATER, BP_TOKEN_LESS,  BP_TOKEN_NOT, BP_TOKEN_TIME, BP_TOKEN_LEFT_PAREN, BP_TOKEN_RIGHT_PAREN,
    };
    for (std::size_t i = 0; i < std::size(TYPES); ++i)
        EXPECT_EQ(static_cast<std::size_t>(TYPES[i]), i);
}

struct ContentsCase
{
    char const *text;
    BP_TOKEN_TYPE type;
    char const *contents;
};

TEST(GenBpParserRules, ClassifiesContents)
{
    constexpr ContentsCase CASES[] = {
        {"&&", BP_TOKEN_AND, ""},       {"||", BP_TOKEN_OR, ""},        {"time", BP_TOKEN_TIME, ""},
        {"TIME", BP_TOKEN_TIME, ""},    {"tImE", BP_TOKEN_TIME, ""},    {"timed", BP_TOKEN_HPATH, "timed"},
        {"tim", BP_TOKEN_HPATH, "tim"}, {"|a", BP_TOKEN_HPATH, "|a"},   {"|", BP_TOKEN_HPATH, "|"},
        {"&|", BP_TOKEN_BUS, "&|"},     {"|&", BP_TOKEN_HPATH, "|&"},   {"100ns", BP_TOKEN_VALUE, "100ns"},
        {"1010", BP_TOKEN_BUS, "1010"}, {"a0", BP_TOKEN_HPATH, "a0"},   {"0a0", BP_TOKEN_BUS, "0a0"},
        {"&&&", BP_TOKEN_BUS, "&&&"},   {"\xe9", BP_TOKEN_BUS, "\xe9"}, {"0\xe9", BP_TOKEN_BUS, "0\xe9"},
    };
    for (ContentsCase const &c : CASES) {
        SCOPED_TRACE(c.text);
        OpenParser parser;
        std::string current = c.text;
        parser.process(&current);
        EXPECT_EQ(current, "");
        ASSERT_EQ(parser.tokens().size(), 1U);
        EXPECT_EQ(parser.tokens().front()->m_type, c.type);
        EXPECT_EQ(parser.tokens().front()->m_contents, c.contents);
    }
}

TEST(GenBpParserRules, PassesOverEmptyContents)
{
    OpenParser parser;
    std::string current;
    parser.process(&current);
    EXPECT_TRUE(parser.tokens().empty());
}

TEST(GenBpParserRules, TokenizesInOrder)
{
    OpenParser parser;
    parser.string() = "~(a =1)&&|b > 5ns||";
    parser.tokenize();
    std::string text;
    for (BP_TOKEN const *token : parser.tokens())
        text += std::to_string(token->m_type) + ":" + token->m_contents + " ";
    EXPECT_EQ(text, "8: 10: 1:a 5: 2:1 11: 3: 1:|b 6: 2:5ns|| ");
}

TEST(GenBpParserRules, GuardsTimeBeforeOtherOperators)
{
    for (BP_TOKEN_TYPE const type : {BP_TOKEN_AND, BP_TOKEN_OR}) {
        OpenParser parser({token_of(BP_TOKEN_TIME), token_of(type), token_of(BP_TOKEN_HPATH)});
        EXPECT_TRUE(parser.parse());
        EXPECT_EQ(parser.string(), "HPATH(a))") << type;
        EXPECT_EQ(parser.errors(), "Illegal use of time\n") << type;
    }
}

TEST(GenBpParserRules, ParsesTheRangeAlone)
{
    OpenParser parser("(a=1)=b");
    EXPECT_TRUE(parser.parse(std::next(parser.tokens().begin()), std::next(parser.tokens().begin(), 4)));
    EXPECT_EQ(parser.string(), "EQUAL_TO(HPATH(a),BUS(1))");
    EXPECT_EQ(parser.tokens().size(), 7U);
}

TEST(GenBpParserRules, EndsAtAParenthesisThatClosesNothing)
{
    OpenParser parser("a)");
    EXPECT_THAT([&] { parser.parse(); }, throws_internal_error("paren_count >= 0"));
    EXPECT_THAT([&] { parser.has_multiple_terms(); }, throws_internal_error("paren_count >= 0"));
    Token begin, position;
    EXPECT_THAT(
        [&] { parser.get_first_subexpression(parser.tokens().begin(), parser.tokens().end(), &begin, &position); },
        throws_internal_error("paren_count >= 0"));
}

TEST(GenBpParserRules, EndsWithoutMemoryForAToken)
{
    OpenParser parser;
    l_is_memory_missing = true;
    EXPECT_THAT([&] { parser.add(BP_TOKEN_NOT, nullptr); }, throws_internal_error("new_token != 0"));
    l_is_memory_missing = false;
    EXPECT_TRUE(parser.tokens().empty());
}

struct TermsCase
{
    char const *text;
    bool has_multiple;
};

TEST(GenBpParserRules, LooksForOperatorsAtTheOuterDepth)
{
    constexpr TermsCase CASES[] = {
        {"", false},     {"a", false},      {"a=1", true},    {"(a=1)", false}, {"~(a=1)", false}, {"(a)&&(b)", true},
        {"(a)||", true}, {"((a)=b", false}, {"(a)>(b", true}, {"<", true},      {"a=b)", true}, // before the end
    };
    for (TermsCase const &c : CASES)
        EXPECT_EQ(OpenParser(c.text).has_multiple_terms(), c.has_multiple) << c.text;
}

struct SplitCase
{
    char const *text;
    std::size_t operator_position; // as many as there are tokens for none
    bool is_balanced;
};

TEST(GenBpParserRules, SplitsAtTheWeakestOperator)
{
    constexpr SplitCase CASES[] = {
        {"", 0, true},        {"a", 1, true},       {"a=1", 1, true},          {"a=b=c", 1, true},
        {"a<b>c", 3, true},   {"a<b>c=d", 5, true}, {"a<b>c=(d)&&e", 9, true}, {"a<b>c=(d)&&(e)||f", 13, true},
        {"(a=b)>c", 5, true}, {"(a=b)", 5, true},   {"=a", 2, true},   // nothing before it looks like no split
        {"=a=b", 4, true},    {"=(a)&&b", 4, true}, {"||(a", 3, true}, // the search ends there
        {"(a)||(b", 3, true}, {"a=(b", 1, false},   {"(a", 0, false},
    };
    for (SplitCase const &c : CASES) {
        SCOPED_TRACE(c.text);
        OpenParser parser(c.text);
        Token const first = parser.tokens().begin();
        Token begin, position;
        EXPECT_EQ(parser.get_first_subexpression(first, parser.tokens().end(), &begin, &position), c.is_balanced);
        EXPECT_EQ(begin, first);
        EXPECT_EQ(static_cast<std::size_t>(std::distance(first, position)), c.operator_position);
        EXPECT_EQ(parser.errors(), c.is_balanced ? "" : "Unbalanced parenthesis\n");
    }
}
