// The profile bins from initialize to finalize, and again: configuration, order of the steps, faults.
#include "tests/support/captured_output.h"
#include "tests/support/profile_bins.h"
#include "tests/support/temp_dir.h"

#include <thread>

using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

GEN_PROFILE_BIN const *open_now(char const *name)
{
    return GEN_PROFILE_BINS::open("T", name, IMMEDIATE);
}

void close_bin()
{
    GEN_PROFILE_BINS::close(nullptr);
}

std::string current_path()
{
    GEN_PROFILE_BIN const *const bin = gen_profile_bin_get_current_bin();
    return bin == nullptr ? "none" : bin->get_path(nullptr);
}

constexpr char const *ROOT_OPENED = "### Opened profile bin 'Fitter' (1) ###";
constexpr char const *ROOT_CLOSED = "### Closed profile bin 'Fitter' (1) -- ";
constexpr char const *CALIBRATING = "Calibrating bins since debug messages are enabled";
constexpr char const *TRACKING = "TBB profile-bin tracking is enabled";
constexpr char const *DELETED = "Deleted all bins; buffer was full 0 times";
constexpr char const *NONE_IGNORED =
    "0 bins may have been ignored improperly (use show_ignored_bin_warnings=on for details)";
constexpr char const *NO_HOOKS =
    "Recompile zel/gen with USE_TRACQ=1 to use Tracq's Pause/Resume API on profile bin boundaries.\n"
    "  e.g., kcd gen && make sync && make USE_TRACQ=1";

} // namespace

class GenProfileBinsInitialize : public ProfileBinsTest
{
};

TEST_F(GenProfileBinsInitialize, OpensTheRootForTheCallingThread)
{
    EXPECT_EQ(gen_profile_bin_get_current_bin(), nullptr);
    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/false, /*debug_messages=*/false);
    EXPECT_EQ(current_path(), "Fitter");
    EXPECT_THAT(memory_calls(), ElementsAre("tbb enabled?", "open Fitter  suspended"));
    std::vector<RecordedMessage> const messages = m_messages.messages();
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages.back(), (RecordedMessage{MEM_MSG_DEBUG, "GEN", ROOT_OPENED}));
}

TEST_F(GenProfileBinsInitialize, TheRootIsImmediateAndAnnounced)
{
    start();
    close_bin();
    EXPECT_EQ(current_path(), "none");
    EXPECT_THAT(m_messages.lines(), ElementsAre(HasSubstr(ROOT_CLOSED)));
}

TEST_F(GenProfileBinsInitialize, TheNameOfTheRootIsNormalised)
{
    GEN_PROFILE_BINS::initialize("A::B", /*primary=*/false, /*debug_messages=*/false);
    EXPECT_EQ(current_path(), "A->B");
}

TEST_F(GenProfileBinsInitialize, CalibratesForDebugMessagesAndForReports)
{
    struct Case
    {
        bool debug_messages;
        bool primary;
        bool printing;
        bool calibrates;
    };
    constexpr Case CASES[] = {
        {false, true, false, false}, {true, false, false, true},  {true, true, false, true},
        {false, true, true, true},   {false, false, true, false},
    };
    TempDir const dir;
    CurrentDirectory const here(dir.path());
    for (Case const &c : CASES) {
        mem_cfg_set("gen_print_profile_bins", c.printing ? "on" : "off");
        m_messages.clear();
        GEN_PROFILE_BINS::initialize("Fitter", c.primary, c.debug_messages);
        EXPECT_EQ(m_messages.has(CALIBRATING), c.calibrates) << c.debug_messages << c.primary << c.printing;
        GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    }
}

