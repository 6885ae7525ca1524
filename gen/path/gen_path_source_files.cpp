#include "gen_path_sys.h"

#include "gen/base/gen_assert.h"
#include "gen/path/gen_path_project.h"
#include "gen/path/gen_path_search.h"
#include "gen_profile_bins_sys.h"
#include "gen_string_sys.h"

#include <algorithm>

namespace {

using SourceFiles = std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>>;

// The languages of source files, in the order in which their extensions are tried.
constexpr FIO_FILE_TYPE SOURCE_FILE_TYPES[] = {
    FIO_FILE_V,    FIO_FILE_SV,   FIO_FILE_VHD, FIO_FILE_VHDL, FIO_FILE_EDF,
    FIO_FILE_EDIF, FIO_FILE_BLIF, FIO_FILE_NET, FIO_FILE_VH,   FIO_FILE_SVH,
};

std::vector<std::string> const &default_source_extensions(GEN_PATH_STATE &state)
{
    if (state.default_source_extensions == nullptr) {
        state.default_source_extensions = std::make_unique<std::vector<std::string>>();
        for (FIO_FILE_TYPE const type : SOURCE_FILE_TYPES)
            state.default_source_extensions->emplace_back(fio_get_default_extension_string(type));
    }
    return *state.default_source_extensions;
}

bool is_same_extension(std::string const &wanted, std::string const &extension)
{
    char const *const text = wanted.c_str();
    return gen_stricmp(*text == '.' ? text + 1 : text, extension.c_str()) == 0;
}

std::list<FIO_PATH> find_all(FIO_FIND &search, std::string const &name, std::vector<std::string> const &extensions)
{
    std::list<FIO_PATH> found;
    search.find_all(name, extensions, &found, true, false);
    return found;
}

// Appends the first file with each of the extensions, and removes the extensions for which there is one.
void add_first_file_of_each_extension(GEN_LIBRARY_PATHS_ENUM tag, std::list<FIO_PATH> const &found, SourceFiles &files,
                                      std::vector<std::string> &extensions)
{
    for (FIO_PATH const &path : found) {
        std::string const extension = path.extension();
        auto const removed = std::remove_if(extensions.begin(), extensions.end(), [&](std::string const &wanted) {
            return is_same_extension(wanted, extension);
        });
        if (removed == extensions.end())
            continue;
        files.emplace_back(tag, path);
        extensions.erase(removed, extensions.end());
    }
}

} // namespace

bool gen_get_source_files(std::string const &name, SourceFiles *files)
{
    GEN_PROFILER const bin("GEN", "gen_get_source_files", GEN_PB_FLAG_ALL);
    gen_with_path_state([&](GEN_PATH_STATE &state) {
        gen_make_kalvern_libs(state);
        std::vector<std::string> extensions = default_source_extensions(state);
        // A default project directory that is set here is searched only in its own place, not in that of its IP blocks.
        bool const has_project_ipblocks = state.project_ipblocks_libs != nullptr;
        gen_set_default_project_dir();
        GEN_ASSERT(state.kalvern_libs != nullptr, "kalvern_libs != 0");

        for (GEN_SEARCH_PLACE const &place : GEN_SEARCH_PLACES) {
            FIO_FIND *const search = gen_search_of(state, place);
            bool const is_too_new = place.search == &GEN_PATH_STATE::project_ipblocks_libs && !has_project_ipblocks;
            if (search != nullptr && !is_too_new && !extensions.empty())
                add_first_file_of_each_extension(place.tag, find_all(*search, name, extensions), *files, extensions);
        }
    });
    return !files->empty();
}

bool gen_get_source_files_from_kalvern_lib(std::string const &name, SourceFiles *files)
{
    gen_with_path_state([&](GEN_PATH_STATE &state) {
        gen_make_kalvern_libs(state);
        std::vector<std::string> extensions = default_source_extensions(state);
        GEN_ASSERT(state.kalvern_libs != nullptr, "kalvern_libs != 0");

        std::list<FIO_PATH> const found = find_all(*state.kalvern_libs, name, extensions);
        if (name == "*")
            for (FIO_PATH const &path : found)
                files->emplace_back(GEN_LIBRARY_PATHS_KALVERN_LIBS, path);
        else
            add_first_file_of_each_extension(GEN_LIBRARY_PATHS_KALVERN_LIBS, found, *files, extensions);
    });
    return !files->empty();
}
