// How opens and closes reach the tree: the buffer, ignoring, and the processing of an event. An event that reaches the
// tree calls the memory tracker; these calls are recorded.
#include "err_sys.h"
#include "tests/support/captured_output.h"
#include "tests/support/profile_bins.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

using testing::AllOf;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr std::size_t MIB = 1024 * 1024;

void open_plain(char const *name)
{
    EXPECT_EQ(GEN_PROFILE_BINS::open("T", name, PLAIN), nullptr) << name;
}

GEN_PROFILE_BIN const *open_now(char const *name)
{
    return GEN_PROFILE_BINS::open("T", name, IMMEDIATE);
}

GEN_PROFILE_BIN const *open_step(char const *name, char const *label)
{
    return GEN_PROFILE_BINS::open_with_user_tag("T", name, ANNOUNCED, nullptr, label);
}

void close_bin()
{
    GEN_PROFILE_BINS::close(nullptr);
}

GEN_PROFILE_BIN const *current()
{
    return gen_profile_bin_get_current_bin();
}

std::string current_path()
{
    return current() == nullptr ? "none" : current()->get_path(nullptr);
}

// An open that goes through the buffer, and flushes it, without a change of the level after its close.
void flush_buffer()
{
    GEN_PROFILE_BINS::open("T", "flush", IMMEDIATE);
    close_bin();
}

RecordedMessage debug(char const *module, char const *text)
{
    return {MEM_MSG_DEBUG, module, text};
}

RecordedMessage info(char const *module, char const *text)
{
    return {MEM_MSG_INFO, module, text};
}

} // namespace

// The clocks of an event.

class GenProfileBinsClocks : public ProfileBinsTest
{
};

TEST_F(GenProfileBinsClocks, AreReadAlikeInEveryStateOfTheSystem)
{
    struct ClockCase
    {
        char const *what;
        bool at_once;
        bool job;
        double cpu_sec; // the job's time in the script doesn't advance
    };
    constexpr ClockCase CASES[] = {
        {"both in one question", true, false, 2.0},
        {"each in its own", false, false, 2.0},
        {"the job's before the process's", false, true, 0.0},
        {"the job's before both in one question", true, true, 0.0},
    };
    start();
    for (ClockCase const &c : CASES) {
        GEN_OS_FAKE_ANSWERS answers;
        answers.cpu_sum_and_counter = c.at_once;
        answers.job_cpu = c.job;
        gen_os_fake_set_answers(answers);
        std::uint64_t const readings = gen_os_fake_reading_count();
        GEN_PROFILE_BIN const *const bin = open_now("A");
        pass_time(/*cpu_sec=*/2, /*wall_sec=*/3);
        EXPECT_EQ(bin->get_last_cpu_sec(), c.cpu_sec) << c.what;
        close_bin();
        EXPECT_EQ(bin->get_last_cpu_sec(), c.cpu_sec) << c.what;
        EXPECT_EQ(bin->get_last_wc_sec(), 3.0) << c.what;
        EXPECT_EQ(gen_os_fake_reading_count() - readings, c.job ? 3U : 6U) << c.what;
    }
}

// The buffer.

class GenProfileBinsBuffer : public ProfileBinsTest
{
};

TEST_F(GenProfileBinsBuffer, NineEventsWaitAndTheTenthFlushesThem)
{
    start();
    for (int i = 0; i < 4; ++i) {
        open_plain("A");
        close_bin();
    }
    open_plain("A");
    EXPECT_THAT(memory_calls(), IsEmpty());
    EXPECT_EQ(current_path(), "Fitter");
    close_bin();
    EXPECT_EQ(memory_calls().size(), 10U);
    EXPECT_EQ(current_path(), "Fitter");
}

TEST_F(GenProfileBinsBuffer, ATenthEventThatOpensLeavesItsBinOpen)
{
    start();
    open_plain("P");
    for (int i = 0; i < 4; ++i) {
        open_plain("A");
        close_bin();
    }
    EXPECT_THAT(memory_calls(), IsEmpty());
    open_plain("B");
    EXPECT_EQ(memory_calls().size(), 10U);
    EXPECT_EQ(current_path(), "Fitter/P/B");
}

TEST_F(GenProfileBinsBuffer, ReportsHowOftenItWasFull)
{
    struct Case
    {
        int pairs;
        char const *message;
    };
    constexpr Case CASES[] = {
        {0, "Deleted all bins; buffer was full 0 times"},  {4, "Deleted all bins; buffer was full 0 times"},
        {5, "Deleted all bins; buffer was full 1 times"},  {9, "Deleted all bins; buffer was full 2 times"},
        {10, "Deleted all bins; buffer was full 4 times"},
    };
    for (Case const &c : CASES) { // the count goes on from one initialisation to the next
        start();
        for (int i = 0; i < c.pairs; ++i) {
            open_plain("A");
            close_bin();
        }
        flush_buffer();
        GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
        EXPECT_TRUE(m_messages.has(c.message)) << c.pairs << ' ' << testing::PrintToString(m_messages.lines());
    }
}

TEST_F(GenProfileBinsBuffer, ImmediateEventsDoNotFillIt)
{
    start();
    for (int i = 0; i < 20; ++i) {
        open_now("A");
        close_bin();
    }
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    EXPECT_TRUE(m_messages.has("Deleted all bins; buffer was full 0 times"));
}

TEST_F(GenProfileBinsBuffer, EventsHaveTheClocksOfTheirCalls)
{
    start();
    open_plain("A");
    pass_time(0.5, 0.75);
    close_bin();
    pass_time(100, 200);
    flush_buffer();
    GEN_PROFILE_BIN const *const bin = open_now("A");
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_CPU, /*cumulative=*/true), 0.5);
    EXPECT_EQ(bin->get_metric(GEN_PB_METRIC_WC, /*cumulative=*/true), 0.75);
}

