// Clocks of the suite and their text renderings, stopwatches over them, and the units of time and frequency. Names with
// _usec count microseconds (std::uint64_t), names with _sec seconds (double). Any thread may call any function; a
// stopwatch belongs to one thread at a time. The clocks take no lock.
#ifndef GEN_TIME_SYS_H
#define GEN_TIME_SYS_H

#include "zel_export_sys.h"

#include <cstdint>
#include <list>
#include <string>

// Raw clocks. A reading allocates nothing.

/// Elapsed time since an arbitrary start, in microseconds.
///
/// The count of ticks is multiplied by 1,000,000 in 64 bits before it is divided by the tick frequency, so with ticks
/// of 10 MHz the value wraps after about 21 days: take differences, and expect one wrap. A counter that can't be read
/// stands at 1,000,000,000,000 ticks. On Linux the clock stops while the machine is suspended.
GEN_API std::uint64_t gen_get_usec_wallclock();

/// The same reading in seconds.
GEN_API double gen_get_sec_wallclock();

/// The counter behind the wall clock, unscaled; 1,000,000,000,000 if it can't be read.
GEN_API std::uint64_t gen_get_hires_ticks();

/// Ticks of gen_get_hires_ticks() per second, asked of the system at each call; 1,000,000,000,000 if it gives none.
/// 10,000,000 on Linux, where a tick is 100 ns.
GEN_API std::uint64_t gen_get_hires_tick_frequency();

/// CPU time of the process, all its threads added up, in microseconds.
///
/// @param user    receives the time in user mode; null is an internal error
/// @param kernel  receives the time in kernel mode; null is an internal error
///
/// Both are 0 if the system gives no figures. Inside a Windows job both are the job's totals, ended children included,
/// until gen_disable_windows_cpu_time_hack() is called.
GEN_API void gen_get_usec_user_and_kernel(std::uint64_t *user, std::uint64_t *kernel);

/// User and kernel time together, as of gen_get_usec_user_and_kernel(); on Linux in a finer resolution.
GEN_API std::uint64_t gen_get_usec_cpu();

/// The same in seconds.
GEN_API double gen_get_sec_cpu();

/// The same in milliseconds, the low 32 bits. This is no wall clock: it stands still while the process sleeps.
GEN_API std::uint32_t gen_get_tick_count();

/// From now on the CPU clocks count this process alone, also inside a Windows job. There is no way back, and a
/// difference taken across this call means nothing.
GEN_API void gen_disable_windows_cpu_time_hack();

// Calendar. Renderings of a time are in local time; where the system can't convert the time they are empty.

/// Seconds since the Unix epoch.
GEN_API std::int64_t gen_get_current_time_seconds();

/// Milliseconds since the Unix epoch.
GEN_API std::int64_t gen_get_current_time_milliseconds();

/// A second since the Unix epoch as "Sat Nov 14 19:03:47 2026"; a day below ten has a blank in front.
GEN_API std::string gen_get_date_and_time(std::int64_t seconds);

/// gen_get_date_and_time() of the present second.
GEN_API std::string gen_get_current_date_and_time();

/// The present clock time alone: "19:03:47".
GEN_API std::string gen_get_current_time();

/// A second since the Unix epoch under a format of std::strftime.
///
/// @param seconds  the time
/// @param out      receives the text; null only tests whether the format fits
/// @param format   the format, not null; its expansion may have up to 249 bytes
///
/// @return false, with `out` as it was, if the expansion is empty or too long, or if the time can't be converted
GEN_API bool gen_format_date_and_time(std::int64_t seconds, std::string *out, char const *format);

/// gen_format_date_and_time() of the present second.
GEN_API bool gen_format_current_date_and_time(std::string *out, char const *format);

/// A second since the Unix epoch as "2026-11-14 19:03:47".
GEN_API std::string gen_get_iso_style_date_and_time(std::int64_t seconds);

