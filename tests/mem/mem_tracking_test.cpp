// Counting and profile bins in a process with zel::mem_new.
#include "mem_sys.h"

#include "tests/support/mem_bin_figures.h"
#include "tests/support/real_block.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

// The sanitizers' heaps end the process on a request that can't be met, unless an option makes them return null as a
// heap does.
extern "C" {
[[gnu::visibility("default")]] char const *__asan_default_options();
[[gnu::visibility("default")]] char const *__tsan_default_options();
}

char const *__asan_default_options()
{
    return "allocator_may_return_null=1";
}

char const *__tsan_default_options()
{
    return "allocator_may_return_null=1";
}

namespace {

constexpr std::size_t KIB = 1024;
constexpr std::size_t MIB = 1024 * KIB;
// A heap may make a block larger than asked for.
constexpr std::size_t BLOCK_SLACK = 64 * KIB;

std::int64_t total()
{
    return static_cast<std::int64_t>(MEM_MANAGER::current_total_memory());
}

struct Form
{
    char const *name;
    void *(*allocate)(std::size_t bytes);
    void (*release)(void *block, std::size_t bytes);
    std::size_t alignment;
};
constexpr std::align_val_t WIDE{256};
constexpr std::align_val_t NARROW{1};
constexpr Form FORMS[] = {
    {"plain", [](std::size_t n) { return ::operator new(n); }, [](void *p, std::size_t) { ::operator delete(p); }, 16},
    {"sized", [](std::size_t n) { return ::operator new(n); }, [](void *p, std::size_t n) { ::operator delete(p, n); },
     16},
    {"array", [](std::size_t n) { return ::operator new[](n); }, [](void *p, std::size_t) { ::operator delete[](p); },
     16},
    {"sized array", [](std::size_t n) { return ::operator new[](n); },
     [](void *p, std::size_t n) { ::operator delete[](p, n); }, 16},
    {"nothrow", [](std::size_t n) { return ::operator new(n, std::nothrow); },
     [](void *p, std::size_t) { ::operator delete(p, std::nothrow); }, 16},
    {"nothrow array", [](std::size_t n) { return ::operator new[](n, std::nothrow); },
     [](void *p, std::size_t) { ::operator delete[](p, std::nothrow); }, 16},
    {"aligned", [](std::size_t n) { return ::operator new(n, WIDE); },
     [](void *p, std::size_t) { ::operator delete(p, WIDE); }, 256},
    {"aligned to 1", [](std::size_t n) { return ::operator new(n, NARROW); },
     [](void *p, std::size_t) { ::operator delete(p, NARROW); }, 1},
    {"aligned sized", [](std::size_t n) { return ::operator new(n, WIDE); },
     [](void *p, std::size_t n) { ::operator delete(p, n, WIDE); }, 256},
    {"aligned array", [](std::size_t n) { return ::operator new[](n, WIDE); },
     [](void *p, std::size_t) { ::operator delete[](p, WIDE); }, 256},
    {"aligned sized array", [](std::size_t n) { return ::operator new[](n, WIDE); },
     [](void *p, std::size_t n) { ::operator delete[](p, n, WIDE); }, 256},
    {"aligned nothrow", [](std::size_t n) { return ::operator new(n, WIDE, std::nothrow); },
     [](void *p, std::size_t) { ::operator delete(p, WIDE, std::nothrow); }, 256},
    {"aligned nothrow array", [](std::size_t n) { return ::operator new[](n, WIDE, std::nothrow); },
     [](void *p, std::size_t) { ::operator delete[](p, WIDE, std::nothrow); }, 256},
};

// Counts what `action` adds to the total, seen from this thread.
std::int64_t growth(std::function<void()> const &action)
{
    std::int64_t const before = total();
    action();
    return total() - before;
}

int l_handler_calls = 0;
void give_up_at_third_call()
{
    if (++l_handler_calls == 3)
        std::set_new_handler(nullptr);
}

std::size_t huge()
{
    std::size_t volatile bytes = std::numeric_limits<std::size_t>::max() / 4;
    return bytes;
}

// Allocates as a thread's last act, when its other destructors run.
struct LateAllocation
{
    std::atomic<void *> *kept = nullptr;
    ~LateAllocation() { *kept = take(10 * KIB); }
};

// Numbers from 1 to 4096, the same on every run.
std::size_t next_size(std::uint32_t &state)
{
    state = state * 1664525 + 1013904223;
    return (state >> 20) + 1;
}

} // namespace

