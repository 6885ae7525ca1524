#include "mem/os/mem_os_frame.h"

#include "mem/os/mem_os_call.h"

bool mem_os_frame_size_is_known()
{
    return false;
}

std::uintptr_t mem_os_frame_end_by_pointer(_Unwind_Context *)
{
    return 0;
}

std::uintptr_t mem_os_return_address_at(std::uintptr_t)
{
    return 0;
}