TEST_F(GenProfileBinsBuffer, OtherFlagsFlushBeforeTheirOwnEventIsStored)
{
    start();
    open_plain("A");
    EXPECT_EQ(GEN_PROFILE_BINS::open("T", "B", OTHER_PLAIN), nullptr);
    EXPECT_THAT(memory_calls(), ElementsAre("open A  suspended"));
    EXPECT_EQ(current_path(), "Fitter/A");
    close_bin(); // takes the flags of the last open and waits after it
    EXPECT_THAT(memory_calls(), ElementsAre("open A  suspended"));
    EXPECT_EQ(GEN_PROFILE_BINS::open("T", "C", OTHER_PLAIN), nullptr);
    EXPECT_THAT(memory_calls(), ElementsAre("open A  suspended"));
    EXPECT_EQ(GEN_PROFILE_BINS::open("T", "D", PLAIN), nullptr);
    EXPECT_THAT(memory_calls(),
                ElementsAre("open A  suspended", "open B  suspended", "close  suspended", "open C  suspended"));
}

TEST_F(GenProfileBinsBuffer, AnImmediateOpenFlushesAndReturnsItsBin)
{
    start();
    open_plain("A");
    GEN_PROFILE_BIN const *const bin = open_now("B");
    ASSERT_NE(bin, nullptr);
    EXPECT_EQ(bin, current());
    EXPECT_EQ(bin->get_path(nullptr), "Fitter/A/B");
    EXPECT_THAT(memory_calls(), ElementsAre("open A  suspended", "open B  suspended"));
}

TEST_F(GenProfileBinsBuffer, TheCloseOfAnImmediateOpenIsImmediate)
{
    start();
    GEN_PROFILE_BIN const *const root = current();
    open_now("A");
    close_bin();
    EXPECT_EQ(current(), root);
    EXPECT_THAT(memory_calls(), ElementsAre("open A  suspended", "close  suspended"));
    close_bin();
    EXPECT_EQ(current(), nullptr);
}

TEST_F(GenProfileBinsBuffer, ACloseHandsTheLevelBackToTheParent)
{
    start();
    open_plain("A");
    open_now("B");
    close_bin(); // now the level is that of A
    mem_fake_clear_log();
    open_plain("C");
    close_bin();
    close_bin();
    EXPECT_THAT(memory_calls(), IsEmpty());
    EXPECT_EQ(current_path(), "Fitter/A");
    flush_buffer();
    EXPECT_EQ(current_path(), "Fitter");
}

// B is open with plain flags after the flush, but the last close left the level of the root, which is immediate.
TEST_F(GenProfileBinsBuffer, TheLevelAfterAFlushIsWhatTheLastCloseLeftAlsoIfAnOpenFollows)
{
    start();
    open_plain("Q");
    flush_buffer();
    mem_fake_clear_log();
    close_bin();
    for (int i = 0; i < 4; ++i) {
        open_plain("A");
        close_bin();
    }
    EXPECT_THAT(memory_calls(), IsEmpty());
    open_plain("B");
    EXPECT_EQ(current_path(), "Fitter/B");
    close_bin();
    EXPECT_EQ(current_path(), "Fitter");
}

TEST_F(GenProfileBinsBuffer, ReadsTheClocksOncePerEventAndTwicePerFlush)
{
    start();
    std::uint64_t count = gen_os_fake_reading_count();
    auto const readings = [&count] {
        return gen_os_fake_reading_count() - std::exchange(count, gen_os_fake_reading_count());
    };
    open_plain("A"); // the flush of an empty buffer reads nothing
    EXPECT_EQ(readings(), 2U);
    close_bin();
    EXPECT_EQ(readings(), 2U);
    open_now("B");
    EXPECT_EQ(readings(), 2U + 4U);
    close_bin();
    EXPECT_EQ(readings(), 2U);
    for (int i = 0; i < 4; ++i) {
        open_plain("A");
        close_bin();
    }
    open_plain("A");
    EXPECT_EQ(readings(), 9U * 2U);
    close_bin();
    EXPECT_EQ(readings(), 2U + 4U);
}

TEST_F(GenProfileBinsBuffer, AFlushIsChargedToTheBinThatIsThenCurrent)
{
    start();
    open_plain("A");
    gen_os_fake_set_clock_steps(/*cpu_usec=*/500000, /*ticks=*/20000000);
    GEN_PROFILE_BINS::open("T", "B", OTHER_PLAIN);
    gen_os_fake_set_clock_steps(0, 0);
    GEN_PROFILE_BIN const *const a = current();
    flush_buffer();
    GEN_PROFILE_BIN const *const b = current();
    EXPECT_EQ(b->get_path(nullptr), "Fitter/A/B");
    close_bin();
    flush_buffer(); // closes B
    close_bin();
    flush_buffer(); // closes A
    m_messages.clear();
    writable(a).dump(nullptr, false);
    EXPECT_TRUE(m_messages.has("Overhead for bin A is 0.5s (2.0s WC)")) << testing::PrintToString(m_messages.lines());
    writable(b).dump(nullptr, false);
    EXPECT_TRUE(m_messages.has("Overhead for bin B is 0.0s (0.0s WC)")) << testing::PrintToString(m_messages.lines());
}

TEST_F(GenProfileBinsBuffer, ImmediateEventsAreNotCharged)
{
    start();
    GEN_PROFILE_BIN const *const root = current();
    gen_os_fake_set_clock_steps(/*cpu_usec=*/500000, /*ticks=*/20000000);
    GEN_PROFILE_BIN const *const a = open_now("A");
    close_bin();
    close_bin();
    gen_os_fake_set_clock_steps(0, 0);
    for (GEN_PROFILE_BIN const *const bin : {a, root})
        writable(bin).dump(nullptr, false);
    EXPECT_TRUE(m_messages.has("Overhead for bin A is 0.0s (0.0s WC)"));
    EXPECT_TRUE(m_messages.has("Overhead for bin Fitter is 0.0s (0.0s WC)"));
}

