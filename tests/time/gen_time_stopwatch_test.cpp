// The stopwatches over scripted clocks.
#include "gen_time_sys.h"

#include "tests/support/gen_os_fake.h"
#include "tests/support/message_recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

using testing::ElementsAre;
using testing::ElementsAreArray;

namespace {

constexpr std::uint64_t NO_LAP_USEC = 1000000000000000;
constexpr char const *INVALID_FLAGS = "ERROR - INVALID FLAGS IN GEN_STOPWATCH::lap_str!";
constexpr unsigned ALL_CLOCKS = 7;

// Microseconds on each clock.
struct Clocks
{
    std::uint64_t wall;
    std::uint64_t user;
    std::uint64_t kernel;
};

// None begins at 0, so that a span without a start reading would show.
constexpr Clocks START = {1000000, 2000000, 3000000};

class StopwatchTest : public testing::Test
{
protected:
    StopwatchTest()
    {
        gen_os_fake_set_answers({});
        set_clocks(START);
    }

    void set_clocks(Clocks const &now)
    {
        m_now = now;
        gen_os_fake_set_clocks(/*cpu_usec=*/0, now.wall * 10);
        gen_os_fake_set_process_cpu(now.user * 10, now.kernel * 10);
    }

    void pass(Clocks const &span)
    {
        set_clocks({m_now.wall + span.wall, m_now.user + span.user, m_now.kernel + span.kernel});
    }

    // A watch of these clocks, stopped after a span.
    GEN_STOPWATCH measured(unsigned types, Clocks const &span, bool accumulate = false)
    {
        GEN_STOPWATCH watch(accumulate, types);
        watch.start();
        pass(span);
        watch.stop();
        return watch;
    }

    Clocks m_now = START;
};

class GenStopwatch : public StopwatchTest
{
};
class GenProcessStopwatch : public StopwatchTest
{
};

// The members in their order.

struct StopwatchMembers
{
    std::uint64_t start_wallclock;
    std::uint64_t start_user;
    std::uint64_t start_kernel;
    std::uint64_t total_wallclock;
    std::uint64_t total_user;
    std::uint64_t total_kernel;
    std::uint32_t types;
    bool running;
    bool accumulate;
};
static_assert(sizeof(GEN_STOPWATCH) == sizeof(StopwatchMembers));
static_assert(std::is_trivially_copyable_v<GEN_STOPWATCH> && std::is_standard_layout_v<GEN_STOPWATCH>);

struct ProcessStopwatchMembers
{
    std::uint64_t start_user;
    std::uint64_t total_user;
    std::uint64_t start_kernel;
    std::uint64_t total_kernel;
    bool running;
    char const *name;
};
static_assert(sizeof(GEN_PROCESS_STOPWATCH) == sizeof(ProcessStopwatchMembers));
static_assert(std::is_trivially_copyable_v<GEN_PROCESS_STOPWATCH> && std::is_standard_layout_v<GEN_PROCESS_STOPWATCH>);

StopwatchMembers members_of(GEN_STOPWATCH const &watch)
{
    StopwatchMembers members;
    std::memcpy(&members, &watch, sizeof members);
    return members;
}
ProcessStopwatchMembers members_of(GEN_PROCESS_STOPWATCH const &watch)
{
    ProcessStopwatchMembers members;
    std::memcpy(&members, &watch, sizeof members);
    return members;
}

std::vector<std::uint64_t> counters_of(GEN_STOPWATCH const &watch)
{
    StopwatchMembers const m = members_of(watch);
    return {m.start_wallclock, m.start_user, m.start_kernel, m.total_wallclock, m.total_user, m.total_kernel};
}
std::vector<std::uint64_t> counters_of(GEN_PROCESS_STOPWATCH const &watch)
{
    ProcessStopwatchMembers const m = members_of(watch);
    return {m.start_user, m.total_user, m.start_kernel, m.total_kernel};
}

// How often each clock was read since the object was made.
class Questions
{
public:
    std::uint64_t counter() const { return gen_os_fake_reading_count() - m_counter; }
    std::uint64_t cpu() const { return gen_os_fake_split_reading_count() - m_cpu; }

private:
    std::uint64_t m_counter = gen_os_fake_reading_count();
    std::uint64_t m_cpu = gen_os_fake_split_reading_count();
};

} // namespace

