#include "mem/os/mem_os.h"

#include <windows.h>

#include <psapi.h>

namespace {

bool read_counters(PROCESS_MEMORY_COUNTERS *counters)
{
    return K32GetProcessMemoryInfo(GetCurrentProcess(), counters, sizeof *counters) != 0;
}

} // namespace

bool mem_os_working_set(std::size_t *bytes)
{
    PROCESS_MEMORY_COUNTERS counters{};
    if (!read_counters(&counters))
        return false;
    *bytes = counters.WorkingSetSize;
    return true;
}

bool mem_os_peak_working_set(std::size_t *bytes)
{
    PROCESS_MEMORY_COUNTERS counters{};
    if (!read_counters(&counters))
        return false;
    *bytes = counters.PeakWorkingSetSize;
    return true;
}

bool mem_os_peak_virtual(std::size_t *bytes)
{
    PROCESS_MEMORY_COUNTERS counters{};
    if (!read_counters(&counters))
        return false;
    *bytes = counters.PeakPagefileUsage;
    return true;
}

bool mem_os_working_set_and_mark(std::size_t *bytes, std::size_t *mark_bytes)
{
    PROCESS_MEMORY_COUNTERS counters{};
    if (!read_counters(&counters))
        return false;
    *bytes = counters.WorkingSetSize;
    *mark_bytes = counters.PeakWorkingSetSize;
    return true;
}
