#include "gen_string_sys.h"

#include "gen/base/gen_assert.h"
#include "gen/os/gen_os_compiler.h"

#include <array>
#include <cstring>
#include <sstream>
#include <type_traits>

namespace {

using Iterator = std::string::const_iterator;

// The value of a digit; a value above 9 for any other character.
unsigned digit_of(char c)
{
    return static_cast<unsigned>(c) - '0';
}

// Reads a number as gen_atoi() does, modulo the range of the unsigned type, and moves `at` to its end.
template <typename Unsigned>
std::make_signed_t<Unsigned> take_decimal(Iterator &at, Iterator end)
{
    bool is_negative = false;
    if (at != end && digit_of(*at) > 9) {
        while (at != end && (*at == ' ' || *at == '\t' || *at == '\n'))
            ++at;
        if (at != end && (*at == '-' || *at == '+'))
            is_negative = *at++ == '-';
    }
    Unsigned value = 0;
    for (; at != end && digit_of(*at) <= 9; ++at)
        value = value * 10 + digit_of(*at);
    return static_cast<std::make_signed_t<Unsigned>>(is_negative ? 0 - value : value);
}

// "00" to "99", one after the other.
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

// The powers of ten within 64 bits.
constexpr std::array<std::uint64_t, 20> make_powers()
{
    std::array<std::uint64_t, 20> powers{};
    std::uint64_t power = 1;
    for (std::size_t i = 0; i < powers.size(); ++i, power *= 10)
        powers[i] = power;
    return powers;
}
constexpr std::array<std::uint64_t, 20> POWERS = make_powers();

std::size_t decimal_digit_count(std::uint64_t value)
{
    // 1233 / 4096 is close to the decimal logarithm of 2: for every count of bits up to 64, `count` is the number of
    // digits, or one less.
    std::size_t const count = gen_os_bit_count(value) * 1233 / 4096;
    return (value | 1) >= POWERS[count] ? count + 1 : count;
}

template <typename Unsigned>
std::size_t digit_count(Unsigned value, int radix)
{
    if (radix == 10)
        return decimal_digit_count(value);
    if (radix == 16)
        return (gen_os_bit_count(value) + 3) / 4;
    if (radix < 2)
        return 0;
    std::size_t count = 1;
    for (; value >= static_cast<Unsigned>(radix); value /= static_cast<Unsigned>(radix))
        ++count;
    return count;
}

template <typename Unsigned>
void write_decimal(char *end, Unsigned value)
{
    for (; value >= 100; value /= 100)
        std::memcpy(end -= 2, &PAIRS[value % 100 * 2], 2);
    if (value >= 10)
        std::memcpy(end - 2, &PAIRS[value * 2], 2);
    else
        end[-1] = static_cast<char>('0' + value);
}

template <typename Unsigned>
void write_hexadecimal(char *end, std::size_t count, Unsigned value)
{
    for (char *at = end; at != end - count; value >>= 4)
        *--at = "0123456789abcdef"[value & 15];
}

template <typename Unsigned>
void write_in_radix(char *end, std::size_t count, Unsigned value, Unsigned radix)
{
    for (char *at = end; at != end - count; value /= radix) {
        Unsigned const digit = value % radix;
        *--at = static_cast<char>(digit < 10 ? '0' + digit : 'a' + digit - 10);
    }
}

// The digits of a number and its sign. They are counted before the first one is written, so that the caller can make
// room for exactly this many characters.
template <typename Unsigned>
class NumberText
{
public:
    NumberText(Unsigned magnitude, bool is_negative, int radix)
        : m_magnitude(magnitude), m_radix(radix), m_digit_count(digit_count(magnitude, radix)),
          m_has_sign(is_negative && m_digit_count > 0)
    {
    }

    std::size_t size() const { return m_digit_count + (m_has_sign ? 1 : 0); }

    void write(char *out) const
    {
        if (m_has_sign)
            *out++ = '-';
        char *const end = out + m_digit_count;
        if (m_radix == 10)
            write_decimal(end, m_magnitude);
        else if (m_radix == 16)
            write_hexadecimal(end, m_digit_count, m_magnitude);
        else
            write_in_radix(end, m_digit_count, m_magnitude, static_cast<Unsigned>(m_radix));
    }

    char *write_terminated(char *out) const
    {
        write(out);
        out[size()] = '\0';
        return out;
    }

private:
    Unsigned m_magnitude;
    int m_radix;
    std::size_t m_digit_count;
    bool m_has_sign;
};

template <typename Signed>
NumberText<std::make_unsigned_t<Signed>> signed_text(Signed value, int radix)
{
    using Unsigned = std::make_unsigned_t<Signed>;
    Unsigned const bits = static_cast<Unsigned>(value);
    return {value < 0 ? 0 - bits : bits, value < 0, radix};
}

// Only radix 10 has a sign; in the others a negative value is written as its unsigned bits.
NumberText<unsigned> int_text(int value, int radix)
{
    if (radix == 10)
        return signed_text(value, radix);
    return {static_cast<unsigned>(value), /*is_negative=*/false, radix};
}

} // namespace

int gen_atoi(std::string const &text)
{
    Iterator cursor = text.begin();
    return take_decimal<std::uint32_t>(cursor, text.end());
}

int gen_atoi(std::string const &text, std::string::const_iterator *cursor)
{
    return take_decimal<std::uint32_t>(*cursor, text.end());
}

std::int64_t gen_atotime_t(std::string const &text)
{
    Iterator cursor = text.begin();
    return take_decimal<std::uint64_t>(cursor, text.end());
}

std::uint32_t gen_atoui_s(std::string const &text, bool *ok)
{
    // A stream would accept a minus sign and wrap the value.
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
    NumberText<unsigned> const number = int_text(value, radix);
    std::string text(number.size(), '\0');
    number.write(text.data());
    return text;
}

char *gen_itoa(int value, char *buffer, int radix)
{
    return int_text(value, radix).write_terminated(buffer);
}

void gen_itoa(int value, std::string &out, int radix)
{
    GEN_ASSERT(radix > 1, "radix > 1");
    NumberText<unsigned> const number = int_text(value, radix);
    out.resize(number.size());
    number.write(out.data());
}

char *gen_ltoa(std::int64_t value, char *buffer, int radix)
{
    return signed_text(value, radix).write_terminated(buffer);
}

char *gen_ultoa(std::uint64_t value, char *buffer, int radix)
{
    return NumberText<std::uint64_t>(value, /*is_negative=*/false, radix).write_terminated(buffer);
}