TEST_F(GenProfileBinsBuffer, TheChargeOfAFlushWithoutACurrentBinIsDropped)
{
    start();
    GEN_PROFILE_BIN const *const root = current();
    close_bin();
    gen_os_fake_set_clock_steps(/*cpu_usec=*/500000, /*ticks=*/20000000);
    open_plain("X");
    close_bin();
    GEN_PROFILE_BIN const *const stray = open_now("Y");
    gen_os_fake_set_clock_steps(0, 0);
    close_bin();
    EXPECT_EQ(current(), nullptr);
    for (GEN_PROFILE_BIN const *const bin : {root, stray})
        writable(bin).dump(nullptr, false);
    EXPECT_TRUE(m_messages.has("Overhead for bin Fitter is 0.0s (0.0s WC)"));
    EXPECT_TRUE(m_messages.has("Overhead for bin Y is 0.0s (0.0s WC)"));
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/false);
}

TEST_F(GenProfileBinsBuffer, OnlyTheImmediateBitMakesAnEventImmediate)
{
    start();
    for (unsigned const flags : {1U, 2U, 0x100U, 0x400U, 0x80000000U, 0x7ffffdffU})
        EXPECT_EQ(GEN_PROFILE_BINS::open("T", "A", flags), nullptr) << flags;
    EXPECT_NE(GEN_PROFILE_BINS::open("T", "B", 0x200), nullptr);
    EXPECT_NE(GEN_PROFILE_BINS::open("T", "C", GEN_PB_FLAG_ALL), nullptr);
}

// Opening.

class GenProfileBinsOpen : public ProfileBinsTest
{
};

TEST_F(GenProfileBinsOpen, TurnsDoubleColonsIntoArrows)
{
    struct Case
    {
        char const *name;
        char const *normal;
    };
    constexpr Case CASES[] = {
        {"A", "A"},         {"a::b", "a->b"}, {"a::b::c", "a->b->c"}, {"::", "->"},   {":::", "->:"},
        {"::::", "->->"},   {":", ":"},       {"a:b", "a:b"},         {"a::", "a->"}, {"::a", "->a"},
        {"a:::b", "a->:b"}, {"x/y", "x/y"},   {"100%s", "100%s"},
    };
    start();
    for (Case const &c : CASES) {
        mem_fake_clear_log();
        GEN_PROFILE_BIN const *const bin = open_now(c.name);
        EXPECT_EQ(bin->get_path(bin), c.normal) << c.name;
        EXPECT_THAT(memory_calls(), ElementsAre(std::string("open ") + c.normal + "  suspended"));
        GEN_PROFILE_BINS::close(c.name);
        EXPECT_EQ(open_now(c.normal), bin) << c.name;
        GEN_PROFILE_BINS::close(c.normal);
        EXPECT_EQ(current_path(), "Fitter") << c.name;
    }
}

TEST_F(GenProfileBinsOpen, ANameWithinAParentIsOneBin)
{
    start();
    GEN_PROFILE_BIN const *const a = open_now("A");
    GEN_PROFILE_BIN const *const x_of_a = open_now("X");
    close_bin();
    close_bin();
    GEN_PROFILE_BIN const *const b = open_now("B");
    GEN_PROFILE_BIN const *const x_of_b = open_now("X");
    close_bin();
    close_bin();
    EXPECT_NE(a, b);
    EXPECT_NE(x_of_a, x_of_b);
    EXPECT_EQ(open_now("A"), a);
    EXPECT_EQ(open_now("X"), x_of_a);
    close_bin();
    close_bin();
    EXPECT_EQ(open_now("B"), b);
    EXPECT_EQ(open_now("X"), x_of_b);
}

TEST_F(GenProfileBinsOpen, FindsItsBinAmongManyChildren)
{
    constexpr int CHILD_COUNT = 40;
    start();
    std::vector<std::string> names;
    std::vector<GEN_PROFILE_BIN const *> bins;
    for (int i = 0; i < CHILD_COUNT; ++i)
        names.push_back("child " + std::to_string(i));
    for (int round = 0; round < 2; ++round)
        for (int i = 0; i < CHILD_COUNT; ++i) {
            GEN_PROFILE_BIN const *const bin = open_now(names[i].c_str());
            if (round == 0)
                bins.push_back(bin);
            EXPECT_EQ(bin, bins[i]) << names[i];
            EXPECT_EQ(bin->get_path(bin), names[i]);
            close_bin();
            open_now(""); // a bin without a name in between changes nothing
            close_bin();
        }
}

TEST_F(GenProfileBinsOpen, ABinOpenedInsideItselfIsCountedOnce)
{
    start();
    GEN_PROFILE_BIN const *const bin = GEN_PROFILE_BINS::open("T", "A", ANNOUNCED);
    pass_time(1, 1);
    mem_fake_clear_log();
    m_messages.clear();
    EXPECT_EQ(GEN_PROFILE_BINS::open("T", "A", ANNOUNCED), bin);
    pass_time(1, 1);
    GEN_PROFILE_BINS::close("A");
    EXPECT_EQ(current(), bin);
    EXPECT_THAT(memory_calls(), IsEmpty());
    EXPECT_THAT(m_messages.lines(), IsEmpty());
    pass_time(1, 1);
    GEN_PROFILE_BINS::close("A");
    EXPECT_EQ(current_path(), "Fitter");
    EXPECT_EQ(bin->get_last_cpu_sec(), 3.0); // from the first open to the second close
    EXPECT_EQ(bin->get_last_wc_sec(), 3.0);
    EXPECT_THAT(memory_calls(), ElementsAre("close  suspended"));
    EXPECT_THAT(m_messages.lines(), ElementsAre(HasSubstr("### Closed profile bin 'A' (1) -- ")));
}

TEST_F(GenProfileBinsOpen, ANestedOpenKeepsTheFlagsOfTheFirst)
{
    start();
    open_now("A");
    GEN_PROFILE_BINS::open("T", "A", ANNOUNCED);
    close_bin();
    close_bin();
    EXPECT_THAT(m_messages.lines(), IsEmpty());
}

TEST_F(GenProfileBinsOpen, ABinOpenedTwiceInSequenceCountsTwoOpens)
{
    start();
    for (char const *const message : {"### Opened profile bin 'A' (1) ###", "### Opened profile bin 'A' (2) ###"}) {
        m_messages.clear();
        GEN_PROFILE_BINS::open("T", "A", ANNOUNCED);
        EXPECT_THAT(m_messages.messages(), ElementsAre(debug("T", message)));
        close_bin();
    }
}

