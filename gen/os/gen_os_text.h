// Functions on text that only the runtime library of Windows has. Elsewhere they are what that one does under the "C"
// locale: a character is one byte. The caller has seen to it that "C" is in force.
#ifndef GEN_OS_TEXT_H
#define GEN_OS_TEXT_H

#include <cstdint>

/// Decimal numbers, read as std::strtol reads them; what doesn't fit gives the nearest value that does.
std::int64_t gen_os_atoi64(char const *text);
int gen_os_wtoi(wchar_t const *text);
long gen_os_wtol(wchar_t const *text);

/// Whether a byte is the first of a character of two.
int gen_os_isleadbyte(int code);

/// Whether a character belongs to one of the classes of `type`, by the bits of Windows: 1 upper case, 2 lower case,
/// 4 digit, 8 white space, 16 punctuation, 32 control, 64 blank, 128 hexadecimal digit, 256 letter.
int gen_os_iswctype(unsigned short code, unsigned short type);

/// Copies one character.
void gen_os_mbccpy(unsigned char *to, unsigned char const *from);

/// Bytes of the character at `text`.
std::uint64_t gen_os_mbclen(unsigned char const *text);

/// Characters of a text.
std::uint64_t gen_os_mbstrlen(char const *text);

#endif