// The watch over three clocks: state.

TEST_F(GenStopwatch, FlagsHaveFixedValues)
{
    EXPECT_EQ(unsigned{GEN_STOPWATCH_WALLCLOCK}, 1U);
    EXPECT_EQ(unsigned{GEN_STOPWATCH_KERNEL}, 2U);
    EXPECT_EQ(unsigned{GEN_STOPWATCH_USER}, 4U);
    EXPECT_EQ(std::uint64_t{GEN_STOPWATCH::NO_LAP_USEC}, NO_LAP_USEC);
}

TEST_F(GenStopwatch, IsNewStoppedAtZero)
{
    Questions const questions;
    StopwatchMembers const plain = members_of(GEN_STOPWATCH());
    EXPECT_EQ(plain.types, 7U);
    EXPECT_FALSE(plain.accumulate);
    EXPECT_FALSE(plain.running);
    StopwatchMembers const accumulating = members_of(GEN_STOPWATCH(true));
    EXPECT_EQ(accumulating.types, 7U);
    EXPECT_TRUE(accumulating.accumulate);
    EXPECT_FALSE(accumulating.running);
    EXPECT_EQ(members_of(GEN_STOPWATCH(false, 0xfffffff0)).types, 0xfffffff0);
    EXPECT_THAT(counters_of(GEN_STOPWATCH()), ElementsAre(0, 0, 0, 0, 0, 0));
    EXPECT_THAT(counters_of(GEN_STOPWATCH(true, 5)), ElementsAre(0, 0, 0, 0, 0, 0));
    EXPECT_EQ(questions.counter() + questions.cpu(), 0U);
}

TEST_F(GenStopwatch, KeepsItsReadingsInOrder)
{
    GEN_STOPWATCH watch;
    watch.start();
    EXPECT_TRUE(members_of(watch).running);
    EXPECT_THAT(counters_of(watch), ElementsAre(1000000, 2000000, 3000000, 0, 0, 0));
    pass({10, 20, 40});
    watch.stop();
    EXPECT_FALSE(members_of(watch).running);
    EXPECT_THAT(counters_of(watch), ElementsAre(1000010, 2000020, 3000040, 10, 20, 40));
}

TEST_F(GenStopwatch, IgnoresARepeatedStart)
{
    GEN_STOPWATCH watch;
    watch.start();
    pass({10, 20, 40});
    Questions const questions;
    watch.start();
    EXPECT_EQ(questions.counter() + questions.cpu(), 0U);
    pass({100, 200, 400});
    watch.stop();
    EXPECT_EQ(watch.lap_usec(1), 110U);
    EXPECT_EQ(watch.lap_usec(4), 220U);
    EXPECT_EQ(watch.lap_usec(2), 440U);
}

TEST_F(GenStopwatch, IgnoresARepeatedStop)
{
    for (bool const accumulate : {false, true}) {
        GEN_STOPWATCH watch = measured(ALL_CLOCKS, {10, 20, 40}, accumulate);
        pass({100, 200, 400});
        Questions const questions;
        watch.stop();
        EXPECT_EQ(questions.counter() + questions.cpu(), 0U);
        EXPECT_EQ(watch.lap_usec(1), 10U);
        EXPECT_EQ(watch.lap_usec(6), 60U);
    }
    GEN_STOPWATCH never_started;
    never_started.stop();
    EXPECT_THAT(counters_of(never_started), ElementsAre(0, 0, 0, 0, 0, 0));
}

TEST_F(GenStopwatch, TotalsTheLastSpanOrAllSpans)
{
    for (bool const accumulate : {false, true}) {
        GEN_STOPWATCH watch = measured(ALL_CLOCKS, {10, 20, 40}, accumulate);
        pass({1000, 1000, 1000}); // between the spans
        watch.start();
        pass({1, 2, 4});
        watch.stop();
        EXPECT_EQ(watch.lap_usec(1), accumulate ? 11U : 1U);
        EXPECT_EQ(watch.lap_usec(4), accumulate ? 22U : 2U);
        EXPECT_EQ(watch.lap_usec(2), accumulate ? 44U : 4U);
        EXPECT_EQ(watch.lap_usec(6), accumulate ? 66U : 6U);
    }
}

