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

/// Set by the first count of the process; never cleared.
extern std::atomic<bool> mem_count_linked;

/// True once zel::mem_new has counted, which it does when the process starts.
inline bool mem_count_is_linked()
{
    return mem_count_linked.load(std::memory_order_relaxed);
}

/// Folds all threads and returns the total. It may be below 0 if blocks that were allocated in scopes without tracking
/// were released outside of such scopes. Any thread.
std::int64_t mem_count_total();

/// The figures at a boundary of the profile bins.
struct MEM_BOUNDARY
{
    std::int64_t now_bytes;
    /// The largest sample since the last boundary, including the one at this boundary.
    std::int64_t peak_bytes;
};

/// The same as MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT, but inline, for the boundaries of bins.
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
        // When the scope began there may have been no memory for a record.
        MEM_THREAD_COUNT *const count = mem_os_thread_count();
        if (count != nullptr && count->suspensions != 0)
            --count->suspensions;
    }
};

/// Folds all threads and begins a new peak. One thread at a time.
MEM_BOUNDARY mem_count_boundary();

/// Starts or ends the recording of blocks by mem_sites_add() and mem_sites_remove(). Under the lock of the switches.
void mem_count_watch_blocks(bool watch);

/// In the child of a fork, whose only thread calls it: keeps what the other threads had counted, and forgets the
/// threads.
void mem_count_forked();

#endif
