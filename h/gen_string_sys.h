// Text without a locale: only the letters A to Z and a to z have a case, and a byte is a byte; gen_atoui_s() alone
// reads through a stream, and so by the global locale. Any thread may call any of these; none takes a lock.
#ifndef GEN_STRING_SYS_H
#define GEN_STRING_SYS_H

#include "zel_export_sys.h"

#include <cstdint>
#include <iosfwd>
#include <string>

// Classes of characters. The argument is a code point; a negative one is in no class.

/// 0 to 9, A to Z, a to z.
GEN_API bool gen_ascii_isalnum(int code);

/// A to Z, a to z.
GEN_API bool gen_ascii_isalpha(int code);

/// 0 to 127.
GEN_API bool gen_ascii_isascii(int code);

/// 0 to 31. The code 127 is no control character here.
GEN_API bool gen_ascii_iscntrl(int code);

/// The characters 0 to 9.
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

/// A letter folded to the other case; any other code gives its low 8 bits.
///
///     gen_ascii_tolower:  'A' -> 'a'    200 -> byte 200    0x141 -> 'A'
GEN_API char gen_ascii_tolower(int code);
GEN_API char gen_ascii_toupper(int code);

/// Folds a text in place, up to its terminator. Null is passed over.
GEN_API void gen_tolower(char *text);
GEN_API void gen_toupper(char *text);
/// Same as gen_tolower(char *).
GEN_API void gen_ascii_tolower(char *text);
/// Same as gen_toupper(char *).
GEN_API void gen_ascii_toupper(char *text);

/// Folds every character of a string in place, those behind an embedded zero included.
GEN_API void gen_tolower(std::string &text);
GEN_API void gen_toupper(std::string &text);
/// Same as gen_tolower(std::string &).
GEN_API void gen_ascii_tolower(std::string &text);
/// Same as gen_toupper(std::string &).
GEN_API void gen_ascii_toupper(std::string &text);

/// Folds a text in place, up to its terminator, and returns it. Null gives null.
GEN_API char *gen_strlwr(char *text);
GEN_API char *gen_strupr(char *text);

// Plain comparison, byte by byte, a byte being unsigned. The sign of a result is the order: negative if the first text
// stands before the second. A null text stands before every other one: null and null give 0, null and a text -1, a text
// and null 1.

/// The difference of the first two bytes that differ; 0 if the texts are equal.
GEN_API int gen_strcmp(char const *first, char const *second);

/// The same with A to Z folded to lower case on both sides.
GEN_API int gen_stricmp(char const *first, char const *second);
/// Same as gen_stricmp().
GEN_API int gen_ascii_stricmp(char const *first, char const *second);
/// Same as gen_stricmp().
GEN_API int gen_stricmp_mt(char const *first, char const *second);

/// gen_stricmp() over at most `count` characters. A count of 0 does not limit: whole texts are compared.
GEN_API int gen_strnicmp(char const *first, char const *second, std::uint64_t count);
/// Same as gen_strnicmp().
GEN_API int gen_ascii_strnicmp(char const *first, char const *second, std::uint64_t count);

/// Whether the first bytes of `text` are those of `prefix`; an empty prefix always fits.
GEN_API bool gen_starts_with(std::string const &text, std::string const &prefix);

/// Whether the last bytes of `text` are those of `suffix`; an empty suffix always fits.
GEN_API bool gen_ends_with(std::string const &text, std::string const &suffix);

/// Whether a text has an asterisk or a question mark; null has none.
GEN_API bool gen_has_wildcard_chars(char const *text);

// Comparison that knows numbers, for names: runs of digits compare by value, everything else by character, a byte being
// signed here, so that one of 0x80 or above stands before every ASCII character. The sign of a result is the order.
// Nothing is allocated.

/// Compares two names, runs of digits of any length by their value.
///
/// A digit that faces another character compares by its code. Of two equal values the one with more zeros in front is
/// greater, which decides at once, ahead of anything behind the numbers. A minus sign is a character like any other. Of
/// two texts that are equal as far as the shorter one goes, the longer one is greater. Null is an empty text, and null
/// with a length of 0 too.
///
/// | first     | second     | result                                                       |
/// |-----------|------------|--------------------------------------------------------------|
/// | bus[9]    | bus[12]    | -1: one significant digit less                               |
/// | a13       | a12        | 1: the difference of the first digits that differ            |
/// | a007      | a7         | 2: two zeros more                                            |
/// | abc       | ABC        | 32: the difference of the characters                         |
/// | -5        | -3         | 2: 5 and 3 are compared                                      |
/// | (empty)   | abc        | -3: the difference of the lengths                            |
GEN_API int gen_lexcmp(std::string const &first, std::string const &second);
GEN_API int gen_lexcmp(char const *first, char const *second);
GEN_API int gen_lexcmp(char const *first, std::uint64_t first_length, char const *second, std::uint64_t second_length);