TEST_F(GenProfileBinsOpen, TheTextsOfTheFirstOpenStayAndTheFlagsFollowTheLast)
{
    start();
    GEN_PROFILE_BINS::open_with_user_tag("FIRST", "A", ANNOUNCED, "tag", "Label");
    close_bin();
    forget();
    GEN_PROFILE_BINS::open_with_user_tag("SECOND", "A", ANNOUNCED, "other", "Other");
    close_bin();
    EXPECT_THAT(memory_calls(), ElementsAre("open A tag suspended", "close tag suspended"));
    for (RecordedMessage const &message : m_messages.messages())
        EXPECT_EQ(message.module, "FIRST") << message;
    EXPECT_THAT(m_messages.lines(),
                ElementsAre(HasSubstr("Step 1 Label at"), "### Opened profile bin 'A' (2) ###",
                            HasSubstr("### Closed profile bin 'A' (2)"), HasSubstr("Step 1 Label at")));
    m_messages.clear();
    open_now("A");
    close_bin();
    EXPECT_THAT(m_messages.lines(), IsEmpty());
}

TEST_F(GenProfileBinsOpen, ATagThatComesLaterIsNotTaken)
{
    start();
    open_now("A");
    close_bin();
    forget();
    GEN_PROFILE_BINS::open_with_tag("T", "A", IMMEDIATE, "late");
    close_bin();
    EXPECT_THAT(memory_calls(), ElementsAre("open A  suspended", "close  suspended"));
}

TEST_F(GenProfileBinsOpen, HandsNameAndTagToTheMemoryTracker)
{
    start();
    GEN_PROFILE_BINS::open_with_tag("T", "A", IMMEDIATE, "one");
    GEN_PROFILE_BINS::open_with_user_tag("T", "B::C", IMMEDIATE, "two", nullptr);
    GEN_PROFILE_BINS::open_with_tag("T", "D", IMMEDIATE, nullptr);
    close_bin();
    close_bin();
    close_bin();
    EXPECT_THAT(memory_calls(), ElementsAre("open A one suspended", "open B->C two suspended", "open D  suspended",
                                            "close  suspended", "close two suspended", "close one suspended"));
    EXPECT_EQ(mem_fake_suspensions(), 0);
}

TEST_F(GenProfileBinsOpen, EveryOpenOfAnEmptyNameMakesANewSilentBin)
{
    start();
    GEN_PROFILE_BIN const *const first = GEN_PROFILE_BINS::open("T", "", ANNOUNCED);
    GEN_PROFILE_BIN const *const inner = GEN_PROFILE_BINS::open("T", "", ANNOUNCED);
    EXPECT_NE(first, inner);
    close_bin();
    EXPECT_EQ(current(), first);
    GEN_PROFILE_BINS::close("");
    GEN_PROFILE_BIN const *const second = GEN_PROFILE_BINS::open("T", "", ANNOUNCED);
    EXPECT_NE(first, second);
    close_bin();
    EXPECT_THAT(memory_calls(), IsEmpty());
    EXPECT_THAT(m_messages.lines(), IsEmpty());
    EXPECT_EQ(current_path(), "Fitter");
}

TEST_F(GenProfileBinsOpen, ASecondRootIsPossibleOnceTheRootIsClosed)
{
    start();
    GEN_PROFILE_BIN const *const root = current();
    close_bin();
    GEN_PROFILE_BIN const *const stray = open_now("Stray");
    EXPECT_NE(stray, root);
    EXPECT_EQ(stray->get_path(stray), "Stray");
    EXPECT_EQ(open_now("Child")->get_path(stray), "Stray/Child");
    close_bin();
    close_bin();
    EXPECT_EQ(current(), nullptr);
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/false);
    EXPECT_TRUE(m_messages.has("Deleted all bins; buffer was full 0 times"));
}

// Messages of a bin.

class GenProfileBinsAnnouncement : public ProfileBinsTest
{
};

TEST_F(GenProfileBinsAnnouncement, ReportsTheFiguresOfTheInterval)
{
    start();
    mem_fake_queue_close(MIB, 2 * MIB + MIB / 2, 3 * MIB + MIB / 4);
    GEN_PROFILE_BINS::open("MOD", "A::B", ANNOUNCED);
    pass_time(1.25, 2.5);
    GEN_PROFILE_BINS::close("A::B");
    EXPECT_THAT(m_messages.take(),
                ElementsAre(debug("MOD", "### Opened profile bin 'A->B' (1) ###"),
                            debug("MOD", "### Closed profile bin 'A->B' (1) -- CPU time 1.25s (1.25s total, 0 errors); "
                                         "WC time 2.50s (2.50s total, 1 errors); WCest time 1.25s total; Open 1.00 "
                                         "MiB, Peak 3.25 MiB, Close 2.50 MiB")));
    mem_fake_queue_close(5 * MIB, 6 * MIB, 7 * MIB);
    GEN_PROFILE_BINS::open("MOD", "A::B", ANNOUNCED);
    pass_time(0.5, 0.25);
    GEN_PROFILE_BINS::close(nullptr);
    // The memory is that of this interval alone.
    EXPECT_THAT(m_messages.take(),
                ElementsAre(debug("MOD", "### Opened profile bin 'A->B' (2) ###"),
                            debug("MOD", "### Closed profile bin 'A->B' (2) -- CPU time 0.50s (1.75s total, 0 errors); "
                                         "WC time 0.25s (2.75s total, 1 errors); WCest time 1.75s total; Open 5.00 "
                                         "MiB, Peak 7.00 MiB, Close 6.00 MiB")));
}

TEST_F(GenProfileBinsAnnouncement, ReportsOneWallClockErrorWhateverHappened)
{
    start();
    GEN_PROFILE_BINS::open("T", "A", ANNOUNCED);
    pass_time(-1, -1);
    close_bin();
    GEN_PROFILE_BINS::open("T", "A", ANNOUNCED);
    pass_time(-1, -1);
    close_bin();
    EXPECT_EQ(m_messages.lines().back(),
              "### Closed profile bin 'A' (2) -- CPU time 0.00s (0.00s total, 2 errors); WC time 0.00s (0.00s total, 1 "
              "errors); WCest time 0.00s total; Open 0.00 MiB, Peak 0.00 MiB, Close 0.00 MiB");
}

