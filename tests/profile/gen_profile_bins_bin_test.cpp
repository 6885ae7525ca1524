// The facts of a bin: its metrics and its place in the tree.
#include "tests/support/profile_bins.h"

using testing::ElementsAre;
using testing::ExitedWithCode;

namespace {

constexpr std::size_t MIB = 1024 * 1024;

GEN_PROFILE_BIN const *open_bin(char const *name)
{
    return GEN_PROFILE_BINS::open("T", name, IMMEDIATE);
}

void close_bin()
{
    GEN_PROFILE_BINS::close(nullptr);
}

void run_bin(char const *name, double cpu_sec, double wall_sec)
{
    open_bin(name);
    pass_time(cpu_sec, wall_sec);
    close_bin();
}

} // namespace

class GenProfileBinMetric : public ProfileBinsTest
{
};

TEST_F(GenProfileBinMetric, ClosedBinShowsItsLastIntervalUnchanged)
{
    start();
    GEN_PROFILE_BIN const *const bin = open_bin("A");
    pass_time(1.5, 2.5);
    close_bin();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(bin->get_last_cpu_sec(), 1.5);
        EXPECT_EQ(bin->get_last_wc_sec(), 2.5);
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_CPU, /*cumulative=*/false), 1.5);
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_WC, /*cumulative=*/false), 2.5);
        pass_time(10, 10);
    }
    run_bin("A", 0.5, 0.25);
    EXPECT_EQ(bin->get_last_cpu_sec(), 0.5);
    EXPECT_EQ(bin->get_last_wc_sec(), 0.25);
}

TEST_F(GenProfileBinMetric, CumulativeMetricsAddUpAllIntervals)
{
    start();
    GEN_PROFILE_BIN const *const bin = open_bin("A");
    pass_time(1.5, 2.5);
    close_bin();
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_CPU, /*cumulative=*/true), 1.5);
    run_bin("A", 0.5, 0.25);
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_CPU, /*cumulative=*/true), 2.0);
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_WC, /*cumulative=*/true), 2.75);
}

TEST_F(GenProfileBinMetric, OpenBinShowsItsRunningInterval)
{
    start();
    run_bin("A", 4, 8);
    pass_time(100, 100);
    GEN_PROFILE_BIN const *const bin = open_bin("A");
    EXPECT_EQ(bin->get_last_cpu_sec(), 0.0);
    EXPECT_EQ(bin->get_last_wc_sec(), 0.0);
    for (double passed = 0.5; passed < 3; passed += 0.5) {
        pass_time(0.5, 0.25);
        EXPECT_EQ(bin->get_last_cpu_sec(), passed);
        EXPECT_EQ(bin->get_last_wc_sec(), passed / 2);
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_CPU, /*cumulative=*/true), 4 + passed);
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_WC, /*cumulative=*/true), 8 + passed / 2);
    }
}

TEST_F(GenProfileBinMetric, RootIsMeasuredLikeAnyOther)
{
    start();
    GEN_PROFILE_BIN const *const root = gen_profile_bin_get_current_bin();
    pass_time(2, 3);
    EXPECT_EQ(root->get_last_cpu_sec(), 2.0);
    close_bin();
    pass_time(2, 3);
    EXPECT_EQ(root->get_last_cpu_sec(), 2.0);
    EXPECT_EQ(root->get_last_wc_sec(), 3.0);
}

TEST_F(GenProfileBinMetric, WallClockCountsInTheFrequencyOfTheCalibration)
{
    gen_os_fake_set_frequency(4);
    start();
    GEN_PROFILE_BIN const *const bin = open_bin("A");
    gen_os_fake_set_frequency(1000);
    gen_os_fake_advance(0, 10);
    EXPECT_EQ(bin->get_last_wc_sec(), 2.5);
}

