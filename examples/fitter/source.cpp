#include "source.h"

#include "error.h"
#include "fio_sys.h"
#include "gen_fstream_sys.h"
#include "gen_path_sys.h"

#include <filesystem>
#include <utility>

namespace fitter {
namespace {

char const *place_name(GEN_LIBRARY_PATHS_ENUM place)
{
    switch (place) {
    case GEN_LIBRARY_PATHS_PROJECT_DIR:
        return "project";
    case GEN_LIBRARY_PATHS_DB_DIR:
        return "project database";
    case GEN_LIBRARY_PATHS_PROJECT_LIBS:
        return "project library";
    case GEN_LIBRARY_PATHS_USER_LIBS:
        return "user library";
    case GEN_LIBRARY_PATHS_ENV_LIBS:
        return "library of the environment";
    default:
        return "installation";
    }
}

std::string name_in_project(std::string const &path)
{
    return gen_get_relative_path_if_starts_with_project_dir(path.c_str());
}

} // namespace

Source read_design(std::string const &name)
{
    std::string const path = gen_find_file(name).fullpath();
    if (path.empty())
        throw Error("cannot find \"" + name + "\" in the project, its libraries or the installation");
    return {path, name_in_project(path), read_file(path)};
}

Source find_searched(std::string const &name, Source const &includer)
{
    Source source;
    // Includer "sub/a.blif", name "b.blif": "sub/b.blif", if that file is found next to the includer; else empty.
    std::string name_from_includer;
    gen_find_include_file(name.c_str(), includer.path.c_str(), includer.name.c_str(), &source.path,
                          &name_from_includer);
    source.name = name_from_includer.empty() ? name_in_project(source.path) : name_from_includer;
    return source;
}

std::vector<std::string> list_sources(Source const &design)
{
    // The unit of the design has the name of its file, without directories if they lie outside the project.
    std::filesystem::path unit = std::filesystem::path(design.name).replace_extension();
    if (unit.is_absolute())
        unit = unit.filename();
    std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>> files;
    gen_get_source_files(unit.generic_string(), &files);
    std::vector<std::string> names;
    names.reserve(files.size());
    for (auto const &[place, path] : files)
        names.push_back(name_in_project(path.fullpath()) + " (" + place_name(place) + ")");
    return names;
}

std::string read_file(std::string const &path)
{
    std::brisel_ifstream file(path.c_str(), std::ios::binary, GEN_SHARE_ALL);
    if (!file.good())
        throw Error("cannot open \"" + path + "\"");
    // Read in blocks: a stream reports a failed read only through read().
    std::string text;
    char block[65536];
    while (file.read(block, sizeof block) || file.gcount() > 0)
        text.append(block, static_cast<std::size_t>(file.gcount()));
    if (file.bad() || !file.eof())
        throw Error("cannot read \"" + path + "\"");
    return text;
}

} // namespace fitter
