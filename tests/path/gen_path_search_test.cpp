// Searches in an installation and a project on disk.
#include "gen_path_sys.h"

#include "tests/support/internal_error.h"
#include "tests/support/platform.h"
#include "tests/support/search_world.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ExitedWithCode;

namespace {

using GenFindFile = SearchTest;
using GenFindEdaFile = SearchTest;
using GenFindFileCache = SearchTest;
using GenFindIncludeFile = SearchTest;
using GenDefaultLibs = SearchTest;
using GenRelativePath = SearchTest;
using GenRelativePathDeathTest = SearchTest;

std::string find(std::string const &name)
{
    return gen_find_file(name).fullpath();
}

std::string find_eda(std::string const &name)
{
    return gen_find_eda_file(name).fullpath();
}

std::string find_cached(std::string const &name)
{
    return gen_find_file_cache_assisted(name).fullpath();
}

// Is the path a link that leads back to itself? False where links can't be made.
bool make_loop(SearchWorld const &world, std::string const &name)
{
    std::error_code error;
    std::filesystem::create_symlink(name, world.dir().path() / name, error);
    return !error;
}

// A name that is in two directories, by a name of its own for each pair.
std::string name_of_pair(std::size_t first, std::size_t second)
{
    return "pair_" + std::to_string(first) + '_' + std::to_string(second) + ".v";
}

} // namespace

TEST_F(GenFindFile, TheEarlierOfEachPairOfPlacesWins)
{
    std::vector<SearchPlace> const &places = SearchWorld::places();
    for (std::size_t first = 0; first < places.size(); ++first)
        for (std::size_t second = first; second < places.size(); ++second) {
            std::string const name = name_of_pair(first, second);
            std::string const winner = world().put(places[first].directory + name);
            world().put(places[second].directory + name);
            EXPECT_EQ(find(name), winner) << "also in " << places[second].directory;
        }
}

TEST_F(GenFindEdaFile, TheEarlierOfEachPairOfLibrariesWins)
{
    std::vector<std::string> const directories = SearchWorld::eda_directories();
    for (std::size_t first = 0; first < directories.size(); ++first)
        for (std::size_t second = first; second < directories.size(); ++second) {
            std::string const name = "eda_" + name_of_pair(first, second);
            std::string const winner = world().put(directories[first] + name);
            world().put(directories[second] + name);
            EXPECT_EQ(find_eda(name), winner) << "also in " << directories[second];
            EXPECT_EQ(find(name), "") << "only gen_find_eda_file() looks in " << directories[first];
        }
}

TEST_F(GenFindEdaFile, LooksInNoOtherPlace)
{
    for (SearchPlace const &place : SearchWorld::places()) {
        std::string const path = world().put(place.directory + "not_eda.v");
        EXPECT_EQ(find_eda("not_eda.v"), "") << place.directory;
        EXPECT_EQ(find_eda(path), path) << "absolute paths are taken unchanged";
        world().remove(place.directory + "not_eda.v");
    }
    EXPECT_EQ(find_eda(""), "");
    EXPECT_EQ(find_eda(world().text("missing.v")), "");
}

TEST_F(GenFindFile, AnAbsolutePathIsTakenUnchanged)
{
    std::string const file = world().put("elsewhere/own.v");
    EXPECT_EQ(find(file), file);
    EXPECT_EQ(find(world().text("elsewhere/")), world().text("elsewhere/")) << "directories too";

    world().put("project/missing.v");
    EXPECT_EQ(find("missing.v"), world().text("project/missing.v"));
    EXPECT_EQ(find(world().text("elsewhere/missing.v")), "");
    EXPECT_EQ(find("/missing.v"), "");
    EXPECT_EQ(find("\\missing.v"), "");
    EXPECT_EQ(find("q:/missing.v"), "");
    EXPECT_EQ(find("//zel_no_such_host/share/missing.v"), "");
    EXPECT_EQ(find("\\\\zel_no_such_host\\share\\missing.v"), "");
    EXPECT_EQ(find("//missing.v"), "");
}

