// Breakpoint conditions rewritten by the plainest means: every range is walked anew, and recursion follows the grammar.
// Slow, and as deep on the stack as the condition nests; the result of a fast parser is compared with its result.
#ifndef TESTS_SUPPORT_BP_REFERENCE_H
#define TESTS_SUPPORT_BP_REFERENCE_H

#include "gen_bp_parser_sys.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class BpReference
{
public:
    using Tokens = std::vector<BP_TOKEN>;

    explicit BpReference(std::string const &text) : BpReference(tokens_of(text)) {}
    explicit BpReference(Tokens tokens) : m_tokens(std::move(tokens)) { parse(0, m_tokens.size()); }

    /// Whether a parenthesis closed nothing. Then the texts have no meaning.
    bool is_internal_error() const { return m_is_internal_error; }
    std::string const &output() const { return m_output; }
    std::string const &errors() const { return m_errors; }

    static Tokens tokens_of(std::string const &text)
    {
        Tokens tokens;
        std::string operand;
        for (char const c : text) {
            if (c < 33 || c > 126)
                continue;
            std::size_t const place = std::string_view("<=>~()").find(c);
            if (place != std::string_view::npos) {
                constexpr BP_TOKEN_TYPE TYPES[] = {BP_TOKEN_LESS, BP_TOKEN_EQUAL,      BP_TOKEN_GREATER,
                                                   BP_TOKEN_NOT,  BP_TOKEN_LEFT_PAREN, BP_TOKEN_RIGHT_PAREN};
                add_operand(tokens, operand);
                tokens.push_back({TYPES[place], ""});
                continue;
            }
            operand += c;
            if (operand == "&&" || operand == "||")
                add_operand(tokens, operand);
        }
        add_operand(tokens, operand);
        return tokens;
    }

private:
    struct Split
    {
        bool is_balanced;
        std::size_t place;
    };

    static void add_operand(Tokens &tokens, std::string &text)
    {
        if (text.empty())
            return;
        std::string lower = text;
        for (char &c : lower)
            if (c >= 'A' && c <= 'Z')
                c = static_cast<char>(c + 32);
        if (text == "&&")
            tokens.push_back({BP_TOKEN_AND, ""});
        else if (text == "||")
            tokens.push_back({BP_TOKEN_OR, ""});
        else if (lower == "time")
            tokens.push_back({BP_TOKEN_TIME, ""});
        else if (text[0] == '|' || (lower[0] >= 'a' && lower[0] <= 'z'))
            tokens.push_back({BP_TOKEN_HPATH, text});
        else if (lower.back() >= 'a' && lower.back() <= 'z')
            tokens.push_back({BP_TOKEN_VALUE, text});
        else
            tokens.push_back({BP_TOKEN_BUS, text});
        text.clear();
    }

    static bool is_operator(BP_TOKEN_TYPE type) { return type >= BP_TOKEN_AND && type <= BP_TOKEN_LESS; }

    // Goes over a token; false, and an internal error, if it closes more than was opened.
    bool count(BP_TOKEN_TYPE type, int &depth)
    {
        if (type == BP_TOKEN_LEFT_PAREN)
            ++depth;
        if (type == BP_TOKEN_RIGHT_PAREN && --depth < 0)
            m_is_internal_error = true;
        return !m_is_internal_error;
    }

    bool has_operator(std::size_t first, std::size_t last)
    {
        int depth = 0;
        for (std::size_t i = first; i < last && count(m_tokens[i].m_type, depth); ++i)
            if (depth == 0 && is_operator(m_tokens[i].m_type))
                return true;
        return false;
    }

    Split find_split(std::size_t first, std::size_t last)
    {
        std::size_t place = first;
        bool has_and = false;
        bool has_equal = false;
        bool has_greater = false;
        bool has_less = false;
        int depth = 0;
        for (std::size_t i = first; i < last; ++i) {
            BP_TOKEN_TYPE const type = m_tokens[i].m_type;
            if (!count(type, depth))
                return {true, place};
            if (depth != 0)
                continue;
            if (type == BP_TOKEN_OR) {
                place = i;
                break;
            }
            if (type == BP_TOKEN_AND && !has_and) {
                has_and = true;
                place = i;
            } else if (type == BP_TOKEN_EQUAL && !has_and && !has_equal) {
                has_equal = true;
                place = i;
            } else if (type == BP_TOKEN_GREATER && !has_and && !has_equal && !has_greater) {
                has_greater = true;
                place = i;
            } else if (type == BP_TOKEN_LESS && !has_and && !has_equal && !has_greater && !has_less) {
                has_less = true;
                place = i;
            }
        }
        return {depth == 0, place == first ? last : place};
    }

    void parse(std::size_t first, std::size_t last)
    {
        if (m_is_internal_error || first == last)
            return;
        bool const splits = has_operator(first, last);
        if (m_is_internal_error)
            return;
        if (splits)
            parse_operation(first, last);
        else
            parse_unit(first, last);
    }

    void parse_operation(std::size_t first, std::size_t last)
    {
        Split const split = find_split(first, last);
        if (m_is_internal_error)
            return;
        if (!split.is_balanced) {
            m_errors += "Unbalanced parenthesis\nParse Error: Bad term in equation\n";
            return;
        }
        BP_TOKEN_TYPE const type = split.place < last ? m_tokens[split.place].m_type : BP_TOKEN_VALUE;
        if (m_tokens[first].m_type == BP_TOKEN_TIME && split.place == first + 1) {
            if (type == BP_TOKEN_EQUAL)
                m_output += "TIME_EQ(";
            else if (type == BP_TOKEN_GREATER)
                m_output += "TIME_GT(";
            else if (type == BP_TOKEN_LESS)
                m_output += "TIME_LT(";
            else
                m_errors += "Illegal use of time\n";
            parse(split.place + 1, last);
            m_output += ")";
            return;
        }
        if (split.place == last) {
            m_errors += "Missing left hand side of equation\n";
            return;
        }
        m_output += type == BP_TOKEN_AND       ? "LOGICAL_AND("
                    : type == BP_TOKEN_OR      ? "LOGICAL_OR("
                    : type == BP_TOKEN_EQUAL   ? "EQUAL_TO("
                    : type == BP_TOKEN_GREATER ? "GREATER_THAN("
                                               : "LESS_THAN(";
        parse(first, split.place);
        m_output += ",";
        if (split.place + 1 == last)
            m_errors += "Missing right hand side of equation\n";
        parse(split.place + 1, last);
        m_output += ")";
    }

    void parse_unit(std::size_t first, std::size_t last)
    {
        BP_TOKEN const &token = m_tokens[first];
        if (token.m_type == BP_TOKEN_NOT) {
            m_output += "NOT(";
            parse(first + 1, last);
            m_output += ")";
            return;
        }
        if (token.m_type == BP_TOKEN_LEFT_PAREN) {
            if (m_tokens[last - 1].m_type != BP_TOKEN_RIGHT_PAREN)
                m_errors += "Parse Error: Unmatched parenthesis in equation\n";
            if (last - first == 2)
                m_errors += "Parse Error: No subexpression within parentheses\n";
            if (last - first > 1)
                parse(first + 1, last - 1);
            return;
        }
        if (last - first > 1)
            m_errors += "Parse Error: Bad symbol(s) after terminal in equation\n";
        if (token.m_type == BP_TOKEN_HPATH)
            m_output += "HPATH(" + token.m_contents + ")";
        if (token.m_type == BP_TOKEN_BUS)
            m_output += "BUS(" + token.m_contents + ")";
        if (token.m_type == BP_TOKEN_VALUE)
            m_output += token.m_contents;
    }

    Tokens m_tokens;
    std::string m_output;
    std::string m_errors;
    bool m_is_internal_error = false;
};

#endif