TEST_F(GenStopwatch, ResetClearsAllButTheSelectionAndTheKind)
{
    for (bool const stop_first : {false, true}) {
        GEN_STOPWATCH watch(true, 5);
        watch.start();
        pass({10, 20, 40});
        if (stop_first)
            watch.stop();
        Questions const questions;
        watch.reset();
        EXPECT_EQ(questions.counter() + questions.cpu(), 0U);
        StopwatchMembers const members = members_of(watch);
        EXPECT_FALSE(members.running);
        EXPECT_TRUE(members.accumulate);
        EXPECT_EQ(members.types, 5U);
        EXPECT_THAT(counters_of(watch), ElementsAre(0, 0, 0, 0, 0, 0));
    }
}

TEST_F(GenStopwatch, SetTypesEndsTheSpanOfTheFormerClocksAndKeepsTheTotals)
{
    GEN_STOPWATCH watch(false, 1);
    watch.start();
    pass({10, 20, 40});
    watch.set_types(7);
    EXPECT_FALSE(members_of(watch).running);
    EXPECT_EQ(members_of(watch).types, 7U);
    pass({100, 200, 400});
    EXPECT_EQ(watch.lap_usec(1), 10U);
    watch.start();
    pass({1, 2, 4});
    EXPECT_EQ(watch.lap_usec(6), 6U);
    watch.set_types(2);
    EXPECT_EQ(watch.lap_usec(2), 0U); // the span ended directly after the lap
    EXPECT_EQ(watch.lap_usec(1), NO_LAP_USEC);
}

TEST_F(GenStopwatch, SetTypesOfAStoppedWatchReadsNothing)
{
    GEN_STOPWATCH watch = measured(ALL_CLOCKS, {10, 20, 40});
    Questions const questions;
    watch.set_types(1);
    EXPECT_EQ(questions.counter() + questions.cpu(), 0U);
    EXPECT_EQ(members_of(watch).types, 1U);
    EXPECT_EQ(watch.lap_usec(1), 10U);
    EXPECT_EQ(watch.lap_usec(2), NO_LAP_USEC);
}

TEST_F(GenStopwatch, ACopyGoesOnByItself)
{
    GEN_STOPWATCH watch(true);
    watch.start();
    pass({10, 20, 40});
    GEN_STOPWATCH copy(watch);
    GEN_STOPWATCH assigned(false, 1);
    assigned = watch;
    watch.stop();
    pass({1, 2, 4});
    copy.stop();
    EXPECT_EQ(watch.lap_usec(1), 10U);
    EXPECT_EQ(copy.lap_usec(1), 11U);
    EXPECT_EQ(assigned.lap_str(7), "6.6e-05 seconds (1.1e-05 wallclock, 2.2e-05 user, 4.4e-05 kernel)");
}

TEST_F(GenStopwatch, AsksForTheSelectedClocksAlone)
{
    struct Case
    {
        unsigned types;
        std::uint64_t counter;
        std::uint64_t cpu; // one question for both CPU clocks
    };
    constexpr Case CASES[] = {{0, 0, 0}, {1, 1, 0}, {2, 0, 1}, {3, 1, 1}, {4, 0, 1},
                              {5, 1, 1}, {6, 0, 1}, {7, 1, 1}, {8, 0, 0}, {15, 1, 1}};
    for (Case const &c : CASES) {
        GEN_STOPWATCH watch(false, c.types);
        Questions const at_start;
        watch.start();
        EXPECT_EQ(at_start.counter(), c.counter) << "types " << c.types;
        EXPECT_EQ(at_start.cpu(), c.cpu) << "types " << c.types;
        Questions const at_lap;
        watch.lap_usec(c.types);
        EXPECT_EQ(at_lap.counter(), c.counter) << "types " << c.types;
        EXPECT_EQ(at_lap.cpu(), c.cpu) << "types " << c.types;
    }
}

