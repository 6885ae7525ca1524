// The layout of stack frames, which depends on the processor.
#ifndef MEM_OS_FRAME_H
#define MEM_OS_FRAME_H

#include <cstdint>

struct _Unwind_Context;

/// True if the size of a frame follows from the stack pointers around it. Otherwise every frame counts as one of
/// varying size, and every stack is unwound anew.
bool mem_os_frame_size_is_known();

/// The upper end of a frame according to its frame pointer, 0 if that isn't known. A frame whose upper end is this one
/// may take room of any size below it.
std::uintptr_t mem_os_frame_end_by_pointer(_Unwind_Context *context);

/// The return address of a call that leaves the stack pointer at `stack` when it returns. `stack` is inside the calling
/// thread's stack. 0 if the layout of a frame isn't known.
std::uintptr_t mem_os_frame_return_address(std::uintptr_t stack);

#endif
