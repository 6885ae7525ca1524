// The platform's heap under the replaced operators new and delete. The runtime's own operator delete can release every
// block, since on Windows other modules keep the runtime's operators.
//
// The platform's header also defines MEM_OS_STACK_OF_CALLER(): the value of the stack pointer after the function that
// uses the macro has returned; null if the calls that lead there can't be read.
#ifndef MEM_OS_HEAP_H
#define MEM_OS_HEAP_H

#include <cstddef>

/// A block of `bytes` or more; null if the heap gives none. A request for 0 bytes gives a block too.
void *mem_os_heap_allocate(std::size_t bytes);

/// The bytes to count for a block that was just allocated.
std::size_t mem_os_heap_begin_count(void *block);

/// The bytes that were counted for a block, which may be null, and which is about to be released.
std::size_t mem_os_heap_end_count(void *block);

void mem_os_heap_release(void *block);

/// The same for a block at a multiple of `alignment`, a power of 2. Only the last of these functions, not the one
/// above, releases such a block.
void *mem_os_heap_allocate_aligned(std::size_t bytes, std::size_t alignment);
std::size_t mem_os_heap_begin_count_aligned(void *block);
std::size_t mem_os_heap_end_count_aligned(void *block);
void mem_os_heap_release_aligned(void *block);

#include "mem/os/mem_os_heap_platform.h"

#endif
