// Links on Windows, over a scripted file system: a user needs a privilege to make real ones. The functions of the
// system are replaced at the link of this program, for paths in C:\links alone.
#include "fio/os/fio_os.h"

#include "tests/fio/fio_file_system_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cwchar>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <windows.h>

namespace {

using testing::Pair;
using testing::UnorderedElementsAre;

constexpr DWORD NO_TAG = 0;
constexpr DWORD CLOUD_TAG = 0x9000001A; // IO_REPARSE_TAG_CLOUD: a file whose content may lie elsewhere

struct Entry
{
    wchar_t const *name;
    DWORD attributes;
    DWORD tag;
    DWORD error; // of opening it
    DWORD target_attributes;
    DWORD target_size;
};

constexpr DWORD LINK = FILE_ATTRIBUTE_REPARSE_POINT;
constexpr Entry ENTRIES[] = {
    {L"file", FILE_ATTRIBUTE_NORMAL, NO_TAG, 0, FILE_ATTRIBUTE_NORMAL, 0},
    {L"to_file", LINK, IO_REPARSE_TAG_SYMLINK, 0, FILE_ATTRIBUTE_NORMAL, 5},
    {L"to_directory", LINK | FILE_ATTRIBUTE_DIRECTORY, IO_REPARSE_TAG_SYMLINK, 0, FILE_ATTRIBUTE_DIRECTORY, 0},
    {L"junction", LINK | FILE_ATTRIBUTE_DIRECTORY, IO_REPARSE_TAG_MOUNT_POINT, 0, FILE_ATTRIBUTE_DIRECTORY, 0},
    {L"broken", LINK, IO_REPARSE_TAG_SYMLINK, ERROR_FILE_NOT_FOUND, 0, 0},
    {L"loop", LINK, IO_REPARSE_TAG_SYMLINK, ERROR_CANT_RESOLVE_FILENAME, 0, 0},
    {L"closed", LINK, IO_REPARSE_TAG_SYMLINK, ERROR_ACCESS_DENIED, 0, 0},
    {L"cloud", LINK | FILE_ATTRIBUTE_DIRECTORY, CLOUD_TAG, 0, FILE_ATTRIBUTE_DIRECTORY, 0},
};

constexpr wchar_t PLACE[] = L"\\\\?\\C:\\links\\";

std::map<HANDLE, Entry const *> l_opened;
std::size_t l_scan_at = 0;

template <typename Function>
Function real(char const *name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void *>(GetProcAddress(GetModuleHandleA("kernel32.dll"), name)));
}

Entry const *find_entry(std::wstring const &path)
{
    for (Entry const &entry : ENTRIES)
        if (path == PLACE + std::wstring(entry.name))
            return &entry;
    return nullptr;
}

DWORD WINAPI get_file_attributes(char const *path)
{
    Entry const *const entry = find_entry(fio_os_long_path(path));
    return entry != nullptr ? entry->attributes : real<decltype(&GetFileAttributesA)>("GetFileAttributesA")(path);
}

BOOL WINAPI get_file_attributes_ex(wchar_t const *path, GET_FILEEX_INFO_LEVELS level, void *data)
{
    Entry const *const entry = find_entry(path);
    if (entry == nullptr)
        return real<decltype(&GetFileAttributesExW)>("GetFileAttributesExW")(path, level, data);
    *static_cast<WIN32_FILE_ATTRIBUTE_DATA *>(data) = {};
    static_cast<WIN32_FILE_ATTRIBUTE_DATA *>(data)->dwFileAttributes = entry->attributes;
    return TRUE;
}

HANDLE WINAPI create_file(wchar_t const *path, DWORD access, DWORD share, SECURITY_ATTRIBUTES *security, DWORD creation,
                          DWORD flags, HANDLE file)
{
    Entry const *const entry = find_entry(path);
    if (entry == nullptr)
        return real<decltype(&CreateFileW)>("CreateFileW")(path, access, share, security, creation, flags, file);
    EXPECT_EQ(creation, DWORD{OPEN_EXISTING});
    EXPECT_NE(flags & FILE_FLAG_BACKUP_SEMANTICS, 0U) << "a directory can't be opened otherwise";
    EXPECT_EQ(flags & FILE_FLAG_OPEN_REPARSE_POINT, 0U) << "that would open the link";
    SetLastError(entry->error);
    if (entry->error != 0)
        return INVALID_HANDLE_VALUE;
    HANDLE const handle = CreateEventA(nullptr, TRUE, FALSE, nullptr); // something that CloseHandle() takes
    l_opened[handle] = entry;
    return handle;
}

BOOL WINAPI get_file_information(HANDLE handle, BY_HANDLE_FILE_INFORMATION *information)
{
    Entry const *const entry = l_opened.at(handle);
    *information = {};
    information->dwFileAttributes = entry->target_attributes;
    information->nFileSizeLow = entry->target_size;
    return TRUE;
}

BOOL WINAPI find_next_file(HANDLE, WIN32_FIND_DATAW *data)
{
    if (l_scan_at == std::size(ENTRIES))
        return FALSE;
    Entry const &entry = ENTRIES[l_scan_at++];
    *data = {};
    data->dwFileAttributes = entry.attributes;
    data->dwReserved0 = entry.tag;
    std::wcscpy(data->cFileName, entry.name);
    return TRUE;
}

