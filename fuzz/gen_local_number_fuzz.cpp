// Numbers read without a locale. The first byte of the input chooses a base, which may be invalid; the rest is the
// text.
#include "gen_localization_sys.h"

#include "fuzz_target.h"

#include <cerrno>
#include <cstddef>
#include <limits>

namespace {

template <typename Number>
struct Parsed
{
    Number value;
    std::ptrdiff_t length;
};

template <typename Number>
Parsed<Number> parsed(Number (*parse)(char const *, char **, int), std::string const &text, int base)
{
    char *end = nullptr;
    Number const value = parse(text.c_str(), &end, base);
    std::ptrdiff_t const length = end - text.c_str();
    require(length >= 0 && length <= static_cast<std::ptrdiff_t>(text.size()));
    require(parse(text.c_str(), nullptr, base) == value);
    return {value, length};
}

// A reading of another type has the same value and end if that type holds the number, else an extreme value.
template <typename Number>
void require_saturated(Parsed<Number> const &number, Parsed<std::uint64_t> const &widest, bool is_negative,
                       Number beyond)
{
    std::uint64_t const magnitude = is_negative ? 0 - widest.value : widest.value;
    if (magnitude <= static_cast<std::uint64_t>(std::numeric_limits<Number>::max()))
        require(number.value == static_cast<Number>(widest.value) && number.length == widest.length);
    else
        require(number.value == beyond && number.length <= widest.length);
}

// The runtime library gives the same result, except for prefixes, and for the end if there is no number or if it is out
// of range.
void require_as_runtime_library(Parsed<std::uint64_t> const &number, std::string const &text, int base,
                                bool is_negative)
{
    char *end = nullptr;
    errno = 0;
    std::uint64_t const expected = std::strtoull(text.c_str(), &end, base);
    std::ptrdiff_t const length = end - text.c_str();
    if (errno == ERANGE) {
        require(number.length < length);
        require(number.value == (is_negative ? 1 : expected));
        return;
    }
    require(number.value == expected);
    require(length == 0 || number.length == length);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    if (size == 0)
        return 0;
    int const base = data[0] % 40 - 1;
    // Up to the first zero, as the functions see it.
    std::string const text = std::string(data + 1, data + size).c_str();
    std::size_t const first = text.find_first_not_of(" \t\n\v\f\r");
    bool const is_negative = first != std::string::npos && text[first] == '-';

    auto const narrow = parsed(gen_local_strtoint, text, base);
    auto const narrow_unsigned = parsed(gen_local_strtouint, text, base);
    auto const wide = parsed(gen_local_strtoSQWORD, text, base);
    auto const wide_unsigned = parsed(gen_local_strtoQWORD, text, base);

    using Narrow = std::numeric_limits<std::int32_t>;
    using NarrowUnsigned = std::numeric_limits<std::uint32_t>;
    using Wide = std::numeric_limits<std::int64_t>;
    require_saturated(narrow, wide_unsigned, is_negative, is_negative ? Narrow::min() : Narrow::max());
    require_saturated(narrow_unsigned, wide_unsigned, is_negative, is_negative ? 1 : NarrowUnsigned::max());
    require_saturated(wide, wide_unsigned, is_negative, is_negative ? Wide::min() : Wide::max());

    bool const is_base = base == 0 || (base >= 2 && base <= 36);
    if (!is_base)
        require(wide_unsigned.value == 0 && wide_unsigned.length == 0);
    else if (text.find_first_of("xX") == std::string::npos)
        require_as_runtime_library(wide_unsigned, text, base, is_negative);
    return 0;
}
