#include "gen_path_sys.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

namespace {

// A directory's text as the getters give it.
std::string with_slash(std::string const &directory)
{
    return directory + '/';
}

std::string current_directory()
{
    return with_slash(std::filesystem::current_path().generic_string());
}

} // namespace

TEST(GenDirNames, AreTheNamesOfTheDirectories)
{
    EXPECT_STREQ(GEN_DB_DIR_NAME, "db");
    EXPECT_STREQ(GEN_KDB_DIR_NAME, "kdb");
    EXPECT_STREQ(GEN_PROJECT_IPBLOCKS_DIR_NAME, "ipblocks");
    EXPECT_STREQ(GEN_INCR_DB_DIR_NAME, "incremental_db");
    EXPECT_STREQ(GEN_PERSONA_DIR_NAME, "persona");
}

TEST(GenPathState, IsEmptyAtStart)
{
    EXPECT_EQ(gen_get_db_dir_path().fullpath(), "");
    EXPECT_EQ(gen_get_db_dir_path_string(), "");
    EXPECT_FALSE(gen_check_db_dir_path());
    EXPECT_EQ(gen_get_db_dir_full_name().fullpath(), "");
    EXPECT_EQ(gen_get_incr_db_dir_path_string(), "");
    EXPECT_EQ(gen_get_project_dir_path(), "");
    EXPECT_EQ(gen_get_project_ipblocks_dir_path().fullpath(), "");
    EXPECT_EQ(gen_get_persona_dir_path_string(), "");
    EXPECT_EQ(gen_get_project_library_paths(), "");
    EXPECT_EQ(gen_get_user_library_paths(), "");
    EXPECT_EQ(gen_get_user_ip_search_paths(), "");
}

TEST(GenDbDir, IsGivenBackUntilItIsSetAgain)
{
    for (char const *const path : {"c:/p/db/", "c:\\q\\db\\", "rel/db", ""}) {
        std::string const text = FIO_PATH(path).fullpath();
        gen_set_db_dir_path(path);
        EXPECT_EQ(gen_get_db_dir_path().fullpath(), text) << path;
        EXPECT_EQ(gen_get_db_dir_path_string(), text) << path;
        EXPECT_TRUE(gen_check_db_dir_path()) << path;
    }
}

TEST(GenDbDir, TheEmptyTextCountsAsSet)
{
    ASSERT_FALSE(gen_check_db_dir_path());
    gen_set_db_dir_path("");
    EXPECT_TRUE(gen_check_db_dir_path());
}

TEST(GenDbDir, AndItsFullNameDoNotTouchEachOther)
{
    gen_set_db_dir_full_name(FIO_PATH("/full/name"));
    EXPECT_EQ(gen_get_db_dir_full_name().fullpath(), "/full/name");
    EXPECT_FALSE(gen_check_db_dir_path());

    gen_set_db_dir_path("/p/db/");
    EXPECT_EQ(gen_get_db_dir_full_name().fullpath(), "/full/name");

    gen_set_db_dir_full_name(FIO_PATH("/other"));
    EXPECT_EQ(gen_get_db_dir_full_name().fullpath(), "/other");
    EXPECT_EQ(gen_get_db_dir_path_string(), "/p/db/");
}

TEST(GenDbDir, CopiesAreTheCallers)
{
    gen_set_db_dir_path("/p/db/");
    FIO_PATH copy = gen_get_db_dir_path();
    copy.cd("..");
    EXPECT_EQ(gen_get_db_dir_path_string(), "/p/db/");
}

