// The clocks over a scripted system: every value it can return, and every failure.
#include "gen_time_sys.h"

#include "tests/support/gen_os_fake.h"
#include "tests/support/internal_error.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ExitedWithCode;

namespace {

constexpr std::uint64_t NO_READING = 1000000000000;

// The first count whose millionfold no longer fits into 64 bits: it wraps to 448384.
constexpr std::uint64_t FIRST_WRAPPED = 18446744073710;

struct UserAndKernel
{
    std::uint64_t user = 999;
    std::uint64_t kernel = 999;
};

UserAndKernel read_user_and_kernel()
{
    UserAndKernel read;
    gen_get_usec_user_and_kernel(&read.user, &read.kernel);
    return read;
}

void set_answers(void (*change)(GEN_OS_FAKE_ANSWERS &))
{
    GEN_OS_FAKE_ANSWERS answers;
    change(answers);
    gen_os_fake_set_answers(answers);
}

} // namespace

// Wall clock.

TEST(GenWallClockReadings, KeepThePresetWithoutReadings)
{
    set_answers([](GEN_OS_FAKE_ANSWERS &a) { a.counter = a.frequency = false; });
    EXPECT_EQ(gen_get_hires_ticks(), NO_READING);
    EXPECT_EQ(gen_get_hires_tick_frequency(), NO_READING);
    EXPECT_EQ(gen_get_usec_wallclock(), 1000000U); // 10^12 times 10^6 through 10^12
    EXPECT_EQ(gen_get_sec_wallclock(), 1.0);
}

TEST(GenWallClockReadings, KeepThePresetOfTheCounterAlone)
{
    set_answers([](GEN_OS_FAKE_ANSWERS &a) { a.counter = false; });
    gen_os_fake_set_frequency(10000000);
    EXPECT_EQ(gen_get_usec_wallclock(), 100000000000U); // 10^12 times 10^6 through 10^7
    EXPECT_EQ(gen_get_sec_wallclock(), 100000.0);
}

TEST(GenWallClockReadings, KeepThePresetFrequencyOnceItIsCached)
{
    set_answers([](GEN_OS_FAKE_ANSWERS &a) { a.frequency = false; });
    gen_os_fake_set_clocks(0, 3000000);
    EXPECT_EQ(gen_get_usec_wallclock(), 3U); // 3 * 10^12 through 10^12
    set_answers([](GEN_OS_FAKE_ANSWERS &) {});
    gen_os_fake_set_frequency(10000000);
    EXPECT_EQ(gen_get_usec_wallclock(), 3U);
    EXPECT_EQ(gen_get_hires_tick_frequency(), 10000000U);
}

TEST(GenWallClockReadings, MultiplyFirstAndWrap)
{
    struct Case
    {
        std::uint64_t ticks;
        std::uint64_t usec;
    };
    constexpr Case CASES[] = {
        {0, 0},
        {9, 0},
        {10, 1},
        {19, 1},
        {12345678, 1234567},
        {FIRST_WRAPPED - 1, 1844674407370},
        {FIRST_WRAPPED, 0}, // 448384 through 10^7
        {FIRST_WRAPPED + 20, 2},
        {static_cast<std::uint64_t>(-1), 1844674407370}, // 2^64 - 10^6 through 10^7
    };
    gen_os_fake_set_frequency(10000000);
    for (Case const &c : CASES) {
        gen_os_fake_set_clocks(0, c.ticks);
        EXPECT_EQ(gen_get_usec_wallclock(), c.usec) << "ticks " << c.ticks;
        EXPECT_EQ(gen_get_sec_wallclock(), static_cast<double>(c.usec) / 1e6) << "ticks " << c.ticks;
        EXPECT_EQ(gen_get_hires_ticks(), c.ticks);
    }
}

TEST(GenWallClockReadings, DivideOnlyAfterTheMultiplication)
{
    gen_os_fake_set_frequency(3000000);
    gen_os_fake_set_clocks(0, 2);
    EXPECT_EQ(gen_get_usec_wallclock(), 0U);
    gen_os_fake_set_clocks(0, 5);
    EXPECT_EQ(gen_get_usec_wallclock(), 1U);
    gen_os_fake_set_clocks(0, 100000000);
    EXPECT_EQ(gen_get_usec_wallclock(), 33333333U);
}