TEST_F(GenProfileBinMetric, ClockThatGoesBackwardCountsAsAnErrorAndNoTime)
{
    struct Case
    {
        double cpu_sec;
        double wall_sec;
        unsigned cpu_errors;
        unsigned wall_errors;
    };
    constexpr Case CASES[] = {{-1, -2, 1, 1}, {-1, 2, 1, 0}, {1, -2, 0, 1}, {1, 2, 0, 0}, {0, 0, 0, 0}};
    start();
    GEN_PROFILE_BIN const *bin = nullptr;
    double cpu_total = 0;
    double wall_total = 0;
    unsigned cpu_errors = 0;
    unsigned wall_errors = 0;
    for (Case const &c : CASES) {
        SCOPED_TRACE(testing::Message() << c.cpu_sec << ' ' << c.wall_sec);
        bin = open_bin("A");
        pass_time(c.cpu_sec, c.wall_sec);
        close_bin();
        double const cpu_sec = c.cpu_errors == 0 ? c.cpu_sec : 0;
        double const wall_sec = c.wall_errors == 0 ? c.wall_sec : 0;
        EXPECT_EQ(bin->get_last_cpu_sec(), cpu_sec);
        EXPECT_EQ(bin->get_last_wc_sec(), wall_sec);
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_CPU_ERRORS, /*cumulative=*/false), c.cpu_errors);
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_WC_ERRORS, /*cumulative=*/false), c.wall_errors);
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_CPU, /*cumulative=*/true), cpu_total += cpu_sec);
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_WC, /*cumulative=*/true), wall_total += wall_sec);
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_CPU_ERRORS, /*cumulative=*/true), cpu_errors += c.cpu_errors);
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_WC_ERRORS, /*cumulative=*/true), wall_errors += c.wall_errors);
    }
    // An open bin has the errors of its closed intervals, and none of its own.
    open_bin("A");
    pass_time(-1, -1);
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_CPU_ERRORS, /*cumulative=*/true), cpu_errors);
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_WC_ERRORS, /*cumulative=*/true), wall_errors);
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_CPU_ERRORS, /*cumulative=*/false), 0.0);
    EXPECT_EQ(bin->get_last_cpu_sec(), -1.0);
    EXPECT_EQ(bin->get_last_wc_sec(), -1.0);
}

TEST_F(GenProfileBinMetric, EstimateOfABinWithoutARuleIsItsCpuTime)
{
    start();
    GEN_PROFILE_BIN const *const bin = open_bin("A");
    pass_time(1.5, 2.5);
    close_bin();
    run_bin("A", 0.25, 1);
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_WC_EST, /*cumulative=*/false), 1.75);
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_WC_EST, /*cumulative=*/true), 1.75);
}

TEST_F(GenProfileBinMetric, MemoryIsThatOfTheFirstOpenTheLastCloseAndTheHighestPeak)
{
    struct Close
    {
        std::size_t open;
        std::size_t close;
        std::size_t peak;
        double start_mib;
        double end_mib;
        double peak_mib;
    };
    constexpr Close CLOSES[] = {
        {3 * MIB / 2, 2 * MIB, 4 * MIB, 1.5, 2, 4},
        {5 * MIB, 3 * MIB, 7 * MIB, 1.5, 3, 7},
        {1, 0, 6 * MIB, 1.5, 0, 7},
        {1, MIB / 1024, static_cast<std::size_t>(-2), 1.5, 1.0 / 1024, 7}, // the peak compares as a signed value
        {1, static_cast<std::size_t>(-1), 8 * MIB, 1.5, -1.0 / 1024 / 1024, 8},
    };
    start();
    for (Close const &c : CLOSES) {
        SCOPED_TRACE(testing::Message() << c.open << ' ' << c.close << ' ' << c.peak);
        mem_fake_queue_close(c.open, c.close, c.peak);
        GEN_PROFILE_BIN const *const bin = open_bin("A");
        close_bin();
        for (bool const cumulative : {false, true}) {
            EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_START_MEM, cumulative), c.start_mib);
            EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_END_MEM, cumulative), c.end_mib);
            EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_PEAK_MEM, cumulative), c.peak_mib);
        }
    }
}

TEST_F(GenProfileBinMetric, MemoryOfABinThatTheTrackerDoesNotKnowIsNoValue)
{
    start();
    GEN_PROFILE_BIN const *const bin = open_bin("");
    close_bin();
    constexpr double NO_VALUE = -1.0 / 1024 / 1024;
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_START_MEM, /*cumulative=*/false), NO_VALUE);
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_END_MEM, /*cumulative=*/false), 0.0);
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_PEAK_MEM, /*cumulative=*/false), NO_VALUE);
}

using GenProfileBinMetricDeathTest = GenProfileBinMetric;

TEST_F(GenProfileBinMetricDeathTest, UnknownMetricIsAnInternalError)
{
    start();
    GEN_PROFILE_BIN const *const bin = gen_profile_bin_get_current_bin();
    for (unsigned const metric : {0U, 3U, 32U, 0x10001U, 0x80000U, 0xffffffffU})
        EXPECT_EXIT(bin->get_metric(metric, false), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    dies_in_bins("unknown metric"))
            << metric;
}

