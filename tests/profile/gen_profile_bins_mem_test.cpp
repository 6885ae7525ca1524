// Logs of the memory tracker, cut by the stages of a flow and by selected bins, over a scripted tracker.
#include "gen_profile_bins_sys.h"

#include "mem_sys.h"
#include "tests/support/mem_figures_fake.h"
#include "tests/support/message_recorder.h"
#include "tests/support/platform.h"
#include "tests/support/profile_bins_script.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Pair;

namespace {

constexpr MEM_TRACKING_GRANULARITY BOTH =
    static_cast<MEM_TRACKING_GRANULARITY>(MEM_TRACKING_SOURCES | MEM_TRACKING_STATISTICS);

std::string message_of(std::string const &stage)
{
    return "Dumping detailed memory logs for the " + stage + " stage of the flow";
}

// A test in a fresh directory; the tracker's dumps write their own word.
class GenProfileBinsMem : public testing::Test
{
protected:
    GenProfileBinsMem()
    {
        for (char const *dump : {"fileline", "subsystem", "bin stats", "tag stats", "module", "module details"})
            mem_fake_set_dump(dump, dump);
    }

    void start(bool primary = true, bool debug_messages = false)
    {
        GEN_PROFILE_BINS::initialize("Fitter", primary, debug_messages);
        forget();
    }

    void forget()
    {
        m_messages.clear();
        mem_fake_clear_log();
    }

    // The calls of the tracker since the last forget(), the opens and closes of bins left out.
    static std::vector<std::string> calls()
    {
        std::vector<std::string> calls = mem_fake_log();
        calls.erase(std::remove_if(calls.begin(), calls.end(),
                                   [](std::string const &call) {
                                       return call.rfind("open ", 0) == 0 || call.rfind("close ", 0) == 0;
                                   }),
                    calls.end());
        return calls;
    }

    // The texts of all files of the tracker, by name.
    std::map<std::string, std::string> files() const
    {
        std::map<std::string, std::string> files;
        for (auto const &entry : std::filesystem::directory_iterator(m_directory.path()))
            files[entry.path().filename().string()] = m_directory.read(entry.path().filename().string());
        return files;
    }

    TempDir m_directory;
    CurrentDirectory m_current{m_directory.path()};
    MessageRecorder m_messages;
};

class GenFlowStages : public GenProfileBinsMem
{
protected:
    GenFlowStages() { mem_cfg_set("gen_enable_mem_fileline_profiling", "on"); }
};

using GenSelectedBins = GenProfileBinsMem;

} // namespace

// Each row of the table, in the order of the flow.
TEST_F(GenFlowStages, FollowTheFlow)
{
    struct Case
    {
        char const *bin;
        char const *stage;
    };
    constexpr Case CASES[] = {
        {"fit2_fit_plan", "prefit"},           {"fit2_fit_early_place_init", "early_place"},
        {"LSC Clustering", "cluster"},         {"Placer", "placer"},
        {"fit2_fit_route_init", "router"},     {"fit2_fit_retime_init", "retimer"},
        {"fit2_fit_finalize_init", "postfit"},
    };
    start();
    std::string former;
    for (Case const &c : CASES) {
        forget();
        run_bin(c.bin, 0, 0);
        std::vector<std::string> expected = {"disable labels", std::string("label ") + c.stage};
        if (former.empty()) {
            EXPECT_THAT(m_messages.lines(), IsEmpty());
        } else {
            expected.insert(expected.end(), {"enabled? 8", "enabled? 2", "flush"});
            EXPECT_THAT(m_messages.lines(), ElementsAre(message_of(former)));
        }
        EXPECT_THAT(calls(), ElementsAreArray(expected)) << c.bin;
        former = c.stage;
    }
    EXPECT_THAT(files(), IsEmpty()) << "nothing is tracked";
    forget();
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    EXPECT_THAT(calls(), ElementsAre("enabled? 8", "enabled? 2", "flush"));
    std::vector<std::string> const lines = m_messages.lines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines.back(), message_of("postfit"));
}

TEST_F(GenFlowStages, AreKnownByOtherNamesToo)
{
    start();
    open_bin("outer");
    run_bin("fit2_fit_place_init", 0, 0);
    close_bin();
    EXPECT_THAT(calls(), ElementsAre("disable labels", "label early_place"));
}

TEST_F(GenFlowStages, BeginAtTheirNextRowAlone)
{
    start();
    struct Case
    {
        char const *bin;
        char const *stage; // null: not a new one
    };
    constexpr Case CASES[] = {
        {"fit2_fit_plan2", nullptr},
        {"my fit2_fit_plan", nullptr},
        {"Placer::fit2", nullptr}, // "Placer->fit2"
        {"fit2_fit_early_place_init", "early_place"},
        {"fit2_fit_early_place_init", nullptr}, // the present one
        {"fit2_fit_plan", nullptr},             // an earlier one
        {"Placer", "placer"},                   // jumps over "cluster"
        {"LSC Clustering", nullptr},
        {"fit2_fit_finalize_init", "postfit"},
        {"fit2_fit_route_init", nullptr},
    };
    for (Case const &c : CASES) {
        forget();
        run_bin(c.bin, 0, 0);
        std::vector<std::string> const log = calls();
        bool const is_new = std::find(log.begin(), log.end(), "disable labels") != log.end();
        EXPECT_EQ(is_new, c.stage != nullptr) << c.bin;
        if (c.stage != nullptr) {
            EXPECT_EQ(std::count(log.begin(), log.end(), std::string("label ") + c.stage), 1) << c.bin;
        }
    }
}