// The watch over three clocks: laps in numbers.

TEST_F(GenStopwatch, LapUsecTakesOneClockOrBothCpuClocks)
{
    for (unsigned types = 0; types < 16; ++types) {
        GEN_STOPWATCH watch = measured(types, {10, 20, 40});
        for (unsigned asked = 0; asked < 32; ++asked) {
            bool const is_selected = (asked & ~types) == 0;
            std::uint64_t const expected = !is_selected ? NO_LAP_USEC
                                           : asked == 1 ? 10
                                           : asked == 2 ? 40
                                           : asked == 4 ? 20
                                           : asked == 6 ? 60
                                                        : NO_LAP_USEC;
            EXPECT_EQ(watch.lap_usec(asked), expected) << "types " << types << " asked " << asked;
        }
        EXPECT_EQ(watch.lap_usec(std::numeric_limits<unsigned>::max()), NO_LAP_USEC) << "types " << types;
    }
}

TEST_F(GenStopwatch, LapsOfARunningWatchFollowEachOther)
{
    GEN_STOPWATCH watch;
    watch.start();
    pass({500000, 0, 0});
    EXPECT_EQ(watch.lap_usec(1), 500000U);
    EXPECT_EQ(watch.lap_usec(1), 0U);
    pass({3, 20, 40});
    EXPECT_EQ(watch.lap_usec(6), 60U);
    EXPECT_EQ(watch.lap_usec(2), 0U); // the lap before took both CPU clocks
    pass({0, 1, 2});
    EXPECT_EQ(watch.lap_usec(4), 1U);
    EXPECT_TRUE(members_of(watch).running);
}

TEST_F(GenStopwatch, LapsOfAnAccumulatingWatchAddUp)
{
    GEN_STOPWATCH watch(true);
    watch.start();
    pass({10, 20, 40});
    EXPECT_EQ(watch.lap_usec(1), 10U);
    EXPECT_EQ(watch.lap_usec(1), 10U);
    pass({1, 2, 4});
    EXPECT_EQ(watch.lap_usec(1), 11U);
    EXPECT_EQ(watch.lap_usec(6), 66U);
}

TEST_F(GenStopwatch, LapsOfAStoppedWatchDoNotChange)
{
    for (bool const accumulate : {false, true}) {
        GEN_STOPWATCH watch = measured(ALL_CLOCKS, {1500000, 20, 40}, accumulate);
        Questions const questions;
        for (int i = 0; i < 3; ++i) {
            pass({100, 200, 400});
            EXPECT_EQ(watch.lap_usec(1), 1500000U);
            EXPECT_EQ(watch.lap_usec(6), 60U);
            EXPECT_EQ(watch.lap_sec(1), 1.5);
            EXPECT_EQ(watch.lap_time(1), 1.5);
            EXPECT_EQ(watch.lap_seconds(1), 1);
            EXPECT_EQ(watch.lap_str(1), "1.5 seconds");
        }
        EXPECT_EQ(questions.counter() + questions.cpu(), 0U);
    }
}

TEST_F(GenStopwatch, AQuestionWithoutAFigureBeginsANewLapToo)
{
    for (unsigned const asked : {0U, 3U, 5U, 7U, 8U}) {
        GEN_STOPWATCH watch;
        watch.start();
        pass({10, 20, 40});
        EXPECT_EQ(watch.lap_usec(asked), NO_LAP_USEC) << "asked " << asked;
        EXPECT_EQ(watch.lap_usec(1), 0U) << "asked " << asked;
    }
}

TEST_F(GenStopwatch, LapFormsInSecondsRebaseARunningWatch)
{
    GEN_STOPWATCH watch;
    watch.start();
    pass({2500000, 0, 0});
    EXPECT_EQ(watch.lap_sec(1), 2.5);
    pass({1250000, 0, 0});
    EXPECT_EQ(watch.lap_time(1), 1.25);
    pass({3999999, 0, 0});
    EXPECT_EQ(watch.lap_seconds(1), 3);
    EXPECT_EQ(watch.lap_seconds(1), 0);
}

