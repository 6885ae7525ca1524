// The replaced operators new and delete: the heap of the runtime, with every block counted in zel_mem.
#include "mem/os/mem_os_heap.h"
#include "mem/os/mem_os_thread.h"
#include "mem_sys.h"

#include <new>

// The link of a tool asks for this name, and so for this source, which its own references might leave out. Counting
// nothing tells zel_mem that this process counts.
extern bool const mem_new_linked;
bool const mem_new_linked = (mem_count_allocation(0), true);

namespace {

inline void count_allocation(std::size_t bytes)
{
    if (!mem_os_count_in_place(static_cast<std::int64_t>(bytes)))
        mem_count_allocation(bytes);
}

inline void count_release(std::size_t bytes)
{
    if (!mem_os_count_in_place(-static_cast<std::int64_t>(bytes)))
        mem_count_release(bytes);
}

// Called when the heap gives nothing: what the new-handler does may help; one that can't throws or ends the process.
void call_new_handler()
{
    std::new_handler const handler = std::get_new_handler();
    if (handler == nullptr)
        throw std::bad_alloc();
    handler();
}

[[gnu::noinline, gnu::cold]] void *retry(std::size_t bytes, std::size_t *counted_bytes)
{
    void *block = nullptr;
    while (block == nullptr) {
        call_new_handler();
        block = mem_os_heap_allocate(bytes, counted_bytes);
    }
    return block;
}

inline void *allocate(std::size_t bytes)
{
    std::size_t counted_bytes = 0;
    void *block = mem_os_heap_allocate(bytes, &counted_bytes);
    if (block == nullptr)
        block = retry(bytes, &counted_bytes);
    count_allocation(counted_bytes);
    return block;
}

void *allocate_aligned(std::size_t bytes, std::align_val_t alignment)
{
    std::size_t counted_bytes = 0;
    void *block = nullptr;
    while ((block = mem_os_heap_allocate_aligned(bytes, static_cast<std::size_t>(alignment), &counted_bytes)) ==
           nullptr)
        call_new_handler();
    count_allocation(counted_bytes);
    return block;
}

inline void release(void *block)
{
    count_release(mem_os_heap_release(block));
}

void release_aligned(void *block)
{
    count_release(mem_os_heap_release_aligned(block));
}

} // namespace

void *operator new(std::size_t bytes)
{
    return allocate(bytes);
}

void *operator new[](std::size_t bytes)
{
    return allocate(bytes);
}

void *operator new(std::size_t bytes, std::nothrow_t const &) noexcept
try {
    return allocate(bytes);
} catch (...) {
    return nullptr;
}

void *operator new[](std::size_t bytes, std::nothrow_t const &) noexcept
try {
    return allocate(bytes);
} catch (...) {
    return nullptr;
}

void *operator new(std::size_t bytes, std::align_val_t alignment)
{
    return allocate_aligned(bytes, alignment);
}

void *operator new[](std::size_t bytes, std::align_val_t alignment)
{
    return allocate_aligned(bytes, alignment);
}

void *operator new(std::size_t bytes, std::align_val_t alignment, std::nothrow_t const &) noexcept
try {
    return allocate_aligned(bytes, alignment);
} catch (...) {
    return nullptr;
}

void *operator new[](std::size_t bytes, std::align_val_t alignment, std::nothrow_t const &) noexcept
try {
    return allocate_aligned(bytes, alignment);
} catch (...) {
    return nullptr;
}

void operator delete(void *block) noexcept
{
    release(block);
}

void operator delete[](void *block) noexcept
{
    release(block);
}

void operator delete(void *block, std::nothrow_t const &) noexcept
{
    release(block);
}

void operator delete[](void *block, std::nothrow_t const &) noexcept
{
    release(block);
}

void operator delete(void *block, std::size_t) noexcept
{
    release(block);
}

void operator delete[](void *block, std::size_t) noexcept
{
    release(block);
}

void operator delete(void *block, std::align_val_t) noexcept
{
    release_aligned(block);
}

void operator delete[](void *block, std::align_val_t) noexcept
{
    release_aligned(block);
}

void operator delete(void *block, std::align_val_t, std::nothrow_t const &) noexcept
{
    release_aligned(block);
}

void operator delete[](void *block, std::align_val_t, std::nothrow_t const &) noexcept
{
    release_aligned(block);
}

void operator delete(void *block, std::size_t, std::align_val_t) noexcept
{
    release_aligned(block);
}

void operator delete[](void *block, std::size_t, std::align_val_t) noexcept
{
    release_aligned(block);
}
