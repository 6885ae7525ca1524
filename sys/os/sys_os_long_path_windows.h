// Paths in the form in which the wide calls of Windows take them at any length. Windows alone has it.
#ifndef SYS_OS_LONG_PATH_WINDOWS_H
#define SYS_OS_LONG_PATH_WINDOWS_H

#include <string>

/// A narrow text as a wide one; empty if it is no text of the code page.
std::wstring sys_os_widen(char const *text);

/// The absolute path, "\\?\C:\d\a.v" or "\\?\UNC\host\share\a.v" with "." and ".." resolved; a device is "\\.\NUL".
/// Empty if the text can't be the path of a file: if it is empty, no text of the code page, or has a colon elsewhere
/// than after a drive, which would name a stream of the file that no listing shows.
std::wstring sys_os_long_path(char const *path);

/// Whether a path that sys_os_long_path() returned is a device. Windows takes the last component of a path for one in
/// cases such as "d/aux.v".
bool sys_os_is_device(std::wstring const &long_path);

/// Whether the name of an entry of a directory means a device in a path.
bool sys_os_is_device_name(wchar_t const *name);

#endif
