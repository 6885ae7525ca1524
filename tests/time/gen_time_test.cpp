#include "gen_time_sys.h"

#include "tests/support/platform.h"
#include "tests/support/time_zone.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <thread>
#include <time.h>
#include <vector>

#include <gtest/gtest.h>

namespace {

// Long enough for any machine, so that a test of progress fails in the end instead of hanging.
constexpr double PATIENCE_SEC = 60;

// A reading of both CPU clocks.
struct UserAndKernel
{
    UserAndKernel() { gen_get_usec_user_and_kernel(&user, &kernel); }
    std::uint64_t sum() const { return user + kernel; }

    std::uint64_t user = 0;
    std::uint64_t kernel = 0;
};

template <typename Condition>
bool burn_cpu_until(Condition condition)
{
    auto const start = std::chrono::steady_clock::now();
    while (!condition()) {
        std::chrono::duration<double> const passed = std::chrono::steady_clock::now() - start;
        if (passed.count() > PATIENCE_SEC)
            return false;
    }
    return true;
}

} // namespace

// Elapsed time.

struct ElapsedCase
{
    std::int64_t seconds;
    char const *text;
};
constexpr ElapsedCase ELAPSED_CASES[] = {
    {0, "00:00:00"},
    {9, "00:00:09"},
    {10, "00:00:10"},
    {59, "00:00:59"},
    {60, "00:01:00"},
    {600, "00:10:00"},
    {3599, "00:59:59"},
    {3600, "01:00:00"},
    {36000, "10:00:00"},
    {86399, "23:59:59"},
    // The day field is never padded.
    {86400, "1:00:00:00"},
    {90061, "1:01:01:01"},
    {864000, "10:00:00:00"},
    {std::numeric_limits<std::int64_t>::max(), "106751991167300:15:30:07"},
    // A 0 goes before a negative field, whatever its width; the day field is left out.
    {-1, "00:00:0-1"},
    {-5, "00:00:0-5"},
    {-10, "00:00:0-10"},
    {-60, "00:0-1:00"},
    {-61, "00:0-1:0-1"},
    {-3600, "0-1:00:00"},
    {-3700, "0-1:0-1:0-40"},
    {-36000, "0-10:00:00"},
    {-86399, "0-23:0-59:0-59"},
    {-86400, "00:00:00"},
    {-90061, "0-1:0-1:0-1"},
    {-172801, "00:00:0-1"},
    {std::numeric_limits<std::int64_t>::min(), "0-15:0-30:0-8"},
};

TEST(GenFormatElapsedTime, RendersFields)
{
    for (ElapsedCase const &c : ELAPSED_CASES)
        EXPECT_EQ(gen_format_elapsed_time(c.seconds), c.text) << "seconds " << c.seconds;
}

TEST(GenFormatElapsedTime, GivesEverySecondOfTwoDaysBack)
{
    for (std::int64_t seconds = 0; seconds < 2 * 86400 + 3600; ++seconds) {
        std::string const text = gen_format_elapsed_time(seconds);
        int day = 0;
        int hour = 0;
        int minute = 0;
        int second = 0;
        bool const has_day = text.size() == 10;
        ASSERT_TRUE(has_day == (seconds >= 86400) && text.size() == (has_day ? 10U : 8U)) << text;
        int const fields = has_day ? std::sscanf(text.c_str(), "%d:%2d:%2d:%2d", &day, &hour, &minute, &second)
                                   : 1 + std::sscanf(text.c_str(), "%2d:%2d:%2d", &hour, &minute, &second);
        ASSERT_EQ(fields, 4) << text;
        ASSERT_EQ(day * 86400 + hour * 3600 + minute * 60 + second, seconds) << text;
    }
}

TEST(GenFormatElapsedSec, CutsTowardsZero)
{
    struct Case
    {
        double seconds;
        char const *text;
    };
    constexpr double INFINITE = std::numeric_limits<double>::infinity();
    constexpr Case CASES[] = {
        {0.0, "00:00:00"},
        {0.999, "00:00:00"},
        {59.9, "00:00:59"},
        {86400.5, "1:00:00:00"},
        {-0.5, "00:00:00"},
        {-0.999, "00:00:00"},
        {-1.9, "00:00:0-1"},
        {-61.5, "00:0-1:0-1"},
        // A value outside the range gives the nearest count, NaN gives 0.
        {1e300, "106751991167300:15:30:07"},
        {INFINITE, "106751991167300:15:30:07"},
        {-1e300, "0-15:0-30:0-8"},
        {-INFINITE, "0-15:0-30:0-8"},
        {std::numeric_limits<double>::quiet_NaN(), "00:00:00"},
    };
    for (Case const &c : CASES)
        EXPECT_EQ(gen_format_elapsed_sec(c.seconds), c.text) << "seconds " << c.seconds;
}

// Clocks.

