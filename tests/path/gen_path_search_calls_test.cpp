// The calls that a search makes to a scripted file system: one for each directory, and no other.
#include "gen_path_sys.h"
#include "tests/support/environment.h"
#include "tests/support/fio_os_fake.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Calls = std::vector<std::string>;

// The directories of gen_find_file() with the project of the fixture, in order.
Calls search_directories()
{
    Calls directories = {"/p/",        "/p/db/",  "/lib_1/",   "/p/lib_2/",   "/user_1/",
                         "/p/user_2/", "/env_1/", "/p/env_2/", "/p/ipblocks/"};
    for (FIO_PATH const &path : *gen_get_default_lib_fio_paths())
        directories.push_back(FIO_PATH().cd(path.fullpath()).fullpath());
    return directories;
}

Calls questions(char const *question, Calls const &directories, std::string const &name)
{
    Calls calls;
    for (std::string const &directory : directories)
        calls.push_back(question + (' ' + directory) + name);
    return calls;
}

class GenSearchQuestions : public testing::Test
{
protected:
    GenSearchQuestions()
    {
        gen_set_project_dir_path("/p");
        gen_set_db_dir_path("/p/db/");
        gen_set_project_library_paths("/lib_1;lib_2/");
        gen_set_user_library_paths("/user_1/;user_2");
        gen_destroy_find_file_cache();
        // The environment is read once per process, by whatever search comes first.
        Environment const library_paths("KALVERN_LIBRARY_PATHS", "/env_1;env_2");
        gen_find_file("first.v");
        fio_fake().entries.clear();
        fio_fake().calls.clear();
    }

    // The calls since the last call of this function.
    static Calls calls() { return std::exchange(fio_fake().calls, {}); }
};

} // namespace

TEST_F(GenSearchQuestions, AMissAsksOnceForEachDirectory)
{
    for (char const *const name : {"a.v", "sub/a.v", "a name.v"}) {
        EXPECT_EQ(gen_find_file(name).fullpath(), "");
        EXPECT_EQ(calls(), questions("exists", search_directories(), name));
    }
    EXPECT_EQ(search_directories().size(), 32U);
    EXPECT_EQ(gen_find_eda_file("a.v").fullpath(), "");
    EXPECT_THAT(calls(), testing::SizeIs(8));
}

TEST_F(GenSearchQuestions, AHitEndsTheSearch)
{
    Calls const directories = search_directories();
    for (std::size_t i = 0; i < directories.size(); ++i) {
        std::string const file = directories[i] + "hit.v";
        fio_fake().entries = {{file, false}};
        EXPECT_EQ(gen_find_file("hit.v").fullpath(), file);
        EXPECT_EQ(calls(), questions("exists", Calls(directories.begin(), directories.begin() + i + 1), "hit.v"));
    }
}

TEST_F(GenSearchQuestions, ACachedResultAsksNothing)
{
    fio_fake().entries = {{"/user_1/known.v", false}};
    for (char const *const name : {"known.v", "unknown.v", ""}) {
        std::string const path = gen_find_file_cache_assisted(name).fullpath();
        calls();
        EXPECT_EQ(gen_find_file_cache_assisted(name).fullpath(), path) << name;
        EXPECT_THAT(calls(), IsEmpty()) << name;
    }
}

TEST_F(GenSearchQuestions, AnAbsolutePathAsksOnce)
{
    fio_fake().entries = {{"/q/a.v", false}};
    EXPECT_EQ(gen_find_file("/q/a.v").fullpath(), "/q/a.v");
    EXPECT_THAT(calls(), ElementsAre("exists /q/a.v"));
    EXPECT_EQ(gen_find_file("//host/share/a.v").fullpath(), "");
    EXPECT_THAT(calls(), ElementsAre("exists //host/share/a.v"));
    fio_fake().entries["//host/share/a.v"] = false;
    EXPECT_EQ(gen_find_file("\\\\host\\share\\a.v").fullpath(), "//host/share/a.v")
        << "network paths are taken unchanged";
    EXPECT_EQ(gen_find_eda_file("//host/share/a.v").fullpath(), "//host/share/a.v");
    EXPECT_THAT(calls(), testing::SizeIs(2));
}

