#include "gen_path_sys.h"

#include "gen/base/gen_assert.h"
#include "gen/path/gen_path_project.h"
#include "gen/path/gen_path_search.h"
#include "gen_profile_bins_sys.h"
#include "gen_string_sys.h"

#include <algorithm>

namespace {

using SOURCE_FILES = std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>>;

// The languages of source files, in the order in which their extensions are tried.
constexpr FIO_FILE_TYPE SOURCE_FILE_TYPES[] = {
    FIO_FILE_V,    FIO_FILE_SV,   FIO_FILE_VHD, FIO_FILE_VHDL, FIO_FILE_EDF,
    FIO_FILE_EDIF, FIO_FILE_BLIF, FIO_FILE_NET, FIO_FILE_VH,   FIO_FILE_SVH,
};

std::vector<std::string> const &default_source_extensions(GEN_PATH_STATE &state)
{
    if (state.default_source_extensions == nullptr) {
        state.default_source_extensions = new std::vector<std::string>;
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

// Takes the first file of each extension that still has none.
void take_first_of_each(GEN_LIBRARY_PATHS_ENUM tag, std::list<FIO_PATH> const &found, SOURCE_FILES &files,
                        std::vector<std::string> &extensions)
{
    for (FIO_PATH const &path : found) {
        std::string const extension = path.extension();
        auto const answered = std::remove_if(extensions.begin(), extensions.end(), [&](std::string const &wanted) {
            return is_same_extension(wanted, extension);
        });
        if (answered == extensions.end())
            continue;
        files.emplace_back(tag, path);
        extensions.erase(answered, extensions.end());
    }
}

} // namespace

bool gen_get_source_files(std::string const &name, SOURCE_FILES *files)
{
    GEN_PROFILER const bin("GEN", "gen_get_source_files", GEN_PB_FLAG_ALL);
    GEN_PATH_STATE *const state = gen_path_state();
    if (state == nullptr)
        return !files->empty();
    gen_need_kalvern_libs(*state);
    std::vector<std::string> extensions = default_source_extensions(*state);
    // A project directory that is filled in here serves its own place alone.
    FIO_FIND const *const project_ipblocks_libs = state->project_ipblocks_libs;
    gen_need_project_dir();
    GEN_ASSERT(state->kalvern_libs != nullptr, "kalvern_libs != 0");

    for (GEN_SEARCH_PLACE const &place : GEN_SEARCH_PLACES) {
        FIO_FIND *const search = gen_search_of(*state, place);
        bool const is_too_new =
            place.search == &GEN_PATH_STATE::project_ipblocks_libs && project_ipblocks_libs == nullptr;
        if (search != nullptr && !is_too_new && !extensions.empty())
            take_first_of_each(place.tag, find_all(*search, name, extensions), *files, extensions);
    }
    return !files->empty();
}

bool gen_get_source_files_from_kalvern_lib(std::string const &name, SOURCE_FILES *files)
{
    GEN_PATH_STATE *const state = gen_path_state();
    if (state == nullptr)
        return !files->empty();
    gen_need_kalvern_libs(*state);
    std::vector<std::string> extensions = default_source_extensions(*state);
    GEN_ASSERT(state->kalvern_libs != nullptr, "kalvern_libs != 0");

    std::list<FIO_PATH> const found = find_all(*state->kalvern_libs, name, extensions);
    if (name == "*")
        for (FIO_PATH const &path : found)
            files->emplace_back(GEN_LIBRARY_PATHS_KALVERN_LIBS, path);
    else
        take_first_of_each(GEN_LIBRARY_PATHS_KALVERN_LIBS, found, *files, extensions);
    return !files->empty();
}

std::list<std::string> gen_get_all_device_files()
{
    std::string const directory = gen_get_module_path(); // ends in a slash unless it is empty
    if (directory.empty())
        return {};
    FIO_FIND find(directory + "*.ddb");
    std::list<std::string> names;
    for (std::string name = find.find_first(); !name.empty(); name = find.find_next())
        names.push_back(std::move(name));
    return names;
}
