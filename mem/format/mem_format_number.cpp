#include "mem/format/mem_format.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace {

constexpr char DIGITS_LOWER[] = "0123456789abcdef";
constexpr char DIGITS_UPPER[] = "0123456789ABCDEF";

// Octal digits of 64 bits, the longest of the three radices.
constexpr int MAX_WHOLE_DIGITS = 22;

// Writes the digits so that the last one is before `end`, and returns the first one. 0 has one digit.
char *write_digits(char *end, std::uint64_t value, unsigned radix, bool upper)
{
    char const *const digits = upper ? DIGITS_UPPER : DIGITS_LOWER;
    char *first = end;
    // Each loop has a constant divisor, for which the compiler needs no division.
    if (radix == 10)
        do
            *--first = digits[value % 10];
        while ((value /= 10) != 0);
    else if (radix == 16)
        do
            *--first = digits[value % 16];
        while ((value /= 16) != 0);
    else
        do
            *--first = digits[value % 8];
        while ((value /= 8) != 0);
    return first;
}

// The pieces of a field between its blanks: the sign or the prefix of the radix, zeros, and the digits as the body.
struct Field
{
    char prefix[3]; // sign, 0, x
    std::size_t prefix_size = 0;
    std::size_t zeros = 0; // between prefix and body
    std::size_t body_size = 0;

    void add_prefix(char c) { prefix[prefix_size++] = c; }
    std::size_t size() const { return prefix_size + zeros + body_size; }
};

std::size_t padding_of(MEM_FORMAT_OPTIONS const &options, std::size_t size)
{
    auto const width = static_cast<std::size_t>(options.width);
    return width > size ? width - size : 0;
}

// With the flag 0, and without -, zeros replace the blanks.
void fill_with_zeros(Field &field, MEM_FORMAT_OPTIONS const &options)
{
    if (options.zero && !options.left)
        field.zeros += padding_of(options, field.size());
}

void open_field(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS const &options, Field const &field)
{
    if (!options.left)
        out.append(padding_of(options, field.size()), ' ');
    out.append(field.prefix, field.prefix_size);
    out.append(field.zeros, '0');
}

void close_field(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS const &options, Field const &field)
{
    if (options.left)
        out.append(padding_of(options, field.size()), ' ');
}

// Digits after the decimal point of the longest exact value; all further ones are 0.
template <typename Real>
constexpr int FRACTION_DIGITS = std::numeric_limits<Real>::digits - std::numeric_limits<Real>::min_exponent;

// Longest rendering that the standard library is asked for: all digits of the largest value, point, fraction, exponent.
template <typename Real>
constexpr int MAX_REAL_TEXT = std::numeric_limits<Real>::max_exponent10 + FRACTION_DIGITS<Real> + 16;

// A rendered value in three pieces: mantissa, zeros to add after it, exponent. The decimal point is the mantissa's last
// character if no digit follows it.
template <typename Real>
struct RealText
{
    char text[MAX_REAL_TEXT<Real>];
    char *mantissa_end = text;
    char *end = text;
    std::size_t zeros = 0;

    char *limit() { return text + sizeof text - 1; } // one is kept for the point

    void render(Real value, std::chars_format format, int precision)
    {
        int const exact = std::min(precision, FRACTION_DIGITS<Real>);
        zeros = static_cast<std::size_t>(precision - exact);
        end = std::to_chars(text, limit(), value, format, exact).ptr;
        mantissa_end = format == std::chars_format::fixed
                           ? end
                           : std::find(text, end, format == std::chars_format::hex ? 'p' : 'e');
    }

    void render_shortest_hex(Real value)
    {
        end = std::to_chars(text, limit(), value, std::chars_format::hex).ptr;
        mantissa_end = std::find(text, end, 'p');
    }

    // %#g keeps trailing zeros: C's rule on the exponent X of the style e, "if P > X >= -4 style f with P - 1 - X".
    void render_general_with_zeros(Real value, int precision)
    {
        render(value, std::chars_format::scientific, precision - 1);
        int exponent = 0;
        bool const below_one = mantissa_end[1] == '-';
        std::from_chars(mantissa_end + 2, end, exponent);
        if (below_one)
            exponent = -exponent;
        if (exponent >= -4 && exponent < precision)
            render(value, std::chars_format::fixed, precision - 1 - exponent);
    }

    void ensure_point()
    {
        if (std::find(text, mantissa_end, '.') != mantissa_end)
            return;
        std::memmove(mantissa_end + 1, mantissa_end, static_cast<std::size_t>(end - mantissa_end));
        *mantissa_end++ = '.';
        ++end;
    }

