// Internal errors of a process in a bad state: the heap is damaged, and more faults follow.
#include "err_sys.h"

#include "tests/support/internal_error.h"
#include "tests/support/texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

namespace {

using testing::AllOf;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::Not;

constexpr char HEAD[] = "Internal error: first\n  Library: TST\n  Source:  tests/err, line 7\n";
constexpr char STACK[] = "\n  Stack:\n    #0 ";

[[noreturn]] void fail()
{
    err_report_internal_error("first", "TST", "tests/err", 7);
}

int *volatile l_nowhere = nullptr;

void write_nowhere()
{
    *l_nowhere = 1;
}

class ErrFaultsDeathTest : public testing::Test
{
protected:
    ErrFaultsDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

// Writes over what the heap keeps before and after a block, and over what it keeps in blocks that were released.
void damage_heap(std::size_t block_size)
{
    constexpr std::size_t BLOCKS = 16;
    constexpr std::size_t AROUND = 64;
    char *volatile blocks[BLOCKS];
    for (char *volatile &block : blocks)
        block = static_cast<char *>(std::malloc(block_size));
    for (std::size_t i = 0; i < BLOCKS; i += 2)
        std::free(blocks[i]);
    for (std::size_t i = 1; i < BLOCKS; i += 2)
        for (std::size_t j = 0; j < block_size + AROUND; ++j) {
            char volatile *const place = blocks[i] + j;
            *place = '\x5a';
        }
}

TEST_F(ErrFaultsDeathTest, ADamagedHeapLosesNothingOfWhatFailed)
{
    for (std::size_t const size : {8, 24, 40, 72, 120, 248, 504, 1016, 2040, 8000, 30000, 100000})
        EXPECT_EXIT((damage_heap(size), fail()), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    AllOf(HasSubstr(HEAD), HasSubstr(STACK)))
            << "blocks of " << size;
}

TEST_F(ErrFaultsDeathTest, AFaultInAnExitHandlerKeepsTheStatus)
{
    EXPECT_EXIT((std::atexit(write_nowhere), fail()), ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasSubstr(HEAD), HasSubstr(STACK)));
}

TEST_F(ErrFaultsDeathTest, AnAbortInAnExitHandlerKeepsTheStatus)
{
    EXPECT_EXIT((std::atexit(std::abort), fail()), ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasSubstr(HEAD), HasSubstr(STACK)));
}

TEST_F(ErrFaultsDeathTest, AFaultOfAnotherThreadKeepsTheStatus)
{
    EXPECT_EXIT(
        {
            std::atexit([] {
                for (;;)
                    std::this_thread::yield();
            });
            std::thread([] {
                while (!err_is_in_abnormal_exit())
                    std::this_thread::yield();
                // After the first write, which the fault must not come before.
                std::this_thread::sleep_for(std::chrono::milliseconds(100));
                write_nowhere();
            }).detach();
            fail();
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), HasSubstr(HEAD));
}

// A process that does not report ends as before.
TEST_F(ErrFaultsDeathTest, AFaultWithoutAReportKeepsItsOwnEnd)
{
    EXPECT_EXIT((err_set_module_fullpath("/place/"), std::signal(SIGABRT, [](int) { std::_Exit(17); }), std::abort()),
                ExitedWithCode(17), Not(HasSubstr("Internal error")));
}

} // namespace
