// A report loads a library by name, for the lines of its stack. It never takes one from the current directory, where
// anybody may have put it.
#include "err_sys.h"

#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dlfcn.h>

using testing::ExitedWithCode;
using testing::HasSubstr;

namespace {

constexpr char SYMBOL_LIBRARY[] = "libdw.so.1";
constexpr char TRACE[] = "planted_library_was_loaded";

// A current directory with the planted library in it.
class ErrPlantedLibraryDeathTest : public testing::Test
{
protected:
    ErrPlantedLibraryDeathTest() { std::filesystem::copy_file(PLANTED_LIBRARY, m_directory.path() / SYMBOL_LIBRARY); }

    bool was_loaded() const { return std::filesystem::exists(m_directory.path() / TRACE); }

    TempDir m_directory;
    CurrentDirectory m_current{m_directory.path()};
};

} // namespace

TEST_F(ErrPlantedLibraryDeathTest, LeavesATraceWhereItIsLoaded)
{
    void *const library = dlopen(("./" + std::string(SYMBOL_LIBRARY)).c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    dlclose(library);
    EXPECT_TRUE(was_loaded());
}

TEST_F(ErrPlantedLibraryDeathTest, IsNotLoadedByAReport)
{
    EXPECT_EXIT(err_report_internal_error("a failure", "TEST", "planted.cpp", 1), ExitedWithCode(3),
                HasSubstr("Internal error: a failure\n"));
    EXPECT_FALSE(was_loaded());
}
