#include "gen_profile_bins_sys.h"

#include "mem_sys.h"
#include "tests/support/gen_os_fake.h"
#include "tests/support/mem_figures_fake.h"
#include "tests/support/message_recorder.h"
#include "tests/support/platform.h"
#include "tests/support/profile_bins_script.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <thread>

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

constexpr std::int64_t CPU_SEC = 1000000;
constexpr std::int64_t TICK_SEC = 10000000; // at 10 MHz
constexpr std::size_t MIB = 1024 * 1024;

constexpr char FILE_HEADER[] = " count\tcpu time (s)\twc time (s)\tclock errors\twc est time (s)\tstart mem (MiB)\t"
                               "end mem (MiB)\tpeak mem (MiB)\tname\n";
constexpr char DEBUG_HEADER[] = " count cpu time (s) wc time (s) clock errors wc est time (s) start mem (MiB) "
                                "end mem (MiB) peak mem (MiB) name";

// A row of a bin that was opened once and took no time.
std::string empty_row(std::string const &name)
{
    return "     1\t        0.00\t       0.00\t           0\t           0.00\t           0.00\t         0.00\t"
           "          0.00\t" +
           name + '\n';
}
std::string empty_other_row(std::string const &name)
{
    std::string row = empty_row(name);
    row.replace(row.find('1'), 1, "0");
    return row;
}

constexpr char NO_OVERHEAD[] = "\nEstimated bin overhead was 0.0s (0.0s WC)\n";

// Lines as the system ends them in a text file.
std::string as_file(std::string const &lines)
{
    std::string text;
    for (char c : lines) {
        if (c == '\n' && ON_WINDOWS)
            text += '\r';
        text += c;
    }
    return text;
}

// The names in the rows of a report file.
std::vector<std::string> names_in(std::string const &file)
{
    std::vector<std::string> names;
    std::istringstream in(file);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        ReportRow const row = parse_row(line);
        if (!row.name.empty())
            names.push_back(row.name);
    }
    return names;
}

// The names of all files of a directory.
std::set<std::string> files_in(TempDir const &directory)
{
    std::set<std::string> files;
    for (auto const &entry : std::filesystem::directory_iterator(directory.path()))
        files.insert(entry.path().filename().string());
    return files;
}

// A test in a fresh directory whose bins write their report.
class GenProfileBinsReport : public testing::Test
{
protected:
    GenProfileBinsReport() { mem_cfg_set("gen_print_profile_bins", "on"); }

    // Closes the root and gives the report file.
    std::string finish(std::string const &name = "tool")
    {
        GEN_PROFILE_BINS::finalize(name.c_str(), /*close_root=*/true);
        return m_directory.read("profile_bins_" + name + ".log");
    }

    std::string dump_to_file(GEN_PROFILE_BIN *bin, bool collect_tags)
    {
        bin->dump("dump.txt", collect_tags);
        return m_directory.read("dump.txt");
    }

    TempDir m_directory;
    CurrentDirectory m_current{m_directory.path()};
    MessageRecorder m_recorder;
};
using GenProfileBinsDebugReport = GenProfileBinsReport;

