// The editing of the project's library directories over a path state whose setter doesn't make the list.
#include "gen/path/gen_path_state.h"
#include "gen_path_sys.h"
#include "tests/support/internal_error.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ExitedWithCode;

namespace {

int l_setter_calls = 0;

} // namespace

GEN_PATH_STATE *gen_path_state()
{
    static GEN_PROJECT_TEXTS the_texts;
    static GEN_PATH_STATE the_state(the_texts);
    return &the_state;
}

void gen_set_project_library_paths(std::string)
{
    ++l_setter_calls;
}

std::string gen_get_project_library_paths()
{
    return {};
}

TEST(GenAppendProjectLibraryPathsDeathTest, AListThatWasNotMadeIsAnInternalError)
{
    EXPECT_EXIT(gen_append_project_library_paths("c:/a"), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("project_fio_paths != 0", "gen_path_libraries"));
}

TEST(GenAppendProjectLibraryPaths, AnEditWithoutAChangeSetsNothing)
{
    gen_append_project_library_paths("");
    gen_remove_project_library_paths("c:/a");
    EXPECT_EQ(l_setter_calls, 0);
}
