#include "sys/sys_write.h"

#include <algorithm>
#include <cerrno>
#include <climits>

#include <io.h>

SYS_WRITTEN sys_write(int descriptor, char const *text, std::size_t size, int /*milliseconds*/)
{
    std::size_t written = 0;
    while (written != size) {
        int const count =
            _write(descriptor, text + written, static_cast<unsigned>(std::min<std::size_t>(size - written, INT_MAX)));
        if (count <= 0)
            return {written, count == 0 ? ENOSPC : errno};
        written += static_cast<std::size_t>(count);
    }
    return {written, 0};
}

int sys_descriptor_of(std::FILE *stream)
{
    return _fileno(stream);
}
