// Text functions that don't depend on the locale: only the letters A to Z and a to z have a case, and a character is a
// byte. The exception is gen_atoui_s(), which reads through a stream and so follows the global locale. Any thread may
// call any of these functions; none takes a lock.
#ifndef GEN_STRING_SYS_H
#define GEN_STRING_SYS_H

#include "zel_export_sys.h"

#include <cstdint>
#include <iosfwd>
#include <string>

// Classes of characters. The argument is a character code. Negative codes and codes above 127 belong to no class.

/// 0 to 9, A to Z, a to z.
GEN_API bool gen_ascii_isalnum(int code);

/// A to Z, a to z.
GEN_API bool gen_ascii_isalpha(int code);

/// 0 to 127.
GEN_API bool gen_ascii_isascii(int code);

/// 0 to 31. Unlike in std::iscntrl(), 127 is no control character.
GEN_API bool gen_ascii_iscntrl(int code);

/// The digits 0 to 9.
GEN_API bool gen_ascii_isdigit(int code);

/// 33 to 126.
GEN_API bool gen_ascii_isgraph(int code);

/// a to z.
GEN_API bool gen_ascii_islower(int code);

/// 32 to 126.
GEN_API bool gen_ascii_isprint(int code);

/// 33 to 47, 58 to 64, 91 to 96, 123 to 126.
GEN_API bool gen_ascii_ispunct(int code);

/// The blank, and 9 to 13.
GEN_API bool gen_ascii_isspace(int code);

/// A to Z.
GEN_API bool gen_ascii_isupper(int code);

/// 0 to 9, A to F, b to f. The lower-case letter a is not accepted.
GEN_API bool gen_ascii_isxdigit(int code);

// Case.

/// A letter of the other case is converted; any other code gives its low 8 bits.
///
///     gen_ascii_tolower:  'A' -> 'a'    200 -> byte 200    0x141 -> 'A'
GEN_API char gen_ascii_tolower(int code);
GEN_API char gen_ascii_toupper(int code);

/// Converts the letters of a text in place, up to its terminator. Null does nothing.
GEN_API void gen_tolower(char *text);
GEN_API void gen_toupper(char *text);
/// Same as gen_tolower(char *).
GEN_API void gen_ascii_tolower(char *text);
/// Same as gen_toupper(char *).
GEN_API void gen_ascii_toupper(char *text);

/// Converts all letters of a string in place, also those after an embedded null character.
GEN_API void gen_tolower(std::string &text);
GEN_API void gen_toupper(std::string &text);
/// Same as gen_tolower(std::string &).
GEN_API void gen_ascii_tolower(std::string &text);
/// Same as gen_toupper(std::string &).
GEN_API void gen_ascii_toupper(std::string &text);

/// Converts the letters of a text in place, up to its terminator, and returns the text. Null gives null.
GEN_API char *gen_strlwr(char *text);
GEN_API char *gen_strupr(char *text);

// Comparison byte by byte; bytes are unsigned. The result is negative if the first text is before the second, 0 if they
// are equal, and positive otherwise. Null is before every text: null and null give 0, null and a text -1, a text and
// null 1.

/// The difference of the first two bytes that differ; 0 if the texts are equal.
GEN_API int gen_strcmp(char const *first, char const *second);

/// As gen_strcmp(), with A to Z folded to lower case on both sides.
GEN_API int gen_stricmp(char const *first, char const *second);
/// Same as gen_stricmp().
GEN_API int gen_ascii_stricmp(char const *first, char const *second);
/// Same as gen_stricmp().
GEN_API int gen_stricmp_mt(char const *first, char const *second);

/// As gen_stricmp(), over at most `count` characters. A count of 0 means no limit.
GEN_API int gen_strnicmp(char const *first, char const *second, std::uint64_t count);
/// Same as gen_strnicmp().
GEN_API int gen_ascii_strnicmp(char const *first, char const *second, std::uint64_t count);

/// Whether `text` begins with `prefix`; true for an empty prefix.
GEN_API bool gen_starts_with(std::string const &text, std::string const &prefix);

