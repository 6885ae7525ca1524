#include "gen/os/gen_os.h"

#include "fio_sys.h"
#include "sys/sys_module.h"
#include "sys/sys_process.h"

#include <cstring>
#include <filesystem>

#include <windows.h>

#include <time.h>

namespace {

constexpr DWORD PATH_BUFFER_SIZE = 261; // 260 characters and the terminator

std::uint64_t units_of(FILETIME const &time)
{
    return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

} // namespace

// The library does nothing at the start and the end of a thread, so it needs no notifications of them.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH)
        DisableThreadLibraryCalls(instance);
    return TRUE;
}

bool gen_os_read_counter(std::uint64_t &ticks)
{
    LARGE_INTEGER counter;
    if (!QueryPerformanceCounter(&counter))
        return false;
    ticks = static_cast<std::uint64_t>(counter.QuadPart);
    return true;
}

bool gen_os_read_counter_frequency(std::uint64_t &ticks_per_second)
{
    LARGE_INTEGER frequency;
    if (!QueryPerformanceFrequency(&frequency))
        return false;
    ticks_per_second = static_cast<std::uint64_t>(frequency.QuadPart);
    return true;
}

bool gen_os_read_job_cpu(std::uint64_t &user, std::uint64_t &kernel)
{
    JOBOBJECT_BASIC_ACCOUNTING_INFORMATION totals;
    if (!QueryInformationJobObject(nullptr, JobObjectBasicAccountingInformation, &totals, sizeof totals, nullptr))
        return false;
    user = static_cast<std::uint64_t>(totals.TotalUserTime.QuadPart);
    kernel = static_cast<std::uint64_t>(totals.TotalKernelTime.QuadPart);
    return true;
}

bool gen_os_read_process_cpu(std::uint64_t &user, std::uint64_t &kernel)
{
    HANDLE const process = GetCurrentProcess();
    FILETIME created, ended, kernel_time, user_time;
    if (process == nullptr || !GetProcessTimes(process, &created, &ended, &kernel_time, &user_time))
        return false;
    user = units_of(user_time);
    kernel = units_of(kernel_time);
    return true;
}

// The system gives user and kernel time only.
bool gen_os_read_process_cpu_sum(std::uint64_t &)
{
    return false;
}

bool gen_os_read_cpu_sum_and_counter(std::uint64_t &, std::uint64_t &)
{
    return false;
}

std::int64_t gen_os_read_calendar_msec()
{
    constexpr std::uint64_t EPOCH_IN_UNITS = 116444736000000000; // 1601 to 1970, in 100 ns units
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    return static_cast<std::int64_t>((units_of(now) - EPOCH_IN_UNITS) / 10000);
}

bool gen_os_local_time(std::int64_t seconds, std::tm &local)
{
    __time64_t const time = seconds;
    std::tm result;
    if (_localtime64_s(&result, &time) != 0)
        return false;
    local = result;
    return true;
}

bool gen_os_read_executable_path(std::string &path)
{
    char buffer[PATH_BUFFER_SIZE];
    std::size_t const length = sys_read_executable_path(buffer, sizeof buffer);
    path.assign(buffer, length);
    return length != 0;
}

bool gen_os_read_library_path(char const *file_name, std::string &path)
{
    return sys_find_library(file_name, path);
}

bool gen_os_case_matters_in_paths()
{
    return false;
}

char gen_os_path_list_separator()
{
    return ';';
}

char const *gen_os_library_pattern()
{
    return "*.dll";
}

bool gen_os_library_links_count()
{
    return true;
}

bool gen_os_open_stream(std::filebuf &buffer, char const *path, std::ios_base::openmode mode)
{
    return buffer.open(std::filesystem::path(fio_get_unc_full_path(path)), mode) != nullptr;
}

bool gen_os_write_private_profile_string(char const *section, char const *key, char const *value, char const *file,
                                         int &result)
{
    result = WritePrivateProfileStringA(section, key, value, file);
    return true;
}

bool gen_os_read_file(char const *, std::string &)
{
    return false;
}

bool gen_os_replace_file(char const *, std::string const &)
{
    return false;
}

bool gen_os_create_temp_file(char const *directory, char const *prefix, std::string &path)
{
    // The call takes a directory that is at least 14 characters shorter than the longest path. Not every system checks
    // that.
    char buffer[PATH_BUFFER_SIZE] = {};
    if (std::strlen(directory) > MAX_PATH - 14 || GetTempFileNameA(directory, prefix, 0, buffer) == 0)
        return false;
    path = buffer;
    return true;
}

bool gen_os_read_temp_directory(std::string &path)
{
    char buffer[PATH_BUFFER_SIZE] = {};
    if (GetTempPathA(PATH_BUFFER_SIZE - 1, buffer) == 0)
        return false;
    path = buffer;
    return true;
}

bool gen_os_reserve_address_space(std::size_t size_bytes)
{
    return VirtualAlloc(nullptr, size_bytes, MEM_RESERVE, PAGE_EXECUTE_READWRITE) != nullptr;
}

void gen_os_debug_output(char const *text)
{
    OutputDebugStringA(text);
}
