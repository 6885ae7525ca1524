// Clocks of the suite and their text renderings, stopwatches over them, and the units of time and frequency.
//
// ```cpp
// #include "gen_time_sys.h"
// #include <iostream>
//
// int main()
// {
//     GEN_STOPWATCH watch;
//     watch.start();
//     for (int i = 0; i < 1000; ++i)
//         gen_get_usec_wallclock();
//     watch.stop();
//     std::cout << gen_get_current_date_and_time() << ": "          // Sat Nov 14 19:03:47 2026
//               << watch.lap_usec(GEN_STOPWATCH_WALLCLOCK) << " us, "
//               << gen_format_elapsed_time(86400) << "\n";          // 1:00:00:00
// }
// ```
//
// Names with _usec count microseconds (std::uint64_t), names with _sec seconds (double). Any thread may call any
// function; a stopwatch belongs to one thread at a time. The clocks take no lock.
#ifndef GEN_TIME_SYS_H
#define GEN_TIME_SYS_H

#include "zel_export_sys.h"

#include <cstdint>
#include <list>
#include <string>

// Raw clocks. A reading allocates nothing.

/// Elapsed time since an arbitrary start, in microseconds.
///
/// The count of ticks is multiplied by 1,000,000 in 64 bits and then divided by the tick frequency. The product wraps:
/// with ticks of 10 MHz the result starts again at 0 about 21 days (2^64 / 10^13 s) after the start of the clock.
/// A counter that can't be read counts as 1,000,000,000,000 ticks. On Linux the clock stops while the machine is
/// suspended.
GEN_API std::uint64_t gen_get_usec_wallclock();

/// The same reading in seconds.
GEN_API double gen_get_sec_wallclock();

/// The tick counter from which the wall clock is computed; 1,000,000,000,000 if it can't be read.
GEN_API std::uint64_t gen_get_hires_ticks();

/// Ticks of gen_get_hires_ticks() per second, read from the system at each call; 1,000,000,000,000 if the system gives
/// none. 10,000,000 on Linux, where a tick is 100 ns.
GEN_API std::uint64_t gen_get_hires_tick_frequency();

/// CPU time of the process, all its threads added up, in microseconds.
///
/// @param user    receives the time in user mode; null is the internal error "user != 0"
/// @param kernel  receives the time in kernel mode; null is the internal error "kernel != 0"
///
/// Both are 0 if the system gives no figures. Inside a Windows job both are the totals of the job, with its ended
/// processes, until gen_disable_windows_cpu_time_hack() is called.
GEN_API void gen_get_usec_user_and_kernel(std::uint64_t *user, std::uint64_t *kernel);

/// The sum of both times of gen_get_usec_user_and_kernel(), in microseconds; on Linux in a finer resolution.
GEN_API std::uint64_t gen_get_usec_cpu();

/// gen_get_usec_cpu() in seconds.
GEN_API double gen_get_sec_cpu();

/// gen_get_usec_cpu() in whole milliseconds, the low 32 bits. Despite its name this is CPU time: it does not grow while
/// the process sleeps.
GEN_API std::uint32_t gen_get_tick_count();

/// Makes the CPU clocks count this process alone, also inside a Windows job, until the process ends. A difference
/// between a reading before the call and one after it has no meaning.
GEN_API void gen_disable_windows_cpu_time_hack();

// Calendar. Texts are in local time. A text is empty if the system can't convert the time.

/// Seconds since the Unix epoch.
GEN_API std::int64_t gen_get_current_time_seconds();

/// Milliseconds since the Unix epoch.
GEN_API std::int64_t gen_get_current_time_milliseconds();

/// A time in seconds since the Unix epoch as "Sat Nov 14 19:03:47 2026", in English. A day below ten is padded with a
/// blank: "Wed Nov  4 19:03:47 2026".
GEN_API std::string gen_get_date_and_time(std::int64_t seconds);

/// gen_get_date_and_time() of the current second.
GEN_API std::string gen_get_current_date_and_time();

/// The current clock time without the date: "19:03:47".
GEN_API std::string gen_get_current_time();

