// The text of an initialisation file: "[section]" lines, "key=value" lines after them, and comment lines, which begin
// with a semicolon.
#ifndef GEN_INI_TEXT_H
#define GEN_INI_TEXT_H

#include <string>

/// Sets a key of a section to a value.
///
/// @param text     the text of the file; its line ends are LF or CR LF, and a new line ends like the last one
/// @param section  the section, added at the end if it is missing; of several with that name the first one counts
/// @param key      the key, added after the section's last line that isn't blank; null removes the section
/// @param value    the value; null removes the key
///
/// Names of sections and keys are compared without regard to case and to white space around them. A key stays as it is
/// written in the file, and all other lines are unchanged.
///
///     "[a]\nx=1\n", "A", "y", "2"  ->  "[a]\nx=1\ny=2\n"
///
/// @return false, with `text` unchanged, if the section is null or the new line could not be read back: it contains a
///         line end, the key contains "=", or it would be a comment or the line of a section
bool gen_set_ini_key(std::string &text, char const *section, char const *key, char const *value);

#endif
