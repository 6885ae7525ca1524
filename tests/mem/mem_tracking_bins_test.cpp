// The statistics by bin and tag and the time line, and dumps into streams that fail. A TEST is a process.
#include "mem_sys.h"

#include "tests/support/mem_bin_figures.h"
#include "tests/support/platform.h"
#include "tests/support/real_block.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <new>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

constexpr MEM_TRACKING_GRANULARITY ALL =
    static_cast<MEM_TRACKING_GRANULARITY>(MEM_TRACKING_STATISTICS | MEM_TRACKING_SELECTED_BIN);
constexpr std::size_t MIB = std::size_t{1024} * 1024;

void open_bin(std::string const &name, std::string const &tag = "")
{
    mem_open_profile_bin(name, tag);
}

using Fields = std::vector<std::string>;

// The lines of a table, each split at its tabs, without the leading blanks.
std::vector<Fields> fields_of(std::string const &table)
{
    std::vector<Fields> lines;
    std::istringstream in(table);
    for (std::string line; std::getline(in, line);) {
        lines.emplace_back();
        std::istringstream fields(line + '\t');
        for (std::string field; std::getline(fields, field, '\t');)
            lines.back().push_back(field.substr(std::min(field.find_first_not_of(' '), field.size())));
    }
    return lines;
}

std::vector<Fields> dumped(bool (*dump)(std::ostream &))
{
    std::ostringstream out;
    bool const is_written = dump(out);
    EXPECT_EQ(is_written, !out.str().empty());
    return fields_of(out.str());
}

struct TimeLine
{
    std::vector<Fields> rows;
    std::vector<Fields> modules;
};

TimeLine dumped_timeline()
{
    std::ostringstream rows;
    std::ostringstream modules;
    EXPECT_TRUE(mem_dump_tbb_module_tracking(rows, modules));
    return {fields_of(rows.str()), fields_of(modules.str())};
}

// The columns after the figures.
std::vector<Fields> texts(std::vector<Fields> const &rows, std::size_t first)
{
    std::vector<Fields> columns;
    for (std::size_t i = 1; i < rows.size(); ++i)
        columns.emplace_back(rows[i].begin() + static_cast<std::ptrdiff_t>(first), rows[i].end());
    return columns;
}

std::string text(std::size_t bytes)
{
    return std::to_string(bytes);
}

struct FailingBuffer : std::streambuf
{
    // Takes nothing.
};

struct ThrowingBuffer : std::streambuf
{
    int_type overflow(int_type) override { throw std::runtime_error("no"); }
    std::streamsize xsputn(char const *, std::streamsize) override { throw std::runtime_error("no"); }
};

// Takes everything, and fails when it is flushed.
struct FullDisk : std::streambuf
{
    int_type overflow(int_type c) override { return c; }
    std::streamsize xsputn(char const *, std::streamsize size) override { return size; }
    int sync() override { return -1; }
};

// Records something for each of the five dumps.
void record_something()
{
    mem_enable_tracking(ALL);
    open_bin("A", "tag");
    void *const block = take(1000);
    close_bin();
    ::operator delete(block);
    mem_disable_tracking(ALL);
}

void expect_no_dump_into(std::ostream &out)
{
    EXPECT_FALSE(mem_dump_tbb_fileline_tracking(out));
    EXPECT_FALSE(mem_dump_tbb_subsystem_tracking(out));
    EXPECT_FALSE(mem_dump_tbb_profile_bin_stats_tracking(out));
    EXPECT_FALSE(mem_dump_tbb_profile_bin_tag_stats_tracking(out));
    EXPECT_FALSE(mem_dump_tbb_module_tracking(out, out));
    std::ostringstream good;
    EXPECT_FALSE(mem_dump_tbb_module_tracking(good, out));
    EXPECT_FALSE(mem_dump_tbb_module_tracking(out, good));
}

} // namespace

TEST(MemTrackingStatistics, BinsAreNamedByTheirPathsLargestFirst)
{
    mem_enable_tracking(MEM_TRACKING_STATISTICS);
    open_bin("Fitter");
    open_bin("Place");
    void *const kept = take(MIB);
    Figures const place = close_bin();
    open_bin("Route");
    ::operator delete(take(4 * MIB));
    Figures const route = close_bin();
    ::operator delete(kept);
    Figures const fitter = close_bin();
    EXPECT_THAT(
        dumped(mem_dump_tbb_profile_bin_stats_tracking),
        ElementsAre(
            Fields{"count", "rise bytes", "peak bytes", "growth bytes", "bin"},
            Fields{"1", text(fitter.peak_bytes - fitter.open_bytes), text(fitter.peak_bytes), "0", "Fitter"},
            Fields{"1", text(route.peak_bytes - route.open_bytes), text(route.peak_bytes), "0", "Fitter::Route"},
            Fields{"1", text(place.peak_bytes - place.open_bytes), text(place.peak_bytes),
                   text(place.close_bytes - place.open_bytes), "Fitter::Place"}));
    EXPECT_THAT(dumped(mem_dump_tbb_profile_bin_tag_stats_tracking), ElementsAre());
}

