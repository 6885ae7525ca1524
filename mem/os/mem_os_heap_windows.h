// The inline functions of mem_os_heap.h. The operators of one module don't replace those of another: a string, for
// example, may be allocated in the standard library's module and released in this one. So a counted block ends in a
// mark, and only the release of a marked block counts; nothing is subtracted that was not added before. A marked block
// that another module releases stays counted.
//
//     new of 100 bytes                     108 are allocated and counted; the last 8 hold the mark
//     delete of that block                 the mark is there: it is wiped, and 108 are subtracted
//     delete of another module's block     no mark: 0 are subtracted
#ifndef MEM_OS_HEAP_WINDOWS_H
#define MEM_OS_HEAP_WINDOWS_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <malloc.h>

// Walking the stack costs more here than it can report without line tables.
#define MEM_OS_STACK_OF_CALLER() nullptr

constexpr std::size_t MARK_BYTES = sizeof(std::uint64_t);

/// Differs from block to block, so that a copy of a block's bytes doesn't pass for a mark.
inline std::uint64_t mem_os_heap_mark(void const *block)
{
    return reinterpret_cast<std::uintptr_t>(block) ^ 0x6d656d5f6e657721U;
}

inline std::size_t mem_os_heap_put_mark(void *block, std::size_t bytes)
{
    std::uint64_t const mark = mem_os_heap_mark(block);
    std::memcpy(static_cast<char *>(block) + bytes - MARK_BYTES, &mark, MARK_BYTES);
    return bytes;
}

/// The bytes if the block is marked, else 0. Wipes the mark.
inline std::size_t mem_os_heap_take_mark(void *block, std::size_t bytes)
{
    std::uint64_t const mark = mem_os_heap_mark(block);
    char *const end = static_cast<char *>(block) + bytes;
    if (bytes < MARK_BYTES || std::memcmp(end - MARK_BYTES, &mark, MARK_BYTES) != 0)
        return 0;
    std::memset(end - MARK_BYTES, 0, MARK_BYTES);
    return bytes;
}

/// The bytes from the start of an aligned block to the end of the heap block around it, whose start the runtime keeps
/// in the word before the aligned block.
inline std::size_t mem_os_heap_aligned_size(void *block)
{
    constexpr std::uintptr_t WORD = sizeof(void *);
    std::uintptr_t const address = reinterpret_cast<std::uintptr_t>(block);
    char *base = nullptr;
    std::memcpy(&base, reinterpret_cast<void *>((address & ~(WORD - 1)) - WORD), WORD);
    return _msize(base) - static_cast<std::size_t>(static_cast<char *>(block) - base);
}

inline void *mem_os_heap_allocate(std::size_t bytes)
{
    return bytes > SIZE_MAX - MARK_BYTES ? nullptr : std::malloc(bytes + MARK_BYTES);
}

inline std::size_t mem_os_heap_begin_count(void *block)
{
    return mem_os_heap_put_mark(block, _msize(block));
}

inline std::size_t mem_os_heap_end_count(void *block)
{
    return block == nullptr ? 0 : mem_os_heap_take_mark(block, _msize(block));
}

inline void mem_os_heap_release(void *block)
{
    std::free(block);
}

inline void *mem_os_heap_allocate_aligned(std::size_t bytes, std::size_t alignment)
{
    return bytes > SIZE_MAX - MARK_BYTES ? nullptr : _aligned_malloc(bytes + MARK_BYTES, alignment);
}

inline std::size_t mem_os_heap_begin_count_aligned(void *block)
{
    return mem_os_heap_put_mark(block, mem_os_heap_aligned_size(block));
}

inline std::size_t mem_os_heap_end_count_aligned(void *block)
{
    return block == nullptr ? 0 : mem_os_heap_take_mark(block, mem_os_heap_aligned_size(block));
}

inline void mem_os_heap_release_aligned(void *block)
{
    _aligned_free(block);
}

#endif
