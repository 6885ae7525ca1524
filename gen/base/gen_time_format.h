// The formats of strftime that every runtime library knows.
#ifndef GEN_TIME_FORMAT_H
#define GEN_TIME_FORMAT_H

#include <string_view>

/// Whether a format consists of text and of the conversions of C89, each with or without the "#" of Windows; "%z",
/// which came later, is known everywhere too. Older runtime libraries of Windows may end the process at any other
/// conversion.
///
///     "%H:%M", "100%%", "%#c" -> true    "%F", "%Ey", "50%" -> false
template <typename Character>
bool gen_is_portable_time_format(Character const *format)
{
    constexpr std::string_view CONVERSIONS = "aAbBcdHIjmMpSUwWxXyYZz%";
    for (; *format != '\0'; ++format) {
        if (*format != '%')
            continue;
        ++format;
        if (*format == '#')
            ++format;
        if (*format <= 0 || *format > '\x7f' || CONVERSIONS.find(static_cast<char>(*format)) == std::string_view::npos)
            return false;
    }
    return true;
}

#endif