TEST_F(GenFindFile, ARelativePathCountsFromEachPlace)
{
    std::filesystem::create_directories(world().dir().path() / "user_lib" / "sub");
    std::string const file = world().put("user_lib/sub/deep.v");
    std::string const beside = world().put("elsewhere/beside.v");
    EXPECT_EQ(find("sub/deep.v"), file);
    EXPECT_EQ(find("sub\\deep.v"), file);
    EXPECT_EQ(find("deep.v"), "");
    EXPECT_EQ(FIO_PATH(find("./sub/../sub/deep.v")).become_simplified().fullpath(), file);
    EXPECT_EQ(FIO_PATH(find("../elsewhere/beside.v")).become_simplified().fullpath(), beside);
}

TEST_F(GenFindFile, ADriveWithoutASlashLeadsNowhereAfterADirectory)
{
    EXPECT_EQ(find("c:sub/missing.v"), "");
    EXPECT_EQ(find("c:../project/missing.v"), "");
    if (ON_WINDOWS)
        return;
    std::string const file = world().put("project/c:bare.v");
    EXPECT_EQ(find("c:bare.v"), file) << "a bare name like any other";
    std::filesystem::create_directories(world().dir().path() / "project" / "c:sub");
    world().put("project/c:sub/b.v");
    EXPECT_EQ(find("c:sub/b.v"), "");
}

TEST_F(GenFindFile, FindsNamesOfAnyKind)
{
    std::string const longest(255, 'n');
    for (std::string const &name :
         {std::string("name with blanks.v"), std::string(" .v"), std::string("gr\xc3\xbc\xc3\x9f.v"),
          std::string("a;b.v"), std::string("a,b@c$d%e.v"), std::string(".v"), longest}) {
        std::string const path = world().put("user_lib/" + name);
        EXPECT_EQ(find(name), path);
    }
    EXPECT_EQ(find(longest + 'n'), "");
}

TEST_F(GenFindFile, FindsDirectories)
{
    std::filesystem::create_directories(world().dir().path() / "user_lib" / "directory.v");
    EXPECT_EQ(find("directory.v"), world().text("user_lib/directory.v"));
    EXPECT_EQ(find("directory.v/"), world().text("user_lib/directory.v") + '/');
}

TEST_F(GenFindFile, FindsNothingForWhatCannotBeThere)
{
    std::string const file = world().put("elsewhere/file");
    bool const has_loop = make_loop(world(), "loop");
    gen_set_project_library_paths(world().text("no_such_directory") + ';' + file + ';' + world().text("loop") +
                                  ";;.;*?");
    gen_set_user_library_paths(world().text("elsewhere"));
    std::string const last = world().put("elsewhere/last.v");
    EXPECT_EQ(find("last.v"), last) << "bad directories are passed over";
    EXPECT_EQ(find("last.v/"), "") << "a file is no directory";
    EXPECT_EQ(find("last.v/last.v"), "");
    if (has_loop) {
        EXPECT_EQ(find("../loop/last.v"), "");
        EXPECT_EQ(find(world().text("loop")), "");
        EXPECT_EQ(find(world().text("loop/last.v")), "");
    }
    EXPECT_EQ(find(""), "");
    EXPECT_EQ(find("no_such_file.v"), "");
    EXPECT_EQ(find("\n"), "");
    EXPECT_EQ(find("?*<>|\".v"), "");
}

TEST_F(GenFindFile, ANameOfOnlySeparatorsIsTheRoot)
{
    for (char const *const name : {"/", "//", "///", "\\", "\\/\\"})
        EXPECT_EQ(find(name), "/") << name;
    for (char const *const name : {";", ";;"})
        EXPECT_EQ(find(name), "") << name;
}

TEST_F(GenFindFile, FindsNothingBeyondThePlatformsLimits)
{
    std::string deep;
    while (deep.size() < 40000)
        deep += "directory/";
    EXPECT_EQ(find(deep + "file.v"), "");
    EXPECT_EQ(find('/' + deep + "file.v"), "");
    EXPECT_EQ(find(std::string(100000, 'x')), "");
    gen_set_user_library_paths('/' + deep + ';' + deep);
    EXPECT_EQ(find("file.v"), "");
    EXPECT_EQ(find_cached(deep), "");
    EXPECT_EQ(find_cached(deep), "");
}

