#include "gen_path_sys.h"

#include "gen/base/gen_statics.h"
#include "gen/path/gen_path_project.h"
#include "sys/sys_file_mode.h"

#include <utility>

char const *const GEN_DB_DIR_NAME = "db";
char const *const GEN_KDB_DIR_NAME = "kdb";
char const *const GEN_PROJECT_IPBLOCKS_DIR_NAME = "ipblocks";
char const *const GEN_INCR_DB_DIR_NAME = "incremental_db";
char const *const GEN_PERSONA_DIR_NAME = "persona";

namespace {

// What gen_get_incr_db_dir_path_string() cuts from the database directory's text: "db/".
constexpr std::size_t DB_DIR_SUFFIX_LENGTH = 3;

// A search that exists keeps its address, so that lists handed out stay valid.
void rebuild(FIO_FIND *&search, std::string const &paths)
{
    if (search == nullptr)
        search = new FIO_FIND(paths);
    else
        search->init(paths);
}

void replace(FIO_PATH *&path, FIO_PATH value)
{
    delete std::exchange(path, new FIO_PATH(std::move(value)));
}

FIO_PATH copy_of(FIO_PATH const *path)
{
    return path == nullptr ? FIO_PATH() : *path;
}

std::string text_of(std::string GEN_PATH_STATE::*text)
{
    GEN_PATH_STATE const *const state = gen_path_state();
    return state == nullptr ? std::string() : state->*text;
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

// Whether the directory for output is there, or could be made. The question is put without the slash at its end.
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
    GEN_PATH_STATE *const state = gen_path_state();
    if (state == nullptr)
        return;
    replace(state->db_dir_path, FIO_PATH(path));
    rebuild(state->db_dir_libs, state->db_dir_path->fullpath());
}

FIO_PATH gen_get_db_dir_path()
{
    GEN_PATH_STATE const *const state = gen_path_state();
    return state == nullptr ? FIO_PATH() : copy_of(state->db_dir_path);
}

std::string gen_get_db_dir_path_string()
{
    GEN_PATH_STATE const *const state = gen_path_state();
    return state == nullptr || state->db_dir_path == nullptr ? std::string() : state->db_dir_path->fullpath();
}

bool gen_check_db_dir_path()
{
    GEN_PATH_STATE const *const state = gen_path_state();
    return state != nullptr && state->db_dir_path != nullptr;
}

void gen_set_db_dir_full_name(FIO_PATH path)
{
    if (GEN_PATH_STATE *const state = gen_path_state())
        replace(state->db_dir_full_name, std::move(path));
}

FIO_PATH gen_get_db_dir_full_name()
{
    GEN_PATH_STATE const *const state = gen_path_state();
    return state == nullptr ? FIO_PATH() : copy_of(state->db_dir_full_name);
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
    GEN_PATH_STATE *const state = gen_path_state();
    if (state == nullptr)
        return;
    FIO_PATH directory;
    directory.cd(path);
    state->project_dir = directory.fullpath();
    set_project_ipblocks(*state, state->project_dir);
    rebuild(state->project_dir_libs, state->project_dir);
}

std::string gen_get_project_dir_path()
{
    return text_of(&GEN_PATH_STATE::project_dir);
}

FIO_PATH gen_get_project_ipblocks_dir_path()
{
    GEN_PATH_STATE const *const state = gen_path_state();
    return state == nullptr ? FIO_PATH() : copy_of(state->project_ipblocks_dir_path);
}

std::string gen_get_persona_dir_path_string()
{
    std::string path = gen_get_project_dir_path();
    return path.empty() ? path : path + GEN_PERSONA_DIR_NAME + '/';
}

void gen_set_project_output_directory(char const *path)
{
    GEN_PATH_STATE *const state = gen_path_state();
    if (state == nullptr)
        return;
    if (path == nullptr || *path == '\0') {
        state->project_output_directory.clear();
        return;
    }
    FIO_PATH directory;
    directory.cd(path);
    if (directory.relative())
        directory.become_absolute("");
    else
        directory.become_simplified();
    state->project_output_directory = directory.fullpath();
}

char const *gen_get_project_output_directory()
{
    GEN_PATH_STATE const *const state = gen_path_state();
    if (state == nullptr)
        return "";
    if (is_output_directory_usable(state->project_output_directory))
        return state->project_output_directory.c_str();
    gen_need_project_dir();
    return state->project_dir.c_str();
}

void gen_need_project_dir()
{
    GEN_PATH_STATE const *const state = gen_path_state();
    if (state != nullptr && state->project_dir_libs == nullptr)
        gen_set_project_dir_path(FIO_FILE_SYSTEM::get_current_directory());
}

void gen_set_project_library_paths(std::string paths)
{
    GEN_PATH_STATE *const state = gen_path_state();
    if (state == nullptr)
        return;
    state->project_library_paths = std::move(paths);
    rebuild(state->project_libs, state->project_library_paths);
}

std::string gen_get_project_library_paths()
{
    return text_of(&GEN_PATH_STATE::project_library_paths);
}

void gen_set_user_library_paths(std::string paths)
{
    GEN_PATH_STATE *const state = gen_path_state();
    if (state == nullptr)
        return;
    state->user_library_paths = std::move(paths);
    rebuild(state->user_libs, state->user_library_paths);
}

std::string gen_get_user_library_paths()
{
    return text_of(&GEN_PATH_STATE::user_library_paths);
}

void gen_set_user_ip_search_paths(std::string paths)
{
    if (GEN_PATH_STATE *const state = gen_path_state())
        state->user_ip_search_paths = std::move(paths);
}

std::string gen_get_user_ip_search_paths()
{
    return text_of(&GEN_PATH_STATE::user_ip_search_paths);
}
