// Counts its allocations by the operators new and delete of zel::mem_new: a block that is never written to raises the
// total at once, and its release takes exactly as much away.
#include "mem_sys.h"

#include <cstddef>
#include <cstdio>
#include <new>

int main()
{
    constexpr std::size_t BLOCK_BYTES = 1024 * 1024;
    constexpr std::size_t MOST_ROUNDING_BYTES = 64 * 1024;
    std::size_t const before = MEM_MANAGER::current_total_memory();
    void *const block = ::operator new(BLOCK_BYTES); // a direct call, which the compiler must not leave out
    std::size_t const with_block = MEM_MANAGER::current_total_memory();
    ::operator delete(block);
    std::size_t const after = MEM_MANAGER::current_total_memory();
    if (after == before && with_block >= before + BLOCK_BYTES &&
        with_block <= before + BLOCK_BYTES + MOST_ROUNDING_BYTES)
        return 0;
    std::printf("%zu bytes before a block of %zu, %zu with it, %zu after it\n", before, BLOCK_BYTES, with_block, after);
    return 1;
}