/// gen_lexcmp() with A to Z folded to lower case on both sides.
GEN_API int gen_ilexcmp(std::string const &first, std::string const &second);
GEN_API int gen_ilexcmp(char const *first, char const *second);
GEN_API int gen_ilexcmp(char const *first, std::uint64_t first_length, char const *second, std::uint64_t second_length);

/// Compares two names, of which each may begin with a minus sign that makes all its numbers negative.
///
/// The sign affects the numbers alone: -a and a are equal. A digit stands behind every other character. A number is
/// taken modulo 2^32, and so is the difference of two numbers, which is the result where they differ; for numbers more
/// than 2^31 apart the sign is therefore no order. Of two equal values the one with more digits is greater, negative or
/// not. Of two texts that are equal as far as the shorter one goes, the longer one is greater, by 1.
///
///     -5, -3 -> -2    -5, 3 -> -8    -1, -01 -> -1    a, 1 -> -1    4294967297, 1 -> 9
GEN_API int gen_signed_lexcmp(std::string const &first, std::string const &second);

// Text to number. There is no failure: bad text gives 0, and a value too large wraps.

/// Reads a number of one optional sign and decimal digits, behind any blanks, tabs and line feeds; no other white space
/// is skipped. The first character that is no digit ends the number; without a digit the result is 0.
///
///     "12abc" -> 12    " \t\n-7" -> -7    "\r1" -> 0    "- 1" -> 0    "4294967297" -> 1
GEN_API int gen_atoi(std::string const &text);

/// The same from a place within the text on.
///
/// @param text    the text
/// @param cursor  where to start, at most the end of `text`; not null. It is left on the first character that was not
///                consumed: behind the digits, or behind the white space and the sign if no digit follows them.
GEN_API int gen_atoi(std::string const &text, std::string::const_iterator *cursor);

/// gen_atoi() in 64 bits.
GEN_API std::int64_t gen_atotime_t(std::string const &text);

/// Reads a number strictly: white space, one plus sign, and digits up to the end of the text.
///
/// @param text  the text
/// @param ok    receives whether the text is such a number and fits into 32 bits; not null
///
/// @return the number; 0 if `ok` is false
///
/// A minus sign anywhere and anything behind the digits, even a blank, make the text a bad one.
GEN_API std::uint32_t gen_atoui_s(std::string const &text, bool *ok);

// Number to text: digits 0 to 9, then lower-case letters from a for ten on. The `char *` forms return their buffer,
// which must have room for the digits, a minus sign and a terminator: 66 bytes are always enough. A radix is 2 to 36.
// One below 2 is the caller's fault, which the `std::string &` form ends the process for; the others give an empty
// text. Above 36 the characters behind z go on as digits.

/// In radix 10 a negative value has a minus sign; in any other its 32 bits are written as an unsigned number.
///
///     -255 in radix 10 -> "-255"    -255 in radix 16 -> "ffffff01"
GEN_API std::string gen_itoa(int value, int radix);
GEN_API char *gen_itoa(int value, char *buffer, int radix);

/// The same in place of what `out` holds. A radix below 2 is an internal error.
GEN_API void gen_itoa(int value, std::string &out, int radix);

/// A negative value has a minus sign in every radix: -255 in radix 16 gives "-ff".
GEN_API char *gen_ltoa(std::int64_t value, char *buffer, int radix);

GEN_API char *gen_ultoa(std::uint64_t value, char *buffer, int radix);

// Shaping.

/// A text without the blanks at both ends; no other white space is removed.
GEN_API std::string gen_remove_leading_and_trailing_spaces(std::string const &text);
/// The same into `out`, which may be the text itself; null is passed over.
GEN_API void gen_remove_leading_and_trailing_spaces(std::string const &text, std::string *out);

/// A text without the blanks, tabs, line feeds and carriage returns at both ends.
GEN_API std::string gen_remove_leading_and_trailing_white_spaces(std::string const &text);
/// The same into `out`, which may be the text itself; null is passed over.
GEN_API void gen_remove_leading_and_trailing_white_spaces(std::string const &text, std::string *out);

/// A text `num_reps` times in a row; a negative count is an internal error.
GEN_API std::string gen_repeat_str(std::string const &text, int num_reps);

