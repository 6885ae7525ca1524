#include "mem_sys.h"

#include "mem/os/mem_os.h"
#include "mem/tracking/mem_count.h"

#include <algorithm>

std::size_t MEM_MANAGER::current_total_memory()
{
    if (!mem_count_is_linked())
        return mem_info_get_process_current_working_set_size();
    return static_cast<std::size_t>(std::max<std::int64_t>(mem_count_total(), 0));
}

std::size_t mem_info_get_process_current_working_set_size()
{
    std::size_t bytes = 0;
    mem_os_working_set(&bytes);
    return bytes;
}

std::size_t mem_info_get_process_peak_working_set_size()
{
    std::size_t bytes = 0;
    mem_os_peak_working_set(&bytes);
    return bytes;
}

std::size_t mem_info_get_process_peak_virtual_used()
{
    std::size_t bytes = 0;
    mem_os_peak_virtual(&bytes);
    return bytes;
}
