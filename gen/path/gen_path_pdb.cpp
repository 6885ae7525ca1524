#include "gen_path_sys.h"

#include "gen/base/gen_debug_message.h"

namespace {

// The directory last given to gen_generate_pdb_filename(). It is made by the first call and released at exit; for exit
// handlers that call later the result is null.
std::string *alt_pdb_directory()
{
    static bool l_is_released = false;
    struct Directory
    {
        std::string m_text;
        ~Directory() { l_is_released = true; }
    };
    static Directory l_directory;
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
    gen_debug_message("ALT path is %s", path.fullpath());
    return path;
}

} // namespace

std::string gen_generate_pdb_filename(std::string const &name, std::string const &extension,
                                      std::string const *directory)
{
    std::string path = pdb_directory(directory).fullpath() + name;
    if (!extension.empty())
        path += '.' + extension;
    return path;
}