TEST(MemCount, EveryFormIsCountedAndTakenBack)
{
    for (Form const &form : FORMS) {
        for (std::size_t const bytes : {std::size_t{0}, std::size_t{1}, std::size_t{100}, 3 * MIB}) {
            std::int64_t const before = total();
            void *const block = form.allocate(bytes);
            std::int64_t const with_block = total();
            std::memset(block, 0x5a, bytes);
            form.release(block, bytes);
            std::int64_t const after = total();
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % form.alignment, 0U) << form.name << ' ' << bytes;
            EXPECT_GE(with_block, before + static_cast<std::int64_t>(bytes)) << form.name << ' ' << bytes;
            EXPECT_LE(with_block, before + static_cast<std::int64_t>(bytes + BLOCK_SLACK)) << form.name << ' ' << bytes;
            EXPECT_GT(with_block, before) << form.name << ' ' << bytes;
            EXPECT_EQ(after, before) << form.name << ' ' << bytes;
        }
    }
}

TEST(MemCount, TheReleaseOfNullCountsNothing)
{
    EXPECT_EQ(growth([] {
                  for (Form const &form : FORMS)
                      form.release(nullptr, 8);
              }),
              0);
}

TEST(MemCount, AHeapOfManySizesComesBackToItsStart)
{
    constexpr std::size_t BLOCKS = 500;
    void *blocks[BLOCKS] = {};
    std::uint32_t state = 1;
    std::int64_t const before = total();
    for (int round = 0; round < 20; ++round) {
        for (void *&block : blocks) {
            give(block);
            block = take(next_size(state));
        }
    }
    std::int64_t const full = total();
    for (void *const block : blocks)
        give(block);
    EXPECT_GT(full, before + static_cast<std::int64_t>(BLOCKS * 1000));
    EXPECT_EQ(total(), before);
}

TEST(MemCount, TheThrowingFormsThrowIfTheRequestCannotBeMet)
{
    EXPECT_EQ(growth([] {
                  EXPECT_THROW(seen(::operator new(huge())), std::bad_alloc);
                  EXPECT_THROW(seen(::operator new[](huge())), std::bad_alloc);
                  EXPECT_THROW(seen(::operator new(huge(), WIDE)), std::bad_alloc);
                  EXPECT_THROW(seen(::operator new[](huge(), WIDE)), std::bad_alloc);
              }),
              0);
}

TEST(MemCount, TheNothrowFormsGiveNull)
{
    std::size_t volatile const largest = std::numeric_limits<std::size_t>::max();
    EXPECT_EQ(growth([&] {
                  EXPECT_EQ(::operator new(huge(), std::nothrow), nullptr);
                  EXPECT_EQ(::operator new[](huge(), std::nothrow), nullptr);
                  EXPECT_EQ(::operator new(huge(), WIDE, std::nothrow), nullptr);
                  EXPECT_EQ(::operator new[](huge(), WIDE, std::nothrow), nullptr);
                  EXPECT_EQ(::operator new(largest, std::nothrow), nullptr);
                  EXPECT_EQ(::operator new(largest, WIDE, std::nothrow), nullptr);
              }),
              0);
}

TEST(MemCount, TheNewHandlerIsAskedUntilItGivesUp)
{
    std::set_new_handler(give_up_at_third_call);
    EXPECT_THROW(seen(::operator new(huge())), std::bad_alloc);
    EXPECT_EQ(l_handler_calls, 3);

    l_handler_calls = 0;
    std::set_new_handler(give_up_at_third_call);
    EXPECT_EQ(::operator new(huge(), WIDE, std::nothrow), nullptr);
    EXPECT_EQ(l_handler_calls, 3);
}