TEST_F(GenProfileBinsAnnouncement, WorksThroughTheBufferToo)
{
    start();
    GEN_PROFILE_BINS::open("T", "A", GEN_PB_FLAG_ANNOUNCE);
    pass_time(1, 2);
    close_bin();
    EXPECT_THAT(m_messages.lines(), IsEmpty());
    pass_time(10, 10);
    flush_buffer();
    EXPECT_THAT(m_messages.lines(), ElementsAre("### Opened profile bin 'A' (1) ###",
                                                HasSubstr("'A' (1) -- CPU time 1.00s (1.00s total, 0 errors); WC time "
                                                          "2.00s (2.00s total, 1 errors); WCest time 1.00s total")));
}

TEST_F(GenProfileBinsAnnouncement, EstimateOfAParentIsThatOfItsLastClose)
{
    start();
    for (char const *const estimate : {"WCest time 3.00s total", "WCest time 6.00s total"}) {
        GEN_PROFILE_BINS::open("T", "A", ANNOUNCED);
        pass_time(1, 1);
        open_now("B");
        pass_time(2, 2);
        close_bin();
        close_bin();
        EXPECT_THAT(m_messages.lines().back(), HasSubstr(estimate));
    }
}

// 98765432101 bytes are 94190.056 MiB; a float holds 94190.0546875.
TEST_F(GenProfileBinsAnnouncement, FiguresOfMemoryAreInSinglePrecision)
{
    constexpr std::size_t BYTES = 98765432101;
    start();
    mem_fake_set_peak_virtual(BYTES);
    mem_fake_queue_close(BYTES, BYTES, BYTES);
    open_step("A", "Label");
    close_bin();
    std::vector<std::string> const lines = m_messages.lines();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_THAT(lines[0], HasSubstr("(peak virtual memory 94190.055 MB)"));
    EXPECT_THAT(lines[2], HasSubstr("Open 94190.05 MiB, Peak 94190.05 MiB, Close 94190.05 MiB"));
    EXPECT_THAT(lines[3], HasSubstr("(peak virtual memory 94190.055 MB elapsed time: "));
}

TEST_F(GenProfileBinsAnnouncement, StepsAreReportedToTheUser)
{
    start();
    mem_fake_set_peak_virtual(MIB + MIB / 8);
    GEN_PROFILE_BINS::open_with_user_tag("MOD", "Place", ANNOUNCED, nullptr, "Placement");
    pass_time(0, 90061.9);
    gen_os_fake_set_calendar_msec(1794683027123 + 90061900);
    mem_fake_set_peak_virtual(2 * MIB);
    close_bin();
    EXPECT_THAT(m_messages.messages(),
                ElementsAre(info("MOD", "Starting Fitter Step 1 Placement at 2026-11-14 19:03:47 (peak virtual memory "
                                        "1.125 MB)"),
                            debug("MOD", "### Opened profile bin 'Place' (1) ###"),
                            debug("MOD", "### Closed profile bin 'Place' (1) -- CPU time 0.00s (0.00s total, 0 "
                                         "errors); WC time 90061.90s (90061.90s total, 1 errors); WCest time 0.00s "
                                         "total; Open 0.00 MiB, Peak 0.00 MiB, Close 0.00 MiB"),
                            info("MOD", "  Ending Fitter Step 1 Placement at 2026-11-15 20:04:49 (peak virtual memory "
                                        "2.000 MB elapsed time: 1:01:01:01)")));
}

TEST_F(GenProfileBinsAnnouncement, AStepWithoutANameReportsItsStepLinesOnly)
{
    start();
    open_step("", "Nameless");
    close_bin();
    EXPECT_THAT(m_messages.messages(),
                ElementsAre(info("T", "Starting Fitter Step 1 Nameless at 2026-11-14 19:03:47 (peak virtual memory "
                                      "0.000 MB)"),
                            info("T", "  Ending Fitter Step 1 Nameless at 2026-11-14 19:03:47 (peak virtual memory "
                                      "0.000 MB elapsed time: 00:00:00)")));
}

TEST_F(GenProfileBinsAnnouncement, IsMadeByTheAnnounceBitAlone)
{
    start();
    for (unsigned const flags : {IMMEDIATE, IMMEDIATE | 0xffU, IMMEDIATE | 0x7ffffc00U}) {
        GEN_PROFILE_BINS::open_with_user_tag("T", "A", flags, nullptr, "Label");
        close_bin();
        EXPECT_THAT(m_messages.take(), IsEmpty()) << flags;
    }
}

TEST_F(GenProfileBinsAnnouncement, NothingGoesToTheStandardStreams)
{
    CapturedOutput output(StandardStream::OUTPUT);
    CapturedOutput errors(StandardStream::ERROR_OUTPUT);
    start();
    open_step("A", "Label");
    GEN_PROFILE_BINS::open("T", "ignored", 0);
    open_now("B");
    close_bin();
    close_bin();
    close_bin();
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(output.text(), "");
}

// Steps.

class GenProfileBinsStep : public ProfileBinsTest
{
protected:
    // The identifiers of all steps that were started, in order.
    std::vector<std::string> steps() const
    {
        std::vector<std::string> result;
        for (std::string const &line : m_messages.lines()) {
            std::string const start = "Starting Fitter Step ";
            if (line.compare(0, start.size(), start) == 0)
                result.push_back(line.substr(start.size(), line.find(" at ") - start.size()));
        }
        return result;
    }
};

TEST_F(GenProfileBinsStep, AreNumberedInOrderOfCreation)
{
    start();
    open_step("A", "a");
    close_bin();
    open_step("B", "b");
    open_step("B1", "b1");
    close_bin();
    open_step("B2", "b2");
    open_step("B21", "b21");
    close_bin();
    close_bin();
    close_bin();
    open_step("C", "c");
    close_bin();
    EXPECT_THAT(steps(), ElementsAre("1 a", "2 b", "2.1 b1", "2.2 b2", "2.2.1 b21", "3 c"));
}

