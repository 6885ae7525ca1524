// Every operation of zel_gen and of the libraries below it beside every other one, for the thread sanitizer.
#include "gen_exe_sys.h"
#include "gen_machine_sys.h"
#include "gen_profile_bins_sys.h"
#include "mem_sys.h"

#include "tests/support/captured_output.h"
#include "tests/support/operation_pairs.h"
#include "tests/support/operations.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

class GenThreads : public testing::Test
{
protected:
    GenThreads()
    {
        std::filesystem::current_path(m_dir.path());
        gen_exe_init(0, nullptr);
        mem_cfg_set("gen_print_cookie_log", "on");
    }
    ~GenThreads() override { std::filesystem::current_path(m_former); }

    std::filesystem::path m_former = std::filesystem::current_path();
    TempDir m_dir;
    CapturedOutput m_output{StandardStream::OUTPUT};
};

void start_and_end()
{
    GEN_PROFILE_BINS::initialize("tool", /*primary=*/true, /*debug_messages=*/false);
    GEN_PROFILE_BINS::open("TST", "bin", GEN_PB_FLAG_RECORD);
    GEN_PROFILE_BINS::close("bin");
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
}

} // namespace

TEST_F(GenThreads, AnyTwoOperationsOfTheSiblings)
{
    run_in_pairs(operations_of_siblings(), operations_of_siblings(), 2);
}

TEST_F(GenThreads, AnyTwoOperations)
{
    run_in_pairs(operations_of_gen(), operations_of_gen(), 2);
}

TEST_F(GenThreads, TheBinsBesideAnyOperation)
{
    GEN_PROFILE_BINS::initialize("tool", /*primary=*/true, /*debug_messages=*/false);
    run_in_pairs(operations_of_gen_thread(), operations_of_gen(), 5);
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
}

// Each round is a process of its own, in which the processors were not captured before.
TEST_F(GenThreads, TheFirstQueriesOfTheProcessors)
{
    GTEST_FLAG_SET(death_test_style, "fast");
    auto const query = [] {
        int cores = 0;
        GEN_MACHINE_INFO::get_core_cpu_count(&cores);
        EXPECT_GT(cores, 0);
    };
    for (int round = 0; round < 20; ++round)
        EXPECT_EXIT(
            {
                run_at_once({query, query, query});
                std::exit(testing::Test::HasFailure() ? 1 : 0);
            },
            testing::ExitedWithCode(0), "");
}

// Cookies don't come while finalize() writes them.
TEST_F(GenThreads, TheStartAndTheEndOfTheBinsBesideAnyOperation)
{
    Operations others = operations_of_gen();
    others.erase(
        std::remove_if(others.begin(), others.end(),
                       [](Operation const &operation) { return std::string(operation.name) == "gen_log_cookie"; }),
        others.end());
    run_in_pairs({{"start and end", start_and_end}}, others, 2);
}
