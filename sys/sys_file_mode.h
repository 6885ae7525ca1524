// The bits of the mode word in the stat record of zel_fio, on every platform those of the Windows runtime
// (sys/stat.h). The low nine bits are the permissions.
#ifndef SYS_FILE_MODE_H
#define SYS_FILE_MODE_H

constexpr unsigned SYS_MODE_PIPE = 0x1000; ///< also a socket
constexpr unsigned SYS_MODE_DEVICE = 0x2000;
constexpr unsigned SYS_MODE_DIRECTORY = 0x4000;
constexpr unsigned SYS_MODE_REGULAR = 0x8000;

constexpr unsigned SYS_MODE_MAY_EXECUTE = 0111;
constexpr unsigned SYS_MODE_MAY_WRITE = 0222;
constexpr unsigned SYS_MODE_MAY_READ = 0444;
constexpr unsigned SYS_MODE_PERMISSIONS = 0777;

constexpr bool sys_mode_is_directory(unsigned mode)
{
    return (mode & SYS_MODE_DIRECTORY) != 0;
}

constexpr bool sys_mode_is_regular(unsigned mode)
{
    return (mode & SYS_MODE_REGULAR) != 0;
}

#endif