TEST_F(GenProfileBinsReport, ShowsTheWholeTree)
{
    start_bins("Fitter");
    GEN_PROFILE_BINS::set_cpu_to_wc_estimated_ratio("*/Router", 4.0);
    gen_os_fake_advance(CPU_SEC / 4, TICK_SEC / 2);
    open_bin("Placer");
    gen_os_fake_advance(CPU_SEC, 2 * TICK_SEC);
    // The tracker gives its figures at closes, so that the innermost bin gets the first of them.
    mem_fake_queue_close(10 * MIB, 20 * MIB + MIB / 4, 30 * MIB);
    mem_fake_queue_close(11 * MIB, 12 * MIB, 40 * MIB);
    mem_fake_queue_close(12 * MIB, 13 * MIB, 14 * MIB);
    for (int i = 1; i <= 3; ++i)
        run_bin("Moves", i * 10 * CPU_SEC, i * 20 * TICK_SEC);
    mem_fake_queue_close(5 * MIB, 6 * MIB, 12345 * MIB + MIB * 3 / 4);
    close_bin();
    mem_fake_queue_close(7 * MIB, 0, 7 * MIB);
    run_bin("Router", 8 * CPU_SEC, 3 * TICK_SEC);
    mem_fake_queue_close(MIB / 2, MIB * 3 / 2, 123456 * MIB);
    EXPECT_EQ(
        finish(),
        as_file(std::string(FILE_HEADER) +
                "     1\t       69.25\t     125.50\t           0\t          63.25\t           0.50\t         1.50\t"
                "     123456.00\tFitter\n"
                "     1\t       61.00\t     122.00\t           0\t          61.00\t           5.00\t         6.00\t"
                "      12345.75\tFitter::Placer\n"
                "     3\t       60.00\t     120.00\t           0\t          60.00\t          10.00\t        13.00\t"
                "         40.00\tFitter::Placer::Moves\n"
                "     0\t        1.00\t       2.00\t           0\t           1.00\t           0.00\t         0.00\t"
                "          0.00\tFitter::Placer::OTHER\n"
                "     1\t        8.00\t       3.00\t           0\t           2.00\t           7.00\t         0.00\t"
                "          7.00\tFitter::Router\n"
                "     0\t        0.25\t       0.50\t           0\t           0.25\t           0.00\t         0.00\t"
                "          0.00\tFitter::OTHER\n" +
                NO_OVERHEAD));
    EXPECT_EQ(files_in(m_directory), std::set<std::string>{"profile_bins_tool.log"});
}

TEST_F(GenProfileBinsReport, OfTheRootAloneHasOneRow)
{
    start_bins("Fitter");
    EXPECT_EQ(finish(), as_file(FILE_HEADER + empty_row("Fitter") + NO_OVERHEAD));
}

TEST_F(GenProfileBinsReport, HasAnOtherRowForEachBinWithChildren)
{
    start_bins("Fitter");
    open_bin("a");
    open_bin("b");
    run_bin("c", 0, 0);
    close_bin();
    run_bin("d", 0, 0);
    close_bin();
    run_bin("e", 0, 0);
    EXPECT_EQ(finish(), as_file(FILE_HEADER + empty_row("Fitter") + empty_row("Fitter::a") + empty_row("Fitter::a::b") +
                                empty_row("Fitter::a::b::c") + empty_other_row("Fitter::a::b::OTHER") +
                                empty_row("Fitter::a::d") + empty_other_row("Fitter::a::OTHER") +
                                empty_row("Fitter::e") + empty_other_row("Fitter::OTHER") + NO_OVERHEAD));
}

TEST_F(GenProfileBinsReport, ShowsTheChildrenOfNamelessBinsAlone)
{
    start_bins("Fitter");
    open_bin("");
    run_bin("a", 0, 0);
    run_bin("", 0, 0);
    close_bin();
    open_bin("");
    open_bin("a");
    open_bin("");
    run_bin("b", 0, 0);
    close_bin();
    close_bin();
    close_bin();
    EXPECT_EQ(finish(), as_file(FILE_HEADER + empty_row("Fitter") + empty_row("Fitter::a") + empty_row("Fitter::a") +
                                empty_row("Fitter::a::b") + empty_other_row("Fitter::a::OTHER") +
                                empty_other_row("Fitter::OTHER") + NO_OVERHEAD));
}

TEST_F(GenProfileBinsReport, OfANamelessRootShowsWhatIsBelow)
{
    start_bins("");
    open_bin("a");
    run_bin("b", 0, 0);
    close_bin();
    EXPECT_EQ(finish(), as_file(FILE_HEADER + empty_row("::a") + empty_row("::a::b") + empty_other_row("::a::OTHER") +
                                NO_OVERHEAD));
}

