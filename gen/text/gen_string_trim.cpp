#include "gen_string_sys.h"

namespace {

constexpr char const *BLANK = " ";
constexpr char const *WHITE_SPACE = " \t\n\r";

std::string without_ends(std::string const &text, char const *characters)
{
    std::size_t const first = text.find_first_not_of(characters);
    if (first == std::string::npos)
        return {};
    return text.substr(first, text.find_last_not_of(characters) - first + 1);
}

} // namespace

std::string gen_remove_leading_and_trailing_spaces(std::string const &text)
{
    return without_ends(text, BLANK);
}

void gen_remove_leading_and_trailing_spaces(std::string const &text, std::string *out)
{
    if (out != nullptr)
        *out = without_ends(text, BLANK);
}

std::string gen_remove_leading_and_trailing_white_spaces(std::string const &text)
{
    return without_ends(text, WHITE_SPACE);
}

void gen_remove_leading_and_trailing_white_spaces(std::string const &text, std::string *out)
{
    if (out != nullptr)
        *out = without_ends(text, WHITE_SPACE);
}
