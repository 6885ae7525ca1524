#include "gen_time_sys.h"

#include "gen/base/gen_debug_message.h"
#include "gen/base/gen_numeric.h"
#include "mem_sys.h"

#include <algorithm>
#include <limits>

namespace {

constexpr unsigned CPU_CLOCKS = GEN_STOPWATCH_KERNEL | GEN_STOPWATCH_USER;

double to_sec(std::uint64_t usec)
{
    return static_cast<double>(usec) / 1e6;
}

// Replaces the total by the span up to `now`, or adds the span to it, and begins the next span.
void take_lap(std::uint64_t &total, std::uint64_t &start, std::uint64_t now, bool accumulate)
{
    if (!accumulate)
        total = 0;
    total += now - start;
    start = now;
}

} // namespace

GEN_STOPWATCH::GEN_STOPWATCH(bool accumulate, unsigned types) : m_types(types), m_accumulate(accumulate) {}

void GEN_STOPWATCH::start()
{
    if (m_running)
        return;
    resume();
    m_running = true;
}

void GEN_STOPWATCH::stop()
{
    if (!m_running)
        return;
    accumulate();
    m_running = false;
}

void GEN_STOPWATCH::reset()
{
    *this = GEN_STOPWATCH(m_accumulate, m_types);
}

void GEN_STOPWATCH::set_types(unsigned types)
{
    stop();
    m_types = types;
}

std::uint64_t GEN_STOPWATCH::lap_usec(unsigned types)
{
    if (m_running)
        accumulate();
    if ((types & ~m_types) != 0)
        return NO_LAP_USEC;
    switch (types) {
    case GEN_STOPWATCH_WALLCLOCK:
        return m_total_wallclock;
    case GEN_STOPWATCH_KERNEL:
        return m_total_kernel;
    case GEN_STOPWATCH_USER:
        return m_total_user;
    case CPU_CLOCKS:
        return m_total_user + m_total_kernel;
    default:
        return NO_LAP_USEC; // wall-clock and CPU time are never added
    }
}

double GEN_STOPWATCH::lap_sec(unsigned types)
{
    return to_sec(lap_usec(types));
}

double GEN_STOPWATCH::lap_time(unsigned types)
{
    return lap_sec(types);
}

std::int32_t GEN_STOPWATCH::lap_seconds(unsigned types)
{
    constexpr double LIMIT = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(lap_sec(types), LIMIT));
}

std::string GEN_STOPWATCH::lap_str(unsigned types)
{
    types &= m_types;
    if (types != 0 && m_running)
        accumulate();
    double const wall = to_sec(m_total_wallclock);
    double const user = to_sec(m_total_user);
    double const kernel = to_sec(m_total_kernel);
    std::string text;
    switch (types) {
    case GEN_STOPWATCH_WALLCLOCK:
        stl_sprintf(&text, "%g seconds", wall);
        break;
    case GEN_STOPWATCH_KERNEL:
        stl_sprintf(&text, "%g seconds", kernel);
        break;
    case GEN_STOPWATCH_WALLCLOCK | GEN_STOPWATCH_KERNEL:
        stl_sprintf(&text, "%g seconds (%gkernel)", wall, kernel);
        break;
    case GEN_STOPWATCH_USER:
        stl_sprintf(&text, "%g seconds", user);
        break;
    case GEN_STOPWATCH_WALLCLOCK | GEN_STOPWATCH_USER:
        stl_sprintf(&text, "%g seconds (%guser)", wall, user);
        break;
    case CPU_CLOCKS:
        stl_sprintf(&text, "%g seconds (%g user, %g kernel)", user + kernel, user, kernel);
        break;
    case GEN_STOPWATCH_WALLCLOCK | CPU_CLOCKS:
        stl_sprintf(&text, "%g seconds (%g wallclock, %g user, %g kernel)", user + kernel, wall, user, kernel);
        break;
    default:
        text = "ERROR - INVALID FLAGS IN GEN_STOPWATCH::lap_str!";
        break;
    }
    return text;
}

std::string GEN_STOPWATCH::lap(unsigned types)
{
    return lap_str(types);
}

void GEN_STOPWATCH::accumulate()
{
    // A clock that is not selected keeps its start, so that its span is 0.
    std::uint64_t times[] = {m_start_wallclock, m_start_user, m_start_kernel};
    load_times(times);
    take_lap(m_total_wallclock, m_start_wallclock, times[0], m_accumulate);
    take_lap(m_total_user, m_start_user, times[1], m_accumulate);
    take_lap(m_total_kernel, m_start_kernel, times[2], m_accumulate);
}

void GEN_STOPWATCH::resume()
{
    std::uint64_t times[] = {m_start_wallclock, m_start_user, m_start_kernel};
    load_times(times);
    m_start_wallclock = times[0];
    m_start_user = times[1];
    m_start_kernel = times[2];
}

// Reads the selected clocks into three elements: wall clock, user, kernel. One query gives both CPU clocks.
void GEN_STOPWATCH::load_times(std::uint64_t *times) const
{
    if ((m_types & GEN_STOPWATCH_WALLCLOCK) != 0)
        times[0] = gen_get_usec_wallclock();
    if ((m_types & CPU_CLOCKS) != 0)
        gen_get_usec_user_and_kernel(&times[1], &times[2]);
}

GEN_PROCESS_STOPWATCH::GEN_PROCESS_STOPWATCH(char const *name) : m_name(name) {}

void GEN_PROCESS_STOPWATCH::start()
{
    if (m_running)
        return;
    gen_get_usec_user_and_kernel(&m_start_user, &m_start_kernel);
    m_running = true;
}

void GEN_PROCESS_STOPWATCH::stop()
{
    if (!m_running)
        return;
    std::uint64_t user;
    std::uint64_t kernel;
    gen_get_usec_user_and_kernel(&user, &kernel);
    m_total_user += user - m_start_user;
    m_total_kernel += kernel - m_start_kernel;
    m_running = false;
}

void GEN_PROCESS_STOPWATCH::lap()
{
    if (!m_running)
        return;
    std::uint64_t user;
    std::uint64_t kernel;
    gen_get_usec_user_and_kernel(&user, &kernel);
    take_lap(m_total_user, m_start_user, user, /*accumulate=*/true);
    take_lap(m_total_kernel, m_start_kernel, kernel, /*accumulate=*/true);
}

void GEN_PROCESS_STOPWATCH::reset()
{
    m_total_user = 0;
    m_total_kernel = 0;
    m_running = false;
}

std::int64_t GEN_PROCESS_STOPWATCH::get_elapsed_cpu_time()
{
    lap();
    return gen_truncate(to_sec(m_total_user + m_total_kernel) + 0.5);
}

void GEN_PROCESS_STOPWATCH::print_stats() const
{
    // The figures are shown in single precision, about seven digits.
    auto const shown_sec = [](std::uint64_t usec) { return static_cast<double>(static_cast<float>(usec)) / 1e6; };
    gen_debug_message("PROCESS_STOPWATCH(%s): user time: %f seconds", m_name, shown_sec(m_total_user));
    gen_debug_message("PROCESS_STOPWATCH(%s): kernel time: %f seconds", m_name, shown_sec(m_total_kernel));
    gen_debug_message("PROCESS_STOPWATCH(%s): user+kernel time: %f seconds", m_name,
                      shown_sec(m_total_user + m_total_kernel));
}
