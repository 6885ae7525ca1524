// Wild cards as regular expressions. The input is the wild card.
#include "gen_string_sys.h"

#include <boost/regex.hpp>

#include <cstdint>
#include <cstdlib>

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

// The characters that stay live in the expression.
bool has_live_character(std::string const &wildcard)
{
    return wildcard.find_first_of("+^${}") != std::string::npos;
}

bool compiles(std::string const &expression)
{
    boost::regex const compiled(expression, boost::regex::perl | boost::regex::no_except);
    return compiled.status() == 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::string const wildcard(data, data + size);
    std::string expression = wildcard;
    gen_wildcard_to_reg_expr(&expression, /*anchor=*/false);
    require(expression.size() >= wildcard.size());

    std::string anchored = wildcard;
    gen_wildcard_to_reg_expr(&anchored, /*anchor=*/true);
    require(anchored == '^' + expression + '$');

    require(has_live_character(wildcard) || (compiles(expression) && compiles(anchored)));
    return 0;
}
