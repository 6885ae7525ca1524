#include "gen_profile_bins_sys.h"

#include "gen_time_sys.h"
#include "tests/support/gen_os_fake.h"
#include "tests/support/mem_figures_fake.h"
#include "tests/support/message_recorder.h"
#include "tests/support/profile_bins_script.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

// A second of CPU time in microseconds, and of the counter at 10 MHz.
constexpr std::int64_t CPU_SEC = 1000000;
constexpr std::int64_t TICK_SEC = 10000000;

std::uint64_t backward(std::uint64_t step)
{
    return std::uint64_t{0} - step;
}

// Initializes over clocks that move by a step with every reading, then stops them.
void calibrate(std::uint64_t cpu_step_usec, std::uint64_t tick_step, bool debug_messages = true)
{
    gen_os_fake_set_clocks(std::uint64_t{1} << 52, std::uint64_t{1} << 60);
    gen_os_fake_set_clock_steps(cpu_step_usec, tick_step);
    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, debug_messages);
    gen_os_fake_set_clock_steps(0, 0);
}

std::vector<std::string> lines_of_initialize(std::uint64_t cpu_step_usec, std::uint64_t tick_step)
{
    MessageRecorder recorder;
    calibrate(cpu_step_usec, tick_step);
    return recorder.lines();
}

void end_bins()
{
    GEN_PROFILE_BINS::finalize("test", /*close_root=*/true);
}

// The rows of a debug dump of a closed bin.
std::vector<ReportRow> rows_of(GEN_PROFILE_BIN *bin)
{
    MessageRecorder recorder;
    bin->dump(nullptr, /*collect_tags=*/false);
    return parse_rows(recorder.lines());
}

std::string overhead_line_of(GEN_PROFILE_BIN *bin)
{
    MessageRecorder recorder;
    bin->dump(nullptr, /*collect_tags=*/false);
    return recorder.lines().front();
}

struct CalibrationCase
{
    std::uint64_t frequency;
    std::uint64_t cpu_step_usec;
    std::uint64_t tick_step;
    char const *frequency_line;
    char const *time_line;
    char const *cpu_line;
    char const *wc_line;
};
// A round of the loop reads each clock twice, so that one step lies inside and the whole loop has 200,001 of them.
CalibrationCase const CALIBRATION_CASES[] = {
    {10000000, 3, 7, "WC frequency is 1e+07", "O/H calibration time: 0.140001s",
     "O/H CPU(int, ext)=(3.000000, 6.000000); ticks=(3000, 6000)",
     "O/H  WC(int, ext)=(0.700000, 1.400000); ticks=(7, 14)"},
    {10000000, 0, 0, "WC frequency is 1e+07", "O/H calibration time: 0.000000s",
     "O/H CPU(int, ext)=(0.000000, 0.000000); ticks=(0, 0)", "O/H  WC(int, ext)=(0.000000, 0.000000); ticks=(0, 0)"},
    // the quotients are cut: 198000.99 and 199998.99999
    {10000000, 99, 99999, "WC frequency is 1e+07", "O/H calibration time: 1999.990000s",
     "O/H CPU(int, ext)=(99.000000, 198.000000); ticks=(99000, 198000)",
     "O/H  WC(int, ext)=(9999.900000, 19999.800000); ticks=(99999, 199998)"},
    {1000, 1, 1, "WC frequency is 1000", "O/H calibration time: 200.001000s",
     "O/H CPU(int, ext)=(1.000000, 2.000000); ticks=(1000, 2000)",
     "O/H  WC(int, ext)=(1000.000000, 2000.000000); ticks=(1, 2)"},
    {2533207, 0, 100, "WC frequency is 2.53321e+06", "O/H calibration time: 7.895170s",
     "O/H CPU(int, ext)=(0.000000, 0.000000); ticks=(0, 0)",
     "O/H  WC(int, ext)=(39.475653, 78.951306); ticks=(100, 200)"},
    // the integers show their low 32 bits: 3,000,000,000 and 6,000,030,000
    {10000000, 3000000, 0, "WC frequency is 1e+07", "O/H calibration time: 0.000000s",
     "O/H CPU(int, ext)=(3000000.000000, 6000030.000000); ticks=(-1294967296, 1705062704)",
     "O/H  WC(int, ext)=(0.000000, 0.000000); ticks=(0, 0)"},
    // the lines are written before the external figures are raised to the internal ones
    {10000000, backward(1), backward(4), "WC frequency is 1e+07", "O/H calibration time: -0.080000s",
     "O/H CPU(int, ext)=(-1.000000, -2.000000); ticks=(-1000, -2000)",
     "O/H  WC(int, ext)=(-0.400000, -0.800000); ticks=(-4, -8)"},
};

TEST(GenProfileBinsCalibration, SaysWhatItMeasures)
{
    for (CalibrationCase const &c : CALIBRATION_CASES) {
        gen_os_fake_set_frequency(c.frequency);
        std::uint64_t const readings = gen_os_fake_reading_count();
        EXPECT_THAT(lines_of_initialize(c.cpu_step_usec, c.tick_step),
                    ElementsAre(c.frequency_line, "Calibrating bins since debug messages are enabled", c.time_line,
                                c.cpu_line, c.wc_line, "### Opened profile bin 'Fitter' (1) ###"))
            << "steps " << c.cpu_step_usec << ", " << c.tick_step;
        // Two around the loop on each clock, four in each round, and the stamps of the root.
        EXPECT_EQ(gen_os_fake_reading_count() - readings, 400006U);
        end_bins();
    }
}