/// Whether `text` ends with `suffix`; true for an empty suffix.
GEN_API bool gen_ends_with(std::string const &text, std::string const &suffix);

/// Whether a text contains an asterisk or a question mark; false for null.
GEN_API bool gen_has_wildcard_chars(char const *text);

// Natural comparison of names: runs of digits are compared by value, everything else byte by byte. Bytes are signed
// here, so that a byte of 0x80 or above is before every ASCII character. The sign of the result gives the order, as
// above. Nothing is allocated.

/// Compares two names; runs of digits, of any length, are compared by their value.
///
/// - A digit and another character are compared by their codes.
/// - Of two runs with equal values, the one with more leading zeros is greater. The text after the runs is then not
///   compared.
/// - A minus sign is an ordinary character.
/// - If one text is the beginning of the other, the longer one is greater.
/// - Null is the empty text; with a length argument, that must be 0.
///
/// | first     | second     | result                                                       |
/// |-----------|------------|--------------------------------------------------------------|
/// | bus[9]    | bus[12]    | -1: the difference of the numbers of significant digits      |
/// | a13       | a12        | 1: the difference of the first digits that differ            |
/// | a007      | a7         | 2: the difference of the numbers of leading zeros            |
/// | abc       | ABC        | 32: the difference of the characters                         |
/// | -5        | -3         | 2: 5 and 3 are compared                                      |
/// | (empty)   | abc        | -3: the difference of the lengths                            |
GEN_API int gen_lexcmp(std::string const &first, std::string const &second);
GEN_API int gen_lexcmp(char const *first, char const *second);
GEN_API int gen_lexcmp(char const *first, std::uint64_t first_length, char const *second, std::uint64_t second_length);

/// As gen_lexcmp(), with A to Z folded to lower case on both sides.
GEN_API int gen_ilexcmp(std::string const &first, std::string const &second);
GEN_API int gen_ilexcmp(char const *first, char const *second);
GEN_API int gen_ilexcmp(char const *first, std::uint64_t first_length, char const *second, std::uint64_t second_length);

/// Compares two names. A minus sign at the beginning of a name makes all its numbers negative.
///
/// - The sign affects numbers only: "-a" and "a" are equal.
/// - A digit is greater than every other character.
/// - Numbers are reduced modulo 2^32. If two numbers differ, the result is their difference modulo 2^32; for numbers
///   that differ by more than 2^31 its sign is therefore not the order.
/// - Of two equal numbers the one with more digits is greater, also if they are negative.
/// - If one text is the beginning of the other, the longer one is greater, by 1.
///
///     -5, -3 -> -2    -5, 3 -> -8    -1, -01 -> -1    a, 1 -> -1    4294967297, 1 -> 9
GEN_API int gen_signed_lexcmp(std::string const &first, std::string const &second);

// Text to number. Except in gen_atoui_s(), failures are not reported: a text without a number gives 0, and a value that
// doesn't fit wraps.

/// Reads a decimal number: blanks, tabs and line feeds, an optional sign, and digits. No other white space is skipped.
/// The number ends before the first character that is no digit; without a digit the result is 0.
///
///     "12abc" -> 12    " \t\n-7" -> -7    "\r1" -> 0    "- 1" -> 0    "4294967297" -> 1
GEN_API int gen_atoi(std::string const &text);

/// As gen_atoi(text), from a position within the text.
///
/// @param text    the text
/// @param cursor  the position at which to start, at most the end of `text`; not null. It is moved to the first
///                character that was not consumed: after the digits, or after white space and sign if no digit follows
GEN_API int gen_atoi(std::string const &text, std::string::const_iterator *cursor);

/// As gen_atoi(text), with 64 bits.
GEN_API std::int64_t gen_atotime_t(std::string const &text);

/// Reads a number strictly: optional white space, an optional plus sign, and digits up to the end of the text.
///
/// @param text  the text
/// @param ok    receives whether the text is such a number and fits into 32 bits; not null
///
/// @return the number; 0 if `ok` is false
///
/// A minus sign makes `ok` false, and so does any character after the digits, even a blank.
GEN_API std::uint32_t gen_atoui_s(std::string const &text, bool *ok);

