#include "fio/os/fio_os.h"

#include "sys/sys_file_mode.h"

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <memory>

#include <windows.h>

namespace {

// A path of this length or more is passed to the wide call (fileapi.h: MAX_PATH includes the terminator).
constexpr std::size_t LONG_PATH_LENGTH = MAX_PATH - 1;

constexpr wchar_t LONG_PATH[] = L"\\\\?\\";
constexpr wchar_t DEVICE[] = L"\\\\.\\";

bool starts_with(std::wstring const &text, wchar_t const *start)
{
    return text.compare(0, std::wcslen(start), start) == 0;
}

std::wstring widen(char const *text)
{
    int const size = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
    if (size <= 0)
        return {};
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    MultiByteToWideChar(CP_ACP, 0, text, -1, wide.data(), size);
    wide.pop_back(); // the terminator
    return wide;
}

std::string narrow(wchar_t const *text)
{
    int const size = WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 0)
        return {};
    std::string result(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, text, -1, result.data(), size, nullptr, nullptr);
    result.pop_back(); // the terminator
    return result;
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

// The wide calls expect a directory in long form without a separator at its end, and a root with one.
bool drop_last_separator(std::wstring &path)
{
    if (path.size() < 2 || path.back() != L'\\' || path[path.size() - 2] == L':')
        return false;
    path.pop_back();
    return true;
}

struct CloseScan
{
    void operator()(HANDLE scan) const { FindClose(scan); }
};

bool is_directory(DWORD attributes)
{
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

FIO_OS_KIND kind_of(DWORD attributes)
{
    if ((attributes & FILE_ATTRIBUTE_DEVICE) != 0)
        return FIO_OS_KIND::OTHER;
    if (!is_directory(attributes))
        return FIO_OS_KIND::REGULAR;
    bool const link = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    return link ? FIO_OS_KIND::DIRECTORY_LINK : FIO_OS_KIND::DIRECTORY;
}

DWORD attributes_of(char const *path)
{
    if (std::strlen(path) < LONG_PATH_LENGTH)
        return GetFileAttributesA(path);
    return GetFileAttributesW(fio_os_long_path(path).c_str());
}

std::int64_t unix_seconds(FILETIME const &time)
{
    constexpr std::int64_t UNITS_PER_SECOND = 10000000;         // a FILETIME counts 100 ns units
    constexpr std::int64_t SECONDS_TO_UNIX_EPOCH = 11644473600; // from 1601 to 1970
    std::uint64_t const units = std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    return static_cast<std::int64_t>(units) / UNITS_PER_SECOND - SECONDS_TO_UNIX_EPOCH;
}

bool is_executable_name(std::wstring const &path)
{
    static constexpr wchar_t const *EXTENSIONS[] = {L".exe", L".com", L".bat", L".cmd"};
    std::size_t const dot = path.find_last_of(L".\\");
    if (dot == std::wstring::npos)
        return false;
    return std::any_of(std::begin(EXTENSIONS), std::end(EXTENSIONS),
                       [&](wchar_t const *extension) { return _wcsicmp(path.c_str() + dot, extension) == 0; });
}

unsigned mode_word(DWORD attributes, std::wstring const &path)
{
    unsigned mode = SYS_MODE_MAY_READ;
    if ((attributes & FILE_ATTRIBUTE_READONLY) == 0)
        mode |= SYS_MODE_MAY_WRITE;
    if (is_directory(attributes))
        return mode | SYS_MODE_MAY_EXECUTE | SYS_MODE_DIRECTORY;
    if (is_executable_name(path))
        mode |= SYS_MODE_MAY_EXECUTE;
    return mode | SYS_MODE_REGULAR;
}

} // namespace

char fio_os_separator()
{
    return '\\';
}

void fio_os_fold_case(std::string &name)
{
    std::string const original = name;
    LCMapStringA(LOCALE_INVARIANT, LCMAP_LOWERCASE, original.data(), static_cast<int>(original.size()), name.data(),
                 static_cast<int>(name.size()));
}

std::string fio_os_current_directory()
{
    DWORD const size = GetCurrentDirectoryA(0, nullptr);
    std::string directory(size, '\0');
    DWORD const length = GetCurrentDirectoryA(size, directory.data());
    directory.resize(length < size ? length : 0);
    return directory;
}

bool fio_os_exists(char const *path)
{
    return attributes_of(path) != INVALID_FILE_ATTRIBUTES;
}

bool fio_os_is_regular(char const *path)
{
    DWORD const attributes = attributes_of(path);
    return attributes != INVALID_FILE_ATTRIBUTES && kind_of(attributes) == FIO_OS_KIND::REGULAR;
}

bool fio_os_list(char const *directory, std::vector<FIO_OS_ENTRY> &entries)
{
    std::wstring pattern = fio_os_long_path(*directory != '\0' ? directory : ".");
    if (pattern.empty())
        return false;
    if (pattern.back() != L'\\')
        pattern += L'\\';
    WIN32_FIND_DATAW data;
    HANDLE const handle = FindFirstFileW((pattern + L'*').c_str(), &data);
    if (handle == INVALID_HANDLE_VALUE)
        return false;
    std::unique_ptr<void, CloseScan> const scan(handle);
    do {
        std::wstring const name = data.cFileName;
        if (name != L"." && name != L"..")
            entries.push_back({narrow(data.cFileName), kind_of(data.dwFileAttributes)});
    } while (FindNextFileW(handle, &data) != 0);
    return true;
}

bool fio_os_status(char const *path, struct _stat64i32 &record)
{
    std::wstring full = fio_os_long_path(path);
    if (full.empty())
        return false;
    if (starts_with(full, DEVICE)) {
        record = {};
        record.st_mode = SYS_MODE_DEVICE | SYS_MODE_MAY_READ | SYS_MODE_MAY_WRITE;
        return true;
    }
    bool const must_be_directory = drop_last_separator(full);
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (GetFileAttributesExW(full.c_str(), GetFileExInfoStandard, &data) == 0)
        return false;
    if (must_be_directory && !is_directory(data.dwFileAttributes))
        return false;
    record = {};
    record.st_mode = static_cast<unsigned short>(mode_word(data.dwFileAttributes, full));
    record.st_nlink = 1;
    record.st_size = static_cast<_off_t>(data.nFileSizeLow);
    record.st_atime = unix_seconds(data.ftLastAccessTime);
    record.st_mtime = unix_seconds(data.ftLastWriteTime);
    record.st_ctime = unix_seconds(data.ftCreationTime);
    return true;
}

bool fio_os_create_directory(char const *path)
{
    std::wstring full = fio_os_long_path(path);
    drop_last_separator(full);
    return CreateDirectoryW(full.c_str(), nullptr) != 0;
}

std::FILE *fio_os_fopen(char const *path, char const *mode)
{
    std::wstring const full = fio_os_long_path(path);
    if (full.empty() || *mode == '\0')
        return nullptr;
    return _wfopen(full.c_str(), widen(mode).c_str());
}

std::intptr_t fio_os_findfirst(char const *pattern, struct _finddata64i32_t &data)
{
    return _findfirst64i32(pattern, &data);
}

int fio_os_findnext(std::intptr_t handle, struct _finddata64i32_t &data)
{
    return _findnext64i32(handle, &data);
}

int fio_os_findclose(std::intptr_t handle)
{
    return _findclose(handle);
}

std::wstring fio_os_long_path(char const *path)
{
    std::wstring wide = widen(path);
    if (wide.empty())
        return wide;
    std::replace(wide.begin(), wide.end(), L'/', L'\\');
    if (starts_with(wide, LONG_PATH))
        return wide;
    std::wstring const full = full_path(wide);
    if (starts_with(full, DEVICE))
        return full;
    if (starts_with(full, L"\\\\"))
        return LONG_PATH + (L"UNC\\" + full.substr(2));
    return LONG_PATH + full;
}
