// One formatter with two sources of arguments: the variable arguments of a call and a run of 8-byte slots. A conversion
// is read to its end before its first argument is taken, so that an unknown conversion takes no argument:
//
//     format     "%*d|%*y|%d"    arguments  5, 42, 7
//     "%*d"      known: takes 5 for the width and 42    "   42"
//     "%*y"      unknown: copied, takes nothing         "%*y"
//     "%d"       takes 7                                "7"
#include "mem_sys.h"

#include "mem/format/mem_format.h"

#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <cwchar>

namespace {

enum class Length
{
    NONE,
    HH,
    H,
    L,
    LL,
    J,
    Z,
    T,
    LONG_DOUBLE,
    I32,
    I64
};

std::size_t bytes_of(Length length)
{
    switch (length) {
    case Length::HH:
        return sizeof(char);
    case Length::H:
        return sizeof(short);
    case Length::NONE:
    case Length::I32:
        return sizeof(int);
    case Length::L:
        return sizeof(long);
    case Length::Z:
        return sizeof(std::size_t);
    case Length::T:
        return sizeof(std::ptrdiff_t);
    case Length::J:
        return sizeof(std::intmax_t);
    case Length::LL:
    case Length::LONG_DOUBLE:
    case Length::I64:
        break;
    }
    return sizeof(long long);
}

// A run of 8-byte slots. Moves the caller's cursor past the slots that it takes.
class SlotSource
{
public:
    explicit SlotSource(char *&cursor) : m_cursor(cursor) {}

    std::uint64_t whole(std::size_t) { return next<std::uint64_t>(); }
    double real() { return next<double>(); }
    // A slot holds no more than a double.
    double long_real() { return next<double>(); }
    void const *pointer() { return next<void const *>(); }

private:
    template <typename Value>
    Value next()
    {
        static_assert(sizeof(Value) == 8, "a slot has 8 bytes");
        Value value;
        std::memcpy(&value, m_cursor, sizeof value);
        m_cursor += sizeof value;
        return value;
    }

    char *&m_cursor;
};

// The variable arguments of a call.
struct VariableSource
{
    std::va_list list;