TEST_F(GenProfileBinsInitialize, DecidesAboutTheReportFiles)
{
    struct Case
    {
        char const *print;
        bool tracking;
        bool primary;
        char const *granularity;
        bool writes;
    };
    constexpr Case CASES[] = {
        // Nothing asks for them.
        {nullptr, false, true, "3", false},
        {"off", false, true, nullptr, false},
        {nullptr, false, false, "3", false},
        // The main process writes whenever one of the two asks.
        {"on", false, true, nullptr, true},
        {nullptr, true, true, nullptr, true},
        {"off", true, true, "0", true},
        {"on", true, true, "1", true},
        // Another one only at this granularity.
        {"on", false, false, nullptr, false},
        {"on", false, false, "2", false},
        {"on", false, false, "4", false},
        {"on", false, false, "3", true},
        {nullptr, true, false, "3", true},
        {nullptr, true, false, "-3", false},
    };
    for (Case const &c : CASES) {
        SCOPED_TRACE(testing::Message() << (c.print == nullptr ? "none" : c.print) << ", tracking " << c.tracking
                                        << ", primary " << c.primary << ", granularity "
                                        << (c.granularity == nullptr ? "none" : c.granularity));
        TempDir const dir;
        CurrentDirectory const here(dir.path());
        mem_cfg_set("gen_print_profile_bins", c.print);
        mem_cfg_set("gen_hybrid_granularity_verbose_call", c.granularity);
        mem_fake_set_tbb_tracking_enabled(c.tracking);
        m_messages.clear();
        GEN_PROFILE_BINS::initialize("Fitter", c.primary, /*debug_messages=*/false);
        EXPECT_EQ(m_messages.count(TRACKING), c.tracking ? 1U : 0U);
        GEN_PROFILE_BINS::finalize("End", /*close_root=*/true);
        EXPECT_EQ(std::filesystem::exists(dir.path() / "profile_bins_End.log"), c.writes);
    }
}

TEST_F(GenProfileBinsInitialize, ReportFilesCanBeSwitchedOffAfterIt)
{
    TempDir const dir;
    CurrentDirectory const here(dir.path());
    mem_cfg_set("gen_print_profile_bins", "on");
    GEN_PROFILE_BINS::disable_process_log(); // no effect before initialize
    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false);
    GEN_PROFILE_BINS::finalize("First", /*close_root=*/true);
    EXPECT_TRUE(std::filesystem::exists(dir.path() / "profile_bins_First.log"));

    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false);
    GEN_PROFILE_BINS::disable_process_log();
    GEN_PROFILE_BINS::finalize("Second", /*close_root=*/true);
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "profile_bins_Second.log"));
}

TEST_F(GenProfileBinsInitialize, WarningsAreAskedForByTheirKeyOrComeWithTheTraceOfThePrimary)
{
    struct Case
    {
        char const *warnings;
        char const *trace;
        bool primary;
        bool warns;
    };
    constexpr Case CASES[] = {
        {nullptr, nullptr, true, false}, {"on", nullptr, true, true},   {"on", nullptr, false, true},
        {nullptr, "on", true, true},     {nullptr, "on", false, false}, {"off", "on", true, true},
    };
    for (Case const &c : CASES) {
        mem_cfg_set("show_ignored_bin_warnings", c.warnings);
        mem_cfg_set("debug_gen_bins", c.trace);
        CapturedOutput errors(StandardStream::ERROR_OUTPUT);
        GEN_PROFILE_BINS::initialize("Fitter", c.primary, /*debug_messages=*/false);
        m_messages.clear();
        GEN_PROFILE_BINS::open("T", "outer", 0);
        open_now("inner");
        EXPECT_EQ(m_messages.has("Tried to open bin 'inner' during ignored bin 'outer'"), c.warns)
            << (c.warnings == nullptr ? "none" : c.warnings) << (c.trace == nullptr ? "none" : c.trace) << c.primary;
        close_bin();
        close_bin();
        GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
        bool const is_traced = c.trace != nullptr && c.primary;
        EXPECT_EQ(errors.text().empty(), !is_traced);
    }
}

TEST_F(GenProfileBinsInitialize, NoRuleAppliesToTheRoot)
{
    start("U2B2_DIRECTOR::work");
    GEN_PROFILE_BIN const *const root = gen_profile_bin_get_current_bin();
    GEN_PROFILE_BIN const *const child = open_now("U2B2_DIRECTOR::work, inner");
    close_bin();
    pass_time(8, 8);
    close_bin();
    EXPECT_EQ(root->get_metric(GEN_PB_METRIC_WC_EST, /*cumulative=*/false), 8.0);
    EXPECT_EQ(child->get_metric(GEN_PB_METRIC_WC_EST, /*cumulative=*/false), 0.0);
}

TEST_F(GenProfileBinsInitialize, RulesApplyToBinsBelow)
{
    start();
    GEN_PROFILE_BIN const *const bin = open_now("U2B2_DIRECTOR::work");
    pass_time(8, 8);
    close_bin();
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_WC_EST, /*cumulative=*/false), 4.0);
}