TEST_F(GenProfileBinsReport, ReportsClockErrors)
{
    start_bins("Fitter");
    gen_os_fake_set_clocks(100 * CPU_SEC, 100 * TICK_SEC);
    open_bin("parent");
    run_bin("both", -CPU_SEC, -TICK_SEC);
    run_bin("both", CPU_SEC, -TICK_SEC);
    run_bin("cpu", -CPU_SEC, TICK_SEC);
    gen_os_fake_advance(-20 * CPU_SEC, 0);
    close_bin();
    std::vector<ReportRow> rows;
    std::istringstream in(finish());
    for (std::string line; std::getline(in, line);) {
        if (ON_WINDOWS && !line.empty())
            line.pop_back();
        if (ReportRow const row = parse_row(line); !row.name.empty())
            rows.push_back(row);
    }
    // The sum has the errors of both clocks. The estimate counts those of the CPU clock once more; they are not in it.
    EXPECT_THAT(rows, ElementsAre(ReportRow{1, 79, 99, 0, 79, 0, 0, 0, "Fitter"},
                                  ReportRow{1, 0, 0, 2, 0, 0, 0, 0, "Fitter::parent"},
                                  ReportRow{2, 1, 0, 3, 1, 0, 0, 0, "Fitter::parent::both"},
                                  ReportRow{1, 0, 1, 1, 0, 0, 0, 0, "Fitter::parent::cpu"},
                                  ReportRow{0, 0, 0, 6, 0, 0, 0, 0, "Fitter::parent::OTHER"},
                                  ReportRow{0, 79, 99, 2, 79, 0, 0, 0, "Fitter::OTHER"}));
}

TEST_F(GenProfileBinsReport, MakesRoomForLargeFigures)
{
    start_bins("Fitter");
    gen_os_fake_advance(1234567890123, 98765432109876543);
    mem_fake_queue_close(0, 0, std::size_t{1} << 60);
    EXPECT_EQ(finish(), as_file(std::string(FILE_HEADER) +
                                "     1\t  1234567.89\t9876543210.99\t           0\t     1234567.89\t           0.00\t"
                                "         0.00\t1099511627776.00\tFitter\n" +
                                NO_OVERHEAD));
}

TEST_F(GenProfileBinsReport, ReportsTheOverhead)
{
    gen_os_fake_set_clock_steps(CPU_SEC / 10, TICK_SEC / 5);
    start_bins("Fitter");
    gen_os_fake_set_clock_steps(0, 0);
    gen_os_fake_advance(5 * CPU_SEC, 7 * TICK_SEC);
    run_bin("a", 2 * CPU_SEC, 3 * TICK_SEC);
    m_recorder.clear();
    // CPU time: 0.1 s for the root's own opening, 0.1 s for the child's, and 0.1 s for the difference of the outer and
    // the inner cost; twice as much of the wall clock.
    // The time of the start itself after the calibration, one step, is in the root.
    std::string const file = finish();
    EXPECT_THAT(file, testing::EndsWith(as_file("\tFitter::OTHER\n\nEstimated bin overhead was 0.3s (0.6s WC)\n")));
    EXPECT_EQ(m_recorder.lines()[1], "Overhead for bin Fitter is 0.3s (0.6s WC)");
}

TEST_F(GenProfileBinsReport, WritesNamesAsTheyAre)
{
    constexpr char NAME[] = "100% %s %n %d";
    start_bins("50%f");
    GEN_PROFILE_BIN *const bin = open_bin(NAME);
    run_bin("%%", 0, 0);
    m_recorder.clear();
    bin->dump("dump.txt", false);
    EXPECT_THAT(m_recorder.lines(), ElementsAre("Warning: bin still open (1 times), cannot dump: 50%f/100% %s %n %d"));
    close_bin();
    m_recorder.clear();
    bin->dump(nullptr, false);
    std::vector<std::string> const lines = m_recorder.lines();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0], "Overhead for bin 100% %s %n %d is 0.0s (0.0s WC)");
    EXPECT_EQ(parse_row(lines[2]).name, NAME);
    EXPECT_EQ(parse_row(lines[3]).name, "| %%");
    EXPECT_EQ(finish(), as_file(FILE_HEADER + empty_row("50%f") + empty_row("50%f::100% %s %n %d") +
                                empty_row("50%f::100% %s %n %d::%%") + empty_other_row("50%f::100% %s %n %d::OTHER") +
                                empty_other_row("50%f::OTHER") + NO_OVERHEAD));
}

