#include "fio/os/fio_os.h"

#include "fio/fio_pattern.h"
#include "sys/sys_file_mode.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Attribute bits of the find record (winnt.h).
constexpr unsigned ATTRIBUTE_READ_ONLY = 0x01;
constexpr unsigned ATTRIBUTE_HIDDEN = 0x02;
constexpr unsigned ATTRIBUTE_DIRECTORY = 0x10;
constexpr unsigned ATTRIBUTE_LINK = 0x400; // reparse point

struct CloseDirectory
{
    void operator()(DIR *directory) const { closedir(directory); }
};
using DirectoryStream = std::unique_ptr<DIR, CloseDirectory>;

DirectoryStream open_directory(char const *directory)
{
    return DirectoryStream(opendir(*directory != '\0' ? directory : "."));
}

FIO_OS_KIND kind_of_link(int directory, char const *name)
{
    struct stat target;
    if (fstatat(directory, name, &target, 0) != 0)
        return FIO_OS_KIND::OTHER;
    if (S_ISREG(target.st_mode))
        return FIO_OS_KIND::REGULAR;
    return S_ISDIR(target.st_mode) ? FIO_OS_KIND::DIRECTORY_LINK : FIO_OS_KIND::OTHER;
}

// For file systems that give no type in a directory entry.
FIO_OS_KIND kind_of_unknown(int directory, char const *name)
{
    struct stat self;
    if (fstatat(directory, name, &self, AT_SYMLINK_NOFOLLOW) != 0)
        return FIO_OS_KIND::OTHER;
    if (S_ISLNK(self.st_mode))
        return kind_of_link(directory, name);
    if (S_ISREG(self.st_mode))
        return FIO_OS_KIND::REGULAR;
    return S_ISDIR(self.st_mode) ? FIO_OS_KIND::DIRECTORY : FIO_OS_KIND::OTHER;
}

FIO_OS_KIND kind_of(DIR *stream, dirent const &entry)
{
    switch (entry.d_type) {
    case DT_REG:
        return FIO_OS_KIND::REGULAR;
    case DT_DIR:
        return FIO_OS_KIND::DIRECTORY;
    case DT_LNK:
        return kind_of_link(dirfd(stream), entry.d_name);
    case DT_UNKNOWN:
        return kind_of_unknown(dirfd(stream), entry.d_name);
    default:
        return FIO_OS_KIND::OTHER;
    }
}

