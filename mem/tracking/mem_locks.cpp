#include "mem/tracking/mem_locks.h"

#include "sys/sys_process.h"
#include "thr_sys.h"

MEM_LOCK mem_switch_lock;
MEM_LOCK mem_bins_lock;
MEM_LOCK mem_threads_lock;
MEM_LOCK mem_sites_lock;

namespace {

// In the order in which they may be held together.
constexpr MEM_LOCK *LOCKS[] = {&mem_switch_lock, &mem_bins_lock, &mem_threads_lock, &mem_sites_lock};

} // namespace

void mem_lock_wait(MEM_LOCK &lock)
{
    do {
        if (sys_is_last_thread_of_exit())
            return;
        thr_sleep(0);
    } while (!lock.try_lock());
}

void mem_locks_lock_all()
{
    for (MEM_LOCK *const lock : LOCKS)
        if (!lock->try_lock())
            mem_lock_wait(*lock);
}

void mem_locks_unlock_all()
{
    for (MEM_LOCK *const lock : LOCKS)
        lock->unlock();
}