TEST(GenProfileBinsCalibration, SpeaksOnTheDebugChannelOfTheLibrary)
{
    MessageRecorder recorder;
    calibrate(1, 1);
    for (RecordedMessage const &message : recorder.messages()) {
        EXPECT_EQ(message.kind, MEM_MSG_DEBUG) << message;
        EXPECT_EQ(message.module, "GEN") << message;
    }
    EXPECT_EQ(recorder.messages().size(), 6U);
}

TEST(GenProfileBinsCalibration, OnlyReadsTheFrequencyWhenItIsNotToRun)
{
    MessageRecorder recorder;
    gen_os_fake_set_frequency(4000000);
    std::uint64_t const readings = gen_os_fake_reading_count();
    calibrate(5, 5, /*debug_messages=*/false);
    EXPECT_EQ(gen_os_fake_reading_count() - readings, 2U); // of the root's opening
    EXPECT_THAT(recorder.lines(), ElementsAre("WC frequency is 4e+06", "### Opened profile bin 'Fitter' (1) ###"));
    GEN_PROFILE_BIN const *const bin = run_bin("a", 7, 2000000);
    EXPECT_EQ(estimate_nsec(bin), 7000);
    EXPECT_EQ(bin->get_last_wc_sec(), 0.5);
}

TEST(GenProfileBinsCalibration, TheTablesStayWhenALaterStartDoesNotCalibrate)
{
    calibrate(1, 3);
    end_bins();
    calibrate(50, 50, /*debug_messages=*/false);
    EXPECT_EQ(estimate_nsec(run_bin("a", 7, 0)), 6000);
}

TEST(GenProfileBinsCalibration, ALaterCalibrationReplacesTheTables)
{
    calibrate(1, 3);
    end_bins();
    calibrate(2, 3);
    EXPECT_EQ(estimate_nsec(run_bin("a", 7, 0)), 5000);
}

TEST(GenProfileBinsCalibration, RunsForTheReportToo)
{
    MessageRecorder recorder;
    mem_fake_set_tbb_tracking_enabled(true);
    calibrate(1, 3, /*debug_messages=*/false);
    EXPECT_TRUE(recorder.has("Calibrating bins since debug messages are enabled"));
    GEN_PROFILE_BINS::disable_process_log();
    EXPECT_EQ(estimate_nsec(run_bin("a", 7, 0)), 6000);
}

TEST(GenProfileBinsOverhead, IsTakenOutForEveryOpening)
{
    // 1000 ns and 300 ticks an opening inside, 2000 ns and 600 ticks outside.
    calibrate(1, 300);
    GEN_PROFILE_BIN *const parent = open_bin("parent");
    GEN_PROFILE_BIN *child = nullptr;
    for (int i = 0; i < 1000; ++i)
        child = run_bin("child", 5, TICK_SEC / 1000);
    close_bin();
    EXPECT_EQ(estimate_nsec(child), 5000000 - 1000000);
    EXPECT_EQ(estimate_nsec(parent), 5000000 - 1000 - 1000000 - 1000000);
    // The raw totals keep it.
    EXPECT_EQ(child->get_metric(GEN_PB_METRIC_CPU, /*cumulative=*/true), 0.005);
    EXPECT_EQ(child->get_metric(GEN_PB_METRIC_WC, /*cumulative=*/true), 1.0);
    EXPECT_EQ(parent->get_metric(GEN_PB_METRIC_WC, /*cumulative=*/true), 1.0);
    // Ticks: 10,000,000 less 300,000; and less 300, 300,000 and 300,000.
    EXPECT_THAT(rows_of(parent), ElementsAre(ReportRow{1, 0, 0.94, 0, 0, 0, 0, 0, "parent"},
                                             ReportRow{1000, 0, 0.97, 0, 0, 0, 0, 0, "| child"},
                                             ReportRow{0, 0, 0, 0, 0, 0, 0, 0, "| OTHER"}));
}