TEST_F(GenProfileBinMetricDeathTest, ReportValuesNeedAClosedBin)
{
    start();
    GEN_PROFILE_BIN const *const bin = open_bin("A");
    for (unsigned const metric :
         {GEN_PB_METRIC_START_MEM, GEN_PB_METRIC_END_MEM, GEN_PB_METRIC_PEAK_MEM, GEN_PB_METRIC_WC_EST})
        EXPECT_EXIT(bin->get_metric(metric, false), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    dies_in_bins("m_open_count == 0"))
            << metric;
}

class GenProfileBinPath : public ProfileBinsTest
{
protected:
    // Fitter > A > (no name) > B
    GenProfileBinPath()
    {
        start();
        m_root = gen_profile_bin_get_current_bin();
        m_a = open_bin("A");
        m_anonymous = open_bin("");
        m_b = open_bin("B");
    }

    static std::vector<std::string> names(GEN_PROFILE_BIN const *bin, GEN_PROFILE_BIN const *root)
    {
        std::vector<std::string> result{"kept"};
        bin->get_path_names(&result, root);
        return result;
    }

    GEN_PROFILE_BIN const *m_root;
    GEN_PROFILE_BIN const *m_a;
    GEN_PROFILE_BIN const *m_anonymous;
    GEN_PROFILE_BIN const *m_b;
};

TEST_F(GenProfileBinPath, JoinsTheNamesFromTheRootDown)
{
    EXPECT_EQ(m_root->get_path(nullptr), "Fitter");
    EXPECT_EQ(m_a->get_path(nullptr), "Fitter/A");
    EXPECT_EQ(m_a->get_path(m_root), "Fitter/A");
    EXPECT_EQ(m_a->get_path("::", nullptr), "Fitter::A");
    EXPECT_EQ(m_a->get_path("", m_root), "FitterA");
}

TEST_F(GenProfileBinPath, StartsAtTheGivenBin)
{
    EXPECT_EQ(m_b->get_path(m_a), "A/B");
    EXPECT_EQ(m_b->get_path(", ", m_a), "A, B");
    EXPECT_EQ(m_b->get_path(m_b), "B");
    EXPECT_EQ(m_root->get_path(m_root), "Fitter");
}

TEST_F(GenProfileBinPath, ShowsNoSeparatorForABinWithoutAName)
{
    EXPECT_EQ(m_anonymous->get_path(nullptr), "Fitter/A");
    EXPECT_EQ(m_b->get_path(nullptr), "Fitter/A/B");
    EXPECT_EQ(m_b->get_path("::", nullptr), "Fitter::A::B");
    EXPECT_EQ(m_anonymous->get_path(m_anonymous), "");
    EXPECT_EQ(m_b->get_path(m_anonymous), "/B");
}

TEST_F(GenProfileBinPath, NamesAreAppendedAlsoTheEmptyOnes)
{
    EXPECT_THAT(names(m_root, nullptr), ElementsAre("kept", "Fitter"));
    EXPECT_THAT(names(m_b, nullptr), ElementsAre("kept", "Fitter", "A", "", "B"));
    EXPECT_THAT(names(m_b, m_root), ElementsAre("kept", "Fitter", "A", "", "B"));
    EXPECT_THAT(names(m_b, m_anonymous), ElementsAre("kept", "", "B"));
    EXPECT_THAT(names(m_b, m_b), ElementsAre("kept", "B"));
}

TEST_F(GenProfileBinPath, StaysWhenTheBinIsClosed)
{
    GEN_PROFILE_BINS::close_recursively(m_root);
    EXPECT_EQ(m_b->get_path(nullptr), "Fitter/A/B");
}

using GenProfileBinPathDeathTest = GenProfileBinPath;

TEST_F(GenProfileBinPathDeathTest, ARootThatIsNotAboveIsAnInternalError)
{
    std::vector<std::string> result;
    EXPECT_EXIT(m_a->get_path(m_b), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_bins("m_parent"));
    EXPECT_EXIT(m_a->get_path("::", m_b), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_bins("m_parent"));
    EXPECT_EXIT(m_a->get_path_names(&result, m_b), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_bins("m_parent"));
}