// The expression requires some text before the name.
TEST_F(GenFlowStages, DoNotBeginAtTheRoot)
{
    GEN_PROFILE_BINS::initialize("Placer", /*primary=*/true, /*debug_messages=*/false);
    forget();
    open_bin("Placer"); // the root again
    close_bin();
    run_bin("x", 0, 0);
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(GenFlowStages, LeaveTheirLogs)
{
    mem_enable_tracking(BOTH);
    start();
    run_bin("fit2_fit_plan", 0, 0);
    EXPECT_THAT(files(), IsEmpty());
    forget();
    run_bin("Placer", 0, 0);
    EXPECT_THAT(calls(), ElementsAre("disable labels", "label placer", "enabled? 8", "dump fileline", "dump subsystem",
                                     "enabled? 2", "dump tag stats", "dump bin stats", "flush"));
    EXPECT_THAT(files(), ElementsAre(Pair("mem_tbb_fileline.prefit.log", "fileline"),
                                     Pair("mem_tbb_pbin_stats.prefit.log", "bin stats"),
                                     Pair("mem_tbb_pbin_tag_stats.prefit.log", "tag stats"),
                                     Pair("mem_tbb_subsystem.prefit.log", "subsystem")));
    mem_disable_tracking(MEM_TRACKING_SOURCES);
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    EXPECT_THAT(files(), ElementsAre(Pair("mem_tbb_fileline.prefit.log", "fileline"),
                                     Pair("mem_tbb_pbin_stats.placer.log", "bin stats"),
                                     Pair("mem_tbb_pbin_stats.prefit.log", "bin stats"),
                                     Pair("mem_tbb_pbin_tag_stats.placer.log", "tag stats"),
                                     Pair("mem_tbb_pbin_tag_stats.prefit.log", "tag stats"),
                                     Pair("mem_tbb_subsystem.prefit.log", "subsystem")));
}

TEST_F(GenFlowStages, LogTheSourcesAlone)
{
    mem_enable_tracking(MEM_TRACKING_SOURCES);
    start();
    run_bin("LSC Clustering", 0, 0);
    run_bin("fit2_fit_retime_init", 0, 0);
    EXPECT_THAT(files(), ElementsAre(Pair("mem_tbb_fileline.cluster.log", "fileline"),
                                     Pair("mem_tbb_subsystem.cluster.log", "subsystem")));
}

// The files can't be opened: the tracker writes to streams that have failed.
TEST_F(GenFlowStages, GoOnWithoutFiles)
{
    mem_enable_tracking(BOTH);
    for (char const *log : {"fileline", "subsystem", "pbin_tag_stats", "pbin_stats"})
        std::filesystem::create_directory(m_directory.path() / (std::string("mem_tbb_") + log + ".prefit.log"));
    start();
    run_bin("fit2_fit_plan", 0, 0);
    forget();
    run_bin("Placer", 0, 0);
    EXPECT_THAT(calls(),
                IsSupersetOf({"dump fileline", "dump subsystem", "dump tag stats", "dump bin stats", "flush"}));
    EXPECT_THAT(m_messages.lines(), ElementsAre(message_of("prefit")));
}

// The table stays, and the last stage of one run is the present one of the next.
TEST_F(GenFlowStages, OutliveTheBins)
{
    start();
    run_bin("Placer", 0, 0);
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    start();
    run_bin("fit2_fit_plan", 0, 0);
    run_bin("Placer", 0, 0);
    EXPECT_THAT(calls(), IsEmpty());
    run_bin("fit2_fit_route_init", 0, 0);
    EXPECT_THAT(calls(), testing::Contains("label router"));
}

TEST_F(GenFlowStages, NeedAMainOrTalkativeProcess)
{
    start(/*primary=*/false, /*debug_messages=*/false);
    run_bin("Placer", 0, 0);
    EXPECT_THAT(calls(), IsEmpty());
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    start(/*primary=*/false, /*debug_messages=*/true);
    run_bin("Placer", 0, 0);
    EXPECT_THAT(calls(), ElementsAre("disable labels", "label placer"));
}

// A nameless bin begins no stage, and bins that are opened after a closed root are no part of the flow.
TEST_F(GenFlowStages, BeginAtNamedBinsOfTheFlow)
{
    start();
    run_bin("", 0, 0);
    close_bin();
    run_bin("Placer", 0, 0);
    EXPECT_THAT(calls(), IsEmpty());
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/false);
}