TEST(GenWallClock, IsTheCounterScaledByItsFrequency)
{
    std::uint64_t const frequency = gen_get_hires_tick_frequency();
    if (!ON_WINDOWS) {
        EXPECT_EQ(frequency, 10000000U);
    }
    ASSERT_GT(frequency, 0U);
    for (int i = 0; i < 1000; ++i) {
        std::uint64_t const ticks_before = gen_get_hires_ticks();
        std::uint64_t const usec = gen_get_usec_wallclock();
        std::uint64_t const ticks_after = gen_get_hires_ticks();
        ASSERT_LE(ticks_before, ticks_after);
        ASSERT_LE(ticks_before * 1000000 / frequency, usec);
        ASSERT_LE(usec, ticks_after * 1000000 / frequency);
    }
}

TEST(GenWallClock, SecondsAreMicrosecondsDivided)
{
    for (int i = 0; i < 1000; ++i) {
        std::uint64_t const before = gen_get_usec_wallclock();
        double const sec = gen_get_sec_wallclock();
        std::uint64_t const after = gen_get_usec_wallclock();
        ASSERT_LE(static_cast<double>(before) / 1e6, sec);
        ASSERT_LE(sec, static_cast<double>(after) / 1e6);
    }
}

TEST(GenWallClock, GoesOnAndKeepsPaceWithTheSystem)
{
    using namespace std::chrono;
    auto const outer_start = steady_clock::now();
    std::uint64_t const start = gen_get_usec_wallclock();
    auto const inner_start = steady_clock::now();
    ASSERT_TRUE(burn_cpu_until([&] { return gen_get_usec_wallclock() - start > 20000; }));
    auto const inner_end = steady_clock::now();
    auto const passed = static_cast<std::int64_t>(gen_get_usec_wallclock() - start);
    auto const outer_end = steady_clock::now();
    constexpr std::int64_t RESOLUTION_USEC = 1000;
    EXPECT_GE(passed, duration_cast<microseconds>(inner_end - inner_start).count() - RESOLUTION_USEC);
    EXPECT_LE(passed, duration_cast<microseconds>(outer_end - outer_start).count() + RESOLUTION_USEC);
}

TEST(GenCpuClock, RisesWhileTheProcessWorks)
{
    std::uint64_t const start_usec = gen_get_usec_cpu();
    std::uint32_t const start_msec = gen_get_tick_count();
    EXPECT_TRUE(burn_cpu_until([&] { return gen_get_usec_cpu() >= start_usec + 30000; }));
    EXPECT_GE(gen_get_tick_count() - start_msec, 29U);
}

TEST(GenCpuClock, CountsAllThreadsOfTheProcess)
{
    std::uint64_t const start = gen_get_usec_cpu();
    bool rose = false;
    std::thread worker([&] { rose = burn_cpu_until([&] { return gen_get_usec_cpu() >= start + 30000; }); });
    worker.join();
    EXPECT_TRUE(rose);
    EXPECT_GE(gen_get_usec_cpu(), start + 30000);
}

TEST(GenCpuClock, DoesNotAdvanceInASleepingProcess)
{
    constexpr std::uint64_t SLEEP_USEC = 400000;
    std::uint64_t const wall_start = gen_get_usec_wallclock();
    std::uint64_t const start = gen_get_usec_cpu();
    std::this_thread::sleep_for(std::chrono::microseconds(SLEEP_USEC));
    std::uint64_t const cpu = gen_get_usec_cpu() - start;
    EXPECT_GE(gen_get_usec_wallclock() - wall_start, SLEEP_USEC - 20000); // the wall clock goes on
    EXPECT_LT(cpu, SLEEP_USEC / 2);
}

TEST(GenCpuClock, IsUserPlusKernel)
{
    constexpr std::uint64_t RESOLUTION_USEC = 200000; // a few of the coarsest ticks in which systems count the split
    std::uint64_t const before = gen_get_usec_cpu();
    std::uint64_t user = std::numeric_limits<std::uint64_t>::max();
    std::uint64_t kernel = std::numeric_limits<std::uint64_t>::max();
    gen_get_usec_user_and_kernel(&user, &kernel);
    std::uint64_t const after = gen_get_usec_cpu();
    EXPECT_LE(before, user + kernel + RESOLUTION_USEC);
    EXPECT_LE(user + kernel, after + RESOLUTION_USEC);
}

TEST(GenCpuClock, FormsOfTheReadingAgree)
{
    for (int i = 0; i < 200; ++i) {
        std::uint64_t const before = gen_get_usec_cpu();
        double const sec = gen_get_sec_cpu();
        std::uint32_t const msec = gen_get_tick_count();
        std::uint64_t const after = gen_get_usec_cpu();
        ASSERT_LE(before, after);
        ASSERT_LE(static_cast<double>(before) / 1e6, sec);
        ASSERT_LE(sec, static_cast<double>(after) / 1e6);
        ASSERT_LE(static_cast<std::uint32_t>(before / 1000), msec);
        ASSERT_LE(msec, static_cast<std::uint32_t>(after / 1000));
    }
}

// A switch without a way back; the clocks of a process outside a job are the same after it.
TEST(GenCpuClock, GoesOnWithoutTheJob)
{
    std::uint64_t const start = gen_get_usec_cpu();
    gen_disable_windows_cpu_time_hack();
    gen_disable_windows_cpu_time_hack();
    EXPECT_TRUE(burn_cpu_until([&] { return gen_get_usec_cpu() >= start + 20000; }));
}

