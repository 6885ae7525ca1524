#include "gen_bp_parser_sys.h"

#include "gen/base/gen_assert.h"
#include "gen/text/gen_bp_parser_ranges.h"
#include "gen_string_sys.h"

#include <new>
#include <vector>

namespace {

// The token type of a character that ends an operand; BP_TOKEN_VALUE for all other characters.
BP_TOKEN_TYPE type_of_character(char c)
{
    switch (c) {
    case '(':
        return BP_TOKEN_LEFT_PAREN;
    case ')':
        return BP_TOKEN_RIGHT_PAREN;
    case '<':
        return BP_TOKEN_LESS;
    case '=':
        return BP_TOKEN_EQUAL;
    case '>':
        return BP_TOKEN_GREATER;
    case '~':
        return BP_TOKEN_NOT;
    default:
        return BP_TOKEN_VALUE;
    }
}

BP_TOKEN_TYPE type_of_operand(std::string const &operand)
{
    if (operand.front() == '|' || gen_ascii_isalpha(operand.front()))
        return BP_TOKEN_HPATH;
    if (gen_ascii_isalpha(operand.back()))
        return BP_TOKEN_VALUE;
    return BP_TOKEN_BUS;
}

// Null if the type is not a binary operator.
char const *opening_of_operator(BP_TOKEN_TYPE type)
{
    switch (type) {
    case BP_TOKEN_AND:
        return "LOGICAL_AND(";
    case BP_TOKEN_OR:
        return "LOGICAL_OR(";
    case BP_TOKEN_EQUAL:
        return "EQUAL_TO(";
    case BP_TOKEN_GREATER:
        return "GREATER_THAN(";
    case BP_TOKEN_LESS:
        return "LESS_THAN(";
    default:
        return nullptr;
    }
}

// Null if the type is not a comparison.
char const *opening_of_time_test(BP_TOKEN_TYPE type)
{
    switch (type) {
    case BP_TOKEN_EQUAL:
        return "TIME_EQ(";
    case BP_TOKEN_GREATER:
        return "TIME_GT(";
    case BP_TOKEN_LESS:
        return "TIME_LT(";
    default:
        return nullptr;
    }
}

// Rewrites the tokens of a condition in prefix form. It uses a stack of its own instead of recursion, so that the depth
// of an expression is limited only by memory. The stack holds the right sides and the closing parentheses that are to
// be written after the current range.
class BP_REWRITER
{
public:
    BP_REWRITER(std::list<BP_TOKEN *>::const_iterator first, std::list<BP_TOKEN *>::const_iterator last,
                std::string *output, std::string *errors)
        : m_ranges(first, last), m_output(output), m_errors(errors)
    {
    }

    void rewrite()
    {
        rewrite_range(m_ranges.whole());
        while (!m_waiting.empty()) {
            PendingRewrite const waiting = m_waiting.back();
            m_waiting.pop_back();
            if (waiting.is_right_side)
                rewrite_right_side(waiting.range);
            else
                *m_output += ')';
        }
    }

    BP_RANGE whole() const { return m_ranges.whole(); }

    /// The operator that splits a range that isn't empty; the end of the range if there is no operator or if it is the
    /// first token.
    ///
    /// @return false, with an error recorded, if the range leaves a parenthesis open
    bool find_split(BP_RANGE range, std::size_t *split)
    {
        bool balanced;
        *split = m_ranges.find_split(range, &balanced);
        if (!balanced) {
            *m_errors += "Unbalanced parenthesis\n";
            return false;
        }
        if (*split == range.first)
            *split = range.last;
        return true;
    }

private:
    // A right side still to be rewritten, or a parenthesis still to be closed.
    struct PendingRewrite
    {
        bool is_right_side;
        BP_RANGE range;
    };
    static constexpr PendingRewrite CLOSE{false, {0, 0}};
    static constexpr BP_RANGE NOTHING{0, 0};

    // Each step rewrites a part of the range and returns the part that remains.
    void rewrite_range(BP_RANGE range)
    {
        while (!range.is_empty())
            range = m_ranges.has_operator(range) ? rewrite_operation(range) : rewrite_unit(range);
    }

    void rewrite_right_side(BP_RANGE range)
    {
        *m_output += ',';
        if (range.is_empty())
            *m_errors += "Missing right hand side of equation\n";
        m_waiting.push_back(CLOSE);
        rewrite_range(range);
    }

    BP_RANGE rewrite_operation(BP_RANGE range)
    {
        std::size_t split;
        if (!find_split(range, &split)) {
            *m_errors += "Parse Error: Bad term in equation\n";
            return NOTHING;
        }
        if (split == range.last) {
            *m_errors += "Missing left hand side of equation\n";
            return NOTHING;
        }
        BP_TOKEN_TYPE const type = m_ranges.token(split).m_type;
        BP_RANGE const right_side{split + 1, range.last};
        if (m_ranges.token(range.first).m_type == BP_TOKEN_TIME && split == range.first + 1) {
            open(opening_of_time_test(type), "Illegal use of time\n");
            m_waiting.push_back(CLOSE);
            return right_side;
        }
        open(opening_of_operator(type), "Bad term in equation\n");
        m_waiting.push_back({true, right_side});
        return {range.first, split};
    }

