// Every fault of the profile bins, in a development build and, over the version library of a release branch, in a
// customer build: there the bins are switched off for the rest of the process, and the flow continues.
#include "gen/profile/gen_profile_bins_bin.h"

#include "err_sys.h"
#include "gen_cookie_sys.h"
#include "gen_flow_sys.h"
#include "mem_sys.h"
#include "tests/support/captured_output.h"
#include "tests/support/gen_os_fake.h"
#include "tests/support/internal_error.h"
#include "tests/support/mem_figures_fake.h"
#include "tests/support/message_recorder.h"
#include "tests/support/profile_bins_script.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

using testing::AllOf;
using testing::ElementsAreArray;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

#ifdef ZEL_CUSTOMER_TEST
constexpr bool IS_CUSTOMER_BUILD = true;
#else
constexpr bool IS_CUSTOMER_BUILD = false;
#endif

// Sets how often a bin is open, for faults that no sequence of calls leads to. The class is not exported, so that the
// sanitizer has no type to compare with.
[[gnu::no_sanitize("vptr")]] void set_open_count(GEN_PROFILE_BIN *bin, std::uint32_t count)
{
    static_cast<GEN_PB_IMPL *>(bin)->m_open_count = count;
}

GEN_PROFILE_BIN *current_bin()
{
    return const_cast<GEN_PROFILE_BIN *>(gen_profile_bin_get_current_bin());
}

// A fault and how it shows. Each starts with bins that are not initialised.
struct Fault
{
    char const *name;
    char const *text;                   // of the internal error
    std::vector<char const *> expected; // written before, in customer builds too
    void (*commit)();
    std::vector<char const *> expected_later = {}; // written by the same call if the flow continues
};

std::ostream &operator<<(std::ostream &out, Fault const &fault)
{
    return out << fault.name;
}

// A bin that still exists after the fault; null if there is none.
GEN_PROFILE_BIN *l_living_bin = nullptr;

// Starts, and makes a closed bin Fitter/Router next to the open Fitter/Placer.
struct Flow
{
    GEN_PROFILE_BIN *root = start_bins("Fitter");
    GEN_PROFILE_BIN *router = run_bin("Router", 1, 1);
    GEN_PROFILE_BIN *placer = open_bin("Placer");

    Flow() { l_living_bin = router; }
};

void finalize_on_another_thread()
{
    std::thread([] { GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true); }).join();
}

void initialize_on_another_thread()
{
    std::thread([] { start_bins("Other"); }).join();
}

template <unsigned METRIC>
void ask_open_bin()
{
    Flow const flow;
    flow.placer->get_metric(METRIC, /*cumulative=*/false);
}

template <unsigned METRIC>
void ask_unknown_metric()
{
    Flow const flow;
    EXPECT_EQ(flow.placer->get_metric(METRIC, /*cumulative=*/false), -1.0);
}

constexpr char TRACQ_TEXT[] =
    "Recompile zel/gen with USE_TRACQ=1 to use Tracq's Pause/Resume API on profile bin boundaries.\n"
    "  e.g., kcd gen && make sync && make USE_TRACQ=1";
constexpr char NONE_IGNORED[] =
    "0 bins may have been ignored improperly (use show_ignored_bin_warnings=on for details)";
constexpr char WRONG_THREAD[] = "l_gen_pb_thread == thr_thread_self()";
constexpr char NO_ROOT_YET[] = "GEN_PB_IMPL::get_root_bin() == 0LL";
constexpr char NONE_OPEN[] = "GEN_PB_IMPL::get_current_bin() == 0LL";

