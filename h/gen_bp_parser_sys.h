// Breakpoint conditions. A condition as a person writes it is rewritten into a prefix form in which every operator is a
// named call, so that a reader of the result needs no precedence rules:
//
//     (a=1)&&(time>5ns)  ->  LOGICAL_AND(EQUAL_TO(HPATH(a),BUS(1)),TIME_GT(5ns))
//
// The parser works on text alone and tells operands apart by their spelling.
//
// | spelling                      | rewritten as                                                        |
// |-------------------------------|---------------------------------------------------------------------|
// | two bars, &&, =, >, <         | LOGICAL_OR, LOGICAL_AND, EQUAL_TO, GREATER_THAN, LESS_THAN          |
// | ~                             | NOT, of all that follows up to the operator that splits the range   |
// | time, in any case, then = > < | TIME_EQ, TIME_GT, TIME_LT of the right side                         |
// | begins with a bar or a letter | HPATH(operand)                                                      |
// | else, ends in a letter        | the operand itself: a number with a unit, such as 100ns             |
// | any other operand             | BUS(operand)                                                        |
//
// The operators bind in the order of the first row, the two bars weakest; each groups to the right: a=b=c is a=(b=c).
//
// Only ( ) < = > ~ end an operand. Blanks, control characters and bytes above 126 are dropped wherever they stand, so
// "a b" is the operand ab; && and two bars are operators only where no operand stands before them, that is right after
// one of the six. "a && b" is the one operand a&&b: terms of these two operators need parentheses.
//
// A parser belongs to one thread; there is no shared state.
#ifndef GEN_BP_PARSER_SYS_H
#define GEN_BP_PARSER_SYS_H

#include "zel_export_sys.h"

#include <list>
#include <string>

/// Class of a token. The order counts: operands are below BP_TOKEN_AND, binary operators from there to BP_TOKEN_LESS.
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

/// Rewrites one condition. An object serves for one parse: a second parse_string() on it is an internal error once the
/// first one met a token.
class GEN_BP_PARSER
{
public:
    GEN_API GEN_BP_PARSER();
    /// Copies what the parser has recorded.
    GEN_API GEN_BP_PARSER(GEN_BP_PARSER const &other);
    /// Copies what the parser has recorded, in place of what it had.
    GEN_API GEN_BP_PARSER &operator=(GEN_BP_PARSER const &other);
    GEN_API ~GEN_BP_PARSER();

    /// Rewrites a condition in place.
    ///
    /// @param text  the condition, and then its prefix form; not null. An empty condition stays empty.
    ///
    /// @return **true if errors were recorded**, false for success
    ///
    /// Errors don't stop the rewrite: `text` then holds what could be built, and get_last_error() tells all of them.
    /// A closing parenthesis that closes nothing in the range it is met in, as in "a)" and "(a)(b)", is an internal
    /// error, not a recorded one. Time and memory grow with the length of the text, and no condition is too deep for
    /// the stack.
    ///
    ///     a=1      -> EQUAL_TO(HPATH(a),BUS(1)), false
    ///     a>b=c    -> EQUAL_TO(GREATER_THAN(HPATH(a),HPATH(b)),HPATH(c)), false
    ///     ~(a=1)   -> NOT(EQUAL_TO(HPATH(a),BUS(1))), false
    ///     a=       -> EQUAL_TO(HPATH(a),), true
    GEN_API bool parse_string(std::string *text);

    /// The errors of the parse, in the order they were met, each a line that ends in a line feed; empty without errors.
    ///
    /// @param out  receives the lines; not null
    ///
    /// | line                                                  | condition                                          |
    /// |-------------------------------------------------------|----------------------------------------------------|
    /// | Unbalanced parenthesis                                | the terms of an operator leave one open            |
    /// | Parse Error: Bad term in equation                     | follows the line above; the terms are left out     |
    /// | Parse Error: Unmatched parenthesis in equation        | a term begins with one and ends in something else  |
    /// | Parse Error: No subexpression within parentheses      | nothing stands inside                              |
    /// | Parse Error: Bad symbol(s) after terminal in equation | an operand is followed by no operator              |
    /// | Illegal use of time                                   | the word stands before an operator but = > <       |
    /// | Missing left hand side of equation                    | an operator begins it; the range is left out       |
    /// | Missing right hand side of equation                   | an operator ends the range                         |
    /// | Bad term in equation                                  | a split at what is no operator                     |
    GEN_API void get_last_error(std::string *out);

private:
    using TOKEN_ITERATOR = std::list<BP_TOKEN *>::iterator;

    // Ranges of tokens exclude `last`.
    GEN_API void tokenize_string();
    GEN_API void process_token_contents(std::string *current);
    GEN_API void add_token_to_list(BP_TOKEN_TYPE type, std::string const *contents);
    GEN_API bool parse_token_list(TOKEN_ITERATOR first, TOKEN_ITERATOR last);
    GEN_API bool get_first_subexpression(TOKEN_ITERATOR first, TOKEN_ITERATOR last, TOKEN_ITERATOR *sub_begin,
                                         TOKEN_ITERATOR *operator_position);
    GEN_API bool expression_has_multiple_terms(TOKEN_ITERATOR first, TOKEN_ITERATOR last);

    std::list<BP_TOKEN *> m_tokens; // null pointers after the parse
    std::string m_string;           // the condition, then the prefix form
    std::string m_error;            // lines, never cleared
};

#endif
