// The inline functions of mem_os_heap.h. The operators of the executable serve every module of the process, so every
// block that is released was counted. The heap knows the size of a block, so all forms of delete are alike.
#ifndef MEM_OS_HEAP_LINUX_H
#define MEM_OS_HEAP_LINUX_H

#include <cstddef>
#include <cstdlib>
#include <malloc.h>

#define MEM_OS_STACK_OF_CALLER() __builtin_dwarf_cfa()

inline void *mem_os_heap_allocate(std::size_t bytes)
{
    return std::malloc(bytes);
}

inline std::size_t mem_os_heap_begin_count(void *block)
{
    return malloc_usable_size(block);
}

inline std::size_t mem_os_heap_end_count(void *block)
{
    return malloc_usable_size(block);
}

inline void mem_os_heap_release(void *block)
{
    std::free(block);
}

inline void *mem_os_heap_allocate_aligned(std::size_t bytes, std::size_t alignment)
{
    void *block = nullptr;
    std::size_t const least = sizeof(void *);
    int const error = posix_memalign(&block, alignment < least ? least : alignment, bytes);
    return error == 0 ? block : nullptr;
}

inline std::size_t mem_os_heap_begin_count_aligned(void *block)
{
    return malloc_usable_size(block);
}

inline std::size_t mem_os_heap_end_count_aligned(void *block)
{
    return malloc_usable_size(block);
}

inline void mem_os_heap_release_aligned(void *block)
{
    std::free(block);
}

#endif
