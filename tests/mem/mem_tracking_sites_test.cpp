// The tables by source line and by subsystem, and the modules of the time line.
#include "mem_sys.h"

#include "tests/support/heap_size.h"
#include "tests/support/platform.h"
#include "tests/support/real_block.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

namespace {

using testing::HasSubstr;

constexpr char const *PROGRAM = ON_WINDOWS ? "mem_tracking_sites_test.exe" : "mem_tracking_sites_test";

struct Row
{
    std::int64_t peak_bytes;
    std::int64_t live_bytes;
    std::int64_t live_blocks;
    std::int64_t total_bytes;
    std::int64_t total_blocks;
    std::string place;
};

std::vector<Row> rows_of(std::string const &table)
{
    std::istringstream lines(table);
    std::string line;
    std::getline(lines, line);
    std::vector<Row> rows;
    while (std::getline(lines, line) && !line.empty()) {
        std::istringstream fields(line);
        Row row{};
        fields >> row.peak_bytes >> row.live_bytes >> row.live_blocks >> row.total_bytes >> row.total_blocks;
        EXPECT_EQ(fields.get(), '\t') << line;
        std::getline(fields, row.place);
        rows.push_back(row);
    }
    return rows;
}

std::vector<Row> rows_by_line()
{
    std::ostringstream out;
    EXPECT_TRUE(mem_dump_tbb_fileline_tracking(out));
    return rows_of(out.str());
}

// All zero if there is none.
Row row_of(std::string const &part)
{
    std::vector<Row> const rows = rows_by_line();
    auto const row =
        std::find_if(rows.begin(), rows.end(), [&](Row const &r) { return r.place.find(part) != std::string::npos; });
    return row == rows.end() ? Row{} : *row;
}

class MemTrackingSites : public testing::Test
{
protected:
    MemTrackingSites() { mem_enable_tracking(MEM_TRACKING_SOURCES); }
    ~MemTrackingSites() override
    {
        mem_disable_tracking(MEM_TRACKING_SELECTED_BIN);
        mem_reset_tracking_entries();
    }
};

} // namespace

// Sites by name: on Linux the table has the function, on Windows an offset alone, which the tests take from the first
// allocation there.
[[gnu::noinline]] void *mem_test_site(std::size_t bytes)
{
    return seen(::operator new(bytes));
}

[[gnu::noinline]] void *mem_test_other_site(std::size_t bytes)
{
    return seen(::operator new(bytes));
}

// Called by pointers, or the compiler makes a copy for some of the calls.
void *(*volatile l_site)(std::size_t bytes) = mem_test_site;
void *(*volatile l_other_site)(std::size_t bytes) = mem_test_other_site;

[[gnu::noinline]] void mem_test_grow(std::vector<std::int64_t> *values)
{
    for (int i = 0; i < 1000; ++i)
        values->push_back(i);
}

[[gnu::noinline]] std::string mem_test_text(std::string const &text)
{
    return text + " and the rest, which makes it too long for the object itself";
}

[[gnu::noinline]] void mem_test_index(std::unordered_map<int, std::string> *index)
{
    for (int i = 0; i < 100; ++i)
        (*index)[i];
}

namespace {

inline std::unique_ptr<std::int64_t[]> inlined_helper()
{
    return std::make_unique<std::int64_t[]>(500);
}

} // namespace

[[gnu::noinline]] std::unique_ptr<std::int64_t[]> mem_test_inlined()
{
    return inlined_helper();
}

TEST_F(MemTrackingSites, ASiteAddsUpItsBlocks)
{
    void *const a = l_site(1000);
    void *const b = l_site(3000);
    std::int64_t const size_a = heap_size(a);
    std::int64_t const size_b = heap_size(b);
    ::operator delete(a);
    std::vector<Row> const rows = rows_by_line();
    ::operator delete(b);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].place, "total");
    for (Row const &row : rows) {
        EXPECT_EQ(row.peak_bytes, size_a + size_b) << row.place;
        EXPECT_EQ(row.live_bytes, size_b) << row.place;
        EXPECT_EQ(row.live_blocks, 1) << row.place;
        EXPECT_EQ(row.total_bytes, size_a + size_b) << row.place;
        EXPECT_EQ(row.total_blocks, 2) << row.place;
    }
    EXPECT_THAT(rows[1].place, HasSubstr(PROGRAM));
}

