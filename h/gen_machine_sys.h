// What the host is. GEN_MACHINE_INFO learns the processors by visiting them: it moves the calling thread from one
// logical processor to the next and asks each one by its CPUID instruction, not the system for its idea of them.
#ifndef GEN_MACHINE_SYS_H
#define GEN_MACHINE_SYS_H

#include "zel_export_sys.h"

#include <cstdint>
#include <string>

/// Kinds of caches, for get_cache_size(). A unified cache of level 2 or 3 counts as one for data.
enum GEN_CACHE_TYPE : unsigned char
{
    GEN_CACHE_DATA = 1,
    GEN_CACHE_INST = 2
};

/// Facts of the host; all members are static.
///
/// The capture. The first operation that needs it visits the logical processors once for the whole process; operations
/// that don't are marked so. It takes some tens of microseconds per processor, and on a busy one until the thread's
/// turn comes. The calling thread ends with the affinity mask of the process, also if it was pinned to less before;
/// other threads keep theirs. On Linux the mask of the process is that of its main thread.
///
/// At most the first 32 processors of the affinity masks are visited, and of these the ones that the process may run
/// on. The others are missing in every count and mask.
///
/// Results. Unless told otherwise an operation returns whether the capture as a whole succeeded, not whether its
/// question had an answer. A capture that failed has failed for good:
///
///     the affinity masks can't be read               false, nothing was visited: all counts are 0
///     the vendor is neither of the two               false; counts, masks and features are right all the same, and
///                                                    there are no caches
///     the processor has no CPUID instruction         false; each processor counts as a package, without any feature
///     the system gives masks of 0                    true, nothing was visited: all counts are 0
///
/// Debug messages of the sender "GEN" tell the reason. After the library's release at exit the operations of the
/// capture return false with nothing found.
///
/// Threads. Any thread may call anything at any time, recapture_cpu_info() excepted; threads that come during the
/// capture wait for its end. A function that receives the messages of a capture may ask too, and sees what is there so
/// far. After the capture a call takes no lock, but for the look-up of the key in the counts of packages and cores.
class GEN_MACHINE_INFO
{
public:
    /// Visits the processors again. What is there stays: a package, core or logical processor that has appeared is
    /// added, nothing is removed, and the features and caches of a known package are not read anew. After a failed
    /// capture nothing is visited.
    ///
    /// No other thread may be in an operation of the capture meanwhile.
    GEN_API static bool recapture_cpu_info();

    // Counts. Each takes where to write the count; null is an internal error.

    /// Logical processors that are online, in the calling thread's processor group on Windows. Always true; no capture.
    GEN_API static bool get_logical_cpu_count(int *cpu_count);

    /// Same as get_logical_cpu_count().
    GEN_API static bool get_smt_cpu_count(int *cpu_count);

    /// Packages. Processors without the multi-threading flag count as one package each.
    ///
    /// If the key cpu_core_count_using_sysconf is on, the count is that of get_logical_cpu_count() and the result true;
    /// the capture takes place all the same.
    GEN_API static bool get_physical_cpu_count(int *cpu_count);

    /// Same as get_physical_cpu_count().
    GEN_API static bool get_package_cpu_count(int *cpu_count);

    /// Cores of all packages. Only on a processor of "GenuineIntel" can a core have more than one logical processor.
    ///
    /// If the key cpu_core_count_using_sysconf is on, the count is that of get_logical_cpu_count() and the result true;
    /// there is no capture then.
    GEN_API static bool get_core_cpu_count(int *cpu_count);

    /// The first logical processor of each core, as an affinity mask: running there alone leaves out every second
    /// hardware thread.
    ///
    /// @param affinity_mask        receives the mask; null is an internal error
    /// @param affinity_mask_qword  receives the same mask, never more than its low 32 bits; null is an internal error
    GEN_API static bool get_non_smt_affinity_mask(unsigned long *affinity_mask, std::uint64_t *affinity_mask_qword);

    // Instruction-set extensions of the first package, the one with the lowest id. `supported` receives the answer,
    // false too for a level that isn't in the list or if nothing was visited; null is an internal error.

    /// Level 1 SSE, 2 SSE2, 3 SSE3, 4 SSSE3, 5 SSE4.1, 6 SSE4.2.
    ///
    ///     sse_is_supported(7, &b), sse_is_supported(0, &b) -> b false, result true after a good capture
    GEN_API static bool sse_is_supported(int level, bool *supported);

    /// Level 1 AVX, 2 AVX2. Level 1 is also true if the system saves extended state (OSXSAVE) without AVX being there,
    /// and says nothing about whether the system saves the wide registers.
    GEN_API static bool avx_is_supported(int level, bool *supported);

