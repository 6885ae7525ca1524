// The runtime library's locale-sensitive functions with the results of the "C" locale, whatever locale the process has.
//
// All functions except gen_local_isdigit() and the last group set one category of the process's locale to "C" during
// the call and restore it afterwards. The locale belongs to the whole process and no lock is taken: during the call
// other threads see "C" too, and if two such calls run at once, the locale may stay "C". A program that sets a locale
// should therefore call these functions on one thread only, or use the functions of gen_string_sys.h and the last group
// below, which need no locale.
//
// Unless a comment says otherwise, arguments and results are those of the runtime function with the same name without
// the prefix gen_local_, also for null pointers, errno and values out of range.
#ifndef GEN_LOCALIZATION_SYS_H
#define GEN_LOCALIZATION_SYS_H

#include "zel_export_sys.h"

#include <cstdint>

struct tm;

// Numbers, with the decimal point ".". LC_NUMERIC is set to "C".

/// The number at the start of a text, after optional white space; 0 if there is none.
GEN_API double gen_local_atof(char const *text);
GEN_API int gen_local_atoi(char const *text);
GEN_API long gen_local_atol(char const *text);
/// As gen_local_atol(), with 64 bits; a number out of range gives the nearest value that fits.
GEN_API std::int64_t gen_local_atosqword(char const *text);

/// The number at the start of a text. The base is 2 to 36, or 0 to follow the prefix of the number ("0x" or "0").
/// Unless `end` is null, it receives the position after the number, or the start of the text if there is no number.
/// gen_local_strtod() reads "1.5,5" as 1.5 and stops at the comma, also if the locale's decimal point is a comma.
GEN_API double gen_local_strtod(char const *text, char **end);
GEN_API long gen_local_strtol(char const *text, char **end, int base);
GEN_API unsigned long gen_local_strtoul(char const *text, char **end, int base);

/// The same functions for wide text.
GEN_API double gen_local_wcstod(wchar_t const *text, wchar_t **end);
GEN_API long gen_local_wcstol(wchar_t const *text, wchar_t **end, int base);
GEN_API unsigned long gen_local_wcstoul(wchar_t const *text, wchar_t **end, int base);
/// The decimal number at the start of a wide text; a number out of range gives the nearest value that fits.
GEN_API int gen_local_wtoi(wchar_t const *text);
GEN_API long gen_local_wtol(wchar_t const *text);

// Character classes. LC_CTYPE is set to "C", except in gen_local_isdigit(). Unless a comment says otherwise, a
// classifier returns 0 for no and any other value for yes.

/// 1 for the codes of '0' to '9', else 0. The locale is neither read nor set.
GEN_API int gen_local_isdigit(int code);

/// Whether a code belongs to a class. Only codes from 0 to 127 belong to a class; any other value of an int may be
/// passed and belongs to none.
GEN_API int gen_local_isalnum(int code);
GEN_API int gen_local_isalpha(int code);
GEN_API int gen_local_iscntrl(int code);
GEN_API int gen_local_isgraph(int code);
GEN_API int gen_local_islower(int code);
GEN_API int gen_local_isprint(int code);
GEN_API int gen_local_ispunct(int code);
GEN_API int gen_local_isspace(int code);
GEN_API int gen_local_isupper(int code);
GEN_API int gen_local_isxdigit(int code);

/// Whether a byte is the first of a character of two bytes; always 0, since the "C" locale has no such characters.
GEN_API int gen_local_isleadbyte(int code);

/// 1 for a code from 0 to 127, else 0.
GEN_API int gen_local_isascii(int code);

/// 1 for the characters of a C identifier (letters, digits and '_'), else 0.
GEN_API int gen_local_iscsym(int code);
/// 1 for the characters that may begin a C identifier (letters and '_'), else 0.
GEN_API int gen_local_iscsymf(int code);

/// A letter of the other case is converted; any other code is returned unchanged.
GEN_API int gen_local_tolower(int code);
GEN_API int gen_local_toupper(int code);

/// The same functions for wide characters of 16 bits. Above 127 the result is that of the platform's "C" locale: on
/// Linux such a character belongs to no class and has no case; on Windows it may belong to classes and have a case.
GEN_API int gen_local_iswalnum(unsigned short code);
GEN_API int gen_local_iswalpha(unsigned short code);
GEN_API int gen_local_iswascii(unsigned short code);
GEN_API int gen_local_iswcntrl(unsigned short code);
GEN_API int gen_local_iswdigit(unsigned short code);
GEN_API int gen_local_iswgraph(unsigned short code);
GEN_API int gen_local_iswlower(unsigned short code);
GEN_API int gen_local_iswprint(unsigned short code);
GEN_API int gen_local_iswpunct(unsigned short code);
GEN_API int gen_local_iswspace(unsigned short code);
GEN_API int gen_local_iswupper(unsigned short code);
GEN_API int gen_local_iswxdigit(unsigned short code);
GEN_API int gen_local_towlower(unsigned short code);
GEN_API int gen_local_towupper(unsigned short code);

/// Whether a wide character belongs to at least one class of a set.
///
/// @param code  the character
/// @param type  the set, as a sum: 1 upper case, 2 lower case, 4 digit, 8 white space, 16 punctuation, 32 control,
///              64 blank, 128 hexadecimal digit, 256 letter; on every platform
GEN_API int gen_local_iswctype(unsigned short code, unsigned short type);