TEST_F(MemTrackingSites, TheLargestComesFirst)
{
    void *const blocks[] = {l_site(1000), l_other_site(5000)};
    std::vector<Row> const rows = rows_by_line();
    for (void *const block : blocks)
        ::operator delete(block);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_GE(rows[1].peak_bytes, 5000);
    EXPECT_LT(rows[2].peak_bytes, 5000);
    EXPECT_EQ(rows[0].peak_bytes, rows[1].peak_bytes + rows[2].peak_bytes);
}

TEST_F(MemTrackingSites, AnEmptyTableIsNotWritten)
{
    std::ostringstream out;
    EXPECT_FALSE(mem_dump_tbb_fileline_tracking(out));
    EXPECT_FALSE(mem_dump_tbb_subsystem_tracking(out));
    EXPECT_EQ(out.str(), "");
}

// By function, file and line, on Windows by module and offset.
TEST_F(MemTrackingSites, PlacesAreNamed)
{
    void *const block = l_site(1000);
    std::vector<Row> const rows = rows_by_line();
    ::operator delete(block);
    if (ON_WINDOWS) {
        EXPECT_THAT(rows.at(1).place, testing::StartsWith("mem_tracking_sites_test.exe+0x"));
    } else {
        EXPECT_THAT(rows.at(1).place, testing::MatchesRegex("mem_test_site\\(unsigned long\\) at "
                                                            "tests/mem/mem_tracking_sites_test.cpp:[0-9]+ "
                                                            "\\(mem_tracking_sites_test\\)"));
    }
}

// On Linux, an allocation inside the standard library belongs to the code that called the library, whether the function
// of the library was inlined, is an instance of a template, or lies in the shared library. On Windows it belongs to the
// place to which the call of operator new returns, in whatever module that is.
TEST_F(MemTrackingSites, TheStandardLibraryIsPassedOver)
{
    std::vector<std::int64_t> values;
    std::unordered_map<int, std::string> index;
    std::string const beginning = "a beginning";
    mem_test_grow(&values);
    mem_test_index(&index);
    std::string const text = mem_test_text(beginning);
    std::unique_ptr<std::int64_t[]> const inlined = mem_test_inlined();
    if (ON_WINDOWS) {
        std::vector<Row> const rows = rows_by_line();
        ASSERT_GE(rows.size(), 3U);
        for (auto row = rows.begin() + 1; row != rows.end(); ++row)
            EXPECT_THAT(row->place, testing::AnyOf(testing::StartsWith(std::string(PROGRAM) + "+0x"),
                                                   testing::StartsWith("libstdc++-6.dll+0x")));
        EXPECT_GE(rows[1].live_bytes, 8000);
        return;
    }
    EXPECT_GE(row_of("mem_test_grow(").live_bytes, 8000);
    EXPECT_EQ(row_of("mem_test_grow(").live_blocks, 1);
    EXPECT_GE(row_of("mem_test_grow(").total_blocks, 10);
    EXPECT_GE(row_of("mem_test_index(").live_blocks, 101);
    EXPECT_GE(row_of("mem_test_text(").live_bytes, 60);
    EXPECT_EQ(row_of("inlined_helper").live_blocks, 1);
    for (Row const &row : rows_by_line())
        EXPECT_EQ(row.place.find("/c++/"), std::string::npos) << row.place;
}

TEST_F(MemTrackingSites, ABlockMayBeReleasedOnAnotherThread)
{
    void *block = nullptr;
    std::thread([&] { block = l_site(100000); }).join();
    Row const taken = rows_by_line().at(1);
    std::thread([&] { ::operator delete(block); }).join();
    std::vector<Row> const rows = rows_by_line();
    EXPECT_EQ(taken.live_blocks, 1);
    EXPECT_EQ(rows.at(1).place, taken.place);
    EXPECT_EQ(rows.at(1).live_blocks, 0);
    EXPECT_EQ(rows.at(1).live_bytes, 0);
    EXPECT_EQ(rows.at(1).peak_bytes, taken.live_bytes);
}

