// What the searches require of the library's own state, which this executable can reach, and what they call of the
// profile bins.
#include "fio_sys.h"
#include "gen/path/gen_path_state.h"
#include "gen_path_sys.h"
#include "tests/support/mem_recorder.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::AllOf;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;

namespace {

using SourceFiles = std::vector<std::pair<GEN_LIBRARY_PATHS_ENUM, FIO_PATH>>;

auto tells_fault(char const *text)
{
    return AllOf(HasSubstr(std::string("Internal error: ") + text + "\n"), HasSubstr("gen/gen_path_"));
}

} // namespace

TEST(GenSearchFaultDeathTest, AMissingListOfGeneralLibrariesIsAnInternalError)
{
    gen_path_state()->kalvern_eda_libs = std::make_unique<FIO_FIND>(std::string());
    SourceFiles files;
    EXPECT_EXIT(gen_find_file("a.v"), ExitedWithCode(3), tells_fault("kalvern_libs != 0"));
    EXPECT_EXIT(gen_find_file_cache_assisted("a.v"), ExitedWithCode(3), tells_fault("kalvern_libs != 0"));
    EXPECT_EXIT(gen_get_source_files("a", &files), ExitedWithCode(3), tells_fault("kalvern_libs != 0"));
    EXPECT_EXIT(gen_get_source_files_from_kalvern_lib("a", &files), ExitedWithCode(3),
                tells_fault("kalvern_libs != 0"));
    EXPECT_EQ(gen_get_default_lib_fio_paths(), nullptr);
    EXPECT_EQ(gen_find_eda_file("a.v").fullpath(), "");
}

TEST(GenSearchFaultDeathTest, AMissingListOfEdaLibrariesIsAnInternalError)
{
    gen_path_state()->kalvern_libs = std::make_unique<FIO_FIND>(std::string());
    EXPECT_EXIT(gen_find_eda_file("a.v"), ExitedWithCode(3), tells_fault("kalvern_eda_libs != 0"));
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

TEST(GenSourceExtensions, MayHaveADotInFront)
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
