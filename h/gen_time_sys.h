// Clocks of the suite and their text renderings. Names with _usec count microseconds (std::uint64_t), names with _sec
// seconds (double). Any thread may call any of them; none takes a lock.
#ifndef GEN_TIME_SYS_H
#define GEN_TIME_SYS_H

#include "zel_export_sys.h"

#include <cstdint>
#include <string>

// Raw clocks. A reading allocates nothing.

/// Elapsed time since an arbitrary start, in microseconds.
///
/// The count of ticks is multiplied by 1,000,000 in 64 bits before it is divided by the tick frequency, so with ticks
/// of 10 MHz the value wraps after about 21 days: take differences, and expect one wrap. A counter that can't be read
/// stands at 1,000,000,000,000 ticks. The clock stops while the machine is suspended.
GEN_API std::uint64_t gen_get_usec_wallclock();

/// The same reading in seconds.
GEN_API double gen_get_sec_wallclock();

/// The counter behind the wall clock, unscaled; 1,000,000,000,000 if it can't be read.
GEN_API std::uint64_t gen_get_hires_ticks();

/// Ticks of gen_get_hires_ticks() per second, asked of the system at each call; 1,000,000,000,000 if it gives none.
/// 10,000,000 on Linux, where a tick is 100 ns.
GEN_API std::uint64_t gen_get_hires_tick_frequency();

/// CPU time of the process, in microseconds.
///
/// @param user    receives the time in user mode; null is an internal error
/// @param kernel  receives the time in kernel mode; null is an internal error
///
/// Both are 0 if the system gives no figures. Inside a Windows job both are the job's totals, ended children included,
/// until gen_disable_windows_cpu_time_hack() is called.
GEN_API void gen_get_usec_user_and_kernel(std::uint64_t *user, std::uint64_t *kernel);

/// CPU time of the process in user and kernel mode together, all its threads added up, in microseconds.
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
/// @param format   the format; its expansion may have up to 249 bytes
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

#endif