// Stopwatches over the real clocks; gen_time_stopwatch_test.cpp has their rules.

TEST(GenStopwatch, MeasuresWhatTheClocksShow)
{
    std::uint64_t const wall_before = gen_get_usec_wallclock();
    GEN_STOPWATCH watch;
    GEN_STOPWATCH total(/*accumulate=*/true);
    total.start();
    watch.start();
    std::uint64_t const wall_start = gen_get_usec_wallclock();
    UserAndKernel const cpu_start;
    ASSERT_TRUE(burn_cpu_until([&] { return UserAndKernel().sum() >= cpu_start.sum() + 30000; }));
    std::uint64_t const wall_end = gen_get_usec_wallclock();
    watch.stop();
    total.lap_usec(GEN_STOPWATCH_WALLCLOCK);
    total.stop(); // a second lap
    std::uint64_t const wall_after = gen_get_usec_wallclock();

    std::uint64_t const wall = watch.lap_usec(GEN_STOPWATCH_WALLCLOCK);
    EXPECT_GE(wall, wall_end - wall_start);
    EXPECT_LE(wall, wall_after - wall_before);
    EXPECT_GE(total.lap_usec(GEN_STOPWATCH_WALLCLOCK), wall);
    EXPECT_LE(total.lap_usec(GEN_STOPWATCH_WALLCLOCK), wall_after - wall_before);

    std::uint64_t const cpu = watch.lap_usec(GEN_STOPWATCH_KERNEL | GEN_STOPWATCH_USER);
    EXPECT_GE(cpu, 30000U);
    EXPECT_EQ(cpu, watch.lap_usec(GEN_STOPWATCH_KERNEL) + watch.lap_usec(GEN_STOPWATCH_USER));
    EXPECT_GE(total.lap_usec(GEN_STOPWATCH_KERNEL | GEN_STOPWATCH_USER), cpu);
}

TEST(GenProcessStopwatch, MeasuresWhatTheClocksShow)
{
    GEN_PROCESS_STOPWATCH watch("busy");
    watch.start();
    UserAndKernel const cpu_start;
    ASSERT_TRUE(burn_cpu_until([&] { return UserAndKernel().sum() >= cpu_start.sum() + 600000; }));
    watch.stop();
    std::int64_t const seconds = watch.get_elapsed_cpu_time();
    EXPECT_GE(seconds, 1); // more than a half
    EXPECT_LT(seconds, PATIENCE_SEC);
}

TEST(GenTime, ServesManyThreadsAtOnce)
{
    constexpr int THREAD_COUNT = 4;
    constexpr int ROUNDS = 400;
    TimeZone const zone("UTC0");
    std::vector<std::string> faults(THREAD_COUNT);
    std::vector<std::thread> threads;
    for (std::string &fault : faults)
        threads.emplace_back([&fault] {
            std::uint64_t usec = 0;
            double sec = 0;
            std::uint64_t ticks = 0;
            std::uint64_t cpu = 0;
            std::int64_t calendar = 0;
            for (int i = 0; i < ROUNDS && fault.empty(); ++i) {
                std::uint64_t const next_usec = gen_get_usec_wallclock();
                double const next_sec = gen_get_sec_wallclock();
                std::uint64_t const next_ticks = gen_get_hires_ticks();
                std::uint64_t const next_cpu = gen_get_usec_cpu();
                std::int64_t const next_calendar = gen_get_current_time_milliseconds();
                std::uint64_t user = 0;
                std::uint64_t kernel = 0;
                gen_get_usec_user_and_kernel(&user, &kernel);
                if (next_usec < usec || next_sec < sec || next_ticks < ticks || next_cpu < cpu)
                    fault = "a clock went backward in round " + std::to_string(i);
                if (next_calendar + 60000 < calendar)
                    fault = "the calendar went backward in round " + std::to_string(i);
                if (gen_get_hires_tick_frequency() == 0 || gen_get_sec_cpu() < 0 || gen_get_current_time().size() != 8)
                    fault = "a bad reading in round " + std::to_string(i);
                std::string const text = gen_get_date_and_time(i) + '|' + gen_get_iso_style_date_and_time(i) + '|' +
                                         gen_get_formatted_time_from_milliseconds(i);
                char expected[128];
                std::snprintf(expected, sizeof expected,
                              "Thu Jan  1 00:%02d:%02d 1970|1970-01-01 00:%02d:%02d|Thu Jan 01 00:00:%02d.%03d 1970",
                              i / 60, i % 60, i / 60, i % 60, i / 1000, i % 1000);
                if (text != expected)
                    fault = text;
                usec = next_usec;
                sec = next_sec;
                ticks = next_ticks;
                cpu = next_cpu;
                calendar = next_calendar;
            }
            // The switch is one for all threads, and may be thrown while others read.
            gen_disable_windows_cpu_time_hack();
        });
    for (std::thread &thread : threads)
        thread.join();
    for (std::string const &fault : faults)
        EXPECT_EQ(fault, "");
}