Fault const FAULTS[] = {
    // initialize and finalize
    {"finalize_without_initialize", WRONG_THREAD, {}, [] { GEN_PROFILE_BINS::finalize("tool", true); }},
    {"finalize_twice",
     WRONG_THREAD,
     {"Deleted all bins; buffer was full 0 times", "Dumping bins took 0.0s", NONE_IGNORED},
     [] {
         Flow const flow;
         close_bin();
         l_living_bin = nullptr;
         GEN_PROFILE_BINS::finalize("tool", true);
         GEN_PROFILE_BINS::finalize("tool", false);
     }},
    {"force_finalize_without_initialize", WRONG_THREAD, {}, [] { GEN_PROFILE_BINS::force_finalize("tool"); }},
    {"finalize_on_another_thread",
     WRONG_THREAD,
     {},
     [] {
         Flow const flow;
         finalize_on_another_thread();
     }},
    {"initialize_twice",
     NO_ROOT_YET,
     {},
     [] {
         Flow const flow;
         start_bins("Fitter");
     }},
    {"initialize_on_another_thread",
     NO_ROOT_YET,
     {},
     [] {
         Flow const flow;
         initialize_on_another_thread();
     }},
    {"finalize_with_the_root_open",
     NONE_OPEN,
     {},
     [] { start_bins("Fitter"), GEN_PROFILE_BINS::finalize("t", false); }},
    {"finalize_with_a_bin_open",
     NONE_OPEN,
     {},
     [] {
         Flow const flow;
         GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true); // closes Placer
     }},
    {"force_finalize_while_ignoring",
     NONE_OPEN,
     {"Closing bins recursively...", "Finished closing bins recursively"},
     [] {
         start_bins("Fitter");
         GEN_PROFILE_BINS::open("TST", "ignored", 0);
         GEN_PROFILE_BINS::force_finalize("tool");
     }},
    {"tracq_bin_key",
     TRACQ_TEXT,
     {},
     [] {
         mem_cfg_set("gen_tracq_profile_bin", "Placer");
         start_bins("Fitter");
     }},
    {"tracq_tag_key",
     TRACQ_TEXT,
     {},
     [] {
         mem_cfg_set("gen_tracq_profile_tag", ".*");
         start_bins("Fitter");
     }},
    {"tracq_check", TRACQ_TEXT, {}, [] { GEN_PROFILE_BINS::check_make_tracq_equal_1_performed(); }},
    {"tracq_check_in_a_flow",
     TRACQ_TEXT,
     {},
     [] {
         Flow const flow;
         GEN_PROFILE_BINS::check_make_tracq_equal_1_performed();
     }},

    // opens and closes
    {"close_without_an_open_bin",
     "bin != 0LL",
     {},
     [] {
         Flow const flow;
         for (int i = 0; i < 3; ++i)
             close_bin();
     }},
    {"close_by_another_name",
     "Can't close bin",
     {"Error: trying to close Router but open bin is Fitter/Placer"},
     [] {
         Flow const flow;
         GEN_PROFILE_BINS::close("Router");
     }},
    {"close_by_another_name_with_signs",
     "Can't close bin",
     {"Error: trying to close a->100% %s but open bin is Fitter/Placer"},
     [] {
         Flow const flow;
         GEN_PROFILE_BINS::close("a::100% %s");
     }},
    {"close_in_another_case",
     "Can't close bin",
     {"Error: trying to close placer but open bin is Fitter/Placer"},
     [] {
         Flow const flow;
         GEN_PROFILE_BINS::close("placer");
     }},
    {"close_by_the_empty_name",
     "Can't close bin",
     {"Error: trying to close  but open bin is Fitter/Placer"},
     [] {
         Flow const flow;
         GEN_PROFILE_BINS::close("");
     }},
    {"close_by_another_name_in_the_buffer",
     "Can't close bin",
     {"Error: trying to close Moves but open bin is Fitter/Placer/Swaps"},
     [] {
         Flow const flow;
         GEN_PROFILE_BINS::open("TST", "Swaps", GEN_PB_FLAG_RECORD);
         GEN_PROFILE_BINS::close("Moves");
         for (int i = 0; i < 4; ++i) { // the tenth event flushes, and the others have no effect any more
             GEN_PROFILE_BINS::open("TST", "Moves", GEN_PB_FLAG_RECORD);
             GEN_PROFILE_BINS::close("Swaps");
         }
     }},
    {"guard_out_of_order",
     "Can't close bin",
     {"Error: trying to close outer but open bin is Fitter/Placer/outer/inner"},
     [] {
         Flow const flow;
         GEN_PROFILER const outer("TST", "outer", GEN_PB_FLAG_IMMEDIATE);
         open_bin("inner");
     }},
    {"open_of_an_open_child",
     "Can't reopen bin",
     {"Error: bin already open: Fitter/Placer/Moves"},
     [] {
         Flow const flow;
         set_open_count(run_bin("Moves", 1, 1), 1);
         open_bin("Moves");
     }},
    {"close_of_a_bin_that_is_not_open",
     "bin->m_open_count",
     {},
     [] {
         Flow const flow;
         set_open_count(flow.placer, 0);
         close_bin();
     }},
    {"close_recursively_of_a_closed_bin",
     "bin != 0LL",
     {"Closing bins recursively..."},
     [] {
         Flow const flow;
         GEN_PROFILE_BINS::close_recursively(flow.router);
     },
     {"Finished closing bins recursively"}},
    {"close_recursively_of_none",
     "bin != 0LL",
     {"Closing bins recursively..."},
     [] {
         Flow const flow;
         GEN_PROFILE_BINS::close_recursively(nullptr);
     },
     {"Finished closing bins recursively"}},

    // operations of a bin
    {"close_of_a_bin_that_is_not_current",
     "GEN_PROFILE_BINS: Unable to close bin \"Fitter/Router\".  Current open bin was \"Fitter/Placer\"",
     {},
     [] {
         Flow const flow;
         flow.router->close();
     }},
    {"close_of_a_bin_with_none_current",
     "GEN_PROFILE_BINS: Unable to close bin \"Fitter\".  Current open bin was \"NULL\"",
     {},
     [] {
         Flow const flow;
         close_bin();
         close_bin();
         flow.root->close();
     }},
    {"metric_0", "unknown metric", {}, ask_unknown_metric<0>},
    {"metric_3", "unknown metric", {}, ask_unknown_metric<3>},
    {"metric_32", "unknown metric", {}, ask_unknown_metric<32>},
    {"metric_0x30000", "unknown metric", {}, ask_unknown_metric<0x30000>},
    {"metric_0xffffffff", "unknown metric", {}, ask_unknown_metric<0xffffffff>},
    {"start_memory_of_an_open_bin", "m_open_count == 0", {}, ask_open_bin<GEN_PB_METRIC_START_MEM>},
    {"end_memory_of_an_open_bin", "m_open_count == 0", {}, ask_open_bin<GEN_PB_METRIC_END_MEM>},
    {"peak_memory_of_an_open_bin", "m_open_count == 0", {}, ask_open_bin<GEN_PB_METRIC_PEAK_MEM>},
    {"estimate_of_an_open_bin", "m_open_count == 0", {}, ask_open_bin<GEN_PB_METRIC_WC_EST>},
    {"path_from_a_bin_beside",
     "m_parent",
     {},
     [] {
         Flow const flow;
         flow.placer->get_path("/", flow.router);
     }},
    {"path_from_a_bin_below",
     "m_parent",
     {},
     [] {
         Flow const flow;
         flow.root->get_path(flow.placer);
     }},
    {"path_names_from_a_bin_beside",
     "m_parent",
     {},
     [] {
         Flow const flow;
         std::vector<std::string> names;
         flow.placer->get_path_names(&names, flow.router);
     }},

    // reports
    {"dump_over_an_open_child",
     "m_open_count == 0",
     {},
     [] {
         Flow const flow;
         set_open_count(run_bin("Moves", 1, 1), 1);
         close_bin();
         flow.placer->dump("dump.txt", /*collect_tags=*/true);
     }},
    {"dump_of_rows_with_an_open_child",
     "m_open_count == 0",
     {"Overhead for bin Placer is 0.0s (0.0s WC)"},
     [] {
         Flow const flow;
         GEN_PROFILE_BIN *const moves = run_bin("Moves", 1, 1);
         close_bin();
         flow.placer->get_metric(GEN_PB_METRIC_WC_EST,
                                 /*cumulative=*/false); // the figures of the report are known by now
         set_open_count(moves, 1);
         flow.placer->dump("dump.txt", /*collect_tags=*/true);
     }},
    {"announced_close_over_an_open_child",
     "m_open_count == 0",
     {},
     [] {
         Flow const flow;
         close_bin();
         set_open_count(flow.router, 1);
         close_bin();
     }},
    {"report_over_an_open_child",
     "m_open_count == 0",
     {"Overhead for bin Fitter is 0.0s (0.0s WC)"},
     [] {
         mem_cfg_set("gen_print_profile_bins", "on");
         Flow const flow;
         close_bin();
         close_bin();
         set_open_count(flow.router, 1);
         GEN_PROFILE_BINS::finalize("tool", /*close_root=*/false);
     }},
};

