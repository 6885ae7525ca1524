#include "gen_path_sys.h"

#include "gen/path/gen_path_project.h"
#include "gen/path/gen_path_state.h"
#include "sys/sys_file_mode.h"

#include <utility>

char const *const GEN_DB_DIR_NAME = "db";
char const *const GEN_KDB_DIR_NAME = "kdb";
char const *const GEN_PROJECT_IPBLOCKS_DIR_NAME = "ipblocks";
char const *const GEN_INCR_DB_DIR_NAME = "incremental_db";
char const *const GEN_PERSONA_DIR_NAME = "persona";

namespace {

// gen_get_incr_db_dir_path_string() removes this many characters from the database directory: "db/".
constexpr std::size_t DB_DIR_SUFFIX_LENGTH = 3;

// A search that exists keeps its address, so that pointers to its list of paths stay valid.
void rebuild(std::unique_ptr<FIO_FIND> &search, std::string const &paths)
{
    if (search == nullptr)
        search = std::make_unique<FIO_FIND>(paths);
    else
        search->init(paths);
}

void replace(std::unique_ptr<FIO_PATH> &path, FIO_PATH value)
{
    path = std::make_unique<FIO_PATH>(std::move(value));
}

FIO_PATH copy_or_empty(std::unique_ptr<FIO_PATH> const &path)
{
    return path == nullptr ? FIO_PATH() : *path;
}

std::string project_text(std::string GEN_PROJECT_TEXTS::*text)
{
    return gen_with_path_state([text](GEN_PATH_STATE &state) { return state.texts.*text; });
}

void set_project_ipblocks(GEN_PATH_STATE &state, std::string directory)
{
    if (directory.empty() || directory.back() != '/')
        directory += '/';
    directory += GEN_PROJECT_IPBLOCKS_DIR_NAME;
    directory += '/';
    replace(state.project_ipblocks_dir_path, FIO_PATH(directory));
    rebuild(state.project_ipblocks_libs, directory);
}

// Whether the output directory exists or could be created. Its status is read without the slash at the end.
bool is_output_directory_usable(std::string const &directory)
{
    if (directory.empty())
        return false;
    if (!FIO_FILE_SYSTEM::exists(directory)) {
        FIO_FILE_SYSTEM::create(directory);
        if (!FIO_FILE_SYSTEM::exists(directory)) // another process may have made it
            return false;
    }
    struct _stat64i32 record;
    return FIO_FILE_SYSTEM::status(directory.substr(0, directory.size() - 1), &record) &&
           sys_mode_is_directory(record.st_mode);
}

} // namespace

void gen_set_db_dir_path(std::string path)
{
    gen_with_path_state([&](GEN_PATH_STATE &state) {
        replace(state.db_dir_path, FIO_PATH(path));
        rebuild(state.db_dir_libs, state.db_dir_path->fullpath());
    });
}

FIO_PATH gen_get_db_dir_path()
{
    return gen_with_path_state([](GEN_PATH_STATE &state) { return copy_or_empty(state.db_dir_path); });
}

std::string gen_get_db_dir_path_string()
{
    return gen_with_path_state([](GEN_PATH_STATE &state) {
        return state.db_dir_path == nullptr ? std::string() : state.db_dir_path->fullpath();
    });
}

bool gen_check_db_dir_path()
{
    return gen_with_path_state([](GEN_PATH_STATE &state) { return state.db_dir_path != nullptr; });
}

void gen_set_db_dir_full_name(FIO_PATH path)
{
    gen_with_path_state([&](GEN_PATH_STATE &state) { replace(state.db_dir_full_name, std::move(path)); });
}

FIO_PATH gen_get_db_dir_full_name()
{
    return gen_with_path_state([](GEN_PATH_STATE &state) { return copy_or_empty(state.db_dir_full_name); });
}

std::string gen_get_incr_db_dir_path_string()
{
    std::string path = gen_get_db_dir_path_string();
    if (path.empty())
        return path;
    path.resize(path.size() < DB_DIR_SUFFIX_LENGTH ? 0 : path.size() - DB_DIR_SUFFIX_LENGTH);
    return path + GEN_INCR_DB_DIR_NAME + '/';
}

void gen_set_project_dir_path(std::string path)
{
    gen_with_path_state([&](GEN_PATH_STATE &state) {
        FIO_PATH directory;
        directory.cd(path);
        state.texts.project_dir = directory.fullpath();
        set_project_ipblocks(state, state.texts.project_dir);
        rebuild(state.project_dir_libs, state.texts.project_dir);
    });
}

std::string gen_get_project_dir_path()
{
    return project_text(&GEN_PROJECT_TEXTS::project_dir);
}

FIO_PATH gen_get_project_ipblocks_dir_path()
{
    return gen_with_path_state([](GEN_PATH_STATE &state) { return copy_or_empty(state.project_ipblocks_dir_path); });
}

std::string gen_get_persona_dir_path_string()
{
    std::string path = gen_get_project_dir_path();
    return path.empty() ? path : path + GEN_PERSONA_DIR_NAME + '/';
}

void gen_set_project_output_directory(char const *path)
{
    gen_with_path_state([path](GEN_PATH_STATE &state) {
        if (path == nullptr || *path == '\0') {
            state.texts.project_output_directory.clear();
            return;
        }
        FIO_PATH directory;
        directory.cd(path);
        if (directory.relative())
            directory.become_absolute("");
        else
            directory.become_simplified();
        state.texts.project_output_directory = directory.fullpath();
    });
}

char const *gen_get_project_output_directory()
{
    return gen_with_path_state(
        [](GEN_PATH_STATE &state) {
            if (is_output_directory_usable(state.texts.project_output_directory))
                return state.texts.project_output_directory.c_str();
            gen_set_default_project_dir();
            return state.texts.project_dir.c_str();
        },
        "");
}

void gen_set_default_project_dir()
{
    gen_with_path_state([](GEN_PATH_STATE &state) {
        if (state.project_dir_libs == nullptr)
            gen_set_project_dir_path(FIO_FILE_SYSTEM::get_current_directory());
    });
}

void gen_set_project_library_paths(std::string paths)
{
    gen_with_path_state([&](GEN_PATH_STATE &state) {
        state.texts.project_library_paths = std::move(paths);
        rebuild(state.project_libs, state.texts.project_library_paths);
    });
}

std::string gen_get_project_library_paths()
{
    return project_text(&GEN_PROJECT_TEXTS::project_library_paths);
}

void gen_set_user_library_paths(std::string paths)
{
    gen_with_path_state([&](GEN_PATH_STATE &state) {
        state.texts.user_library_paths = std::move(paths);
        rebuild(state.user_libs, state.texts.user_library_paths);
    });
}

std::string gen_get_user_library_paths()
{
    return project_text(&GEN_PROJECT_TEXTS::user_library_paths);
}

void gen_set_user_ip_search_paths(std::string paths)
{
    gen_with_path_state([&](GEN_PATH_STATE &state) { state.user_ip_search_paths = std::move(paths); });
}

std::string gen_get_user_ip_search_paths()
{
    return gen_with_path_state([](GEN_PATH_STATE &state) { return state.user_ip_search_paths; });
}
