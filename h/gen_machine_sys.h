// Facts of the host: processors, caches, memory, operating system, names and addresses. GEN_MACHINE_INFO reads the
// facts of the processors from the processors themselves: it moves the calling thread from one logical processor to the
// next and executes the CPUID instruction on each.
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
/// The capture. The first function that needs the facts of the processors visits all logical processors, once for the
/// whole process; this is called the capture. Functions marked "no capture" don't need it. It takes some tens of
/// microseconds per processor, and longer on a busy one. Afterwards the calling thread has the affinity mask of the
/// process, even if it had a smaller one before; other threads keep theirs. On Linux the mask of the process is that of
/// its main thread.
///
/// Only processors among the first 32 of the affinity masks on which the process may run are visited. All others are
/// missing in the counts and masks.
///
/// Results. Unless a comment says otherwise, a function returns whether the capture succeeded, not whether its own
/// value was found. A failed capture is never repeated:
///
/// | cause                                         | result | found by the capture                               |
/// |-----------------------------------------------|--------|----------------------------------------------------|
/// | the affinity masks can't be read              | false  | nothing; all counts are 0                          |
/// | the vendor isn't GenuineIntel or AuthenticAMD | false  | counts, masks and features, but no caches          |
/// | the processor has no CPUID instruction        | false  | each processor as a package, without any feature   |
/// | the system gives masks of 0                   | true   | nothing; all counts are 0                          |
///
/// Debug messages of the sender "GEN" report the cause. After the exit handlers have released the library's state, the
/// functions that need the capture return false and find nothing.
///
/// Threads. Any thread may call any function at any time, except for recapture_cpu_info(). Threads that call during the
/// capture wait for its end. A function that receives the messages of a capture may call these functions and gets the
/// facts found so far. After the capture no lock is taken, except for reading the configuration key in the counts of
/// packages and cores.
class GEN_MACHINE_INFO
{
public:
    /// Visits the processors again. New packages, cores and logical processors are added; nothing is removed, and the
    /// features and caches of a known package are not read again. After a failed capture nothing is visited.
    ///
    /// No other thread may be in a function that needs the capture meanwhile.
    GEN_API static bool recapture_cpu_info();

    // Counts. `cpu_count` receives the count; null is the internal error "cpu_count != 0".

    /// Logical processors that are online, in the calling thread's processor group on Windows. Always true; no capture.
    GEN_API static bool get_logical_cpu_count(int *cpu_count);

    /// Same as get_logical_cpu_count().
    GEN_API static bool get_smt_cpu_count(int *cpu_count);

    /// Packages (sockets). A processor without the multi-threading flag of CPUID counts as one package.
    ///
    /// If the configuration key cpu_core_count_using_sysconf is on, the count is that of get_logical_cpu_count() and
    /// the result is true; there still is a capture.
    GEN_API static bool get_physical_cpu_count(int *cpu_count);

    /// Same as get_physical_cpu_count().
    GEN_API static bool get_package_cpu_count(int *cpu_count);

    /// Cores of all packages. Only on a processor of "GenuineIntel" can a core have more than one logical processor.
    ///
    /// If the configuration key cpu_core_count_using_sysconf is on, the count is that of get_logical_cpu_count() and
    /// the result is true; there is no capture then.
    GEN_API static bool get_core_cpu_count(int *cpu_count);

    /// An affinity mask with the first logical processor of each core. A process with this mask uses each core once.
    ///
    /// @param affinity_mask        receives the mask; null is the internal error "affinity_mask != 0"
    /// @param affinity_mask_qword  receives the same mask, of which only the low 32 bits can be set; null is the
    ///                             internal error "affinity_mask_qword != 0"
    GEN_API static bool get_non_smt_affinity_mask(unsigned long *affinity_mask, std::uint64_t *affinity_mask_qword);

    // Instruction-set extensions of the first package, the one with the lowest id. `supported` receives whether the
    // package has the extension; false for a level that isn't listed, and if no processor was visited. Null is the
    // internal error "supported != 0".

    /// Level 1 SSE, 2 SSE2, 3 SSE3, 4 SSSE3, 5 SSE4.1, 6 SSE4.2.
    ///
    ///     sse_is_supported(7, &b), sse_is_supported(0, &b) -> b false, result true after a good capture
    GEN_API static bool sse_is_supported(int level, bool *supported);

    /// Level 1 AVX, 2 AVX2. Level 1 is also true if the OSXSAVE bit of CPUID is set without the AVX bit. It doesn't
    /// mean that the operating system saves the AVX registers.
    GEN_API static bool avx_is_supported(int level, bool *supported);

    /// Level 1 BMI1, 2 BMI2.
    GEN_API static bool bmi_is_supported(int level, bool *supported);

    GEN_API static bool popcnt_is_supported(bool *supported);