// The lines other than the usual ones of the start and of bins that open and close.
std::vector<std::string> unusual_lines(MessageRecorder const &recorder)
{
    std::vector<std::string> lines;
    for (std::string const &line : recorder.lines()) {
        auto const starts = [&line](char const *start) { return line.rfind(start, 0) == 0; };
        if (!starts("### ") && !starts("WC frequency") && !starts("Calibrating") && !starts("O/H "))
            lines.push_back(line);
    }
    return lines;
}

// Every call of the bins that may come after a fault; none of them has an effect.
void expect_silence(GEN_PROFILE_BIN *bin)
{
    MessageRecorder const recorder;
    mem_fake_clear_log();
    std::uint64_t const readings = gen_os_fake_reading_count();
    GEN_PROFILE_BIN const *const current = gen_profile_bin_get_current_bin();
    EXPECT_EQ(GEN_PROFILE_BINS::open("TST", "late", GEN_PB_FLAG_ALL), nullptr);
    EXPECT_EQ(GEN_PROFILE_BINS::open("TST", "late", 0), nullptr);
    EXPECT_EQ(GEN_PROFILE_BINS::open_with_tag("TST", "late", GEN_PB_FLAG_ALL, "tag"), nullptr);
    EXPECT_EQ(GEN_PROFILE_BINS::open_with_user_tag("TST", "late", GEN_PB_FLAG_ALL, "tag", "label"), nullptr);
    for (int i = 0; i < 20; ++i) {
        GEN_PROFILER const guard("TST", "buffered", GEN_PB_FLAG_RECORD);
        EXPECT_EQ(guard.bin(), nullptr);
    }
    GEN_PROFILE_BINS::close("late");
    GEN_PROFILE_BINS::close(nullptr);
    GEN_PROFILE_BINS::close_recursively(bin);
    GEN_PROFILE_BINS::close_recursively(nullptr);
    if (bin != nullptr) {
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_WC, true), -1.0);
        EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_WC_EST, true), -1.0);
        EXPECT_EQ(bin->get_metric(0, false), -1.0);
        EXPECT_EQ(bin->get_last_cpu_sec(), -1.0);
        EXPECT_EQ(bin->get_path(nullptr), "");
        std::vector<std::string> names;
        bin->get_path_names(&names, nullptr);
        EXPECT_THAT(names, IsEmpty());
        bin->close();
        bin->dump(nullptr, false);
        bin->dump("late.txt", true);
    }
    GEN_PROFILE_BINS::set_process_log_suffix("late");
    GEN_PROFILE_BINS::finalize("late", /*close_root=*/true);
    GEN_PROFILE_BINS::finalize("late", /*close_root=*/false);
    GEN_PROFILE_BINS::force_finalize("late");
    for (char const *key : {"gen_tracq_profile_bin", "gen_tracq_profile_tag"})
        mem_cfg_set(key, nullptr); // otherwise initialize would switch the bins off by itself
    GEN_PROFILE_BINS::initialize("Late", /*primary=*/true, /*debug_messages=*/true);
    GEN_PROFILE_BINS::check_make_tracq_equal_1_performed();
    EXPECT_EQ(GEN_PROFILE_BINS::open("TST", "late", GEN_PB_FLAG_ALL), nullptr);
    std::thread([] {
        GEN_PROFILE_BINS::initialize("Late", /*primary=*/true, /*debug_messages=*/true);
        EXPECT_EQ(GEN_PROFILE_BINS::open("TST", "late", GEN_PB_FLAG_ALL), nullptr);
    }).join();
    EXPECT_EQ(gen_profile_bin_get_current_bin(), current);
    EXPECT_THAT(recorder.lines(), IsEmpty());
    EXPECT_THAT(mem_fake_log(), IsEmpty());
    EXPECT_EQ(gen_os_fake_reading_count(), readings);
    EXPECT_FALSE(std::filesystem::exists("late.txt"));
    EXPECT_FALSE(std::filesystem::exists("profile_bins_late_late.log"));
}

