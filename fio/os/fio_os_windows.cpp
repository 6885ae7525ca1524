#include "fio/os/fio_os.h"

#include "sys/os/sys_os_long_path_windows.h"
#include "sys/sys_file_mode.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <utility>

#include <windows.h>

namespace {

// A path of this length or more is passed to the wide call (fileapi.h: MAX_PATH includes the terminator).
constexpr std::size_t LONG_PATH_LENGTH = MAX_PATH - 1;

// The text in the code page; false, and nothing changed, if the code page doesn't have all of its characters. The
// system would give similar characters for these, which make the name of another file.
bool narrow(std::wstring const &text, std::string &result)
{
    int const size = WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, nullptr, 0, nullptr, nullptr);
    if (size <= 0)
        return false;
    std::string converted(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, converted.data(), size, nullptr, nullptr);
    converted.pop_back(); // the terminator
    if (sys_os_widen(converted.c_str()) != text)
        return false;
    result = std::move(converted);
    return true;
}

// The wide calls expect a directory in long form without a separator at its end, and a root with one.
bool drop_last_separator(std::wstring &path)
{
    if (path.size() < 2 || path.back() != L'\\' || path[path.size() - 2] == L':')
        return false;
    path.pop_back();
    return true;
}

bool is_directory(DWORD attributes)
{
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool is_regular(DWORD attributes)
{
    return (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) == 0;
}

using Facts = WIN32_FILE_ATTRIBUTE_DATA;

struct CloseFile
{
    void operator()(HANDLE file) const { CloseHandle(file); }
};

// Replaces the facts of a link by those of its target. False if there is no target. A reparse point that can't be
// opened is no link, or its target can't be seen; the facts then stay.
bool follow(std::wstring const &path, Facts &facts)
{
    HANDLE const handle =
        CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_ACCESS_DENIED || GetLastError() == ERROR_CANT_ACCESS_FILE;
    std::unique_ptr<void, CloseFile> const file(handle);
    BY_HANDLE_FILE_INFORMATION target;
    if (GetFileInformationByHandle(handle, &target) != 0)
        facts = {target.dwFileAttributes, target.ftCreationTime, target.ftLastAccessTime,
                 target.ftLastWriteTime,  target.nFileSizeHigh,  target.nFileSizeLow};
    return true;
}

// The facts of a file or directory by its long path; links are followed.
bool read_facts(std::wstring const &path, Facts &facts)
{
    if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &facts) == 0)
        return false;
    return (facts.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0 || follow(path, facts);
}

