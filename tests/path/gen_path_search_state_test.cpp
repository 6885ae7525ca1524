// The state that the first searches of a process fix, and searches with almost nothing set. The installation is that of
// this executable.
#include "gen_path_sys.h"

#include "tests/support/environment.h"
#include "tests/support/platform.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

namespace {

constexpr char const *LIBRARY_PATHS = "KALVERN_LIBRARY_PATHS";

using SourceFiles = std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>>;

std::string find(std::string const &name)
{
    return gen_find_file(name).fullpath();
}

std::string current_directory()
{
    return std::filesystem::current_path().generic_string() + '/';
}

// All source files of a unit, each as its tag and its name under a directory.
std::vector<std::string> source_files(std::string const &name, TempDir const &dir)
{
    SourceFiles files;
    gen_get_source_files(name, &files);
    std::vector<std::string> result;
    for (auto const &[tag, path] : files)
        result.push_back(std::to_string(tag) + ' ' + path.fullpath().substr(dir.text().size() + 1));
    return result;
}

std::string path_list(std::vector<std::string> const &directories)
{
    std::string list;
    for (std::string const &directory : directories)
        list += directory + (ON_WINDOWS ? ';' : ':');
    return list;
}

} // namespace

TEST(GenFindFileState, MakesTheCurrentDirectoryTheProjectDirectory)
{
    TempDir const dir;
    std::string const file = dir.write("here.v", "");
    EXPECT_EQ(gen_find_eda_file("here.v").fullpath(), "");
    gen_get_default_lib_fio_paths();
    gen_find_in_path("here.v", false);
    EXPECT_EQ(gen_get_relative_path_if_starts_with_project_dir(file.c_str()), file);
    EXPECT_EQ(gen_get_relative_path_if_starts_with_project_dir(""), "");
    EXPECT_EQ(gen_get_project_dir_path(), "") << "these need none";
    {
        CurrentDirectory const current(dir.path());
        EXPECT_EQ(find("here.v"), file);
        EXPECT_EQ(gen_get_project_dir_path(), current_directory());
    }
    EXPECT_EQ(find("here.v"), file) << "it stays the project directory";
}

TEST(GenFindFileState, AnAbsolutePathFillsInTheProjectDirectoryToo)
{
    EXPECT_EQ(find("/no/such/file.v"), "");
    EXPECT_EQ(gen_get_project_dir_path(), current_directory());
}

TEST(GenDefaultLibsState, AreMadeByTheQuestionForThem)
{
    std::list<FIO_PATH> const *const paths = gen_get_default_lib_fio_paths();
    ASSERT_NE(paths, nullptr);
    EXPECT_EQ(paths->size(), 23U);
}

TEST(GenFindFileState, PassesOverPlacesThatWereNeverSet)
{
    Environment const unset(LIBRARY_PATHS, nullptr);
    TempDir const dir;
    std::filesystem::create_directory(dir.path() / "ipblocks");
    std::string const file = dir.write("ipblocks/a.v", "");
    gen_set_project_dir_path(dir.text());
    EXPECT_EQ(gen_project_lib_fio_paths(), nullptr);
    EXPECT_EQ(find("a.v"), file);
    EXPECT_EQ(find("missing.v"), "");
    EXPECT_EQ(source_files("a", dir), std::vector<std::string>{"4 ipblocks/a.v"});
    EXPECT_EQ(gen_project_lib_fio_paths(), nullptr);
}

TEST(GenLibraryPathsVariable, IsReadByTheFirstSearchThatComesToIt)
{
    TempDir const dir;
    TempDir const project;
    std::string const file = dir.write("env.v", "");
    std::string const in_project = project.write("first.v", "");
    gen_set_project_dir_path(project.text());
    {
        Environment const unset(LIBRARY_PATHS, nullptr);
        EXPECT_EQ(find("first.v"), in_project) << "doesn't come so far";
        EXPECT_EQ(find(in_project), in_project);
    }
    Environment const set(LIBRARY_PATHS, (";;" + dir.text() + ';').c_str());
    EXPECT_EQ(find("env.v"), file);
    Environment const other(LIBRARY_PATHS, nullptr);
    EXPECT_EQ(find("env.v"), file) << "the first reading is final";
}

TEST(GenLibraryPathsVariable, HasNoEffectAfterwards)
{
    TempDir const dir;
    dir.write("env.v", "");
    {
        Environment const unset(LIBRARY_PATHS, nullptr);
        EXPECT_EQ(find("env.v"), "");
    }
    Environment const set(LIBRARY_PATHS, dir.text().c_str());
    EXPECT_EQ(find("env.v"), "");
    EXPECT_TRUE(source_files("env", dir).empty());
}

TEST(GenLibraryPathsVariable, AnEmptyOneIsFinalToo)
{
    TempDir const dir;
    dir.write("env.v", "");
    {
        Environment const empty(LIBRARY_PATHS, "");
        EXPECT_TRUE(source_files("env", dir).empty());
    }
    Environment const set(LIBRARY_PATHS, dir.text().c_str());
    EXPECT_EQ(find("env.v"), "");
}