/// Renders a time by a format of std::strftime(), in the locale of the process.
///
/// @param seconds  seconds since the Unix epoch
/// @param out      receives the text; if null, only the result is computed
/// @param format   the format, not null; its expansion may have up to 249 bytes. The same everywhere are the
/// conversions
///                 %a %A %b %B %c %d %H %I %j %m %M %p %S %U %w %W %x %X %y %Y %Z %z %%; others, such as %F and %T, are
///                 those of the system, and Windows has none
///
/// @return false, with `out` unchanged, if the expansion is empty or too long, if the time can't be converted, or if
/// the
///         format has a conversion that Windows doesn't have there
GEN_API bool gen_format_date_and_time(std::int64_t seconds, std::string *out, char const *format);

/// gen_format_date_and_time() of the current second.
GEN_API bool gen_format_current_date_and_time(std::string *out, char const *format);

/// A time in seconds since the Unix epoch as "2026-11-14 19:03:47".
GEN_API std::string gen_get_iso_style_date_and_time(std::int64_t seconds);

/// A time in milliseconds since the Unix epoch as "Sat Nov 14 19:03:47.123 2026". The names of day and month are those
/// of the process's locale, and a day below ten is padded with a 0. The fraction of a time before the epoch keeps its
/// sign: -1 ms gives ".-01".
GEN_API std::string gen_get_formatted_time_from_milliseconds(std::int64_t milliseconds);

// Elapsed time.

/// Elapsed time as "[D:]HH:MM:SS". The day field appears from the first full day on and is not padded. Any other field
/// below ten is padded with one 0, which precedes the sign of a negative field.
///
///     59 -> "00:00:59"    86400 -> "1:00:00:00"    -5 -> "00:00:0-5"
GEN_API std::string gen_format_elapsed_time(std::int64_t const &seconds);

/// gen_format_elapsed_time() of the seconds, rounded towards zero. A value outside the range of std::int64_t counts as
/// the nearest end of that range, and NaN as 0.
GEN_API std::string gen_format_elapsed_sec(double const &seconds);

// Stopwatches. A copy is independent of the original. CPU times are those of gen_get_usec_user_and_kernel(), which
// count all threads of the process.

/// The clocks of a GEN_STOPWATCH; a selection is the bitwise or of any of them.
enum GEN_STOPWATCH_TYPES : unsigned
{
    GEN_STOPWATCH_WALLCLOCK = 1, ///< gen_get_usec_wallclock()
    GEN_STOPWATCH_KERNEL = 2,    ///< CPU time in kernel mode
    GEN_STOPWATCH_USER = 4       ///< CPU time in user mode
};

/// Measures spans of time on any selection of three clocks.
///
/// A span begins with start(). It ends with stop() and with each query (a function whose name begins with lap) of a
/// running watch; the query then begins the next span without a gap. An accumulating watch reports the sum of all its
/// spans, any other watch reports the last span:
///
/// | call       | time | accumulating | not accumulating |
/// |------------|-----:|-------------:|-----------------:|
/// | start()    |  0 s |              |                  |
/// | lap_sec()  |  2 s |            2 |                2 |
/// | lap_sec()  |  5 s |            5 |                3 |
/// | stop()     |  6 s |              |                  |
/// | lap_sec()  |  9 s |            6 |                1 |
///
/// A wrong selection is reported by the value NO_LAP_USEC or by an error text.
class GEN_STOPWATCH
{
public:
    /// The result of lap_usec() for a selection without a figure; about 31 years.
    static constexpr std::uint64_t NO_LAP_USEC = 1000000000000000;

    /// A stopped watch with totals of 0.
    ///
    /// @param accumulate  whether the totals are sums over all spans
    /// @param types       the clocks to read, bits of GEN_STOPWATCH_TYPES
    GEN_API explicit GEN_STOPWATCH(bool accumulate = false, unsigned types = GEN_STOPWATCH_WALLCLOCK |
                                                                             GEN_STOPWATCH_KERNEL | GEN_STOPWATCH_USER);

    /// Begins a span; does nothing if the watch is running.
    GEN_API void start();

    /// Ends the span and stops the watch; does nothing if the watch is stopped.
    GEN_API void stop();

    /// Stops the watch and sets the totals to 0, without reading a clock. The selected clocks and the choice to
    /// accumulate stay.
    GEN_API void reset();

    /// Stops the watch and selects the clocks for later spans. The totals stay; the total of a clock that was not
    /// selected during the measured spans has no meaning.
    GEN_API void set_types(unsigned types);

