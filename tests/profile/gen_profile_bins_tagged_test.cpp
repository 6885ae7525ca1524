// Tagged reports as whole files, over scripted clocks: a second of CPU time of a bin comes with two of wall-clock time.
#include "gen_profile_bins_sys.h"

#include "gen/profile/gen_profile_bins_bin.h"
#include "mem_sys.h"
#include "tests/support/gen_os_fake.h"
#include "tests/support/mem_figures_fake.h"
#include "tests/support/message_recorder.h"
#include "tests/support/platform.h"
#include "tests/support/profile_bins_script.h"
#include "tests/support/temp_dir.h"
#include "tests/support/texts.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

namespace {

constexpr std::int64_t CPU_SEC = 1000000;
constexpr std::int64_t TICK_SEC = 10000000; // at 10 MHz
constexpr std::size_t MIB = std::size_t{1024} * 1024;

// A bin of a flow with its tag, its own time, and the bins in it.
struct Stage
{
    char const *name;
    char const *tag; // null for none
    int cpu_sec;
    std::vector<Stage> stages;
};

void run(Stage const &stage)
{
    GEN_PROFILE_BINS::open_with_tag("TST", stage.name, GEN_PB_FLAG_IMMEDIATE, stage.tag);
    gen_os_fake_advance(stage.cpu_sec * CPU_SEC, stage.cpu_sec * 2 * TICK_SEC);
    for (Stage const &inner : stage.stages)
        run(inner);
    GEN_PROFILE_BINS::close(nullptr);
}

// Gives a bin a tag that no open can. The class is not exported, so that the sanitizer has no type to compare with.
[[gnu::no_sanitize("vptr")]] void set_tag(GEN_PROFILE_BIN *bin, char const *tag)
{
    static_cast<GEN_PB_IMPL *>(bin)->m_tag = tag;
}

// A row of a bin.
struct Row
{
    char const *name;
    int count;
    int cpu_sec;
    int start_mib = 0;
    int end_mib = 0;
    int peak_mib = 0;
    int errors = 0;
};

// The file with these rows.
std::string file_of(std::vector<Row> const &rows)
{
    std::string text = " count\tcpu time (s)\twc time (s)\tclock errors\twc est time (s)\tstart mem (MiB)\t"
                       "end mem (MiB)\tpeak mem (MiB)\tname\n";
    for (Row const &row : rows) {
        char line[256];
        std::snprintf(line, sizeof line, "%6d\t%9d.00\t%8d.00\t%12d\t%12d.00\t%12d.00\t%10d.00\t%11d.00\t%s\n",
                      row.count, row.cpu_sec, row.cpu_sec * 2, row.errors, row.cpu_sec, row.start_mib, row.end_mib,
                      row.peak_mib, row.name);
        text += line;
    }
    return text + "\nEstimated bin overhead was 0.0s (0.0s WC)\n";
}

class GenProfileBinsTagged : public testing::Test
{
protected:
    GenProfileBinsTagged() { mem_cfg_set("gen_print_profile_bins", "on"); }

    // Runs a flow of these stages; false if there is no tagged report.
    bool run_flow(std::vector<Stage> const &stages)
    {
        GEN_PROFILE_BIN *const root = start_bins("Fitter");
        for (Stage const &stage : stages)
            run(stage);
        if (m_root_tag != nullptr)
            set_tag(root, m_root_tag);
        m_messages.clear();
        GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
        return std::filesystem::exists(m_directory.path() / "profile_bins_tagged_tool.log");
    }

    std::string main_report() const { return without_carriage_returns(m_directory.read("profile_bins_tool.log")); }
    std::string tagged_report() const
    {
        return without_carriage_returns(m_directory.read("profile_bins_tagged_tool.log"));
    }

    char const *m_root_tag = nullptr;
    TempDir m_directory;
    CurrentDirectory m_current{m_directory.path()};
    MessageRecorder m_messages;
};

} // namespace