// The attributes of a file or directory; links are followed. INVALID_FILE_ATTRIBUTES if there is none; a device isn't
// one. Costs one system call unless the name is that of a link.
DWORD attributes_of(char const *path)
{
    bool const is_short = std::strlen(path) < LONG_PATH_LENGTH;
    DWORD const attributes = is_short ? GetFileAttributesA(path) : 0;
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return attributes;
    std::wstring const full = fio_os_long_path(path);
    if (full.empty() || sys_os_is_device(full))
        return INVALID_FILE_ATTRIBUTES;
    if (is_short && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return attributes;
    Facts facts;
    return read_facts(full, facts) ? facts.dwFileAttributes : INVALID_FILE_ATTRIBUTES;
}

// The entries of a directory that match a pattern. Names that the code page doesn't have, and those that mean a device,
// are passed over: no other call would find the file by them.
class Scan
{
public:
    // The directory is in long form and ends in a separator.
    Scan(std::wstring directory, std::wstring const &pattern)
        : m_directory(std::move(directory)), m_handle(FindFirstFileW((m_directory + pattern).c_str(), &m_data)),
          m_is_first(true)
    {
    }
    ~Scan()
    {
        if (is_open())
            FindClose(m_handle);
    }
    Scan(Scan const &) = delete;
    Scan &operator=(Scan const &) = delete;

    bool is_open() const { return m_handle != INVALID_HANDLE_VALUE; }

    // Goes to the first entry, then to the next one; false after the last.
    bool next()
    {
        while (advance())
            if (narrow(m_data.cFileName, m_name) && !sys_os_is_device_name(m_data.cFileName))
                return true;
        return false;
    }

    std::string const &name() const { return m_name; }

    // Other reparse points, such as files that lie elsewhere, are files and directories like all others.
    bool is_link() const
    {
        return (m_data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
               IsReparseTagNameSurrogate(m_data.dwReserved0);
    }

    // The facts of the entry, or of the target if the entry is a link that has one; whether they exist.
    bool read(Facts &facts) const
    {
        facts = {m_data.dwFileAttributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_REPARSE_POINT),
                 m_data.ftCreationTime,
                 m_data.ftLastAccessTime,
                 m_data.ftLastWriteTime,
                 m_data.nFileSizeHigh,
                 m_data.nFileSizeLow};
        return !is_link() || follow(m_directory + m_data.cFileName, facts);
    }

private:
    bool advance()
    {
        if (!is_open())
            return false;
        return std::exchange(m_is_first, false) || FindNextFileW(m_handle, &m_data) != 0;
    }

    std::wstring m_directory;
    WIN32_FIND_DATAW m_data{};
    HANDLE m_handle;
    bool m_is_first;
    std::string m_name;
};

FIO_OS_KIND kind_of(Scan const &scan)
{
    Facts facts;
    if (!scan.read(facts))
        return FIO_OS_KIND::OTHER;
    if (is_regular(facts.dwFileAttributes))
        return FIO_OS_KIND::REGULAR;
    if (!is_directory(facts.dwFileAttributes))
        return FIO_OS_KIND::OTHER;
    return scan.is_link() ? FIO_OS_KIND::DIRECTORY_LINK : FIO_OS_KIND::DIRECTORY;
}

Scan *scan_of(std::intptr_t handle)
{
    return reinterpret_cast<Scan *>(handle);
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
    std::wstring const original = sys_os_widen(name.c_str());
    std::wstring folded = original;
    auto const size = static_cast<int>(original.size());
    if (size != 0 && LCMapStringW(LOCALE_INVARIANT, LCMAP_LOWERCASE, original.data(), size, folded.data(), size) != 0)
        narrow(folded, name);
}

std::string fio_os_current_directory()
{
    DWORD const size = GetCurrentDirectoryW(0, nullptr);
    std::wstring directory(size, L'\0');
    DWORD const length = GetCurrentDirectoryW(size, directory.data());
    directory.resize(length < size ? length : 0);
    std::string result;
    narrow(directory, result);
    return result;
}

bool fio_os_exists(char const *path)
{
    return attributes_of(path) != INVALID_FILE_ATTRIBUTES;
}

bool fio_os_is_regular(char const *path)
{
    DWORD const attributes = attributes_of(path);
    return attributes != INVALID_FILE_ATTRIBUTES && is_regular(attributes);
}

bool fio_os_list(char const *directory, std::vector<FIO_OS_ENTRY> &entries)
{
    std::wstring full = fio_os_long_path(*directory != '\0' ? directory : ".");
    if (full.empty())
        return false;
    if (full.back() != L'\\')
        full += L'\\';
    Scan scan(std::move(full), L"*");
    while (scan.next())
        if (scan.name() != "." && scan.name() != "..")
            entries.push_back({scan.name(), kind_of(scan)});
    return scan.is_open();
}

bool fio_os_status(char const *path, struct _stat64i32 &record)
{
    std::wstring full = fio_os_long_path(path);
    if (full.empty())
        return false;
    if (sys_os_is_device(full)) {
        record = {};
        record.st_mode = SYS_MODE_DEVICE | SYS_MODE_MAY_READ | SYS_MODE_MAY_WRITE;
        return true;
    }
    bool const must_be_directory = drop_last_separator(full);
    Facts data;
    if (!read_facts(full, data))
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
    if (full.empty() || *mode == '\0') {
        errno = EINVAL;
        return nullptr;
    }
    return _wfopen(full.c_str(), sys_os_widen(mode).c_str());
}

std::intptr_t fio_os_findfirst(char const *pattern, struct _finddata64i32_t &data)
{
    std::wstring const wide = sys_os_widen(pattern);
    std::wstring directory = fio_os_long_path(pattern);
    if (directory.empty() || sys_os_is_device(directory)) {
        errno = ENOENT;
        return -1;
    }
    // The name as it was passed: a "." at its end has a meaning in a pattern.
    std::size_t const slash = directory.rfind(L'\\');
    std::wstring name = directory.substr(slash + 1);
    if (name.find_first_of(L"*?") != std::wstring::npos)
        name = wide.substr(wide.find_last_of(L"/\\:") + 1); // npos + 1 is 0
    directory.resize(slash + 1);

    auto scan = std::make_unique<Scan>(std::move(directory), name);
    if (fio_os_findnext(reinterpret_cast<std::intptr_t>(scan.get()), data) != 0)
        return -1;
    return reinterpret_cast<std::intptr_t>(scan.release());
}

int fio_os_findnext(std::intptr_t handle, struct _finddata64i32_t &data)
{
    Scan &scan = *scan_of(handle);
    while (scan.next()) {
        if (scan.name().size() >= sizeof data.name)
            continue;
        Facts facts;
        scan.read(facts);
        data.attrib = facts.dwFileAttributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_NORMAL);
        if (scan.is_link())
            data.attrib |= FILE_ATTRIBUTE_REPARSE_POINT;
        data.time_create = unix_seconds(facts.ftCreationTime);
        data.time_access = unix_seconds(facts.ftLastAccessTime);
        data.time_write = unix_seconds(facts.ftLastWriteTime);
        data.size = facts.nFileSizeLow;
        std::memcpy(data.name, scan.name().c_str(), scan.name().size() + 1);
        return 0;
    }
    errno = ENOENT;
    return -1;
}

int fio_os_findclose(std::intptr_t handle)
{
    delete scan_of(handle);
    return 0;
}

std::wstring fio_os_long_path(char const *path)
{
    return sys_os_long_path(path);
}
