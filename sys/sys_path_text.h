// Separators and letters in paths. Narrow text of Windows is in the active code page, and in some code pages a
// character has one or two bytes; the second byte can have the code of "\" or of a letter. In code page 932 "\x83\x5c"
// is one character, and neither of its bytes is a separator. On Linux, and in all other code pages, no byte is a second
// byte in that sense. "/", "." and ":" are never second bytes.
#ifndef SYS_PATH_TEXT_H
#define SYS_PATH_TEXT_H

#include "sys/os/sys_os_code_page.h"

#include <cstddef>
#include <string>
#include <string_view>

/// Whether a byte is the first of a character of two bytes, if it is not itself a second byte.
inline bool sys_is_lead_byte(char byte)
{
    return static_cast<unsigned char>(byte) >= 0x80 && sys_os_is_lead_byte(byte);
}

/// Whether the byte at a position is the second one of a character. The text begins with a whole character.
bool sys_is_trail_byte(std::string_view text, std::size_t at);

/// Whether the byte at a position is one of the separators "/" and "\".
inline bool sys_is_separator(std::string_view text, std::size_t at)
{
    return text[at] == '/' || (text[at] == '\\' && !sys_is_trail_byte(text, at));
}

/// Whether the text ends in a separator; false for the empty text.
inline bool sys_ends_in_separator(std::string_view text)
{
    return !text.empty() && sys_is_separator(text, text.size() - 1);
}

/// The position of the first separator at `start` or after it; npos if there is none.
std::size_t sys_find_separator(std::string_view text, std::size_t start);

/// The position of the last separator; npos if there is none.
std::size_t sys_find_last_separator(std::string_view text);

/// Replaces each "\" by "/".
void sys_use_forward_slashes(std::string &text);

/// Converts the letters A to Z to lower case.
void sys_lower_letters(std::string &text);

#endif