TEST_F(MemTrackingSites, UntrackedBlocksAreNotMissed)
{
    mem_disable_tracking(MEM_TRACKING_SOURCES);
    void *const before = l_site(100000);
    mem_enable_tracking(MEM_TRACKING_SOURCES);
    ::operator delete(before);
    void *suspended = nullptr;
    {
        MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
        suspended = l_site(200000);
    }
    ::operator delete(suspended);
    std::ostringstream out;
    EXPECT_FALSE(mem_dump_tbb_fileline_tracking(out)) << out.str();
}

TEST_F(MemTrackingSites, AnAddressThatIsGivenOutAnewIsOneBlock)
{
    for (int i = 0; i < 100; ++i) {
        void *const block = l_site(5000);
        MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
        ::operator delete(block);
    }
    // The heap returns the same address again and again. A sanitizer's heap doesn't, so its blocks stay in the table.
    void *const kept = l_site(5000);
    Row const row = rows_by_line().at(1);
    ::operator delete(kept);
    EXPECT_EQ(row.total_blocks, 101);
    EXPECT_GE(row.live_blocks, 1);
    EXPECT_EQ(row.live_bytes % row.live_blocks, 0);
    EXPECT_EQ(row.total_bytes, 101 * (row.live_bytes / row.live_blocks));
}

TEST_F(MemTrackingSites, ReleasesAreSeenAgainAfterAPause)
{
    void *const block = l_site(1000);
    mem_disable_tracking(MEM_TRACKING_SOURCES);
    EXPECT_EQ(rows_by_line().at(1).live_blocks, 1);
    mem_enable_tracking(MEM_TRACKING_SOURCES);
    ::operator delete(block);
    EXPECT_EQ(rows_by_line().at(1).live_blocks, 0);
}

TEST_F(MemTrackingSites, AResetForgetsBlocksAndSites)
{
    void *const block = l_site(1000);
    mem_reset_tracking_entries();
    std::ostringstream out;
    EXPECT_FALSE(mem_dump_tbb_fileline_tracking(out));
    ::operator delete(block);
    void *const later = l_site(2000);
    std::vector<Row> const rows = rows_by_line();
    ::operator delete(later);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[1].live_blocks, 1);
    EXPECT_EQ(rows[1].total_blocks, 1);
}

TEST_F(MemTrackingSites, ThePeakIsThatOfTheSum)
{
    void *const a = l_site(100000);
    ::operator delete(a);
    void *const b = l_other_site(200000);
    std::int64_t const size = heap_size(b);
    std::vector<Row> const rows = rows_by_line();
    ::operator delete(b);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].peak_bytes, size);
    EXPECT_EQ(rows[1].peak_bytes, size);
    EXPECT_EQ(rows[2].peak_bytes, 0); // it had no block when the sum was largest
    EXPECT_GE(rows[2].total_bytes, 100000);
}

TEST_F(MemTrackingSites, AFlushBeginsANewPeak)
{
    void *const kept = l_site(1000);
    ::operator delete(l_other_site(200000));
    mem_tbb_tracking_flush_peak();
    void *const more = l_site(3000);
    std::int64_t const size = heap_size(kept) + heap_size(more);
    ::operator delete(more);
    std::vector<Row> const rows = rows_by_line();
    ::operator delete(kept);
    ASSERT_EQ(rows.size(), 3U);
    EXPECT_EQ(rows[0].peak_bytes, size);
    EXPECT_EQ(rows[1].peak_bytes, size);
    EXPECT_EQ(rows[2].peak_bytes, 0);
}

TEST_F(MemTrackingSites, SubsystemsAreModules)
{
    void *const block = l_site(1000);
    std::ostringstream out;
    EXPECT_TRUE(mem_dump_tbb_subsystem_tracking(out));
    ::operator delete(block);
    std::vector<Row> const rows = rows_of(out.str());
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0].place, "total");
    EXPECT_EQ(rows[1].place, PROGRAM);
    EXPECT_EQ(rows[1].live_bytes, rows[0].live_bytes);
    EXPECT_EQ(rows[1].live_blocks, 1);
}

