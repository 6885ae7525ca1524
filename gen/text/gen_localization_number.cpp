#include "gen_localization_sys.h"

#include "gen/base/gen_assert.h"

#include <algorithm>
#include <limits>
#include <type_traits>

namespace {

constexpr int SMALLEST_RADIX = 2;
constexpr int LARGEST_RADIX = 36;
constexpr unsigned NO_DIGIT = LARGEST_RADIX; // not below any radix

char const *skip_blanks(char const *text)
{
    while (*text == ' ' || (*text >= '\t' && *text <= '\r'))
        ++text;
    return text;
}

bool is_hex_prefix(char const *text)
{
    return text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

unsigned digit_value(char character)
{
    if (character >= '0' && character <= '9')
        return static_cast<unsigned>(character - '0');
    if (character >= 'a' && character <= 'z')
        return static_cast<unsigned>(character - 'a') + 10;
    if (character >= 'A' && character <= 'Z')
        return static_cast<unsigned>(character - 'A') + 10;
    return NO_DIGIT;
}

// Returns the radix that the prefix of the text names, and steps over the prefix.
unsigned take_radix(char const *&text)
{
    if (*text != '0')
        return 10;
    if (is_hex_prefix(text)) {
        text += 2;
        return 16;
    }
    ++text;
    return 8;
}

// Reads digits. At a digit that would bring the value above `limit` it returns false, with the text at that digit and
// the value at the limit.
template <typename Unsigned>
bool take_digits(char const *&text, unsigned radix, Unsigned limit, Unsigned &value)
{
    value = 0;
    for (unsigned digit = digit_value(*text); digit < radix; digit = digit_value(*++text)) {
        if (value > limit / radix || digit > limit - radix * value) {
            value = limit;
            return false;
        }
        value = radix * value + digit;
    }
    return true;
}

// The negative of a value. `fits` is false if the value is the limit because the digits exceeded it.
template <typename Number>
Number negated(std::make_unsigned_t<Number> value, bool fits)
{
    // The unsigned forms wrap, even at the limit.
    if (std::is_signed_v<Number> && !fits)
        return std::numeric_limits<Number>::min();
    return static_cast<Number>(0 - value);
}

void put_end(char **end, char const *position)
{
    if (end != nullptr)
        *end = const_cast<char *>(position);
}

template <typename Number>
Number parse(char const *text, char **end, int base)
{
    using Unsigned = std::make_unsigned_t<Number>;
    constexpr Unsigned LIMIT = std::numeric_limits<Number>::max();

    if (base != 0 && (base < SMALLEST_RADIX || base > LARGEST_RADIX)) {
        put_end(end, text);
        return 0;
    }
    char const *const sign = skip_blanks(text);
    char const *const start = *sign == '-' || *sign == '+' ? sign + 1 : sign;

    char const *position = start;
    unsigned const radix = base != 0 ? static_cast<unsigned>(base) : take_radix(position);
    // Even a second prefix, after the one that named the radix: "0x0x1f" is 31.
    if (radix == 16 && is_hex_prefix(position))
        position += 2;
    Unsigned value = 0;
    bool const fits = take_digits(position, radix, LIMIT, value);

    put_end(end, position == start ? sign : position);
    return *sign == '-' ? negated<Number>(value, fits) : static_cast<Number>(value);
}

} // namespace

void gen_local_itoa(int value, char *string)
{
    GEN_ASSERT(string != nullptr, "string != 0");
    // A negative value gives one character, made of its negative remainder: the sign is not handled.
    char *end = string;
    do {
        *end++ = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value > 0);
    *end = '\0';
    std::reverse(string, end);
}

std::int32_t gen_local_strtoint(char const *text, char **end, int base)
{
    return parse<std::int32_t>(text, end, base);
}

std::uint32_t gen_local_strtouint(char const *text, char **end, int base)
{
    return parse<std::uint32_t>(text, end, base);
}

std::int64_t gen_local_strtoSQWORD(char const *text, char **end, int base)
{
    return parse<std::int64_t>(text, end, base);
}

std::uint64_t gen_local_strtoQWORD(char const *text, char **end, int base)
{
    return parse<std::uint64_t>(text, end, base);
}