// Bins below the root and below one of them, opened out of order.
GEN_PROFILE_BIN *run_unsorted_bins()
{
    GEN_PROFILE_BIN *const root = start_bins("R");
    for (char const *name : {"m", "\xc3\xa4", "a", "B"})
        run_bin(name, 0, 0);
    open_bin("k");
    for (char const *name : {"z", "c", "y"})
        run_bin(name, 0, 0);
    close_bin();
    // Two bins without a name: the sorting finds them equal and keeps their order.
    for (char const *name : {"2", "1"}) {
        open_bin("");
        run_bin(name, 0, 0);
        close_bin();
    }
    return root;
}

TEST_F(GenProfileBinsReport, KeepsTheOrderOfFirstOpening)
{
    run_unsorted_bins();
    EXPECT_THAT(names_in(finish()), ElementsAre("R", "R::m", "R::\xc3\xa4", "R::a", "R::B", "R::k", "R::k::z",
                                                "R::k::c", "R::k::y", "R::k::OTHER", "R::2", "R::1", "R::OTHER"));
}

TEST_F(GenProfileBinsReport, SortsTheChildrenOfTheRootWhenItCollectsNoTags)
{
    GEN_PROFILE_BIN *const root = run_unsorted_bins();
    GEN_PROFILE_BINS::close("R");
    EXPECT_THAT(names_in(dump_to_file(root, /*collect_tags=*/false)),
                ElementsAre("R", "R::2", "R::1", "R::B", "R::a", "R::k", "R::k::z", "R::k::c", "R::k::y", "R::k::OTHER",
                            "R::m", "R::\xc3\xa4", "R::OTHER"));
    // The tree itself stays as it was, and a file is written anew.
    EXPECT_THAT(names_in(dump_to_file(root, /*collect_tags=*/true)),
                ElementsAre("R", "R::m", "R::\xc3\xa4", "R::a", "R::B", "R::k", "R::k::z", "R::k::c", "R::k::y",
                            "R::k::OTHER", "R::2", "R::1", "R::OTHER"));
}

TEST_F(GenProfileBinsReport, BinsThatSortAlikeKeepTheirOrder)
{
    GEN_PROFILE_BIN *const root = start_bins("R");
    std::vector<std::string> expected{"R"};
    for (int i = 0; i < 100; ++i) {
        std::string const name = std::to_string(i * 37 % 100);
        open_bin("");
        run_bin(name, 0, 0);
        close_bin();
        expected.push_back("R::" + name);
    }
    expected.push_back("R::OTHER");
    GEN_PROFILE_BINS::close("R");
    EXPECT_EQ(names_in(dump_to_file(root, /*collect_tags=*/false)), expected);
}

TEST_F(GenProfileBinsReport, OfASubtreeBeginsAtItsBin)
{
    start_bins("R");
    open_bin("a");
    GEN_PROFILE_BIN *const b = open_bin("b");
    run_bin("z", 0, 0);
    open_bin("c");
    run_bin("d", 0, 0);
    close_bin();
    close_bin();
    EXPECT_EQ(dump_to_file(b, /*collect_tags=*/false),
              as_file(FILE_HEADER + empty_row("b") + empty_row("b::z") + empty_row("b::c") + empty_row("b::c::d") +
                      empty_other_row("b::c::OTHER") + empty_other_row("b::OTHER") + NO_OVERHEAD));
}