// Text with one byte per character. LC_CTYPE is set to "C".

/// Converts A to Z to lower case, or a to z to upper case, in place and returns the text. Null gives null.
GEN_API char *gen_local_strlwr(char *text);
GEN_API char *gen_local_strupr(char *text);

/// Copies the character at `from` to `to`, without a terminator.
GEN_API void gen_local_mbccpy(unsigned char *to, unsigned char const *from);

/// The number of bytes of the character at `text`; 1 at the terminator.
///
/// On Windows this function and gen_local_mbccpy() follow the multibyte code page of the process, which doesn't depend
/// on the locale and may have characters of two bytes.
GEN_API std::uint64_t gen_local_mbclen(unsigned char const *text);
/// The number of characters of a text.
GEN_API std::uint64_t gen_local_mbstrlen(char const *text);

/// The number of bytes of the character at `text`, of which at most `size_bytes` are read: 1, or 0 at the terminator.
///
/// In this function and the next four, a byte above 127 is invalid on Linux: the result is -1, as an unsigned number if
/// the result is unsigned. On Windows such a byte is the character with the same code.
GEN_API int gen_local_mblen(char const *text, std::uint64_t size_bytes);
/// Converts a text to wide characters and returns their number without the terminator. At most `size` are written, with
/// the terminator. If `to` is null, they are only counted.
GEN_API std::uint64_t gen_local_mbstowcs(wchar_t *to, char const *text, std::uint64_t size);
/// Converts the character at `text` to a wide character in `to`; the result is that of gen_local_mblen().
GEN_API int gen_local_mbtowc(wchar_t *to, char const *text, std::uint64_t size_bytes);
/// Converts a wide text to bytes and returns their number without the terminator. At most `size_bytes` are written,
/// with the terminator. If `to` is null, they are only counted.
GEN_API std::uint64_t gen_local_wcstombs(char *to, wchar_t const *text, std::uint64_t size_bytes);
/// Converts a wide character to bytes in `to`, which has room for MB_CUR_MAX bytes, and returns the number of bytes.
GEN_API int gen_local_wctomb(char *to, wchar_t character);

// Time, with the names of days and months in English. LC_TIME is set to "C".

/// Renders `time` by a format into `to`, which has room for `size` characters. Returns the number of characters without
/// the terminator, or 0 if they don't fit. The same everywhere are the conversions %a %A %b %B %c %d %H %I %j %m %M %p
/// %S %U %w %W %x %X %y %Y %Z %z %%; others, such as %F and %T, are those of the system, and on Windows the result is
/// 0.
GEN_API std::uint64_t gen_local_strftime(char *to, std::uint64_t size, char const *format, tm const *time);
GEN_API std::uint64_t gen_local_wcsftime(wchar_t *to, std::uint64_t size, wchar_t const *format, tm const *time);

/// Sets all members of `*timeptr` to the current local time; they don't change if the system can't convert the time.
/// Null is the internal error "timeptr != NULL". The shared buffer of the runtime library's localtime() is overwritten.
GEN_API void gen_local_tm_struct(tm *timeptr);

// Numbers without any locale. Any thread may call these at any time; errno is not changed.

/// Writes the decimal digits of a value that is not negative, and a terminator, to `string`, which has room for 11
/// characters. Null is the internal error "string != 0". For a negative value one character without meaning is written:
/// -5 gives "+".
GEN_API void gen_local_itoa(int value, char *string);

/// The number at the start of a text, after optional white space and one optional sign.
///
/// @param text  the text; digits above 9 are letters in either case
/// @param end   receives the position at which reading stopped, unless it is null
/// @param base  2 to 36, or 0 to follow the prefix: "0x" or "0X" means 16, any other "0" means 8, no prefix means 10.
///              Base 16 accepts its prefix too, and base 0 even accepts it twice ("0x0x1F" is 31). Any other base
///              gives 0, with `end` at the start of the text
///
/// Reading stops at the digit that makes the value too large, and the result is the largest value of the type, or the
/// smallest one after a minus sign. In the unsigned functions a minus sign negates the value modulo 2^32 (2^64), even
/// the largest value, which becomes 1. Without digits the result is 0, and `end` is at the sign, or after the white
/// space if there is no sign.
///
///     gen_local_strtoint:   "2147483648" -> 2147483647, end at "8"    "-2147483648" -> -2147483648, end at "8"
///                           " x" -> 0, end at "x"                     "+x" -> 0, end at "+x"
///     gen_local_strtouint:  "-1" -> 4294967295                        "-4294967296" -> 1, end at "6"
///     with base 0:          "017" -> 15                               "0x" -> 0, end after the x
GEN_API std::int32_t gen_local_strtoint(char const *text, char **end, int base);
GEN_API std::uint32_t gen_local_strtouint(char const *text, char **end, int base);
/// The same functions with 64 bits.
GEN_API std::int64_t gen_local_strtoSQWORD(char const *text, char **end, int base);
GEN_API std::uint64_t gen_local_strtoQWORD(char const *text, char **end, int base);

#endif
