// The record in which a thread counts its allocations. It is reached in a few instructions and without an allocation
// through the operators new and delete, which would come back here.
#ifndef MEM_OS_THREAD_H
#define MEM_OS_THREAD_H

#include "zel_export_sys.h"

#include <cstdint>

/// All zero on a new thread. Only its own thread reads or writes it.
struct MEM_THREAD_COUNT
{
    /// Allocated less released since the last fold.
    std::int64_t pending_bytes;
    /// Fold when the pending bytes come as far as this from 0; at 0 every count folds.
    std::int64_t fold_bytes;
    /// Living objects of MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT.
    std::uint32_t suspensions;
    /// The end of the thread has been told.
    bool ended;
};

#ifdef _WIN32
/// The record of the calling thread; null if it has none, or none any more: the caller counts elsewhere.
MEM_THREAD_COUNT *mem_os_thread_count();

/// Adds to the calling thread's record where that takes no call and is all there is to do. False: nothing was added.
inline bool mem_os_count_in_place(std::int64_t)
{
    return false;
}
#else
// The library is there when the process starts, so its records may lie at a fixed distance from the thread pointer.
// __thread promises that there is nothing to construct, and spares the call that would ask. Exported for the operators
// new and delete alone, for which a call into the library would be half of what the counting costs.
extern MEM_API __thread MEM_THREAD_COUNT mem_thread_record __attribute__((tls_model("initial-exec")));

inline MEM_THREAD_COUNT *mem_os_thread_count()
{
    return &mem_thread_record;
}

inline bool mem_os_count_in_place(std::int64_t bytes)
{
    MEM_THREAD_COUNT &count = mem_thread_record;
    std::int64_t const pending = count.pending_bytes + bytes;
    if (count.suspensions != 0 || pending >= count.fold_bytes || pending <= -count.fold_bytes)
        return false;
    count.pending_bytes = pending;
    return true;
}
#endif

/// Has `ended` called on the calling thread, with its record, when the thread ends. Destructors that run even later
/// on that thread find the record, or null. `ended` is the same function in every call. False if there can't be a
/// call; nothing is told then of threads that the system kills.
bool mem_os_watch_thread_end(void (*ended)(MEM_THREAD_COUNT &count));

#endif