TEST_F(GenProfileBinsReport, OfASubtreeMayBeWrittenWhileTheRootIsOpen)
{
    start_bins("R");
    GEN_PROFILE_BIN *const a = run_bin("a", CPU_SEC, 0);
    EXPECT_THAT(names_in(dump_to_file(a, /*collect_tags=*/true)), ElementsAre("a"));
    // Numbers go on adding up afterwards.
    run_bin("a", CPU_SEC, 0);
    EXPECT_THAT(dump_to_file(a, /*collect_tags=*/true), testing::HasSubstr("     2\t        2.00\t"));
}

TEST_F(GenProfileBinsReport, ASecondOneReportsTheOverheadAgain)
{
    GEN_PROFILE_BIN *const root = start_bins("R");
    run_bin("a", CPU_SEC, TICK_SEC);
    GEN_PROFILE_BINS::close("R");
    std::string const first = dump_to_file(root, /*collect_tags=*/true);
    EXPECT_EQ(m_recorder.count("Overhead for bin R is 0.0s (0.0s WC)"), 1U);
    EXPECT_EQ(dump_to_file(root, /*collect_tags=*/true), first);
    EXPECT_EQ(m_recorder.count("Overhead for bin R is 0.0s (0.0s WC)"), 2U);
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/false);
    EXPECT_EQ(m_recorder.count("Overhead for bin R is 0.0s (0.0s WC)"), 3U);
    EXPECT_EQ(m_directory.read("profile_bins_tool.log"), first);
}

TEST_F(GenProfileBinsReport, OfAnOpenBinIsOnlyAWarning)
{
    GEN_PROFILE_BIN *const root = start_bins("R");
    open_bin("");
    GEN_PROFILE_BIN *const a = open_bin("a");
    open_bin("a");
    m_recorder.clear();
    for (char const *file : {static_cast<char const *>(nullptr), "dump.txt"}) {
        a->dump(file, /*collect_tags=*/true);
        root->dump(file, /*collect_tags=*/true);
        std::vector<RecordedMessage> const messages = m_recorder.take();
        EXPECT_THAT(
            messages,
            ElementsAre(RecordedMessage{MEM_MSG_DEBUG, "GEN", "Warning: bin still open (2 times), cannot dump: R/a"},
                        RecordedMessage{MEM_MSG_DEBUG, "GEN", "Warning: bin still open (1 times), cannot dump: R"}));
    }
    EXPECT_THAT(files_in(m_directory), IsEmpty());
}

TEST_F(GenProfileBinsReport, OfAnotherThreadIsNothing)
{
    GEN_PROFILE_BIN *const root = start_bins("R");
    GEN_PROFILE_BINS::close("R");
    m_recorder.clear();
    std::thread([root] {
        root->dump(nullptr, false);
        root->dump("dump.txt", true);
    }).join();
    EXPECT_THAT(m_recorder.lines(), IsEmpty());
    EXPECT_THAT(files_in(m_directory), IsEmpty());
}

struct SuffixCase
{
    char const *suffix;
    char const *name;
    char const *file;
};
constexpr SuffixCase SUFFIX_CASES[] = {
    {"", "fit", "profile_bins_fit.log"},  {"2", "fit", "profile_bins_fit_2.log"},
    {"a_b", "", "profile_bins__a_b.log"}, {"%d", "%s", "profile_bins_%s_%d.log"},
    {"", "", "profile_bins_.log"},
};

TEST_F(GenProfileBinsReport, ItsFileIsNamedByNameAndSuffix)
{
    std::set<std::string> files;
    for (SuffixCase const &c : SUFFIX_CASES) {
        GEN_PROFILE_BINS::set_process_log_suffix(c.suffix);
        EXPECT_EQ(GEN_PROFILE_BINS::s_log_file_suffix, c.suffix);
        start_bins("R");
        GEN_PROFILE_BINS::finalize(c.name, /*close_root=*/true);
        files.insert(c.file);
        EXPECT_EQ(files_in(m_directory), files) << "name " << c.name << ", suffix " << c.suffix;
    }
    // The suffix at the end counts, also one that is assigned.
    start_bins("R");
    GEN_PROFILE_BINS::s_log_file_suffix = "late";
    GEN_PROFILE_BINS::finalize("fit", /*close_root=*/true);
    files.insert("profile_bins_fit_late.log");
    EXPECT_EQ(files_in(m_directory), files);
}