TEST_F(GenProfileBinsInitialize, TakesExpressionsForBinsThatAreTracked)
{
    for (char const *const expression : {"A", "Fitter|A.*", "^(?:A|B)+$", "a\\.b", "[[:alpha:]]+"}) {
        mem_cfg_set("gen_mem_fileline_profile_bin", expression);
        start();
        GEN_PROFILE_BIN const *const bin = open_now("X::Y");
        writable(bin).close(); // passes its name
        EXPECT_EQ(current_path(), "Fitter") << expression;
        GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
        EXPECT_EQ(m_messages.lines().back(), NONE_IGNORED) << expression;
    }
}

class GenProfileBinsInitializeDeathTest : public ProfileBinsTest
{
};

TEST_F(GenProfileBinsInitializeDeathTest, TwiceWithoutFinalizeIsAnInternalError)
{
    start();
    EXPECT_EXIT(start(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_bins("GEN_PB_IMPL::get_root_bin() == 0LL"));
    close_bin();
    EXPECT_EXIT(start(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_bins("GEN_PB_IMPL::get_root_bin() == 0LL"));
}

TEST_F(GenProfileBinsInitializeDeathTest, BadExpressionsAreInternalErrors)
{
    for (char const *const key : {"gen_tracq_profile_bin", "gen_tracq_profile_tag", "gen_mem_fileline_profile_bin"}) {
        for (char const *const expression : {"(", "[a", "*a", "a{2,1}", "a)"}) {
            mem_cfg_set(key, expression);
            EXPECT_EXIT(start(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                        dies_in_bins("Error compiling regular expression \"" + std::string(expression) + "\""))
                << key << ' ' << expression;
        }
        mem_cfg_set(key, nullptr);
    }
}

TEST_F(GenProfileBinsInitializeDeathTest, LongBadExpressionsAreCut)
{
    constexpr std::size_t TEXT_SIZE = 4095;
    std::string const start_of_text = "Error compiling regular expression \"";
    mem_cfg_set("gen_mem_fileline_profile_bin", ("(" + std::string(5000, 'a')).c_str());
    EXPECT_EXIT(start(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins(start_of_text + "(" + std::string(TEXT_SIZE - start_of_text.size() - 1, 'a')));
}

TEST_F(GenProfileBinsInitializeDeathTest, ThereAreNoHooks)
{
    EXPECT_EXIT(GEN_PROFILE_BINS::check_make_tracq_equal_1_performed(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins(NO_HOOKS));
    for (char const *const key : {"gen_tracq_profile_bin", "gen_tracq_profile_tag"}) {
        mem_cfg_set(key, "A");
        EXPECT_EXIT(start(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_bins(NO_HOOKS)) << key;
        mem_cfg_set(key, nullptr);
    }
}

TEST_F(GenProfileBinsInitializeDeathTest, ReadsTheKeysOfHooksFirstAndBothOfThem)
{
    mem_cfg_set("gen_tracq_profile_bin", "A");
    mem_cfg_set("gen_mem_fileline_profile_bin", "(third");
    EXPECT_EXIT(start(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_bins(NO_HOOKS));
    mem_cfg_set("gen_tracq_profile_tag", "(second");
    EXPECT_EXIT(start(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins("Error compiling regular expression \"(second\""));
    mem_cfg_set("gen_tracq_profile_bin", "(first");
    EXPECT_EXIT(start(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins("Error compiling regular expression \"(first\""));
}

class GenProfileBinsFinalize : public ProfileBinsTest
{
};

TEST_F(GenProfileBinsFinalize, ClosesTheRootAndReportsTheEnd)
{
    start();
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    EXPECT_THAT(m_messages.lines(),
                ElementsAre(HasSubstr(ROOT_CLOSED), DELETED, "Dumping bins took 0.0s", NONE_IGNORED));
    for (RecordedMessage const &message : m_messages.messages())
        EXPECT_TRUE(message.kind == MEM_MSG_DEBUG && message.module == "GEN") << message;
    EXPECT_THAT(memory_calls(), ElementsAre("close  suspended"));
    EXPECT_EQ(gen_profile_bin_get_current_bin(), nullptr);
}

TEST_F(GenProfileBinsFinalize, TakesARootThatIsClosedAlready)
{
    start();
    close_bin();
    m_messages.clear();
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/false);
    EXPECT_THAT(m_messages.lines(), ElementsAre(DELETED, "Dumping bins took 0.0s", NONE_IGNORED));
}

TEST_F(GenProfileBinsFinalize, FlushesTheCloseOfTheRoot)
{
    start();
    GEN_PROFILE_BINS::open("T", "A", PLAIN);
    close_bin();
    GEN_PROFILE_BINS::open("T", "Fitter", IMMEDIATE);
    GEN_PROFILE_BINS::open("T", "Fitter", PLAIN); // now a close waits in the buffer
    close_bin();
    close_bin();
    EXPECT_EQ(current_path(), "Fitter");
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    EXPECT_EQ(m_messages.lines().back(), NONE_IGNORED);
}

TEST_F(GenProfileBinsFinalize, ReportsTheTimeItTook)
{
    start();
    close_bin();
    gen_os_fake_set_clock_steps(/*cpu_usec=*/0, /*ticks=*/24000000);
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/false);
    EXPECT_TRUE(m_messages.has("Dumping bins took 2.4s")) << testing::PrintToString(m_messages.lines());
}

TEST_F(GenProfileBinsFinalize, WritesTheReportBeforeItDeletesTheBins)
{
    TempDir const dir;
    CurrentDirectory const here(dir.path());
    mem_cfg_set("gen_print_profile_bins", "on");
    GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false);
    m_messages.clear();
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    EXPECT_THAT(m_messages.lines(), ElementsAre(HasSubstr(ROOT_CLOSED), HasSubstr("Overhead for bin Fitter is "),
                                                DELETED, "Dumping bins took 0.0s", NONE_IGNORED));
}

TEST_F(GenProfileBinsFinalize, ForcedClosesWhateverIsOpen)
{
    start();
    open_now("A");
    open_now("B");
    forget();
    GEN_PROFILE_BINS::force_finalize("Fitter");
    EXPECT_THAT(m_messages.lines(),
                ElementsAre("Closing bins recursively...", HasSubstr(ROOT_CLOSED), "Finished closing bins recursively",
                            DELETED, "Dumping bins took 0.0s", NONE_IGNORED));
    EXPECT_THAT(memory_calls(), ElementsAre("close  suspended", "close  suspended", "close  suspended"));
    EXPECT_EQ(gen_profile_bin_get_current_bin(), nullptr);
}

TEST_F(GenProfileBinsFinalize, LeavesABufferedOpenToTheNextInitialize)
{
    start();
    close_bin();
    GEN_PROFILE_BINS::open("T", "Late", PLAIN);
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/false);
    EXPECT_EQ(m_messages.lines().back(), NONE_IGNORED);
    EXPECT_THAT(memory_calls(), ElementsAre("close  suspended"));
    GEN_PROFILE_BINS::initialize("Second", /*primary=*/false, /*debug_messages=*/false);
    EXPECT_EQ(current_path(), "Late/Second");
}

TEST_F(GenProfileBinsFinalize, WarnsOfMoreThanFiveMillionImmediateOpens)
{
    constexpr int LIMIT = 5000000;
    auto const warning = [](int count) {
        return "Error.  Executable opened " + std::to_string(count) +
               " profile bins.  Please fix this (check profile bin log file for culprit).";
    };
    constexpr char const *ADVICE =
        "You can work around this temporarily by removing the INI that turns on the profile bin dump files.";
    TempDir const dir;
    CurrentDirectory const here(dir.path());
    mem_cfg_set("gen_print_profile_bins", "on");
    auto const run = [this](int open_count) {
        GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false);
        for (int i = 0; i < open_count; ++i)
            open_now("Fitter");
        for (int i = 0; i < open_count; ++i)
            close_bin();
        for (int i = 0; i < 100; ++i) { // buffered ones never count
            GEN_PROFILE_BINS::open("T", "A", PLAIN);
            close_bin();
        }
        m_messages.clear();
        GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
        EXPECT_EQ(gen_profile_bin_get_current_bin(), nullptr); // it is only a message
    };
    run(LIMIT - 1); // and the root
    EXPECT_FALSE(m_messages.has(warning(LIMIT)));
    EXPECT_FALSE(m_messages.has(ADVICE));
    run(0); // the count goes on with the next root
    std::vector<std::string> const lines = m_messages.lines();
    EXPECT_THAT(lines, ElementsAre(HasSubstr(ROOT_CLOSED), HasSubstr("Overhead for bin Fitter is "), warning(LIMIT + 1),
                                   ADVICE, HasSubstr("Deleted all bins; "), "Dumping bins took 0.0s", NONE_IGNORED));
    mem_cfg_set("gen_profile_bins_skip_limit", "on");
    run(0);
    EXPECT_FALSE(m_messages.has(warning(LIMIT + 2)));
    EXPECT_FALSE(m_messages.has(ADVICE));
}

class GenProfileBinsFinalizeDeathTest : public ProfileBinsTest
{
};

TEST_F(GenProfileBinsFinalizeDeathTest, NeedsAnInitializedSystem)
{
    EXPECT_EXIT(GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins("l_gen_pb_thread == thr_thread_self()"));
    EXPECT_EXIT(GEN_PROFILE_BINS::force_finalize("Fitter"), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins("l_gen_pb_thread == thr_thread_self()"));
    start();
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    EXPECT_EXIT(GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/false), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins("l_gen_pb_thread == thr_thread_self()"));
}

TEST_F(GenProfileBinsFinalizeDeathTest, NeedsTheThreadThatInitialized)
{
    start();
    close_bin();
    EXPECT_EXIT(std::thread([] { GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/false); }).join(),
                ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_bins("l_gen_pb_thread == thr_thread_self()"));
}

TEST_F(GenProfileBinsFinalizeDeathTest, NeedsClosedBins)
{
    constexpr char const *OPEN_BIN = "GEN_PB_IMPL::get_current_bin() == 0LL";
    start();
    EXPECT_EXIT(GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/false), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins(OPEN_BIN));
    open_now("A");
    EXPECT_EXIT(GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins(OPEN_BIN));
    // While ignoring, a close ends the ignoring and nothing else.
    close_bin();
    GEN_PROFILE_BINS::open("T", "ignored", 0);
    EXPECT_EXIT(GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins(OPEN_BIN));
    EXPECT_EXIT(GEN_PROFILE_BINS::force_finalize("Fitter"), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins(OPEN_BIN));
}

// Ignoring doesn't end at finalize, and so the open of the next root is ignored, too.
TEST_F(GenProfileBinsFinalizeDeathTest, NeedsARoot)
{
    mem_cfg_set("show_ignored_bin_warnings", "on");
    start();
    close_bin();
    GEN_PROFILE_BINS::open("T", "ignored", 0);
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/false);
    start("Second");
    EXPECT_EQ(gen_profile_bin_get_current_bin(), nullptr);
    EXPECT_EXIT(GEN_PROFILE_BINS::finalize("Second", /*close_root=*/false), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins("root != 0LL"));
    EXPECT_EXIT(start("Third"), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_bins("l_gen_pb_thread == 0LL"));
}