// Runs a fault in a customer build: it is not reported, and the bins are silent from then on.
void expect_fault_is_silent(void (*commit)(), std::vector<char const *> const &expected)
{
    std::vector<std::string> lines;
    CapturedOutput errors(StandardStream::ERROR_OUTPUT);
    {
        MessageRecorder const recorder;
        commit();
        lines = unusual_lines(recorder);
    }
    EXPECT_EQ(errors.text(), "");
    EXPECT_THAT(lines, ElementsAreArray(expected));
    EXPECT_FALSE(err_is_in_abnormal_exit());
    expect_silence(l_living_bin);
}

// Runs a fault in a development build: the process ends with the text, after the expected lines.
void expect_fault_ends(void (*commit)(), char const *text, std::vector<char const *> const &expected)
{
    testing::Matcher<std::string const &> output = dies_with(text, "gen_profile_bins*");
    for (char const *line : expected)
        output = AllOf(output, HasSubstr(std::string("Debug (GEN): ") + line + "\n"));
    EXPECT_EXIT((mem_cfg_set("mem_show_debug_messages", "on"), commit()), ExitedWithCode(INTERNAL_ERROR_STATUS),
                output);
}

class GenProfileBinsFaultDeathTest : public testing::TestWithParam<Fault>
{
protected:
    TempDir m_directory;
    CurrentDirectory m_current{m_directory.path()};
};