/// Milliseconds since the Unix epoch as "Sat Nov 14 19:03:47.123 2026". The fraction of a time before the epoch keeps
/// its sign: -1 ms gives ".-01".
GEN_API std::string gen_get_formatted_time_from_milliseconds(std::int64_t milliseconds);

// Elapsed time.

/// Elapsed time as "[D:]HH:MM:SS"; the day field is there from the first full day on, unpadded. A field below ten gets
/// a 0 in front, a negative one too.
///
///     59 -> "00:00:59"    86400 -> "1:00:00:00"    -5 -> "00:00:0-5"
GEN_API std::string gen_format_elapsed_time(std::int64_t const &seconds);

/// gen_format_elapsed_time() of the whole seconds, cut towards zero; a number that no 64-bit count can hold gives the
/// nearest one, and one that is no number gives 0.
GEN_API std::string gen_format_elapsed_sec(double const &seconds);

// Stopwatches. Plain values: a copy goes on by itself. Their CPU times are those of gen_get_usec_user_and_kernel(), so
// they count all threads of the process.

/// The clocks of a GEN_STOPWATCH; a selection is a sum of them.
enum GEN_STOPWATCH_TYPES : unsigned
{
    GEN_STOPWATCH_WALLCLOCK = 1, ///< gen_get_usec_wallclock()
    GEN_STOPWATCH_KERNEL = 2,    ///< CPU time in kernel mode
    GEN_STOPWATCH_USER = 4       ///< CPU time in user mode
};

/// Measures spans on any selection of three clocks.
///
/// A span ends when the watch is stopped, and with each query of a running one, which then goes on from there: a lap.
/// An accumulating watch totals all its spans, any other one holds the last span alone. So the laps of a running watch
/// that doesn't accumulate follow each other without a gap: each tells the time since the one before.
///
/// A wrong selection is told in-band, by NO_LAP_USEC or an error text.
class GEN_STOPWATCH
{
public:
    /// What lap_usec() gives for a selection that it has no figure for.
    static constexpr std::uint64_t NO_LAP_USEC = 1000000000000000;

    /// A stopped watch with totals of 0.
    ///
    /// @param accumulate  whether the totals add up over the spans
    /// @param types       the clocks to read, of GEN_STOPWATCH_TYPES
    GEN_API explicit GEN_STOPWATCH(bool accumulate = false, unsigned types = GEN_STOPWATCH_WALLCLOCK |
                                                                             GEN_STOPWATCH_KERNEL | GEN_STOPWATCH_USER);

    /// Begins a span; nothing if the watch runs.
    GEN_API void start();

    /// Ends the span and stops; nothing if the watch is stopped.
    GEN_API void stop();

    /// Stops and clears the totals, without a reading. The clocks and the kind of the watch stay.
    GEN_API void reset();

    /// Stops, and selects other clocks for the spans to come. The totals stay; that of a clock which was not selected
    /// during the measured spans means nothing.
    GEN_API void set_types(unsigned types);

    /// The total of one clock, or of both CPU clocks, in microseconds. A running watch begins a new lap, whatever
    /// `types` is.
    ///
    /// | types                                       | result                |
    /// |---------------------------------------------|-----------------------|
    /// | GEN_STOPWATCH_WALLCLOCK                     | wall-clock time       |
    /// | GEN_STOPWATCH_KERNEL                        | kernel time           |
    /// | GEN_STOPWATCH_USER                          | user time             |
    /// | GEN_STOPWATCH_KERNEL \| GEN_STOPWATCH_USER  | user plus kernel time |
    /// | any other, or one with an unselected clock  | NO_LAP_USEC           |
    GEN_API std::uint64_t lap_usec(unsigned types);

    /// lap_usec() in seconds; 1e9 where that has no figure.
    GEN_API double lap_sec(unsigned types);

    /// Same as lap_sec().
    GEN_API double lap_time(unsigned types);