class GenProfileBinsAgain : public ProfileBinsTest
{
};

TEST_F(GenProfileBinsAgain, StartsAfreshWithNewBins)
{
    start();
    open_now("A");
    pass_time(5, 5);
    close_bin();
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    start("Router");
    EXPECT_EQ(current_path(), "Router");
    GEN_PROFILE_BIN const *const bin = GEN_PROFILE_BINS::open("T", "A", ANNOUNCED);
    EXPECT_THAT(m_messages.lines(), ElementsAre("### Opened profile bin 'A' (1) ###"));
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_CPU, /*cumulative=*/true), 0.0);
    close_bin();
    GEN_PROFILE_BINS::finalize("Router", /*close_root=*/true);
}

TEST_F(GenProfileBinsAgain, NumbersItsStepsFromOne)
{
    for (int i = 0; i < 2; ++i) {
        start();
        GEN_PROFILE_BINS::open_with_user_tag("T", "A", ANNOUNCED, nullptr, "Label");
        EXPECT_THAT(m_messages.lines().front(), HasSubstr("Starting Fitter Step 1 Label at"));
        close_bin();
        GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    }
}

TEST_F(GenProfileBinsAgain, KeepsItsCounters)
{
    for (int session = 1; session <= 3; ++session) {
        start();
        GEN_PROFILE_BINS::open("T", "ignored", 0);
        open_now("A");
        close_bin();
        close_bin();
        for (int i = 0; i < 5; ++i) {
            GEN_PROFILE_BINS::open("T", "A", PLAIN);
            close_bin();
        }
        GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
        std::string const number = std::to_string(session);
        EXPECT_TRUE(m_messages.has("Deleted all bins; buffer was full " + number + " times"));
        EXPECT_EQ(m_messages.lines().back(),
                  number + " bins may have been ignored improperly (use show_ignored_bin_warnings=on for details)");
    }
}

