// Deep trees and many bins, on a stack that a call for each level would exceed. Work that grows with the square of the
// depth doesn't end before the test's time-out.
#include "gen_cookie_sys.h"
#include "gen_profile_bins_sys.h"

#include "mem_sys.h"
#include "tests/support/message_recorder.h"
#include "tests/support/platform.h"
#include "tests/support/profile_bins_script.h"
#include "tests/support/small_stack.h"
#include "tests/support/temp_dir.h"
#include "tests/support/texts.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::Each;
using testing::ElementsAre;

namespace {

// Fewer on Windows, whose clocks, read at each boundary, take ten times longer under an emulation.
constexpr int LEVELS = ON_WINDOWS ? 20000 : 100000;
constexpr int MANY_BINS = ON_WINDOWS ? 200000 : 1000000;

// A bin inside a bin of the same name would be the same bin.
char const *level_name(int level)
{
    return level % 2 == 0 ? "a" : "b";
}

void open_levels(unsigned flags, int count = LEVELS)
{
    for (int i = 0; i < count; ++i)
        GEN_PROFILE_BINS::open("TST", level_name(i), flags);
}

void close_levels(int count = LEVELS)
{
    for (int i = count; i-- > 0;)
        GEN_PROFILE_BINS::close(level_name(i));
}

// "a/b/a/b" of four levels.
std::string path_of_levels(int count, char const *separator)
{
    std::string path;
    for (int i = 0; i < count; ++i)
        path += (i == 0 ? "" : separator) + std::string(level_name(i));
    return path;
}

void open_anonymous_levels(int count = LEVELS)
{
    for (int i = 0; i < count; ++i)
        open_bin("");
}

void close_anonymous_levels(int count = LEVELS)
{
    for (int i = 0; i < count; ++i)
        close_bin();
}

std::vector<std::string> row_names(std::string const &report)
{
    std::vector<std::string> names;
    for (ReportRow const &row : parse_rows(lines_of(report)))
        names.push_back(row.name);
    return names;
}

class GenProfileBinsDepth : public testing::Test
{
protected:
    // The number of messages that begin so.
    std::size_t message_count(std::string const &start) const
    {
        std::vector<std::string> const lines = m_messages.lines();
        return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), [&start](std::string const &line) {
            return line.compare(0, start.size(), start) == 0;
        }));
    }

    std::string read_text(std::string const &name) const { return without_carriage_returns(m_directory.read(name)); }

    void finalize(bool close_root = true)
    {
        GEN_PROFILE_BINS::finalize("Fitter", close_root);
        EXPECT_EQ(gen_profile_bin_get_current_bin(), nullptr);
        EXPECT_EQ(message_count("Deleted all bins"), 1U);
    }

    TempDir m_directory;
    CurrentDirectory m_current{m_directory.path()};
    MessageRecorder m_messages;
};

} // namespace

TEST_F(GenProfileBinsDepth, ImmediateBinsOpenAndClose)
{
    run_on_small_stack([this] {
        start_bins("Fitter");
        for (int round = 0; round < 2; ++round) {
            open_levels(GEN_PB_FLAG_IMMEDIATE);
            GEN_PROFILE_BIN const *const bottom = gen_profile_bin_get_current_bin();
            EXPECT_EQ(bottom->get_path(nullptr), "Fitter/" + path_of_levels(LEVELS, "/"));
            std::vector<std::string> names;
            bottom->get_path_names(&names, nullptr);
            EXPECT_EQ(names.size(), LEVELS + 1U);
            close_levels();
        }
        finalize();
    });
}

TEST_F(GenProfileBinsDepth, BufferedBinsOpenAndClose)
{
    run_on_small_stack([this] {
        start_bins("Fitter");
        open_levels(GEN_PB_FLAG_RECORD);
        close_levels();
        GEN_PROFILE_BIN const *const leaf = open_bin("leaf");
        EXPECT_EQ(leaf->get_path(nullptr), "Fitter/leaf");
        close_bin();
        finalize();
    });
}

TEST_F(GenProfileBinsDepth, ClosesRecursively)
{
    run_on_small_stack([this] {
        start_bins("Fitter");
        open_levels(GEN_PB_FLAG_IMMEDIATE);
        GEN_PROFILE_BINS::force_finalize("Fitter");
        EXPECT_EQ(message_count("Deleted all bins"), 1U);
    });
}