TEST(GenProfileBinsOverhead, AddsUpOverTheTree)
{
    // A tenth of a second inside and two tenths outside, on both clocks.
    calibrate(CPU_SEC / 10, TICK_SEC / 10);
    GEN_PROFILE_BIN *const root = const_cast<GEN_PROFILE_BIN *>(gen_profile_bin_get_current_bin());
    GEN_PROFILE_BIN *const a = open_bin("a");
    for (int i = 0; i < 3; ++i) {
        open_bin("b");
        run_bin("c", 2 * CPU_SEC, 3 * TICK_SEC);
        run_bin("c", 2 * CPU_SEC, 3 * TICK_SEC);
        close_bin();
    }
    run_bin("d", CPU_SEC, TICK_SEC);
    close_bin();
    // An opening costs 100,000 us inside its bin and 200,001 us (2,000,010 ticks) as the enclosing bin sees it. From c
    // the inner cost of its 6 openings is subtracted. From b the same is subtracted, the inner cost of its own 3
    // openings, and the difference of both costs 6 times. The bins above continue in this way.
    EXPECT_THAT(
        rows_of(a),
        ElementsAre(ReportRow{1, 10.9, 16.9, 0, 10.9, 0, 0, 0, "a"}, ReportRow{3, 10.5, 16.5, 0, 10.5, 0, 0, 0, "| b"},
                    ReportRow{6, 11.4, 17.4, 0, 11.4, 0, 0, 0, "| | c"}, ReportRow{0, 0, 0, 0, 0, 0, 0, 0, "| | OTHER"},
                    ReportRow{1, 0.9, 0.9, 0, 0.9, 0, 0, 0, "| d"}, ReportRow{0, 0, 0, 0, 0, 0, 0, 0, "| OTHER"}));
    EXPECT_EQ(estimate_nsec(a), 13 * 1000000000LL - (6 + 3 + 1 + 1) * 100000000LL - (6 + 3 + 1) * 100001000LL);
    EXPECT_EQ(overhead_line_of(a), "Overhead for bin a is 2.1s (2.1s WC)");
    GEN_PROFILE_BINS::close("Fitter");
    EXPECT_EQ(overhead_line_of(root), "Overhead for bin Fitter is 2.3s (2.3s WC)");
}

TEST(GenProfileBinsOverhead, OfAFlushIsTakenFromTheBinThatIsThenOpen)
{
    start_bins("Fitter");
    GEN_PROFILE_BIN *const stage = open_bin("stage");
    gen_os_fake_set_clock_steps(CPU_SEC, TICK_SEC);
    for (int i = 0; i < 5; ++i) { // ten events, and the flush at the last of them
        GEN_PROFILE_BINS::open("TST", "step", GEN_PB_FLAG_RECORD);
        GEN_PROFILE_BINS::close("step");
    }
    gen_os_fake_set_clock_steps(0, 0);
    close_bin();
    // Ten stamps and the two readings of the flush, of which one step lies between the two.
    EXPECT_EQ(overhead_line_of(stage), "Overhead for bin stage is 1.0s (1.0s WC)");
    EXPECT_THAT(rows_of(stage),
                ElementsAre(ReportRow{1, 11, 11, 0, 11, 0, 0, 0, "stage"}, ReportRow{5, 5, 5, 0, 5, 0, 0, 0, "| step"},
                            ReportRow{0, 6, 6, 0, 6, 0, 0, 0, "| OTHER"}));
}

TEST(GenProfileBinsOverhead, LargerThanTheTimeLeavesNothing)
{
    calibrate(CPU_SEC, TICK_SEC);
    GEN_PROFILE_BIN *const parent = open_bin("parent");
    GEN_PROFILE_BIN const *const child = run_bin("child", CPU_SEC / 2, TICK_SEC / 2);
    gen_os_fake_advance(CPU_SEC, 10 * TICK_SEC);
    close_bin();
    EXPECT_EQ(child->get_metric(GEN_PB_METRIC_WC_EST, false), 0.0);
    EXPECT_EQ(parent->get_metric(GEN_PB_METRIC_WC_EST, false), 0.0);
    EXPECT_THAT(rows_of(parent),
                ElementsAre(ReportRow{1, 0, 7.5, 0, 0, 0, 0, 0, "parent"}, ReportRow{1, 0, 0, 0, 0, 0, 0, 0, "| child"},
                            ReportRow{0, 0, 7.5, 0, 0, 0, 0, 0, "| OTHER"}));
}

struct RaisedCase
{
    std::uint64_t cpu_step_usec;
    std::uint64_t tick_step;
    double cpu; // of a parent with one child, opened once each, that took 10 s on both clocks
    double wc;
};
// The internal cost of each of the two openings is -1 s or 1 s. The external cost less the internal one is 1 s, or 0 if
// the external one had to be raised.
RaisedCase const RAISED_CASES[] = {
    {backward(CPU_SEC), backward(TICK_SEC), 12, 12},
    {backward(CPU_SEC), TICK_SEC, 12, 7},
    {CPU_SEC, backward(TICK_SEC), 7, 12},
    {CPU_SEC, TICK_SEC, 7, 7},
};

TEST(GenProfileBinsOverhead, TheExternalOneIsAtLeastTheInternalOne)
{
    for (RaisedCase const &c : RAISED_CASES) {
        calibrate(c.cpu_step_usec, c.tick_step);
        GEN_PROFILE_BIN *const parent = open_bin("parent");
        run_bin("child", 10 * CPU_SEC, 10 * TICK_SEC);
        close_bin();
        ReportRow const row = rows_of(parent).front();
        EXPECT_EQ(row.cpu, c.cpu) << "steps " << c.cpu_step_usec << ", " << c.tick_step;
        EXPECT_EQ(row.estimate, c.cpu) << "steps " << c.cpu_step_usec << ", " << c.tick_step;
        EXPECT_EQ(row.wc, c.wc) << "steps " << c.cpu_step_usec << ", " << c.tick_step;
        end_bins();
    }
}

