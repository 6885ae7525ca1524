// Searches for files. One iteration is
//
// - for a miss, one call over all directories;
// - for the cache, one lookup among 100,000 names in shuffled order, or one fill with all of them;
// - for the library list, appending 10,000 paths.
//
// The directories are a project, lists of a user, and the libraries of an installation, all created in the build
// directory for the run. The floor tests the same paths, joined beforehand. The peer joins and tests them with the
// standard library.
#include "gen_path_sys.h"

#include "bench/bench.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <unordered_map>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {

constexpr char const *MISSING = "no_such_module.v";

// The directories of the run, removed at its end.
class Tree
{
public:
    Tree()
    {
        for (unsigned type = 1; type < GEN_LIB_SIZE; ++type)
            make(gen_get_library_path(static_cast<GEN_LIBRARY_TYPE>(type)));
        std::string const project = make(gen_get_kalvern_path() + "bench_project/");
        make(project + "db/");
        make(project + "ipblocks/");
        std::string libraries;
        for (int i = 0; i < 8; ++i)
            libraries += make(project + "library_" + std::to_string(i)) + ';';
        gen_set_project_dir_path(project);
        gen_set_db_dir_path(project + "db/");
        gen_set_project_library_paths(libraries);
        gen_set_user_library_paths("library_0;library_1;library_2;library_3"); // relative ones
    }
    ~Tree()
    {
        for (char const *const directory : {"bench_project", "libraries", "eda"})
            std::filesystem::remove_all(gen_get_kalvern_path() + directory);
    }

    // The paths that gen_find_file() tests.
    static std::vector<std::string> directories()
    {
        std::string const project = gen_get_project_dir_path();
        std::vector<std::string> result = {project, project + "db/"};
        for (FIO_PATH const &path : *gen_project_lib_fio_paths())
            result.push_back(path.fullpath() + '/');
        for (int i = 0; i < 4; ++i)
            result.push_back(project + "library_" + std::to_string(i) + '/');
        result.push_back(project + "ipblocks/");
        for (FIO_PATH const &path : *gen_get_default_lib_fio_paths())
            result.push_back(path.fullpath() + (path.filename().empty() ? "" : "/"));
        return result;
    }

private:
    static std::string make(std::string const &directory)
    {
        std::filesystem::create_directories(directory);
        return directory;
    }
};

void use_tree()
{
    static Tree const tree;
}

void prebuilt_access(benchmark::State &state)
{
    use_tree();
    std::vector<std::string> paths = Tree::directories();
    for (std::string &path : paths)
        path += MISSING;
    for (auto _ : state)
        for (std::string const &path : paths)
            benchmark::DoNotOptimize(access(path.c_str(), 0));
    state.counters["directories"] = static_cast<double>(paths.size());
}

void filesystem_exists(benchmark::State &state)
{
    use_tree();
    std::vector<std::filesystem::path> directories;
    for (std::string const &directory : Tree::directories())
        directories.emplace_back(directory);
    for (auto _ : state)
        for (std::filesystem::path const &directory : directories) {
            std::error_code error;
            benchmark::DoNotOptimize(std::filesystem::exists(directory / MISSING, error));
        }
}

void find_file_miss(benchmark::State &state)
{
    use_tree();
    std::string const name = MISSING;
    for (auto _ : state)
        benchmark::DoNotOptimize(gen_find_file(name));
}

// 100,000 names of files that exist: few directories times few files.
std::vector<std::string> hit_names()
{
    constexpr int DIRECTORIES = 250;
    constexpr int FILES = 400;
    std::string const project = gen_get_project_dir_path();
    std::vector<std::string> files;
    for (int i = 0; i < FILES; ++i)
        std::ofstream(project + files.emplace_back("module_" + std::to_string(i) + ".v"));
    std::vector<std::string> names;
    for (int i = 0; i < DIRECTORIES; ++i) {
        std::string const directory = "unit_" + std::to_string(i);
        std::filesystem::create_directory(project + directory);
        for (std::string const &file : files)
            names.push_back(directory + "/../" + file);
    }
    return names;
}

// 100,000 names for which a search ends before it calls the file system.
std::vector<std::string> miss_names()
{
    std::vector<std::string> names;
    for (int i = 0; i < 100000; ++i)
        names.push_back("c:unit_" + std::to_string(i / 400) + "/../module_" + std::to_string(i % 400) + ".v");
    return names;
}