TEST_F(GenProfileBinsTagged, HaveNoReportWithoutTags)
{
    EXPECT_FALSE(run_flow({{"Plan", nullptr, 1, {{"Read", "", 4, {}}}}}));
    EXPECT_EQ(main_report(), file_of({{"Fitter", 1, 5},
                                      {"Fitter::Plan", 1, 5},
                                      {"Fitter::Plan::Read", 1, 4},
                                      {"Fitter::Plan::OTHER", 0, 1},
                                      {"Fitter::OTHER", 0, 0}}));
}

TEST_F(GenProfileBinsTagged, MoveBelowTheirTagWithTheNamesAboveThem)
{
    mem_fake_queue_close(1 * MIB, 2 * MIB, 3 * MIB);    // of the first Read
    mem_fake_queue_close(1 * MIB, 20 * MIB, 30 * MIB);  // of the second
    mem_fake_queue_close(4 * MIB, 5 * MIB, 6 * MIB);    // of Check
    mem_fake_queue_close(7 * MIB, 8 * MIB, 90 * MIB);   // of Plan
    mem_fake_queue_close(0, 0, 0);                      // of zoom
    mem_fake_queue_close(10 * MIB, 11 * MIB, 95 * MIB); // of the root
    ASSERT_TRUE(run_flow({
        {"Plan", nullptr, 1, {{"Read", "netlist", 3, {}}, {"Read", "other", 1, {}}, {"Check", nullptr, 2, {}}}},
        {"zoom", nullptr, 8, {}},
    }));
    EXPECT_EQ(main_report(), file_of({{"Fitter", 1, 15, 10, 11, 95},
                                      {"Fitter::Plan", 1, 7, 7, 8, 90},
                                      {"Fitter::Plan::Read", 2, 4, 1, 20, 30},
                                      {"Fitter::Plan::Check", 1, 2, 4, 5, 6},
                                      {"Fitter::Plan::OTHER", 0, 1},
                                      {"Fitter::zoom", 1, 8},
                                      {"Fitter::OTHER", 0, 0}}));
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 15, 10, 11, 95},
                                        {"Fitter::Plan", 1, 3, 7, 8, 90},
                                        {"Fitter::Plan::Check", 1, 2, 4, 5, 6},
                                        {"Fitter::Plan::OTHER", 0, 1},
                                        {"Fitter::netlist", 1, 4, 1, 20, 30},
                                        {"Fitter::netlist::Plan", 1, 4, 1, 20, 30},
                                        {"Fitter::netlist::Plan::Read", 2, 4, 1, 20, 30},
                                        {"Fitter::netlist::Plan::OTHER", 0, 0},
                                        {"Fitter::netlist::OTHER", 0, 0},
                                        {"Fitter::zoom", 1, 8},
                                        {"Fitter::OTHER", 0, 0}}));
}

TEST_F(GenProfileBinsTagged, RepeatAllNamesAboveThem)
{
    ASSERT_TRUE(run_flow(
        {{"A", nullptr, 1, {{"B", nullptr, 2, {{"C", nullptr, 4, {{"D", "t", 8, {}}}}}}}}, {"A", nullptr, 16, {}}}));
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 31},
                                        {"Fitter::A", 2, 23},
                                        {"Fitter::A::B", 1, 6},
                                        {"Fitter::A::B::C", 1, 4},
                                        {"Fitter::A::B::OTHER", 0, 2},
                                        {"Fitter::A::OTHER", 0, 17},
                                        {"Fitter::t", 1, 8},
                                        {"Fitter::t::A", 2, 8},
                                        {"Fitter::t::A::B", 1, 8},
                                        {"Fitter::t::A::B::C", 1, 8},
                                        {"Fitter::t::A::B::C::D", 1, 8},
                                        {"Fitter::t::A::B::C::OTHER", 0, 0},
                                        {"Fitter::t::A::B::OTHER", 0, 0},
                                        {"Fitter::t::A::OTHER", 0, 0},
                                        {"Fitter::t::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
}

