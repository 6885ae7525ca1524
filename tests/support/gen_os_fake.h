// A scripted operating system under the library, for tests that must know every value. One script per process.
#ifndef TESTS_SUPPORT_GEN_OS_FAKE_H
#define TESTS_SUPPORT_GEN_OS_FAKE_H

#include "zel_export_sys.h"

#include <cstddef>
#include <cstdint>

/// The next CPU reading, in microseconds, and counter reading, in ticks of 10 MHz unless set otherwise.
GEN_API void gen_os_fake_set_clocks(std::uint64_t cpu_usec, std::uint64_t ticks);
/// The step that each reading adds to its clock for the next one; 0 at start.
GEN_API void gen_os_fake_set_clock_steps(std::uint64_t cpu_usec, std::uint64_t ticks);
/// Moves both clocks on, or back by negative values.
GEN_API void gen_os_fake_advance(std::int64_t cpu_usec, std::int64_t ticks);
/// How many readings of both clocks together there were so far.
GEN_API std::uint64_t gen_os_fake_reading_count();
GEN_API void gen_os_fake_set_frequency(std::uint64_t ticks_per_second);

/// The queries that succeed; at start all but the job's.
struct GEN_OS_FAKE_ANSWERS
{
    bool counter = true;
    bool frequency = true;
    bool job_cpu = false;
    bool process_cpu = true;
    bool process_cpu_sum = true;
    bool cpu_sum_and_counter =
        true; ///< in one question; not together with a job's figures, nor without either of the two
    bool local_time = true;
    bool executable_path = true;
    bool private_profile_string = true; ///< as on Windows
    bool change_file = true;
};
GEN_API void gen_os_fake_set_answers(GEN_OS_FAKE_ANSWERS const &answers);

/// The split figures of the job and of the process, in units of 100 ns.
GEN_API void gen_os_fake_set_job_cpu(std::uint64_t user, std::uint64_t kernel);
GEN_API void gen_os_fake_set_process_cpu(std::uint64_t user, std::uint64_t kernel);
/// How often the process's were read.
GEN_API std::uint64_t gen_os_fake_split_reading_count();

/// The calendar; local time is UTC.
GEN_API void gen_os_fake_set_calendar_msec(std::int64_t msec);

/// With an empty path the query fails.
GEN_API void gen_os_fake_set_executable_path(char const *path);
GEN_API void gen_os_fake_set_library_path(char const *path);
GEN_API void gen_os_fake_set_case_matters(bool case_matters);

/// How many reservations of address space succeed before the first one fails; all at start.
GEN_API void gen_os_fake_set_reservation_limit(std::size_t count);
/// How many were requested.
GEN_API std::size_t gen_os_fake_reservation_count();

/// The last write of a private profile string, by the pointers that came, and what the next ones give; 0 at start.
struct GEN_OS_FAKE_PROFILE_CALL
{
    char const *section = nullptr;
    char const *key = nullptr;
    char const *value = nullptr;
    char const *file = nullptr;
    int lock_msec = 0;
};
GEN_API GEN_OS_FAKE_PROFILE_CALL gen_os_fake_last_profile_call();
GEN_API void gen_os_fake_set_profile_result(int result);
/// The text of the one file there is, under every path; empty at start. The calls to change it since then, "change path
/// within milliseconds" and a line end each. The results are valid until the next call.
GEN_API void gen_os_fake_set_file_text(char const *text);
GEN_API char const *gen_os_fake_file_text();
GEN_API char const *gen_os_fake_file_calls();
/// The names of the next temporary files in whatever directory, a line each. A file is created even if it is there
/// already. If the line is empty or if none is left, as at start, the query fails.
GEN_API void gen_os_fake_set_temp_file_names(char const *names);
/// The requests for temporary files since then, a line each: the directory, "|" and the prefix; valid until the next.
GEN_API char const *gen_os_fake_temp_file_requests();
/// The directory for temporary files; at start and if empty, the query fails.
GEN_API void gen_os_fake_set_temp_directory(char const *path);

/// The output on the debug channel so far; valid until the next text.
GEN_API char const *gen_os_fake_debug_output();

#endif
