#include "gen/time/gen_time_calendar.h"

#include "gen/os/gen_os.h"
#include "gen/os/gen_os_text.h"
#include "gen_time_sys.h"
#include "mem_sys.h"

#include <ctime>

namespace {

// The room for a rendered calendar time, including the terminator.
constexpr std::size_t TIME_TEXT_SIZE = 250;

// Expands a format of strftime into `buffer`, which has room for TIME_TEXT_SIZE characters; false if it doesn't fit.
bool expand_time(char *buffer, char const *format, std::tm const &time)
{
    return gen_os_strftime(buffer, TIME_TEXT_SIZE, format, &time) != 0;
}

} // namespace

std::string gen_asctime_text(std::int64_t seconds)
{
    static constexpr char const *DAYS[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr char const *MONTHS[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::tm time;
    if (!gen_os_local_time(seconds, time))
        return {};
    std::string text;
    stl_sprintf(&text, "%s %s%3d %02d:%02d:%02d %lld\n", DAYS[time.tm_wday], MONTHS[time.tm_mon], time.tm_mday,
                time.tm_hour, time.tm_min, time.tm_sec, static_cast<long long>(time.tm_year) + 1900);
    return text;
}

std::string gen_get_date_and_time(std::int64_t seconds)
{
    std::string text = gen_asctime_text(seconds);
    if (!text.empty())
        text.pop_back();
    return text;
}

std::string gen_get_current_date_and_time()
{
    return gen_get_date_and_time(gen_get_current_time_seconds());
}

std::string gen_get_current_time()
{
    // "Sat Nov 14 19:03:47 2026": the clock time is at 11 to 18.
    std::string const text = gen_get_current_date_and_time();
    return text.empty() ? text : text.substr(11, 8);
}

bool gen_format_date_and_time(std::int64_t seconds, std::string *out, char const *format)
{
    std::tm time;
    char buffer[TIME_TEXT_SIZE];
    if (!gen_os_local_time(seconds, time) || !expand_time(buffer, format, time))
        return false;
    if (out != nullptr)
        *out = buffer;
    return true;
}

bool gen_format_current_date_and_time(std::string *out, char const *format)
{
    return gen_format_date_and_time(gen_get_current_time_seconds(), out, format);
}

std::string gen_get_iso_style_date_and_time(std::int64_t seconds)
{
    std::string text;
    gen_format_date_and_time(seconds, &text, "%Y-%m-%d %H:%M:%S");
    return text;
}

std::string gen_get_formatted_time_from_milliseconds(std::int64_t milliseconds)
{
    std::int64_t const seconds = milliseconds / 1000;
    std::tm time;
    char date[TIME_TEXT_SIZE];
    char year[TIME_TEXT_SIZE];
    if (!gen_os_local_time(seconds, time) || !expand_time(date, "%a %b %d %H:%M:%S", time) ||
        !expand_time(year, "%Y", time))
        return {};
    std::string text;
    stl_sprintf(&text, "%s.%03lld %s", date, static_cast<long long>(milliseconds - seconds * 1000), year);
    return text;
}
