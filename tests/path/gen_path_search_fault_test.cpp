// The state that the searches require, which this executable can reach, and their calls of the
// profile bins.
#include "fio_sys.h"
#include "gen/path/gen_path_state.h"
#include "gen_path_sys.h"
#include "tests/support/internal_error.h"
#include "tests/support/mem_recorder.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::ExitedWithCode;

namespace {

using SourceFiles = std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>>;

} // namespace

TEST(GenSearchFaultDeathTest, AMissingListOfGeneralLibrariesIsAnInternalError)
{
    gen_path_state()->kalvern_eda_libs = std::make_unique<FIO_FIND>(std::string());
    SourceFiles files;
    EXPECT_EXIT(gen_find_file("a.v"), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("kalvern_libs != 0", "gen_path_*"));
    EXPECT_EXIT(gen_find_file_cache_assisted("a.v"), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("kalvern_libs != 0", "gen_path_*"));
    EXPECT_EXIT(gen_get_source_files("a", &files), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("kalvern_libs != 0", "gen_path_*"));
    EXPECT_EXIT(gen_get_source_files_from_kalvern_lib("a", &files), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("kalvern_libs != 0", "gen_path_*"));
    EXPECT_EQ(gen_get_default_lib_fio_paths(), nullptr);
    EXPECT_EQ(gen_find_eda_file("a.v").fullpath(), "");
}

TEST(GenSearchFaultDeathTest, AMissingListOfEdaLibrariesIsAnInternalError)
{
    gen_path_state()->kalvern_libs = std::make_unique<FIO_FIND>(std::string());
    EXPECT_EXIT(gen_find_eda_file("a.v"), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("kalvern_eda_libs != 0", "gen_path_*"));
    EXPECT_NE(gen_get_default_lib_fio_paths(), nullptr);
    EXPECT_EQ(gen_find_file("a.v").fullpath(), "");
}

TEST(GenSearchCalls, SourceFilesAreLookedForInsideABin)
{
    mem_record().calls.clear();
    SourceFiles files;
    gen_get_source_files_from_kalvern_lib("a", &files);
    gen_find_file("a.v");
    gen_get_all_device_files();
    EXPECT_THAT(mem_record().calls, ElementsAre());
    gen_get_source_files("a", &files);
    EXPECT_THAT(mem_record().calls,
                ElementsAre("open GEN gen_get_source_files 0x7fffffff null", "close gen_get_source_files"));
}

TEST(GenSourceExtensions, MayBeginWithADot)
{
    TempDir const dir;
    dir.write("a.v", "");
    dir.write("a.vhd", "");
    gen_set_project_dir_path(dir.text());
    gen_path_state()->default_source_extensions.reset(new std::vector<std::string>{".v", "vhd", ".V"});
    SourceFiles files;
    EXPECT_TRUE(gen_get_source_files("a", &files));
    std::vector<std::string> names;
    for (auto const &[tag, path] : files)
        names.push_back(path.filename());
    EXPECT_THAT(names, ElementsAre("a.v", "a.vhd"));
}
