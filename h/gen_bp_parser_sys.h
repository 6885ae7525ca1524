// Breakpoint conditions. The parser rewrites a condition into a prefix form in which every operator is a named call, so
// that a program that reads the result needs no precedence rules:
//
//     (a=1)&&(time>5ns)  ->  LOGICAL_AND(EQUAL_TO(HPATH(a),BUS(1)),TIME_GT(5ns))
//
// The kind of an operand follows from its spelling alone.
//
// | spelling                      | rewritten as                                                        |
// |-------------------------------|---------------------------------------------------------------------|
// | two bars, &&, =, >, <         | LOGICAL_OR, LOGICAL_AND, EQUAL_TO, GREATER_THAN, LESS_THAN          |
// | ~                             | NOT of its operand, which ends before the next binary operator      |
// | time, in any case, then = > < | TIME_EQ, TIME_GT, TIME_LT of the right side                         |
// | begins with a bar or a letter | HPATH(operand)                                                      |
// | else, ends in a letter        | the operand itself: a number with a unit, such as 100ns             |
// | any other operand             | BUS(operand)                                                        |
//
// The binary operators bind in the order of the first row, two bars weakest. Each groups to the right: a=b=c is
// a=(b=c).
//
// Only the six characters ( ) < = > ~ end an operand. Blanks, control characters and bytes above 126 are dropped
// everywhere, so that "a b" is the operand ab. && and two bars are operators only at the beginning and directly after
// one of the six characters; elsewhere they belong to the operand: "a && b" is the one operand a&&b. Write
// "(a) && (b)".
//
// A parser belongs to one thread; there is no shared state.
#ifndef GEN_BP_PARSER_SYS_H
#define GEN_BP_PARSER_SYS_H

#include "zel_export_sys.h"

#include <list>
#include <string>

/// Kind of a token. The order matters: operands are below BP_TOKEN_AND, and binary operators range from BP_TOKEN_AND to
/// BP_TOKEN_LESS.
enum BP_TOKEN_TYPE
{
    BP_TOKEN_VALUE = 0,        ///< operand: a literal value
    BP_TOKEN_HPATH = 1,        ///< operand: a hierarchical path
    BP_TOKEN_BUS = 2,          ///< operand: a bus value
    BP_TOKEN_AND = 3,          ///< two ampersands
    BP_TOKEN_OR = 4,           ///< two bars
    BP_TOKEN_EQUAL = 5,        ///< =
    BP_TOKEN_GREATER = 6,      ///< >
    BP_TOKEN_LESS = 7,         ///< <
    BP_TOKEN_NOT = 8,          ///< ~
    BP_TOKEN_TIME = 9,         ///< the word "time", in any case
    BP_TOKEN_LEFT_PAREN = 10,  ///< (
    BP_TOKEN_RIGHT_PAREN = 11, ///< )
};

/// A token of a condition.
struct BP_TOKEN
{
    BP_TOKEN_TYPE m_type;
    std::string m_contents; ///< text of an operand; empty for any other token
};

/// Rewrites one condition. Use a new object for each condition: if a parse found a token, a second parse_string() on
/// the same object is the internal error "token != 0".
class GEN_BP_PARSER
{
public:
    GEN_API GEN_BP_PARSER();
    /// Copies the condition, the result and the errors.
    GEN_API GEN_BP_PARSER(GEN_BP_PARSER const &other);
    /// Copies the condition, the result and the errors.
    GEN_API GEN_BP_PARSER &operator=(GEN_BP_PARSER const &other);
    GEN_API ~GEN_BP_PARSER();

    /// Rewrites a condition in place.
    ///
    /// @param text  the condition, which is replaced by its prefix form; not null. An empty condition stays empty
    ///
    /// @return **true if errors were recorded**, false for success
    ///
    /// An error doesn't end the parse: `text` receives the parts that could be built, and get_last_error() returns all
    /// errors. A closing parenthesis without an opening one in its part of the condition, as in "a)" and "(a)(b)", is
    /// the internal error "paren_count >= 0". Time and memory grow with the length of the text. Nesting uses no stack,
    /// so that no condition is nested too deeply.
    ///
    ///     a=1      -> EQUAL_TO(HPATH(a),BUS(1)), false
    ///     a>b=c    -> EQUAL_TO(GREATER_THAN(HPATH(a),HPATH(b)),HPATH(c)), false
    ///     ~(a=1)   -> NOT(EQUAL_TO(HPATH(a),BUS(1))), false
    ///     a=       -> EQUAL_TO(HPATH(a),), true
    GEN_API bool parse_string(std::string *text);

    /// The errors of the parse in the order in which they were found, each a line that ends in a line feed; empty if
    /// there were none.
    ///
    /// @param out  receives the lines; not null
    ///
    /// | line                                                  | condition                                          |
    /// |-------------------------------------------------------|----------------------------------------------------|
    /// | Unbalanced parenthesis                                | an opening parenthesis isn't closed in the terms   |
    /// | Parse Error: Bad term in equation                     | after the line above; the terms are left out       |
    /// | Parse Error: Unmatched parenthesis in equation        | a term begins with "(" but doesn't end with ")"    |
    /// | Parse Error: No subexpression within parentheses      | the parentheses are empty                          |
    /// | Parse Error: Bad symbol(s) after terminal in equation | an operand isn't followed by an operator           |
    /// | Illegal use of time                                   | the word is before an operator other than = > <    |
    /// | Missing left hand side of equation                    | no left operand; the part is left out              |
    /// | Missing right hand side of equation                   | no right operand                                   |
    /// | Bad term in equation                                  | the part can't be split at an operator             |
    GEN_API void get_last_error(std::string *out);

private:
    using TokenIterator = std::list<BP_TOKEN *>::iterator;

    // A range of tokens ends before `last`.
    GEN_API void tokenize_string();
    GEN_API void process_token_contents(std::string *current);
    GEN_API void add_token_to_list(BP_TOKEN_TYPE type, std::string const *contents);
    GEN_API bool parse_token_list(TokenIterator first, TokenIterator last);
    GEN_API bool get_first_subexpression(TokenIterator first, TokenIterator last, TokenIterator *sub_begin,
                                         TokenIterator *operator_position);
    GEN_API bool expression_has_multiple_terms(TokenIterator first, TokenIterator last);

    std::list<BP_TOKEN *> m_tokens; // null pointers after the parse
    std::string m_string;           // the condition, then the prefix form
    std::string m_error;            // error lines, never cleared
};

#endif