bool is_dot_or_dot_dot(char const *name)
{
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

// The type in the mode of Linux is a number and not a set of bits: a block device (0x6000) and a socket (0xC000) have
// bits in common with directories and files. In the mode word a bit means one type.
unsigned mode_word(mode_t mode)
{
    unsigned const permissions = mode & SYS_MODE_PERMISSIONS;
    if (S_ISDIR(mode))
        return SYS_MODE_DIRECTORY | permissions;
    if (S_ISREG(mode))
        return SYS_MODE_REGULAR | permissions;
    return (S_ISCHR(mode) || S_ISBLK(mode) ? SYS_MODE_DEVICE : SYS_MODE_PIPE) | permissions;
}

// A scan: the names that match, in byte order, and the index of the next one.
struct Scan
{
    std::string directory; // empty, or ends in a slash
    std::vector<std::string> names;
    std::size_t next = 0;
};

bool fill(struct _finddata64i32_t &data, Scan const &scan, std::string const &name)
{
    std::string const path = scan.directory + name;
    struct stat self;
    if (lstat(path.c_str(), &self) != 0)
        return false;
    unsigned attributes = 0;
    if (S_ISLNK(self.st_mode)) {
        attributes |= ATTRIBUTE_LINK;
        struct stat target;
        if (stat(path.c_str(), &target) == 0)
            self = target;
    }
    if (S_ISDIR(self.st_mode))
        attributes |= ATTRIBUTE_DIRECTORY;
    if ((self.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0)
        attributes |= ATTRIBUTE_READ_ONLY;
    if (name[0] == '.' && !is_dot_or_dot_dot(name.c_str()))
        attributes |= ATTRIBUTE_HIDDEN;

    data.attrib = attributes;
    data.time_create = self.st_mtim.tv_sec;
    data.time_access = self.st_atim.tv_sec;
    data.time_write = self.st_mtim.tv_sec;
    data.size = static_cast<std::uint32_t>(self.st_size);
    static_assert(sizeof data.name > NAME_MAX);
    std::memcpy(data.name, name.c_str(), std::min(name.size() + 1, sizeof data.name));
    data.name[sizeof data.name - 1] = '\0';
    return true;
}

Scan *scan_of(std::intptr_t handle)
{
    return reinterpret_cast<Scan *>(handle);
}

} // namespace

char fio_os_separator()
{
    return '/';
}

void fio_os_fold_case(std::string &) {}

std::string fio_os_current_directory()
{
    char buffer[PATH_MAX];
    // A text without a slash at its start means that the directory is outside of the root of this process.
    if (getcwd(buffer, sizeof buffer) == nullptr || buffer[0] != '/')
        return {};
    return buffer;
}

bool fio_os_exists(char const *path)
{
    return access(path, F_OK) == 0;
}

bool fio_os_is_regular(char const *path)
{
    struct stat status;
    return stat(path, &status) == 0 && S_ISREG(status.st_mode);
}

bool fio_os_list(char const *directory, std::vector<FIO_OS_ENTRY> &entries)
{
    DirectoryStream const stream = open_directory(directory);
    if (!stream)
        return false;
    while (dirent const *entry = readdir(stream.get()))
        if (!is_dot_or_dot_dot(entry->d_name))
            entries.push_back({entry->d_name, kind_of(stream.get(), *entry)});
    return true;
}

bool fio_os_status(char const *path, struct _stat64i32 &record)
{
    struct stat status;
    if (stat(path, &status) != 0)
        return false;
    record.st_dev = status.st_dev;
    record.st_ino = status.st_ino;
    record.st_mode = static_cast<std::uint16_t>(mode_word(status.st_mode));
    record.st_nlink = status.st_nlink;
    record.st_uid = status.st_uid;
    record.st_gid = status.st_gid;
    record.st_rdev = status.st_rdev;
    record.st_size = status.st_size;
    record.st_atim.tv_sec = status.st_atim.tv_sec;
    record.st_mtim.tv_sec = status.st_mtim.tv_sec;
    record.st_ctim.tv_sec = status.st_ctim.tv_sec;
    return true;
}

bool fio_os_create_directory(char const *path)
{
    return mkdir(path, 0777) == 0;
}

std::FILE *fio_os_fopen(char const *path, char const *mode)
{
    return std::fopen(path, mode);
}

std::intptr_t fio_os_findfirst(char const *pattern, struct _finddata64i32_t &data)
{
    char const *const slash = std::strrchr(pattern, '/');
    char const *const name_pattern = slash != nullptr ? slash + 1 : pattern;

    auto scan = std::make_unique<Scan>();
    scan->directory.assign(pattern, name_pattern);
    DirectoryStream const stream = open_directory(scan->directory.c_str());
    if (!stream)
        return -1;
    while (dirent const *entry = readdir(stream.get()))
        if (fio_pattern_matches(name_pattern, entry->d_name))
            scan->names.emplace_back(entry->d_name);
    std::sort(scan->names.begin(), scan->names.end());

    auto const handle = reinterpret_cast<std::intptr_t>(scan.get());
    if (fio_os_findnext(handle, data) != 0)
        return -1;
    return reinterpret_cast<std::intptr_t>(scan.release());
}

int fio_os_findnext(std::intptr_t handle, struct _finddata64i32_t &data)
{
    Scan &scan = *scan_of(handle);
    // A file that has been deleted since the start of the scan is skipped.
    while (scan.next < scan.names.size())
        if (fill(data, scan, scan.names[scan.next++]))
            return 0;
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
    std::string full = path;
    if (!full.empty() && full.front() != '/') {
        std::string directory = fio_os_current_directory();
        if (!directory.empty() && directory.back() != '/')
            directory += '/';
        full.insert(0, directory);
    }
    std::wstring wide;
    wide.reserve(full.size());
    for (char c : full)
        wide += static_cast<wchar_t>(static_cast<unsigned char>(c));
    return wide;
}