TEST_F(GenProfileBinsReport, GoesToTheCurrentDirectoryOfTheEnd)
{
    TempDir const other;
    start_bins("R");
    CurrentDirectory const current(other.path());
    GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
    EXPECT_THAT(files_in(m_directory), IsEmpty());
    EXPECT_EQ(files_in(other), std::set<std::string>{"profile_bins_tool.log"});
}

TEST_F(GenProfileBinsReport, TakesThePlaceOfAnOlderFile)
{
    m_directory.write("profile_bins_tool.log", std::string(100000, 'x'));
    start_bins("R");
    EXPECT_EQ(finish(), as_file(FILE_HEADER + empty_row("R") + NO_OVERHEAD));
}

TEST_F(GenProfileBinsReport, ThatCannotBeOpenedDoesNotStopTheFlow)
{
    std::filesystem::create_directory(m_directory.path() / "profile_bins_taken.log");
    for (char const *name : {"taken", "missing/tool"}) {
        start_bins("R");
        run_bin("a", 0, 0);
        GEN_PROFILE_BINS::close("R");
        m_recorder.clear();
        GEN_PROFILE_BINS::finalize(name, /*close_root=*/false);
        EXPECT_THAT(
            m_recorder.messages(),
            ElementsAre(
                RecordedMessage{MEM_MSG_DEBUG, "GEN", "Overhead for bin R is 0.0s (0.0s WC)"},
                RecordedMessage{MEM_MSG_DEBUG, "GEN", "Error - couldn't print profile bins (disk probably full)"},
                RecordedMessage{MEM_MSG_DEBUG, "GEN", "Deleted all bins; buffer was full 0 times"},
                RecordedMessage{MEM_MSG_DEBUG, "GEN", "Dumping bins took 0.0s"},
                RecordedMessage{MEM_MSG_DEBUG, "GEN",
                                "0 bins may have been ignored improperly (use show_ignored_bin_warnings=on for "
                                "details)"}))
            << name;
    }
    EXPECT_EQ(files_in(m_directory), std::set<std::string>{"profile_bins_taken.log"});
    start_bins("R");
    EXPECT_EQ(finish(), as_file(FILE_HEADER + empty_row("R") + NO_OVERHEAD)) << "the next one can be written";
}

TEST_F(GenProfileBinsReport, AFailedDumpOfABinLeavesTheOthersPossible)
{
    start_bins("R");
    GEN_PROFILE_BIN *const a = run_bin("a", 0, 0);
    a->dump("missing/dump.txt", /*collect_tags=*/false);
    EXPECT_EQ(m_recorder.lines().back(), "Error - couldn't print profile bins (disk probably full)");
    EXPECT_EQ(dump_to_file(a, /*collect_tags=*/false), as_file(FILE_HEADER + empty_row("a") + NO_OVERHEAD));
}

struct WantedCase
{
    char const *print;       // gen_print_profile_bins
    char const *granularity; // gen_hybrid_granularity_verbose_call
    bool is_tracked;
    bool primary;
    bool is_disabled;
    bool is_written;
};
constexpr WantedCase WANTED_CASES[] = {
    {nullptr, nullptr, false, true, false, false},
    {"off", "3", false, true, false, false},
    {"on", nullptr, false, true, false, true},
    {"on", "2", false, true, false, true},
    // the memory sibling's tracking asks by itself
    {nullptr, nullptr, true, true, false, true},
    {"off", nullptr, true, true, false, true},
    // processes that are not the main one
    {"on", nullptr, false, false, false, false},
    {"on", "2", false, false, false, false},
    {"on", "3", false, false, false, true},
    {"on", "4", false, false, false, false},
    {"on", "0x3", false, false, false, true},
    {"on", "-3", false, false, false, false},
    {nullptr, "3", false, false, false, false},
    {nullptr, "3", true, false, false, true},
    {nullptr, nullptr, true, false, false, false},
    // switched off on the way
    {"on", nullptr, false, true, true, false},
    {nullptr, nullptr, true, true, true, false},
    {"on", "3", false, false, true, false},
    {nullptr, nullptr, false, true, true, false},
};

