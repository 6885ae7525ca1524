// What zel_fio asks of the operating system. Paths are never null.
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

/// Folds a name where the file system does not tell case apart; elsewhere leaves it alone.
void fio_os_fold_case(std::string &name);

/// With the platform's separators; empty on failure.
std::string fio_os_current_directory();

bool fio_os_exists(char const *path);
bool fio_os_is_regular(char const *path);

/// Appends the entries of a directory, "." and ".." left out, in no order. False, and nothing
/// appended, if it can't be read.
bool fio_os_list(char const *directory, std::vector<FIO_OS_ENTRY> &entries);

/// Leaves the record alone on failure.
bool fio_os_status(char const *path, struct _stat64i32 &record);

bool fio_os_create_directory(char const *path);
std::FILE *fio_os_fopen(char const *path, char const *mode);

std::intptr_t fio_os_findfirst(char const *pattern, struct _finddata64i32_t &data);
int fio_os_findnext(std::intptr_t handle, struct _finddata64i32_t &data);
int fio_os_findclose(std::intptr_t handle);

std::wstring fio_os_long_path(char const *path);

#endif
