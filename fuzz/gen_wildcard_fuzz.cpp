// Wild cards as regular expressions. The input is the wild card and, after the first line feed, a text to match.
#include "gen_string_sys.h"

#include "fuzz_target.h"

#include <boost/regex.hpp>

#include <stdexcept>

namespace {

// Whether a wild card contains a character that keeps its special meaning in the regular expression.
bool has_live_character(std::string const &wildcard)
{
    return wildcard.find_first_of("+^${}") != std::string::npos;
}

// Whether a wild card without such characters matches a whole text, computed without a regular expression.
bool matches(std::string const &wildcard, std::string const &text)
{
    // Element i: whether the characters of the wild card so far match the first i characters of the text.
    std::vector<bool> matched(text.size() + 1, false);
    matched[0] = true;
    for (char c : wildcard) {
        std::vector<bool> next(text.size() + 1, false);
        for (std::size_t end = 0; end <= text.size(); ++end) {
            bool const is_equal = end > 0 && (c == '?' || gen_ascii_tolower(c) == gen_ascii_tolower(text[end - 1]));
            if (c == '*')
                next[end] = matched[end] || (end > 0 && next[end - 1]);
            else
                next[end] = is_equal && matched[end - 1];
        }
        matched = next;
    }
    return matched.back();
}

// Requires that the regular expression and the wild card agree on a text. A search that takes too long is skipped.
void check_match(std::string const &wildcard, boost::regex const &anchored, std::string const &text)
{
    bool is_match = false;
    try {
        is_match = boost::regex_match(text, anchored);
    } catch (std::runtime_error const &) {
        return;
    }
    require(is_match == matches(wildcard, text));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::uint8_t const *const end = data + size;
    std::uint8_t const *const border = std::find(data, end, '\n');
    std::string const wildcard(data, border);
    std::string const text(border == end ? end : border + 1, end);

    std::string expression = wildcard;
    gen_wildcard_to_reg_expr(&expression, /*anchor=*/false);
    require(expression.size() >= wildcard.size());

    std::string anchored = wildcard;
    gen_wildcard_to_reg_expr(&anchored, /*anchor=*/true);
    require(anchored == '^' + expression + '$');

    if (has_live_character(wildcard))
        return 0;
    boost::regex const compiled(expression, boost::regex::perl | boost::regex::no_except);
    boost::regex const compiled_anchored(anchored, boost::regex::perl | boost::regex::no_except);
    require(compiled.status() == 0 && compiled_anchored.status() == 0);
    check_match(wildcard, compiled, text);
    check_match(wildcard, compiled_anchored, text);
    return 0;
}
