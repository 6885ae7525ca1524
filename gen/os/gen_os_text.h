// Functions on text that only the runtime library of Windows has. On Linux they do what that library does in the "C"
// locale, in which a character is one byte. The caller makes sure that the "C" locale is set.
#ifndef GEN_OS_TEXT_H
#define GEN_OS_TEXT_H

#include <cstdint>
#include <ctime>

/// A decimal number, in the syntax of std::strtol. A number that doesn't fit gives the nearest value that fits.
std::int64_t gen_os_atoi64(char const *text);
int gen_os_wtoi(wchar_t const *text);
long gen_os_wtol(wchar_t const *text);

/// Whether a byte is the first one of a character of two bytes; 0 for no.
int gen_os_isleadbyte(int code);

/// The classes of `type` to which a character belongs; 0 for none. The bits are those of Windows: 1 upper case, 2 lower
/// case, 4 digit, 8 white space, 16 punctuation, 32 control, 64 blank, 128 hexadecimal digit, 256 letter.
int gen_os_iswctype(unsigned short code, unsigned short type);

/// Copies one character.
void gen_os_mbccpy(unsigned char *to, unsigned char const *from);

/// The number of bytes of the character at `text`.
std::uint64_t gen_os_mbclen(unsigned char const *text);

/// The number of characters of a text.
std::uint64_t gen_os_mbstrlen(char const *text);

/// std::strftime() and std::wcsftime(). On Windows a format that is not portable (gen/base/gen_time_format.h) gives 0
/// and the empty text, since the runtime library may end the process at it.
std::uint64_t gen_os_strftime(char *to, std::uint64_t size, char const *format, std::tm const *time);
std::uint64_t gen_os_wcsftime(wchar_t *to, std::uint64_t size, wchar_t const *format, std::tm const *time);

#endif
