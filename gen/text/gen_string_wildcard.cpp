#include "gen_string_sys.h"

#include "gen/base/gen_assert.h"

#include <cstring>
#include <utility>

namespace {

void append_as_expression(std::string &expression, char c)
{
    if (c == '?') {
        expression += '.';
    } else if (gen_ascii_isalpha(c)) {
        expression += {'[', gen_ascii_tolower(c), gen_ascii_toupper(c), ']'};
    } else {
        if (c == '*')
            expression += '.';
        else if (std::strchr("().[\\]|", c) != nullptr && c != '\0')
            expression += '\\';
        expression += c;
    }
}

} // namespace

bool gen_has_wildcard_chars(char const *text)
{
    return text != nullptr && std::strpbrk(text, "*?") != nullptr;
}

void gen_wildcard_to_reg_expr(std::string *wildcard, bool anchor)
{
    GEN_ASSERT(wildcard != nullptr, "wildcard != 0");
    std::string expression;
    expression.reserve(wildcard->size() * 4 + 2); // a letter takes four characters
    if (anchor)
        expression += '^';
    for (char c : *wildcard)
        append_as_expression(expression, c);
    if (anchor)
        expression += '$';
    *wildcard = std::move(expression);
}