TEST_F(GenSearchQuestions, DirectoriesOfEachFormLeadToFiles)
{
    gen_set_project_library_paths("//host/share;\\\\HOST\\a b\\;c:/lib;d:lib;./x/../lib;../lib;\xc3\xa4");
    gen_set_user_library_paths("");
    gen_find_file("a.v");
    Calls const asked = calls();
    ASSERT_GT(asked.size(), 9U);
    EXPECT_THAT(Calls(asked.begin() + 2, asked.begin() + 9),
                ElementsAre("exists //host/share/a.v", "exists //HOST/a b/a.v", "exists c:/lib/a.v", "exists d:lib/a.v",
                            "exists /p/lib/a.v", "exists /lib/a.v", "exists /p/\xc3\xa4/a.v"));
}

TEST_F(GenSearchQuestions, APathThatLeadsNowhereAsksNothing)
{
    for (char const *const name : {"", "c:a/b.v", "c:../b.v"}) {
        EXPECT_EQ(gen_find_file(name).fullpath(), "") << name;
        EXPECT_EQ(gen_find_eda_file(name).fullpath(), "") << name;
    }
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(GenSearchQuestions, AnIncludeAsksOnceMoreNextToTheIncluder)
{
    std::string full;
    std::string relative;
    EXPECT_FALSE(gen_find_include_file("a.vh", "/q/rtl/b.v", "b.v", &full, &relative));
    Calls expected = questions("exists", search_directories(), "a.vh");
    expected.push_back("exists /q/rtl/a.vh");
    EXPECT_EQ(calls(), expected);
    EXPECT_FALSE(gen_find_include_file("/a.vh", "/q/rtl/b.v", "b.v", &full, &relative));
    EXPECT_THAT(calls(), ElementsAre("exists /a.vh"));
    fio_fake().entries = {{"/p/a.vh", false}};
    EXPECT_TRUE(gen_find_include_file("a.vh", "/q/rtl/b.v", "b.v", &full, &relative));
    EXPECT_THAT(calls(), ElementsAre("exists /p/a.vh"));
}

TEST_F(GenSearchQuestions, AFileInPathAsksOnceForEachElement)
{
    fio_fake().entries = {{"/one/tool", true}, {"/two/tool", false}, {"/three/tool", false}};
    Environment const path("PATH", "/one::/two/:/three"); // the separator of the scripted system is ":"
    EXPECT_EQ(gen_find_in_path("tool", false), "/two/tool");
    EXPECT_THAT(calls(), ElementsAre("status /one/tool", "status /two/tool"));
    EXPECT_EQ(gen_find_in_path("no_tool", false), "");
    EXPECT_THAT(calls(), ElementsAre("status /one/no_tool", "status /two/no_tool", "status /three/no_tool"));
}

TEST_F(GenSearchQuestions, UnreadableDirectoriesGiveNothing)
{
    std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>> files;
    EXPECT_FALSE(gen_get_source_files_from_kalvern_lib("*", &files));
    EXPECT_THAT(calls(), testing::SizeIs(23));
    EXPECT_FALSE(gen_get_source_files("*", &files));
    EXPECT_EQ(calls(), questions("list", search_directories(), ""));
    EXPECT_THAT(gen_get_all_device_files(), IsEmpty());
    EXPECT_THAT(calls(), ElementsAre("list /fake/bin/"));
}

TEST_F(GenSearchQuestions, AStarIsAPatternOnlyIfItIsTheWholeName)
{
    Calls const directories = search_directories();
    for (std::string const &directory : {directories[directories.size() - 2], directories.back()})
        fio_fake().entries[directory + "*a.v"] = false;
    std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>> files;
    EXPECT_TRUE(gen_get_source_files_from_kalvern_lib("*a", &files));
    EXPECT_THAT(files, testing::SizeIs(1)) << "one of each extension";
}

TEST_F(GenSearchQuestions, SourceFilesEndWithTheLastExtension)
{
    for (char const *const extension : {"v", "sv", "vhd", "vhdl", "edf", "edif", "blif", "net", "vh"})
        fio_fake().entries[std::string("/p/unit.") + extension] = false;
    fio_fake().entries["/lib_1/unit.svh"] = false;
    std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>> files;
    EXPECT_TRUE(gen_get_source_files("unit", &files));
    EXPECT_EQ(files.size(), 10U);
    Calls const asked = calls();
    EXPECT_EQ(asked.size(), 13U) << "ten in the first place, one in each of the three directories after it";
    EXPECT_EQ(Calls(asked.end() - 3, asked.end()),
              (Calls{"is_regular /p/db/unit.svh", "is_regular /lib_1/unit.svh", "is_regular /p/lib_2/unit.svh"}));
}
