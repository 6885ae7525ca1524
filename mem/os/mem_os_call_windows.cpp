#include "mem/os/mem_os_call.h"

std::size_t mem_os_walk_stack(MEM_OS_FRAME *, std::size_t)
{
    return 0;
}

std::uintptr_t mem_os_stack_end(std::uintptr_t)
{
    return 0;
}

// The runtime keeps its own operators, and nothing that they allocate is counted.
bool mem_os_is_cxx_runtime(std::uintptr_t)
{
    return false;
}