TEST_F(GenProfileBinsReport, IsWrittenOnDemand)
{
    int number = 0;
    std::set<std::string> files;
    for (WantedCase const &c : WANTED_CASES) {
        mem_cfg_set("gen_print_profile_bins", c.print);
        mem_cfg_set("gen_hybrid_granularity_verbose_call", c.granularity);
        mem_fake_set_tbb_tracking_enabled(c.is_tracked);
        std::string const name = std::to_string(++number);
        m_recorder.clear();
        GEN_PROFILE_BINS::initialize("R", c.primary, /*debug_messages=*/false);
        EXPECT_EQ(m_recorder.has("TBB profile-bin tracking is enabled"), c.is_tracked) << "case " << number;
        if (c.is_disabled)
            GEN_PROFILE_BINS::disable_process_log();
        GEN_PROFILE_BINS::finalize(name.c_str(), /*close_root=*/true);
        if (c.is_written)
            files.insert("profile_bins_" + name + ".log");
        EXPECT_EQ(files_in(m_directory), files) << "case " << number;
        EXPECT_EQ(m_recorder.has("Overhead for bin R is 0.0s (0.0s WC)"), c.is_written) << "case " << number;
        EXPECT_TRUE(m_recorder.has("Dumping bins took 0.0s")) << "case " << number;
    }
}

TEST_F(GenProfileBinsReport, IsSwitchedOffByTheProcessOnlyAfterTheStart)
{
    GEN_PROFILE_BINS::disable_process_log();
    start_bins("R");
    EXPECT_NE(finish(), "");
}

// Moves the counter when a text passes by.
struct ClockMover
{
    char const *text;
    std::int64_t ticks;
    std::vector<std::string> lines;
};
void move_clock(MEM_MSG_KIND, char const *, char const *text, void *context)
{
    auto *const mover = static_cast<ClockMover *>(context);
    mover->lines.emplace_back(text);
    if (mover->lines.back().rfind(mover->text, 0) == 0)
        gen_os_fake_advance(0, mover->ticks);
}

struct DurationCase
{
    char const *text; // the time passes while this is written
    bool is_covered;
};
constexpr DurationCase DURATION_CASES[] = {
    {"Overhead for bin R", true},          // the reports
    {"Deleted all bins", true},            // the deletion
    {"### Closed profile bin 'R'", false}, // the root's close
    {"Dumping bins took", false},
};

TEST_F(GenProfileBinsReport, ReportsHowLongItTookTogetherWithTheDeletion)
{
    for (DurationCase const &c : DURATION_CASES) {
        start_bins("R");
        ClockMover mover{c.text, 25 * TICK_SEC / 10, {}};
        mem_msg_redirect(move_clock, &mover);
        GEN_PROFILE_BINS::finalize("tool", /*close_root=*/true);
        mem_msg_redirect(nullptr, nullptr);
        EXPECT_THAT(mover.lines,
                    ElementsAre(testing::StartsWith("### Closed profile bin 'R' (1) -- "),
                                testing::StartsWith("Overhead for bin R is 0.0s"),
                                "Deleted all bins; buffer was full 0 times",
                                c.is_covered ? "Dumping bins took 2.5s" : "Dumping bins took 0.0s",
                                "0 bins may have been ignored improperly (use show_ignored_bin_warnings=on for "
                                "details)"))
            << c.text;
    }
}