TEST(MemCount, AnEndedThreadLosesNothing)
{
    constexpr std::size_t THREADS = 8;
    constexpr std::size_t BYTES = 40 * KIB; // below the limit at which a thread folds by itself
    std::vector<void *> blocks(THREADS);
    std::vector<std::thread> threads(THREADS);
    std::int64_t const before = total();
    for (std::size_t i = 0; i < THREADS; ++i) {
        threads[i] = std::thread([&blocks, i] { blocks[i] = take(BYTES); });
        threads[i].join();
    }
    std::int64_t const allocated = total() - before;
    for (void *&block : blocks)
        std::thread([&block] { give(block); }).join();
    EXPECT_GE(allocated, static_cast<std::int64_t>(THREADS * BYTES));
    EXPECT_LE(allocated, static_cast<std::int64_t>(THREADS * BYTES + 16 * KIB));
    // The allocations of the thread objects themselves on this thread vary by a few blocks.
    EXPECT_LE(std::abs(total() - before), static_cast<std::int64_t>(4 * KIB));
}

TEST(MemCount, AThreadsLateDestructorsAreCounted)
{
    std::atomic<void *> kept{nullptr};
    std::int64_t const before = total();
    std::thread([&kept] {
        static thread_local LateAllocation late;
        late.kept = &kept;
    }).join();
    EXPECT_NE(kept.load(), nullptr);
    EXPECT_GE(total(), before + static_cast<std::int64_t>(10 * KIB));
    give(kept);
    EXPECT_LE(std::abs(total() - before), static_cast<std::int64_t>(4 * KIB));
}

