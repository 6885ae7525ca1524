// An installation and a project on disk, with a directory for every place where files are looked for. It goes with
// zel_gen_fake, which takes the installation's root from it; one per process, since the root, the lists under it and
// the environment are read once.
#ifndef TESTS_SUPPORT_SEARCH_WORLD_H
#define TESTS_SUPPORT_SEARCH_WORLD_H

#include "gen_path_sys.h"
#include "tests/support/environment.h"
#include "tests/support/gen_os_fake.h"
#include "tests/support/message_recorder.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

/// A directory where files are looked for.
struct SearchPlace
{
    std::string directory; ///< under the world's, with a slash at its end
    GEN_LIBRARY_PATHS_ENUM tag;
};

class SearchWorld
{
public:
    SearchWorld()
    {
        gen_os_fake_set_executable_path(m_dir.text("suite/bin64/tool").c_str());
        for (SearchPlace const &place : places())
            std::filesystem::create_directories(m_dir.path() / place.directory);
        for (std::string const &directory : eda_directories())
            std::filesystem::create_directories(m_dir.path() / directory);
        for (char const *const other : {"suite/bin64", "suite/common", "ksys/bin", "elsewhere"})
            std::filesystem::create_directories(m_dir.path() / other);
    }

    /// The places of gen_find_file(), in the order of the search. Of each list that may hold relative directories, the
    /// second one counts from the project directory.
    static std::vector<SearchPlace> const &places()
    {
        static std::vector<SearchPlace> const the_places = make_places();
        return the_places;
    }

    /// The places of gen_find_eda_file(), likewise.
    static std::vector<std::string> eda_directories()
    {
        return {"suite/libraries/others/vital/",
                "suite/eda/mentor/",
                "suite/eda/synopsys/",
                "suite/eda/viewlogic/",
                "suite/eda/sim_lib/",
                "suite/eda/ibis/",
                "suite/eda/ibis2/",
                "suite/libraries/others/synplicity/"};
    }

    /// Opens the project, with lists that lead to the places.
    void open_project() const
    {
        gen_set_project_dir_path(m_dir.text("project"));
        gen_set_db_dir_path(m_dir.text("project/db/"));
        gen_set_project_library_paths(m_dir.text("project_lib") + ";project_lib");
        gen_set_user_library_paths(m_dir.text("user_lib") + ";./user_lib/");
        gen_destroy_find_file_cache();
    }

    std::string text(std::string const &name) const { return m_dir.text(name); }
    TempDir const &dir() const { return m_dir; }

    /// Makes an empty file; its full path.
    std::string put(std::string const &name) const
    {
        std::string const path = m_dir.text() + '/' + name;
        if (std::FILE *const file = FIO_FILE_SYSTEM::fopen(path.c_str(), "w"))
            std::fclose(file);
        return path;
    }

    void remove(std::string const &name) const { std::filesystem::remove_all(m_dir.path() / name); }

private:
    static std::vector<SearchPlace> make_places()
    {
        std::vector<SearchPlace> places = {
            {"project/", GEN_LIBRARY_PATHS_PROJECT_DIR},
            {"project/db/", GEN_LIBRARY_PATHS_DB_DIR},
            {"project_lib/", GEN_LIBRARY_PATHS_PROJECT_LIBS},
            {"project/project_lib/", GEN_LIBRARY_PATHS_PROJECT_LIBS},
            {"user_lib/", GEN_LIBRARY_PATHS_USER_LIBS},
            {"project/user_lib/", GEN_LIBRARY_PATHS_USER_LIBS},
            {"env_lib/", GEN_LIBRARY_PATHS_ENV_LIBS},
            {"project/env_lib/", GEN_LIBRARY_PATHS_ENV_LIBS},
            {"project/ipblocks/", GEN_LIBRARY_PATHS_KALVERN_LIBS},
        };
        for (char const *const directory : {"",
                                            "libraries/",
                                            "libraries/vhdl/",
                                            "libraries/primitives/",
                                            "libraries/primitives/pin/",
                                            "libraries/primitives/buffer/",
                                            "libraries/primitives/logic/",
                                            "libraries/primitives/storage/",
                                            "libraries/primitives/other/",
                                            "libraries/ipblocks/",
                                            "libraries/ipblocks/arithmetic/",
                                            "libraries/ipblocks/gates/",
                                            "libraries/ipblocks/io/",
                                            "libraries/ipblocks/storage/",
                                            "libraries/ipblocks/embedded_logic/",
                                            "libraries/corelib/",
                                            "libraries/others/",
                                            "libraries/others/legacy2/",
                                            "libraries/others/partnercores/",
                                            "libraries/software/boot/",
                                            "libraries/others/evalcore_plus/",
                                            "eda/hspice/",
                                            "libraries/wys_stub/"})
            places.push_back({std::string("suite/") + directory, GEN_LIBRARY_PATHS_KALVERN_LIBS});
        return places;
    }

    TempDir m_dir;
    Environment m_library_paths{"KALVERN_LIBRARY_PATHS", (";" + m_dir.text("env_lib") + ";;env_lib/;").c_str()};
};

/// The world of this process, made before any test asks for the root. Exit doesn't remove it: the child of a death test
/// comes there too.
class SearchWorldEnvironment : public testing::Environment
{
public:
    void SetUp() override { s_world = new SearchWorld; }
    void TearDown() override { delete s_world; }

    static SearchWorld const &world() { return *s_world; }

private:
    static inline SearchWorld const *s_world = nullptr;
};
inline testing::Environment *const l_search_world_environment =
    testing::AddGlobalTestEnvironment(new SearchWorldEnvironment);

/// A test that finds the project of the world open. No search prints anything.
class SearchTest : public testing::Test
{
protected:
    SearchTest() { world().open_project(); }
    ~SearchTest() override { EXPECT_THAT(m_messages.lines(), testing::IsEmpty()); }

    static SearchWorld const &world() { return SearchWorldEnvironment::world(); }

    MessageRecorder m_messages;
};

#endif
