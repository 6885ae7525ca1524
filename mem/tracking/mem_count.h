// The count of allocated bytes of the process.
//
// A thread counts in a record of its own, with plain arithmetic. What it has counted since its last fold is folded into
// the total of the process when it comes to 64 KiB either way, at the boundaries of profile bins, when any thread asks
// for the total, and when the thread ends; what is counted even later on an ending thread goes into the total at once.
// A thread at rest may be folded by another. So nothing is lost, and who folds all threads has the exact total, as far
// as they rest.
//
//     thread A: +40000    thread B: +60000                    total 1000000
//     A allocates 30000: 70000 since its last fold            total 1070000    A: 0
//     A opens a profile bin: it folds both                    total 1130000    A: 0    B: 0
//
// Each fold is a sample of the peak: the total before it, and the highest that the thread had on top of that. Between
// two boundaries this is exact while one thread alone allocates; each further one may hide what it has not folded.
#ifndef MEM_COUNT_H
#define MEM_COUNT_H

#include "mem/os/mem_os_thread.h"

#include <atomic>
#include <cstdint>

/// Set by the first count, for ever.
extern std::atomic<bool> mem_count_linked;

/// True once zel::mem_new has counted, which it does when the process starts.
inline bool mem_count_is_linked()
{
    return mem_count_linked.load(std::memory_order_relaxed);
}

/// The total with all that all threads have counted. May be below 0, where blocks from scopes without tracking
/// were released outside of such scopes. Any thread.
std::int64_t mem_count_total();

/// What a boundary of the profile bins sees.
struct MEM_BOUNDARY
{
    std::int64_t now_bytes;
    /// The highest sample since the boundary before, this figure included.
    std::int64_t peak_bytes;
};

/// MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT without calls, for the boundaries of bins.
class MEM_SUSPENSION
{
public:
    MEM_SUSPENSION() { begin(); }
    ~MEM_SUSPENSION() { end(); }
    MEM_SUSPENSION(MEM_SUSPENSION const &) = delete;
    MEM_SUSPENSION &operator=(MEM_SUSPENSION const &) = delete;

    static void begin()
    {
        if (MEM_THREAD_COUNT *const count = mem_os_thread_count())
            ++count->suspensions;
    }
    static void end()
    {
        // There may have been no record, for want of memory, when the scope began.
        MEM_THREAD_COUNT *const count = mem_os_thread_count();
        if (count != nullptr && count->suspensions != 0)
            --count->suspensions;
    }
};

/// Folds all threads and begins a new peak. One thread at a time.
MEM_BOUNDARY mem_count_boundary();

/// Has the blocks recorded by mem_sites_add() and mem_sites_remove() from now on, or no longer. In the lock of the
/// switches.
void mem_count_watch_blocks(bool watch);

#endif