TEST(MemTrackingStatistics, IntervalsOfABinAddUp)
{
    mem_enable_tracking(MEM_TRACKING_STATISTICS);
    void *kept[2] = {};
    std::size_t growth = 0;
    std::size_t rise = 0;
    std::size_t peak = 0;
    for (std::size_t i = 0; i < 2; ++i) {
        open_bin("A");
        ::operator delete(take((2 - i) * 4 * MIB));
        kept[i] = take(MIB);
        Figures const f = close_bin();
        growth += f.close_bytes - f.open_bytes;
        rise = std::max(rise, f.peak_bytes - f.open_bytes);
        peak = std::max(peak, f.peak_bytes);
    }
    for (void *const block : kept)
        ::operator delete(block);
    std::vector<Fields> const table = dumped(mem_dump_tbb_profile_bin_stats_tracking);
    ASSERT_EQ(table.size(), 2U);
    EXPECT_THAT(table[1], ElementsAre("2", text(rise), text(peak), text(growth), "A"));
}

TEST(MemTrackingStatistics, ABinThatGivesBackHasANegativeGrowth)
{
    void *const block = take(MIB);
    mem_enable_tracking(MEM_TRACKING_STATISTICS);
    open_bin("A");
    ::operator delete(block);
    Figures const f = close_bin();
    std::vector<Fields> const table = dumped(mem_dump_tbb_profile_bin_stats_tracking);
    EXPECT_THAT(table.at(1), ElementsAre("1", "0", text(f.open_bytes), "-" + text(f.open_bytes - f.close_bytes), "A"));
}

TEST(MemTrackingStatistics, ATotalBelowZeroIsShownAsZero)
{
    mem_enable_tracking(MEM_TRACKING_STATISTICS);
    void *uncounted = nullptr;
    {
        MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
        uncounted = take(64 * MIB);
    }
    ::operator delete(uncounted);
    open_bin("A");
    Figures const a = close_bin();
    EXPECT_EQ(a.peak_bytes, 0U);
    EXPECT_THAT(dumped(mem_dump_tbb_profile_bin_stats_tracking).at(1), ElementsAre("1", "0", "0", "0", "A"));
}

TEST(MemTrackingStatistics, ATagIsCountedWhereItIsOutermost)
{
    mem_enable_tracking(MEM_TRACKING_STATISTICS);
    open_bin("A", "red");
    open_bin("B", "blue");
    open_bin("C", "red");
    void *const block = take(MIB);
    close_bin();
    close_bin();
    close_bin();
    open_bin("D", "blue");
    close_bin();
    ::operator delete(block);
    std::vector<Fields> const table = dumped(mem_dump_tbb_profile_bin_tag_stats_tracking);
    ASSERT_EQ(table.size(), 3U);
    EXPECT_THAT(texts(table, 4), ElementsAre(Fields{"blue"}, Fields{"red"})); // D makes the peak of blue no less
    EXPECT_EQ(table[1][0], "2");
    EXPECT_EQ(table[2][0], "1");
    EXPECT_EQ(table[1][1], table[2][1]);
}

TEST(MemTrackingStatistics, OnlyClosesWithTheStatisticsOnAreCounted)
{
    open_bin("Outer");
    open_bin("A");
    close_bin();
    open_bin("B");
    mem_enable_tracking(MEM_TRACKING_STATISTICS);
    close_bin();
    mem_disable_tracking(MEM_TRACKING_STATISTICS);
    close_bin();
    EXPECT_THAT(texts(dumped(mem_dump_tbb_profile_bin_stats_tracking), 4), ElementsAre(Fields{"Outer::B"}));
}

TEST(MemTrackingStatistics, AResetForgetsThemAndKeepsTheOpenBins)
{
    mem_enable_tracking(MEM_TRACKING_STATISTICS);
    open_bin("A", "tag");
    open_bin("B");
    close_bin();
    mem_reset_tracking_entries();
    EXPECT_THAT(dumped(mem_dump_tbb_profile_bin_stats_tracking), ElementsAre());
    close_bin();
    EXPECT_THAT(texts(dumped(mem_dump_tbb_profile_bin_stats_tracking), 4), ElementsAre(Fields{"A"}));
    EXPECT_THAT(texts(dumped(mem_dump_tbb_profile_bin_tag_stats_tracking), 4), ElementsAre(Fields{"tag"}));
}

