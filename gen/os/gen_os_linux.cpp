#include "gen/os/gen_os.h"

#include "sys/sys_module.h"
#include "sys/sys_process.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

namespace {

// The counter ticks in units of 100 ns.
constexpr std::uint64_t TICKS_PER_SECOND = 10000000;
constexpr std::uint64_t NSEC_PER_TICK = 100;
constexpr std::uint64_t TICKS_PER_USEC = 10;

std::uint64_t ticks_of(timespec const &time)
{
    return static_cast<std::uint64_t>(time.tv_sec) * TICKS_PER_SECOND +
           static_cast<std::uint64_t>(time.tv_nsec) / NSEC_PER_TICK;
}

bool read_clock(clockid_t clock, std::uint64_t &ticks)
{
    timespec now;
    if (clock_gettime(clock, &now) != 0)
        return false;
    ticks = ticks_of(now);
    return true;
}

std::uint64_t ticks_of(timeval const &time)
{
    return static_cast<std::uint64_t>(time.tv_sec) * TICKS_PER_SECOND +
           static_cast<std::uint64_t>(time.tv_usec) * TICKS_PER_USEC;
}

bool read_real_path(char const *path, std::string &real_path)
{
    std::unique_ptr<char, decltype(&std::free)> const resolved(realpath(path, nullptr), &std::free);
    if (!resolved)
        return false;
    real_path = resolved.get();
    return true;
}

// A file descriptor for a scope.
class File
{
public:
    explicit File(int descriptor) : m_descriptor(descriptor) {}
    ~File()
    {
        if (is_open())
            close(m_descriptor);
    }
    File(File const &) = delete;
    File &operator=(File const &) = delete;

    bool is_open() const { return m_descriptor >= 0; }

private:
    int m_descriptor;
};

// The first characters of a text in UTF-8, in which a byte of the form 10xxxxxx continues a character.
std::string first_characters(char const *text, std::size_t count)
{
    char const *end = text;
    for (; *end != '\0'; ++end)
        if ((static_cast<unsigned char>(*end) & 0xC0U) != 0x80U && count-- == 0)
            break;
    return {text, end};
}

} // namespace

bool gen_os_read_counter(std::uint64_t &ticks)
{
    return read_clock(CLOCK_MONOTONIC, ticks);
}

bool gen_os_read_counter_frequency(std::uint64_t &ticks_per_second)
{
    ticks_per_second = TICKS_PER_SECOND;
    return true;
}

// Every process belongs to a control group. That of a login session or of a container is not a job of this flow.
bool gen_os_read_job_cpu(std::uint64_t &, std::uint64_t &)
{
    return false;
}

bool gen_os_read_process_cpu(std::uint64_t &user, std::uint64_t &kernel)
{
    rusage usage;
    if (getrusage(RUSAGE_SELF, &usage) != 0)
        return false;
    user = ticks_of(usage.ru_utime);
    kernel = ticks_of(usage.ru_stime);
    return true;
}

bool gen_os_read_process_cpu_sum(std::uint64_t &sum)
{
    return read_clock(CLOCK_PROCESS_CPUTIME_ID, sum);
}

// The two system calls are made here directly: a return after a system call is slow, because the call has discarded the
// predictions of the processor.
bool gen_os_read_cpu_sum_and_counter(std::uint64_t &sum, std::uint64_t &ticks)
{
    timespec cpu, now;
    if (clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &cpu) != 0 || clock_gettime(CLOCK_MONOTONIC, &now) != 0)
        return false;
    sum = ticks_of(cpu);
    ticks = ticks_of(now);
    return true;
}

std::int64_t gen_os_read_calendar_msec()
{
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

bool gen_os_local_time(std::int64_t seconds, std::tm &local)
{
    std::time_t const time = seconds;
    std::tm result;
    if (localtime_r(&time, &result) == nullptr)
        return false;
    local = result;
    return true;
}

bool gen_os_read_executable_path(std::string &path)
{
    char buffer[PATH_MAX];
    std::size_t const length = sys_read_executable_path(buffer, sizeof buffer);
    path.assign(buffer, length);
    return length != 0;
}

bool gen_os_read_library_path(char const *file_name, std::string &path)
{
    std::string loaded;
    return sys_find_library(file_name, loaded) && read_real_path(loaded.c_str(), path);
}

bool gen_os_case_matters_in_paths()
{
    return true;
}

char gen_os_path_list_separator()
{
    return ':';
}

char const *gen_os_library_pattern()
{
    return "*.so*";
}

bool gen_os_library_links_count()
{
    return false;
}

bool gen_os_open_stream(std::filebuf &buffer, char const *path, std::ios_base::openmode mode, int)
{
    return buffer.open(path, mode) != nullptr;
}

bool gen_os_create_file(char const *path)
{
    int const file = open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    return file >= 0 && close(file) == 0;
}

bool gen_os_create_temp_file(char const *directory, char const *prefix, std::string &path)
{
    static constexpr char SUFFIX[] = ".tmp";
    std::string const start = first_characters(prefix, 3);
    if (start.find_first_of("/\\") != std::string::npos) // the file would not be in the directory
        return false;
    std::string name = std::string(directory) + '/' + start + "XXXXXX" + SUFFIX;
    File const file(mkostemps(name.data(), sizeof SUFFIX - 1, O_CLOEXEC));
    if (!file.is_open())
        return false;
    path = std::move(name);
    return true;
}

int gen_os_random_number()
{
    // The generator of the process, so that a tool can make its names repeatable by seeding it.
    return std::rand(); // NOLINT(cert-msc30-c,cert-msc50-cpp)
}

bool gen_os_read_temp_directory(std::string &path)
{
    char const *const value = std::getenv("TMPDIR");
    path = value != nullptr && *value != '\0' ? value : "/tmp/";
    return true;
}

bool gen_os_reserve_address_space(std::size_t size_bytes)
{
    // Without access and without accounting of swap space: only addresses are reserved.
    return mmap(nullptr, size_bytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0) != MAP_FAILED;
}

void gen_os_debug_output(char const *text)
{
    if (sys_is_debugged())
        std::fputs(text, stderr);
}
