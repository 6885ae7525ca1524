// The runtime library's locale-sensitive functions as the "C" locale has them, whatever locale the process has set.
//
// All but gen_local_isdigit() and the numbers at the end force one category of the process's locale to "C" for the
// length of the call and then set the former name again. The locale belongs to the whole process and no lock is taken:
// meanwhile the other threads see "C" too, and two of these calls at once may leave "C" behind. A program that sets a
// locale keeps these calls to one thread, or does without: the classifiers of gen_string_sys.h and the numbers below
// need no locale.
//
// Arguments and results are those of the function named after the prefix, null pointers, errno and values out of range
// included, except where something else is said.
#ifndef GEN_LOCALIZATION_SYS_H
#define GEN_LOCALIZATION_SYS_H

#include "zel_export_sys.h"

#include <cstdint>

struct tm;

// Numbers, with the decimal point ".". LC_NUMERIC is forced.

/// The number at the start of a text, behind white space; 0 if there is none.
GEN_API double gen_local_atof(char const *text);
GEN_API int gen_local_atoi(char const *text);
GEN_API long gen_local_atol(char const *text);
/// A decimal number of 64 bits; one out of range gives the nearest value that fits.
GEN_API std::int64_t gen_local_atosqword(char const *text);

/// The number at the start of a text in a base from 2 to 36, or 0 for the base that the text itself tells. `end`
/// receives the place behind the number unless it is null, the start of the text if there is no number. Under a decimal
/// comma too, gen_local_strtod() reads "1.5,5" as 1.5 and stops at the comma.
GEN_API double gen_local_strtod(char const *text, char **end);
GEN_API long gen_local_strtol(char const *text, char **end, int base);
GEN_API unsigned long gen_local_strtoul(char const *text, char **end, int base);

/// The same on wide text.
GEN_API double gen_local_wcstod(wchar_t const *text, wchar_t **end);
GEN_API long gen_local_wcstol(wchar_t const *text, wchar_t **end, int base);
GEN_API unsigned long gen_local_wcstoul(wchar_t const *text, wchar_t **end, int base);
/// The decimal number at the start of a wide text; one out of range gives the nearest value that fits.
GEN_API int gen_local_wtoi(wchar_t const *text);
GEN_API long gen_local_wtol(wchar_t const *text);

// Character classes. LC_CTYPE is forced, save in gen_local_isdigit(). A classifier gives 0 for no, and any other value
// for yes.

/// 1 for the codes of '0' to '9', else 0. It needs no locale and touches none.
GEN_API int gen_local_isdigit(int code);

/// Whether a code belongs to a class. Only codes below 128 belong to any; codes that are neither a byte nor EOF are
/// safe and belong to none.
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

/// Whether a byte is the first of a character of two. Under "C" none is.
GEN_API int gen_local_isleadbyte(int code);

/// 1 for a code from 0 to 127, else 0.
GEN_API int gen_local_isascii(int code);

/// 1 for what may stand in a name of the C language, letters, digits and '_', else 0; and 1 for what such a name may
/// begin with, letters and '_', else 0.
GEN_API int gen_local_iscsym(int code);
GEN_API int gen_local_iscsymf(int code);

/// A letter folded to the other case; any other code as it is.
GEN_API int gen_local_tolower(int code);
GEN_API int gen_local_toupper(int code);

/// The same on wide characters of 16 bits. Above 127 the platform's "C" locale decides: on Linux such a character
/// belongs to no class and has no case, on Windows it may have both.
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

// Text, a byte a character. LC_CTYPE is forced.

/// Folds A to Z, or a to z, in place and returns the text. Null gives null.
GEN_API char *gen_local_strlwr(char *text);
GEN_API char *gen_local_strupr(char *text);

/// Copies the one character at `from` to `to`, no terminator.
GEN_API void gen_local_mbccpy(unsigned char *to, unsigned char const *from);