TEST_F(GenProfileBinsStep, CountBelowTheNearestLabelledBin)
{
    start();
    open_step("A", "a");
    open_now("unlabelled");
    open_now("");
    open_step("B", "b");
    close_bin();
    close_bin();
    open_step("C", "c");
    close_bin();
    close_bin();
    open_step("D", "d");
    close_bin();
    close_bin();
    open_now("other");
    open_step("E", "e");
    EXPECT_THAT(steps(), ElementsAre("1 a", "1.1 b", "1.2 c", "1.3 d", "2 e"));
}

TEST_F(GenProfileBinsStep, KeepTheirNumberWhenTheyAreOpenedAgain)
{
    start();
    for (int i = 0; i < 2; ++i) {
        open_step("A", "a");
        open_step("A1", "a1");
        close_bin();
        close_bin();
        open_step("B", "b");
        close_bin();
    }
    EXPECT_THAT(steps(), ElementsAre("1 a", "1.1 a1", "2 b", "1 a", "1.1 a1", "2 b"));
}

TEST_F(GenProfileBinsStep, AnEmptyLabelIsNone)
{
    start();
    open_step("A", "");
    open_step("B", "b");
    EXPECT_THAT(steps(), ElementsAre("1 b"));
}

TEST_F(GenProfileBinsStep, ALabelThatComesAfterTheCreationIsNone)
{
    start();
    open_now("A");
    close_bin();
    open_step("A", "a");
    open_step("B", "b");
    EXPECT_THAT(steps(), ElementsAre("1 b"));
}

// Closing.

class GenProfileBinsClose : public ProfileBinsTest
{
};

TEST_F(GenProfileBinsClose, ByNullTakesWhateverIsInnermost)
{
    start();
    open_now("A");
    open_now("B");
    close_bin();
    EXPECT_EQ(current_path(), "Fitter/A");
    close_bin();
    EXPECT_EQ(current_path(), "Fitter");
    close_bin();
    EXPECT_EQ(current_path(), "none");
}

TEST_F(GenProfileBinsClose, OfABinItself)
{
    start();
    GEN_PROFILE_BIN const *const root = current();
    GEN_PROFILE_BIN const *const bin = open_now("A");
    writable(bin).close();
    EXPECT_EQ(current(), root);
    writable(root).close();
    EXPECT_EQ(current(), nullptr);
}

TEST_F(GenProfileBinsClose, OfABinItselfGoesThroughTheBuffer)
{
    start();
    open_plain("A");
    flush_buffer();
    GEN_PROFILE_BIN const *const bin = current();
    writable(bin).close();
    EXPECT_EQ(current(), bin);
    flush_buffer();
    EXPECT_EQ(current_path(), "Fitter");
}

// The open of B is still in the buffer, so A counts as current and may be closed. The close has no name and closes B.
TEST_F(GenProfileBinsClose, OfABinItselfPassesNoName)
{
    start();
    open_plain("A");
    flush_buffer();
    GEN_PROFILE_BIN const *const a = current();
    open_plain("B");
    writable(a).close();
    flush_buffer();
    EXPECT_EQ(current(), a);
}

class GenProfileBinsCloseDeathTest : public ProfileBinsTest
{
};