// Number to text. The digits are 0 to 9, then a to z. The `char *` forms return their buffer, which must have room for
// the digits, a minus sign and a terminator: 66 bytes are always enough (64 digits in radix 2). The radix must be 2 to
// 36. If it is below 2, the form with `std::string &` reports an internal error and the others give an empty text. If
// it is above 36, the digits continue with the characters after z.

/// In radix 10 a negative value gets a minus sign; in any other radix its 32 bits are written as an unsigned number.
///
///     -255 in radix 10 -> "-255"    -255 in radix 16 -> "ffffff01"
GEN_API std::string gen_itoa(int value, int radix);
GEN_API char *gen_itoa(int value, char *buffer, int radix);

/// As gen_itoa(value, radix); the text replaces the content of `out`. A radix below 2 is the internal error
/// "radix > 1".
GEN_API void gen_itoa(int value, std::string &out, int radix);

/// A negative value gets a minus sign in every radix: -255 in radix 16 gives "-ff".
GEN_API char *gen_ltoa(std::int64_t value, char *buffer, int radix);

GEN_API char *gen_ultoa(std::uint64_t value, char *buffer, int radix);

// Shaping.

/// The text without the blanks at both ends; no other white space is removed.
GEN_API std::string gen_remove_leading_and_trailing_spaces(std::string const &text);
/// Stores that result in `out`, which may be the text itself; null does nothing.
GEN_API void gen_remove_leading_and_trailing_spaces(std::string const &text, std::string *out);

/// The text without the blanks, tabs, line feeds and carriage returns at both ends.
GEN_API std::string gen_remove_leading_and_trailing_white_spaces(std::string const &text);
/// Stores that result in `out`, which may be the text itself; null does nothing.
GEN_API void gen_remove_leading_and_trailing_white_spaces(std::string const &text, std::string *out);

/// The text repeated `num_reps` times; a negative number is the internal error "num_reps >= 0".
GEN_API std::string gen_repeat_str(std::string const &text, int num_reps);

/// Decodes the escape sequences of a text in place, except inside double quotes.
///
/// Outside quotes a backslash is removed and the character after it is decoded: n gives a line feed, r a carriage
/// return, t a tab, and any other character itself; a double quote after a backslash doesn't begin quotes. A backslash
/// at the end is removed. Quotes stay in the text. Inside quotes a backslash is an ordinary character, so that a quote
/// after it ends the quotes.
///
///     a\tb -> a, tab, b    "a\tb" -> "a\tb"    \"a\\b -> "a\b    "\"\" -> "\""
GEN_API void gen_process_escaped_quotes(std::string &text);

/// As gen_process_escaped_quotes(std::string &), for a text with a terminator; null does nothing. A text of 2^31
/// characters or more throws boost::numeric::positive_overflow and does not change.
GEN_API void gen_process_escaped_quotes(char *text);

/// Converts a wild-card pattern to a regular expression, in place.
///
/// @param wildcard  the pattern; null is the internal error "wildcard != 0"
/// @param anchor    whether to add "^" at the beginning and "$" at the end, so that only a whole text matches
///
/// An asterisk matches any text, a question mark matches any character, and a letter matches both its cases. The
/// characters ( ) . [ \ ] and the bar match themselves. The characters + ^ $ { } keep their meaning in a regular
/// expression.
///
///     a*.txt, anchored -> ^[aA].*\.[tT][xX][tT]$
GEN_API void gen_wildcard_to_reg_expr(std::string *wildcard, bool anchor);

/// True for null and for an empty text.
GEN_API bool gen_is_empty_string(char const *text);

// Texts with a terminator.

/// The length; 0 for null.
GEN_API int gen_strlen(char const *text);

/// Copies a text and returns `dst`. A null `src` makes `dst` empty. A null `dst` does nothing. They must not both be
/// null.
GEN_API char *gen_strcpy(char *dst, char const *src);

