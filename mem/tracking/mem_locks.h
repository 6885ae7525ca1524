// The locks of counting and tracking. They are taken inside operators new and delete. Each is held for a few table
// look-ups at most; only that of the bins is held longer, while one of their tables is formatted.
#ifndef MEM_LOCKS_H
#define MEM_LOCKS_H

#include "mem/base/mem_lock.h"

/// Waits until it has the lock. Returns without it if the holder can't release it any more, because the system has
/// ended every other thread at the exit of the process.
void mem_lock_wait(MEM_LOCK &lock);

/// Holds a lock for its lifetime.
class MEM_LOCK_SCOPE
{
public:
    explicit MEM_LOCK_SCOPE(MEM_LOCK &lock) : m_lock(lock)
    {
        if (!lock.try_lock())
            mem_lock_wait(lock);
    }
    ~MEM_LOCK_SCOPE() { m_lock.unlock(); }
    MEM_LOCK_SCOPE(MEM_LOCK_SCOPE const &) = delete;
    MEM_LOCK_SCOPE &operator=(MEM_LOCK_SCOPE const &) = delete;

private:
    MEM_LOCK &m_lock;
};

// A thread that holds one of these takes only those below it. A fork takes all four (mem_forks.cpp), so that the child
// finds them free. The exit leaves them usable.

/// Changes of the granularities.
extern MEM_LOCK mem_switch_lock;
/// The records of the profile bins: statistics and time line.
extern MEM_LOCK mem_bins_lock;
/// The list of the threads that count.
extern MEM_LOCK mem_threads_lock;
/// The tables of the blocks and of their sites.
extern MEM_LOCK mem_sites_lock;

/// Takes all four, and releases them, around a fork.
void mem_locks_lock_all();
void mem_locks_unlock_all();

#endif