TEST_F(GenProfileBinsAgain, AppendsTheRulesASecondTime)
{
    for (bool const again : {false, true}) {
        start();
        m_messages.clear();
        open_now("U2B2_DIRECTOR::work");
        EXPECT_EQ(m_messages.has("WARNING: multiple CPU:WC ratios found for bin Fitter/U2B2_DIRECTOR->work. Disabling "
                                 "CPU:WC."),
                  again);
        close_bin();
        GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    }
}

TEST_F(GenProfileBinsAgain, ReadsTheConfigurationAnew)
{
    mem_cfg_set("show_ignored_bin_warnings", "on");
    start();
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    mem_cfg_set("show_ignored_bin_warnings", nullptr);
    start();
    GEN_PROFILE_BINS::open("T", "ignored", 0);
    open_now("A");
    EXPECT_THAT(m_messages.lines(), IsEmpty());
}

// Without the expression of the first run, a bin's own close passes no name again. It closes the innermost bin, B,
// since the open of B is still in the buffer and the root counts as current.
TEST_F(GenProfileBinsAgain, DropsTheExpressions)
{
    mem_cfg_set("gen_mem_fileline_profile_bin", "A");
    start();
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    mem_cfg_set("gen_mem_fileline_profile_bin", "");
    start();
    GEN_PROFILE_BIN const *const root = gen_profile_bin_get_current_bin();
    GEN_PROFILE_BINS::open("T", "B", PLAIN);
    writable(root).close();
    open_now("C");
    EXPECT_EQ(current_path(), "Fitter/C");
}

