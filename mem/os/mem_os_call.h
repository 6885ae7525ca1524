// The calls that lead to an allocation, as return addresses.
#ifndef MEM_OS_CALL_H
#define MEM_OS_CALL_H

#include <cstddef>
#include <cstdint>

/// A call of one of the operators new.
struct MEM_CALL
{
    void const *return_address;
    /// The stack pointer after the return; null if it isn't known.
    void const *stack;
};

/// One call of the calling thread's stack.
struct MEM_OS_FRAME
{
    std::uintptr_t return_address;
    /// The stack pointer after the return to it.
    std::uintptr_t stack;
    /// True if the frame of the function returned to appears to have the same size at each of its calls.
    bool is_of_fixed_size;
};

/// The calling thread's calls, innermost first, at most `capacity`. 0 where they can't be found.
std::size_t mem_os_walk_stack(MEM_OS_FRAME *frames, std::size_t capacity);

/// The address at which the calling thread's stack ends: it is empty when the stack pointer is there. 0 if that isn't
/// known, or if `stack` isn't in the stack. May allocate, but not through operator new.
std::uintptr_t mem_os_stack_end(std::uintptr_t stack);

/// True if the address is in the shared library of the C++ runtime.
bool mem_os_is_cxx_runtime(std::uintptr_t address);

#endif
