#include "fio_sys.h"

#include "fio/os/fio_os.h"
#include "sys/sys_path_text.h"

#include <cerrno>

namespace {

char const *text_or_empty(char const *text)
{
    return text != nullptr ? text : "";
}

} // namespace

bool FIO_FILE_SYSTEM::exists(std::string const &path)
{
    return fio_os_exists(path.c_str());
}

bool FIO_FILE_SYSTEM::exists(char const *path)
{
    return fio_os_exists(text_or_empty(path));
}

bool FIO_FILE_SYSTEM::status(std::string const &path, struct _stat64i32 *record)
{
    return record != nullptr && fio_os_status(path.c_str(), *record);
}

bool FIO_FILE_SYSTEM::create(std::string const &path)
{
    return fio_os_create_directory(path.c_str());
}

std::FILE *FIO_FILE_SYSTEM::fopen(char const *path, char const *mode)
{
    return fio_os_fopen(text_or_empty(path), text_or_empty(mode));
}

std::string FIO_FILE_SYSTEM::get_current_directory()
{
    std::string directory = fio_os_current_directory();
    if (fio_os_separator() != '/')
        sys_use_forward_slashes(directory);
    return directory;
}

std::intptr_t FIO_FILE_SYSTEM::findfirst(char const *pattern, struct _finddata64i32_t *data)
{
    if (data != nullptr)
        return fio_os_findfirst(text_or_empty(pattern), *data);
    errno = EINVAL;
    return -1;
}

int FIO_FILE_SYSTEM::findnext(std::intptr_t handle, struct _finddata64i32_t *data)
{
    if (handle != -1 && data != nullptr)
        return fio_os_findnext(handle, *data);
    errno = EINVAL;
    return -1;
}

int FIO_FILE_SYSTEM::findclose(std::intptr_t handle)
{
    if (handle != -1)
        return fio_os_findclose(handle);
    errno = EINVAL;
    return -1;
}

std::wstring fio_get_unc_full_path(char const *path)
{
    return fio_os_long_path(text_or_empty(path));
}
