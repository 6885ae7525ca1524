#include "mem/os/mem_os_file.h"

#include "sys/os/sys_os_long_path_windows.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>

#include <windows.h>

namespace {

// A file for a scope. The flag lets directories be opened too, which are then known as such.
class InputFile
{
public:
    InputFile(char const *path, DWORD access)
        : m_handle(CreateFileW(sys_os_long_path(path).c_str(), access,
                               FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                               FILE_FLAG_BACKUP_SEMANTICS, nullptr))
    {
    }
    ~InputFile()
    {
        if (is_open())
            CloseHandle(m_handle);
    }
    InputFile(InputFile const &) = delete;
    InputFile &operator=(InputFile const &) = delete;

    bool is_open() const { return m_handle != INVALID_HANDLE_VALUE; }

    // False for devices, among them "con", and for pipes.
    bool get_status(BY_HANDLE_FILE_INFORMATION &status) const
    {
        return GetFileType(m_handle) == FILE_TYPE_DISK && GetFileInformationByHandle(m_handle, &status);
    }

    // Reads until the end or beyond the largest size; false, with the error of the system, after an error.
    bool read_all(std::string &text, std::size_t largest_size) const
    {
        char block[8192];
        while (text.size() <= largest_size) {
            DWORD size = 0;
            if (!ReadFile(m_handle, block, sizeof block, &size, nullptr))
                return false;
            if (size == 0)
                break;
            text.append(block, size);
        }
        return true;
    }

private:
    HANDLE m_handle;
};

std::string reason_of(DWORD error)
{
    return std::system_category().message(static_cast<int>(error));
}

std::string identity_of(BY_HANDLE_FILE_INFORMATION const &status)
{
    return std::to_string(status.dwVolumeSerialNumber) + ':' + std::to_string(status.nFileIndexHigh) + ':' +
           std::to_string(status.nFileIndexLow);
}

// The same for a file that can't be read, but asked for its facts.
std::string identity_of(char const *path)
{
    InputFile const file(path, /*access=*/0);
    BY_HANDLE_FILE_INFORMATION status;
    return file.is_open() && file.get_status(status) ? identity_of(status) : std::string();
}

bool says_absent(DWORD error)
{
    constexpr DWORD ERRORS[] = {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND, ERROR_INVALID_NAME, ERROR_BAD_PATHNAME,
                                ERROR_DIRECTORY,      ERROR_INVALID_DRIVE,  ERROR_BAD_NETPATH,  ERROR_BAD_NET_NAME};
    return std::find(std::begin(ERRORS), std::end(ERRORS), error) != std::end(ERRORS);
}

MEM_OS_FILE without_open_file(char const *path, DWORD error)
{
    bool const is_hidden =
        error == ERROR_ACCESS_DENIED && GetFileAttributesW(sys_os_long_path(path).c_str()) == INVALID_FILE_ATTRIBUTES;
    if (is_hidden || says_absent(error))
        return {MEM_OS_FILE_STATE::ABSENT, "", reason_of(error), ""};
    return {MEM_OS_FILE_STATE::UNREADABLE, "", reason_of(error), identity_of(path)};
}

} // namespace

MEM_OS_FILE mem_os_read_file(char const *path, std::size_t largest_size)
{
    InputFile const file(path, GENERIC_READ);
    if (!file.is_open())
        return without_open_file(path, GetLastError());
    BY_HANDLE_FILE_INFORMATION status = {};
    bool const is_on_disk = file.get_status(status);
    if (!is_on_disk || (status.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return {MEM_OS_FILE_STATE::UNREADABLE, "", "it is not a regular file",
                is_on_disk ? identity_of(status) : std::string()};
    std::string text;
    if (!file.read_all(text, largest_size))
        return {MEM_OS_FILE_STATE::UNREADABLE, "", reason_of(GetLastError()), identity_of(status)};
    return {MEM_OS_FILE_STATE::READ, std::move(text), "", identity_of(status)};
}
