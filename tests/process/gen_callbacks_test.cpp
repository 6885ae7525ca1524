// The calls that a process makes to its siblings at its start, recorded by stand-ins for them, over a scripted
// system.
#include "err_sys.h"
#include "gen_exe_sys.h"
#include "gen_path_sys.h"
#include "tests/support/captured_output.h"
#include "tests/support/environment.h"
#include "tests/support/gen_os_fake.h"
#include "tests/support/mem_recorder.h"
#include "thr_sys.h"
#include "ver_sys.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace {

constexpr char const *RESERVE = "reserve_4gb_of_virtual_memory";

// Runs the start of a process; gives what it wrote to the standard output stream.
std::string start_process()
{
    return output_to(StandardStream::OUTPUT, [] { gen_exe_init(0, nullptr); });
}

class GenCallbacks : public testing::Test
{
protected:
    GenCallbacks() { mem_record().calls.clear(); }

    Environment m_no_test{RESERVE, nullptr};
};

using GenReservation = GenCallbacks;

} // namespace

void thr_drl_init(char const *module_fullpath)
{
    mem_record().calls.push_back(std::string("thr_drl_init ") + module_fullpath);
}

void thr_drl_fini()
{
    mem_record().calls.push_back("thr_drl_fini");
}

void ver_set_module_path(char const *directory)
{
    mem_record().calls.push_back(std::string("ver_set_module_path ") + directory);
}

void err_set_module_fullpath(std::string const &path)
{
    mem_record().calls.push_back("err_set_module_fullpath " + path);
}

TEST_F(GenCallbacks, AreHandedOverInOrderAfterTheModuleAndBeforeTheFirstConfigurationKey)
{
    gen_exe_init(0, nullptr);
    EXPECT_THAT(mem_record().calls,
                ElementsAre("thr_drl_init /fake/bin/tool", "ver_set_module_path /fake/bin/",
                            "err_set_module_fullpath /fake/bin/", "callback kalvern_path",
                            "callback db_dir_path_string", "callback is_ui_process", "callback module_filename",
                            "callback project_output_directory", "is_on reserve_4gb_of_virtual_memory"));
}

TEST_F(GenCallbacks, AreTheGetters)
{
    gen_exe_init(0, nullptr);
    EXPECT_EQ(mem_record().get_kalvern_path, &gen_get_kalvern_path);
    EXPECT_EQ(mem_record().get_db_dir_path_string, &gen_get_db_dir_path_string);
    EXPECT_EQ(mem_record().get_is_ui_process, &gen_get_is_ui_process);
    EXPECT_EQ(mem_record().get_module_filename, &gen_get_module_filename);
    EXPECT_EQ(mem_record().get_project_output_directory, &gen_get_project_output_directory);
}

TEST_F(GenCallbacks, ComeAfterTheEnvironment)
{
    Environment const no_root("KALVERN_ROOTDIR", nullptr);
    gen_exe_init(0, nullptr);
    EXPECT_EQ(mem_record().rootdir_at_first_callback, "/fake/");
}

TEST_F(GenCallbacks, StayAfterTheEndOfTheProcess)
{
    gen_exe_init(0, nullptr);
    mem_record().calls.clear();
    gen_exe_fini();
    EXPECT_THAT(mem_record().calls, ElementsAre("thr_drl_fini"));
    EXPECT_EQ(mem_record().get_kalvern_path(), "/fake/");
    EXPECT_EQ(mem_record().get_module_filename(), "tool");
}

TEST_F(GenCallbacks, WorkInAProcessThatOpensNoProject)
{
    gen_exe_init(0, nullptr);
    EXPECT_EQ(mem_record().get_db_dir_path_string(), "");
    EXPECT_EQ(mem_record().get_project_output_directory(),
              FIO_PATH().cd(FIO_FILE_SYSTEM::get_current_directory()).fullpath());
}

TEST_F(GenCallbacks, FollowTheState)
{
    gen_exe_init(0, nullptr);
    EXPECT_FALSE(mem_record().get_is_ui_process());
    gen_set_is_ui_process(true);
    EXPECT_TRUE(mem_record().get_is_ui_process());
    gen_set_db_dir_path("c:/p/db/");
    EXPECT_EQ(mem_record().get_db_dir_path_string(), "c:/p/db/");
}

TEST_F(GenReservation, IsOffByDefault)
{
    EXPECT_EQ(start_process(), "");
    EXPECT_EQ(gen_os_fake_reservation_count(), 0U);
}

TEST_F(GenReservation, FollowsTheConfigurationKey)
{
    mem_record().is_on = true;
    EXPECT_EQ(start_process(), "Allocating 4GB of virtual memory in 8 MB chunks...SUCCESS!\n");
    EXPECT_EQ(gen_os_fake_reservation_count(), 512U);
}

TEST_F(GenReservation, IsTurnedOnByTheVariableAloneWithoutALookAtTheKey)
{
    for (char const *const value : {"", "0", "off"}) {
        Environment const variable(RESERVE, value);
        mem_record().calls.clear();
        EXPECT_EQ(start_process(), "Allocating 4GB of virtual memory in 8 MB chunks...SUCCESS!\n") << value;
        EXPECT_EQ(mem_record().calls.back(), "callback project_output_directory") << value;
    }
}

TEST_F(GenReservation, StopsAtTheFirstFailureAndGoesOnWithTheStart)
{
    struct FailureCase
    {
        std::size_t limit;
        char const *report;
    };
    constexpr FailureCase CASES[] = {
        {0, "FAILED!\n   Allocation of 0th 8 MB block failed!\n   Successfully allocated 0 MB!\n"},
        {2, "FAILED!\n   Allocation of 2th 8 MB block failed!\n   Successfully allocated 16 MB!\n"},
        {511, "FAILED!\n   Allocation of 511th 8 MB block failed!\n   Successfully allocated 4088 MB!\n"},
        {512, "SUCCESS!\n"},
    };
    Environment const variable(RESERVE, "");
    for (FailureCase const &c : CASES) {
        std::size_t const before = gen_os_fake_reservation_count();
        gen_os_fake_set_reservation_limit(before + c.limit);
        EXPECT_EQ(start_process(), std::string("Allocating 4GB of virtual memory in 8 MB chunks...") + c.report)
            << "limit " << c.limit;
        EXPECT_EQ(gen_os_fake_reservation_count() - before, c.limit < 512 ? c.limit + 1 : 512) << "limit " << c.limit;
    }
}