TEST_F(GenProfileBinsTagged, JoinAsSiblingsWhenTheirNamesDiffer)
{
    mem_fake_queue_close(1 * MIB, 2 * MIB, 3 * MIB); // of Read, whose figures the tag keeps
    mem_fake_queue_close(0, 0, 0);
    mem_fake_queue_close(4 * MIB, 5 * MIB, 6 * MIB); // of Wires
    ASSERT_TRUE(
        run_flow({{"Plan", nullptr, 1, {{"Read", "t", 4, {}}}}, {"Route", nullptr, 8, {{"Wires", "t", 2, {}}}}}));
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 15},
                                        {"Fitter::Plan", 1, 1},
                                        {"Fitter::Route", 1, 8},
                                        {"Fitter::t", 1, 6, 1, 2, 3},
                                        {"Fitter::t::Plan", 1, 6, 1, 2, 3},
                                        {"Fitter::t::Plan::Read", 1, 4, 1, 2, 3},
                                        {"Fitter::t::Plan::Route", 1, 2, 4, 5, 6},
                                        {"Fitter::t::Plan::Route::Wires", 1, 2, 4, 5, 6},
                                        {"Fitter::t::Plan::Route::OTHER", 0, 0},
                                        {"Fitter::t::Plan::OTHER", 0, 0},
                                        {"Fitter::t::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
}

TEST_F(GenProfileBinsTagged, JoinHigherUpWhenTheirNamesAgree)
{
    ASSERT_TRUE(run_flow({{"Plan", nullptr, 0, {{"Read", "t", 4, {}}}},
                          {"Route", nullptr, 0, {{"Read", "t", 2, {}}, {"Wires", "t", 1, {}}}}}));
    // The third joins the second below their common name.
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 7},
                                        {"Fitter::Plan", 1, 0},
                                        {"Fitter::Route", 1, 0},
                                        {"Fitter::t", 1, 7},
                                        {"Fitter::t::Plan", 1, 4},
                                        {"Fitter::t::Plan::Read", 1, 4},
                                        {"Fitter::t::Plan::OTHER", 0, 0},
                                        {"Fitter::t::Route", 1, 3},
                                        {"Fitter::t::Route::Read", 1, 2},
                                        {"Fitter::t::Route::Wires", 1, 1},
                                        {"Fitter::t::Route::OTHER", 0, 0},
                                        {"Fitter::t::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
}

TEST_F(GenProfileBinsTagged, MoveOnceWhenNestedInTheirOwnTag)
{
    ASSERT_TRUE(run_flow({{"Plan", "t", 1, {{"Step", nullptr, 2, {{"Read", "t", 4, {}}}}}}}));
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 7},
                                        {"Fitter::t", 1, 7},
                                        {"Fitter::t::Plan", 1, 7},
                                        {"Fitter::t::Plan::Step", 1, 6},
                                        {"Fitter::t::Plan::Step::Read", 1, 4},
                                        {"Fitter::t::Plan::Step::OTHER", 0, 2},
                                        {"Fitter::t::Plan::OTHER", 0, 1},
                                        {"Fitter::t::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
}

TEST_F(GenProfileBinsTagged, MoveOutOfABinOfAnotherTagFirst)
{
    ASSERT_TRUE(run_flow({{"Plan", "a", 1, {{"Read", "b", 4, {}}}}}));
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 5},
                                        {"Fitter::a", 1, 1},
                                        {"Fitter::a::Plan", 1, 1},
                                        {"Fitter::a::OTHER", 0, 0},
                                        {"Fitter::b", 1, 4},
                                        {"Fitter::b::Plan", 1, 4},
                                        {"Fitter::b::Plan::Read", 1, 4},
                                        {"Fitter::b::Plan::OTHER", 0, 0},
                                        {"Fitter::b::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
}

