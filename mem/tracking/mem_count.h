// The count of allocated bytes of the process.
//
// A thread counts in a record of its own, with plain arithmetic. A fold adds the bytes that the thread has counted
// since its last fold to the total of the process. A record is folded when these bytes reach 64 KiB up or down, at the
// boundaries of profile bins, when any thread asks for the total, and when the thread ends; bytes that an ending thread
// counts later are added to the total at once. Any thread may fold the record of another. So no byte is lost, and after
// all threads are folded the total is exact for every thread that doesn't allocate at the same time.
//
//                                                 since the last fold:  A        B        total
//     before                                                            40000    60000    1000000
//     A allocates 30000, which makes 70000: A is folded                 0        60000    1070000
//     A opens a profile bin: all threads are folded                     0        0        1130000
//
// Each fold is a sample of the peak: the total before it plus the largest number of bytes that the thread had since its
// last fold. Between two boundaries the peak is exact if one thread alone allocates; each further thread may hide up to
// 64 KiB that it has not folded.
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
