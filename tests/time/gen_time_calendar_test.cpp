#include "gen_time_sys.h"

#include "tests/support/platform.h"
#include "tests/support/time_zone.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr char const *UTC = "UTC0";
constexpr char const *EAST = "EST-5:30"; // half past five ahead of UTC

constexpr std::int64_t FAR_TIME = std::numeric_limits<std::int64_t>::max() / 2; // no local time has such a year

} // namespace

struct DateCase
{
    char const *zone;
    std::int64_t seconds;
    char const *date_and_time;
    char const *iso;
};
constexpr DateCase DATE_CASES[] = {
    {UTC, 0, "Thu Jan  1 00:00:00 1970", "1970-01-01 00:00:00"},
    {UTC, 1, "Thu Jan  1 00:00:01 1970", "1970-01-01 00:00:01"},
    {UTC, 951782400, "Tue Feb 29 00:00:00 2000", "2000-02-29 00:00:00"},
    {UTC, 2147483648, "Tue Jan 19 03:14:08 2038", "2038-01-19 03:14:08"},
    {UTC, 1794683027, "Sat Nov 14 19:03:47 2026", "2026-11-14 19:03:47"},
    // A day below ten has a leading blank.
    {UTC, 1772683506, "Thu Mar  5 04:05:06 2026", "2026-03-05 04:05:06"},
    {EAST, 0, "Thu Jan  1 05:30:00 1970", "1970-01-01 05:30:00"},
    {EAST, 1794683027, "Sun Nov 15 00:33:47 2026", "2026-11-15 00:33:47"},
};

TEST(GenGetDateAndTime, RendersLocalTime)
{
    for (DateCase const &c : DATE_CASES) {
        TimeZone const zone(c.zone);
        EXPECT_EQ(gen_get_date_and_time(c.seconds), c.date_and_time) << c.zone << ' ' << c.seconds;
    }
}

TEST(GenGetIsoStyleDateAndTime, RendersLocalTime)
{
    for (DateCase const &c : DATE_CASES) {
        TimeZone const zone(c.zone);
        EXPECT_EQ(gen_get_iso_style_date_and_time(c.seconds), c.iso) << c.zone << ' ' << c.seconds;
    }
}

TEST(GenGetFormattedTimeFromMilliseconds, PutsTheFractionBeforeTheYear)
{
    struct Case
    {
        char const *zone;
        std::int64_t milliseconds;
        char const *text;
    };
    constexpr Case CASES[] = {
        {UTC, 1794683027123, "Sat Nov 14 19:03:47.123 2026"},
        {EAST, 1794683027123, "Sun Nov 15 00:33:47.123 2026"},
        // The fraction has at least three digits.
        {UTC, 0, "Thu Jan 01 00:00:00.000 1970"},
        {UTC, 1000, "Thu Jan 01 00:00:01.000 1970"},
        {UTC, 1001, "Thu Jan 01 00:00:01.001 1970"},
        {UTC, 1999, "Thu Jan 01 00:00:01.999 1970"},
        {UTC, 1772683506045, "Thu Mar 05 04:05:06.045 2026"},
        // Seconds are cut towards zero, so the fraction of a time before the epoch keeps its sign.
        {UTC, -1, "Thu Jan 01 00:00:00.-01 1970"},
        {UTC, -999, "Thu Jan 01 00:00:00.-999 1970"},
    };
    for (Case const &c : CASES) {
        TimeZone const zone(c.zone);
        EXPECT_EQ(gen_get_formatted_time_from_milliseconds(c.milliseconds), c.text) << c.zone << ' ' << c.milliseconds;
    }
}

TEST(GenCalendar, RendersATimeBeforeTheEpochWhereTheSystemCanConvertIt)
{
    TimeZone const zone(UTC);
    EXPECT_EQ(gen_get_date_and_time(-1), ON_WINDOWS ? "" : "Wed Dec 31 23:59:59 1969");
    EXPECT_EQ(gen_get_iso_style_date_and_time(-1), ON_WINDOWS ? "" : "1969-12-31 23:59:59");
    EXPECT_EQ(gen_get_formatted_time_from_milliseconds(-1500), ON_WINDOWS ? "" : "Wed Dec 31 23:59:59.-500 1969");
}

TEST(GenCalendar, RendersATimeThatNoCalendarHasAsNothing)
{
    for (std::int64_t const seconds : {FAR_TIME, -FAR_TIME}) {
        EXPECT_EQ(gen_get_date_and_time(seconds), "") << seconds;
        EXPECT_EQ(gen_get_iso_style_date_and_time(seconds), "") << seconds;
        std::string out = "kept";
        EXPECT_FALSE(gen_format_date_and_time(seconds, &out, "%Y")) << seconds;
        EXPECT_EQ(out, "kept") << seconds;
    }
}