TEST_F(GenProfileBinsTagged, GroupEachTagOfAnInterleavedFlow)
{
    ASSERT_TRUE(run_flow({{"A", nullptr, 0, {{"x", "t", 1, {}}, {"y", "u", 2, {}}}},
                          {"B", nullptr, 0, {{"x", "u", 4, {}}, {"z", "t", 8, {}}}}}));
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 15},
                                        {"Fitter::A", 1, 0},
                                        {"Fitter::B", 1, 0},
                                        {"Fitter::t", 1, 9},
                                        {"Fitter::t::A", 1, 9},
                                        {"Fitter::t::A::x", 1, 1},
                                        {"Fitter::t::A::B", 1, 8},
                                        {"Fitter::t::A::B::z", 1, 8},
                                        {"Fitter::t::A::B::OTHER", 0, 0},
                                        {"Fitter::t::A::OTHER", 0, 0},
                                        {"Fitter::t::OTHER", 0, 0},
                                        {"Fitter::u", 1, 6},
                                        {"Fitter::u::A", 1, 6},
                                        {"Fitter::u::A::y", 1, 2},
                                        {"Fitter::u::A::B", 1, 4},
                                        {"Fitter::u::A::B::x", 1, 4},
                                        {"Fitter::u::A::B::OTHER", 0, 0},
                                        {"Fitter::u::A::OTHER", 0, 0},
                                        {"Fitter::u::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
}

// The bin of the tag's name above the first bin is passed over, so both paths read Read, Step, Fitter.
TEST_F(GenProfileBinsTagged, StayWhereTheyAreWithoutAPlaceToJoin)
{
    ASSERT_TRUE(run_flow({{"Plan", nullptr, 0, {{"Step", nullptr, 1, {{"Read", "Plan", 4, {}}}}}},
                          {"Step", nullptr, 2, {{"Read", "Plan", 8, {}}, {"Wires", "Plan", 16, {}}}}}));
    EXPECT_TRUE(m_messages.has("GEN_BIN_TAGGED: the tagged bin report could be corrupt for tag: Plan"));
    // The second one stays, but its numbers are subtracted from the bins above it all the same. The third one joins the
    // first.
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 31},
                                        {"Fitter::Plan", 1, 1},
                                        {"Fitter::Plan::Step", 1, 1},
                                        {"Fitter::Plan::OTHER", 0, 0},
                                        {"Fitter::Plan", 1, 20},
                                        {"Fitter::Plan::Plan", 1, 20},
                                        {"Fitter::Plan::Plan::Step", 1, 20},
                                        {"Fitter::Plan::Plan::Step::Read", 1, 4},
                                        {"Fitter::Plan::Plan::Step::Wires", 1, 16},
                                        {"Fitter::Plan::Plan::Step::OTHER", 0, 0},
                                        {"Fitter::Plan::Plan::OTHER", 0, 0},
                                        {"Fitter::Plan::OTHER", 0, 0},
                                        {"Fitter::Step", 1, 2},
                                        {"Fitter::Step::Read", 1, 8},
                                        {"Fitter::Step::OTHER", 0, 2},
                                        {"Fitter::OTHER", 0, 0}}));
}

TEST_F(GenProfileBinsTagged, StaySilentlyWhenTheirPathsDifferAtTheRoot)
{
    ASSERT_TRUE(run_flow({{"Read", "t", 4, {}}, {"Plan", nullptr, 1, {{"Read", "t", 2, {}}}}}));
    EXPECT_FALSE(m_messages.has("GEN_BIN_TAGGED: the tagged bin report could be corrupt for tag: t"));
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 7},
                                        {"Fitter::Plan", 1, 1},
                                        {"Fitter::Plan::Read", 1, 2},
                                        {"Fitter::Plan::OTHER", 0, 1},
                                        {"Fitter::t", 1, 4},
                                        {"Fitter::t::Read", 1, 4},
                                        {"Fitter::t::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
}