TEST_F(GenProfileBinsDebugReport, IsATree)
{
    GEN_PROFILE_BIN *const root = start_bins("Fitter");
    mem_fake_queue_close(MIB, 2 * MIB, 3 * MIB);
    GEN_PROFILE_BINS::open("PLC", "Placer", GEN_PB_FLAG_IMMEDIATE);
    gen_os_fake_advance(CPU_SEC, 2 * TICK_SEC);
    run_bin("Moves", 10 * CPU_SEC, 20 * TICK_SEC);
    close_bin();
    open_bin("");
    run_bin("Deep", 0, TICK_SEC);
    close_bin();
    run_bin("Clock", 0, 0);
    gen_os_fake_advance(0, 3 * TICK_SEC);
    GEN_PROFILE_BINS::close("Fitter");
    m_recorder.clear();
    root->dump(nullptr, /*collect_tags=*/true);
    std::vector<RecordedMessage> expected{{MEM_MSG_DEBUG, "GEN", "Overhead for bin Fitter is 0.0s (0.0s WC)"}};
    for (char const *line :
         {DEBUG_HEADER,
          "     1        11.00       26.00            0           11.00            0.00          0.00           0.00 "
          "Fitter",
          // No line for the bin without a name, which is first; its child is two steps in.
          "     1         0.00        1.00            0            0.00            0.00          0.00           0.00 "
          "| | Deep",
          "     1         0.00        0.00            0            0.00            0.00          0.00           0.00 "
          "| Clock",
          "     1        11.00       22.00            0           11.00            0.00          0.00           0.00 "
          "| Placer",
          "     1        10.00       20.00            0           10.00            1.00          2.00           3.00 "
          "| | Moves",
          "     0         1.00        2.00            0            1.00            0.00          0.00           0.00 "
          "| | OTHER",
          "     0         0.00        3.00            0            0.00            0.00          0.00           0.00 "
          "| OTHER"})
        expected.push_back({MEM_MSG_DEBUG, "GEN", line});
    EXPECT_THAT(m_recorder.messages(), ElementsAreArray(expected));
    EXPECT_THAT(files_in(m_directory), IsEmpty());
}

TEST_F(GenProfileBinsDebugReport, ComesUnderTheCodePrefixOfItsBin)
{
    start_bins("Fitter");
    auto *const placer = const_cast<GEN_PROFILE_BIN *>(GEN_PROFILE_BINS::open("PLC", "Placer", GEN_PB_FLAG_IMMEDIATE));
    // Not sorted: only the root's children are.
    run_bin("b", 0, 0);
    run_bin("a", 0, 0);
    close_bin();
    m_recorder.clear();
    placer->dump(nullptr, /*collect_tags=*/false);
    std::vector<std::string> names;
    for (RecordedMessage const &message : m_recorder.messages()) {
        EXPECT_EQ(message.kind, MEM_MSG_DEBUG) << message;
        EXPECT_EQ(message.module, message.text.rfind("Overhead", 0) == 0 ? "GEN" : "PLC") << message;
        names.push_back(parse_row(message.text).name);
    }
    EXPECT_THAT(names, ElementsAre("", "", "Placer", "| b", "| a", "| OTHER"));
}

TEST_F(GenProfileBinsDebugReport, HasTheSameFiguresAsTheFile)
{
    GEN_PROFILE_BIN *const root = start_bins("R");
    run_bin("a", 123 * CPU_SEC, 456 * TICK_SEC);
    GEN_PROFILE_BINS::close("R");
    std::string file = dump_to_file(root, /*collect_tags=*/false);
    m_recorder.clear();
    root->dump(nullptr, /*collect_tags=*/false);
    std::vector<std::string> const lines = m_recorder.lines();
    std::replace(file.begin(), file.end(), '\t', ' ');
    for (std::size_t i = 1; i < lines.size(); ++i) {
        std::string const cells = lines[i].substr(0, lines[i].size() - parse_row(lines[i]).name.size());
        EXPECT_THAT(file, testing::HasSubstr(cells)) << lines[i];
    }
    EXPECT_EQ(lines.size(), 5U);
}

} // namespace
