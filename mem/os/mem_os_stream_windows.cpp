#include "mem/os/mem_os_stream.h"

#include "sys/os/sys_os_long_path_windows.h"

#include <cwchar>

std::FILE *mem_os_open_to_append(char const *path)
{
    return _wfopen(sys_os_long_path(path).c_str(), L"a");
}