TEST(GenIncrDbDir, ReplacesTheLastThreeCharacters)
{
    struct IncrCase
    {
        char const *db_dir;
        char const *incr_db_dir;
    };
    constexpr IncrCase CASES[] = {
        {"", ""},
        {"c:/p/db/", "c:/p/incremental_db/"},
        {"db/", "incremental_db/"},
        // Whatever they are.
        {"c:/p/kdb/", "c:/p/kincremental_db/"},
        {"c:/p/db", "c:/pincremental_db/"},
        {"abc", "incremental_db/"},
        // Nothing is left of a shorter text.
        {"d/", "incremental_db/"},
        {"d", "incremental_db/"},
    };
    for (IncrCase const &c : CASES) {
        gen_set_db_dir_path(c.db_dir);
        EXPECT_EQ(gen_get_incr_db_dir_path_string(), c.incr_db_dir) << c.db_dir;
    }
}

TEST(GenProjectDir, LeadsToTheDirectoriesUnderIt)
{
    struct ProjectCase
    {
        char const *path;
        char const *project_dir;
        char const *ipblocks;
        char const *persona;
    };
    constexpr ProjectCase CASES[] = {
        {"c:/p", "c:/p/", "c:/p/ipblocks/", "c:/p/persona/"},
        {"c:/p/", "c:/p/", "c:/p/ipblocks/", "c:/p/persona/"},
        {"c:\\p\\q", "c:/p/q/", "c:/p/q/ipblocks/", "c:/p/q/persona/"},
        {"/", "/", "/ipblocks/", "/persona/"},
        {"rel", "rel/", "rel/ipblocks/", "rel/persona/"}, // stays relative
        {"", "", "/ipblocks/", ""},
    };
    for (ProjectCase const &c : CASES) {
        gen_set_project_dir_path(c.path);
        EXPECT_EQ(gen_get_project_dir_path(), c.project_dir) << c.path;
        EXPECT_EQ(gen_get_project_ipblocks_dir_path().fullpath(), c.ipblocks) << c.path;
        EXPECT_EQ(gen_get_persona_dir_path_string(), c.persona) << c.path;
    }
}

TEST(GenProjectDir, IsNotFilledInByItsReaders)
{
    EXPECT_EQ(gen_get_persona_dir_path_string(), "");
    EXPECT_EQ(gen_get_project_dir_path(), "");
    EXPECT_EQ(gen_get_project_ipblocks_dir_path().fullpath(), "");
    EXPECT_EQ(gen_get_project_dir_path(), "");
}

TEST(GenProjectDir, KeepsTheLibraryPaths)
{
    gen_set_project_library_paths("a;b");
    gen_set_user_library_paths("c");
    gen_set_project_dir_path("/p");
    EXPECT_EQ(gen_get_project_library_paths(), "a;b");
    EXPECT_EQ(gen_get_user_library_paths(), "c");
}

TEST(GenLibraryPaths, AreGivenBackAsTheyWereSet)
{
    struct ListCase
    {
        char const *name;
        void (*set)(std::string);
        std::string (*get)();
    };
    constexpr ListCase CASES[] = {
        {"project", gen_set_project_library_paths, gen_get_project_library_paths},
        {"user", gen_set_user_library_paths, gen_get_user_library_paths},
        {"user ip", gen_set_user_ip_search_paths, gen_get_user_ip_search_paths},
    };
    for (ListCase const &c : CASES)
        for (char const *const paths : {"/a;b\\c;;", "c:/one/", "", "*.v"}) {
            c.set(paths);
            EXPECT_EQ(c.get(), paths) << c.name;
        }
    gen_set_project_library_paths("1");
    gen_set_user_library_paths("2");
    gen_set_user_ip_search_paths("3");
    EXPECT_EQ(gen_get_project_library_paths() + gen_get_user_library_paths() + gen_get_user_ip_search_paths(), "123");
}

TEST(GenOutputDirectory, IsAnExistingDirectory)
{
    TempDir const dir;
    gen_set_project_dir_path("/p");
    gen_set_project_output_directory(dir.text().c_str());
    EXPECT_EQ(gen_get_project_output_directory(), with_slash(dir.text()));
    gen_set_project_output_directory(with_slash(dir.text()).c_str());
    EXPECT_EQ(gen_get_project_output_directory(), with_slash(dir.text()));
}