/// Copies at most `count` characters, appends a terminator and returns `dst`, which needs room for `count` + 1 bytes.
///
/// If `src` is at least two characters shorter than `count`, zeros fill `dst` from the terminator up to index
/// `count` - 2; the byte at index `count` - 1 keeps its value. A null `src` makes `dst` empty. A null `dst` does
/// nothing. They must not both be null.
///
///     "ab", 5 over "xxxxxxx" -> a b 0 0 x x x
GEN_API char *gen_strncpy(char *dst, char const *src, std::uint64_t count);

/// Appends a text and returns `dst`; does nothing if either is null.
GEN_API char *gen_strcat(char *dst, char const *src);

/// Copies as much as fits into a buffer of `size` bytes with the terminator, and returns the length of `src`. If the
/// result is `size` or more, the copy was cut. Nothing is written if `size` is 0. No pointer may be null.
GEN_API std::uint64_t gen_strlcpy(char *dst, char const *src, std::uint64_t size);

/// Appends as much as fits into a buffer of `size` bytes with the terminator, and returns the sum of both lengths. If
/// the terminator of `dst` is at index `size` or above, nothing is written. No pointer may be null.
GEN_API std::uint64_t gen_strlcat(char *dst, char const *src, std::uint64_t size);

/// Reverses a text in place and returns it; null gives null.
GEN_API char *gen_strrev(char *text);

// Other.

/// A hash of a name, the same in every run and on every platform.
///
/// @param name  the name; not null. It is changed in place: blanks at its end are removed, other blanks are replaced by
///              underscores, and other characters that an identifier can't contain are replaced by letters
///
/// @return the hash; 0 if nothing is left of the name
GEN_API std::uint32_t gen_crc_string_to_dword(char *name);

/// The size for a hash table of at least `n` slots: the smallest of 29 primes that is not less than `n`. The primes are
/// the largest ones below the powers of two from 2^4 to 2^32, that is 13 to 4294967291. If `n` is greater than all of
/// them, it is the internal error "rval != 0".
GEN_API std::uint64_t gen_hash_next_size(std::uint64_t n);

/// Reads a line up to a delimiter, which is consumed but not stored.
///
/// @param in         the stream; not null
/// @param line       receives the text; not null
/// @param delimiter  the end of a line
///
/// @return whether the stream was good before the call; not whether a line was read. If a file ends in a delimiter, the
///         call after its last line returns true with an empty line. If the result is false, the line is empty
GEN_API bool gen_getline(std::istream *in, std::string *line, char delimiter);

/// Writes a key into a section of an initialisation file, and returns 1 on success and 0 on failure.
///
/// @param section  the section, made at the end of the file if it is missing; case doesn't matter
/// @param key      the key, made at the end of the section if it is missing; case doesn't matter. Null removes the
///                 section.
/// @param value    the value; null removes the key
/// @param file     path of the file, which is made if it is missing. On Windows a path without a directory lies in the
///                 directory of Windows, elsewhere in the current one.
///
/// On Windows this calls WritePrivateProfileStringA() and returns its result. Elsewhere the file is replaced as a whole
/// with all other lines unchanged, and a text that could not be read back is a failure: a key with "=", a text with a
/// line end, and a key that would begin a comment or a section.
///
/// Any thread. Calls of several threads and processes for one file lose no key: each waits for the others, 10 s at
/// most, and is a failure after that. (On Windows two paths that differ in more than case, such as a link, count as two
/// files.) On Linux the directory has to be writable; the file keeps its mode, and its owner, group and ACL as far as
/// the user may set them; a link, also to a missing file, stays, and the file that it names is changed. Not changed
/// are a file without any write permission, also for the superuser, and anything that is no regular file. While the
/// file is written, its new text is in a file with ".gen_ini_tmp" after the name; the next change removes the one that
/// a killed process leaves.
GEN_API int gen_writeprivateprofilestring(char const *section, char const *key, char const *value, char const *file);