TEST_F(GenFindFile, RelativeDirectoriesCountFromTheProjectDirectoryOfTheMoment)
{
    for (char const *const project : {"project", "elsewhere", "project"}) {
        std::string const library = std::string(project) + "/moving";
        std::filesystem::create_directories(world().dir().path() / library);
        std::string const file = world().put(library + "/of_" + project + ".v");
        gen_set_project_dir_path(world().text(project));
        gen_set_project_library_paths("moving");
        EXPECT_EQ(find(std::string("of_") + project + ".v"), file);
        gen_set_project_library_paths("");
        gen_set_user_library_paths("moving/");
        EXPECT_EQ(find(std::string("of_") + project + ".v"), file);
        gen_set_user_library_paths("");
    }
    std::filesystem::create_directories(world().dir().path() / "elsewhere" / "env_lib");
    gen_set_project_dir_path(world().text("elsewhere"));
    std::string const file = world().put("elsewhere/env_lib/of_env.v");
    EXPECT_EQ(find("of_env.v"), file);
    gen_set_project_dir_path(world().text("project"));
    EXPECT_EQ(find("of_env.v"), "");
}

TEST_F(GenFindFile, FollowsEachChangeOfAPlace)
{
    struct SetterCase
    {
        char const *name;
        void (*set)(std::string);
    };
    constexpr SetterCase CASES[] = {
        {"project directory", gen_set_project_dir_path},
        {"database directory", gen_set_db_dir_path},
        {"project library paths", gen_set_project_library_paths},
        {"user library paths", gen_set_user_library_paths},
    };
    for (char const *const place : {"changed_1", "changed_2"}) {
        std::filesystem::create_directories(world().dir().path() / place / "ipblocks");
        std::string const file = world().put(std::string(place) + "/changed.v");
        for (SetterCase const &c : CASES) {
            EXPECT_EQ(find("changed.v"), "") << c.name << " before " << place;
            c.set(world().text(place));
            EXPECT_EQ(find("changed.v"), file) << c.name;
            c.set(world().text("elsewhere"));
        }
        std::string const ipblock = world().put(std::string(place) + "/ipblocks/changed_ip.v");
        gen_set_project_dir_path(world().text(place));
        EXPECT_EQ(find("changed_ip.v"), ipblock);
        gen_set_project_dir_path(world().text("elsewhere"));
    }
}

TEST_F(GenFindFile, ARelativeProjectDirectoryGivesAbsoluteHits)
{
    CurrentDirectory const current(world().dir().path());
    gen_set_project_dir_path("project");
    world().put("project/relative.v");
    world().put("project/project_lib/relative_lib.v");
    EXPECT_EQ(find("relative.v"), world().text("project/relative.v"));
    EXPECT_EQ(find("relative_lib.v"), world().text("project/project_lib/relative_lib.v"));
}

TEST_F(GenFindFile, TheUsersIpSearchPathsAreNotLookedAt)
{
    world().put("elsewhere/ip.v");
    gen_set_user_ip_search_paths(world().text("elsewhere"));
    EXPECT_EQ(find("ip.v"), "");
    gen_set_user_ip_search_paths("");
}

TEST_F(GenFindFileCache, ContinuesWithTheOldResults)
{
    EXPECT_EQ(find_cached("stale.v"), "");
    std::string const in_library = world().put("user_lib/stale.v");
    EXPECT_EQ(find("stale.v"), in_library);
    EXPECT_EQ(find_cached("stale.v"), "") << "a miss is remembered";

    gen_destroy_find_file_cache();
    EXPECT_EQ(find_cached("stale.v"), in_library);
    std::string const in_project = world().put("project/stale.v");
    EXPECT_EQ(find("stale.v"), in_project);
    EXPECT_EQ(find_cached("stale.v"), in_library) << "a file in an earlier place";

    gen_destroy_find_file_cache();
    EXPECT_EQ(find_cached("stale.v"), in_project);
    gen_set_project_dir_path(world().text("elsewhere"));
    gen_set_user_library_paths("");
    EXPECT_EQ(find("stale.v"), "");
    EXPECT_EQ(find_cached("stale.v"), in_project) << "other directories";
    world().remove("project/stale.v");
    EXPECT_EQ(find_cached("stale.v"), in_project) << "a file that has gone";
}

TEST_F(GenFindFileCache, MayBeDestroyedAtAnyTime)
{
    gen_destroy_find_file_cache();
    gen_destroy_find_file_cache();
    EXPECT_EQ(find_cached("cached_again.v"), "");
    std::string const file = world().put("project/cached_again.v");
    gen_destroy_find_file_cache();
    gen_destroy_find_file_cache();
    EXPECT_EQ(find_cached("cached_again.v"), file);
}

