// Reading of files that may be anything, or that can't be read.
#ifndef MEM_OS_FILE_H
#define MEM_OS_FILE_H

#include <cstddef>
#include <string>

enum class MEM_OS_FILE_STATE
{
    READ,
    ABSENT,    ///< there is no file of this name, or one of its directories can't be searched
    UNREADABLE ///< there is something of this name, or the system can't find out
};

struct MEM_OS_FILE
{
    MEM_OS_FILE_STATE state;
    std::string text;     ///< the bytes of the file
    std::string reason;   ///< why they were not read
    std::string identity; ///< equal for two names of one file; empty if it is absent or the system gives none
};

/// Reads a regular file, or the one that a link names. Never waits for another process, as the opening of a pipe does.
///
/// @param largest_size  in bytes. The text of a larger file is cut somewhere after that size.
MEM_OS_FILE mem_os_read_file(char const *path, std::size_t largest_size);

#endif