// The path of the third one equals the end of the second one's path, so no names differ.
TEST_F(GenProfileBinsTagged, StayWhereTheyAreWhenTheirPathEndsFirst)
{
    ASSERT_TRUE(run_flow({{"A", nullptr, 0, {{"x", "t", 1, {}}}},
                          {"B", nullptr, 0, {{"Fitter", nullptr, 0, {{"A2", nullptr, 0, {{"y", "t", 2, {}}}}}}}},
                          {"A2", nullptr, 0, {{"y", "t", 4, {}}}}}));
    EXPECT_TRUE(m_messages.has("GEN_BIN_TAGGED: the tagged bin report could be corrupt for tag: t"));
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 7},
                                        {"Fitter::A", 1, 0},
                                        {"Fitter::A2", 1, 0},
                                        {"Fitter::A2::y", 1, 4},
                                        {"Fitter::A2::OTHER", 0, 0},
                                        {"Fitter::B", 1, 0},
                                        {"Fitter::B::Fitter", 1, 0},
                                        {"Fitter::B::Fitter::A2", 1, 0},
                                        {"Fitter::B::Fitter::OTHER", 0, 0},
                                        {"Fitter::B::OTHER", 0, 0},
                                        {"Fitter::t", 1, 3},
                                        {"Fitter::t::A", 1, 3},
                                        {"Fitter::t::A::x", 1, 1},
                                        {"Fitter::t::A::B", 1, 2},
                                        {"Fitter::t::A::B::Fitter", 1, 2},
                                        {"Fitter::t::A::B::Fitter::A2", 1, 2},
                                        {"Fitter::t::A::B::Fitter::A2::y", 1, 2},
                                        {"Fitter::t::A::B::Fitter::A2::OTHER", 0, 0},
                                        {"Fitter::t::A::B::Fitter::OTHER", 0, 0},
                                        {"Fitter::t::A::B::OTHER", 0, 0},
                                        {"Fitter::t::A::OTHER", 0, 0},
                                        {"Fitter::t::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
}

// The names are repeated up to the first one that equals the root's, and a bin below the root may have that name.
TEST_F(GenProfileBinsTagged, RepeatNoNameAboveTheNameOfTheRoot)
{
    ASSERT_TRUE(run_flow({{"A", nullptr, 0, {{"Fitter", nullptr, 1, {{"B", nullptr, 2, {{"x", "t", 4, {}}}}}}}}}));
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 7},
                                        {"Fitter::A", 1, 3},
                                        {"Fitter::A::Fitter", 1, 3},
                                        {"Fitter::A::Fitter::B", 1, 2},
                                        {"Fitter::A::Fitter::OTHER", 0, 1},
                                        {"Fitter::A::OTHER", 0, 0},
                                        {"Fitter::t", 1, 4},
                                        {"Fitter::t::B", 1, 4},
                                        {"Fitter::t::B::x", 1, 4},
                                        {"Fitter::t::B::OTHER", 0, 0},
                                        {"Fitter::t::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
}

TEST_F(GenProfileBinsTagged, LeaveARootWithATagInPlace)
{
    m_root_tag = "t";
    ASSERT_TRUE(run_flow({{"b", nullptr, 1, {}}, {"a", "t", 2, {}}}));
    EXPECT_TRUE(m_messages.has("root bin should not be tagged"));
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 3},
                                        {"Fitter::b", 1, 1},
                                        {"Fitter::t", 1, 2},
                                        {"Fitter::t::a", 1, 2},
                                        {"Fitter::t::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
}

