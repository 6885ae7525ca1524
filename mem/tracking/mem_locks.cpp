#include "mem/tracking/mem_locks.h"

#include "mem/os/mem_os.h"
#include "sys/sys_process.h"
#include "thr_sys.h"

MEM_LOCK mem_switch_lock;
MEM_LOCK mem_bins_lock;
MEM_LOCK mem_threads_lock;
MEM_LOCK mem_sites_lock;

namespace {

// Written before the handlers of forks are set, always with the same function; the exit leaves it.
std::atomic<void (*)()> l_forked{nullptr};

// In the order in which they may be held together.
constexpr MEM_LOCK *LOCKS[] = {&mem_switch_lock, &mem_bins_lock, &mem_threads_lock, &mem_sites_lock};

void lock_all()
{
    for (MEM_LOCK *const lock : LOCKS)
        if (!lock->try_lock())
            mem_lock_wait(*lock);
}

void unlock_all()
{
    for (MEM_LOCK *const lock : LOCKS)
        lock->unlock();
}

void unlock_all_in_child()
{
    unlock_all();
    l_forked.load(std::memory_order_relaxed)();
}

} // namespace

void mem_lock_wait(MEM_LOCK &lock)
{
    do {
        if (sys_is_last_thread_of_exit())
            return;
        thr_sleep(0);
    } while (!lock.try_lock());
}

void mem_locks_watch_forks(void (*forked)())
{
    l_forked.store(forked, std::memory_order_relaxed);
    // The first call sets the handlers, which stay.
    static bool const IS_WATCHING = mem_os_watch_forks(lock_all, unlock_all, unlock_all_in_child);
    static_cast<void>(IS_WATCHING);
}
