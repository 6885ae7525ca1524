// Changes of initialisation files, which threads and processes may make at the same time. A change is the reading of
// the file and the writing of the new text under one lock, so that no change of another caller is lost.
#ifndef GEN_OS_INI_H
#define GEN_OS_INI_H

#include <functional>
#include <string>

/// Sets a key in a section of an initialisation file by the system's own call, whose result it stores; 0 if the lock of
/// the file was not free in time. False except on Windows; elsewhere gen/text implements the rules of these files and
/// calls gen_os_change_file().
///
/// @param lock_msec  how long to wait for other changes of the file
bool gen_os_write_private_profile_string(char const *section, char const *key, char const *value, char const *file,
                                         int lock_msec, int &result);

/// Replaces the text of a regular file in one step, so that no reader ever sees a part of it, or creates the file. A
/// link stays a link, and the file that it names is changed or created. False on Windows.
///
/// @param lock_msec  how long to wait for other changes of the file
/// @param change     turns the old text into the new one; false if it can't, and then nothing is changed. It may be
///                   called again, with the text of that moment. A missing file is the empty text
///
/// A text that doesn't change is not written. The file keeps its permissions and its ACL, and its owner and group if
/// the system permits it; permissions that would then hold for another group are dropped. A file without any write
/// permission is refused, for the superuser too. After a failure the file is as before; only if another caller locked a
/// file that this call has just made, and kept it locked, it stays, as that caller left it.
bool gen_os_change_file(char const *path, int lock_msec, std::function<bool(std::string &text)> const &change);

#endif