TEST_F(GenProfileBinsTagged, LeaveAParentOfManyInOrder)
{
    std::vector<Stage> stages;
    std::vector<std::string> names;
    for (int i = 0; i < 40; ++i)
        names.push_back("s" + std::to_string(i));
    for (std::size_t i = 0; i < names.size(); ++i)
        stages.push_back({names[i].c_str(), i % 2 == 0 ? "t" : nullptr, 1, {}});
    ASSERT_TRUE(run_flow({{"Plan", nullptr, 0, stages}}));
    std::vector<std::string> expected = {"Fitter", "Fitter::Plan"};
    for (std::size_t i = 1; i < names.size(); i += 2)
        expected.push_back("Fitter::Plan::" + names[i]);
    expected.insert(expected.end(), {"Fitter::Plan::OTHER", "Fitter::t", "Fitter::t::Plan"});
    for (std::size_t i = 0; i < names.size(); i += 2)
        expected.push_back("Fitter::t::Plan::" + names[i]);
    expected.insert(expected.end(), {"Fitter::t::Plan::OTHER", "Fitter::t::OTHER", "Fitter::OTHER"});
    std::vector<std::string> found;
    std::istringstream in(tagged_report());
    for (std::string line; std::getline(in, line);)
        if (ReportRow const row = parse_row(line); !row.name.empty())
            found.push_back(row.name);
    EXPECT_EQ(found, expected);
}

TEST_F(GenProfileBinsTagged, AreForgottenWithTheBins)
{
    ASSERT_TRUE(run_flow({{"Plan", "t", 1, {}}}));
    std::filesystem::remove(m_directory.path() / "profile_bins_tagged_tool.log");
    EXPECT_FALSE(run_flow({{"Plan", nullptr, 1, {}}}));
    ASSERT_TRUE(run_flow({{"Route", "t", 2, {}}}));
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 2},
                                        {"Fitter::t", 1, 2},
                                        {"Fitter::t::Route", 1, 2},
                                        {"Fitter::t::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
}

// A tool's own dump of a part notes its bins too.
TEST_F(GenProfileBinsTagged, MoveOnceThoughADumpNotedThemBefore)
{
    start_bins("Fitter");
    GEN_PROFILE_BIN *const plan = open_bin("Plan");
    run({"Read", "t", 4, {}});
    close_bin();
    plan->dump("part.log", /*collect_tags=*/true);
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 4},
                                        {"Fitter::Plan", 1, 0},
                                        {"Fitter::t", 1, 4},
                                        {"Fitter::t::Plan", 1, 4},
                                        {"Fitter::t::Plan::Read", 1, 4},
                                        {"Fitter::t::Plan::OTHER", 0, 0},
                                        {"Fitter::t::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
}

// Errors of the clocks add up wherever numbers are taken out or added.
TEST_F(GenProfileBinsTagged, LeaveAndBringClockErrors)
{
    constexpr int BACKWARD = -8;
    ASSERT_TRUE(run_flow({{"Plan", nullptr, 20, {{"Read", "t", BACKWARD, {}}, {"Write", nullptr, 2, {}}}},
                          {"Route", nullptr, 20, {{"Wires", "t", BACKWARD, {}}}}}));
    // Both clocks went backward in a stage, and its interval counts as 0.
    EXPECT_EQ(main_report(), file_of({{"Fitter", 1, 26},
                                      {"Fitter::Plan", 1, 14},
                                      {"Fitter::Plan::Read", 1, 0, 0, 0, 0, 2},
                                      {"Fitter::Plan::Write", 1, 2},
                                      {"Fitter::Plan::OTHER", 0, 12, 0, 0, 0, 2},
                                      {"Fitter::Route", 1, 12},
                                      {"Fitter::Route::Wires", 1, 0, 0, 0, 0, 2},
                                      {"Fitter::Route::OTHER", 0, 12, 0, 0, 0, 2},
                                      {"Fitter::OTHER", 0, 0}}));
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 26},
                                        {"Fitter::Plan", 1, 14, 0, 0, 0, 2},
                                        {"Fitter::Plan::Write", 1, 2},
                                        {"Fitter::Plan::OTHER", 0, 12, 0, 0, 0, 2},
                                        {"Fitter::Route", 1, 12, 0, 0, 0, 2},
                                        {"Fitter::t", 1, 0, 0, 0, 0, 4},
                                        {"Fitter::t::Plan", 1, 0, 0, 0, 0, 4},
                                        {"Fitter::t::Plan::Read", 1, 0, 0, 0, 0, 2},
                                        {"Fitter::t::Plan::Route", 1, 0, 0, 0, 0, 2},
                                        {"Fitter::t::Plan::Route::Wires", 1, 0, 0, 0, 0, 2},
                                        {"Fitter::t::Plan::Route::OTHER", 0, 0},
                                        {"Fitter::t::Plan::OTHER", 0, 0},
                                        {"Fitter::t::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
}

