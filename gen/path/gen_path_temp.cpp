#include "gen_path_sys.h"

#include "gen/base/gen_assert.h"
#include "gen/base/gen_message.h"
#include "gen/os/gen_os.h"
#include "gen_time_sys.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

// How often gen_create_temp_file_with_extension() tries.
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

// The directory last given to gen_generate_pdb_filename(). Made at the first question; null once exit has released it,
// which exit handlers may outlive.
std::string *alt_pdb_directory()
{
    static bool l_is_released = false;
    struct DIRECTORY
    {
        std::string m_text;
        ~DIRECTORY() { l_is_released = true; }
    };
    static DIRECTORY l_directory;
    return l_is_released ? nullptr : &l_directory.m_text;
}

FIO_PATH pdb_directory(std::string const *directory)
{
    std::string *const alternative = alt_pdb_directory();
    if (alternative != nullptr && directory != nullptr)
        *alternative = *directory;
    if (alternative == nullptr || alternative->empty())
        return gen_get_db_dir_path();
    FIO_PATH path(*alternative);
    gen_say("ALT path is %s", path.fullpath());
    return path;
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
        // Anywhere in the path counts. Then the target is taken to be the very file that was made.
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
    // The generator of the process: a tool that seeds it makes the names repeatable.
    // NOLINTNEXTLINE(cert-msc30-c,cert-msc50-cpp)
    int const number = std::rand();
    std::string name;
    stl_sprintf(&name, "%x%x.tmp", seconds, number);
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

std::string gen_generate_pdb_filename(std::string const &name, std::string const &extension,
                                      std::string const *directory)
{
    std::string path = pdb_directory(directory).fullpath() + name;
    if (!extension.empty())
        path += '.' + extension;
    return path;
}

std::string gen_sync_path_separators(std::string const &text)
{
    std::string synced = text;
    std::replace(synced.begin(), synced.end(), '\\', '/');
    return synced;
}