TEST_F(GenProfileBinsAgain, MayBelongToAnotherThread)
{
    start();
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    GEN_PROFILE_BIN const *root = nullptr;
    std::thread([this, &root] {
        start("Other");
        EXPECT_EQ(current_path(), "Other");
        root = gen_profile_bin_get_current_bin();
    }).join();
    EXPECT_EQ(open_now("A"), nullptr);
    EXPECT_EQ(gen_profile_bin_get_current_bin(), root);
    EXPECT_THAT(memory_calls(), IsEmpty());
}

// A tool that opens a bin whenever it shows a message. Without protection these bins would come before the root, after
// the last bin or between the closes of close_recursively(), or cause a message that causes a bin.
TEST_F(GenProfileBinsAgain, MessagesOfTheBinsOpenNone)
{
    mem_cfg_set("show_ignored_bin_warnings", "on");
    for (unsigned const flags : {PLAIN, IMMEDIATE}) {
        static unsigned s_flags;
        s_flags = flags;
        mem_msg_redirect([](MEM_MSG_KIND, char const *, char const *,
                            void *) { GEN_PROFILER const guard("UI", "Message", s_flags); },
                         nullptr);
        mem_fake_clear_log();
        GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/true);
        GEN_PROFILE_BIN const *const bin = open_now("A");
        EXPECT_EQ(bin->get_path(nullptr), "Fitter/A") << flags;
        writable(bin).dump(nullptr, /*collect_tags=*/false);
        GEN_PROFILE_BINS::open("T", "ignored", 0);
        GEN_PROFILE_BINS::open("T", "B", PLAIN);
        close_bin();
        close_bin();
        GEN_PROFILE_BINS::force_finalize("Fitter");
        GEN_PROFILE_BINS::initialize("Again", /*primary=*/true, /*debug_messages=*/false);
        EXPECT_EQ(current_path(), "Again") << flags;
        GEN_PROFILE_BINS::finalize("Again", /*close_root=*/true);
        EXPECT_THAT(memory_calls(),
                    ElementsAre("tbb enabled?", "open Fitter  suspended", "open A  suspended", "close  suspended",
                                "close  suspended", "tbb enabled?", "open Again  suspended", "close  suspended"))
            << flags;
    }
}

TEST(GenProfileBinsLog, SuffixIsKept)
{
    EXPECT_EQ(GEN_PROFILE_BINS::s_log_file_suffix, "");
    GEN_PROFILE_BINS::set_process_log_suffix("part");
    EXPECT_EQ(GEN_PROFILE_BINS::s_log_file_suffix, "part");
    GEN_PROFILE_BINS::set_process_log_suffix("");
    EXPECT_EQ(GEN_PROFILE_BINS::s_log_file_suffix, "");
}
