// The count to the byte, over threads that rest, allocate and end.
#include "mem_sys.h"

#include "tests/support/heap_size.h"
#include "tests/support/real_block.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <new>
#include <thread>
#include <vector>

namespace {

constexpr std::int64_t KIB = 1024;

struct Figures
{
    std::int64_t open_bytes;
    std::int64_t close_bytes;
    std::int64_t peak_bytes;
};

Figures close_bin()
{
    std::size_t open = 0;
    std::size_t close = 0;
    std::size_t peak = 0;
    mem_close_profile_bin("", &open, &close, &peak);
    return {static_cast<std::int64_t>(open), static_cast<std::int64_t>(close), static_cast<std::int64_t>(peak)};
}

std::int64_t total()
{
    return static_cast<std::int64_t>(MEM_MANAGER::current_total_memory());
}

// A thread that runs the given actions and rests in between, without an allocation of its own.
class Worker
{
public:
    Worker() : m_thread([this] { serve(); }) {}
    ~Worker()
    {
        m_ends = true;
        m_thread.join();
    }
    Worker(Worker const &) = delete;
    Worker &operator=(Worker const &) = delete;

    /// Returns when it is done. The action is made by the caller's thread.
    void run(std::function<void()> const &action)
    {
        m_action = &action;
        while (m_action != nullptr)
            std::this_thread::yield();
    }

private:
    void serve()
    {
        while (!m_ends) {
            if (std::function<void()> const *const action = m_action) {
                (*action)();
                m_action = nullptr;
            }
            std::this_thread::yield();
        }
    }

    std::atomic<std::function<void()> const *> m_action{nullptr};
    std::atomic<bool> m_ends{false};
    std::thread m_thread;
};

constexpr std::int64_t SIZES[] = {0, 1, 24, 25, 100, 1000, 4096, 40 * KIB, 64 * KIB, 65 * KIB, 1000 * KIB};

} // namespace

TEST(MemTrackingExact, EveryBlockCountsWithItsUsableSize)
{
    for (std::int64_t const bytes : SIZES) {
        std::int64_t const before = total();
        void *const block = take(bytes);
        std::int64_t const with_block = total();
        std::int64_t const size = heap_size(block);
        give(block);
        EXPECT_EQ(with_block - before, size) << bytes;
        EXPECT_GE(size, bytes);
        EXPECT_EQ(total(), before) << bytes;
    }
}

TEST(MemTrackingExact, WhatAThreadAtRestHasCountedIsSeenToTheByte)
{
    Worker worker;
    for (std::int64_t const bytes : SIZES) {
        void *block = nullptr;
        std::int64_t const before = total();
        worker.run([&] { block = take(bytes); });
        std::int64_t const with_block = total();
        std::int64_t const size = heap_size(block);
        worker.run([&] { give(block); });
        EXPECT_EQ(with_block - before, size) << bytes;
        EXPECT_EQ(total(), before) << bytes;
    }
}

TEST(MemTrackingExact, ABlockMayBeReleasedOnAnotherThread)
{
    Worker a;
    Worker b;
    std::int64_t const before = total();
    for (std::int64_t const bytes : SIZES) {
        void *block = nullptr;
        a.run([&] { block = take(bytes); });
        b.run([&] { give(block); });
        EXPECT_EQ(total(), before) << bytes;
    }
}

TEST(MemTrackingExact, ABinIsExactWhileTheOtherThreadsRest)
{
    Worker a;
    Worker b;
    void *of_a = nullptr;
    void *of_b = nullptr;
    a.run([&] { of_a = take(10 * KIB); });
    std::int64_t const before = total();
    mem_open_profile_bin("A", "");
    b.run([&] { of_b = take(30 * KIB); });
    std::int64_t const taken = heap_size(of_b);
    std::int64_t const given = heap_size(of_a);
    a.run([&] { give(of_a); });
    Figures const f = close_bin();
    b.run([&] { give(of_b); });
    EXPECT_EQ(f.open_bytes, before);
    EXPECT_EQ(f.close_bytes, before + taken - given);
}

