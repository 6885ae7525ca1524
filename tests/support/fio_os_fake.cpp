#include "tests/support/fio_os_fake.h"

#include "fio/os/fio_os.h"
#include "sys/sys_file_mode.h"

namespace {

void record(char const *question, char const *path)
{
    fio_fake().calls.push_back(std::string(question) + ' ' + path);
}

bool is_entry(char const *path, bool is_directory)
{
    auto const entry = fio_fake().entries.find(path);
    return entry != fio_fake().entries.end() && entry->second == is_directory;
}

} // namespace

FIO_FAKE &fio_fake()
{
    static FIO_FAKE the_fake;
    return the_fake;
}

char fio_os_separator()
{
    return '/';
}

void fio_os_fold_case(std::string &) {}

std::string fio_os_current_directory()
{
    fio_fake().calls.emplace_back("current_directory");
    return fio_fake().current_directory;
}

bool fio_os_exists(char const *path)
{
    record("exists", path);
    return fio_fake().entries.count(path) != 0;
}

bool fio_os_is_regular(char const *path)
{
    record("is_regular", path);
    return is_entry(path, /*is_directory=*/false);
}

// As a directory that may not be read.
bool fio_os_list(char const *directory, std::vector<FIO_OS_ENTRY> &)
{
    record("list", directory);
    return false;
}

bool fio_os_status(char const *path, struct _stat64i32 &status)
{
    record("status", path);
    if (fio_fake().entries.count(path) == 0)
        return false;
    status = {};
    status.st_mode = is_entry(path, /*is_directory=*/true) ? SYS_MODE_DIRECTORY : SYS_MODE_REGULAR;
    return true;
}

bool fio_os_create_directory(char const *path)
{
    record("create", path);
    return false;
}

std::FILE *fio_os_fopen(char const *path, char const *)
{
    record("fopen", path);
    return nullptr;
}

std::intptr_t fio_os_findfirst(char const *pattern, struct _finddata64i32_t &)
{
    record("findfirst", pattern);
    return -1;
}

int fio_os_findnext(std::intptr_t, struct _finddata64i32_t &)
{
    return -1;
}

int fio_os_findclose(std::intptr_t)
{
    return 0;
}

std::wstring fio_os_long_path(char const *path)
{
    return {path, path + std::char_traits<char>::length(path)};
}
