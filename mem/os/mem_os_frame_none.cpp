#include "mem/os/mem_os_frame.h"

bool mem_os_frame_size_is_known()
{
    return false;
}

std::uintptr_t mem_os_frame_end_by_pointer(_Unwind_Context *)
{
    return 0;
}

std::uintptr_t mem_os_frame_return_address(std::uintptr_t)
{
    return 0;
}