TEST_F(GenFindFileCache, DistinguishesNamesByTheirBytes)
{
    EXPECT_EQ(find_cached("case.v"), "");
    std::string const file = world().put("project/CASE.v");
    EXPECT_EQ(find_cached("CASE.v"), file) << "another entry";
    EXPECT_EQ(find_cached("case.v"), "");

    std::string const with_zero("CASE.v\0x", 8);
    EXPECT_EQ(find_cached(with_zero), find(with_zero)) << "the same hash";
    EXPECT_EQ(find_cached("CASE.v"), file);
    EXPECT_EQ(find_cached(""), "");
    EXPECT_EQ(find_cached(std::string(1, '\0')), find(std::string(1, '\0')));
}

TEST_F(GenFindFileCache, GivesCopies)
{
    std::string const file = world().put("project/copied.v");
    FIO_PATH copy = gen_find_file_cache_assisted("copied.v");
    copy.cd("..");
    EXPECT_EQ(find_cached("copied.v"), file);
    gen_destroy_find_file_cache();
    EXPECT_NE(copy.fullpath(), "");
}

namespace {

// Paths without a leading slash are under the world; null stays null.
struct IncludeCase
{
    char const *what;
    char const *name;
    char const *includer;
    char const *parent;
    bool is_hit;
    char const *full;
    char const *relative; // as it is
};
constexpr IncludeCase INCLUDE_CASES[] = {
    {"null name", nullptr, "elsewhere/a.v", "b.v", false, "", ""},
    {"nowhere", "inc_missing.vh", "elsewhere/rtl/a.v", "rtl/a.v", false, "", ""},
    {"no includer", "inc_beside.vh", nullptr, "rtl/a.v", false, "", ""},
    {"in the project", "inc_project.vh", "elsewhere/rtl/a.v", "rtl/a.v", true, "project/inc_project.vh", ""},
    {"in the project, no includer", "inc_project.vh", nullptr, nullptr, true, "project/inc_project.vh", ""},
    {"in the project, up and down", "db/../inc_project.vh", nullptr, nullptr, true, "project/inc_project.vh", ""},
    {"in both", "inc_both.vh", "elsewhere/rtl/a.v", "rtl/a.v", true, "project/inc_both.vh", ""},
    {"in a library", "inc_library.vh", "elsewhere/rtl/a.v", "rtl/a.v", true, "user_lib/inc_library.vh", ""},
    {"next to the includer", "inc_beside.vh", "elsewhere/rtl/a.v", "rtl/a.v", true, "elsewhere/rtl/inc_beside.vh",
     "rtl/inc_beside.vh"},
    {"parent elsewhere", "inc_beside.vh", "elsewhere/rtl/a.v", "x/y/../z/top.v", true, "elsewhere/rtl/inc_beside.vh",
     "x/z/inc_beside.vh"},
    {"bare parent", "inc_beside.vh", "elsewhere/rtl/a.v", "top.v", true, "elsewhere/rtl/inc_beside.vh",
     "inc_beside.vh"},
    {"no parent", "inc_beside.vh", "elsewhere/rtl/a.v", nullptr, true, "elsewhere/rtl/inc_beside.vh", "inc_beside.vh"},
    {"below the includer", "deep\\inc_deep.vh", "elsewhere/rtl/a.v", "rtl/a.v", true, "elsewhere/rtl/deep/inc_deep.vh",
     "rtl/deep/inc_deep.vh"},
    {"above the includer", "../rtl/./inc_beside.vh", "elsewhere/rtl/a.v", "a.v", true, "elsewhere/rtl/inc_beside.vh",
     "../rtl/inc_beside.vh"},
    {"includer a directory", "inc_beside.vh", "elsewhere/rtl/", "rtl/", true, "elsewhere/rtl/inc_beside.vh",
     "rtl/inc_beside.vh"},
    {"includer missing", "inc_beside.vh", "elsewhere/no/a.v", "no/a.v", false, "", ""},
    {"empty name", "", "elsewhere/rtl/a.v", "rtl/a.v", true, "elsewhere/rtl/", "rtl/"},
    {"empty includer", "inc_beside.vh", "", "rtl/a.v", false, "", ""},
    {"empty name and includer", "", "", "rtl/a.v", false, "", ""},
    {"absolute, missing", "/inc_beside.vh", "elsewhere/rtl/a.v", "rtl/a.v", false, "", ""},
    {"drive, missing", "c:inc_beside.vh", "elsewhere/rtl/a.v", "rtl/a.v", false, "", ""},
};

} // namespace

