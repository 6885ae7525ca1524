// The count of allocated bytes of the process.
//
// A thread counts in a record of its own, with plain arithmetic. What is pending there is folded into the total of the
// process when it comes to 64 KiB either way, at the boundaries of profile bins, when the thread asks for the total,
// and when it ends; whatever is counted even later on an ending thread goes into the total at once. So nothing is
// lost, and the total is off by less than 64 KiB for each other running thread.
//
//     thread A: +40000 pending    thread B: +60000 pending    total 1000000
//     A allocates 30000: 70000 pending is over the limit      total 1070000    A: 0 pending
//     B opens a profile bin: it folds its own                 total 1130000    B: 0 pending
//
// Each fold is also a sample of the peak. The peak is kept from one boundary of the profile bins to the next.
#ifndef MEM_COUNT_H
#define MEM_COUNT_H

#include <cstdint>

/// True once zel::mem_new has counted, which it does when the process starts.
bool mem_count_is_linked();

/// The total with all that the calling thread has counted. May be below 0, where blocks from scopes without tracking
/// were released outside of such scopes. Any thread.
std::int64_t mem_count_total();

/// What a boundary of the profile bins sees.
struct MEM_BOUNDARY
{
    std::int64_t now_bytes;
    /// The highest sample since the boundary before, this figure included.
    std::int64_t peak_bytes;
};

/// Folds the calling thread and begins a new peak. One thread at a time.
MEM_BOUNDARY mem_count_boundary();

#endif
