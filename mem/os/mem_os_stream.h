// Opening of files at paths of any length.
#ifndef MEM_OS_STREAM_H
#define MEM_OS_STREAM_H

#include <cstdio>

/// Opens a stdio stream to append to a file, as std::fopen() does in mode "a"; null on failure.
std::FILE *mem_os_open_to_append(char const *path);

#endif
