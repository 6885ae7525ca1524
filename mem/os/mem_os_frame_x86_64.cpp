#include "mem/os/mem_os_frame.h"

#include <unwind.h>

static_assert(sizeof(std::uintptr_t) == 8, "the frames of 64-bit code");

bool mem_os_frame_size_is_known()
{
    return true;
}

std::uintptr_t mem_os_frame_end_by_pointer(_Unwind_Context *context)
{
    constexpr int RBP = 6;                     // its number in the processor supplement of the System V ABI
    constexpr std::uintptr_t SAVED_BYTES = 16; // the caller's frame pointer and the return address
    return _Unwind_GetGR(context, RBP) + SAVED_BYTES;
}

// The sanitizers know the stack by its variables, and this reads between them.
__attribute__((no_sanitize("address", "undefined", "thread"))) std::uintptr_t
mem_os_frame_return_address(std::uintptr_t stack)
{
    return *reinterpret_cast<std::uintptr_t const *>(stack - sizeof(std::uintptr_t));
}
