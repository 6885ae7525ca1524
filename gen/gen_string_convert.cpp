#include "gen_string_sys.h"

#include "gen/gen_assert.h"

#include <array>
#include <cstring>
#include <sstream>
#include <type_traits>

namespace {

// Room for any number in radix 2 and a minus sign.
constexpr std::size_t NUMBER_SIZE = 65;

using Iterator = std::string::const_iterator;

// What a character counts as a digit; one that is no digit gives more than 9.
unsigned digit_of(char c)
{
    return static_cast<unsigned>(c) - '0';
}

// Reads a number as gen_atoi() does, modulo the range of the unsigned type, and leaves `at` behind it.
template <typename UNSIGNED>
std::make_signed_t<UNSIGNED> take_number(Iterator &at, Iterator end)
{
    bool is_negative = false;
    if (at != end && digit_of(*at) > 9) {
        while (at != end && (*at == ' ' || *at == '\t' || *at == '\n'))
            ++at;
        if (at != end && (*at == '-' || *at == '+'))
            is_negative = *at++ == '-';
    }
    UNSIGNED value = 0;
    for (; at != end && digit_of(*at) <= 9; ++at)
        value = value * 10 + digit_of(*at);
    return static_cast<std::make_signed_t<UNSIGNED>>(is_negative ? 0 - value : value);
}

// "00" to "99", one behind the other.
constexpr std::array<char, 200> make_pairs()
{
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}
constexpr std::array<char, 200> PAIRS = make_pairs();

template <typename UNSIGNED>
std::size_t decimal_length(UNSIGNED value)
{
    for (std::size_t length = 1;; length += 4, value /= 10000) {
        if (value < 10)
            return length;
        if (value < 100)
            return length + 1;
        if (value < 1000)
            return length + 2;
        if (value < 10000)
            return length + 3;
    }
}

template <typename UNSIGNED>
char *write_decimal(char *out, UNSIGNED value)
{
    char *const end = out + decimal_length(value);
    char *place = end;
    for (; value >= 100; value /= 100)
        std::memcpy(place -= 2, &PAIRS[value % 100 * 2], 2);
    if (value >= 10)
        std::memcpy(place - 2, &PAIRS[value * 2], 2);
    else
        place[-1] = static_cast<char>('0' + value);
    return end;
}

template <typename UNSIGNED>
char *write_in_radix(char *out, UNSIGNED value, UNSIGNED radix)
{
    std::size_t count = 1;
    for (UNSIGNED rest = value; rest >= radix; rest /= radix)
        ++count;
    for (std::size_t i = count; i > 0; --i, value /= radix) {
        UNSIGNED const digit = value % radix;
        out[i - 1] = static_cast<char>(digit < 10 ? '0' + digit : 'a' + digit - 10);
    }
    return out + count;
}

// The same where a digit is four bits.
template <typename UNSIGNED>
char *write_hexadecimal(char *out, UNSIGNED value)
{
    std::size_t count = 1;
    for (UNSIGNED rest = value; rest >= 16; rest >>= 4)
        ++count;
    for (std::size_t i = count; i > 0; --i, value >>= 4)
        out[i - 1] = "0123456789abcdef"[value & 15];
    return out + count;
}

// Writes the digits of a value without a terminator and returns the end. They are counted before the first one is
// written, so a caller's buffer need be no longer than they are.
template <typename UNSIGNED>
char *write_digits(char *out, UNSIGNED value, int radix)
{
    if (radix == 10)
        return write_decimal(out, value);
    if (radix == 16)
        return write_hexadecimal(out, value);
    return write_in_radix(out, value, static_cast<UNSIGNED>(radix));
}

// The same with a minus sign in front of a negative value.
template <typename SIGNED>
char *write_signed(char *out, SIGNED value, int radix)
{
    using Unsigned = std::make_unsigned_t<SIGNED>;
    Unsigned magnitude = static_cast<Unsigned>(value);
    if (value < 0) {
        *out++ = '-';
        magnitude = 0 - magnitude;
    }
    return write_digits(out, magnitude, radix);
}

// Only radix 10 knows a sign.
char *write_int(char *out, int value, int radix)
{
    return radix == 10 ? write_signed(out, value, radix) : write_digits(out, static_cast<unsigned>(value), radix);
}

} // namespace

int gen_atoi(std::string const &text)
{
    Iterator cursor = text.begin();
    return take_number<std::uint32_t>(cursor, text.end());
}

int gen_atoi(std::string const &text, std::string::const_iterator *cursor)
{
    return take_number<std::uint32_t>(*cursor, text.end());
}

std::int64_t gen_atotime_t(std::string const &text)
{
    Iterator cursor = text.begin();
    return take_number<std::uint64_t>(cursor, text.end());
}

std::uint32_t gen_atoui_s(std::string const &text, bool *ok)
{
    // A stream would take a minus sign and wrap.
    *ok = text.find('-') == std::string::npos;
    if (!*ok)
        return 0;
    std::istringstream in(text);
    std::uint32_t value = 0;
    in >> value;
    *ok = !in.fail() && in.eof();
    return *ok ? value : 0;
}

std::string gen_itoa(int value, int radix)
{
    char number[NUMBER_SIZE];
    return {number, write_int(number, value, radix)};
}

char *gen_itoa(int value, char *buffer, int radix)
{
    *write_int(buffer, value, radix) = '\0';
    return buffer;
}

void gen_itoa(int value, std::string &out, int radix)
{
    GEN_ASSERT(radix > 1, "radix > 1");
    char number[NUMBER_SIZE];
    out.assign(number, write_int(number, value, radix));
}

char *gen_ltoa(std::int64_t value, char *buffer, int radix)
{
    *write_signed(buffer, value, radix) = '\0';
    return buffer;
}

char *gen_ultoa(std::uint64_t value, char *buffer, int radix)
{
    *write_digits(buffer, value, radix) = '\0';
    return buffer;
}