TEST_F(GenFindIncludeFile, LooksNextToTheIncluderLast)
{
    std::filesystem::create_directories(world().dir().path() / "elsewhere" / "rtl" / "deep");
    for (char const *const file :
         {"project/inc_project.vh", "project/inc_both.vh", "user_lib/inc_library.vh", "elsewhere/rtl/inc_beside.vh",
          "elsewhere/rtl/inc_both.vh", "elsewhere/rtl/deep/inc_deep.vh", "elsewhere/rtl/inc_library.vh"})
        world().put(file);
    auto const placed = [](char const *path) { return *path == '\0' ? std::string() : world().text(path); };
    for (IncludeCase const &c : INCLUDE_CASES) {
        std::string full = "former";
        std::string relative = "former";
        std::string const includer = c.includer == nullptr ? "" : placed(c.includer);
        bool const is_hit = gen_find_include_file(c.name, c.includer == nullptr ? nullptr : includer.c_str(), c.parent,
                                                  &full, &relative);
        EXPECT_EQ(is_hit, c.is_hit) << c.what;
        EXPECT_EQ(full, placed(c.full)) << c.what;
        EXPECT_EQ(relative, c.relative) << c.what;
    }
}

TEST_F(GenFindIncludeFile, AnAbsoluteNameIsTakenUnchanged)
{
    std::string const file = world().put("elsewhere/inc_absolute.vh");
    std::string full;
    std::string relative;
    EXPECT_TRUE(gen_find_include_file((world().text("project/../elsewhere/inc_absolute.vh")).c_str(), nullptr, nullptr,
                                      &full, &relative));
    EXPECT_EQ(full, file);
    EXPECT_EQ(relative, "");
}

