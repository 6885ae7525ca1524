// A lock that can be taken inside operators new and delete, at any time of the process: it needs neither construction
// nor memory. A thread that finds it held waits in mem_lock_wait() of mem_locks.h, which makes system calls.
#ifndef MEM_LOCK_H
#define MEM_LOCK_H

#include <atomic>

/// Not recursive.
class MEM_LOCK
{
public:
    constexpr MEM_LOCK() = default;
    MEM_LOCK(MEM_LOCK const &) = delete;
    MEM_LOCK &operator=(MEM_LOCK const &) = delete;

    /// Takes the lock if no thread holds it; false otherwise.
    bool try_lock() { return !m_is_held.exchange(true, std::memory_order_acquire); }
    void unlock() { m_is_held.store(false, std::memory_order_release); }

private:
    std::atomic<bool> m_is_held{false};
};

#endif