TEST_F(GenStopwatch, LapFormsInSeconds)
{
    struct Case
    {
        std::uint64_t usec;
        double sec;
        std::int32_t seconds;
    };
    constexpr Case CASES[] = {
        {0, 0.0, 0},
        {1, 1 / 1e6, 0},
        {999999, 0.999999, 0},
        {1000000, 1.0, 1},
        {1999999, 1.999999, 1},
        {123456789, 123.456789, 123},
        {2147483647999999, 2147483647.999999, 2147483647},
        {2147483648000000, 2147483648.0, 2147483647}, // more than fits
    };
    for (Case const &c : CASES) {
        GEN_STOPWATCH watch = measured(GEN_STOPWATCH_USER, {0, c.usec, 0});
        EXPECT_EQ(watch.lap_sec(GEN_STOPWATCH_USER), c.sec) << "usec " << c.usec;
        EXPECT_EQ(watch.lap_time(GEN_STOPWATCH_USER), c.sec) << "usec " << c.usec;
        EXPECT_EQ(watch.lap_seconds(GEN_STOPWATCH_USER), c.seconds) << "usec " << c.usec;
    }
}

TEST_F(GenStopwatch, LapFormsInSecondsOfNoFigure)
{
    GEN_STOPWATCH watch = measured(1, {10, 20, 40});
    for (unsigned const asked : {0U, 2U, 3U, 8U}) {
        EXPECT_EQ(watch.lap_sec(asked), 1e9) << "asked " << asked;
        EXPECT_EQ(watch.lap_time(asked), 1e9) << "asked " << asked;
        EXPECT_EQ(watch.lap_seconds(asked), 1000000000) << "asked " << asked;
    }
}