TEST_F(GenProfileBinsMem, WritesNoStageLogsWithTheKeyOff)
{
    mem_enable_tracking(BOTH);
    start();
    run_bin("fit2_fit_plan", 0, 0);
    run_bin("Placer", 0, 0);
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_THAT(files(), IsEmpty());
}

// The bins in a stage's bin don't match by that bin's name.
TEST_F(GenFlowStages, AreNotBegunAgainInside)
{
    start();
    open_bin("fit2_fit_plan");
    forget();
    run_bin("moves", 0, 0);
    EXPECT_THAT(calls(), IsEmpty());
    run_bin("Placer", 0, 0);
    EXPECT_THAT(calls(), testing::Contains("label placer"));
    close_bin();
}

// The key counts as it was at the first question.
TEST_F(GenProfileBinsMem, KeepsTheKeyOfTheFirstQuestion)
{
    start();
    mem_cfg_set("gen_enable_mem_fileline_profiling", "on");
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    start();
    run_bin("Placer", 0, 0);
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(GenSelectedBins, LeaveASetOfLogsEachTime)
{
    mem_cfg_set("gen_mem_fileline_profile_bin", "Moves.*");
    start();
    std::map<std::string, std::string> expected;
    for (int i = 1; i <= 3; ++i) {
        forget();
        GEN_PROFILE_BINS::open("TST", "Moves", GEN_PB_FLAG_IMMEDIATE);
        EXPECT_THAT(calls(), ElementsAre("enable 12"));
        EXPECT_THAT(m_messages.lines(), ElementsAre("Enabling detailed memory tracking in bin Moves"));
        forget();
        GEN_PROFILE_BINS::close("Moves");
        EXPECT_THAT(calls(), ElementsAre("disable 12", "dump fileline", "dump subsystem", "dump module", "reset"));
        std::string const suffix = "_Moves_" + std::to_string(i) + ".log";
        expected["mem_tbb_fileline" + suffix] = "fileline";
        expected["mem_tbb_subsystem" + suffix] = "subsystem";
        expected["mem_tbb_timeline" + suffix] = "module";
        expected["mem_tbb_timeline_detailed" + suffix] = "module details";
        EXPECT_EQ(files(), expected);
    }
}

TEST_F(GenSelectedBins, NestedInThemselvesLogAtTheOuterClose)
{
    mem_cfg_set("gen_mem_fileline_profile_bin", "Moves");
    start();
    open_bin("Moves");
    open_bin("Moves");
    forget();
    GEN_PROFILE_BINS::close("Moves");
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_THAT(files(), IsEmpty());
    GEN_PROFILE_BINS::close("Moves");
    EXPECT_EQ(files().size(), 4u);
}

TEST_F(GenSelectedBins, AreMatchedByTheCallersWholeName)
{
    mem_cfg_set("gen_mem_fileline_profile_bin", "a::b");
    start();
    run_bin("xa::b", 0, 0);
    run_bin("a->b", 0, 0);
    EXPECT_THAT(calls(), IsEmpty());
    open_bin("a::b");
    EXPECT_THAT(calls(), ElementsAre("enable 12"));
    forget();
    close_bin(); // without its name
    EXPECT_THAT(calls(), IsEmpty());
    open_bin("a::b");
    GEN_PROFILE_BINS::close("a::b");
    // The bin's own name is in the file's, which Windows doesn't take.
    if (ON_WINDOWS) {
        EXPECT_THAT(files(), IsEmpty());
    } else {
        EXPECT_THAT(files(), testing::Contains(Pair("mem_tbb_fileline_a->b_3.log", "fileline")));
    }
}

// A bin's own close and a guard's pass the name.
TEST_F(GenSelectedBins, LogAtEveryWayToClose)
{
    mem_cfg_set("gen_mem_fileline_profile_bin", "Moves");
    start();
    {
        GEN_PROFILER const guard("TST", "Moves", GEN_PB_FLAG_IMMEDIATE);
    }
    EXPECT_EQ(files().size(), 4u);
    open_bin("Moves")->close();
    EXPECT_EQ(files().size(), 8u);
}

// An expression that takes too long on a name doesn't match it.
TEST_F(GenSelectedBins, AreNoneByAnEndlessExpression)
{
    mem_cfg_set("gen_mem_fileline_profile_bin", "(a*)*(a*)*(a*)*b");
    start();
    std::string const name(4000, 'a');
    EXPECT_NE(open_bin(name), nullptr);
    GEN_PROFILE_BINS::close(name.c_str());
    EXPECT_THAT(calls(), IsEmpty());
    GEN_PROFILE_BINS::open("TST", "b", GEN_PB_FLAG_IMMEDIATE);
    EXPECT_THAT(calls(), ElementsAre("enable 12"));
}

TEST_F(GenSelectedBins, GoOnWithoutFiles)
{
    mem_cfg_set("gen_mem_fileline_profile_bin", "no/such/directory");
    start();
    open_bin("no/such/directory");
    forget();
    GEN_PROFILE_BINS::close("no/such/directory");
    EXPECT_THAT(calls(), ElementsAre("disable 12", "dump fileline", "dump subsystem", "dump module", "reset"));
    EXPECT_THAT(files(), IsEmpty());
}
