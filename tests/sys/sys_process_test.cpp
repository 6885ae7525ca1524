#include "sys/os/sys_os_thread.h"
#include "sys/sys_process.h"
#include "tests/support/debugger.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(SysIsDebugged, IsFalseWithoutADebugger)
{
    EXPECT_FALSE(sys_is_debugged());
}

TEST(SysIsDebugged, IsTrueUnderADebugger)
{
    // The test above fails there, with the status of a failed test.
    EXPECT_EQ(run_under_debugger("--gtest_filter=SysIsDebugged.IsFalseWithoutADebugger").status, 1);
    EXPECT_EQ(run_under_debugger("--gtest_filter=SysThreadSelf.*").status, 0);
}

TEST(SysIsLastThreadOfExit, IsFalseInARunningProcess)
{
    EXPECT_FALSE(sys_is_last_thread_of_exit());
}

TEST(SysThreadSelf, DiffersBetweenLiveThreads)
{
    std::int64_t const self = sys_thread_self();
    std::int64_t other = 0;
    std::thread([&other] { other = sys_thread_self(); }).join();
    EXPECT_EQ(sys_thread_self(), self);
    EXPECT_NE(other, self);
    for (std::int64_t const identity : {self, other}) {
        EXPECT_NE(identity, 0);
        EXPECT_NE(identity, -1);
    }
}

} // namespace