TEST_F(GenStopwatch, AClockThatWentBackwardWraps)
{
    GEN_STOPWATCH watch;
    watch.start();
    set_clocks({START.wall, START.user - 1, START.kernel});
    watch.stop();
    EXPECT_EQ(watch.lap_usec(4), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(watch.lap_sec(4), 18446744073709.551615); // the total is unsigned
    EXPECT_EQ(watch.lap_seconds(4), std::numeric_limits<std::int32_t>::max());
}

// The watch over three clocks: laps as text.

TEST_F(GenStopwatch, LapStrHasAFormForEachSelection)
{
    struct Case
    {
        unsigned selection;
        char const *text;
    };
    constexpr Case CASES[] = {
        {0, INVALID_FLAGS},
        {1, "1.5 seconds"},
        {2, "0.25 seconds"},
        {3, "1.5 seconds (0.25kernel)"},
        {4, "2.75 seconds"},
        {5, "1.5 seconds (2.75user)"},
        {6, "3 seconds (2.75 user, 0.25 kernel)"},
        {7, "3 seconds (1.5 wallclock, 2.75 user, 0.25 kernel)"},
        {8, INVALID_FLAGS},
        {9, INVALID_FLAGS},
        {15, INVALID_FLAGS},
    };
    constexpr Clocks SPAN = {1500000, 2750000, 250000};
    for (Case const &c : CASES) {
        GEN_STOPWATCH selecting = measured(c.selection, SPAN);
        EXPECT_EQ(selecting.lap_str(c.selection), c.text) << "selection " << c.selection;
        EXPECT_EQ(selecting.lap(c.selection), c.text) << "selection " << c.selection;
        EXPECT_EQ(selecting.lap_str(~0U), c.text) << "selection " << c.selection;
        GEN_STOPWATCH all = measured(~0U, SPAN);
        EXPECT_EQ(all.lap_str(c.selection), c.text) << "selection " << c.selection;
    }
}

TEST_F(GenStopwatch, LapStrShowsWhatIsBothAskedForAndSelected)
{
    constexpr Clocks SPAN = {1500000, 2750000, 250000};
    for (unsigned types = 0; types < 8; ++types)
        for (unsigned asked = 0; asked < 16; ++asked) {
            GEN_STOPWATCH watch = measured(types, SPAN);
            GEN_STOPWATCH all = measured(ALL_CLOCKS, SPAN);
            EXPECT_EQ(watch.lap_str(asked), all.lap_str(asked & types)) << "types " << types << " asked " << asked;
        }
    GEN_STOPWATCH watch = measured(5, SPAN);
    EXPECT_EQ(watch.lap_str(7), "1.5 seconds (2.75user)");
}

TEST_F(GenStopwatch, LapStrHasAFormWhereLapUsecHasNoFigure)
{
    GEN_STOPWATCH watch = measured(ALL_CLOCKS, {1500000, 2750000, 250000});
    EXPECT_EQ(watch.lap_usec(3), NO_LAP_USEC);
    EXPECT_EQ(watch.lap_str(3), "1.5 seconds (0.25kernel)");
}

TEST_F(GenStopwatch, LapStrRendersSixDigits)
{
    struct Case
    {
        std::uint64_t usec;
        char const *text;
    };
    constexpr Case CASES[] = {
        {0, "0 seconds"},
        {1, "1e-06 seconds"},
        {123, "0.000123 seconds"},
        {100000, "0.1 seconds"},
        {1000000, "1 seconds"},
        {1234567, "1.23457 seconds"},
        {123456000000, "123456 seconds"},
        {1234567000000, "1.23457e+06 seconds"},
    };
    for (Case const &c : CASES) {
        set_clocks(START);
        EXPECT_EQ(measured(1, {c.usec, 0, 0}).lap_str(1), c.text) << "usec " << c.usec;
        EXPECT_EQ(measured(4, {0, c.usec, 0}).lap_str(4), c.text) << "usec " << c.usec;
        EXPECT_EQ(measured(2, {0, 0, c.usec}).lap_str(2), c.text) << "usec " << c.usec;
    }
    EXPECT_EQ(measured(6, {0, 1234564, 1234564}).lap_str(6), "2.46913 seconds (1.23456 user, 1.23456 kernel)");
}

TEST_F(GenStopwatch, LapStrBeginsANewLapIfItShowsAnything)
{
    for (unsigned const asked : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 9U}) {
        GEN_STOPWATCH watch;
        watch.start();
        pass({10, 20, 40});
        EXPECT_NE(watch.lap_str(asked), INVALID_FLAGS) << "asked " << asked;
        EXPECT_EQ(watch.lap_usec(1), 0U) << "asked " << asked;
        EXPECT_TRUE(members_of(watch).running);
    }
    // An unknown bit that was selected is something, though there is nothing to show.
    GEN_STOPWATCH watch(false, 15);
    watch.start();
    pass({10, 20, 40});
    EXPECT_EQ(watch.lap_str(8), INVALID_FLAGS);
    EXPECT_EQ(watch.lap_usec(1), 0U);
}

TEST_F(GenStopwatch, LapStrOfNoSelectedClockGoesOnWithTheLap)
{
    for (unsigned const asked : {0U, 8U, 16U}) {
        GEN_STOPWATCH watch;
        watch.start();
        pass({10, 20, 40});
        Questions const questions;
        EXPECT_EQ(watch.lap_str(asked), INVALID_FLAGS) << "asked " << asked;
        EXPECT_EQ(watch.lap(asked), INVALID_FLAGS) << "asked " << asked;
        EXPECT_EQ(questions.counter() + questions.cpu(), 0U) << "asked " << asked;
        EXPECT_EQ(watch.lap_usec(1), 10U) << "asked " << asked;
    }
}

// The watch of CPU time.

TEST_F(GenProcessStopwatch, IsNewStoppedAtZero)
{
    char const name[] = "flow";
    Questions const questions;
    GEN_PROCESS_STOPWATCH const watch(name);
    EXPECT_THAT(counters_of(watch), ElementsAre(0, 0, 0, 0));
    EXPECT_FALSE(members_of(watch).running);
    EXPECT_EQ(members_of(watch).name, name); // kept, not copied
    EXPECT_EQ(questions.counter() + questions.cpu(), 0U);
}