struct RatioCase
{
    double ratio;
    std::int64_t cpu_usec;
    std::int64_t estimate_nsec;
};
constexpr RatioCase RATIO_CASES[] = {
    {2.0, 1000, 500000},
    {4.0, 1000, 250000},
    {0.5, 1000, 2000000},
    // the addition is cut towards zero
    {3.0, 1, 334},
    {0.3, 1, 3333},
    {1000000.0, 1, 1},
    {1.0, 1000, 1000000},
    {-0.5, 1000, 0}, // 1000 us - 3 * 1000 us
};

TEST(GenProfileBinsEstimate, IsTheCpuTimeByTheRatio)
{
    for (RatioCase const &c : RATIO_CASES) {
        std::string const name = "ratio " + std::to_string(c.ratio);
        GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio(("R/" + name).c_str(), c.ratio);
        start_bins("R");
        EXPECT_EQ(estimate_nsec(run_bin(name, c.cpu_usec, 0)), c.estimate_nsec) << name;
        end_bins();
    }
}

TEST(GenProfileBinsEstimate, TakesTheCpuTimeAfterTheOverheadAndBeforeTheClamp)
{
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("*/half", 2.0);
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("*/negative", -0.5);
    calibrate(1, 0);
    EXPECT_EQ(estimate_nsec(run_bin("half", 5, 0)), 2000);
    // 1 us less 2 openings of 1 us is -1 us; less its threefold that is 2 us.
    run_bin("negative", 1, 0);
    EXPECT_EQ(estimate_nsec(run_bin("negative", 0, 0)), 2000);
}

TEST(GenProfileBinsEstimate, PassesOnWhatTheChildrenSaved)
{
    for (char const *pattern : {"*/half", "*/quarter/*/doubled"})
        GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio(pattern, 2.0);
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("*/quarter", 4.0);
    GEN_PROFILE_BIN *const root = start_bins("Fitter");
    open_bin("stage");
    gen_os_fake_advance(10 * CPU_SEC, 0);
    run_bin("half", 8 * CPU_SEC, 0);
    run_bin("plain", CPU_SEC, 0);
    open_bin("quarter");
    gen_os_fake_advance(4 * CPU_SEC, 0);
    run_bin("doubled", 12 * CPU_SEC, 0);
    close_bin();
    close_bin();
    GEN_PROFILE_BINS::close("Fitter");
    EXPECT_THAT(
        rows_of(root),
        ElementsAre(ReportRow{1, 35, 0, 0, 19, 0, 0, 0, "Fitter"}, ReportRow{1, 35, 0, 0, 19, 0, 0, 0, "| stage"},
                    ReportRow{1, 8, 0, 0, 4, 0, 0, 0, "| | half"}, ReportRow{1, 1, 0, 0, 1, 0, 0, 0, "| | plain"},
                    // whatever its child did
                    ReportRow{1, 16, 0, 0, 4, 0, 0, 0, "| | quarter"},
                    ReportRow{1, 12, 0, 0, 6, 0, 0, 0, "| | | doubled"},
                    // 4 less the child's 6
                    ReportRow{0, 4, 0, 0, 0, 0, 0, 0, "| | | OTHER"}, ReportRow{0, 10, 0, 0, 10, 0, 0, 0, "| | OTHER"},
                    ReportRow{0, 0, 0, 0, 0, 0, 0, 0, "| OTHER"}));
}

TEST(GenProfileBinsEstimate, ARatioOfOneCountsAsNoRule)
{
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("*/one", 1.0);
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("*/half", 2.0);
    start_bins("Fitter");
    GEN_PROFILE_BIN const *const one = open_bin("one");
    run_bin("half", 8 * CPU_SEC, 0);
    close_bin();
    EXPECT_EQ(one->get_metric(GEN_PB_METRIC_WC_EST, false), 4.0);
}

TEST(GenProfileBinsEstimate, SavingsMayExceedTheBinsOwnTime)
{
    // The conflict takes 8 s off the child's estimate of 8 s.
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("*/child", 2.0);
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("*/child", 3.0);
    start_bins("Fitter");
    GEN_PROFILE_BIN *const parent = open_bin("parent");
    GEN_PROFILE_BIN const *const child = run_bin("child", 8 * CPU_SEC, 0);
    gen_os_fake_advance(CPU_SEC, 0);
    close_bin();
    EXPECT_EQ(child->get_metric(GEN_PB_METRIC_WC_EST, false), 0.0);
    EXPECT_EQ(parent->get_metric(GEN_PB_METRIC_WC_EST, false), 1.0);
}

TEST(GenProfileBinsEstimate, IsComputedAnewAfterAnotherOpeningAndDoesNotAccumulate)
{
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("*/half", 2.0);
    start_bins("Fitter");
    for (int i = 1; i <= 3; ++i) {
        GEN_PROFILE_BIN const *const parent = open_bin("parent");
        GEN_PROFILE_BIN const *const half = run_bin("half", 2 * CPU_SEC, 0);
        close_bin();
        for (int again = 0; again < 2; ++again) {
            EXPECT_EQ(half->get_metric(GEN_PB_METRIC_WC_EST, false), i) << "opening " << i;
            EXPECT_EQ(parent->get_metric(GEN_PB_METRIC_WC_EST, true), i) << "opening " << i;
        }
    }
}

