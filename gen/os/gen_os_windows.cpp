#include "gen/os/gen_os.h"

#include "fio_sys.h"
#include "sys/sys_module.h"
#include "sys/sys_process.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <utility>

#include <windows.h>

#include <ext/stdio_filebuf.h>

#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>
#include <time.h>

namespace {

constexpr DWORD PATH_BUFFER_SIZE = 261; // 260 characters and the terminator

std::uint64_t units_of(FILETIME const &time)
{
    return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

// The flags of the open call for the modes that a standard file buffer accepts; false for any other.
bool read_open_flags(std::ios_base::openmode mode, int &flags)
{
    using std::ios_base;
    struct ModeRow
    {
        ios_base::openmode mode;
        int flags;
    };
    static constexpr int WRITE = _O_WRONLY | _O_CREAT;
    static constexpr int READ_AND_WRITE = _O_RDWR | _O_CREAT;
    static ModeRow const ROWS[] = {
        {ios_base::in, _O_RDONLY},
        {ios_base::out, WRITE | _O_TRUNC},
        {ios_base::out | ios_base::trunc, WRITE | _O_TRUNC},
        {ios_base::app, WRITE | _O_APPEND},
        {ios_base::out | ios_base::app, WRITE | _O_APPEND},
        {ios_base::in | ios_base::out, _O_RDWR},
        {ios_base::in | ios_base::out | ios_base::trunc, READ_AND_WRITE | _O_TRUNC},
        {ios_base::in | ios_base::app, READ_AND_WRITE | _O_APPEND},
        {ios_base::in | ios_base::out | ios_base::app, READ_AND_WRITE | _O_APPEND},
    };
    for (ModeRow const &row : ROWS) {
        if (row.mode != (mode & ~(ios_base::ate | ios_base::binary)))
            continue;
        flags = row.flags | ((mode & ios_base::binary) != 0 ? _O_BINARY : _O_TEXT);
        return true;
    }
    return false;
}

// A descriptor of the runtime library, -1 on failure. A sharing argument that it doesn't know would end the process.
int open_shared(std::wstring const &path, int flags, int protection)
{
    static constexpr int KNOWN[] = {_SH_DENYRW, _SH_DENYWR, _SH_DENYRD, _SH_DENYNO};
    int descriptor = -1;
    if (path.empty() || std::find(std::begin(KNOWN), std::end(KNOWN), protection) == std::end(KNOWN) ||
        _wsopen_s(&descriptor, path.c_str(), flags, protection, _S_IREAD | _S_IWRITE) != 0)
        return -1;
    return descriptor;
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

bool gen_os_open_stream(std::filebuf &buffer, char const *path, std::ios_base::openmode mode, int protection)
{
    int flags = 0;
    if (!read_open_flags(mode, flags))
        return false;
    int const descriptor = open_shared(fio_get_unc_full_path(path), flags, protection);
    if (descriptor == -1)
        return false;
    __gnu_cxx::stdio_filebuf<char> opened(descriptor, mode & ~std::ios_base::ate);
    if (!opened.is_open()) {
        _close(descriptor);
        return false;
    }
    if ((mode & std::ios_base::ate) != 0 && opened.pubseekoff(0, std::ios_base::end) == std::streampos(-1))
        return false;
    opened.pubimbue(buffer.getloc());
    buffer = std::move(opened);
    return true;
}

bool gen_os_create_file(char const *path)
{
    HANDLE const file =
        CreateFileW(fio_get_unc_full_path(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                    /*lpSecurityAttributes=*/nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, /*hTemplateFile=*/nullptr);
    return file != INVALID_HANDLE_VALUE && CloseHandle(file) != FALSE;
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

int gen_os_random_number()
{
    // The sequence of rand() before any srand(). A 32-bit product wraps, as there.
    static std::atomic<std::uint32_t> s_state{1};
    std::uint32_t state = s_state.load(std::memory_order_relaxed);
    std::uint32_t next;
    do
        next = state * 214013 + 2531011;
    while (!s_state.compare_exchange_weak(state, next, std::memory_order_relaxed));
    return static_cast<int>(next >> 16 & RAND_MAX);
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