TEST_F(GenProcessStopwatch, AddsUpItsSpansAndLaps)
{
    GEN_PROCESS_STOPWATCH watch("flow");
    watch.start();
    EXPECT_TRUE(members_of(watch).running);
    EXPECT_THAT(counters_of(watch), ElementsAre(2000000, 0, 3000000, 0));
    pass({0, 20, 40});
    watch.start(); // ignored
    watch.lap();
    EXPECT_TRUE(members_of(watch).running);
    EXPECT_THAT(counters_of(watch), ElementsAre(2000020, 20, 3000040, 40));
    pass({0, 1, 2});
    watch.stop(); // leaves the readings of the start where they are
    EXPECT_FALSE(members_of(watch).running);
    EXPECT_THAT(counters_of(watch), ElementsAre(2000020, 21, 3000040, 42));
    pass({0, 1000, 1000});
    watch.stop(); // ignored, like a lap
    watch.lap();
    EXPECT_THAT(counters_of(watch), ElementsAre(2000020, 21, 3000040, 42));
    watch.start();
    EXPECT_THAT(counters_of(watch), ElementsAre(2001021, 21, 3001042, 42));
    pass({0, 100, 200});
    watch.stop();
    EXPECT_THAT(counters_of(watch), ElementsAre(2001021, 121, 3001042, 242));
}

TEST_F(GenProcessStopwatch, ResetClearsTheTotals)
{
    for (bool const stop_first : {false, true}) {
        set_clocks(START);
        GEN_PROCESS_STOPWATCH watch("flow");
        watch.start();
        pass({0, 20, 40});
        watch.lap();
        if (stop_first)
            watch.stop();
        Questions const questions;
        watch.reset();
        EXPECT_EQ(questions.cpu(), 0U);
        EXPECT_FALSE(members_of(watch).running);
        EXPECT_THAT(counters_of(watch), ElementsAre(2000020, 0, 3000040, 0));
        pass({0, 1000, 1000});
        EXPECT_EQ(watch.get_elapsed_cpu_time(), 0);
        watch.start();
        pass({0, 1, 2});
        watch.stop();
        EXPECT_THAT(counters_of(watch), ElementsAre(2001020, 1, 3001040, 2));
    }
}

TEST_F(GenProcessStopwatch, AsksOnceForBothClocks)
{
    Questions const questions;
    GEN_PROCESS_STOPWATCH watch("flow");
    watch.start();
    EXPECT_EQ(questions.cpu(), 1U);
    watch.lap();
    EXPECT_EQ(questions.cpu(), 2U);
    watch.get_elapsed_cpu_time();
    EXPECT_EQ(questions.cpu(), 3U);
    watch.stop();
    EXPECT_EQ(questions.cpu(), 4U);
    watch.get_elapsed_cpu_time();
    watch.print_stats();
    EXPECT_EQ(questions.cpu(), 4U);
    EXPECT_EQ(questions.counter(), 0U);
}

TEST_F(GenProcessStopwatch, ElapsedCpuTimeIsRoundedToSeconds)
{
    struct Case
    {
        std::uint64_t user;
        std::uint64_t kernel;
        std::int64_t seconds;
    };
    constexpr Case CASES[] = {
        {0, 0, 0},
        {499999, 0, 0},
        {500000, 0, 1},
        {0, 500000, 1},
        {1499999, 0, 1},
        {1499998, 1, 1},
        {1500000, 0, 2},
        {1000000, 500000, 2}, // the sum is rounded, not the parts
        {400000, 400000, 1},
        {5000000000499999, 0, 5000000000},
        {5000000000500000, 0, 5000000001},
    };
    for (Case const &c : CASES) {
        GEN_PROCESS_STOPWATCH watch("flow");
        watch.start();
        pass({0, c.user, c.kernel});
        watch.stop();
        EXPECT_EQ(watch.get_elapsed_cpu_time(), c.seconds) << c.user << " + " << c.kernel;
        EXPECT_EQ(watch.get_elapsed_cpu_time(), c.seconds) << c.user << " + " << c.kernel;
    }
}

