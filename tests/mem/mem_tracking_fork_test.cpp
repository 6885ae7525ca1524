// Counting and recording in the child of a fork, which Windows doesn't have.
#include "mem_sys.h"

#include "tests/support/heap_size.h"
#include "tests/support/mem_bin_figures.h"
#include "tests/support/real_block.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <sstream>
#include <thread>

namespace {

// Of all threads in the records, the child has only this one.
bool child_counts()
{
    std::size_t const before = MEM_MANAGER::current_total_memory();
    mem_open_profile_bin("A", "");
    void *const block = take(100000);
    auto const size = static_cast<std::size_t>(heap_size(block));
    Figures const f = close_bin();
    std::ostringstream out;
    bool const is_recorded = mem_dump_tbb_subsystem_tracking(out);
    ::operator delete(block);
    return f.open_bytes == before && f.close_bytes == before + size && is_recorded;
}

} // namespace

TEST(MemTrackingForkDeathTest, TheChildCountsOn)
{
    GTEST_FLAG_SET(death_test_style, "fast");
    mem_enable_tracking(MEM_TRACKING_SOURCES);
    std::atomic<bool> stop{false};
    std::thread busy([&stop] {
        while (!stop)
            ::operator delete(take(3000));
    });
    for (int i = 0; i < 20; ++i)
        EXPECT_EXIT(std::_Exit(child_counts() ? 0 : 1), testing::ExitedWithCode(0), "");
    stop = true;
    busy.join();
    mem_disable_tracking(MEM_TRACKING_SOURCES);
    mem_reset_tracking_entries();
}