    /// Level 1 BMI1, 2 BMI2.
    GEN_API static bool bmi_is_supported(int level, bool *supported);

    GEN_API static bool popcnt_is_supported(bool *supported);

    GEN_API static bool lzcnt_is_supported(bool *supported);

    /// The first cache of a level and kind that the first package reported.
    ///
    /// @param level      1, 2 or 3
    /// @param size       receives its size in kilobytes, for a trace cache in thousands of micro-operations; 0 if there
    ///                   is none. Null is an internal error
    /// @param line_size  receives the size of its lines in bytes, 0 for a trace cache or none; may be null
    /// @param type       a GEN_CACHE_TYPE; 0 matches no cache, and more than GEN_CACHE_INST is an internal error
    ///
    /// On "GenuineIntel" only the descriptors of CPUID leaf 2 count: a processor that refers to leaf 4 instead, as all
    /// newer ones do, has no caches here.
    GEN_API static bool get_cache_size(int level, unsigned *size, unsigned *line_size, unsigned char type);

    /// The nominal frequency of the first processor. No capture.
    ///
    /// @param mhz  receives it, in MHz; left alone if the system doesn't tell. Not null
    /// @return whether the system tells
    GEN_API static bool get_cpu_frequency(int *mhz);

    // Memory of the machine, in bytes; 0 if the system doesn't tell. Always true; no capture. The pointer is not null.

    /// The memory that is built in.
    GEN_API static bool get_physical_ram(std::uint64_t *bytes);
    /// Memory and swap space together, on Windows the limit of what can be committed.
    GEN_API static bool get_total_ram(std::uint64_t *bytes);
    /// What is available of get_total_ram().
    GEN_API static bool get_available_ram(std::uint64_t *bytes);
    /// What is in use of get_total_ram().
    GEN_API static bool get_total_usage_ram(std::uint64_t *bytes);
    /// get_total_ram() without get_physical_ram(): the swap space.
    GEN_API static bool get_virtual_ram(std::uint64_t *bytes);

    // The operating system. Each takes where to store the answer and returns false for null; no capture.

    /// "Windows 7", on Linux the distribution: "Debian GNU/Linux". False if the system doesn't tell.
    ///
    /// The name is that of a desktop for servers too; "Windows Server 2012", of version 6.2, is the only one of its
    /// own.
    GEN_API static bool get_os_name(std::string *name);
    /// "6.1", on Linux the distribution's version, such as "12". False if the system tells none.
    GEN_API static bool get_os_version(std::string *version);
    /// "windows" or "linux".
    GEN_API static bool get_platform_name(std::string *name);
    /// The same with "64" behind it.
    GEN_API static bool get_platform_name_with_arch(std::string *name);
    /// "x86_64", as for every 64-bit system.
    GEN_API static bool get_hw_name(std::string *name);
    /// True.
    GEN_API static bool get_os_64_bit();

private:
    struct FEATURE_LEVELS;

    static bool capture_cpu_info();
    static bool read_feature(FEATURE_LEVELS const &levels, int level, bool *supported);
};

// The host and its user. No function tells of a failure other than by its result. Any thread may call; two threads must
// not be the first to ask for the addresses of this host at once.

/// The host's name as the system has it, on Windows without its domain; empty if it doesn't tell.
GEN_API std::string gen_get_host_name();

/// All IPv4 addresses of a host, in the order of the system's record.
///
/// @param host  name of the host; null for this one, whose addresses are looked up until that succeeds once
///
///     "192.0.2.1", "192.0.2.1,192.0.2.7", "" if it can't be resolved
GEN_API std::string gen_get_ip_addr(char const *host);

/// Whether the first address of a host is in one of the nine networks of the site, which the build sets
/// (ZEL_SITE_NETWORKS).
///
/// @param host  as for gen_get_ip_addr()
GEN_API bool gen_is_brisel_ip_addr(char const *host);

/// The user that the process runs for; empty if the system doesn't tell.
GEN_API std::string gen_get_user_name();

/// Whether the browser that comes with Windows is there with a version whose first character is "4" or beyond: 9 is
/// valid and 11 is not. False on Linux.
GEN_API bool gen_is_valid_web_browser();

/// Whether the last line of a file has "/docker" or "/lxc" in it. Of a line of more than 1024 characters the last piece
/// counts, when it is cut into pieces of that length from its start.
///
/// @param path  the file; false if it can't be read
GEN_API bool gen_check_is_running_in_container_for_file(std::string const &path);

/// 1 if that holds for the control groups of process 1 on Linux, else 0; always 0 on Windows.
GEN_API int gen_is_running_in_container();

#endif