TEST(MemTrackingStatistics, ANameCannotBreakTheTable)
{
    mem_enable_tracking(MEM_TRACKING_STATISTICS);
    open_bin("a\tb\nc%s\x7f\xc2\x85\xc3\xa4", "t\rt\x9b");
    close_bin();
    EXPECT_THAT(texts(dumped(mem_dump_tbb_profile_bin_stats_tracking), 4), ElementsAre(Fields{"a b c%s  \xc3\xa4"}));
    EXPECT_THAT(texts(dumped(mem_dump_tbb_profile_bin_tag_stats_tracking), 4), ElementsAre(Fields{"t t "}));
}

TEST(MemTrackingTimeline, BoundariesAndLabelsAreRows)
{
    open_bin("Fitter");
    mem_set_timeline_label("early"); // kept, while nothing is recorded
    mem_enable_tracking(MEM_TRACKING_TIMELINE);
    open_bin("Place");
    void *const block = take(MIB);
    Figures const place = close_bin();
    mem_set_timeline_label("late");
    ::operator delete(block);
    Figures const fitter = close_bin();
    TimeLine const timeline = dumped_timeline();
    EXPECT_THAT(timeline.rows.at(0), ElementsAre("seconds", "bytes", "peak bytes", "event", "label", "bin"));
    EXPECT_THAT(texts(timeline.rows, 3),
                ElementsAre(Fields{"start", "", ""}, Fields{"open", "early", "Fitter::Place"},
                            Fields{"close", "early", "Fitter::Place"}, Fields{"label", "late", "Fitter"},
                            Fields{"close", "late", "Fitter"}));
    EXPECT_THAT(timeline.modules, ElementsAre());
    EXPECT_EQ(timeline.rows[1][0], "0.000000");
    EXPECT_EQ(timeline.rows[2][1], text(place.open_bytes));
    EXPECT_EQ(timeline.rows[3][1], text(place.close_bytes));
    EXPECT_EQ(timeline.rows[3][2], text(place.peak_bytes));
    EXPECT_EQ(timeline.rows[5][1], text(fitter.close_bytes));
    for (std::size_t i = 2; i < timeline.rows.size(); ++i)
        EXPECT_GE(std::stod(timeline.rows[i][0]), std::stod(timeline.rows[i - 1][0]));
}

TEST(MemTrackingTimeline, AFlushTakesNoPeakFromTheNextRow)
{
    mem_enable_tracking(MEM_TRACKING_TIMELINE);
    open_bin("A");
    ::operator delete(take(2 * MIB));
    mem_tbb_tracking_flush_peak();
    ::operator delete(take(MIB));
    mem_tbb_tracking_flush_peak();
    Figures const a = close_bin();
    open_bin("B");
    Figures const b = close_bin();
    EXPECT_GE(a.peak_bytes, a.open_bytes + 2 * MIB);
    EXPECT_LT(b.peak_bytes, a.peak_bytes);
    std::vector<Fields> const rows = dumped_timeline().rows;
    ASSERT_EQ(rows.size(), 6U);
    EXPECT_EQ(rows[3][2], text(a.peak_bytes)) << "close of A";
    EXPECT_EQ(rows[5][2], text(b.peak_bytes)) << "close of B";
}

TEST(MemTrackingTimeline, TagsReplaceTheLabelUntilTheyAreDisabled)
{
    mem_enable_tracking(MEM_TRACKING_TIMELINE);
    mem_set_timeline_label("label");
    open_bin("A", "red");
    open_bin("B");
    open_bin("C", "blue");
    close_bin();
    mem_disable_profile_bin_tag_timeline_labels();
    close_bin();
    close_bin();
    std::vector<std::string> labels;
    for (Fields const &row : texts(dumped_timeline().rows, 4))
        labels.push_back(row[0]);
    EXPECT_THAT(labels, ElementsAre("", "label", "red", "red", "blue", "blue", "label", "label"));
}

TEST(MemTrackingTimeline, ItPausesAndGoesOn)
{
    mem_enable_tracking(MEM_TRACKING_TIMELINE);
    open_bin("A");
    mem_disable_tracking(MEM_TRACKING_TIMELINE);
    open_bin("B");
    close_bin();
    mem_enable_tracking(MEM_TRACKING_TIMELINE);
    mem_enable_tracking(MEM_TRACKING_TIMELINE); // on already
    close_bin();
    EXPECT_THAT(texts(dumped_timeline().rows, 3), ElementsAre(Fields{"start", "", ""}, Fields{"open", "", "A"},
                                                              Fields{"start", "", ""}, Fields{"close", "", "A"}));
}

