#include "gen_tracq_sys.h"

#include "gen_path_sys.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <type_traits>

// The manager is made and deleted by its functions alone, and each class holds one pointer.
static_assert(!std::is_default_constructible_v<GEN_TRACQ_MANAGER> && !std::is_destructible_v<GEN_TRACQ_MANAGER>);
static_assert(sizeof(GEN_TRACQ_MANAGER) == sizeof(void *) && sizeof(GEN_TRACQ_SCOPED_PROFILE) == sizeof(void *) &&
              sizeof(GEN_TRACQ_SCOPED_TASK) == sizeof(void *));

TEST(GenTracq, EnablesAndDisablesInAnyOrder)
{
    gen_tracq_disable();
    gen_tracq_enable();
    gen_tracq_enable();
    gen_tracq_disable();
    EXPECT_EQ(GEN_TRACQ_MANAGER::s_instance, nullptr);
}

TEST(GenTracq, MakesOneManagerAtATime)
{
    EXPECT_EQ(GEN_TRACQ_MANAGER::s_instance, nullptr);
    GEN_TRACQ_MANAGER::destroy();
    EXPECT_EQ(GEN_TRACQ_MANAGER::s_instance, nullptr);
    GEN_TRACQ_MANAGER *const manager = GEN_TRACQ_MANAGER::get_or_create();
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(GEN_TRACQ_MANAGER::s_instance, manager);
    EXPECT_EQ(GEN_TRACQ_MANAGER::get_or_create(), manager);
    GEN_TRACQ_MANAGER::pause();
    GEN_TRACQ_MANAGER::resume();
    EXPECT_EQ(GEN_TRACQ_MANAGER::s_instance, manager);
    GEN_TRACQ_MANAGER::destroy();
    EXPECT_EQ(GEN_TRACQ_MANAGER::s_instance, nullptr);
    EXPECT_NE(GEN_TRACQ_MANAGER::get_or_create(), nullptr);
    GEN_TRACQ_MANAGER::destroy();
    GEN_TRACQ_MANAGER::destroy();
    EXPECT_EQ(GEN_TRACQ_MANAGER::s_instance, nullptr);
}

TEST(GenTracq, MarksRegions)
{
    GEN_TRACQ_SCOPED_PROFILE const profile;
    GEN_TRACQ_SCOPED_TASK const task("domain", "task");
    GEN_TRACQ_SCOPED_TASK const inner(nullptr, nullptr);
    EXPECT_EQ(GEN_TRACQ_MANAGER::s_instance, nullptr);
}

// One process for all steps: the path state and the stream are the process's.
TEST(GenGuiProfileStream, FollowsTheDatabaseDirectory)
{
    EXPECT_EQ(gen_get_gui_profile_stream(), nullptr);
    gen_set_gui_profile_stream();
    EXPECT_EQ(gen_get_gui_profile_stream(), nullptr) << "no database directory";

    TempDir const directory;
    gen_set_db_dir_path(directory.text() + "/missing/");
    gen_set_gui_profile_stream();
    EXPECT_EQ(gen_get_gui_profile_stream(), nullptr) << "no such directory";

    gen_set_db_dir_path(directory.text() + '/');
    gen_set_gui_profile_stream();
    std::brisel_ofstream *const stream = gen_get_gui_profile_stream();
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(gen_get_gui_profile_stream(), stream);
    *stream << "first" << std::flush;
    EXPECT_EQ(directory.read("kalvern_gui.profile"), "first");

    gen_set_gui_profile_stream();
    ASSERT_NE(gen_get_gui_profile_stream(), nullptr);
    EXPECT_EQ(directory.read("kalvern_gui.profile"), "") << "truncated";
    *gen_get_gui_profile_stream() << "second"; // written when the stream goes

    gen_set_db_dir_path(directory.text() + "/missing/");
    gen_set_gui_profile_stream();
    EXPECT_EQ(gen_get_gui_profile_stream(), nullptr) << "the old stream doesn't stay";
    EXPECT_EQ(directory.read("kalvern_gui.profile"), "second");
}