/// Decodes the escapes of a text that stand outside double quotes, in place.
///
/// Outside quotes a backslash is dropped and the character after it decoded: n is a line feed, r a carriage return, t a
/// tab, and any other character itself; a double quote decoded so opens no quotes. A backslash at the end is dropped.
/// Quotes stay in the text, and within them a backslash is a character like any other: it doesn't keep a quote behind
/// it from closing.
///
///     a\tb -> a, tab, b    "a\tb" -> "a\tb"    \"a\\b -> "a\b    "\"\" -> "\""
GEN_API void gen_process_escaped_quotes(std::string &text);

/// The same on a text with a terminator; null is passed over. A text of 2^31 characters or more throws
/// boost::numeric::positive_overflow and stays as it is.
GEN_API void gen_process_escaped_quotes(char *text);

/// Turns a wild card into a regular expression, in place.
///
/// @param wildcard  the text; null is an internal error
/// @param anchor    whether to put "^" in front and "$" behind, so that only a whole text matches
///
/// An asterisk matches any text, a question mark any character, a letter both its cases; ( ) . [ \ ] and the bar stand
/// for themselves. The characters + ^ $ { } stay what they are in a regular expression.
///
///     a*.txt, anchored -> ^[aA].*\.[tT][xX][tT]$
GEN_API void gen_wildcard_to_reg_expr(std::string *wildcard, bool anchor);

/// True for null and for an empty text.
GEN_API bool gen_is_empty_string(char const *text);

// Texts with a terminator.

/// The length; 0 for null.
GEN_API int gen_strlen(char const *text);

/// Copies a text and returns `dst`. A null `src` makes `dst` empty; else a null `dst` is passed over. They must not
/// both be null.
GEN_API char *gen_strcpy(char *dst, char const *src);

/// Copies at most `count` characters and puts a terminator behind them, for which `dst` needs room for one byte more
/// than `count`; returns `dst`.
///
/// If at least two of the `count` places are left over, the bytes from the terminator on are zeroed, one byte fewer
/// than were left over: the byte at index `count` - 1 keeps its value. A null `src` makes `dst` empty; else a null
/// `dst` is passed over. They must not both be null.
///
///     "ab", 5 over "xxxxxxx" -> a b 0 0 x x x
GEN_API char *gen_strncpy(char *dst, char const *src, std::uint64_t count);

/// Appends a text and returns `dst`; does nothing if either is null.
GEN_API char *gen_strcat(char *dst, char const *src);

/// Copies as much as a buffer of `size` bytes holds, terminator included, and returns the length of `src`: a result of
/// `size` or more tells that it was cut. Nothing is written if `size` is 0. No pointer may be null.
GEN_API std::uint64_t gen_strlcpy(char *dst, char const *src, std::uint64_t size);

/// Appends as much as a buffer of `size` bytes holds, terminator included, and returns the sum of both lengths. `dst`
/// must have a terminator, and is left alone if that lies at index `size` or behind. No pointer may be null.
GEN_API std::uint64_t gen_strlcat(char *dst, char const *src, std::uint64_t size);

/// Reverses a text in place and returns it; null gives null.
GEN_API char *gen_strrev(char *text);

// Other.

/// A hash of a name, the same in every run and on every platform.
///
/// @param name  the name; not null. It is changed in place: blanks at its end are cut off, and characters that have no
///              place in an identifier are replaced by letters, blanks by underscores.
///
/// @return the hash; 0 if nothing is left of the name
GEN_API std::uint32_t gen_crc_string_to_dword(char *name);

/// The first of 29 primes, from 13 to 4294967291, each the largest below a power of two, that is not less than `n`. An
/// `n` above all of them is an internal error.
GEN_API std::uint64_t gen_hash_next_size(std::uint64_t n);

/// Reads up to a delimiter, which is consumed and not stored.
///
/// @param in         the stream; not null
/// @param line       receives the text; not null
/// @param delimiter  the end of a line
///
/// @return whether the stream was good before the call, and not whether a line was read: behind the last line of a file
///         that ends in a delimiter one more call gives true with an empty line. On false the line is empty.
GEN_API bool gen_getline(std::istream *in, std::string *line, char delimiter);