TEST(MemTrackingTimeline, AResetBeginsItAnew)
{
    mem_enable_tracking(MEM_TRACKING_TIMELINE);
    mem_set_timeline_label("kept");
    mem_reset_tracking_entries();
    std::ostringstream out;
    EXPECT_FALSE(mem_dump_tbb_module_tracking(out, out));
    EXPECT_EQ(out.str(), "");
    open_bin("A");
    close_bin();
    TimeLine const timeline = dumped_timeline();
    EXPECT_THAT(texts(timeline.rows, 3), ElementsAre(Fields{"open", "kept", "A"}, Fields{"close", "kept", "A"}));
    EXPECT_EQ(timeline.rows[1][0], "0.000000");
}

TEST(MemTrackingTimeline, RowsWithoutModulesHaveADash)
{
    mem_enable_tracking(MEM_TRACKING_TIMELINE);
    mem_enable_tracking(MEM_TRACKING_SOURCES);
    void *const block = take(1000);
    open_bin("A");
    close_bin();
    ::operator delete(block);
    TimeLine const timeline = dumped_timeline();
    ASSERT_EQ(timeline.modules.size(), 4U);
    EXPECT_EQ(timeline.modules[1][1], "-");
    EXPECT_GE(std::stoi(timeline.modules[2][1]), 1000);
    EXPECT_THAT(texts(timeline.modules, timeline.modules[0].size() - 3), texts(timeline.rows, 3));
}

TEST(MemTrackingTimeline, TheKeyStartsTheTracking)
{
    mem_cfg_set("mem_tracking", "14");
    EXPECT_TRUE(mem_get_tbb_memory_tracking_enabled());
    open_bin("A", "tag");
    void *const block = take(1000);
    close_bin();
    ::operator delete(block);
    EXPECT_EQ(dumped_timeline().rows.size(), 4U);
    EXPECT_EQ(dumped(mem_dump_tbb_profile_bin_stats_tracking).size(), 2U);
    EXPECT_EQ(dumped(mem_dump_tbb_profile_bin_tag_stats_tracking).size(), 2U);
    EXPECT_GE(dumped(mem_dump_tbb_subsystem_tracking).size(), 3U);
}

TEST(MemTrackingDump, AStreamThatTakesNothingIsReportedAndNothingElseHappens)
{
    record_something();
    FailingBuffer buffer;
    std::ostream out(&buffer);
    expect_no_dump_into(out);
}

TEST(MemTrackingDump, AStreamWithoutAFileIsReported)
{
    record_something();
    TempDir const directory;
    std::ofstream out(directory.path() / "missing" / "mem_tbb_fileline.log");
    expect_no_dump_into(out);
    std::ostream none(nullptr);
    expect_no_dump_into(none);
}

TEST(MemTrackingDump, AFullDiskIsReported)
{
    record_something();
    FullDisk buffer;
    std::ostream out(&buffer);
    expect_no_dump_into(out);
    if (ON_WINDOWS)
        return;
    std::ofstream device("/dev/full");
    expect_no_dump_into(device);
}

TEST(MemTrackingDump, AStreamThatThrowsMakesTheDumpReturnFalse)
{
    record_something();
    ThrowingBuffer buffer;
    std::ostream out(&buffer);
    out.exceptions(std::ios::badbit);
    expect_no_dump_into(out);
}

TEST(MemTrackingDump, WritingCountsWhatTheStreamTakes)
{
    record_something();
    std::size_t const before = MEM_MANAGER::current_total_memory();
    {
        std::ostringstream out; // its memory is counted, and released with it
        EXPECT_TRUE(mem_dump_tbb_fileline_tracking(out));
        EXPECT_TRUE(mem_dump_tbb_subsystem_tracking(out));
        EXPECT_TRUE(mem_dump_tbb_profile_bin_stats_tracking(out));
        EXPECT_TRUE(mem_dump_tbb_profile_bin_tag_stats_tracking(out));
        EXPECT_TRUE(mem_dump_tbb_module_tracking(out, out));
        // On Windows the streams of the standard library don't allocate with the operators of this program.
        EXPECT_EQ(MEM_MANAGER::current_total_memory() > before, !ON_WINDOWS);
    }
    EXPECT_EQ(MEM_MANAGER::current_total_memory(), before);
}
