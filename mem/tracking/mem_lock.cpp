#include "mem/tracking/mem_lock.h"

#include "mem/os/mem_os.h"
#include "thr_sys.h"

MEM_LOCK mem_switch_lock;
MEM_LOCK mem_bins_lock;
MEM_LOCK mem_threads_lock;
MEM_LOCK mem_sites_lock;

namespace {

// Set before the handlers are.
std::atomic<void (*)()> l_forked{nullptr};

void lock_all()
{
    mem_switch_lock.lock();
    mem_bins_lock.lock();
    mem_threads_lock.lock();
    mem_sites_lock.lock();
}

void unlock_all()
{
    mem_sites_lock.unlock();
    mem_threads_lock.unlock();
    mem_bins_lock.unlock();
    mem_switch_lock.unlock();
}

void unlock_all_in_child()
{
    unlock_all();
    l_forked.load(std::memory_order_relaxed)();
}

} // namespace

void MEM_LOCK::wait()
{
    do {
        // The holder is gone without a word, and nobody else is left to come.
        if (mem_os_is_last_thread_of_exit())
            return;
        thr_sleep(0);
    } while (m_is_held.exchange(true, std::memory_order_acquire));
}

void mem_lock_watch_forks(void (*forked)())
{
    l_forked.store(forked, std::memory_order_relaxed);
    static bool const IS_WATCHING = mem_os_watch_forks(lock_all, unlock_all, unlock_all_in_child);
    static_cast<void>(IS_WATCHING);
}