TEST(GenProfileBinsEstimate, IsTheFigureOfTheClosingLine)
{
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("*/half", 2.0);
    start_bins("Fitter");
    MessageRecorder recorder;
    GEN_PROFILE_BINS::open("TST", "told", GEN_PB_FLAG_ALL);
    run_bin("half", 8 * CPU_SEC, 9 * TICK_SEC);
    close_bin();
    EXPECT_THAT(
        recorder.lines(),
        ElementsAre("### Opened profile bin 'told' (1) ###",
                    "### Closed profile bin 'told' (1) -- CPU time 8.00s (8.00s total, 0 errors); WC time 9.00s "
                    "(9.00s total, 1 errors); WCest time 4.00s total; Open 0.00 MiB, Peak 0.00 MiB, Close 0.00 "
                    "MiB"));
}

TEST(GenProfileBinsMemory, PassesThroughAsItIs)
{
    constexpr std::size_t MIB = 1024 * 1024;
    calibrate(1, 1);
    open_bin("parent");
    mem_fake_queue_close(3 * MIB, 4 * MIB + MIB / 2, 9 * MIB);
    mem_fake_queue_close(5 * MIB, 6 * MIB, 8 * MIB);
    GEN_PROFILE_BIN const *const bin = run_bin("bin", 0, 0);
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_END_MEM, false), 4.5);
    run_bin("bin", 0, 0);
    GEN_PROFILE_BIN const *const nameless = run_bin("", 0, 0);
    for (bool const cumulative : {false, true}) {
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_START_MEM, cumulative), 3.0);
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_END_MEM, cumulative), 6.0);
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_PEAK_MEM, cumulative), 9.0);
        // No value is -1 byte; the end is 0.
        EXPECT_EQ(nameless->get_metric(GEN_PB_METRIC_START_MEM, cumulative), -1.0 / MIB);
        EXPECT_EQ(nameless->get_metric(GEN_PB_METRIC_END_MEM, cumulative), 0.0);
        EXPECT_EQ(nameless->get_metric(GEN_PB_METRIC_PEAK_MEM, cumulative), -1.0 / MIB);
    }
}

using Names = std::vector<std::string>;

// Opens the names one in the other under a fresh root, and closes them again; the innermost takes a millisecond of CPU.
std::int64_t estimate_of_innermost(Names const &names)
{
    GEN_PROFILE_BIN *bin = start_bins(names.front());
    for (std::size_t i = 1; i < names.size(); ++i)
        bin = open_bin(names[i]);
    gen_os_fake_advance(1000, 0);
    for (std::size_t i = 1; i < names.size(); ++i)
        close_bin();
    GEN_PROFILE_BINS::close(nullptr);
    std::int64_t const estimate = estimate_nsec(bin);
    GEN_PROFILE_BINS::finalize("test", /*close_root=*/false);
    return estimate;
}

struct MatchCase
{
    char const *pattern; // with names of its own, since rules stay
    Names names;         // from the root down
    bool matches;
};
MatchCase const MATCH_CASES[] = {
    {"*/x1", {"root", "x1"}, true},
    {"*/x2", {"root", "a", "b", "x2"}, true},
    {"*/x3", {"x3"}, true},
    {"*/x4", {"root", "x4", "b"}, false},
    {"a1/*", {"a1"}, true},
    {"a2/*", {"a2", "b"}, true},
    {"a3/*", {"a3", "b", "c"}, true},
    {"a4/*", {"root", "a4"}, false},
    {"r1/*/c/*/e", {"r1", "c", "e"}, true},
    {"r2/*/c/*/e", {"r2", "b", "c", "d", "e"}, true},
    {"r3/*/c/*/e", {"r3", "c", "b", "c", "d", "e"}, true},
    {"r4/*/c/*/e", {"r4", "e", "c", "b"}, false},
    {"r5/*/c/*/e", {"r5", "c", "d", "e", "f"}, false},
    {"r6/*/c/*/e", {"r6", "e"}, false},
    {"r7/*/*/c", {"r7", "c"}, true},
    {"r8/*/*/*", {"r8"}, true},
    {"r9/b", {"r9", "b"}, true},
    {"r10/b", {"r10"}, false},
    {"r11/b", {"r11", "b", "c"}, false},
    {"r12/b", {"r12", "a", "b"}, false},
    // no part of a name, no other case, no white space cut
    {"*/n1", {"root", "n1 "}, false},
    {"*/n2*", {"root", "n2"}, false},
    {"*/n3*", {"root", "n3x"}, false},
    {"*/n11*", {"root", "n11*"}, true},
    {"*/n4?", {"root", "n4x"}, false},
    {"*/N5", {"root", "n5"}, false},
    {"*/n6", {"root", "n6n6"}, false},
    {" */n7", {"root", "n7"}, false},
    {" */n12", {" *", "n12"}, true},
    {"**/n8", {"root", "n8"}, false},
    // the normalised form
    {"*/n9->work", {"root", "n9::work"}, true},
    {"*/n10::work", {"root", "n10::work"}, false},
    {"r13->main/b", {"r13::main", "b"}, true},
    // empty segments are names of bins without one
    {"e1//b", {"e1", "", "b"}, true},
    {"e2//b", {"e2", "b"}, false},
    {"e3/b", {"e3", "", "b"}, false},
    {"e4/*/b", {"e4", "", "", "b"}, true},
    {"e5/", {"e5", ""}, true},
    {"e6/", {"e6"}, false},
    {"/e7", {"", "e7"}, true},
    {"/e8", {"e8"}, false},
    // a name with the separator is one name
    {"s1/b/c", {"s1", "b/c"}, false},
};

