// The replaced operators new and delete. They allocate from the heap of the runtime and count every block in zel_mem.
//
// An example, on Linux: a thread that has 1000 bytes calls operator new(64).
//
//     malloc(64)                          a block of 72 usable bytes
//     try_add(72) on the thread's record  1072 is inside the limits: counted, return
//
// Nothing else runs. A count outside of the limits, or one on a thread whose record isn't reached without a call, takes
// the slow path, mem_count_allocation() in the shared library. The slow path gets the return address of the operator
// and the stack pointer after its return, from which it finds the site of the allocation.
#include "mem/os/mem_os_heap.h"
#include "mem/os/mem_os_thread.h"
#include "mem_sys.h"

#include <new>

// The linker gets this name as an undefined one, so that it takes this source into a tool even if it has found other
// operators. Set when the process starts; counting 0 bytes makes the process one that counts. The exit keeps it.
extern bool const mem_new_linked;
bool const mem_new_linked = (mem_count_allocation(nullptr, 0, nullptr, nullptr), true);

namespace {

// The fast path is always inlined into the operators, since the return address that they report has to be their own.
// The slow path is never inlined, so that the fast path needs no saved register.

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

// Called when the heap gives no block. The new-handler may make memory available; one that can't throws or ends the
// process.
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

// The block is counted before it is released, since afterwards it may belong to another thread.
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
