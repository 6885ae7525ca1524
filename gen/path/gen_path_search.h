// The places where files are looked for, and the steps that a search needs before it starts.
#ifndef GEN_PATH_SEARCH_H
#define GEN_PATH_SEARCH_H

#include "gen/path/gen_path_state.h"
#include "gen_path_sys.h"

struct GEN_SEARCH_PLACE
{
    std::unique_ptr<FIO_FIND> GEN_PATH_STATE::*search;
    bool from_project_dir; // relative directories are taken from the current project directory
    GEN_LIBRARY_PATHS_ENUM tag;
};

/// In the order of the search.
constexpr GEN_SEARCH_PLACE GEN_SEARCH_PLACES[] = {
    {&GEN_PATH_STATE::project_dir_libs, false, GEN_LIBRARY_PATHS_PROJECT_DIR},
    {&GEN_PATH_STATE::db_dir_libs, false, GEN_LIBRARY_PATHS_DB_DIR},
    {&GEN_PATH_STATE::project_libs, true, GEN_LIBRARY_PATHS_PROJECT_LIBS},
    {&GEN_PATH_STATE::user_libs, true, GEN_LIBRARY_PATHS_USER_LIBS},
    {&GEN_PATH_STATE::env_libs, true, GEN_LIBRARY_PATHS_ENV_LIBS},
    {&GEN_PATH_STATE::project_ipblocks_libs, false, GEN_LIBRARY_PATHS_KALVERN_LIBS},
    {&GEN_PATH_STATE::kalvern_libs, false, GEN_LIBRARY_PATHS_KALVERN_LIBS},
};

/// The search of a place, ready to be used; null if the place was never set. The first call for the place of the
/// environment reads KALVERN_LIBRARY_PATHS.
FIO_FIND *gen_search_of(GEN_PATH_STATE &state, GEN_SEARCH_PLACE const &place);

/// Creates the searches over the installation's libraries if they don't exist yet.
void gen_make_kalvern_libs(GEN_PATH_STATE &state);

#endif
