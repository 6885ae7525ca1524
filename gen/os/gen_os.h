// The queries of the library to the operating system. For each header there is one source for each platform, which
// implements the queries in the same order:
//
//     gen_os.h            clocks, modules, files, the process
//     gen_os_host.h       the host, its user, the version of the system
//     gen_os_machine.h    the processors: affinity, CPUID, frequency
//     gen_os_ini.h        changes of initialisation files
//     gen_os_text.h       text functions of the Windows runtime
//
// A test may link a fake in place of the first four. A query with outputs returns false, and leaves the outputs alone,
// if the system gives no result; the caller decides what to do then. The sources contain system calls alone: a text
// that the system gives is read by the pure functions of gen/base, and the queries that zel_gen has in common with the
// other libraries are in sys/.
#ifndef GEN_OS_H
#define GEN_OS_H

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <string>

// Clocks.

/// The monotonic counter, and its ticks per second.
bool gen_os_read_counter(std::uint64_t &ticks);
bool gen_os_read_counter_frequency(std::uint64_t &ticks_per_second);

/// CPU time in 100 ns units: of this process's job, including processes that have ended, and of this process.
bool gen_os_read_job_cpu(std::uint64_t &user, std::uint64_t &kernel);
bool gen_os_read_process_cpu(std::uint64_t &user, std::uint64_t &kernel);

/// The sum of user and kernel time of this process, in 100 ns units. False if it is not cheaper than the two values.
bool gen_os_read_process_cpu_sum(std::uint64_t &sum);

/// The same sum, and the counter right after it. False on systems with jobs, where the time of the job comes first.
bool gen_os_read_cpu_sum_and_counter(std::uint64_t &sum, std::uint64_t &ticks);

/// Milliseconds since the Unix epoch.
std::int64_t gen_os_read_calendar_msec();

/// Local time of a second since the Unix epoch.
bool gen_os_local_time(std::int64_t seconds, std::tm &local);

// Modules. Paths are absolute, without "..", and have the separators of the system. Linux resolves links. Windows gives
// the text of its module table, cut at 260 characters.

bool gen_os_read_executable_path(std::string &path);

/// The path of a library of that file name that is in the process. Loads nothing.
bool gen_os_read_library_path(char const *file_name, std::string &path);

/// Whether two names that differ in case only can be different files.
bool gen_os_case_matters_in_paths();

/// The separator of the elements of PATH.
char gen_os_path_list_separator();

/// A pattern of FIO_FILE_SYSTEM::findfirst() that matches the file names of libraries.
char const *gen_os_library_pattern();

/// Whether a link to a library counts as a library of its own; otherwise it is another name of one that counts.
bool gen_os_library_links_count();

// Files.

/// Opens a file buffer through the system's long-path form; it has no file yet. `protection` is what the runtime
/// library of Windows calls a sharing argument (share.h); it has no effect elsewhere.
bool gen_os_open_stream(std::filebuf &buffer, char const *path, std::ios_base::openmode mode, int protection);

/// Creates an empty file that did not exist. Of several processes that call it at the same time, one succeeds.
bool gen_os_create_file(char const *path);

/// Creates an empty file in a directory. Its name was free, and begins with the first three characters of the prefix.
/// Processes that call it at the same time get different files. The directory is not empty; it and the path have the
/// separators of the system.
bool gen_os_create_temp_file(char const *directory, char const *prefix, std::string &path);

/// The next number of the runtime library's rand(). Windows keeps one state of that for each thread, in which all
/// threads begin with the same numbers; there the process has one sequence, that of a thread which doesn't seed.
int gen_os_random_number();

/// The directory for temporary files as the system gives it, with or without a separator at its end.
bool gen_os_read_temp_directory(std::string &path);

// The process.

/// Reserves address space until the process ends, at an address that the system chooses. Commits no memory.
bool gen_os_reserve_address_space(std::size_t size_bytes);

/// Passes a text to the platform's debug channel.
void gen_os_debug_output(char const *text);

#endif
