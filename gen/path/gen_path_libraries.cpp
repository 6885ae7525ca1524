#include "gen_path_sys.h"

#include "gen/base/gen_assert.h"
#include "gen/path/gen_path_state.h"
#include "gen_string_sys.h"

#include <unordered_set>

namespace {

// The same for all paths that gen_stricmp() reports as equal.
std::string comparison_key(FIO_PATH const &path)
{
    std::string text(static_cast<char const *>(path));
    gen_tolower(text);
    return text;
}

std::unordered_set<std::string> comparison_keys(std::list<FIO_PATH> const &paths)
{
    std::unordered_set<std::string> texts;
    for (FIO_PATH const &path : paths)
        texts.insert(comparison_key(path));
    return texts;
}

std::list<FIO_PATH> parsed(std::string const &paths)
{
    FIO_FIND find(paths);
    return std::move(*find.get_paths());
}

// Sets the project's library paths. `paths` may be the list that the setter rebuilds: it is read before that.
void store(std::list<FIO_PATH> const &paths)
{
    std::string text;
    for (FIO_PATH const &path : paths)
        text.append(static_cast<char const *>(path)).append(1, ';');
    if (!text.empty())
        text.pop_back();
    gen_set_project_library_paths(std::move(text));
}

} // namespace

void gen_append_project_library_paths(std::string const &paths)
{
    if (paths.empty() || gen_path_state() == nullptr)
        return;
    std::list<FIO_PATH> *project_fio_paths = gen_project_lib_fio_paths();
    if (project_fio_paths == nullptr) {
        gen_set_project_library_paths(std::string());
        project_fio_paths = gen_project_lib_fio_paths();
    }
    GEN_ASSERT(project_fio_paths != nullptr, "project_fio_paths != 0");

    std::size_t const former_size = project_fio_paths->size();
    std::unordered_set<std::string> known = comparison_keys(*project_fio_paths);
    for (FIO_PATH const &path : parsed(paths))
        if (known.insert(comparison_key(path)).second)
            project_fio_paths->push_back(path);
    if (project_fio_paths->size() != former_size)
        store(*project_fio_paths);
}

void gen_remove_project_library_paths(std::string const &paths)
{
    if (paths.empty() || gen_get_project_library_paths().empty())
        return;
    std::list<FIO_PATH> &project_fio_paths = *gen_project_lib_fio_paths();
    std::size_t const former_size = project_fio_paths.size();
    std::unordered_set<std::string> const unwanted = comparison_keys(parsed(paths));
    project_fio_paths.remove_if([&](FIO_PATH const &path) { return unwanted.count(comparison_key(path)) != 0; });
    if (project_fio_paths.size() != former_size)
        store(project_fio_paths);
}

std::list<FIO_PATH> *gen_project_lib_fio_paths()
{
    return gen_with_path_state([](GEN_PATH_STATE &state) {
        return state.project_libs == nullptr ? nullptr : state.project_libs->get_paths();
    });
}