TEST(GenWallClockReadings, SecondsOfAReadingWithTheTopBitSetArePositive)
{
    gen_os_fake_set_frequency(1);
    gen_os_fake_set_clocks(0, FIRST_WRAPPED - 1);
    EXPECT_EQ(gen_get_usec_wallclock(), 18446744073709000000U);
    EXPECT_EQ(gen_get_sec_wallclock(), 18446744073709.0);
}

TEST(GenWallClockReadings, CacheTheFrequencyAtTheFirstReading)
{
    gen_os_fake_set_clocks(0, 1000000);
    gen_os_fake_set_frequency(5);
    EXPECT_EQ(gen_get_hires_tick_frequency(), 5U); // fills no cache
    gen_os_fake_set_frequency(1000000);
    EXPECT_EQ(gen_get_usec_wallclock(), 1000000U);
    gen_os_fake_set_frequency(10);
    EXPECT_EQ(gen_get_usec_wallclock(), 1000000U);
    EXPECT_EQ(gen_get_sec_wallclock(), 1.0);
    EXPECT_EQ(gen_get_hires_tick_frequency(), 10U); // read again each time
    set_answers([](GEN_OS_FAKE_ANSWERS &a) { a.frequency = false; });
    EXPECT_EQ(gen_get_hires_tick_frequency(), NO_READING);
    EXPECT_EQ(gen_get_usec_wallclock(), 1000000U);
}

TEST(GenWallClockReadings, CacheTheFrequencyAtAFirstReadingInSecondsToo)
{
    gen_os_fake_set_clocks(0, 1000000);
    gen_os_fake_set_frequency(1000000);
    EXPECT_EQ(gen_get_sec_wallclock(), 1.0);
    gen_os_fake_set_frequency(10);
    EXPECT_EQ(gen_get_usec_wallclock(), 1000000U);
}

TEST(GenWallClockReadings, AskTheCounterOnceEach)
{
    std::uint64_t const start = gen_os_fake_reading_count();
    gen_get_usec_wallclock();
    gen_get_sec_wallclock();
    gen_get_hires_ticks();
    EXPECT_EQ(gen_os_fake_reading_count(), start + 3);
}

// CPU clock.

TEST(GenCpuReadings, TakeTheJobFirst)
{
    set_answers([](GEN_OS_FAKE_ANSWERS &a) { a.job_cpu = true; });
    gen_os_fake_set_job_cpu(1239, 4569);
    gen_os_fake_set_process_cpu(77770, 88880);
    gen_os_fake_set_clocks(99999, 0);
    UserAndKernel const read = read_user_and_kernel();
    EXPECT_EQ(read.user, 123U);
    EXPECT_EQ(read.kernel, 456U);
    EXPECT_EQ(gen_get_usec_cpu(), 579U); // each is cut before they are added
    EXPECT_EQ(gen_get_sec_cpu(), 579 / 1e6);
}

TEST(GenCpuReadings, LeaveTheJobForGoodOnRequest)
{
    set_answers([](GEN_OS_FAKE_ANSWERS &a) { a.job_cpu = true; });
    gen_os_fake_set_job_cpu(10, 20);
    gen_os_fake_set_process_cpu(30, 40);
    gen_os_fake_set_clocks(7, 0);
    EXPECT_EQ(gen_get_usec_cpu(), 3U);
    gen_disable_windows_cpu_time_hack();
    EXPECT_EQ(read_user_and_kernel().user, 3U);
    EXPECT_EQ(read_user_and_kernel().kernel, 4U);
    EXPECT_EQ(gen_get_usec_cpu(), 7U);
    gen_disable_windows_cpu_time_hack(); // a second time changes nothing
    EXPECT_EQ(gen_get_usec_cpu(), 7U);
}

TEST(GenCpuReadings, TakeTheProcessWhereThereIsNoJob)
{
    gen_os_fake_set_job_cpu(1000, 1000);
    gen_os_fake_set_process_cpu(1239, 4569);
    UserAndKernel const read = read_user_and_kernel();
    EXPECT_EQ(read.user, 123U);
    EXPECT_EQ(read.kernel, 456U);
}

TEST(GenCpuReadings, AddTheSplitWhereTheSystemHasNoSum)
{
    set_answers([](GEN_OS_FAKE_ANSWERS &a) { a.process_cpu_sum = false; });
    gen_os_fake_set_process_cpu(19, 19);
    EXPECT_EQ(gen_get_usec_cpu(), 2U); // each is cut before they are added
    EXPECT_EQ(gen_get_sec_cpu(), 2 / 1e6);
}