HANDLE WINAPI find_first_file(wchar_t const *pattern, WIN32_FIND_DATAW *data)
{
    EXPECT_EQ(std::wstring(pattern), PLACE + std::wstring(L"*"));
    l_scan_at = 0;
    find_next_file(nullptr, data);
    return &l_scan_at;
}

BOOL WINAPI find_close(HANDLE)
{
    return TRUE;
}

} // namespace

// The pointers through which a program calls functions of a library. The linker takes these and not those of the
// system.
extern "C" {
extern void *const l_get_file_attributes asm("__imp_GetFileAttributesA");
extern void *const l_get_file_attributes_ex asm("__imp_GetFileAttributesExW");
extern void *const l_create_file asm("__imp_CreateFileW");
extern void *const l_get_file_information asm("__imp_GetFileInformationByHandle");
extern void *const l_find_first_file asm("__imp_FindFirstFileW");
extern void *const l_find_next_file asm("__imp_FindNextFileW");
extern void *const l_find_close asm("__imp_FindClose");
void *const l_get_file_attributes = reinterpret_cast<void *>(get_file_attributes);
void *const l_get_file_attributes_ex = reinterpret_cast<void *>(get_file_attributes_ex);
void *const l_create_file = reinterpret_cast<void *>(create_file);
void *const l_get_file_information = reinterpret_cast<void *>(get_file_information);
void *const l_find_first_file = reinterpret_cast<void *>(find_first_file);
void *const l_find_next_file = reinterpret_cast<void *>(find_next_file);
void *const l_find_close = reinterpret_cast<void *>(find_close);
}

namespace {

TEST(FioLinks, ExistIfTheirTargetsDo)
{
    struct ExistsCase
    {
        char const *path;
        bool exists;
        bool is_regular;
    };
    constexpr ExistsCase CASES[] = {
        {"C:/links/file", true, true},      {"C:/links/to_file", true, true},  {"C:/links/to_directory", true, false},
        {"C:/links/junction", true, false}, {"C:/links/broken", false, false}, {"C:/links/loop", false, false},
        {"C:/links/closed", true, true},    {"C:/links/cloud", true, false},
    };
    for (ExistsCase const &c : CASES) {
        EXPECT_EQ(fio_os_exists(c.path), c.exists) << c.path;
        EXPECT_EQ(fio_os_is_regular(c.path), c.is_regular) << c.path;
    }
}

TEST(FioLinks, HaveTheStatusOfTheirTargets)
{
    struct _stat64i32 record = {};
    ASSERT_TRUE(fio_os_status("C:/links/to_file", record));
    EXPECT_EQ(record.st_mode & (MODE_DIRECTORY | MODE_REGULAR), MODE_REGULAR);
    EXPECT_EQ(record.st_size, 5);
    ASSERT_TRUE(fio_os_status("C:/links/junction", record));
    EXPECT_EQ(record.st_mode & (MODE_DIRECTORY | MODE_REGULAR), MODE_DIRECTORY);
    EXPECT_FALSE(fio_os_status("C:/links/broken", record));
    EXPECT_FALSE(fio_os_status("C:/links/loop", record));
}

TEST(FioLinks, AreListedByTheirTargets)
{
    std::vector<FIO_OS_ENTRY> entries;
    ASSERT_TRUE(fio_os_list("C:/links", entries));
    std::vector<std::pair<std::string, FIO_OS_KIND>> kinds;
    for (FIO_OS_ENTRY const &entry : entries)
        kinds.emplace_back(entry.name, entry.kind);
    EXPECT_THAT(kinds,
                UnorderedElementsAre(Pair("file", FIO_OS_KIND::REGULAR), Pair("to_file", FIO_OS_KIND::REGULAR),
                                     Pair("to_directory", FIO_OS_KIND::DIRECTORY_LINK),
                                     Pair("junction", FIO_OS_KIND::DIRECTORY_LINK), Pair("broken", FIO_OS_KIND::OTHER),
                                     Pair("loop", FIO_OS_KIND::OTHER), Pair("closed", FIO_OS_KIND::REGULAR),
                                     Pair("cloud", FIO_OS_KIND::DIRECTORY)));
}

TEST(FioLinks, AreMarkedByAScanThatDescribesTheirTargets)
{
    struct _finddata64i32_t data = {};
    std::intptr_t const scan = fio_os_findfirst("C:/links/*", data);
    ASSERT_NE(scan, -1);
    std::map<std::string, std::pair<unsigned, std::uint64_t>> found; // attributes and size
    do
        found[data.name] = {data.attrib, data.size};
    while (fio_os_findnext(scan, data) == 0);
    fio_os_findclose(scan);
    EXPECT_THAT(found["file"], Pair(0U, 0U));
    EXPECT_THAT(found["to_file"], Pair(ATTRIBUTE_LINK, 5U));
    EXPECT_THAT(found["to_directory"], Pair(ATTRIBUTE_LINK | ATTRIBUTE_DIRECTORY, 0U));
    EXPECT_THAT(found["broken"], Pair(ATTRIBUTE_LINK, 0U));
    EXPECT_THAT(found["cloud"], Pair(ATTRIBUTE_DIRECTORY, 0U));
}

} // namespace