TEST(MemCount, ThreadsTogetherKeepTheBalance)
{
    constexpr int THREADS = 4;
    std::atomic<void *> slots[64] = {};
    std::vector<std::thread> threads;
    threads.reserve(THREADS);
    std::int64_t const before = total();
    for (std::uint32_t t = 0; t < THREADS; ++t) {
        threads.emplace_back([&slots, t] {
            std::uint32_t state = t;
            for (int i = 0; i < 5000; ++i) {
                std::size_t const bytes = next_size(state);
                give(slots[bytes % 64].exchange(take(bytes))); // often another thread's block
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (std::atomic<void *> &slot : slots)
        give(slot);
    EXPECT_LE(std::abs(total() - before), static_cast<std::int64_t>(4 * KIB));
}

TEST(MemCount, ASuspendedThreadCountsNothing)
{
    void *inside = nullptr;
    void *const outside = take(MIB);
    EXPECT_EQ(growth([&] {
                  MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const outer;
                  {
                      MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const inner;
                      inside = take(MIB);
                  }
                  give(take(MIB)); // the outer scope still lives
                  give(inside);
              }),
              0);
    EXPECT_LE(growth([&] { give(outside); }), -static_cast<std::int64_t>(MIB));
    EXPECT_GE(growth([&] { inside = take(MIB); }), static_cast<std::int64_t>(MIB));
    give(inside);
}

TEST(MemCount, SuspendingStopsNoOtherThread)
{
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
    void *block = nullptr;
    // The other thread also releases what this one, suspended, has allocated to start it.
    EXPECT_GE(growth([&] { std::thread([&] { block = take(MIB); }).join(); }),
              static_cast<std::int64_t>(MIB - 4 * KIB));
    std::thread([&] { give(block); }).join();
}

TEST(MemCount, ABlockThatCrossesASuspendedScopeIsCountedOnOneSideOnly)
{
    void *block = take(MIB);
    EXPECT_EQ(growth([&] {
                  MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
                  give(block);
                  block = take(MIB);
              }),
              0);
    EXPECT_LE(growth([&] { give(block); }), -static_cast<std::int64_t>(MIB));
}

TEST(MemCount, TheTotalIsNeverShownBelowZero)
{
    std::size_t const now = MEM_MANAGER::current_total_memory();
    mem_count_release(nullptr, now + MIB);
    EXPECT_EQ(MEM_MANAGER::current_total_memory(), 0U);
    mem_open_profile_bin("A", "");
    Figures const f = close_bin();
    EXPECT_EQ(f.open_bytes, 0U);
    EXPECT_EQ(f.close_bytes, 0U);
    EXPECT_EQ(f.peak_bytes, 0U);
    // The true figure is below zero and stays so.
    mem_count_allocation(nullptr, now + MIB, nullptr, nullptr);
    EXPECT_LE(std::abs(total() - static_cast<std::int64_t>(now)), static_cast<std::int64_t>(64 * KIB));
}

TEST(MemProfileBins, ABinReportsItsOpenCloseAndPeak)
{
    mem_open_profile_bin("A", "tag");
    void *const kept = take(MIB);
    give(take(10 * MIB));
    Figures const f = close_bin("tag");
    give(kept);
    EXPECT_GT(f.open_bytes, 0U);
    EXPECT_GE(f.close_bytes, f.open_bytes + MIB);
    EXPECT_LE(f.close_bytes, f.open_bytes + MIB + BLOCK_SLACK);
    EXPECT_GE(f.peak_bytes, f.open_bytes + 11 * MIB);
    EXPECT_LE(f.peak_bytes, f.open_bytes + 11 * MIB + 2 * BLOCK_SLACK);
}

TEST(MemProfileBins, AnIdleBinHasThreeEqualFigures)
{
    give(take(20 * MIB)); // a peak from before
    mem_open_profile_bin("A", "");
    Figures const f = close_bin();
    EXPECT_GT(f.open_bytes, 0U);
    EXPECT_EQ(f.close_bytes, f.open_bytes);
    EXPECT_EQ(f.peak_bytes, f.open_bytes);
}

TEST(MemProfileBins, TheLastFewBytesAreInTheFigures)
{
    mem_open_profile_bin("A", "");
    void *const block = take(100); // far from the limit of a fold
    Figures const f = close_bin();
    give(block);
    EXPECT_GE(f.close_bytes, f.open_bytes + 100);
    EXPECT_LE(f.close_bytes, f.open_bytes + 1000);
    EXPECT_EQ(f.peak_bytes, f.close_bytes);
}

TEST(MemProfileBins, MemoryReleasedInABinLowersItsClose)
{
    void *const block = take(5 * MIB);
    mem_open_profile_bin("A", "");
    give(block);
    Figures const f = close_bin();
    EXPECT_LE(f.close_bytes + 5 * MIB, f.open_bytes);
    EXPECT_EQ(f.peak_bytes, f.open_bytes);
}

TEST(MemProfileBins, NestedBinsHandTheirPeaksOut)
{
    mem_open_profile_bin("A", "");
    void *const of_a = take(MIB);
    mem_open_profile_bin("B", "");
    give(take(8 * MIB));
    mem_open_profile_bin("C", "");
    give(take(2 * MIB));
    Figures const c = close_bin();
    Figures const b = close_bin();
    mem_open_profile_bin("D", "");
    give(take(4 * MIB));
    Figures const d = close_bin();
    give(of_a);
    Figures const a = close_bin();

    // A's own block is under all of them.
    EXPECT_GE(b.open_bytes, a.open_bytes + MIB);
    EXPECT_EQ(c.open_bytes, b.open_bytes);
    EXPECT_EQ(d.open_bytes, b.close_bytes);
    EXPECT_GE(c.peak_bytes, c.open_bytes + 2 * MIB);
    EXPECT_LT(c.peak_bytes, c.open_bytes + 3 * MIB);
    EXPECT_GE(b.peak_bytes, b.open_bytes + 8 * MIB);
    EXPECT_LT(b.peak_bytes, b.open_bytes + 9 * MIB);
    EXPECT_GE(d.peak_bytes, d.open_bytes + 4 * MIB);
    EXPECT_LT(d.peak_bytes, d.open_bytes + 5 * MIB);
    EXPECT_EQ(a.peak_bytes, b.peak_bytes);
    EXPECT_EQ(a.close_bytes, a.open_bytes);
}

TEST(MemProfileBins, APeakBeforeAnInnerBinIsNotItsOwn)
{
    mem_open_profile_bin("A", "");
    give(take(8 * MIB));
    mem_open_profile_bin("B", "");
    Figures const b = close_bin();
    give(take(2 * MIB));
    Figures const a = close_bin();
    EXPECT_EQ(b.peak_bytes, b.open_bytes);
    EXPECT_GE(a.peak_bytes, a.open_bytes + 8 * MIB);
}

TEST(MemProfileBins, AFlushKeepsThePeakInTheOpenBin)
{
    mem_open_profile_bin("A", "");
    give(take(8 * MIB));
    mem_tbb_tracking_flush_peak();
    Figures const f = close_bin();
    EXPECT_GE(f.peak_bytes, f.open_bytes + 8 * MIB);
    EXPECT_EQ(f.close_bytes, f.open_bytes);
}

TEST(MemProfileBins, OtherThreadsAreInTheFigures)
{
    mem_open_profile_bin("A", "");
    void *block = nullptr;
    std::thread([&] {
        block = take(3 * MIB);
        give(take(6 * MIB));
    }).join();
    Figures const f = close_bin();
    give(block);
    EXPECT_GE(f.close_bytes, f.open_bytes + 3 * MIB);
    EXPECT_GE(f.peak_bytes, f.open_bytes + 9 * MIB);
    EXPECT_LT(f.peak_bytes, f.open_bytes + 10 * MIB);
}

TEST(MemProfileBins, BinsMayOpenAndCloseWhileOtherThreadsAllocate)
{
    std::atomic<bool> stop{false};
    std::thread other([&] {
        do
            give(take(MIB));
        while (!stop);
    });
    int wrong = 0;
    for (int i = 0; i < 20000; ++i) {
        mem_open_profile_bin("A", "");
        Figures const f = close_bin();
        wrong += f.peak_bytes < f.open_bytes || f.peak_bytes < f.close_bytes || f.peak_bytes > f.open_bytes + 64 * MIB;
    }
    stop = true;
    other.join();
    EXPECT_EQ(wrong, 0);
}

TEST(MemProfileBins, SuspendedAllocationsAreNotInTheFigures)
{
    mem_open_profile_bin("A", "");
    {
        MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
        give(take(8 * MIB));
    }
    Figures const f = close_bin();
    EXPECT_EQ(f.close_bytes, f.open_bytes);
    EXPECT_EQ(f.peak_bytes, f.open_bytes);
}

TEST(MemProfileBins, ABoundaryInASuspendedScopeSeesWhatWasCountedBefore)
{
    mem_open_profile_bin("A", "");
    void *const block = take(100);
    Figures f;
    {
        MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
        f = close_bin();
    }
    give(block);
    EXPECT_GE(f.close_bytes, f.open_bytes + 100);
}

TEST(MemProfileBins, DeepNestingKeepsEveryLevel)
{
    constexpr std::size_t DEPTH = 1000;
    void *blocks[DEPTH] = {};
    Figures figures[DEPTH];
    for (void *&block : blocks) {
        mem_open_profile_bin("deep", "");
        block = take(KIB);
    }
    for (std::size_t i = DEPTH; i > 0; --i)
        figures[i - 1] = close_bin();
    for (void *const block : blocks)
        give(block);
    for (std::size_t i = 0; i < DEPTH; ++i) {
        EXPECT_GE(figures[i].close_bytes, figures[i].open_bytes + (DEPTH - i) * KIB) << "level " << i;
        EXPECT_EQ(figures[i].peak_bytes, figures[0].peak_bytes) << "level " << i;
    }
}

TEST(MemProfileBins, ACloseWithoutAnOpenGivesTheCurrentFigure)
{
    Figures const f = close_bin("tag");
    EXPECT_GT(f.close_bytes, 0U);
    EXPECT_EQ(f.open_bytes, f.close_bytes);
    EXPECT_EQ(f.peak_bytes, f.close_bytes);
    // and the next pair is not out of step
    mem_open_profile_bin("A", "");
    void *const block = take(MIB);
    Figures const a = close_bin();
    give(block);
    EXPECT_GE(a.close_bytes, a.open_bytes + MIB);
}

namespace {

struct KeyCase
{
    char const *value;
    bool tbb;
    bool statistics;
    bool timeline;
    bool sources;
    bool selected_bin;
};

// The key is read once in a process; a TEST is one.
void expect_key(KeyCase const &c)
{
    mem_cfg_set("mem_tracking", c.value);
    EXPECT_EQ(mem_get_tbb_memory_tracking_enabled(), c.tbb);
    EXPECT_EQ(mem_tracking_is_enabled(MEM_TRACKING_STATISTICS), c.statistics);
    EXPECT_EQ(mem_tracking_is_enabled(MEM_TRACKING_TIMELINE), c.timeline);
    EXPECT_EQ(mem_tracking_is_enabled(MEM_TRACKING_SOURCES), c.sources);
    EXPECT_EQ(mem_tracking_is_enabled(MEM_TRACKING_SELECTED_BIN), c.selected_bin);
}

} // namespace

TEST(MemTrackingKey, AbsentIsOff)
{
    expect_key({nullptr, false, false, false, false, false});
}
TEST(MemTrackingKey, ZeroIsOff)
{
    expect_key({"0", false, false, false, false, false});
}
TEST(MemTrackingKey, TwoIsTheStatistics)
{
    expect_key({"2", true, true, false, false, false});
}
TEST(MemTrackingKey, FourIsTheTimeline)
{
    expect_key({"4", true, false, true, false, false});
}
TEST(MemTrackingKey, EightIsTheSources)
{
    expect_key({"8", true, false, false, true, false});
}
TEST(MemTrackingKey, TwelveIsASelectedBin)
{
    expect_key({"12", true, false, true, true, true});
}
TEST(MemTrackingKey, AnotherBitAloneTracksNothingAndCountsAsEnabled)
{
    expect_key({"1", true, false, false, false, false});
}

TEST(MemTracking, BitsAreSetAndClearedOverTheKey)
{
    mem_cfg_set("mem_tracking", "2");
    mem_enable_tracking(MEM_TRACKING_SELECTED_BIN);
    EXPECT_TRUE(mem_tracking_is_enabled(MEM_TRACKING_STATISTICS));
    EXPECT_TRUE(mem_tracking_is_enabled(MEM_TRACKING_SELECTED_BIN));
    mem_disable_tracking(MEM_TRACKING_SOURCES);
    EXPECT_FALSE(mem_tracking_is_enabled(MEM_TRACKING_SELECTED_BIN));
    EXPECT_TRUE(mem_tracking_is_enabled(MEM_TRACKING_TIMELINE));
    mem_disable_tracking(MEM_TRACKING_SELECTED_BIN);
    EXPECT_FALSE(mem_tracking_is_enabled(MEM_TRACKING_TIMELINE));
    EXPECT_TRUE(mem_tracking_is_enabled(MEM_TRACKING_STATISTICS));
    mem_disable_tracking(MEM_TRACKING_STATISTICS);
    EXPECT_FALSE(mem_tracking_is_enabled(MEM_TRACKING_STATISTICS));
    // the key is what it was
    EXPECT_TRUE(mem_get_tbb_memory_tracking_enabled());
}

TEST(MemTracking, EnablingDoesNotChangeTheKey)
{
    mem_cfg_set("mem_tracking", "0");
    mem_enable_tracking(MEM_TRACKING_SELECTED_BIN);
    EXPECT_FALSE(mem_get_tbb_memory_tracking_enabled());
    EXPECT_TRUE(mem_tracking_is_enabled(MEM_TRACKING_SOURCES));
}

TEST(MemTracking, TheKeyIsReadOnce)
{
    mem_cfg_set("mem_tracking", "8");
    EXPECT_TRUE(mem_get_tbb_memory_tracking_enabled());
    mem_cfg_set("mem_tracking", "0");
    EXPECT_TRUE(mem_get_tbb_memory_tracking_enabled());
    EXPECT_TRUE(mem_tracking_is_enabled(MEM_TRACKING_SOURCES));
}

TEST(MemTracking, ThreadsMayAskFirstAtOnce)
{
    mem_cfg_set("mem_tracking", "2");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([] { mem_enable_tracking(MEM_TRACKING_SELECTED_BIN); });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_TRUE(mem_tracking_is_enabled(MEM_TRACKING_SELECTED_BIN));
    EXPECT_TRUE(mem_tracking_is_enabled(MEM_TRACKING_STATISTICS));
}

TEST(MemTracking, DumpsWithoutRecordsWriteNothing)
{
    mem_open_profile_bin("A", "tag");
    mem_set_timeline_label("stage");
    mem_disable_profile_bin_tag_timeline_labels();
    close_bin("tag");
    mem_reset_tracking_entries();
    std::ostringstream out;
    std::ostringstream details;
    EXPECT_FALSE(mem_dump_tbb_fileline_tracking(out));
    EXPECT_FALSE(mem_dump_tbb_subsystem_tracking(out));
    EXPECT_FALSE(mem_dump_tbb_profile_bin_stats_tracking(out));
    EXPECT_FALSE(mem_dump_tbb_profile_bin_tag_stats_tracking(out));
    EXPECT_FALSE(mem_dump_tbb_module_tracking(out, details));
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(details.str(), "");
}
