// A condition, parsed and compared with the result of a simple parser. Conditions that lead to an internal error are
// skipped, since it ends the process.
#include "gen_bp_parser_sys.h"

#include "tests/support/bp_reference.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

// The simple parser takes time in the square of the length, and a stack frame for each level of nesting.
constexpr std::size_t MAX_LENGTH = 4096;

void require(bool holds, char const *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "differs: %s\n", what);
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::string const condition(reinterpret_cast<char const *>(data), std::min(size, MAX_LENGTH));
    BpReference const reference(condition);
    if (reference.is_internal_error())
        return 0;

    GEN_BP_PARSER parser;
    std::string text = condition;
    bool const has_errors = parser.parse_string(&text);
    std::string errors;
    parser.get_last_error(&errors);
    require(text == reference.output(), "prefix form");
    require(errors == reference.errors(), "errors");
    require(has_errors == !errors.empty(), "result");
    return 0;
}