// A bin without a name has no row, and moves all the same. Its memory figures are -1 byte, as those of a bin that never
// had any, and the bin of its tag shows them.
TEST_F(GenProfileBinsTagged, MoveWithoutAName)
{
    ASSERT_TRUE(run_flow({{"Plan", nullptr, 1, {{"", "t", 4, {}}}}}));
    std::string report = tagged_report();
    std::size_t count = 0;
    for (std::size_t at = 0; (at = report.find("-0.00", at)) != std::string::npos; ++count)
        report[at] = ' '; // -1 byte
    EXPECT_EQ(count, 4u);
    EXPECT_EQ(report, file_of({{"Fitter", 1, 5},
                               {"Fitter::Plan", 1, 1},
                               {"Fitter::t", 1, 4},
                               {"Fitter::t::Plan", 1, 4},
                               {"Fitter::t::Plan::OTHER", 0, 0},
                               {"Fitter::t::OTHER", 0, 0},
                               {"Fitter::OTHER", 0, 0}}));
}

TEST_F(GenProfileBinsTagged, TakeTheirTagFromEveryKindOfOpen)
{
    start_bins("Fitter");
    GEN_PROFILE_BINS::open_with_user_tag("TST", "labelled", GEN_PB_FLAG_IMMEDIATE, "t", "Label");
    close_bin();
    {
        GEN_PROFILER const guard("TST", "guarded", GEN_PB_FLAG_IMMEDIATE, "t");
    }
    GEN_PROFILE_BINS::open_with_tag("TST", "buffered", GEN_PB_FLAG_RECORD, "t");
    close_bin();
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 0},
                                        {"Fitter::t", 1, 0},
                                        {"Fitter::t::labelled", 1, 0},
                                        {"Fitter::t::guarded", 1, 0},
                                        {"Fitter::t::buffered", 1, 0},
                                        {"Fitter::t::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
}

// Bins must not change while they move.
TEST_F(GenProfileBinsTagged, IgnoreCallsFromTheReceiverOfTheirMessages)
{
    m_root_tag = "t";
    GEN_PROFILE_BIN *const root = start_bins("Fitter");
    run({"a", "t", 2, {}});
    set_tag(root, m_root_tag);
    mem_msg_redirect(
        [](MEM_MSG_KIND, char const *, char const *text, void *) {
            if (std::string(text) != "root bin should not be tagged")
                return;
            run({"late", nullptr, 1, {}});
            GEN_PROFILE_BINS::finalize("nested", /*close_root=*/false);
        },
        nullptr);
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    EXPECT_EQ(tagged_report(), file_of({{"Fitter", 1, 2},
                                        {"Fitter::t", 1, 2},
                                        {"Fitter::t::a", 1, 2},
                                        {"Fitter::t::OTHER", 0, 0},
                                        {"Fitter::OTHER", 0, 0}}));
    EXPECT_FALSE(std::filesystem::exists(m_directory.path() / "profile_bins_nested.log"));
}

TEST_F(GenProfileBinsTagged, AreNamedWithTheSuffix)
{
    GEN_PROFILE_BINS::set_process_log_suffix("part");
    run_flow({{"Plan", "t", 1, {}}});
    EXPECT_EQ(without_carriage_returns(m_directory.read("profile_bins_tagged_tool_part.log")),
              file_of({{"Fitter", 1, 1},
                       {"Fitter::t", 1, 1},
                       {"Fitter::t::Plan", 1, 1},
                       {"Fitter::t::OTHER", 0, 0},
                       {"Fitter::OTHER", 0, 0}}));
}
