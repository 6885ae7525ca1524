// Profile bins in a process without zel::mem_new: their figures are the working set's.
#include "mem_sys.h"

#include "tests/support/mem_bin_figures.h"
#include "tests/support/resident_memory.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr std::size_t MIB = 1024 * 1024;
// The change that the rest of the process and the system's own rounding may cause.
constexpr std::size_t SLACK = 16 * MIB;

} // namespace

TEST(MemTrackingWithoutNew, ABinReportsTheWorkingSetAtItsEnds)
{
    std::size_t const before = mem_info_get_process_current_working_set_size();
    mem_open_profile_bin("A", "");
    std::unique_ptr<char[]> const memory = resident_bytes(128 * MIB);
    Figures const f = close_bin();
    EXPECT_GE(f.open_bytes + SLACK, before);
    EXPECT_LE(f.open_bytes, before + SLACK);
    EXPECT_GE(f.close_bytes, f.open_bytes + 128 * MIB - SLACK);
    EXPECT_GE(f.peak_bytes, f.close_bytes);
}

TEST(MemTrackingWithoutNew, APeakOfTheProcessBetweenTheEndsIsSeen)
{
    mem_open_profile_bin("A", "");
    resident_bytes(256 * MIB).reset();
    Figures const f = close_bin();
    EXPECT_GE(f.peak_bytes, f.open_bytes + 256 * MIB - SLACK);
    EXPECT_GE(f.peak_bytes, f.close_bytes);
}

TEST(MemTrackingWithoutNew, TheOuterBinHasThePeakOfTheInnerOne)
{
    mem_open_profile_bin("A", "");
    mem_open_profile_bin("B", "");
    resident_bytes(256 * MIB).reset();
    Figures const inner = close_bin();
    Figures const outer = close_bin();
    EXPECT_GE(inner.peak_bytes, inner.open_bytes + 256 * MIB - SLACK);
    EXPECT_GE(outer.peak_bytes, inner.peak_bytes);
}

TEST(MemTrackingWithoutNew, ACloseWithoutAnOpenGivesTheCurrentFigure)
{
    Figures const f = close_bin("tag");
    EXPECT_GT(f.close_bytes, 0U);
    EXPECT_EQ(f.open_bytes, f.close_bytes);
    EXPECT_EQ(f.peak_bytes, f.close_bytes);
}

TEST(MemTrackingWithoutNew, TheScopeMayBeAnywhere)
{
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const outer;
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const inner;
    mem_open_profile_bin("A", "");
    EXPECT_GT(close_bin().close_bytes, 0U);
}

TEST(MemTrackingWithoutNew, TheTablesHaveTheProcessesFiguresAndNoSites)
{
    mem_enable_tracking(static_cast<MEM_TRACKING_GRANULARITY>(MEM_TRACKING_STATISTICS | MEM_TRACKING_SELECTED_BIN));
    mem_open_profile_bin("A", "tag");
    std::unique_ptr<char[]> const memory = resident_bytes(MIB);
    Figures const f = close_bin();
    std::ostringstream none;
    EXPECT_FALSE(mem_dump_tbb_fileline_tracking(none));
    EXPECT_FALSE(mem_dump_tbb_subsystem_tracking(none));
    std::ostringstream bins;
    std::ostringstream timeline;
    EXPECT_TRUE(mem_dump_tbb_profile_bin_stats_tracking(bins));
    EXPECT_NE(bins.str().find(' ' + std::to_string(f.peak_bytes) + '\t'), std::string::npos) << bins.str();
    EXPECT_TRUE(mem_dump_tbb_profile_bin_tag_stats_tracking(bins));
    EXPECT_TRUE(mem_dump_tbb_module_tracking(timeline, none));
    EXPECT_NE(timeline.str().find(' ' + std::to_string(f.close_bytes) + '\t'), std::string::npos) << timeline.str();
    EXPECT_EQ(none.str(), "");
}