// Bins that are opened after the root was closed are no part of its tree.
TEST_F(GenProfileBinsDepth, DeletesATreeWithoutTheRoot)
{
    run_on_small_stack([this] {
        start_bins("Fitter");
        close_bin();
        open_bin("stray");
        open_levels(GEN_PB_FLAG_IMMEDIATE);
        close_levels();
        close_bin();
        finalize(/*close_root=*/false);
    });
}

TEST_F(GenProfileBinsDepth, ComputesReportValues)
{
    run_on_small_stack([this] {
        start_bins("Fitter");
        GEN_PROFILE_BIN const *const top = open_bin("top");
        open_levels(GEN_PB_FLAG_IMMEDIATE);
        close_levels();
        close_bin();
        EXPECT_GT(top->get_metric(GEN_PB_METRIC_WC_EST, /*cumulative=*/true), 0.0);
        finalize();
    });
}

// The bins without a name have no rows and leave nothing in the path, so that these reports are short.
TEST_F(GenProfileBinsDepth, ReportsBinsWithoutAName)
{
    mem_cfg_set("gen_print_profile_bins", "on");
    run_on_small_stack([this] {
        start_bins("Fitter");
        open_anonymous_levels();
        GEN_PROFILE_BINS::open_with_tag("TST", "leaf", GEN_PB_FLAG_IMMEDIATE, "tag");
        close_bin();
        close_anonymous_levels();
        finalize();
    });
    EXPECT_THAT(row_names(read_text("profile_bins_Fitter.log")),
                ElementsAre("Fitter", "Fitter::leaf", "Fitter::OTHER"));
    EXPECT_THAT(row_names(read_text("profile_bins_tagged_Fitter.log")),
                ElementsAre("Fitter", "Fitter::tag", "Fitter::tag::leaf", "Fitter::tag::OTHER", "Fitter::OTHER"));
}

// A report is as long as its paths. Each level has a leaf, and its path is that of the bins that the report is in.
TEST_F(GenProfileBinsDepth, ReportsALeafAtEachLevelWithoutAName)
{
    mem_cfg_set("gen_print_profile_bins", "on");
    run_on_small_stack([this] {
        start_bins("Fitter");
        for (int i = 0; i < LEVELS; ++i) {
            open_bin("");
            open_bin("leaf");
            close_bin();
        }
        close_anonymous_levels();
        finalize();
    });
    std::vector<std::string> names = row_names(read_text("profile_bins_Fitter.log"));
    ASSERT_EQ(names.size(), LEVELS + 2U);
    EXPECT_EQ(names.front(), "Fitter");
    EXPECT_EQ(names.back(), "Fitter::OTHER");
    names.pop_back();
    names.erase(names.begin());
    EXPECT_THAT(names, Each("Fitter::leaf"));
}

TEST_F(GenProfileBinsDepth, ReportsWholePaths)
{
    constexpr int NAMED_LEVELS = 2000;
    mem_cfg_set("gen_print_profile_bins", "on");
    run_on_small_stack([this] {
        start_bins("Fitter");
        open_levels(GEN_PB_FLAG_IMMEDIATE, NAMED_LEVELS);
        close_levels(NAMED_LEVELS);
        finalize();
    });
    std::vector<std::string> const names = row_names(read_text("profile_bins_Fitter.log"));
    std::vector<std::string> expected{"Fitter"};
    for (int i = 1; i <= NAMED_LEVELS; ++i)
        expected.push_back("Fitter::" + path_of_levels(i, "::"));
    for (int i = NAMED_LEVELS - 1; i > 0; --i) // the bin at the bottom has no rest
        expected.push_back("Fitter::" + path_of_levels(i, "::") + "::OTHER");
    expected.push_back("Fitter::OTHER");
    EXPECT_TRUE(names == expected); // the texts are too long to be shown
}