TEST_F(GenProcessStopwatch, ElapsedCpuTimeIsALapOfARunningWatch)
{
    GEN_PROCESS_STOPWATCH watch("flow");
    watch.start();
    pass({0, 1000000, 0});
    EXPECT_EQ(watch.get_elapsed_cpu_time(), 1);
    EXPECT_TRUE(members_of(watch).running);
    EXPECT_THAT(counters_of(watch), ElementsAre(3000000, 1000000, 3000000, 0));
    pass({0, 0, 2000000});
    EXPECT_EQ(watch.get_elapsed_cpu_time(), 3);
}

TEST_F(GenProcessStopwatch, PrintStatsWritesThreeDebugLines)
{
    struct Case
    {
        char const *name;
        std::uint64_t user;
        std::uint64_t kernel;
        char const *lines[3];
    };
    constexpr Case CASES[] = {
        {"flow",
         1500000,
         250000,
         {"PROCESS_STOPWATCH(flow): user time: 1.500000 seconds",
          "PROCESS_STOPWATCH(flow): kernel time: 0.250000 seconds",
          "PROCESS_STOPWATCH(flow): user+kernel time: 1.750000 seconds"}},
        {"",
         0,
         1,
         {"PROCESS_STOPWATCH(): user time: 0.000000 seconds", "PROCESS_STOPWATCH(): kernel time: 0.000001 seconds",
          "PROCESS_STOPWATCH(): user+kernel time: 0.000001 seconds"}},
        {nullptr,
         1000000,
         2000000,
         {"PROCESS_STOPWATCH((null)): user time: 1.000000 seconds",
          "PROCESS_STOPWATCH((null)): kernel time: 2.000000 seconds",
          "PROCESS_STOPWATCH((null)): user+kernel time: 3.000000 seconds"}},
        {"50%s%n", // a name is no format
         1000000,
         2000000,
         {"PROCESS_STOPWATCH(50%s%n): user time: 1.000000 seconds",
          "PROCESS_STOPWATCH(50%s%n): kernel time: 2.000000 seconds",
          "PROCESS_STOPWATCH(50%s%n): user+kernel time: 3.000000 seconds"}},
        // Single precision holds 24 bits: 2^24 + 1 and 123456789 are not among its numbers.
        {"long",
         16777217,
         123456789,
         {"PROCESS_STOPWATCH(long): user time: 16.777216 seconds",
          "PROCESS_STOPWATCH(long): kernel time: 123.456792 seconds",
          "PROCESS_STOPWATCH(long): user+kernel time: 140.234000 seconds"}},
    };
    for (Case const &c : CASES) {
        GEN_PROCESS_STOPWATCH watch(c.name);
        watch.start();
        pass({0, c.user, c.kernel});
        watch.stop();
        MessageRecorder recorder;
        watch.print_stats();
        std::vector<RecordedMessage> expected;
        for (char const *line : c.lines)
            expected.push_back({MEM_MSG_DEBUG, "GEN", line});
        EXPECT_THAT(recorder.messages(), ElementsAreArray(expected));
    }
}

TEST_F(GenProcessStopwatch, PrintStatsIsNoLap)
{
    GEN_PROCESS_STOPWATCH watch("flow");
    watch.start();
    pass({0, 1000000, 0});
    watch.lap();
    pass({0, 5000000, 0});
    MessageRecorder recorder;
    watch.print_stats();
    EXPECT_THAT(recorder.lines(), ElementsAre("PROCESS_STOPWATCH(flow): user time: 1.000000 seconds",
                                              "PROCESS_STOPWATCH(flow): kernel time: 0.000000 seconds",
                                              "PROCESS_STOPWATCH(flow): user+kernel time: 1.000000 seconds"));
    EXPECT_TRUE(members_of(watch).running);
    EXPECT_EQ(watch.get_elapsed_cpu_time(), 6);
}

TEST_F(GenProcessStopwatch, ACopyGoesOnByItself)
{
    GEN_PROCESS_STOPWATCH watch("flow");
    watch.start();
    pass({0, 1000000, 0});
    GEN_PROCESS_STOPWATCH copy(watch);
    watch.stop();
    pass({0, 0, 2000000});
    EXPECT_EQ(watch.get_elapsed_cpu_time(), 1);
    EXPECT_EQ(copy.get_elapsed_cpu_time(), 3);
}