// Messages from templates.
//
// A template is a text with numbered inserts, in any order and any number of times.
//
//     %1 ... %99   the argument with that number, which is a text; a third digit is ordinary text
//     %1!d!        the argument with that number, formatted by a conversion of stl_output() without its per-cent sign;
//                  flags, width, precision and length are allowed: %2!-8.3f!, %3!lld!
//     %0           ends the template; the text after it is dropped
//     %%           a per-cent sign
//     other %      copied unchanged, so that %n and %t have no meaning; also a single % at the end of the template
//     LF CR        becomes CR LF; CR LF and single line-end characters are copied unchanged
//
//     "%2 %1" with "a", "b"     -> "b a"           "%1!d! %2" with 7, "x"  -> "7 x"
//     "100%% of %x%0, %1"       -> "100% of %x"    "%123" with 12 texts    -> the last of them and "3"
//
// The arguments are a run of 8-byte slots as described at stl_output(), beginning with insert 1. An insert takes as
// many slots as its conversion; a number that the template does not use takes one slot. To reach an argument, all
// arguments before it are formatted by their own conversions, so all of them must be valid. The slots are not changed.
//
// All conversions of one template together may have 4095 bytes, counting a per-cent sign and a terminator for each. A
// conversion that does not fit, and every one after it, prints nothing and takes no slot.

/// Appends an expanded template to a text.
///
/// @param out     the text; neither the template nor an argument may lie in its memory
/// @param format  the template; not null
/// @param args    the slots; null is allowed for a template without inserts
/// @return the low 32 bits of the length of `out`, with its former content
GEN_API std::uint32_t gen_formatmessage(std::string &out, char const *format, char *args);

// The flags of the other form. If the headers of the system define them as macros, those have the same values.
#ifndef FORMAT_MESSAGE_FROM_STRING
constexpr unsigned long FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x100; ///< `buffer` receives a block
constexpr unsigned long FORMAT_MESSAGE_IGNORE_INSERTS = 0x200;  ///< the template is the text, to the byte
constexpr unsigned long FORMAT_MESSAGE_FROM_STRING = 0x400;     ///< required
constexpr unsigned long FORMAT_MESSAGE_FROM_HMODULE = 0x800;    ///< not supported: an internal error
constexpr unsigned long FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;    ///< not supported: an internal error
constexpr unsigned long FORMAT_MESSAGE_ARGUMENT_ARRAY = 0x2000; ///< ignored: `args` is always a run of slots
constexpr unsigned long FORMAT_MESSAGE_MAX_WIDTH_MASK = 0xFF;   ///< not supported: any of its bits is an internal error
#endif

/// Expands a template into a buffer, with the parameters of the Windows function of that name.
///
/// @param flags        FORMAT_MESSAGE_FROM_STRING, alone or with FORMAT_MESSAGE_ALLOCATE_BUFFER and
///                     FORMAT_MESSAGE_IGNORE_INSERTS; unknown bits are ignored
/// @param source       the template; a text, not null
/// @param message_id   ignored
/// @param language_id  ignored
/// @param buffer       receives the text with a terminator. With FORMAT_MESSAGE_ALLOCATE_BUFFER it is the address of a
///                     `char *`, which receives a block that the caller releases with free()
/// @param size         the size of `buffer` in bytes. A longer text is cut to leave room for the terminator; with 0
///                     nothing is written and the result is 0. With FORMAT_MESSAGE_ALLOCATE_BUFFER it is the smallest
///                     length of the text
/// @param args         the slots; null is allowed for a template without inserts
/// @return the number of characters stored, without the terminator
///
/// An empty text gives 0 and writes nothing, not even a terminator. With FORMAT_MESSAGE_ALLOCATE_BUFFER an empty text
/// stores null, and so does a failed allocation. A text shorter than `size` is then padded with zeros, and the result
/// is `size`: a text of 5 characters with a size of 64 returns 64 and makes a block of 65 bytes. A null character in
/// the text ends the copy; zeros replace the rest.
///
/// Without FORMAT_MESSAGE_FROM_STRING it is the internal error "gen_formatmessage: The FORMAT_MESSAGE_FROM_STRING flag
/// must be used".
GEN_API std::uint32_t gen_formatmessage(unsigned long flags, void const *source, unsigned long message_id,
                                        unsigned long language_id, char *buffer, unsigned long size, char *args);

#endif