    void make_upper()
    {
        for (char *c = text; c != end; ++c)
            if (*c >= 'a' && *c <= 'z')
                *c = static_cast<char>(*c - 'a' + 'A');
    }
};

template <typename Real>
void render_real(RealText<Real> &text, MEM_FORMAT_OPTIONS const &options, Real value, char style)
{
    int const precision = options.precision < 0 ? 6 : options.precision;
    switch (style) {
    case 'f':
        text.render(value, std::chars_format::fixed, precision);
        break;
    case 'e':
        text.render(value, std::chars_format::scientific, precision);
        break;
    case 'a':
        if (options.precision < 0)
            text.render_shortest_hex(value);
        else
            text.render(value, std::chars_format::hex, precision);
        break;
    default:
        if (options.alternative)
            text.render_general_with_zeros(value, std::max(precision, 1));
        else {
            text.render(value, std::chars_format::general, std::max(precision, 1));
            text.zeros = 0;
        }
        break;
    }
    if (options.alternative)
        text.ensure_point();
}

char sign_of(MEM_FORMAT_OPTIONS const &options, bool negative)
{
    if (negative)
        return '-';
    if (options.plus)
        return '+';
    return options.blank ? ' ' : '\0';
}

void format_infinite(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS const &options, char sign, bool nan, bool upper)
{
    char text[4];
    std::size_t size = 0;
    if (sign != '\0')
        text[size++] = sign;
    char const *const name = nan ? (upper ? "NAN" : "nan") : (upper ? "INF" : "inf");
    std::memcpy(text + size, name, 3);
    mem_format_padded(out, options, text, size + 3);
}

template <typename Real>
void format_real(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS const &options, Real value, char conversion)
{
    bool const upper = conversion >= 'A' && conversion <= 'Z';
    char const style = upper ? static_cast<char>(conversion - 'A' + 'a') : conversion;
    char const sign = sign_of(options, std::signbit(value));
    if (!std::isfinite(value)) {
        format_infinite(out, options, sign, std::isnan(value), upper);
        return;
    }

    RealText<Real> text;
    render_real(text, options, std::fabs(value), style);
    if (upper)
        text.make_upper();

    auto const mantissa_size = static_cast<std::size_t>(text.mantissa_end - text.text);
    auto const exponent_size = static_cast<std::size_t>(text.end - text.mantissa_end);
    Field field;
    if (sign != '\0')
        field.add_prefix(sign);
    if (style == 'a') {
        field.add_prefix('0');
        field.add_prefix(upper ? 'X' : 'x');
    }
    field.body_size = mantissa_size + text.zeros + exponent_size;
    fill_with_zeros(field, options);

    open_field(out, options, field);
    out.append(text.text, mantissa_size);
    out.append(text.zeros, '0');
    out.append(text.mantissa_end, exponent_size);
    close_field(out, options, field);
}

} // namespace

void mem_format_whole(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS const &options, std::uint64_t magnitude,
                      unsigned radix, bool upper, char sign)
{
    char digits[MAX_WHOLE_DIGITS];
    char *const end = digits + sizeof digits;
    // A precision of 0 gives 0 no digits at all.
    char const *const first =
        magnitude == 0 && options.precision == 0 ? end : write_digits(end, magnitude, radix, upper);

    Field field;
    field.body_size = static_cast<std::size_t>(end - first);
    if (sign != '\0')
        field.add_prefix(sign);
    if (options.alternative && radix == 16 && magnitude != 0) {
        field.add_prefix('0');
        field.add_prefix(upper ? 'X' : 'x');
    }
    if (options.precision > static_cast<int>(field.body_size))
        field.zeros = static_cast<std::size_t>(options.precision) - field.body_size;
    // The alternative octal form makes the first digit a 0, by one more digit if it takes one.
    if (options.alternative && radix == 8 && field.zeros == 0 && (first == end || *first != '0'))
        field.zeros = 1;
    if (options.precision < 0)
        fill_with_zeros(field, options);

    open_field(out, options, field);
    out.append(first, field.body_size);
    close_field(out, options, field);
}

void mem_format_real(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS const &options, double value, char conversion)
{
    format_real(out, options, value, conversion);
}

void mem_format_real(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS const &options, long double value, char conversion)
{
    format_real(out, options, value, conversion);
}

void mem_format_padded(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS const &options, char const *text, std::size_t size)
{
    Field field;
    field.body_size = size;
    open_field(out, options, field);
    out.append(text, size);
    close_field(out, options, field);
}
