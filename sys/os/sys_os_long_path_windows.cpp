#include "sys/os/sys_os_long_path_windows.h"

#include <algorithm>
#include <cwchar>

#include <windows.h>

namespace {

constexpr wchar_t LONG_PATH[] = L"\\\\?\\";
constexpr wchar_t DEVICE[] = L"\\\\.\\";

bool starts_with(std::wstring const &text, wchar_t const *start)
{
    return text.compare(0, std::wcslen(start), start) == 0;
}

std::wstring full_path(std::wstring const &path)
{
    DWORD const size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    DWORD const length = GetFullPathNameW(path.c_str(), size, full.data(), nullptr);
    if (length == 0 || length >= size)
        return path;
    full.resize(length);
    return full;
}

} // namespace

std::wstring sys_os_widen(char const *text)
{
    int const size = MultiByteToWideChar(CP_ACP, MB_ERR_INVALID_CHARS, text, -1, nullptr, 0);
    if (size <= 0)
        return {};
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text, -1, wide.data(), size);
    wide.pop_back(); // the terminator
    return wide;
}

std::wstring sys_os_long_path(char const *path)
{
    std::wstring wide = sys_os_widen(path);
    if (wide.empty())
        return wide;
    std::replace(wide.begin(), wide.end(), L'/', L'\\');
    if (starts_with(wide, LONG_PATH))
        return wide;
    std::wstring const full = full_path(wide);
    if (sys_os_is_device(full))
        return full;
    if (full.find(L':', 2) != std::wstring::npos)
        return {};
    if (starts_with(full, L"\\\\"))
        return LONG_PATH + (L"UNC\\" + full.substr(2));
    return LONG_PATH + full;
}

bool sys_os_is_device(std::wstring const &long_path)
{
    return starts_with(long_path, DEVICE);
}

bool sys_os_is_device_name(wchar_t const *name)
{
    return sys_os_is_device(full_path(name));
}