TEST_F(GenFindIncludeFile, OutputsMayBeNull)
{
    std::filesystem::create_directories(world().dir().path() / "elsewhere" / "rtl");
    world().put("elsewhere/rtl/inc_null.vh");
    std::string const includer = world().text("elsewhere/rtl/a.v");
    std::string full = "former";
    std::string relative = "former";
    EXPECT_FALSE(gen_find_include_file(nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_FALSE(gen_find_include_file("inc_no.vh", includer.c_str(), "a.v", nullptr, nullptr));
    EXPECT_TRUE(gen_find_include_file("inc_null.vh", includer.c_str(), "a.v", nullptr, nullptr));
    EXPECT_TRUE(gen_find_include_file("inc_null.vh", includer.c_str(), "a.v", &full, nullptr));
    EXPECT_TRUE(gen_find_include_file("inc_null.vh", includer.c_str(), "a.v", nullptr, &relative));
    EXPECT_EQ(full, world().text("elsewhere/rtl/inc_null.vh"));
    EXPECT_EQ(relative, "inc_null.vh");
}

TEST_F(GenFindIncludeFile, ABareIncluderCountsFromTheCurrentDirectory)
{
    CurrentDirectory const current(world().dir().path() / "elsewhere");
    world().put("elsewhere/inc_bare.vh");
    std::string full;
    std::string relative;
    EXPECT_TRUE(gen_find_include_file("./inc_bare.vh", "a.v", "rtl/a.v", &full, &relative));
    EXPECT_EQ(full, "inc_bare.vh") << "no directory is made up";
    EXPECT_EQ(relative, "rtl/inc_bare.vh");
}

TEST_F(GenFindIncludeFile, AnInputInAnOutputReadsAsEmpty)
{
    std::filesystem::create_directories(world().dir().path() / "elsewhere" / "rtl");
    std::string const includer = world().text("elsewhere/rtl/a.v");
    for (char const *const input : {"inc.vh", "an include of a name that no short text holds.vh"}) {
        std::string full = input;
        std::string relative;
        EXPECT_TRUE(gen_find_include_file(full.c_str(), includer.c_str(), "rtl/a.v", &full, &relative)) << input;
        EXPECT_EQ(full, world().text("elsewhere/rtl/")) << input;
        EXPECT_EQ(relative, "rtl/") << input;

        full = input;
        EXPECT_TRUE(gen_find_include_file("", includer.c_str(), full.c_str(), &full, &relative)) << input;
        EXPECT_EQ(full, world().text("elsewhere/rtl/")) << input;
        EXPECT_EQ(relative, "") << input;
    }
}

TEST_F(GenDefaultLibs, AreTheListThatIsSearched)
{
    std::list<FIO_PATH> *const paths = gen_get_default_lib_fio_paths();
    ASSERT_NE(paths, nullptr);
    std::vector<std::string> expected;
    for (SearchPlace const &place : SearchWorld::places())
        if (place.directory.compare(0, 6, "suite/") == 0)
            expected.push_back(world().text(place.directory));
    expected.back().pop_back(); // wys_stub, alone without a slash
    std::vector<std::string> directories;
    for (FIO_PATH const &path : *paths)
        directories.push_back(path.fullpath());
    EXPECT_EQ(directories, expected);
    EXPECT_EQ(directories.size(), 23U);

    std::string const file = world().put("elsewhere/live.v");
    EXPECT_EQ(find("live.v"), "");
    paths->emplace_back(world().text("elsewhere"));
    EXPECT_EQ(find("live.v"), file);
    paths->pop_back();
    EXPECT_EQ(find("live.v"), "");
    EXPECT_EQ(gen_get_default_lib_fio_paths(), paths);
}

TEST_F(GenRelativePath, StartsAfterTheProjectDirectory)
{
    struct RelativeCase
    {
        char const *project_dir;
        char const *path;
        char const *relative;
    };
    constexpr RelativeCase CASES[] = {
        {"c:/p/", "C:\\P\\a\\b.v", "a/b.v"},
        {"c:/p", "c:/p/a/b.v", "a/b.v"},
        {"c:\\p\\", "c:/p//a\\b.v", "a/b.v"},
        {"c:/p/", "c:/q/b.v", "c:/q/b.v"},
        {"c:/p/", "C:\\Q\\b.v", "C:\\Q\\b.v"}, // as it was given
        {"c:/p/", "c:/pp/b.v", "c:/pp/b.v"},
        {"c:/p/", "c:/p", "c:/p"},
        {"c:/p/", "c:/p/", ""},
        {"c:/p/", "c:/p/../q/b.v", "../q/b.v"}, // by text alone
        {"c:/p/", "d:b.v", "d:b.v"},
        {"c:/p/", "c:b.v", "c:b.v"},
        {"d:p", "d:p/b.v", "d:p/b.v"}, // neither absolute nor relative
        {"/p/", "/P/A.v", "A.v"},
        {"/", "/a/b.v", "a/b.v"},
        {"//host/p/", "\\\\HOST\\p\\a.v", "a.v"},
        {"c:/p/", "", ""},
        {"", "/p/a.v", "/p/a.v"}, // no project directory
        {"rel/", "/rel/a.v", "/rel/a.v"},
        {"c:/p/", "no_such_file.v", "no_such_file.v"},
        {"c:/p/", "no\\such/../file.v", "no\\such/../file.v"},
    };
    for (RelativeCase const &c : CASES) {
        gen_set_project_dir_path(c.project_dir);
        EXPECT_EQ(gen_get_relative_path_if_starts_with_project_dir(c.path), c.relative)
            << c.project_dir << " and " << c.path;
    }
}

TEST_F(GenRelativePath, AZeroInTheProjectDirectoryEndsTheComparison)
{
    gen_set_project_dir_path(std::string("/p\0q", 4));
    EXPECT_EQ(gen_get_relative_path_if_starts_with_project_dir("/p"), "");
    EXPECT_EQ(gen_get_relative_path_if_starts_with_project_dir("/p/a.v"), "/p/a.v");
}

TEST_F(GenRelativePath, ARelativePathIsLookedFor)
{
    std::filesystem::create_directories(world().dir().path() / "project" / "rtl");
    world().put("project/rtl/top.v");
    world().put("project/user_lib/in_lib.v");
    world().put("user_lib/outside.v");
    EXPECT_EQ(gen_get_relative_path_if_starts_with_project_dir("rtl\\top.v"), "rtl/top.v");
    EXPECT_EQ(gen_get_relative_path_if_starts_with_project_dir("in_lib.v"), "user_lib/in_lib.v");
    EXPECT_EQ(gen_get_relative_path_if_starts_with_project_dir("outside.v"), "outside.v") << "found, but elsewhere";
}

TEST_F(GenRelativePathDeathTest, NullIsAnInternalError)
{
    EXPECT_EXIT(gen_get_relative_path_if_starts_with_project_dir(nullptr), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("path != NULL", "gen_path*"));
}