TEST(GenProfileBinsRatioRules, ApplyToTheBinsWhoseNamesMatch)
{
    for (MatchCase const &c : MATCH_CASES) {
        GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio(c.pattern, 2.0);
        EXPECT_EQ(estimate_of_innermost(c.names), c.matches ? 500000 : 1000000)
            << c.pattern << " on " << testing::PrintToString(c.names);
    }
}

// The rule of matching, step by step.
bool matches_by_steps(Names const &pattern, std::size_t p, Names const &names, std::size_t q)
{
    if (p == pattern.size())
        return q == names.size();
    if (pattern[p] == "*") {
        while (p < pattern.size() && pattern[p] == "*")
            ++p;
        if (p == pattern.size())
            return true;
        for (; q < names.size(); ++q)
            if (matches_by_steps(pattern, p, names, q))
                return true;
        return false;
    }
    return q < names.size() && pattern[p] == names[q] && matches_by_steps(pattern, p + 1, names, q + 1);
}

// Every pattern of one to `longest` of these segments.
std::vector<Names> all_patterns(Names const &segments, std::size_t longest)
{
    std::vector<Names> patterns{{}};
    for (std::size_t i = 0; i < patterns.size() && patterns[i].size() < longest; ++i)
        for (std::string const &segment : segments) {
            patterns.push_back(patterns[i]);
            patterns.back().push_back(segment);
        }
    patterns.erase(patterns.begin());
    return patterns;
}

std::string join(Names const &names)
{
    std::string text = names.front();
    for (std::size_t i = 1; i < names.size(); ++i)
        text += "/" + names[i];
    return text;
}

// Walks through all lists of names up to a length, and compares the rules that each new bin reports to match.
class SmallWorld
{
public:
    SmallWorld()
    {
        // These two match everything, so that each rule that matches is reported.
        for (int i = 0; i < 2; ++i)
            GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("*", 7.0);
        for (Names const &pattern : m_patterns)
            GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio(join(pattern).c_str(), 7.0);
    }

    void walk(std::string const &root)
    {
        m_names = {root};
        start_bins(root);
        compare();
        walk_below();
        GEN_PROFILE_BINS::finalize("test", /*close_root=*/true);
    }

    int bin_count() const { return m_bin_count; }

private:
    void walk_below()
    {
        if (m_names.size() == LONGEST)
            return;
        for (std::string const name : {"a", "b", ""}) {
            if (name == m_names.back() && !name.empty())
                continue; // it would be the same bin once more
            m_names.push_back(name);
            open_bin(name);
            compare();
            walk_below();
            close_bin();
            m_names.pop_back();
        }
    }

    void compare()
    {
        ++m_bin_count;
        Names expected{"  WARNING: first ratio: 7.0 (*)", "  WARNING: additional ratio: 7.0 (*)"};
        for (Names const &pattern : m_patterns)
            if (matches_by_steps(pattern, 0, m_names, 0))
                expected.push_back("  WARNING: additional ratio: 7.0 (" + join(pattern) + ")");
        Names reported;
        for (std::string const &line : m_recorder.lines())
            if (line.rfind("  WARNING: ", 0) == 0)
                reported.push_back(line);
        m_recorder.clear();
        EXPECT_EQ(reported, expected) << testing::PrintToString(m_names);
    }

    static constexpr std::size_t LONGEST = 4;
    std::vector<Names> const m_patterns = all_patterns({"a", "b", "", "*"}, LONGEST);
    MessageRecorder m_recorder;
    Names m_names;
    int m_bin_count = 0;
};

TEST(GenProfileBinsRatioRules, MatchLikeTheStepsInASmallWorld)
{
    SmallWorld world;
    world.walk("a");
    world.walk("");
    // Below a name are the other one and the empty one, below an empty one all three.
    EXPECT_EQ(world.bin_count(), (1 + 2 + 5 + 12) + (1 + 3 + 7 + 17));
}