TEST(GenOutputDirectory, IsMadeWhenItIsMissing)
{
    TempDir const dir;
    gen_set_project_output_directory(dir.text("out").c_str());
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "out")) << "not before it is asked for";
    EXPECT_EQ(gen_get_project_output_directory(), dir.text("out/"));
    EXPECT_TRUE(std::filesystem::is_directory(dir.path() / "out"));

    std::filesystem::remove(dir.path() / "out");
    EXPECT_EQ(gen_get_project_output_directory(), dir.text("out/"));
    EXPECT_TRUE(std::filesystem::is_directory(dir.path() / "out"));
}

TEST(GenOutputDirectory, FallsBackToTheProjectDirectory)
{
    TempDir const dir;
    std::string const file = dir.write("file", "content");
    gen_set_project_dir_path(dir.text("project"));
    // "/" without the slash at its end is empty.
    for (std::string const &path : {std::string(), file, file + '/', dir.text("missing/out"), std::string("/")}) {
        gen_set_project_output_directory(path.c_str());
        EXPECT_EQ(gen_get_project_output_directory(), dir.text("project/")) << path;
    }
    EXPECT_EQ(dir.read("file"), "content");
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "missing"));
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "project"));
}

TEST(GenOutputDirectory, IsClearedByNullAndByTheEmptyText)
{
    TempDir const dir;
    gen_set_project_dir_path("/p");
    for (char const *const nothing : {static_cast<char const *>(nullptr), ""}) {
        gen_set_project_output_directory(dir.text().c_str());
        ASSERT_EQ(gen_get_project_output_directory(), with_slash(dir.text()));
        gen_set_project_output_directory(nothing);
        EXPECT_STREQ(gen_get_project_output_directory(), "/p/");
    }
}

TEST(GenOutputDirectory, MakesTheCurrentDirectoryTheProjectDirectoryForGood)
{
    TempDir const dir;
    std::string first;
    {
        CurrentDirectory const current(dir.path());
        first = current_directory();
        EXPECT_EQ(gen_get_project_output_directory(), first);
    }
    EXPECT_NE(current_directory(), first);
    EXPECT_EQ(gen_get_project_output_directory(), first);
    EXPECT_EQ(gen_get_project_dir_path(), first);
    EXPECT_EQ(gen_get_project_ipblocks_dir_path().fullpath(), first + "ipblocks/");

    gen_set_project_dir_path("/p");
    EXPECT_STREQ(gen_get_project_output_directory(), "/p/");
}

TEST(GenOutputDirectory, DoesNotFillInAProjectDirectoryWhileItIsUsable)
{
    TempDir const dir;
    gen_set_project_output_directory(dir.text().c_str());
    EXPECT_EQ(gen_get_project_output_directory(), with_slash(dir.text()));
    EXPECT_EQ(gen_get_project_dir_path(), "");
}

TEST(GenOutputDirectory, ARelativeOneCountsFromTheDirectoryOfItsSetting)
{
    TempDir const dir;
    std::string expected;
    {
        CurrentDirectory const current(dir.path());
        expected = current_directory() + "out/";
        gen_set_project_output_directory("./x/../out");
    }
    EXPECT_EQ(gen_get_project_output_directory(), expected);
    EXPECT_TRUE(std::filesystem::is_directory(dir.path() / "out"));
}

TEST(GenOutputDirectory, AnAbsoluteOneIsSimplified)
{
    TempDir const dir;
    gen_set_project_output_directory(dir.text("x/../out").c_str());
    EXPECT_EQ(gen_get_project_output_directory(), dir.text("out/"));
}

TEST(GenOutputDirectory, KeepsItsAddressUntilItIsSetAgain)
{
    TempDir const dir;
    gen_set_project_output_directory(dir.text().c_str());
    char const *const directory = gen_get_project_output_directory();
    gen_set_db_dir_path("/other/db/");
    EXPECT_EQ(gen_get_project_output_directory(), directory);
    EXPECT_EQ(directory, with_slash(dir.text()));
}