std::vector<std::string> shuffled(std::vector<std::string> names)
{
    std::shuffle(names.begin(), names.end(), std::mt19937(1));
    return names;
}

using DirectoryMap = std::unordered_map<std::string, FIO_PATH>;

template <std::vector<std::string> (*NAMES)()>
void map_lookup(benchmark::State &state)
{
    use_tree();
    std::vector<std::string> const names = NAMES();
    DirectoryMap map;
    for (std::string const &name : names)
        map.emplace(name, gen_find_file(name));
    std::vector<std::string> const wanted = shuffled(names);
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(FIO_PATH(map.find(wanted[next])->second));
        next = next + 1 < wanted.size() ? next + 1 : 0;
    }
}

template <std::vector<std::string> (*NAMES)()>
void cache_lookup(benchmark::State &state)
{
    use_tree();
    gen_destroy_find_file_cache();
    std::vector<std::string> const names = NAMES();
    for (std::string const &name : names)
        gen_find_file_cache_assisted(name);
    std::vector<std::string> const wanted = shuffled(names);
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(gen_find_file_cache_assisted(wanted[next]));
        next = next + 1 < wanted.size() ? next + 1 : 0;
    }
    gen_destroy_find_file_cache();
}

// Fills a table with names for which the file system is not called.
void map_fill(benchmark::State &state)
{
    use_tree();
    std::vector<std::string> const names = shuffled(miss_names());
    for (auto _ : state) {
        DirectoryMap map;
        for (std::string const &name : names)
            if (map.find(name) == map.end())
                map.emplace(name, gen_find_file(name));
        benchmark::DoNotOptimize(map.size());
    }
}

void cache_fill(benchmark::State &state)
{
    use_tree();
    std::vector<std::string> const names = shuffled(miss_names());
    for (auto _ : state) {
        for (std::string const &name : names)
            benchmark::DoNotOptimize(gen_find_file_cache_assisted(name));
        gen_destroy_find_file_cache();
    }
}

std::string numbered_libraries(std::int64_t count)
{
    std::string paths;
    for (std::int64_t i = 0; i < count; ++i)
        paths += "/projects/libraries/library_" + std::to_string(i) + ';';
    return paths;
}

template <int COUNT, int TIMES>
void append_libraries(benchmark::State &state)
{
    use_tree();
    std::string const former = gen_get_project_library_paths();
    std::string const paths = numbered_libraries(COUNT);
    for (auto _ : state)
        for (int i = 0; i < TIMES; ++i) {
            gen_set_project_library_paths("");
            gen_append_project_library_paths(paths);
        }
    gen_set_project_library_paths(former);
}

BENCHMARK(prebuilt_access)->Name("floor/access_of_prebuilt_paths");
BENCHMARK(filesystem_exists)->Name("peer/filesystem_join_and_exists");
BENCHMARK(find_file_miss)->Name("find_file/miss");
BENCHMARK(map_lookup<hit_names>)->Name("floor/unordered_map_hit_and_copy");
BENCHMARK(cache_lookup<hit_names>)->Name("cache/hit");
BENCHMARK(map_lookup<miss_names>)->Name("floor/unordered_map_hit_and_copy_of_nothing");
BENCHMARK(cache_lookup<miss_names>)->Name("cache/remembered_miss");
BENCHMARK(map_fill)->Name("floor/unordered_map_filled");
BENCHMARK(cache_fill)->Name("cache/filled");
BENCHMARK(append_libraries<1000, 10>)->Name("libraries/ten_times_1000");
BENCHMARK(append_libraries<10000, 1>)->Name("libraries/once_10000");

BenchGoals const GOALS{
    {"miss / access() of prebuilt paths", "find_file/miss", "floor/access_of_prebuilt_paths", 1.10},
    {"miss / std::filesystem, join and ask", "find_file/miss", "peer/filesystem_join_and_exists", 0.65},
    {"cache, hit / unordered_map hit + copy", "cache/hit", "floor/unordered_map_hit_and_copy", 1.5},
    {"cache, remembered miss / unordered_map hit + copy", "cache/remembered_miss",
     "floor/unordered_map_hit_and_copy_of_nothing", 1.5},
    {"cache filled / unordered_map filled", "cache/filled", "floor/unordered_map_filled", 1.5},
    {"10,000 library paths at once / 10 times 1,000", "libraries/once_10000", "libraries/ten_times_1000", 1.3},
};

} // namespace