TEST_F(GenProfileBinsDepth, NumbersSteps)
{
    run_on_small_stack([this] {
        start_bins("Fitter");
        for (int i = 0; i < LEVELS; ++i)
            GEN_PROFILE_BINS::open_with_user_tag("TST", level_name(i), GEN_PB_FLAG_IMMEDIATE, nullptr, "Level");
        std::string step = "1";
        for (int i = 0; i < LEVELS; ++i)
            step += ".1";
        m_messages.clear();
        constexpr unsigned ANNOUNCED = GEN_PB_FLAG_IMMEDIATE | GEN_PB_FLAG_ANNOUNCE;
        GEN_PROFILE_BINS::open_with_user_tag("TST", "leaf", ANNOUNCED, nullptr, "Leaf");
        EXPECT_EQ(message_count("Starting Fitter Step " + step + " Leaf at "), 1U);
        close_bin();
        close_levels();
        m_messages.clear();
        finalize();
    });
}

// A labelled bin below each level looks for a labelled bin above it.
TEST_F(GenProfileBinsDepth, NumbersTheStepsOfLevelsWithoutALabel)
{
    run_on_small_stack([this] {
        start_bins("Fitter");
        for (int i = 0; i < LEVELS; ++i) {
            open_bin(level_name(i));
            GEN_PROFILE_BINS::open_with_user_tag("TST", "leaf", GEN_PB_FLAG_IMMEDIATE, nullptr, "Leaf");
            close_bin();
        }
        m_messages.clear();
        constexpr unsigned ANNOUNCED = GEN_PB_FLAG_IMMEDIATE | GEN_PB_FLAG_ANNOUNCE;
        GEN_PROFILE_BINS::open_with_user_tag("TST", "last", ANNOUNCED, nullptr, "Leaf");
        EXPECT_EQ(message_count("Starting Fitter Step " + std::to_string(LEVELS + 1) + " Leaf at "), 1U);
        close_bin();
        close_levels();
        m_messages.clear();
        finalize();
    });
}

// Patterns whose last name is that of the levels, with one that matches at the bottom alone.
TEST_F(GenProfileBinsDepth, MatchesRatioRules)
{
    run_on_small_stack([this] {
        start_bins("Fitter");
        for (char const *pattern : {"*/absent/*/a", "*/absent/b", "*/absent/*"})
            GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio(pattern, 2.0);
        open_levels(GEN_PB_FLAG_IMMEDIATE);
        GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("Fitter/*/b/leaf", 2.0); // later than the levels
        GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("*/a/*/leaf", 4.0);
        m_messages.clear();
        open_bin("leaf");
        EXPECT_EQ(message_count("WARNING: multiple CPU:WC ratios found for bin Fitter/" + path_of_levels(LEVELS, "/") +
                                "/leaf."),
                  1U);
        EXPECT_EQ(m_messages.lines().size(), 3U);
        close_bin();
        close_levels();
        finalize();
    });
}

TEST_F(GenProfileBinsDepth, LogsCookies)
{
    mem_cfg_set("gen_print_cookie_log", "on");
    run_on_small_stack([this] {
        start_bins("Fitter");
        open_levels(GEN_PB_FLAG_IMMEDIATE);
        gen_log_cookie("deep", 1);
        close_levels();
        finalize();
    });
    std::string const row = lines_of(read_text("cookie_db_Fitter.log")).back();
    std::string const path = "Fitter::" + path_of_levels(LEVELS, "::");
    // Not printed if they differ: a path has many pages.
    EXPECT_TRUE(row == "deep" + std::string(56, ' ') + "|1" + std::string(24, ' ') + '|' + path);
}

TEST_F(GenProfileBinsDepth, ManyBinsUnderOneParent)
{
    std::vector<std::string> names;
    for (int i = 0; i < MANY_BINS; ++i)
        names.push_back(std::to_string(i));
    GEN_PROFILE_BIN *const root = start_bins("Fitter");
    for (std::string const &name : names) {
        GEN_PROFILE_BINS::open("TST", name.c_str(), GEN_PB_FLAG_RECORD);
        GEN_PROFILE_BINS::close(name.c_str());
    }
    GEN_PROFILE_BIN const *const last = open_bin(names.back()); // the same bin again
    EXPECT_EQ(last->get_path(nullptr), "Fitter/" + names.back());
    close_bin();
    close_bin();
    EXPECT_GE(root->get_metric(GEN_PB_METRIC_WC_EST, /*cumulative=*/true), 0.0);
    finalize(/*close_root=*/false);
}
