// The platform's heap under the replaced operators new and delete. Every block is one that the runtime's own operator
// delete can release, since on Windows other modules keep the runtime's operators.
#ifndef MEM_OS_HEAP_H
#define MEM_OS_HEAP_H

#include <cstddef>
#include <cstdlib>

#ifdef _WIN32

#include <cstdint>
#include <cstring>
#include <malloc.h>

// On Windows the operators of one module don't replace those of another, and texts, for one, are allocated in the
// standard library's module and released in this one. So a counted block ends in a mark, and only the release of a
// marked block counts: nothing is ever taken off that was not added before. A marked block that another module
// releases stays counted.
constexpr std::size_t MARK_BYTES = sizeof(std::uint64_t);

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

/// The bytes if the block is marked, else 0. The mark is gone afterwards.
inline std::size_t mem_os_heap_take_mark(void *block, std::size_t bytes)
{
    std::uint64_t const mark = mem_os_heap_mark(block);
    char *const end = static_cast<char *>(block) + bytes;
    if (bytes < MARK_BYTES || std::memcmp(end - MARK_BYTES, &mark, MARK_BYTES) != 0)
        return 0;
    std::memset(end - MARK_BYTES, 0, MARK_BYTES);
    return bytes;
}

/// What an aligned block has from its start to the end of the heap block around it, whose start the runtime keeps in
/// the word in front of the aligned one.
inline std::size_t mem_os_heap_aligned_size(void *block)
{
    constexpr std::uintptr_t WORD = sizeof(void *);
    std::uintptr_t const address = reinterpret_cast<std::uintptr_t>(block);
    char *base = nullptr;
    std::memcpy(&base, reinterpret_cast<void *>((address & ~(WORD - 1)) - WORD), WORD);
    return _msize(base) - static_cast<std::size_t>(static_cast<char *>(block) - base);
}

// Walking the stack costs more there than it tells without line tables.
#define MEM_OS_STACK_OF_CALLER() nullptr

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

#else

#include <malloc.h>

// The operators of the executable serve every module of the process, so what is released was counted. The heap knows
// the size of a block, which makes all forms of delete alike.

/// Where the stack of the function that asks stands once it has returned; null if that is of no use.
#define MEM_OS_STACK_OF_CALLER() __builtin_dwarf_cfa()

/// A block of `bytes` or more; null if there is none. The heaps of Linux give a block also for 0 bytes.
inline void *mem_os_heap_allocate(std::size_t bytes)
{
    return std::malloc(bytes);
}

/// What is to be counted for a block that was just allocated.
inline std::size_t mem_os_heap_begin_count(void *block)
{
    return malloc_usable_size(block);
}

/// What was counted for a block, which may be null, and is about to be released.
inline std::size_t mem_os_heap_end_count(void *block)
{
    return malloc_usable_size(block);
}

inline void mem_os_heap_release(void *block)
{
    std::free(block);
}

/// The same at a multiple of `alignment`, a power of 2; such blocks are released by the function below alone.
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

#endif
