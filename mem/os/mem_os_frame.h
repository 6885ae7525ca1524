// The part of reading stacks on Linux that depends on the processor. If its frames aren't known, every stack is unwound
// anew.
#ifndef MEM_OS_FRAME_H
#define MEM_OS_FRAME_H

#include <cstdint>
#include <unwind.h>

/// True if the size of a frame follows from the stack pointers around it. Otherwise every frame counts as one of
/// varying size.
bool mem_os_frame_size_is_known();

/// The upper end of a frame according to its frame pointer, 0 if that isn't known. A frame whose upper end is this one
/// may take room of any size below it.
std::uintptr_t mem_os_frame_end_by_pointer(_Unwind_Context *context);

#endif