// The one that allocates is this thread, or another while this one rests.
TEST(MemTrackingExact, ThePeakOfOneThreadIsExact)
{
    Worker worker;
    Worker resting;
    void *kept = nullptr;
    resting.run([&] { kept = take(30 * KIB); });
    std::function<void(std::function<void()> const &)> const runners[] = {
        [](std::function<void()> const &action) { action(); },
        [&](std::function<void()> const &action) { worker.run(action); }};
    for (auto const &run : runners) {
        for (std::int64_t const bytes : SIZES) {
            std::int64_t rise = 0;
            std::function<void()> const action = [&] {
                void *const first = take(bytes);
                void *const second = take(100);
                rise = heap_size(first) + heap_size(second);
                give(first);
                give(second);
                give(take(8));
            };
            mem_open_profile_bin("A", "");
            run(action);
            Figures const f = close_bin();
            EXPECT_EQ(f.peak_bytes - f.open_bytes, rise) << bytes;
            EXPECT_EQ(f.close_bytes, f.open_bytes) << bytes;
        }
    }
    give(kept);
}

TEST(MemTrackingExact, ThePeakOfManySmallBlocksIsExact)
{
    std::vector<void *> blocks(20000);
    std::int64_t rise = 0;
    mem_open_profile_bin("A", "");
    for (void *&block : blocks) {
        block = take(40);
        rise += heap_size(block);
    }
    for (void *const block : blocks)
        give(block);
    Figures const f = close_bin();
    EXPECT_EQ(f.peak_bytes - f.open_bytes, rise);
    EXPECT_EQ(f.close_bytes, f.open_bytes);
}

TEST(MemTrackingExact, ThePeakOfAnIntervalDoesNotReachTheNextOne)
{
    Worker worker;
    mem_open_profile_bin("A", "");
    worker.run([] { give(take(50 * KIB)); });
    close_bin();
    mem_open_profile_bin("B", "");
    Figures const f = close_bin();
    EXPECT_EQ(f.peak_bytes, f.open_bytes);
}

TEST(MemTrackingExact, EachFurtherThreadMayHideSixtyFourKib)
{
    Worker a;
    Worker b;
    for (std::int64_t const bytes : {10 * KIB, 60 * KIB, 300 * KIB}) {
        void *of_a = nullptr;
        void *of_b = nullptr;
        mem_open_profile_bin("A", "");
        a.run([&] { of_a = take(bytes); });
        b.run([&] { of_b = take(bytes); });
        std::int64_t const rise = heap_size(of_a) + heap_size(of_b);
        a.run([&] { give(of_a); });
        b.run([&] { give(of_b); });
        Figures const f = close_bin();
        EXPECT_LE(f.peak_bytes - f.open_bytes, rise + 64 * KIB) << bytes;
        EXPECT_GE(f.peak_bytes - f.open_bytes, rise - 64 * KIB) << bytes;
        EXPECT_EQ(f.close_bytes, f.open_bytes) << bytes;
    }
}

TEST(MemTrackingExact, ASuspendedThreadLeavesNoTrace)
{
    Worker worker;
    mem_open_profile_bin("A", "");
    std::int64_t const before = total();
    worker.run([] {
        MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
        void *const block = take(300 * KIB);
        give(take(20 * KIB));
        give(block);
    });
    EXPECT_EQ(total(), before);
    Figures const f = close_bin();
    EXPECT_EQ(f.peak_bytes, f.open_bytes);
    EXPECT_EQ(f.close_bytes, f.open_bytes);
}

TEST(MemTrackingExact, TheBlocksOfAnEndedThreadStayCounted)
{
    std::int64_t const before = total();
    void *block = nullptr;
    {
        Worker worker;
        worker.run([&] { block = take(20 * KIB); });
    }
    std::int64_t const with_block = total();
    std::int64_t const size = heap_size(block);
    give(block);
    // The runtime may keep a record of its own for a thread that has ended.
    EXPECT_GE(with_block - before, size);
    EXPECT_LE(with_block - before, size + KIB);
    EXPECT_EQ(total(), with_block - size);
}