TEST(GenFormatDateAndTime, ExpandsTheFormat)
{
    struct Case
    {
        char const *format;
        char const *text;
    };
    constexpr Case CASES[] = {
        {"%a %b %d %H:%M:%S", "Sat Nov 14 19:03:47"}, {"%Y", "2026"}, {"%%", "%"}, {"no conversion", "no conversion"},
        {"%Y%m%d-%H%M%S", "20261114-190347"},
    };
    TimeZone const zone(UTC);
    for (Case const &c : CASES) {
        std::string out = "former";
        EXPECT_TRUE(gen_format_date_and_time(1794683027, &out, c.format)) << c.format;
        EXPECT_EQ(out, c.text) << c.format;
    }
}

TEST(GenFormatDateAndTime, ReportsTextThatDoesNotFit)
{
    struct Case
    {
        std::string format;
        std::size_t size; // of the expansion
    };
    Case const cases[] = {
        {"%Y", 4},
        {std::string(245, 'x') + "%Y", 249},
        {std::string(246, 'x') + "%Y", 250},
        {std::string(249, 'x'), 249},
        {std::string(250, 'x'), 250},
        {std::string(1000, 'x'), 1000},
        {"", 0}, // an empty expansion can't be distinguished from one that doesn't fit
    };
    for (Case const &c : cases) {
        bool const fits = c.size != 0 && c.size < 250;
        std::string out = "kept";
        EXPECT_EQ(gen_format_date_and_time(1794683027, &out, c.format.c_str()), fits) << c.format;
        EXPECT_EQ(out.size(), fits ? c.size : 4) << c.format;
        EXPECT_EQ(out == "kept", !fits) << c.format;
        EXPECT_EQ(gen_format_date_and_time(1794683027, nullptr, c.format.c_str()), fits) << c.format;
    }
}

// The present.

TEST(GenCurrentTime, AgreesWithTheSystemClock)
{
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    std::int64_t const msec = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
    constexpr std::int64_t TOLERANCE_MSEC =
        60000; // the system's clocks differ in resolution, and this may be a slow run
    EXPECT_LE(std::abs(gen_get_current_time_milliseconds() - msec), TOLERANCE_MSEC);
    EXPECT_LE(std::abs(gen_get_current_time_seconds() * 1000 - msec), TOLERANCE_MSEC);
}

TEST(GenCurrentTime, SecondsAreTheWholePartOfMilliseconds)
{
    for (int i = 0; i < 1000; ++i) {
        std::int64_t const before = gen_get_current_time_seconds();
        std::int64_t const msec = gen_get_current_time_milliseconds();
        std::int64_t const after = gen_get_current_time_seconds();
        ASSERT_LE(before, msec / 1000);
        ASSERT_LE(msec / 1000, after);
    }
}

TEST(GenCurrentTime, RenderingsAreThoseOfThePresentSecond)
{
    std::int64_t const before = gen_get_current_time_seconds();
    std::string const date_and_time = gen_get_current_date_and_time();
    std::string const time = gen_get_current_time();
    std::string formatted;
    EXPECT_TRUE(gen_format_current_date_and_time(&formatted, "%Y-%m-%d %H:%M:%S"));
    std::int64_t const after = gen_get_current_time_seconds();

    std::vector<std::string> dates;
    std::vector<std::string> times;
    std::vector<std::string> isos;
    for (std::int64_t seconds = before; seconds <= after; ++seconds) {
        dates.push_back(gen_get_date_and_time(seconds));
        times.push_back(dates.back().substr(11, 8));
        isos.push_back(gen_get_iso_style_date_and_time(seconds));
    }
    EXPECT_EQ(std::count(dates.begin(), dates.end(), date_and_time), 1) << date_and_time;
    EXPECT_EQ(std::count(times.begin(), times.end(), time), 1) << time;
    EXPECT_EQ(std::count(isos.begin(), isos.end(), formatted), 1) << formatted;
}

TEST(GenCurrentTime, FormatReportsTextThatDoesNotFit)
{
    std::string out = "kept";
    EXPECT_FALSE(gen_format_current_date_and_time(&out, std::string(250, 'x').c_str()));
    EXPECT_EQ(out, "kept");
    EXPECT_TRUE(gen_format_current_date_and_time(nullptr, "%Y"));
    EXPECT_FALSE(gen_format_current_date_and_time(nullptr, std::string(250, 'x').c_str()));
}