/// Bytes of the character at `text`, 1 also at the terminator; and characters of a text.
///
/// On Windows gen_local_mbclen() and gen_local_mbccpy() go by the multibyte code page of the process, which no locale
/// changes: where that has characters of two bytes, so have they.
GEN_API std::uint64_t gen_local_mbclen(unsigned char const *text);
GEN_API std::uint64_t gen_local_mbstrlen(char const *text);

/// Bytes of the character at `text`, of which at most `size_bytes` are looked at: 1, or 0 at the terminator. Bytes
/// above 127 are no characters on Linux (-1, and all bits set from the functions with an unsigned result), and stand
/// for the code of the same value on Windows. So in the four that follow.
GEN_API int gen_local_mblen(char const *text, std::uint64_t size_bytes);
/// Widens a text: at most `size` characters with the terminator; the result doesn't count that. A null `to` only
/// counts.
GEN_API std::uint64_t gen_local_mbstowcs(wchar_t *to, char const *text, std::uint64_t size);
/// Widens the character at `text` into `to`; the result is that of gen_local_mblen().
GEN_API int gen_local_mbtowc(wchar_t *to, char const *text, std::uint64_t size_bytes);
/// Narrows a text: at most `size_bytes` with the terminator; the result doesn't count that. A null `to` only counts.
GEN_API std::uint64_t gen_local_wcstombs(char *to, wchar_t const *text, std::uint64_t size_bytes);
/// Narrows a character into `to`, which has room for MB_CUR_MAX bytes; the bytes written.
GEN_API int gen_local_wctomb(char *to, wchar_t character);

// Time, with the names of days and months in English. LC_TIME is forced.

/// Renders `time` under a format into `to`, which has room for `size` characters; the characters written, without the
/// terminator, or 0 if they don't fit.
GEN_API std::uint64_t gen_local_strftime(char *to, std::uint64_t size, char const *format, tm const *time);
GEN_API std::uint64_t gen_local_wcsftime(wchar_t *to, std::uint64_t size, wchar_t const *format, tm const *time);

/// The present local time, all members; what `timeptr` held doesn't matter. It stays as it was if the system can't
/// convert the time. Null is an internal error. The runtime library's shared buffer is used on the way.
GEN_API void gen_local_tm_struct(tm *timeptr);

// Numbers without any locale. Any thread may call these at any time; errno is left alone.

/// Writes the decimal digits of a value from 0 up, and a terminator; `string` has room for 11 characters. Null is an
/// internal error. A negative value gives one character that means nothing: -5 gives "+".
GEN_API void gen_local_itoa(int value, char *string);

/// The number at the start of a text, behind white space and one sign.
///
/// @param text  the text; digits above 9 are letters in either case
/// @param end   receives the place where reading stopped, unless it is null
/// @param base  2 to 36, or 0 for the base that the text itself tells: 16 behind "0x" or "0X", 8 behind another "0",
///              else 10. Base 16 takes the prefix too, base 0 even twice ("0x0x1F" is 31). Any other base gives 0
///              and the start of the text.
///
/// A value out of range stops on the digit that makes it so and gives the largest value of the type, or the smallest
/// behind a minus sign. In the unsigned forms a minus sign wraps the value instead, also the largest: that becomes 1.
/// Without digits the value is 0 and `end` the place of the sign, or what follows the white space if there is no sign.
///
///     gen_local_strtoint:   "2147483648" -> 2147483647, end at "8"    "-2147483648" -> -2147483648, end at "8"
///                           " x" -> 0, end at "x"                     "+x" -> 0, end at "+x"
///     gen_local_strtouint:  "-1" -> 4294967295                        "-4294967296" -> 1, end at "6"
///     with base 0:          "017" -> 15                               "0x" -> 0, end behind the x
GEN_API std::int32_t gen_local_strtoint(char const *text, char **end, int base);
GEN_API std::uint32_t gen_local_strtouint(char const *text, char **end, int base);
/// The same in 64 bits.
GEN_API std::int64_t gen_local_strtoSQWORD(char const *text, char **end, int base);
GEN_API std::uint64_t gen_local_strtoQWORD(char const *text, char **end, int base);

#endif
