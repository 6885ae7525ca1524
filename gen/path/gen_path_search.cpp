#include "gen/path/gen_path_search.h"

#include "gen/base/gen_assert.h"
#include "gen/os/gen_os.h"
#include "gen/path/gen_path_project.h"
#include "gen/path/gen_path_search_cache.h"
#include "gen_iterator_sys.h"
#include "gen_string_sys.h"
#include "sys/sys_file_mode.h"
#include "sys/sys_process.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace {

// Made by the first cached search; released by gen_destroy_find_file_cache() and at an unload, not at exit.
GEN_FIND_FILE_CACHE *l_find_file_cache = nullptr;

struct AtUnload
{
    ~AtUnload()
    {
        if (sys_is_unloading())
            gen_destroy_find_file_cache();
    }
} const l_at_unload;

bool is_found(FIO_PATH const &path)
{
    char const *const text = path;
    return *text != '\0';
}

bool is_eda_library(GEN_LIBRARY_TYPE type)
{
    return type >= GEN_LIB_VITAL && type <= GEN_LIB_SYNPLICITY;
}

void make_env_libs(GEN_PATH_STATE &state)
{
    if (std::exchange(state.env_libs_checked, true))
        return;
    char const *const value = std::getenv("KALVERN_LIBRARY_PATHS");
    if (value != nullptr && *value != '\0')
        state.env_libs = std::make_unique<FIO_FIND>(std::string(value));
}

// The result for an absolute path is the path itself if it exists. A relative path or a bare name is looked for by
// `search`, and so is a path relative to a drive if it contains no directory.
template <typename Search>
FIO_PATH find(std::string const &name, Search search)
{
    FIO_PATH const path(name);
    if (path.absolute())
        return FIO_FILE_SYSTEM::exists(path) ? path : FIO_PATH();
    bool const is_drive_relative = !path.relative();
    if (is_drive_relative && path.levels() != 0)
        return {};
    return search(path);
}

FIO_PATH find_in_places(GEN_PATH_STATE &state, FIO_PATH const &path)
{
    for (GEN_SEARCH_PLACE const &place : GEN_SEARCH_PLACES)
        if (FIO_FIND *const search = gen_search_of(state, place))
            if (FIO_PATH hit = search->find_first_relative_path(path); is_found(hit))
                return hit;
    return {};
}

// The path of a name in the directory of another file.
FIO_PATH path_next_to(char const *file, char const *name)
{
    return FIO_PATH(FIO_PATH(file).full_directory() + name).become_simplified();
}

} // namespace

FIO_FIND *gen_search_of(GEN_PATH_STATE &state, GEN_SEARCH_PLACE const &place)
{
    if (place.search == &GEN_PATH_STATE::env_libs)
        make_env_libs(state);
    FIO_FIND *const search = (state.*place.search).get();
    if (search != nullptr && place.from_project_dir)
        search->set_directory_for_results_to_become_absolute_to(state.texts.project_dir.c_str());
    return search;
}

void gen_make_kalvern_libs(GEN_PATH_STATE &state)
{
    if (state.kalvern_libs != nullptr || state.kalvern_eda_libs != nullptr)
        return;
    std::list<FIO_PATH> general;
    std::list<FIO_PATH> eda;
    for (GEN_LIBRARY_TYPE const type : GEN_ENUM_RANGE(GEN_LIB_ROOT, GEN_LIB_SIZE))
        (is_eda_library(type) ? eda : general).emplace_back(gen_get_library_path(type));
    state.kalvern_libs = std::make_unique<FIO_FIND>(general);
    state.kalvern_eda_libs = std::make_unique<FIO_FIND>(eda);
}

FIO_PATH gen_find_file(std::string const &name)
{
    return gen_with_path_state([&](GEN_PATH_STATE &state) {
        gen_set_default_project_dir();
        gen_make_kalvern_libs(state);
        GEN_ASSERT(state.kalvern_libs != nullptr, "kalvern_libs != 0");
        return find(name, [&](FIO_PATH const &path) { return find_in_places(state, path); });
    });
}

FIO_PATH gen_find_eda_file(std::string const &name)
{
    return gen_with_path_state([&](GEN_PATH_STATE &state) {
        gen_make_kalvern_libs(state);
        GEN_ASSERT(state.kalvern_eda_libs != nullptr, "kalvern_eda_libs != 0");
        return find(name, [&](FIO_PATH const &path) { return state.kalvern_eda_libs->find_first_relative_path(path); });
    });
}

FIO_PATH gen_find_file_cache_assisted(std::string const &name)
{
    if (l_find_file_cache == nullptr)
        l_find_file_cache = new GEN_FIND_FILE_CACHE;
    if (FIO_PATH const *const known = l_find_file_cache->find(name))
        return *known;
    FIO_PATH path = gen_find_file(name);
    l_find_file_cache->add(name, path);
    return path;
}

void gen_destroy_find_file_cache()
{
    delete std::exchange(l_find_file_cache, nullptr);
}

std::string gen_find_in_path(std::string const &name, bool)
{
    char const *const value = std::getenv("PATH");
    if (value == nullptr)
        return {};
    char const separator = gen_os_path_list_separator();
    for (std::string_view rest = value; !rest.empty();) {
        std::string_view const element = rest.substr(0, rest.find(separator));
        rest.remove_prefix(std::min(element.size() + 1, rest.size()));
        if (element.empty())
            continue;
        FIO_PATH path;
        path.directory(std::string(element)).filename(name);
        struct _stat64i32 record;
        if (FIO_FILE_SYSTEM::status(path.fullpath(), &record) && sys_mode_is_regular(record.st_mode))
            return path.fullpath();
    }
    return {};
}

bool gen_find_include_file(char const *name, char const *includer, char const *parent, std::string *full,
                           std::string *relative)
{
    if (full != nullptr)
        full->clear();
    if (relative != nullptr)
        relative->clear();
    if (name == nullptr)
        return false;
    FIO_PATH hit = gen_find_file(name);
    bool const is_next_to_includer = !is_found(hit) && includer != nullptr && FIO_PATH(name).relative();
    if (is_next_to_includer) {
        hit = path_next_to(includer, name);
        if (!FIO_FILE_SYSTEM::exists(hit))
            return false;
    }
    if (!is_found(hit))
        return false;
    // `name` and `parent` may point into an output, so both are read before an output receives its text.
    if (is_next_to_includer && relative != nullptr)
        *relative = path_next_to(parent, name).fullpath();
    if (full != nullptr)
        *full = hit.become_simplified().fullpath();
    return true;
}

std::list<FIO_PATH> *gen_get_default_lib_fio_paths()
{
    return gen_with_path_state([](GEN_PATH_STATE &state) {
        gen_make_kalvern_libs(state);
        return state.kalvern_libs == nullptr ? nullptr : state.kalvern_libs->get_paths();
    });
}

std::string gen_get_relative_path_if_starts_with_project_dir(char const *path)
{
    GEN_ASSERT(path != nullptr, "path != NULL");
    FIO_PATH file(path);
    if (is_found(file) && file.relative())
        file = gen_find_file(path);
    std::string const project_dir = gen_get_project_dir_path(); // ends in a slash unless it is empty
    if (!is_found(file) || !file.absolute() || project_dir.empty())
        return path;
    bool const is_in_project = gen_strnicmp(file, project_dir.c_str(), project_dir.size()) == 0;
    return is_in_project ? file.fullpath().erase(0, project_dir.size()) : path;
}
