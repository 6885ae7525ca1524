// Calls of zel_fio to the operating system. Paths are never null.
#ifndef FIO_OS_H
#define FIO_OS_H

#include "fio_sys.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

enum class FIO_OS_KIND
{
    REGULAR,        // a regular file, or a link to one
    DIRECTORY,      // a directory itself
    DIRECTORY_LINK, // a link to a directory
    OTHER,
};

struct FIO_OS_ENTRY
{
    std::string name;
    FIO_OS_KIND kind;
};

/// The separator of the platform's own calls.
char fio_os_separator();

/// Converts a name to lower case on file systems where case does not distinguish names; leaves it alone elsewhere.
void fio_os_fold_case(std::string &name);

/// The current directory, with the separators of the platform; empty on failure.
std::string fio_os_current_directory();

bool fio_os_exists(char const *path);
bool fio_os_is_regular(char const *path);

/// Appends the entries of a directory except "." and "..", in no particular order. False, and nothing appended, if the
/// directory can't be read.
bool fio_os_list(char const *directory, std::vector<FIO_OS_ENTRY> &entries);

/// The stat record of a file or directory. Leaves the record alone on failure.
bool fio_os_status(char const *path, struct _stat64i32 &record);

/// Creates one directory, whose parent exists.
bool fio_os_create_directory(char const *path);

/// Null on failure.
std::FILE *fio_os_fopen(char const *path, char const *mode);

/// A scan of the entries that match a pattern in the last component of a path. The handle is -1, and the other two
/// results are -1, on failure or if no further entry matches.
std::intptr_t fio_os_findfirst(char const *pattern, struct _finddata64i32_t &data);
int fio_os_findnext(std::intptr_t handle, struct _finddata64i32_t &data);
int fio_os_findclose(std::intptr_t handle);

/// The absolute path, in the form that the system takes at any length; empty if the path is empty, and on Windows if
/// the text can't be the path of a file.
std::wstring fio_os_long_path(char const *path);

#endif