struct BuiltinCase
{
    Names names;
    std::int64_t estimate_nsec; // of 100 s
};
BuiltinCase const BUILTIN_CASES[] = {
    {{"Fitter", "Cluster Annealing", "Perform Temperature"}, 35087719299},
    {{"Fitter", "a", "b", "Cluster Annealing", "Perform Temperature"}, 35087719299},
    {{"Fitter", "Cluster Annealing", "Serial Perform Temperature"}, 35087719299},
    {{"Fitter", "a", "Cluster Annealing", "Serial Perform Temperature"}, 35087719299},
    {{"Fitter", "Cluster Annealing", "a", "Perform Temperature"}, 100000000000},
    {{"Fitter", "Perform Temperature"}, 100000000000},
    {{"Fitter", "TIS Annotate Delay Tree"}, 31847133758},
    {{"Synthesis", "a", "TIS Annotate Delay Tree"}, 31847133758},
    {{"Fitter", "TDC Timing Analysis"}, 89285714286},
    {{"Fitter", "a", "b", "TDC Timing Analysis"}, 89285714286},
    {{"Synthesis", "TDC Timing Analysis"}, 100000000000},
    {{"fitter", "TDC Timing Analysis"}, 100000000000},
    {{"Fitter", "TDC timing analysis"}, 100000000000},
    {{"Fitter", "Placer", "Placement Congestion Analysis"}, 40160642571},
    {{"Fitter", "a", "Placer", "b", "c", "Placement Congestion Analysis"}, 40160642571},
    {{"Fitter", "Placement Congestion Analysis"}, 100000000000},
    {{"Fitter", "Delay Cache", "perform_lookahead_explorations"}, 36101083033},
    {{"Fitter", "a", "Delay Cache", "b", "perform_lookahead_explorations"}, 36101083033},
    {{"Fitter", "CBE-level placement optimization", "Perform Moves"}, 62893081762},
    {{"Fitter", "a", "CBE-level placement optimization", "b", "Perform Moves"}, 62893081762},
    {{"Fitter", "BLE-level placement optimization", "Perform Moves"}, 34013605443},
    {{"Fitter", "a", "BLE-level placement optimization", "b", "Perform Moves"}, 34013605443},
    {{"Fitter", "Router Main Loop Before First Convergence", "Core Routing"}, 71942446044},
    {{"Fitter", "a", "Router Main Loop Before First Convergence", "Core Routing"}, 71942446044},
    {{"Fitter", "Router Main Loop Before First Convergence", "a", "Core Routing"}, 100000000000},
    {{"Fitter", "Router Main Loop After First Convergence", "Core Routing"}, 93457943926},
    {{"Fitter", "a", "Router Main Loop After First Convergence", "Core Routing"}, 93457943926},
    {{"Fitter", "target_density_calibration"}, 100000},
    {{"Fitter", "a", "target_density_calibration"}, 100000},
    {{"Fitter", "U2B2_DIRECTOR::work"}, 50000000000},
    {{"Synthesis", "a", "U2B2_DIRECTOR->work"}, 50000000000},
    {{"Fitter", "U2B2_DIRECTOR", "work"}, 100000000000},
};

// Runs the cases of one root in one flow: after a second start the rules would occur twice.
void expect_builtin_estimates(std::string const &root)
{
    MessageRecorder const recorder;
    start_bins(root);
    for (BuiltinCase const &c : BUILTIN_CASES) {
        if (c.names.front() != root)
            continue;
        GEN_PROFILE_BIN const *bin = nullptr;
        for (std::size_t i = 1; i < c.names.size(); ++i)
            bin = open_bin(c.names[i]);
        gen_os_fake_advance(100 * CPU_SEC, 0);
        for (std::size_t i = 1; i < c.names.size(); ++i)
            close_bin();
        EXPECT_EQ(estimate_nsec(bin), c.estimate_nsec) << testing::PrintToString(c.names);
    }
    EXPECT_THAT(recorder.lines(), testing::Each(testing::Not(testing::HasSubstr("WARNING")))) << "one rule at most";
}

TEST(GenProfileBinsBuiltinRules, KnowTheFitter)
{
    expect_builtin_estimates("Fitter");
}

TEST(GenProfileBinsBuiltinRules, KnowSomeStagesOfOtherTools)
{
    expect_builtin_estimates("Synthesis");
}

TEST(GenProfileBinsBuiltinRules, DistinguishTheCaseOfTheRoot)
{
    expect_builtin_estimates("fitter");
}

Names warnings_of(MessageRecorder const &recorder)
{
    Names warnings;
    for (RecordedMessage const &message : recorder.messages())
        if (message.text.find("WARNING") != std::string::npos) {
            warnings.push_back(message.text);
            EXPECT_EQ(message.kind, MEM_MSG_DEBUG) << message;
            EXPECT_EQ(message.module, "GEN") << message;
        }
    return warnings;
}