TEST(GenLibraryPathsVariable, IsReadBySourceFilesThoughTheyAreAllFound)
{
    TempDir const dir;
    std::string const file = dir.write("env.v", "");
    TempDir const project;
    for (char const *const extension : {"v", "sv", "vhd", "vhdl", "edf", "edif", "blif", "net", "vh", "svh"})
        project.write(std::string("all.") + extension, "");
    gen_set_project_dir_path(project.text());
    {
        Environment const set(LIBRARY_PATHS, dir.text().c_str());
        EXPECT_EQ(source_files("all", project).size(), 10U);
    }
    EXPECT_EQ(find("env.v"), file);
}

TEST(GenSourceFilesState, AProjectDirectoryThatIsFilledInServesItsOwnPlaceAloneAtFirst)
{
    TempDir const dir;
    dir.write("a.v", "");
    dir.write("ipblocks/a.vhd", "");
    CurrentDirectory const current(dir.path());
    EXPECT_EQ(source_files("a", dir), std::vector<std::string>{"1 a.v"});
    EXPECT_EQ(gen_get_project_dir_path(), current_directory());
    EXPECT_EQ(source_files("a", dir), (std::vector<std::string>{"1 a.v", "4 ipblocks/a.vhd"}));
}

TEST(GenProjectLibraryPathsState, AppendingMakesTheListAndRemovingDoesNot)
{
    EXPECT_EQ(gen_project_lib_fio_paths(), nullptr);
    gen_remove_project_library_paths("c:/a");
    gen_append_project_library_paths("");
    EXPECT_EQ(gen_project_lib_fio_paths(), nullptr);
    gen_append_project_library_paths(";");
    std::list<FIO_PATH> const *const paths = gen_project_lib_fio_paths();
    ASSERT_NE(paths, nullptr);
    EXPECT_TRUE(paths->empty());
    EXPECT_EQ(gen_get_project_library_paths(), "");
    gen_append_project_library_paths("c:/a");
    EXPECT_EQ(gen_project_lib_fio_paths(), paths);
    EXPECT_EQ(gen_get_project_library_paths(), "c:/a");
}

TEST(GenFindInPath, GivesTheFirstRegularFile)
{
    TempDir const dir;
    dir.write("first/tool", "");
    dir.write("second/tool", "");
    dir.write("second/only second", "");
    std::filesystem::create_directories(dir.path() / "first" / "only second");
    std::filesystem::create_directories(dir.path() / "second" / "directory");
    dir.write("file", "");
    std::string const list =
        path_list({"", "", dir.text("missing"), dir.text("file"), dir.text("first/"), "", dir.text("second")});
    Environment const path("PATH", list.c_str());
    for (bool const ignored : {false, true}) {
        EXPECT_EQ(gen_find_in_path("tool", ignored), dir.text("first/tool"));
        EXPECT_EQ(gen_find_in_path("only second", ignored), dir.text("second/only second")) << "no directory counts";
        for (char const *const name : {"directory", "missing", "", "..", "/", ";", ":", "tool/", "tool.exe", "*"})
            EXPECT_EQ(gen_find_in_path(name, ignored), "") << name;
        EXPECT_EQ(gen_find_in_path(std::string(100000, 'x'), ignored), "");
    }
}

TEST(GenFindInPath, TakesANameWithADirectory)
{
    TempDir const dir;
    dir.write("first/sub/tool", "");
    Environment const path("PATH", path_list({dir.text("first")}).c_str());
    EXPECT_EQ(gen_find_in_path("sub/tool", false), dir.text("first/sub/tool"));
    EXPECT_EQ(gen_find_in_path("../first/sub\\tool", false), dir.text("first/../first/sub/tool"));
    EXPECT_EQ(gen_find_in_path(dir.text("first/sub/tool"), false), "") << "an absolute one too";
}

TEST(GenFindInPath, FollowsThePlatformsSeparator)
{
    TempDir const dir;
    dir.write("a;b/tool", "");
    {
        Environment const path("PATH", path_list({dir.text("a;b")}).c_str());
        EXPECT_EQ(gen_find_in_path("tool", false), ON_WINDOWS ? "" : dir.text("a;b/tool"));
    }
    CurrentDirectory const current(dir.path());
    dir.write("tool", "");
    for (char const *const nothing : {"", ";", ":", ";;", "::"}) {
        Environment const path("PATH", nothing);
        EXPECT_EQ(gen_find_in_path("tool", false), "") << "PATH is \"" << nothing << '"';
    }
    Environment const path("PATH", ".");
    EXPECT_EQ(gen_find_in_path("tool", false), "./tool");
    Environment const unset("PATH", nullptr);
    EXPECT_EQ(gen_find_in_path("tool", false), "");
}
