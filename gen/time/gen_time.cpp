#include "gen_time_sys.h"

#include "gen/base/gen_assert.h"
#include "gen/base/gen_numeric.h"
#include "gen/os/gen_os.h"
#include "gen/time/gen_clocks.h"

#include <atomic>

namespace {

// The value of a counter reading and of a frequency when the system gives none.
constexpr std::uint64_t NO_READING = 1000000000000;

constexpr std::uint64_t USEC_PER_SEC = 1000000;
constexpr std::uint64_t UNITS_PER_USEC = 10; // the system counts CPU time in units of 100 ns

constexpr std::int64_t SECONDS_PER_MINUTE = 60;
constexpr std::int64_t SECONDS_PER_HOUR = 3600;
constexpr std::int64_t SECONDS_PER_DAY = 86400;

// Ticks per second, 0 until the first wall-clock reading. Several threads may store it at once, always the same value.
std::atomic<std::uint64_t> l_tick_frequency{0};

// Whether the CPU clocks count the whole job. Cleared once, never set again.
std::atomic<bool> l_cpu_time_from_job{true};

std::uint64_t tick_frequency()
{
    std::uint64_t frequency = l_tick_frequency.load(std::memory_order_relaxed);
    if (frequency != 0)
        return frequency;
    frequency = gen_get_hires_tick_frequency();
    l_tick_frequency.store(frequency, std::memory_order_relaxed);
    return frequency;
}

// CPU time in units of 100 ns; false if the system gives no figures.
bool read_cpu_units(std::uint64_t &user, std::uint64_t &kernel)
{
    if (l_cpu_time_from_job.load(std::memory_order_relaxed) && gen_os_read_job_cpu(user, kernel))
        return true;
    return gen_os_read_process_cpu(user, kernel);
}

// Appends a field of an elapsed time. A field below ten gets a leading 0, before its sign too: -5 gives "0-5".
void append_field(std::string &out, std::int64_t field)
{
    if (field < 10)
        out += '0';
    out += std::to_string(field);
}

} // namespace

std::uint64_t gen_get_usec_wallclock()
{
    // The multiplication comes before the division for the sake of precision; it may wrap.
    std::uint64_t const frequency = tick_frequency();
    return gen_get_hires_ticks() * USEC_PER_SEC / frequency;
}

double gen_get_sec_wallclock()
{
    return static_cast<double>(gen_get_usec_wallclock()) / 1e6;
}

std::uint64_t gen_get_hires_ticks()
{
    std::uint64_t ticks = NO_READING;
    gen_os_read_counter(ticks);
    return ticks;
}

std::uint64_t gen_get_hires_tick_frequency()
{
    std::uint64_t frequency = NO_READING;
    gen_os_read_counter_frequency(frequency);
    return frequency;
}

void gen_get_usec_user_and_kernel(std::uint64_t *user, std::uint64_t *kernel)
{
    GEN_ASSERT(user != nullptr, "user != 0");
    GEN_ASSERT(kernel != nullptr, "kernel != 0");
    *user = 0;
    *kernel = 0;
    std::uint64_t user_units = 0;
    std::uint64_t kernel_units = 0;
    if (!read_cpu_units(user_units, kernel_units))
        return;
    *user = user_units / UNITS_PER_USEC;
    *kernel = kernel_units / UNITS_PER_USEC;
}

std::uint64_t gen_get_usec_cpu()
{
    std::uint64_t user = 0;
    std::uint64_t kernel = 0;
    if (l_cpu_time_from_job.load(std::memory_order_relaxed) && gen_os_read_job_cpu(user, kernel))
        return user / UNITS_PER_USEC + kernel / UNITS_PER_USEC;
    std::uint64_t sum = 0;
    if (gen_os_read_process_cpu_sum(sum))
        return sum / UNITS_PER_USEC;
    // Both stay 0 if the system gives no figures.
    gen_os_read_process_cpu(user, kernel);
    return user / UNITS_PER_USEC + kernel / UNITS_PER_USEC;
}

GEN_CLOCKS gen_read_clocks_one_by_one()
{
    GEN_CLOCKS now;
    now.m_cpu_nsec = static_cast<std::int64_t>(gen_get_usec_cpu() * 1000);
    now.m_ticks = static_cast<std::int64_t>(gen_get_hires_ticks());
    return now;
}

double gen_get_sec_cpu()
{
    return static_cast<double>(gen_get_usec_cpu()) / 1e6;
}

std::uint32_t gen_get_tick_count()
{
    return static_cast<std::uint32_t>(gen_get_usec_cpu() / 1000);
}

void gen_disable_windows_cpu_time_hack()
{
    l_cpu_time_from_job.store(false, std::memory_order_relaxed);
}

std::int64_t gen_get_current_time_seconds()
{
    return gen_get_current_time_milliseconds() / 1000;
}

std::int64_t gen_get_current_time_milliseconds()
{
    return gen_os_read_calendar_msec();
}

std::string gen_format_elapsed_time(std::int64_t const &seconds)
{
    std::int64_t const days = seconds / SECONDS_PER_DAY;
    std::int64_t const hours = seconds / SECONDS_PER_HOUR;
    std::int64_t const minutes = seconds / SECONDS_PER_MINUTE;
    std::string text;
    if (days > 0)
        text = std::to_string(days) + ':';
    append_field(text, hours - days * 24);
    text += ':';
    append_field(text, minutes - hours * 60);
    text += ':';
    append_field(text, seconds - minutes * 60);
    return text;
}

std::string gen_format_elapsed_sec(double const &seconds)
{
    return gen_format_elapsed_time(gen_truncate(seconds));
}