    /// lap_sec() cut to whole seconds: 1,000,000,000 where that has no figure, and 2,147,483,647 for more than fits.
    GEN_API std::int32_t lap_seconds(unsigned types);

    /// The totals in seconds as text. Clocks of `types` that are not selected are left out, and a running watch begins
    /// a new lap if any is left.
    ///
    /// W, U and K are wall-clock, user and kernel time, S is U plus K, each as of "%g":
    ///
    /// | left                      | result                                        |
    /// |---------------------------|-----------------------------------------------|
    /// | wall clock                | W seconds                                     |
    /// | kernel                    | K seconds                                     |
    /// | wall clock, kernel        | W seconds (Kkernel)                           |
    /// | user                      | U seconds                                     |
    /// | wall clock, user          | W seconds (Uuser)                             |
    /// | kernel, user              | S seconds (U user, K kernel)                  |
    /// | all three                 | S seconds (W wallclock, U user, K kernel)     |
    /// | none, or a bit of no clock| ERROR - INVALID FLAGS IN GEN_STOPWATCH::lap_str! |
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
    /// @param name  shown by print_stats(); kept, not copied, so it must outlive the watch. Null shows as "(null)".
    GEN_API explicit GEN_PROCESS_STOPWATCH(char const *name);

    /// Begins a span; nothing if the watch runs.
    GEN_API void start();

    /// Adds the span to the totals and stops; nothing if the watch is stopped.
    GEN_API void stop();

    /// Adds the span to the totals and begins the next one; nothing if the watch is stopped.
    GEN_API void lap();

    /// Stops and clears the totals, without a reading.
    GEN_API void reset();

    /// The total CPU time, user plus kernel, rounded to whole seconds, halves up. A running watch begins a new lap.
    GEN_API std::int64_t get_elapsed_cpu_time();

    /// Emits the totals as three debug messages of the library, each as of "%f" and good for about seven digits. A
    /// running watch goes on; its running span is not in the figures.
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

// Units. The tables are constant, and ready before any static object is built.

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
/// A unit that is not in the table is an internal error.
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

    // Each appends a column of the table, or all of it, to `*out`, which is not null and keeps what it has. The result
    // is the number of rows, 5.
    GEN_API static int get_entire_list(std::list<GEN_TIME_UNIT_DATA> *out);
    GEN_API static int get_long_name_list(std::list<std::string> *out);
    GEN_API static int get_short_name_list(std::list<std::string> *out);

    GEN_API static std::string get_long_name(UNIT_ENUM unit);
    GEN_API static std::string get_short_name(UNIT_ENUM unit);

    /// The power of ten of the unit, in seconds.
    GEN_API static int get_magnitude(UNIT_ENUM unit);

private:
    static int get_list_index(UNIT_ENUM unit);
};

/// A row of that table. The texts are literals.
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
/// A unit that is not in the table is an internal error.
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

    // As in GEN_TIME_UNIT; the number of rows is 4.
    GEN_API static int get_entire_list(std::list<GEN_TIME_FREQ_DATA> *out);
    GEN_API static int get_long_name_list(std::list<std::string> *out);
    GEN_API static int get_short_name_list(std::list<std::string> *out);

    GEN_API static std::string get_long_name(FREQ_ENUM freq);
    GEN_API static std::string get_short_name(FREQ_ENUM freq);

    /// The power of ten of the unit, in hertz.
    GEN_API static int get_magnitude(FREQ_ENUM freq);

private:
    static int get_list_index(FREQ_ENUM freq);
};

/// A row of that table. The texts are literals.
struct GEN_TIME_FREQ_DATA // NOLINT(clang-analyzer-optin.performance.Padding): callers know the members in this order
{
    GEN_TIME_FREQ::FREQ_ENUM freq;
    char const *short_name;
    char const *long_name;
    std::int32_t magnitude;
};

#endif