TEST(GenCpuReadings, AreZeroIfEveryQueryFails)
{
    set_answers([](GEN_OS_FAKE_ANSWERS &a) { a.process_cpu = a.process_cpu_sum = false; });
    gen_os_fake_set_job_cpu(1000, 1000);
    gen_os_fake_set_process_cpu(1000, 1000);
    gen_os_fake_set_clocks(1000, 0);
    UserAndKernel const read = read_user_and_kernel();
    EXPECT_EQ(read.user, 0U);
    EXPECT_EQ(read.kernel, 0U);
    EXPECT_EQ(gen_get_usec_cpu(), 0U);
    EXPECT_EQ(gen_get_sec_cpu(), 0.0);
    EXPECT_EQ(gen_get_tick_count(), 0U);
}

TEST(GenCpuReadings, TickCountIsTheLowPartOfTheMilliseconds)
{
    struct Case
    {
        std::uint64_t cpu_usec;
        std::uint32_t msec;
    };
    constexpr Case CASES[] = {
        {0, 0}, {999, 0}, {1000, 1}, {1999, 1}, {4294967295999, 4294967295}, {4294967296000, 0}, {4294967303999, 7},
    };
    for (Case const &c : CASES) {
        gen_os_fake_set_clocks(c.cpu_usec, 0);
        EXPECT_EQ(gen_get_tick_count(), c.msec) << "usec " << c.cpu_usec;
    }
}

TEST(GenCpuReadingsDeathTest, NullPointersAreInternalErrors)
{
    std::uint64_t value = 0;
    EXPECT_EXIT(gen_get_usec_user_and_kernel(nullptr, &value), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("user != 0", "gen_time"));
    EXPECT_EXIT(gen_get_usec_user_and_kernel(&value, nullptr), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("kernel != 0", "gen_time"));
    EXPECT_EXIT(gen_get_usec_user_and_kernel(nullptr, nullptr), ExitedWithCode(INTERNAL_ERROR_STATUS),
                dies_with("user != 0", "gen_time"));
}

// Calendar.

TEST(GenCalendarReadings, RenderThePresent)
{
    gen_os_fake_set_calendar_msec(1794683027123);
    EXPECT_EQ(gen_get_current_time_milliseconds(), 1794683027123);
    EXPECT_EQ(gen_get_current_time_seconds(), 1794683027);
    EXPECT_EQ(gen_get_current_date_and_time(), "Sat Nov 14 19:03:47 2026");
    EXPECT_EQ(gen_get_current_time(), "19:03:47");
    EXPECT_EQ(gen_get_formatted_time_from_milliseconds(gen_get_current_time_milliseconds()),
              "Sat Nov 14 19:03:47.123 2026");
    std::string out;
    EXPECT_TRUE(gen_format_current_date_and_time(&out, "%Y-%m-%d %H:%M:%S"));
    EXPECT_EQ(out, "2026-11-14 19:03:47");
}

TEST(GenCalendarReadings, PresentTimeHasFieldsOfTwoDigits)
{
    struct Case
    {
        std::int64_t seconds;
        char const *time;
    };
    constexpr Case CASES[] = {{0, "00:00:00"}, {1772683506, "04:05:06"}, {86399, "23:59:59"}};
    for (Case const &c : CASES) {
        gen_os_fake_set_calendar_msec(c.seconds * 1000 + 999);
        EXPECT_EQ(gen_get_current_time(), c.time) << "seconds " << c.seconds;
    }
}

TEST(GenCalendarReadings, RenderNothingWithoutALocalTime)
{
    set_answers([](GEN_OS_FAKE_ANSWERS &a) { a.local_time = false; });
    gen_os_fake_set_calendar_msec(1794683027123);
    EXPECT_EQ(gen_get_date_and_time(1794683027), "");
    EXPECT_EQ(gen_get_current_date_and_time(), "");
    EXPECT_EQ(gen_get_current_time(), "");
    EXPECT_EQ(gen_get_iso_style_date_and_time(1794683027), "");
    EXPECT_EQ(gen_get_formatted_time_from_milliseconds(1794683027123), "");
    std::string out = "kept";
    EXPECT_FALSE(gen_format_date_and_time(1794683027, &out, "%Y"));
    EXPECT_FALSE(gen_format_current_date_and_time(&out, "%Y"));
    EXPECT_EQ(out, "kept");
    EXPECT_FALSE(gen_format_date_and_time(1794683027, nullptr, "%Y"));
}
