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

/// A block of `bytes` or more; null if there is none. `counted_bytes` receives what is to be counted for it.
inline void *mem_os_heap_allocate(std::size_t bytes, std::size_t *counted_bytes)
{
    void *const block = bytes > SIZE_MAX - MARK_BYTES ? nullptr : std::malloc(bytes + MARK_BYTES);
    if (block != nullptr)
        *counted_bytes = mem_os_heap_put_mark(block, _msize(block));
    return block;
}

/// Releases a block, which may be null, and returns what was counted for it.
inline std::size_t mem_os_heap_release(void *block)
{
    std::size_t const counted_bytes = block == nullptr ? 0 : mem_os_heap_take_mark(block, _msize(block));
    std::free(block);
    return counted_bytes;
}

/// The same at a multiple of `alignment`, a power of 2; such blocks are released by the function below alone.
inline void *mem_os_heap_allocate_aligned(std::size_t bytes, std::size_t alignment, std::size_t *counted_bytes)
{
    void *const block = bytes > SIZE_MAX - MARK_BYTES ? nullptr : _aligned_malloc(bytes + MARK_BYTES, alignment);
    if (block != nullptr)
        *counted_bytes = mem_os_heap_put_mark(block, mem_os_heap_aligned_size(block));
    return block;
}

inline std::size_t mem_os_heap_release_aligned(void *block)
{
    std::size_t const counted_bytes =
        block == nullptr ? 0 : mem_os_heap_take_mark(block, mem_os_heap_aligned_size(block));
    _aligned_free(block);
    return counted_bytes;
}

#else

#include <malloc.h>

// The operators of the executable serve every module of the process, so what is released was counted. The heap knows
// the size of a block, which makes all forms of delete alike.

/// A block of `bytes` or more; null if there is none. `counted_bytes` receives what is to be counted for it.
inline void *mem_os_heap_allocate(std::size_t bytes, std::size_t *counted_bytes)
{
    void *const block = std::malloc(bytes == 0 ? 1 : bytes);
    *counted_bytes = malloc_usable_size(block);
    return block;
}

/// Releases a block, which may be null, and returns what was counted for it.
inline std::size_t mem_os_heap_release(void *block)
{
    std::size_t const counted_bytes = malloc_usable_size(block);
    std::free(block);
    return counted_bytes;
}

/// The same at a multiple of `alignment`, a power of 2; such blocks are released by the function below alone.
inline void *mem_os_heap_allocate_aligned(std::size_t bytes, std::size_t alignment, std::size_t *counted_bytes)
{
    void *block = nullptr;
    std::size_t const least = sizeof(void *);
    if (posix_memalign(&block, alignment < least ? least : alignment, bytes == 0 ? 1 : bytes) != 0)
        return nullptr;
    *counted_bytes = malloc_usable_size(block);
    return block;
}

inline std::size_t mem_os_heap_release_aligned(void *block)
{
    return mem_os_heap_release(block);
}

#endif

#endif
