#include "mem/os/mem_os_stream.h"

std::FILE *mem_os_open_to_append(char const *path)
{
    return std::fopen(path, "a");
}
