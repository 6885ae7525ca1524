#include "mem/os/mem_os_call.h"

#include <windows.h>

#include <cstring>

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

void mem_os_module_name(std::uintptr_t address, char *name, std::size_t size)
{
    *name = '\0';
    HMODULE module = nullptr;
    constexpr DWORD FLAGS = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    char path[MAX_PATH];
    if (!GetModuleHandleExA(FLAGS, reinterpret_cast<char const *>(address), &module) ||
        GetModuleFileNameA(module, path, MAX_PATH) == 0)
        return;
    path[MAX_PATH - 1] = '\0';
    char const *const separator = std::strrchr(path, '\\');
    std::strncat(name, separator == nullptr ? path : separator + 1, size - 1);
}
