// The replaced operators new and delete: the heap of the runtime, with every block counted in zel_mem.
#include "mem/os/mem_os_heap.h"
#include "mem/os/mem_os_thread.h"
#include "mem_sys.h"

#include <new>

// The link of a tool asks for this name, and so for this source, which its own references might leave out. Counting
// nothing tells zel_mem that this process counts.
extern bool const mem_new_linked;
bool const mem_new_linked = (mem_count_allocation(nullptr, 0, nullptr, nullptr), true);

namespace {

// What is inlined here always is, into the operators: their call is what they tell of, and a jump to what is seldom
// needed leaves their main road without a register to save.

[[gnu::always_inline]] inline bool count_allocation_in_place(std::size_t bytes)
{
    MEM_THREAD_COUNT *const count = mem_os_thread_count_in_place();
    return count != nullptr && count->try_add(static_cast<std::int64_t>(bytes));
}

[[gnu::noinline]] void *count_allocation(void *block, std::size_t bytes, void const *return_address, void const *stack)
{
    mem_count_allocation(block, bytes, return_address, stack);
    return block;
}

[[gnu::always_inline]] inline void count_release(void *block, std::size_t bytes)
{
    MEM_THREAD_COUNT *const count = mem_os_thread_count_in_place();
    if (count == nullptr || !count->try_take(static_cast<std::int64_t>(bytes)))
        mem_count_release(block, bytes);
}

// Called when the heap gives nothing: what the new-handler does may help; one that can't throws or ends the process.
void call_new_handler()
{
    std::new_handler const handler = std::get_new_handler();
    if (handler == nullptr)
        throw std::bad_alloc();
    handler();
}

[[gnu::noinline, gnu::cold]] void *retry(std::size_t bytes, void const *return_address, void const *stack)
{
    void *block = nullptr;
    while (block == nullptr) {
        call_new_handler();
        block = mem_os_heap_allocate(bytes);
    }
    return count_allocation(block, mem_os_heap_begin_count(block), return_address, stack);
}

[[gnu::noinline, gnu::cold]] void *retry_aligned(std::size_t bytes, std::size_t alignment, void const *return_address,
                                                 void const *stack)
{
    void *block = nullptr;
    while (block == nullptr) {
        call_new_handler();
        block = mem_os_heap_allocate_aligned(bytes, alignment);
    }
    return count_allocation(block, mem_os_heap_begin_count_aligned(block), return_address, stack);
}

[[gnu::always_inline]] inline void *allocate(std::size_t bytes)
{
    void *const block = mem_os_heap_allocate(bytes);
    if (block == nullptr)
        return retry(bytes, __builtin_return_address(0), MEM_OS_STACK_OF_CALLER());
    std::size_t const counted_bytes = mem_os_heap_begin_count(block);
    if (count_allocation_in_place(counted_bytes))
        return block;
    return count_allocation(block, counted_bytes, __builtin_return_address(0), MEM_OS_STACK_OF_CALLER());
}

[[gnu::always_inline]] inline void *allocate_aligned(std::size_t bytes, std::align_val_t align)
{
    std::size_t const alignment = static_cast<std::size_t>(align);
    void *const block = mem_os_heap_allocate_aligned(bytes, alignment);
    if (block == nullptr)
        return retry_aligned(bytes, alignment, __builtin_return_address(0), MEM_OS_STACK_OF_CALLER());
    std::size_t const counted_bytes = mem_os_heap_begin_count_aligned(block);
    if (count_allocation_in_place(counted_bytes))
        return block;
    return count_allocation(block, counted_bytes, __builtin_return_address(0), MEM_OS_STACK_OF_CALLER());
}

// Counted first: once released, the block may be another thread's.
[[gnu::always_inline]] inline void release(void *block)
{
    count_release(block, mem_os_heap_end_count(block));
    mem_os_heap_release(block);
}

[[gnu::always_inline]] inline void release_aligned(void *block)
{
    count_release(block, mem_os_heap_end_count_aligned(block));
    mem_os_heap_release_aligned(block);
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