TEST_P(GenProfileBinsFaultDeathTest, EndsADevelopmentBuildAndSilencesACustomerBuild)
{
    Fault const &fault = GetParam();
    ASSERT_EQ(gen_debug_is_customer_build(), IS_CUSTOMER_BUILD);
    if (!IS_CUSTOMER_BUILD) {
        expect_fault_ends(fault.commit, fault.text, fault.expected);
        return;
    }
    std::vector<char const *> expected = fault.expected;
    expected.insert(expected.end(), fault.expected_later.begin(), fault.expected_later.end());
    expect_fault_is_silent(fault.commit, expected);
}

std::string fault_name(testing::TestParamInfo<Fault> const &tested)
{
    return tested.param.name;
}
INSTANTIATE_TEST_SUITE_P(Bins, GenProfileBinsFaultDeathTest, testing::ValuesIn(FAULTS), fault_name);

TEST(GenProfileBinsAfterAFaultDeathTest, TheCurrentBinStaysWhatItWas)
{
    auto const commit = [] { GEN_PROFILE_BINS::check_make_tracq_equal_1_performed(); };
    Flow const flow;
    if (!IS_CUSTOMER_BUILD) {
        EXPECT_EXIT(commit(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_with(TRACQ_TEXT, "gen_profile_bins"));
        return;
    }
    commit();
    EXPECT_EQ(gen_profile_bin_get_current_bin(), flow.placer);
    GEN_PROFILE_BINS::close(nullptr);
    GEN_PROFILE_BINS::force_finalize("tool");
    EXPECT_EQ(gen_profile_bin_get_current_bin(), flow.placer);
}

// Receives the messages of a dump, and dumps once more when a row comes.
void dump_again(MEM_MSG_KIND, char const *, char const *text, void *context)
{
    if (parse_row(text).name == "Placer")
        static_cast<GEN_PROFILE_BIN *>(context)->dump(nullptr, /*collect_tags=*/false);
}

void dump_within_a_dump()
{
    Flow const flow;
    run_bin("Moves", 1, 1);
    close_bin();
    mem_msg_redirect(dump_again, flow.placer);
    flow.placer->dump(nullptr, /*collect_tags=*/false);
    mem_msg_redirect(nullptr, nullptr);
}

TEST(GenProfileBinsDumpDeathTest, WithinADumpIsAFault)
{
    if (IS_CUSTOMER_BUILD)
        expect_fault_is_silent(dump_within_a_dump, {});
    else
        expect_fault_ends(dump_within_a_dump, "l_gen_pb_current_code_prefix == 0LL", {});
}

// An early return of finalize writes neither report nor cookies nor the logs of the last stage.
void finalize_with_a_bin_open()
{
    for (char const *key : {"gen_print_profile_bins", "gen_print_cookie_log", "gen_enable_mem_fileline_profiling"})
        mem_cfg_set(key, "on");
    mem_enable_tracking(MEM_TRACKING_STATISTICS);
    Flow const flow; // whose open bin is a stage
    gen_log_cookie("cookie", 1);
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
}

TEST(GenProfileBinsFilesDeathTest, AreNotWrittenAfterAFault)
{
    TempDir const directory;
    CurrentDirectory const current(directory.path());
    if (IS_CUSTOMER_BUILD) {
        MessageRecorder const recorder;
        finalize_with_a_bin_open();
        GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    } else {
        expect_fault_ends(finalize_with_a_bin_open, NONE_OPEN, {"Cookie logged cookie: 1"});
    }
    EXPECT_TRUE(std::filesystem::is_empty(directory.path()));
}

// In both builds.

void start_with_key(char const *key, std::string const &value)
{
    mem_cfg_set(key, value.c_str());
    start_bins("Fitter");
}

TEST(GenProfileBinsRegexDeathTest, ABadOneIsReportedInCustomerBuildsToo)
{
    for (char const *key : {"gen_tracq_profile_bin", "gen_tracq_profile_tag", "gen_mem_fileline_profile_bin"})
        for (char const *expression : {"(", "a{2,1}", "[z-a]", "*", "%s%n("})
            EXPECT_EXIT(start_with_key(key, expression), ExitedWithCode(INTERNAL_ERROR_STATUS),
                        dies_with("Error compiling regular expression \"" + std::string(expression) + "\"",
                                  "gen_profile_bins*"))
                << key << " = " << expression;
}

TEST(GenProfileBinsRegexDeathTest, TheTextHasRoomFor4095Characters)
{
    for (std::size_t length : {4057U, 4058U, 4059U, 5000U}) {
        std::string const expression = "(" + std::string(length - 1, 'x');
        std::string const text = "Error compiling regular expression \"" + expression + "\"";
        EXPECT_EXIT(start_with_key("gen_mem_fileline_profile_bin", expression), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    dies_with(text.substr(0, 4095), "gen_profile_bins*"))
            << "length " << length;
    }
}

void copy_a_guard_twice()
{
    Flow const flow;
    GEN_PROFILER const guard("TST", "guarded", GEN_PB_FLAG_IMMEDIATE);
    GEN_PROFILER const copy(guard);
    GEN_PROFILER const another(guard);
}

TEST(GenProfileBinsGuardDeathTest, ASecondCopyIsReportedInCustomerBuildsToo)
{
    EXPECT_EXIT(copy_a_guard_twice(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(dies_in_source("other.m_is_orig", "h/gen_profile_bins_sys.h"), Not(HasSubstr("close"))));
}

void print_current_bin()
{
    GEN_PROFILE_BIN const *const bin = gen_profile_bin_get_current_bin();
    std::fprintf(stderr, "[%s]\n", bin == nullptr ? "none" : bin->get_path(nullptr).c_str());
}

void use_bins_at_exit()
{
    print_current_bin();
    GEN_PROFILE_BINS::open("TST", "late", GEN_PB_FLAG_ALL);
    print_current_bin();
    for (int i = 0; i < 20; ++i) {
        GEN_PROFILE_BINS::open("TST", "buffered", GEN_PB_FLAG_RECORD);
        GEN_PROFILE_BINS::close("another");
    }
    GEN_PROFILE_BINS::close("another");
    GEN_PROFILE_BINS::close_recursively(nullptr);
    print_current_bin();
    std::fputs("[end of the handler]\n", stderr);
}

[[noreturn]] void fail_with_bins()
{
    Flow const flow;
    std::atexit(use_bins_at_exit);
    err_report_internal_error("elsewhere", "TST", "tst.cpp", 1);
}

TEST(GenProfileBinsAbnormalExitDeathTest, DropsAllEvents)
{
    EXPECT_EXIT(fail_with_bins(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                HasSubstr("[Fitter/Placer]\n[Fitter/Placer]\n[Fitter/Placer]\n[end of the handler]\n"));
}

void start_at_exit()
{
    start_bins("Fitter");
    print_current_bin();
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    std::fputs("[after the end]\n", stderr);
}

void start_twice_at_exit()
{
    start_bins("Fitter");
    start_bins("Fitter");
    std::fputs("[after the start]\n", stderr);
}

[[noreturn]] void fail_before_the_bins(void (*handler)())
{
    std::atexit(handler);
    err_report_internal_error("elsewhere", "TST", "tst.cpp", 1);
}

// A fault during an abnormal exit: a development build reports it as a second one, a customer build continues.
testing::Matcher<std::string const &> second_fault(char const *text, char const *after)
{
    if (IS_CUSTOMER_BUILD)
        return AllOf(HasSubstr(after), Not(HasSubstr(std::string("Internal error: ") + text + "\n  Library: GEN\n")));
    return AllOf(dies_with(text, "gen_profile_bins*"), Not(HasSubstr(after)));
}

TEST(GenProfileBinsAbnormalExitDeathTest, HasNoRoot)
{
    EXPECT_EXIT(fail_before_the_bins(start_at_exit), ExitedWithCode(INTERNAL_ERROR_STATUS),
                AllOf(HasSubstr("[none]\n"), second_fault("root != 0LL", "[after the end]\n")));
}

TEST(GenProfileBinsAbnormalExitDeathTest, AllowsOneStart)
{
    EXPECT_EXIT(fail_before_the_bins(start_twice_at_exit), ExitedWithCode(INTERNAL_ERROR_STATUS),
                second_fault("l_gen_pb_thread == 0LL", "[after the start]\n"));
}

TEST(GenProfileBinsOtherThread, IsNoFault)
{
    Flow const flow;
    MessageRecorder const recorder;
    std::uint64_t const readings = gen_os_fake_reading_count();
    std::thread([&flow] {
        EXPECT_EQ(GEN_PROFILE_BINS::open("TST", "elsewhere", GEN_PB_FLAG_ALL), nullptr);
        EXPECT_EQ(flow.router->get_metric(GEN_PB_METRIC_WC, false), -1.0);
        EXPECT_EQ(flow.router->get_metric(0, false), -1.0);
        EXPECT_EQ(flow.router->get_path(flow.placer), "");
        GEN_PROFILE_BINS::close("nothing");
        GEN_PROFILE_BINS::close_recursively(flow.router);
        flow.router->close();
        flow.router->dump(nullptr, false);
    }).join();
    EXPECT_THAT(recorder.lines(), IsEmpty());
    EXPECT_EQ(gen_os_fake_reading_count(), readings);
    EXPECT_EQ(current_bin(), flow.placer);
    EXPECT_EQ(flow.placer->get_path(nullptr), "Fitter/Placer");
}

TEST(GenProfileBinsWithoutFault, AreAlikeInBothBuilds)
{
    TempDir const directory;
    CurrentDirectory const current(directory.path());
    mem_cfg_set("gen_print_profile_bins", "on");
    Flow const flow;
    open_bin("Moves");
    gen_os_fake_advance(1000000, 20000000);
    MessageRecorder const recorder;
    GEN_PROFILE_BINS::force_finalize("tool");
    EXPECT_THAT(unusual_lines(recorder),
                testing::ElementsAre("Closing bins recursively...", "Finished closing bins recursively",
                                     "Overhead for bin Fitter is 0.0s (0.0s WC)",
                                     "Deleted all bins; buffer was full 0 times", "Dumping bins took 0.0s",
                                     NONE_IGNORED));
    EXPECT_THAT(directory.read("profile_bins_tool.log"),
                HasSubstr("     1\t        1.00\t       2.00\t           0\t           1.00\t           0.00\t"
                          "         0.00\t          0.00\tFitter::Placer::Moves"));
    start_bins("Fitter");
    EXPECT_NE(open_bin("Placer"), nullptr);
}

} // namespace
