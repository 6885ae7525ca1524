#include "gen_path_sys.h"

#include "gen/base/gen_assert.h"
#include "gen/os/gen_os.h"
#include "gen_time_sys.h"
#include "mem_sys.h"

#include <cstdio>

namespace {

// The number of attempts of gen_create_temp_file_with_extension().
constexpr int MOST_ATTEMPTS = 5;

// Creates the file or empties it; false if it can't be opened.
bool write_empty_file(char const *path)
{
    std::FILE *const file = FIO_FILE_SYSTEM::fopen(path, "w");
    if (file == nullptr)
        return false;
    std::fclose(file);
    return true;
}

void append_slash(std::string &text)
{
    if (text.empty() || text.back() != '/')
        text += '/';
}

} // namespace

std::string gen_create_temp_file(std::string const &dir, std::string const &prefix)
{
    FIO_PATH native_dir(dir);
    native_dir.change_path_separators_for_windows_api();
    std::string path;
    if (dir.empty() || !gen_os_create_temp_file(native_dir, prefix.c_str(), path))
        return {};
    return FIO_PATH(path).fullpath();
}

std::string gen_create_temp_file_with_extension(std::string const &dir, std::string const &prefix,
                                                std::string const &extension)
{
    FIO_PATH path;
    bool is_open = false;
    bool is_taken = false;
    for (int attempt = 0; attempt < MOST_ATTEMPTS && (!is_open || is_taken); ++attempt) {
        path = gen_create_temp_file(dir, prefix);
        // An extension anywhere in the path counts as the one of the file. The target then is the file just created.
        bool const has_extension = path.fullpath().find(extension) != std::string::npos;
        path.extension(extension, "");
        is_taken = !has_extension && FIO_FILE_SYSTEM::exists(path.fullpath());
        is_open = write_empty_file(path);
    }
    return path.fullpath();
}

std::string gen_unique_path(char const * /*unused*/)
{
    auto const seconds = static_cast<std::uint32_t>(gen_get_current_time_seconds());
    std::string name;
    stl_sprintf(&name, "%x%x.tmp", seconds, gen_os_random_number());
    GEN_ASSERT(!name.empty(), "Couldn't get unique path name!");
    return name;
}

bool gen_create_unique_dir(std::string const &base, std::string &out, bool create)
{
    std::string const name = gen_unique_path(nullptr);
    out = base;
    append_slash(out);
    out += name;
    if (!create || FIO_FILE_SYSTEM::create(out))
        return true;
    out.clear();
    return false;
}

std::string gen_get_temp_path()
{
    std::string path;
    gen_os_read_temp_directory(path);
    append_slash(path);
    return path;
}
