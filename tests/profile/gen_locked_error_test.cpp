// Internal errors on a thread that holds locks of the libraries: the report takes none of them.
#include "err_sys.h"
#include "gen_cookie_sys.h"
#include "gen_machine_sys.h"
#include "mem_sys.h"

#include "tests/support/internal_error.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <string>

#include <pthread.h>
#include <sched.h>
#include <unistd.h>

namespace {

using testing::AllOf;
using testing::ExitedWithCode;
using testing::HasSubstr;

// The number of allocations up to the one that reports an internal error; 0 for none.
std::atomic<int> l_failing_allocation{0};

// Whether a fork reports an internal error.
std::atomic<bool> l_fork_fails{false};

void fail()
{
    err_report_internal_error("a lock is held", "TST", "tests/locked.cpp", 17);
}

void fail_in_fork()
{
    if (l_fork_fails)
        fail();
}

void watch_forks()
{
    pthread_atfork(fail_in_fork, nullptr, nullptr);
}

// Called before any library sets its functions around forks. So this one is the last before a fork, when all of them
// have taken their locks.
[[gnu::section(".preinit_array"), gnu::used]] void (*const l_watch_forks)() = watch_forks;

void *allocate(std::size_t bytes)
{
    if (l_failing_allocation != 0 && --l_failing_allocation == 0)
        fail();
    void *const block = std::malloc(bytes);
    return block == nullptr ? throw std::bad_alloc() : block;
}

// A block with its stack.
auto whole_block()
{
    return AllOf(InternalErrorMatcher("a lock is held", "TST", "tests/locked.cpp"), HasSubstr("\n  Version: "),
                 HasSubstr("\n  Process: "), HasSubstr("\n  Stack:\n    #0 "));
}

class GenLockedErrorDeathTest : public testing::Test
{
protected:
    GenLockedErrorDeathTest()
    {
        GTEST_FLAG_SET(death_test_style, "fast");
        std::filesystem::current_path(m_dir.path());
    }
    ~GenLockedErrorDeathTest() override { std::filesystem::current_path(m_former); }

    std::filesystem::path m_former = std::filesystem::current_path();
    TempDir m_dir;
};

} // namespace

void *operator new(std::size_t bytes)
{
    return allocate(bytes);
}

void operator delete(void *block) noexcept
{
    std::free(block);
}

void operator delete(void *block, std::size_t) noexcept
{
    std::free(block);
}

TEST_F(GenLockedErrorDeathTest, EveryLockIsHeld)
{
    EXPECT_EXIT(
        {
            l_fork_fails = true;
            fork();
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), whole_block());
}

// The first query reads the file, and allocates for that, under the lock of the reading.
TEST_F(GenLockedErrorDeathTest, TheConfigurationIsRead)
{
    m_dir.write("kalvern.ini", "key = a value that is too long for a string without memory of its own\n");
    for (int allocation = 1; allocation <= 3; ++allocation)
        EXPECT_EXIT(
            {
                l_failing_allocation = allocation;
                mem_cfg_get_value("key");
            },
            ExitedWithCode(INTERNAL_ERROR_STATUS), whole_block())
            << allocation;
}

// The last allocation of a cookie is that of the list, under its mutex.
TEST_F(GenLockedErrorDeathTest, ACookieIsLogged)
{
    for (int allocation = 1; allocation <= 2; ++allocation)
        EXPECT_EXIT(
            {
                l_failing_allocation = allocation;
                gen_log_cookie("a description that is too long for a string without memory of its own", 17);
            },
            ExitedWithCode(INTERNAL_ERROR_STATUS), whole_block())
            << allocation;
}

// The receiver of a message of the capture is called under its mutex.
TEST_F(GenLockedErrorDeathTest, TheProcessorsAreCaptured)
{
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(sched_getcpu(), &one);
    if (sysconf(_SC_NPROCESSORS_ONLN) < 2)
        GTEST_SKIP() << "the capture emits no message here";
    EXPECT_EXIT(
        {
            sched_setaffinity(0, sizeof one, &one);
            mem_msg_redirect([](MEM_MSG_KIND, char const *, char const *, void *) { fail(); }, nullptr);
            int cores = 0;
            GEN_MACHINE_INFO::get_core_cpu_count(&cores);
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), whole_block());
}