    std::uint64_t whole(std::size_t bytes)
    {
        if (bytes > sizeof(int))
            return static_cast<std::uint64_t>(va_arg(list, long long));
        return static_cast<std::uint64_t>(va_arg(list, int));
    }
    double real() { return va_arg(list, double); }
    long double long_real() { return va_arg(list, long double); }
    void const *pointer() { return va_arg(list, void const *); }
};

struct Conversion
{
    MEM_FORMAT_OPTIONS options;
    bool width_is_argument = false;
    bool precision_is_argument = false;
    Length length = Length::NONE;
    char kind = '\0';
};

bool set_flag(MEM_FORMAT_OPTIONS &options, char c)
{
    switch (c) {
    case '-':
        return options.left = true;
    case '+':
        return options.plus = true;
    case ' ':
        return options.blank = true;
    case '#':
        return options.alternative = true;
    case '0':
        return options.zero = true;
    default:
        return false;
    }
}

// Reads digits. A number that is too large for an int gives the largest int.
int read_number(char const *&p)
{
    int number = 0;
    for (; *p >= '0' && *p <= '9'; ++p) {
        int const digit = *p - '0';
        number = number > (INT_MAX - digit) / 10 ? INT_MAX : number * 10 + digit;
    }
    return number;
}

Length read_length(char const *&p)
{
    auto const take = [&p](char const *text, std::size_t size) {
        if (std::strncmp(p, text, size) != 0)
            return false;
        p += size;
        return true;
    };
    switch (*p) {
    case 'h':
        return take("hh", 2) ? Length::HH : (++p, Length::H);
    case 'l':
        return take("ll", 2) ? Length::LL : (++p, Length::L);
    case 'j':
        return ++p, Length::J;
    case 'z':
        return ++p, Length::Z;
    case 't':
        return ++p, Length::T;
    case 'L':
        return ++p, Length::LONG_DOUBLE;
    case 'I':
        if (take("I64", 3))
            return Length::I64;
        return take("I32", 3) ? Length::I32 : Length::NONE;
    default:
        return Length::NONE;
    }
}

// Reads the rest of a conversion after its per-cent sign and returns its end. The kind stays 0 if the conversion is
// unknown or the format ends in it.
char const *read_conversion(char const *p, Conversion &conversion)
{
    MEM_FORMAT_OPTIONS &options = conversion.options;
    while (set_flag(options, *p))
        ++p;

    conversion.width_is_argument = *p == '*';
    if (conversion.width_is_argument)
        ++p;
    else
        options.width = read_number(p);

    if (*p == '.') {
        ++p;
        conversion.precision_is_argument = *p == '*';
        if (conversion.precision_is_argument)
            ++p;
        else
            options.precision = read_number(p);
    }

    conversion.length = read_length(p);
    if (*p == '\0')
        return p;
    if (std::strchr("diuoxXcspneEfFgGaA%", *p) != nullptr)
        conversion.kind = *p;
    return p + 1;
}

template <typename Source>
void take_star_arguments(Conversion &conversion, Source &source)
{
    MEM_FORMAT_OPTIONS &options = conversion.options;
    if (conversion.width_is_argument) {
        int const width = static_cast<int>(source.whole(sizeof(int)));
        options.left |= width < 0;
        options.width = width == INT_MIN ? INT_MAX : width < 0 ? -width : width;
    }
    if (conversion.precision_is_argument)
        options.precision = static_cast<int>(source.whole(sizeof(int)));
}

// Returns true, and removes width and precision, if a field is too large. The precision of a text is always allowed,
// since it only limits the characters that are read.
bool limit_field(Conversion &conversion)
{
    MEM_FORMAT_OPTIONS &options = conversion.options;
    bool const is_text = conversion.kind == 's' || conversion.kind == 'c';
    bool const absurd =
        options.width > MEM_FORMAT_LARGEST_FIELD || (!is_text && options.precision > MEM_FORMAT_LARGEST_FIELD);
    if (absurd) {
        options.width = 0;
        options.precision = -1;
    }
    return absurd;
}

void format_signed(MEM_FORMAT_BUFFER &out, Conversion const &conversion, std::uint64_t raw)
{
    std::size_t const unused_bits = 64 - 8 * bytes_of(conversion.length);
    auto const value = static_cast<std::int64_t>(raw << unused_bits) >> unused_bits;
    auto const bits = static_cast<std::uint64_t>(value);
    MEM_FORMAT_OPTIONS const &options = conversion.options; // the alternative form of radix 10 is the plain one
    char const sign = value < 0 ? '-' : options.plus ? '+' : options.blank ? ' ' : '\0';
    mem_format_whole(out, options, value < 0 ? 0 - bits : bits, 10, /*upper=*/false, sign);
}

void format_unsigned(MEM_FORMAT_BUFFER &out, Conversion const &conversion, std::uint64_t raw)
{
    std::size_t const unused_bits = 64 - 8 * bytes_of(conversion.length);
    unsigned const radix = conversion.kind == 'u' ? 10 : conversion.kind == 'o' ? 8 : 16;
    mem_format_whole(out, conversion.options, raw << unused_bits >> unused_bits, radix, conversion.kind == 'X', '\0');
}

void format_pointer(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS options, void const *pointer)
{
    if (pointer == nullptr) {
        mem_format_padded(out, options, "(nil)", 5);
        return;
    }
    options.alternative = true;
    mem_format_whole(out, options, reinterpret_cast<std::uintptr_t>(pointer), 16, /*upper=*/false, '\0');
}

std::size_t limit_of(MEM_FORMAT_OPTIONS const &options)
{
    return options.precision < 0 ? SIZE_MAX : static_cast<std::size_t>(options.precision);
}

void format_text(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS const &options, char const *text)
{
    if (text == nullptr)
        text = "(null)";
    std::size_t const limit = limit_of(options);
    // With a precision the text needs no terminator.
    void const *const terminator = limit == SIZE_MAX ? nullptr : std::memchr(text, '\0', limit);
    std::size_t size = limit;
    if (limit == SIZE_MAX)
        size = std::strlen(text);
    else if (terminator != nullptr)
        size = static_cast<std::size_t>(static_cast<char const *>(terminator) - text);
    mem_format_padded(out, options, text, size);
}

// The "C" locale contains only the ASCII characters.
char narrow(wchar_t c)
{
    return static_cast<std::uint32_t>(c) < 0x80 ? static_cast<char>(c) : '?';
}

void format_wide_text(MEM_FORMAT_BUFFER &out, MEM_FORMAT_OPTIONS const &options, wchar_t const *text)
{
    if (text == nullptr)
        text = L"(null)";
    std::size_t const limit = limit_of(options);
    std::string narrowed;
    while (narrowed.size() < limit && *text != L'\0')
        narrowed += narrow(*text++);
    mem_format_padded(out, options, narrowed.data(), narrowed.size());
}

void format_character(MEM_FORMAT_BUFFER &out, Conversion const &conversion, std::uint64_t raw)
{
    char const c = conversion.length == Length::L ? narrow(static_cast<wchar_t>(raw)) : static_cast<char>(raw);
    mem_format_padded(out, conversion.options, &c, 1);
}

// Takes the arguments of one conversion and appends its text. False if the field is too large; the arguments are taken
// even then.
template <typename Source>
bool convert(MEM_FORMAT_BUFFER &out, Conversion &conversion, Source &source)
{
    take_star_arguments(conversion, source);
    bool const absurd = limit_field(conversion);
    MEM_FORMAT_OPTIONS const &options = conversion.options;
    switch (conversion.kind) {
    case '%':
        out.append(1, '%');
        break;
    case 'd':
    case 'i':
        format_signed(out, conversion, source.whole(bytes_of(conversion.length)));
        break;
    case 'u':
    case 'o':
    case 'x':
    case 'X':
        format_unsigned(out, conversion, source.whole(bytes_of(conversion.length)));
        break;
    case 'c':
        format_character(out, conversion, source.whole(sizeof(int)));
        break;
    case 's':
        if (conversion.length == Length::L)
            format_wide_text(out, options, static_cast<wchar_t const *>(source.pointer()));
        else
            format_text(out, options, static_cast<char const *>(source.pointer()));
        break;
    case 'p':
        format_pointer(out, options, source.pointer());
        break;
    case 'n':
        source.pointer();
        break;
    default:
        if (conversion.length == Length::LONG_DOUBLE)
            mem_format_real(out, options, source.long_real(), conversion.kind);
        else
            mem_format_real(out, options, source.real(), conversion.kind);
        break;
    }
    return !absurd;
}

template <typename Source>
bool format_all(MEM_FORMAT_BUFFER &out, char const *format, Source &source)
{
    bool complete = true;
    while (char const *const percent = std::strchr(format, '%')) {
        out.append(format, static_cast<std::size_t>(percent - format));
        Conversion conversion;
        format = read_conversion(percent + 1, conversion);
        if (conversion.kind == '\0')
            out.append(percent, static_cast<std::size_t>(format - percent));
        else if (!convert(out, conversion, source))
            complete = false;
    }
    out.append(format, std::strlen(format));
    return complete && out.size() <= INT_MAX;
}

} // namespace

void stl_sprintf(std::string *out, char const *format, ...)
{
    VariableSource source;
    va_start(source.list, format);
    MEM_FORMAT_BUFFER text;
    bool const complete = format_all(text, format, source);
    va_end(source.list);
    if (complete)
        out->assign(text.data(), text.size());
    else
        out->clear();
}

int stl_output(std::string *out, char const *format, char *&arguments)
{
    SlotSource source(arguments);
    MEM_FORMAT_BUFFER text;
    if (!format_all(text, format, source))
        return -1;
    out->append(text.data(), text.size());
    return static_cast<int>(text.size());
}