TEST(GenProfileBinsRatioRules, InConflictAreReportedOnceAndTakeAllOff)
{
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("*/x", 2.0);
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("*/y", 5.0);
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("R/*/x", 3.25);
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("R/a%s/*", 1000000.0);
    MessageRecorder recorder;
    start_bins("R");
    open_bin("a%s");
    EXPECT_THAT(warnings_of(recorder), IsEmpty());
    open_bin("");
    recorder.clear();
    GEN_PROFILE_BIN const *const three = run_bin("x", CPU_SEC, 0);
    EXPECT_THAT(warnings_of(recorder),
                ElementsAre("WARNING: multiple CPU:WC ratios found for bin R/a%s/x. Disabling CPU:WC.",
                            "  WARNING: first ratio: 2.0 (*/x)", "  WARNING: additional ratio: 3.2 (R/*/x)",
                            "  WARNING: additional ratio: 1000000.0 (R/a%s/*)"));
    recorder.clear();
    run_bin("x", CPU_SEC, 0);
    EXPECT_THAT(warnings_of(recorder), IsEmpty()) << "none at the second opening";
    EXPECT_EQ(three->get_metric(GEN_PB_METRIC_WC_EST, false), 0.0);
    EXPECT_EQ(three->get_metric(GEN_PB_METRIC_CPU, true), 2.0);
    close_bin();
    close_bin();
    GEN_PROFILE_BIN const *const two = run_bin("x", CPU_SEC, 0);
    EXPECT_THAT(warnings_of(recorder),
                ElementsAre("WARNING: multiple CPU:WC ratios found for bin R/x. Disabling CPU:WC.",
                            "  WARNING: first ratio: 2.0 (*/x)", "  WARNING: additional ratio: 3.2 (R/*/x)"));
    EXPECT_EQ(two->get_metric(GEN_PB_METRIC_WC_EST, false), 0.0);
}

TEST(GenProfileBinsRatioRules, TheBuiltInOnesCanBeInConflict)
{
    MessageRecorder const recorder;
    start_bins("Fitter");
    open_bin("BLE-level placement optimization");
    open_bin("CBE-level placement optimization");
    open_bin("Perform Moves");
    EXPECT_THAT(warnings_of(recorder),
                ElementsAre("WARNING: multiple CPU:WC ratios found for bin Fitter/BLE-level placement "
                            "optimization/CBE-level placement optimization/Perform Moves. Disabling CPU:WC.",
                            "  WARNING: first ratio: 1.6 (Fitter/*/CBE-level placement optimization/*/Perform Moves)",
                            "  WARNING: additional ratio: 2.9 (Fitter/*/BLE-level placement optimization/*/Perform "
                            "Moves)"));
}

TEST(GenProfileBinsRatioRules, TheBuiltInOnesOccurTwiceAfterASecondStart)
{
    start_bins("Fitter");
    EXPECT_EQ(estimate_nsec(run_bin("TDC Timing Analysis", 100 * CPU_SEC, 0)), 89285714286);
    end_bins();
    MessageRecorder recorder;
    start_bins("Fitter");
    for (BuiltinCase const &c : BUILTIN_CASES) {
        if (c.names.front() != "Fitter")
            continue;
        recorder.clear();
        GEN_PROFILE_BIN const *bin = nullptr;
        for (std::size_t i = 1; i < c.names.size(); ++i)
            bin = open_bin(c.names[i]);
        gen_os_fake_advance(CPU_SEC, 0);
        for (std::size_t i = 1; i < c.names.size(); ++i)
            close_bin();
        bool const has_rule = c.estimate_nsec != 100000000000;
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_WC_EST, false), has_rule ? 0.0 : 1.0)
            << testing::PrintToString(c.names);
        EXPECT_EQ(warnings_of(recorder).size(), has_rule ? 3U : 0U) << testing::PrintToString(c.names);
    }
}

TEST(GenProfileBinsRatioRules, TheBuiltInOnesDoNotApplyToTheFirstRootButToTheSecond)
{
    for (double const expected : {1.0, 0.5}) {
        GEN_PROFILE_BIN const *const root = start_bins("U2B2_DIRECTOR::work");
        gen_os_fake_advance(CPU_SEC, 0);
        GEN_PROFILE_BINS::close(nullptr);
        EXPECT_EQ(root->get_metric(GEN_PB_METRIC_WC_EST, false), expected);
        GEN_PROFILE_BINS::finalize("test", /*close_root=*/false);
    }
}

TEST(GenProfileBinsRatioRules, ReachOnlyBinsThatAreMadeLater)
{
    GEN_PROFILE_BIN const *const root = start_bins("R");
    GEN_PROFILE_BIN const *const before = run_bin("before", CPU_SEC, 0);
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("R/*", 2.0);
    GEN_PROFILE_BIN const *const after = run_bin("after", CPU_SEC, 0);
    run_bin("before", CPU_SEC, 0);
    EXPECT_EQ(before->get_metric(GEN_PB_METRIC_WC_EST, false), 2.0);
    EXPECT_EQ(after->get_metric(GEN_PB_METRIC_WC_EST, false), 0.5);
    GEN_PROFILE_BINS::close(nullptr);
    EXPECT_EQ(root->get_metric(GEN_PB_METRIC_WC_EST, false), 2.5);
}

TEST(GenProfileBinsRatioRules, CanBeAddedByAnyThreadAndBeforeTheStart)
{
    std::string pattern = "*/early";
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio(pattern.c_str(), 2.0);
    pattern.assign(pattern.size(), '?'); // the rule has a text of its own
    start_bins("R");
    std::thread([] { GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("R/elsewhere", 4.0); }).join();
    EXPECT_EQ(run_bin("early", CPU_SEC, 0)->get_metric(GEN_PB_METRIC_WC_EST, false), 0.5);
    EXPECT_EQ(run_bin("elsewhere", CPU_SEC, 0)->get_metric(GEN_PB_METRIC_WC_EST, false), 0.25);
}

} // namespace
