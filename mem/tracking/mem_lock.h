// The locks of counting and tracking. They are taken inside operators new and delete, at any time of the process, so
// they need neither construction nor memory, and they pass over threads that the system has ended at its exit. Each is
// held for some table look-ups at most, but for that of the bins while a table of theirs is put into words.
#ifndef MEM_LOCK_H
#define MEM_LOCK_H

#include <atomic>

/// Meets the requirements of std::lock_guard. Not recursive.
class MEM_LOCK
{
public:
    constexpr MEM_LOCK() = default;
    MEM_LOCK(MEM_LOCK const &) = delete;
    MEM_LOCK &operator=(MEM_LOCK const &) = delete;

    void lock()
    {
        if (m_is_held.exchange(true, std::memory_order_acquire))
            wait();
    }
    void unlock() { m_is_held.store(false, std::memory_order_release); }

private:
    void wait();

    std::atomic<bool> m_is_held{false};
};

// In the order in which they may be held together. A fork waits for all four, so that the child finds them free.

/// Changes of the granularities.
extern MEM_LOCK mem_switch_lock;
/// What is recorded of the profile bins.
extern MEM_LOCK mem_bins_lock;
/// The list of the threads that count.
extern MEM_LOCK mem_threads_lock;
/// The tables of the blocks and of their sites.
extern MEM_LOCK mem_sites_lock;

/// Has forks wait for the locks from now on; `forked` is called in each child, where the locks are free. Any thread,
/// any number of times with the same function.
void mem_lock_watch_forks(void (*forked)());

#endif