    GEN_API static bool lzcnt_is_supported(bool *supported);

    /// The first cache of a level and kind that the first package reports.
    ///
    /// @param level      1, 2 or 3
    /// @param size       receives its size in kilobytes, for a trace cache in thousands of micro-operations; 0 if there
    ///                   is none. Null is the internal error "size != 0"
    /// @param line_size  receives the size of its lines in bytes; 0 for a trace cache, and if there is none. May be
    ///                   null
    /// @param type       a GEN_CACHE_TYPE; 0 matches no cache, and more than GEN_CACHE_INST is the internal error
    ///                   "type <= GEN_CACHE_INST"
    ///
    /// On "GenuineIntel" only the descriptors of CPUID leaf 2 are read. A processor that refers to leaf 4 instead, as
    /// all newer ones do, has no caches here.
    GEN_API static bool get_cache_size(int level, unsigned *size, unsigned *line_size, unsigned char type);

    /// The nominal frequency of the first processor. No capture.
    ///
    /// @param mhz  receives the frequency in MHz; unchanged if the system doesn't report it. Not null
    /// @return whether the system reports it
    GEN_API static bool get_cpu_frequency(int *mhz);

    // Memory of the machine. `bytes` receives the number of bytes, 0 if the system doesn't report it; not null. The
    // result is always true. No capture.

    /// The installed memory.
    GEN_API static bool get_physical_ram(std::uint64_t *bytes);
    /// Memory and swap space together; on Windows the limit of committed memory.
    GEN_API static bool get_total_ram(std::uint64_t *bytes);
    /// The part of get_total_ram() that is available.
    GEN_API static bool get_available_ram(std::uint64_t *bytes);
    /// The part of get_total_ram() that is in use.
    GEN_API static bool get_total_usage_ram(std::uint64_t *bytes);
    /// get_total_ram() minus get_physical_ram(): the swap space.
    GEN_API static bool get_virtual_ram(std::uint64_t *bytes);

    // The operating system. The argument receives a text; if it is null, the result is false. No capture.

    /// The name of the system, such as "Windows 7"; on Linux that of the distribution, such as "Debian GNU/Linux".
    /// False if the system doesn't report it.
    ///
    /// A server is reported by the name of the desktop system of the same version, except for "Windows Server 2012"
    /// (version 6.2).
    GEN_API static bool get_os_name(std::string *name);
    /// The version of the system, such as "6.1"; on Linux that of the distribution, such as "12". False if the system
    /// doesn't report it.
    GEN_API static bool get_os_version(std::string *version);
    /// "windows" or "linux".
    GEN_API static bool get_platform_name(std::string *name);
    /// "windows64" or "linux64".
    GEN_API static bool get_platform_name_with_arch(std::string *name);
    /// "x86_64", for every 64-bit system.
    GEN_API static bool get_hw_name(std::string *name);
    /// Whether the system is a 64-bit system; always true.
    GEN_API static bool get_os_64_bit();

private:
    struct FeatureLevels;

    static bool capture_cpu_info();
    static bool read_feature(FeatureLevels const &levels, int level, bool *supported);
};

// The host and its user. Failures are reported by the results alone. Any thread may call these functions, but the first
// look-up of the addresses of this host must not run on two threads at once.

/// The name of the host, on Windows without its domain; empty if the system doesn't report it.
GEN_API std::string gen_get_host_name();

/// All IPv4 addresses of a host, separated by commas, in the order in which the system reports them.
///
/// @param host  name of the host; null for this host, whose addresses are stored after the first successful look-up
///
///     "192.0.2.1", "192.0.2.1,192.0.2.7", or "" if the name can't be resolved
GEN_API std::string gen_get_ip_addr(char const *host);

/// Whether the first address of a host is in one of the nine networks of the site. The build sets the networks (CMake
/// variable ZEL_SITE_NETWORKS).
///
/// @param host  as for gen_get_ip_addr()
GEN_API bool gen_is_brisel_ip_addr(char const *host);

/// The name of the user that runs the process; empty if the system doesn't report it.
GEN_API std::string gen_get_user_name();

/// Whether the browser that comes with Windows is installed, with a version text whose first character is "4" or
/// greater: version 9 is valid and version 11 is not. False on Linux.
GEN_API bool gen_is_valid_web_browser();

/// Whether the last line of a file contains "/docker" or "/lxc". A line of more than 1024 characters is split into
/// pieces of that length from its start, and only the last piece is searched.
///
/// @param path  the file; the result is false if it can't be read
GEN_API bool gen_check_is_running_in_container_for_file(std::string const &path);

/// On Linux 1 if gen_check_is_running_in_container_for_file() is true for "/proc/1/cgroup", else 0; always 0 on
/// Windows.
GEN_API int gen_is_running_in_container();

#endif
