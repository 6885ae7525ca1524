// Reading of the small text files in which the system describes itself, such as those of /proc, and texts of others
// made fit for a message. All functions are pure: any text may be passed, and a function that does not find what it
// looks for returns false and leaves its output alone.
#ifndef SYS_TEXT_H
#define SYS_TEXT_H

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>

/// The first line that begins with `key`.
///
/// @param rest  receives the line's text after the key, without the line feed
///
/// A last line without a line feed counts too.
///
///     "Name:\tfitter\nTracerPid:\t0\n", "TracerPid:" -> "\t0"
bool sys_find_line(std::string_view text, std::string_view key, std::string_view &rest);

/// The part of a text that consists of whole lines: everything up to and including the last line feed. For a text that
/// may have been cut off while it was read.
std::string_view sys_whole_lines(std::string_view text);

/// Removes the blanks and tabulators at the start of a text.
void sys_skip_blanks(std::string_view &text);

/// Removes a decimal number without a sign from the start of a text. False, and nothing removed, if the text does not
/// begin with a digit or the number does not fit.
template <typename Integer>
bool sys_take_number(std::string_view &text, Integer &number)
{
    static_assert(!std::is_signed_v<Integer>);
    std::from_chars_result const result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc())
        return false;
    text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
    return true;
}

/// The decimal number after `key` and blanks in the first line that begins with `key`.
///
///     "MemTotal:  24576000 kB\n", "MemTotal:" -> 24576000
bool sys_find_number(std::string_view text, std::string_view key, std::uint64_t &number);

/// The text with `replacement` for each control character, which a terminal could execute: the codes 0 to 31, 127 and
/// 128 to 159, the last also where they are characters of UTF-8. Other characters of UTF-8 stay whole, and so does each
/// other byte, which may be a letter of another encoding.
///
///     "\x1b[2J", '?' -> "?[2J"    "\x9b" "2J", '?' -> "?2J"    "\xc2\x9b" "2J", '?' -> "?2J"
std::string sys_printable(std::string_view text, char replacement);

/// The beginning of a text, of at most `size` bytes, that ends in no part of a UTF-8 character.
std::string_view sys_whole_characters(std::string_view text, std::size_t size);

#endif