    /// The total of one clock, or of both CPU clocks, in microseconds. If the watch is running, its span ends and the
    /// next one begins, whatever `types` is.
    ///
    /// | types                                       | result                |
    /// |---------------------------------------------|-----------------------|
    /// | GEN_STOPWATCH_WALLCLOCK                     | wall-clock time       |
    /// | GEN_STOPWATCH_KERNEL                        | kernel time           |
    /// | GEN_STOPWATCH_USER                          | user time             |
    /// | GEN_STOPWATCH_KERNEL \| GEN_STOPWATCH_USER  | user plus kernel time |
    /// | any other, or one with an unselected clock  | NO_LAP_USEC           |
    GEN_API std::uint64_t lap_usec(unsigned types);

    /// lap_usec() in seconds; 1e9 if there is no figure.
    GEN_API double lap_sec(unsigned types);

    /// Same as lap_sec().
    GEN_API double lap_time(unsigned types);

    /// lap_sec() rounded down to whole seconds: 1,000,000,000 if there is no figure, and 2,147,483,647 if the value
    /// doesn't fit.
    GEN_API std::int32_t lap_seconds(unsigned types);

    /// The totals in seconds as text. Clocks of `types` that the watch doesn't measure are left out. If any is left and
    /// the watch is running, its span ends and the next one begins.
    ///
    /// W, U and K are wall-clock, user and kernel time, S is U plus K, each printed by "%g":
    ///
    /// | clocks that are left      | result                                        |
    /// |---------------------------|-----------------------------------------------|
    /// | wall clock                | W seconds                                     |
    /// | kernel                    | K seconds                                     |
    /// | wall clock, kernel        | W seconds (Kkernel)                           |
    /// | user                      | U seconds                                     |
    /// | wall clock, user          | W seconds (Uuser)                             |
    /// | kernel, user              | S seconds (U user, K kernel)                  |
    /// | all three                 | S seconds (W wallclock, U user, K kernel)     |
    /// | none, or an unknown bit   | ERROR - INVALID FLAGS IN GEN_STOPWATCH::lap_str! |
    GEN_API std::string lap_str(unsigned types);

    /// Same as lap_str().
    GEN_API std::string lap(unsigned types);

private:
    void accumulate();
    void resume();
    void load_times(std::uint64_t *times) const;

    std::uint64_t m_start_wallclock = 0;
    std::uint64_t m_start_user = 0;
    std::uint64_t m_start_kernel = 0;
    std::uint64_t m_total_wallclock = 0;
    std::uint64_t m_total_user = 0;
    std::uint64_t m_total_kernel = 0;
    std::uint32_t m_types;
    bool m_running = false;
    bool m_accumulate;
};

/// Totals CPU time under a name.
class GEN_PROCESS_STOPWATCH
{
public:
    /// A stopped watch with totals of 0.
    ///
    /// @param name  printed by print_stats(). The text is not copied and must outlive the watch. Null is printed as
    ///              "(null)".
    GEN_API explicit GEN_PROCESS_STOPWATCH(char const *name);

    /// Begins a span; does nothing if the watch is running.
    GEN_API void start();

    /// Adds the span to the totals and stops the watch; does nothing if the watch is stopped.
    GEN_API void stop();

    /// Adds the span to the totals and begins the next one; does nothing if the watch is stopped.
    GEN_API void lap();

    /// Stops the watch and sets the totals to 0, without reading a clock.
    GEN_API void reset();

    /// The total CPU time, user plus kernel, rounded to whole seconds, halves up. Calls lap() first.
    GEN_API std::int64_t get_elapsed_cpu_time();

    /// Emits the totals as three debug messages, each printed by "%f" and exact to about seven digits. The current span
    /// of a running watch is not counted and goes on.
    ///
    ///     PROCESS_STOPWATCH(name): user time: 1.500000 seconds
    ///     PROCESS_STOPWATCH(name): kernel time: 0.250000 seconds
    ///     PROCESS_STOPWATCH(name): user+kernel time: 1.750000 seconds
    GEN_API void print_stats() const;

private:
    std::uint64_t m_start_user = 0;
    std::uint64_t m_total_user = 0;
    std::uint64_t m_start_kernel = 0;
    std::uint64_t m_total_kernel = 0;
    bool m_running = false;
    char const *m_name;
};

