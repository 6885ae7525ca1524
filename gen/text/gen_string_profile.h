// The text of an initialisation file: "[section]" lines, "key=value" lines below them, and comments behind a semicolon.
#ifndef GEN_STRING_PROFILE_H
#define GEN_STRING_PROFILE_H

#include <string>

/// Sets a key of a section to a value.
///
/// @param text     the file's text; its line ends are LF or CR LF, and a new line ends as the last one does
/// @param section  the section, made at the end if it is missing; of several with that name the first one counts
/// @param key      the key, made behind the section's last line that isn't blank; null removes the section
/// @param value    the value; null removes the key
///
/// Sections and keys are found whatever their case and the white space around them. A key stays as it is written in the
/// file, and so does every other line.
///
/// @return false, with `text` as it was, if the section is null or a line could not be read back: one with a line end
///         within, with "=" in the key, or one that would be a comment or a section's line
bool gen_set_profile_key(std::string &text, char const *section, char const *key, char const *value);

#endif
