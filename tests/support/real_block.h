// Allocations that the compiler can't leave out.
#ifndef TESTS_SUPPORT_REAL_BLOCK_H
#define TESTS_SUPPORT_REAL_BLOCK_H

#include <atomic>
#include <cstddef>
#include <new>

/// Returns the block. The compiler may leave out an operator new together with its operator delete; it keeps both for a
/// block that goes through here, since the block's address is stored where any thread can read it.
inline void *seen(void *block)
{
    static std::atomic<void *> latest{nullptr};
    latest.store(block, std::memory_order_relaxed);
    return block;
}

/// A block of the plain operator new. The size may have any whole type; it is not negative.
template <typename Size>
void *take(Size bytes)
{
    return seen(::operator new(static_cast<std::size_t>(bytes)));
}

/// Releases a block of take().
inline void give(void *block)
{
    ::operator delete(block);
}

#endif