    void open(char const *opening, char const *error)
    {
        if (opening != nullptr)
            *m_output += opening;
        else
            *m_errors += error;
    }

    BP_RANGE rewrite_unit(BP_RANGE range)
    {
        switch (m_ranges.token(range.first).m_type) {
        case BP_TOKEN_NOT:
            *m_output += "NOT(";
            m_waiting.push_back(CLOSE);
            return {range.first + 1, range.last};
        case BP_TOKEN_LEFT_PAREN:
            return strip_parentheses(range);
        default:
            rewrite_terminal(range);
            return NOTHING;
        }
    }

    BP_RANGE strip_parentheses(BP_RANGE range)
    {
        std::size_t const end = range.last - 1;
        if (m_ranges.token(end).m_type != BP_TOKEN_RIGHT_PAREN)
            *m_errors += "Parse Error: Unmatched parenthesis in equation\n";
        if (end == range.first)
            return NOTHING;
        if (end == range.first + 1)
            *m_errors += "Parse Error: No subexpression within parentheses\n";
        return {range.first + 1, end};
    }

    void rewrite_terminal(BP_RANGE range)
    {
        if (range.last - range.first > 1)
            *m_errors += "Parse Error: Bad symbol(s) after terminal in equation\n";
        BP_TOKEN const &token = m_ranges.token(range.first);
        switch (token.m_type) {
        case BP_TOKEN_HPATH:
            m_output->append("HPATH(").append(token.m_contents) += ')';
            break;
        case BP_TOKEN_BUS:
            m_output->append("BUS(").append(token.m_contents) += ')';
            break;
        case BP_TOKEN_VALUE:
            *m_output += token.m_contents;
            break;
        default: // the word "time" alone is dropped
            break;
        }
    }

    BP_TOKEN_RANGES m_ranges;
    std::vector<PendingRewrite> m_waiting;
    std::string *m_output;
    std::string *m_errors;
};

} // namespace

GEN_BP_PARSER::GEN_BP_PARSER() = default;
GEN_BP_PARSER::GEN_BP_PARSER(GEN_BP_PARSER const &other) = default;
GEN_BP_PARSER &GEN_BP_PARSER::operator=(GEN_BP_PARSER const &other) = default;
GEN_BP_PARSER::~GEN_BP_PARSER() = default; // parse_string() has deleted the tokens

bool GEN_BP_PARSER::parse_string(std::string *text)
{
    m_string = *text;
    tokenize_string();
    m_string.clear();
    parse_token_list(m_tokens.begin(), m_tokens.end());
    for (BP_TOKEN *&token : m_tokens) {
        delete token;
        token = nullptr;
    }
    *text = m_string;
    return !m_error.empty();
}

void GEN_BP_PARSER::get_last_error(std::string *out)
{
    *out = m_error;
}

void GEN_BP_PARSER::tokenize_string()
{
    std::string current;
    for (char const c : m_string) {
        if (!gen_ascii_isgraph(c))
            continue;
        BP_TOKEN_TYPE const type = type_of_character(c);
        if (type != BP_TOKEN_VALUE) {
            process_token_contents(&current);
            add_token_to_list(type, nullptr);
            continue;
        }
        current += c;
        // Operators only at the start of an operand, since paths may contain these characters.
        if ((c == '&' && current == "&&") || (c == '|' && current == "||"))
            process_token_contents(&current);
    }
    process_token_contents(&current);
}

void GEN_BP_PARSER::process_token_contents(std::string *current)
{
    if (current->empty())
        return;
    if (*current == "&&")
        add_token_to_list(BP_TOKEN_AND, nullptr);
    else if (*current == "||")
        add_token_to_list(BP_TOKEN_OR, nullptr);
    else if (gen_stricmp(current->c_str(), "time") == 0)
        add_token_to_list(BP_TOKEN_TIME, nullptr);
    else
        add_token_to_list(type_of_operand(*current), current);
    current->clear();
}

void GEN_BP_PARSER::add_token_to_list(BP_TOKEN_TYPE type, std::string const *contents)
{
    auto *const new_token = new (std::nothrow) BP_TOKEN{type, {}};
    GEN_ASSERT(new_token != nullptr, "new_token != 0");
    if (contents != nullptr)
        new_token->m_contents = *contents;
    m_tokens.push_back(new_token);
}

bool GEN_BP_PARSER::parse_token_list(TokenIterator first, TokenIterator last)
{
    BP_REWRITER(first, last, &m_string, &m_error).rewrite();
    return true;
}

bool GEN_BP_PARSER::get_first_subexpression(TokenIterator first, TokenIterator last, TokenIterator *sub_begin,
                                            TokenIterator *operator_position)
{
    *sub_begin = first;
    *operator_position = last;
    if (first == last)
        return true;
    BP_REWRITER rewriter(first, last, &m_string, &m_error);
    std::size_t split;
    bool const is_balanced = rewriter.find_split(rewriter.whole(), &split);
    *operator_position = std::next(first, static_cast<std::ptrdiff_t>(split));
    return is_balanced;
}

bool GEN_BP_PARSER::expression_has_multiple_terms(TokenIterator first, TokenIterator last)
{
    BP_TOKEN_RANGES const ranges(first, last);
    return ranges.has_operator(ranges.whole());
}