TEST_F(GenProfileBinsCloseDeathTest, NeedsAnOpenBin)
{
    start();
    close_bin();
    EXPECT_EXIT(close_bin(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_bins("bin != 0LL"));
}

TEST_F(GenProfileBinsCloseDeathTest, MustNameTheOpenBin)
{
    start();
    open_now("A");
    open_now("B");
    show_messages();
    for (char const *const name : {"A", "", "b", "B ", "B::"})
        EXPECT_EXIT(GEN_PROFILE_BINS::close(name), ExitedWithCode(INTERNAL_ERROR_STATUS),
                    dies_in_bins("Can't close bin"))
            << name;
    EXPECT_EXIT(GEN_PROFILE_BINS::close("A"), ExitedWithCode(INTERNAL_ERROR_STATUS),
                HasSubstr("Debug (GEN): Error: trying to close A but open bin is Fitter/A/B\n"));
}

TEST_F(GenProfileBinsCloseDeathTest, IsCheckedOnlyWhenItIsProcessed)
{
    start();
    open_plain("A");
    GEN_PROFILE_BINS::close("wrong");
    EXPECT_EQ(current_path(), "Fitter");
    EXPECT_EXIT(flush_buffer(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_bins("Can't close bin"));
}

TEST_F(GenProfileBinsCloseDeathTest, OfABinItselfNeedsTheBinToBeCurrent)
{
    start();
    GEN_PROFILE_BIN const *const root = current();
    GEN_PROFILE_BIN const *const a = open_now("A");
    GEN_PROFILE_BIN const *const b = open_now("B");
    EXPECT_EXIT(writable(a).close(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins("GEN_PROFILE_BINS: Unable to close bin \"Fitter/A\".  Current open bin was "
                             "\"Fitter/A/B\""));
    close_bin();
    EXPECT_EXIT(writable(b).close(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins("GEN_PROFILE_BINS: Unable to close bin \"Fitter/A/B\".  Current open bin was "
                             "\"Fitter/A\""));
    close_bin();
    close_bin();
    EXPECT_EXIT(writable(root).close(), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins("GEN_PROFILE_BINS: Unable to close bin \"Fitter\".  Current open bin was \"NULL\""));
}

TEST_F(GenProfileBinsCloseDeathTest, OfABinItselfPassesItsNameWhenBinsAreSelectedByName)
{
    mem_cfg_set("gen_mem_fileline_profile_bin", "nothing like it");
    start();
    open_plain("A");
    flush_buffer();
    GEN_PROFILE_BIN const *const a = current();
    open_plain("B");
    writable(a).close();
    EXPECT_EXIT(flush_buffer(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_bins("Can't close bin"));
}

TEST_F(GenProfileBinsCloseDeathTest, EventsAreDroppedWhileTheProcessGoesDown)
{
    start();
    open_now("A");
    open_plain("B");
    EXPECT_EXIT(
        {
            // A handler of the exit still uses the bins: none of its calls reaches the tree.
            std::atexit([] {
                mem_fake_clear_log();
                open_now("C");
                GEN_PROFILE_BINS::close("wrong");
                GEN_PROFILE_BINS::close_recursively(nullptr);
                std::fprintf(stderr, "calls %u, current %s\n", static_cast<unsigned>(memory_calls().size()),
                             current_path().c_str());
            });
            err_report_internal_error("the end", "TEST", "test", 1);
        },
        ExitedWithCode(INTERNAL_ERROR_STATUS), AllOf(HasSubstr("the end"), HasSubstr("calls 0, current Fitter/A\n")));
}

// Closing many.

class GenProfileBinsCloseRecursively : public ProfileBinsTest
{
};

TEST_F(GenProfileBinsCloseRecursively, ClosesDownToAndIncludingTheBin)
{
    start();
    GEN_PROFILE_BIN const *const a = open_now("A");
    open_now("B");
    open_now("C");
    forget();
    GEN_PROFILE_BINS::close_recursively(a);
    EXPECT_EQ(current_path(), "Fitter");
    EXPECT_EQ(memory_calls().size(), 3U);
    EXPECT_THAT(m_messages.messages(), ElementsAre(debug("GEN", "Closing bins recursively..."),
                                                   debug("GEN", "Finished closing bins recursively")));
    EXPECT_EQ(mem_fake_suspensions(), 0);
}

TEST_F(GenProfileBinsCloseRecursively, OfTheInnermostBinIsAPlainClose)
{
    start();
    open_now("A");
    GEN_PROFILE_BIN const *const b = open_now("B");
    GEN_PROFILE_BINS::close_recursively(b);
    EXPECT_EQ(current_path(), "Fitter/A");
}

TEST_F(GenProfileBinsCloseRecursively, FlushesFirst)
{
    start();
    GEN_PROFILE_BIN const *const a = open_now("A");
    open_plain("B");
    close_bin();
    EXPECT_EQ(current(), a);
    GEN_PROFILE_BINS::close_recursively(a);
    EXPECT_EQ(current_path(), "Fitter");
    EXPECT_THAT(memory_calls(),
                ElementsAre("open A  suspended", "open B  suspended", "close  suspended", "close  suspended"));
}

TEST_F(GenProfileBinsCloseRecursively, UnwindsABinThatIsOpenInsideItself)
{
    start();
    open_now("A");
    open_now("A");
    GEN_PROFILE_BINS::close_recursively(current());
    EXPECT_EQ(current_path(), "Fitter/A"); // one close for the bin itself
}

using GenProfileBinsCloseRecursivelyDeathTest = GenProfileBinsCloseRecursively;

// The closes of buffered opens have no effect until the tenth event, and by then there are too many of them.
TEST_F(GenProfileBinsCloseRecursivelyDeathTest, ClosesTooManyOfTheBufferedOpens)
{
    start();
    GEN_PROFILE_BIN const *const root = current();
    open_plain("A");
    EXPECT_EXIT(GEN_PROFILE_BINS::close_recursively(root), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins("bin != 0LL"));
}

TEST_F(GenProfileBinsCloseRecursivelyDeathTest, NeedsTheBinToBeOpen)
{
    start();
    GEN_PROFILE_BIN const *const a = open_now("A");
    close_bin();
    EXPECT_EXIT(GEN_PROFILE_BINS::close_recursively(a), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_in_bins("bin != 0LL"));
}

// Ignoring.

class GenProfileBinsIgnore : public ProfileBinsTest
{
protected:
    // The message in which finalize reports the count.
    static std::string ignored(int count)
    {
        return std::to_string(count) +
               " bins may have been ignored improperly (use show_ignored_bin_warnings=on for details)";
    }
};

TEST_F(GenProfileBinsIgnore, LeavesNoTrace)
{
    start();
    GEN_PROFILE_BIN const *const root = current();
    EXPECT_EQ(GEN_PROFILE_BINS::open("T", "ignored", 0), nullptr);
    for (unsigned const flags : {PLAIN, IMMEDIATE, ANNOUNCED, GEN_PB_FLAG_ALL + 0U})
        EXPECT_EQ(GEN_PROFILE_BINS::open_with_user_tag("T", "A", flags, "tag", "Label"), nullptr) << flags;
    for (int i = 0; i < 4; ++i)
        GEN_PROFILE_BINS::close("any name");
    GEN_PROFILE_BINS::close("another");
    EXPECT_EQ(current(), root);
    EXPECT_THAT(memory_calls(), IsEmpty());
    EXPECT_THAT(m_messages.lines(), IsEmpty());
    EXPECT_NE(open_now("A"), nullptr); // recording goes on
    close_bin();
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    EXPECT_TRUE(m_messages.has(ignored(4)));
}

TEST_F(GenProfileBinsIgnore, NestedIgnoredOpensOnlyDeepen)
{
    start();
    GEN_PROFILE_BINS::open("T", "outer", 0);
    GEN_PROFILE_BINS::open("T", "inner", 0);
    GEN_PROFILE_BINS::open("T", "innermost", 0);
    close_bin();
    close_bin();
    EXPECT_EQ(open_now("A"), nullptr); // one level of ignoring is left
    close_bin();
    close_bin();
    EXPECT_NE(open_now("A"), nullptr);
    close_bin();
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    EXPECT_TRUE(m_messages.has(ignored(1)));
}

TEST_F(GenProfileBinsIgnore, FlushesTheBuffer)
{
    start();
    open_plain("A");
    GEN_PROFILE_BINS::open("T", "ignored", 0);
    EXPECT_EQ(current_path(), "Fitter/A");
}

TEST_F(GenProfileBinsIgnore, MakesNoEventAndReadsNoClock)
{
    start();
    std::uint64_t const count = gen_os_fake_reading_count();
    GEN_PROFILE_BINS::open("T", "ignored", 0);
    open_now("A");
    close_bin();
    close_bin();
    EXPECT_EQ(gen_os_fake_reading_count(), count);
}

TEST_F(GenProfileBinsIgnore, EndsAtTheLevelOfAnImmediateCurrentBin)
{
    start();
    open_now("A");
    GEN_PROFILE_BINS::open("T", "ignored", 0);
    close_bin();
    close_bin();
    EXPECT_EQ(current_path(), "Fitter");
}

TEST_F(GenProfileBinsIgnore, EndsAtTheLevelOfABufferedCurrentBin)
{
    start();
    open_plain("A");
    GEN_PROFILE_BINS::open("T", "ignored", 0);
    close_bin();
    close_bin(); // waits, as A's close does
    EXPECT_EQ(current_path(), "Fitter/A");
    flush_buffer();
    EXPECT_EQ(current_path(), "Fitter");
}

TEST_F(GenProfileBinsIgnore, WarnsOfEachDroppedOpenIfItIsAskedTo)
{
    mem_cfg_set("show_ignored_bin_warnings", "on");
    start();
    GEN_PROFILE_BINS::open("T", "outer::one", 0);
    GEN_PROFILE_BINS::open("T", "a::b", PLAIN);
    GEN_PROFILE_BINS::open("T", "inner", 0);
    GEN_PROFILE_BINS::open("T", "c", ANNOUNCED);
    EXPECT_THAT(m_messages.messages(),
                ElementsAre(debug("GEN", "Tried to open bin 'a::b' during ignored bin 'outer::one'"),
                            debug("GEN", "Tried to open bin 'c' during ignored bin 'outer::one'")));
}

TEST_F(GenProfileBinsIgnore, ReportsACountOfZeroToo)
{
    start();
    GEN_PROFILE_BINS::finalize("Fitter", /*close_root=*/true);
    EXPECT_EQ(m_messages.lines().back(), ignored(0));
}

using GenProfileBinsIgnoreDeathTest = GenProfileBinsIgnore;

TEST_F(GenProfileBinsIgnoreDeathTest, EndsAtTheImmediateLevelWithoutACurrentBin)
{
    start();
    close_bin();
    GEN_PROFILE_BINS::open("T", "ignored", 0);
    close_bin();
    EXPECT_EXIT(close_bin(), ExitedWithCode(INTERNAL_ERROR_STATUS), dies_in_bins("bin != 0LL"));
}

// The trace.

class GenProfileBinsTrace : public ProfileBinsTest
{
protected:
    GenProfileBinsTrace() { mem_cfg_set("debug_gen_bins", "on"); }

    template <typename Action>
    static std::string trace_of(Action action)
    {
        return output_to(StandardStream::ERROR_OUTPUT, action);
    }

    static void start_primary() { GEN_PROFILE_BINS::initialize("Fitter", /*primary=*/true, /*debug_messages=*/false); }
};

TEST_F(GenProfileBinsTrace, ReportsOpensAndClosesIndented)
{
    EXPECT_EQ(trace_of([] {
                  start_primary();
                  GEN_PROFILE_BINS::open("PRE", "A::B", ANNOUNCED);
                  open_now("C");
                  GEN_PROFILE_BINS::close("C");
                  GEN_PROFILE_BINS::close("A::B");
                  GEN_PROFILE_BINS::close(nullptr);
              }),
              "Opening bin 'GEN:Fitter' with flags 7fffffff\n"
              "   Opening bin 'PRE:A::B' with flags 300\n"
              "      Opening bin 'T:C' with flags 200\n"
              "      Closing bin 'C'\n"
              "      on_close: open bin is 'C', asked to close 'C' with flags 200\n"
              "   Closing bin 'A::B'\n"
              "   on_close: open bin is 'A->B', asked to close 'A::B' with flags 300\n"
              "Closing bin 'NULL'\n"
              "on_close: open bin is 'Fitter', asked to close 'NULL' with flags 7fffffff\n");
}

TEST_F(GenProfileBinsTrace, ReportsBufferedClosesWhenTheyAreProcessed)
{
    EXPECT_EQ(trace_of([] {
                  start_primary();
                  open_plain("A");
                  close_bin();
                  open_now("B");
              }),
              "Opening bin 'GEN:Fitter' with flags 7fffffff\n"
              "   Opening bin 'T:A' with flags 1\n"
              "   Closing bin 'NULL'\n"
              "   Opening bin 'T:B' with flags 200\n"
              "      on_close: open bin is 'A', asked to close 'NULL' with flags 1\n");
}

TEST_F(GenProfileBinsTrace, ReportsOnlyTheStartOfIgnoring)
{
    EXPECT_EQ(trace_of([] {
                  start_primary();
                  GEN_PROFILE_BINS::open("T", "ignored", 0);
                  open_now("A");
                  close_bin();
                  close_bin();
                  open_now("B");
              }),
              "Opening bin 'GEN:Fitter' with flags 7fffffff\n"
              "   Opening bin 'T:ignored' with flags 0\n"
              "   Opening bin 'T:B' with flags 200\n");
    EXPECT_TRUE(m_messages.has("Tried to open bin 'A' during ignored bin 'ignored'")); // comes with the trace
}

TEST_F(GenProfileBinsTrace, ReportsTheFlagsOfTheBinAndNotOfTheEvent)
{
    EXPECT_EQ(trace_of([] {
                  start_primary();
                  GEN_PROFILE_BINS::open("T", "A", 0x201);
                  GEN_PROFILE_BINS::open("T", "A", 0x202);
                  close_bin();
              }),
              "Opening bin 'GEN:Fitter' with flags 7fffffff\n"
              "   Opening bin 'T:A' with flags 201\n"
              "      Opening bin 'T:A' with flags 202\n"
              "      Closing bin 'NULL'\n"
              "      on_close: open bin is 'A', asked to close 'NULL' with flags 201\n");
}

TEST_F(GenProfileBinsTrace, IsThatOfThePrimaryProcessAlone)
{
    EXPECT_EQ(trace_of([this] {
                  start();
                  open_now("A");
                  GEN_PROFILE_BINS::open("T", "ignored", 0);
                  open_now("B");
              }),
              "");
    EXPECT_THAT(m_messages.lines(), IsEmpty());
}