TEST_F(MemTrackingSites, ManyBlocksAndManySizesComeOutEven)
{
    // More than the tables begin with, released in another order.
    constexpr std::size_t COUNT = 20000;
    std::vector<void *> blocks;
    blocks.reserve(COUNT);
    std::int64_t size = 0;
    for (std::size_t i = 0; i < COUNT; ++i) {
        blocks.push_back(i % 3 == 0 ? l_site(i % 977) : l_other_site(i % 1009));
        size += heap_size(blocks.back());
    }
    Row const full = rows_by_line().at(0);
    for (std::size_t i = 0; i < COUNT; ++i)
        ::operator delete(blocks[(i * 7919) % COUNT]);
    Row const empty = rows_by_line().at(0);
    EXPECT_EQ(full.live_blocks, static_cast<std::int64_t>(COUNT) + 1); // and the room of the vector
    EXPECT_EQ(full.live_bytes, size + heap_size(blocks.data()));
    EXPECT_EQ(empty.live_blocks, full.live_blocks - static_cast<std::int64_t>(COUNT));
    EXPECT_EQ(empty.live_bytes, full.live_bytes - size);
}

TEST_F(MemTrackingSites, ThreadsTogetherKeepTheBalance)
{
    constexpr int THREADS = 4;
    std::atomic<void *> slots[64] = {};
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < THREADS; ++t) {
        threads.emplace_back([&slots, t] {
            std::uint32_t state = t;
            for (int i = 0; i < 3000; ++i) {
                state = state * 1664525 + 1013904223;
                ::operator delete(slots[(state >> 8) % 64].exchange(l_site(state >> 20)));
            }
        });
    }
    mem_disable_tracking(MEM_TRACKING_TIMELINE);
    std::ostringstream out;
    mem_dump_tbb_subsystem_tracking(out); // while they run
    for (std::thread &thread : threads)
        thread.join();
    threads.clear();
    std::int64_t live = 0;
    std::int64_t bytes = 0;
    for (std::atomic<void *> &slot : slots)
        if (slot != nullptr) {
            ++live;
            bytes += heap_size(slot);
        }
    Row const row = rows_by_line().at(0);
    for (std::atomic<void *> &slot : slots)
        ::operator delete(slot);
    // The memory of the threads themselves is released with them, except for a block or two of the runtime.
    EXPECT_GE(row.live_blocks, live);
    EXPECT_LE(row.live_blocks, live + 8);
    EXPECT_GE(row.live_bytes, bytes);
    EXPECT_GE(row.total_blocks, 4 * 3000);
    EXPECT_EQ(rows_by_line().at(0).live_blocks, row.live_blocks - live);
}

TEST_F(MemTrackingSites, TheOtherFormsAreRecordedToo)
{
    constexpr std::align_val_t WIDE{256};
    ::operator delete[](seen(::operator new[](100)));
    ::operator delete(seen(::operator new(100, WIDE)), WIDE);
    ::operator delete[](seen(::operator new[](100, WIDE)), WIDE);
    ::operator delete(seen(::operator new(100, std::nothrow)), std::nothrow);
    ::operator delete[](seen(::operator new[](100, WIDE, std::nothrow)), WIDE, std::nothrow);
    Row const row = rows_by_line().at(0);
    EXPECT_EQ(row.total_blocks, 5);
    EXPECT_EQ(row.live_blocks, 0);
    EXPECT_EQ(row.live_bytes, 0);
}

TEST_F(MemTrackingSites, TheModulesAreReportedWithTheTimeLine)
{
    mem_enable_tracking(MEM_TRACKING_TIMELINE);
    mem_open_profile_bin("A", "");
    void *const block = l_site(100000);
    std::int64_t const size = heap_size(block);
    std::size_t bytes = 0;
    mem_close_profile_bin("", &bytes, &bytes, &bytes);
    ::operator delete(block);
    mem_disable_tracking(MEM_TRACKING_SELECTED_BIN);
    std::ostringstream rows;
    std::ostringstream modules;
    EXPECT_TRUE(mem_dump_tbb_module_tracking(rows, modules));
    EXPECT_THAT(rows.str(), HasSubstr("\tclose\t\tA\n"));
    EXPECT_THAT(modules.str(), HasSubstr(std::string(PROGRAM) + "\tevent\tlabel\tbin\n"));
    EXPECT_THAT(modules.str(), HasSubstr(" " + std::to_string(size) + "\tclose\t\tA\n"));
}