// Units. The tables are constant and valid before any static object is constructed.

struct GEN_TIME_UNIT_DATA;
struct GEN_TIME_FREQ_DATA;

/// The units of time.
///
/// | unit             | short name | long name   | magnitude |
/// |------------------|------------|-------------|----------:|
/// | UNIT_SECOND      | s          | second      |         0 |
/// | UNIT_MILLISECOND | ms         | millisecond |        -3 |
/// | UNIT_MICROSECOND | us         | microsecond |        -6 |
/// | UNIT_NANOSECOND  | ns         | nanosecond  |        -9 |
/// | UNIT_PICOSECOND  | ps         | picosecond  |       -12 |
///
/// A unit that is not in the table is the internal error "Could not find index for time unit enum.".
class GEN_TIME_UNIT
{
public:
    enum UNIT_ENUM : int
    {
        UNIT_SECOND = 0,
        UNIT_MILLISECOND = 1,
        UNIT_MICROSECOND = 2,
        UNIT_NANOSECOND = 3,
        UNIT_PICOSECOND = 4
    };

    /// Appends the rows of the table, in order.
    ///
    /// @param out  the list to extend; not null. Its former elements stay
    /// @return the number of rows, 5
    GEN_API static int get_entire_list(std::list<GEN_TIME_UNIT_DATA> *out);
    /// As get_entire_list(), for the long names alone.
    GEN_API static int get_long_name_list(std::list<std::string> *out);
    /// As get_entire_list(), for the short names alone.
    GEN_API static int get_short_name_list(std::list<std::string> *out);

    GEN_API static std::string get_long_name(UNIT_ENUM unit);
    GEN_API static std::string get_short_name(UNIT_ENUM unit);

    /// The power of ten of the unit, in seconds.
    GEN_API static int get_magnitude(UNIT_ENUM unit);

private:
    static int get_list_index(UNIT_ENUM unit);
};

/// A row of the table of GEN_TIME_UNIT. The texts are literals.
struct GEN_TIME_UNIT_DATA // NOLINT(clang-analyzer-optin.performance.Padding): callers know the members in this order
{
    GEN_TIME_UNIT::UNIT_ENUM unit;
    char const *short_name;
    char const *long_name;
    std::int32_t magnitude;
};

/// The units of frequency.
///
/// | unit           | short name | long name | magnitude |
/// |----------------|------------|-----------|----------:|
/// | FREQ_HERTZ     | Hz         | hertz     |         0 |
/// | FREQ_KILOHERTZ | kHz        | kilohertz |         3 |
/// | FREQ_MEGAHERTZ | MHz        | megahertz |         6 |
/// | FREQ_GIGAHERTZ | GHz        | gigahertz |         9 |
///
/// A unit that is not in the table is the internal error "Could not find index for time freq enum.".
class GEN_TIME_FREQ
{
public:
    enum FREQ_ENUM : int
    {
        FREQ_HERTZ = 0,
        FREQ_KILOHERTZ = 1,
        FREQ_MEGAHERTZ = 2,
        FREQ_GIGAHERTZ = 3
    };

    /// Appends the rows of the table, in order.
    ///
    /// @param out  the list to extend; not null. Its former elements stay
    /// @return the number of rows, 4
    GEN_API static int get_entire_list(std::list<GEN_TIME_FREQ_DATA> *out);
    /// As get_entire_list(), for the long names alone.
    GEN_API static int get_long_name_list(std::list<std::string> *out);
    /// As get_entire_list(), for the short names alone.
    GEN_API static int get_short_name_list(std::list<std::string> *out);

    GEN_API static std::string get_long_name(FREQ_ENUM freq);
    GEN_API static std::string get_short_name(FREQ_ENUM freq);

    /// The power of ten of the unit, in hertz.
    GEN_API static int get_magnitude(FREQ_ENUM freq);

private:
    static int get_list_index(FREQ_ENUM freq);
};

/// A row of the table of GEN_TIME_FREQ. The texts are literals.
struct GEN_TIME_FREQ_DATA // NOLINT(clang-analyzer-optin.performance.Padding): callers know the members in this order
{
    GEN_TIME_FREQ::FREQ_ENUM freq;
    char const *short_name;
    char const *long_name;
    std::int32_t magnitude;
};

#endif
