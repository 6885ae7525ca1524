// The calls that lead to an allocation, as return addresses.
#ifndef MEM_OS_CALL_H
#define MEM_OS_CALL_H

#include <cstddef>
#include <cstdint>

/// A call of one of the operators new.
struct MEM_CALL
{
    void const *return_address;
    /// Where the stack stands after the return; null if that isn't known.
    void const *stack;
};

/// One call of the calling thread's stack.
struct MEM_OS_FRAME
{
    std::uintptr_t return_address;
    /// Where the stack stands after the return to it.
    std::uintptr_t stack;
    /// The function returned to has a frame of the same size at each of its calls, as far as can be told.
    bool is_of_fixed_size;
};

/// The calling thread's calls, innermost first, at most `capacity`; 0 where the platform can't tell.
std::size_t mem_os_walk_stack(MEM_OS_FRAME *frames, std::size_t capacity);

/// Where the calling thread's stack ends, to which it is empty; 0 if the platform doesn't tell, or if `stack` isn't in
/// it. May allocate, but not through operator new.
std::uintptr_t mem_os_stack_end(std::uintptr_t stack);

/// The return address of a call after whose return the stack stands at `stack`, which is inside the calling thread's
/// stack; 0 where it isn't known in which place it is.
std::uintptr_t mem_os_return_address_at(std::uintptr_t stack);

/// Whether the address is in the shared library of the C++ runtime.
bool mem_os_is_cxx_runtime(std::uintptr_t address);

/// The file name of the executable or library in which the address lies, cut at `size`; the empty text if there is
/// none. Takes a lock of the loader.
void mem_os_module_name(std::uintptr_t address, char *name, std::size_t size);

#endif