/// Writes a key into a section of an initialisation file, and returns whether that worked, as 1 or 0.
///
/// @param section  the section, made at the end of the file if it is missing; case doesn't matter
/// @param key      the key, made at the end of the section if it is missing; case doesn't matter. Null removes the
///                 section.
/// @param value    the value; null removes the key
/// @param file     path of the file, which is made if it is missing. On Windows a path without a directory lies in the
///                 directory of Windows, elsewhere in the current one.
///
/// On Windows this is WritePrivateProfileStringA itself, with its result. Elsewhere the file is replaced as a whole,
/// all its other lines as they were; a key with "=", texts with line ends, and what would make a comment or a section's
/// line are refused, for they could not be read back.
GEN_API int gen_writeprivateprofilestring(char const *section, char const *key, char const *value, char const *file);

// Messages from templates.
//
// A template is a text with numbered inserts, in any order and as often as wanted.
//
//     %1 ... %99   the argument of that number as a text; a third digit is ordinary text
//     %1!d!        the same by a conversion as of stl_output() without its per-cent sign, also with flags, width,
//                  precision and length: %2!-8.3f!, %3!lld!
//     %0           the end: what stands behind is dropped
//     %%           a per-cent sign
//     % else       stands as it is, so %n and %t have no meaning; so does a single % that the template ends in
//     LF CR        becomes CR LF; CR LF and single characters stay as they are
//
//     "%2 %1" with "a", "b"     -> "b a"           "%1!d! %2" with 7, "x"  -> "7 x"
//     "100%% of %x%0, %1"       -> "100% of %x"    "%123" with 12 texts    -> the last of them and "3"
//
// The arguments are a run of 8-byte slots as of stl_output(), insert 1 first. An insert takes as many slots as its
// conversion does; a number that the template does not use is one slot. To reach an argument those in front of it are
// formatted by their own conversions, so all of them have to be sound. The slots are not changed.
//
// All conversions of one template have room for 4095 bytes, with a per-cent sign and a terminator each; one that does
// not fit, and every one behind it, prints nothing and takes no slot.

/// Appends an expanded template to a text.
///
/// @param out     the text; neither the template nor an argument may lie in it
/// @param format  the template; not null
/// @param args    the slots; null is right for a template without inserts
/// @return the length of `out`, which counts what stood there before; the low 32 bits
GEN_API std::uint32_t gen_formatmessage(std::string &out, char const *format, char *args);

// The flags of the other form. Where the headers of the system have them as macros, they are the same.
#ifndef FORMAT_MESSAGE_FROM_STRING
constexpr unsigned long FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x100; ///< `buffer` receives a block
constexpr unsigned long FORMAT_MESSAGE_IGNORE_INSERTS = 0x200;  ///< the template is the text, to the byte
constexpr unsigned long FORMAT_MESSAGE_FROM_STRING = 0x400;     ///< required
constexpr unsigned long FORMAT_MESSAGE_FROM_HMODULE = 0x800;    ///< not supported: an internal error
constexpr unsigned long FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;    ///< not supported: an internal error
constexpr unsigned long FORMAT_MESSAGE_ARGUMENT_ARRAY = 0x2000; ///< not looked at: `args` is always a run of slots
constexpr unsigned long FORMAT_MESSAGE_MAX_WIDTH_MASK = 0xFF;   ///< not supported: any of its bits is an internal error
#endif

/// Expands a template into a buffer, with the parameters of the Windows function of that name.
///
/// @param flags        FORMAT_MESSAGE_FROM_STRING, alone or with FORMAT_MESSAGE_ALLOCATE_BUFFER and
///                     FORMAT_MESSAGE_IGNORE_INSERTS; unknown bits are not looked at
/// @param source       the template; a text, not null
/// @param message_id   not looked at
/// @param language_id  not looked at
/// @param buffer       receives the text with a terminator. With FORMAT_MESSAGE_ALLOCATE_BUFFER it is the address of a
///                     `char *`, which receives a block that the caller releases with free().
/// @param size         the bytes of `buffer`: a longer text is cut to leave room for the terminator, and with 0 nothing
///                     is written and the result is 0. With FORMAT_MESSAGE_ALLOCATE_BUFFER the least length of the
///                     text.
/// @param args         the slots
/// @return the number of characters stored, without the terminator
///
/// An empty text returns 0 and writes nothing, not even a terminator; with FORMAT_MESSAGE_ALLOCATE_BUFFER it stores
/// null, and so does a block that can't be had. A block shorter than `size` is filled up with zeros, and the result is
/// `size`: a text of 5 characters with a size of 64 returns 64 and makes a block of 65 bytes. A zero character in the
/// text ends what is copied; zeros take the place of the rest.
GEN_API std::uint32_t gen_formatmessage(unsigned long flags, void const *source, unsigned long message_id,
                                        unsigned long language_id, char *buffer, unsigned long size, char *args);

#endif
