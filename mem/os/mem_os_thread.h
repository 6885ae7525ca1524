// The record in which a thread counts its allocations. It is reached in a few instructions and without an allocation
// through the operators new and delete, which would come back here.
#ifndef MEM_OS_THREAD_H
#define MEM_OS_THREAD_H

#include "mem/tracking/mem_lock.h"
#include "zel_export_sys.h"

#include <atomic>
#include <cstdint>

/// What a thread has counted. Its own thread alone changes `bytes`, and others read it; the words beside it are also
/// changed by threads that fold, in the lock. All zero on a new thread.
///
/// The limits are so that the first count goes beyond them, and every count while blocks are watched or after the end
/// of the thread has been told: what is to be done besides adding then costs the others nothing.
struct MEM_THREAD_COUNT
{
    /// Allocated less released.
    std::atomic<std::int64_t> bytes{0};
    /// The highest `bytes` since the last fold.
    std::atomic<std::int64_t> peak_bytes{0};
    /// An allocation that comes up to the first, or a release that comes down to the second, has more to do.
    std::atomic<std::int64_t> high_bytes{0};
    std::atomic<std::int64_t> low_bytes{0};
    /// Living objects of MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT. Of its own thread.
    std::uint32_t suspensions = 0;

    /// NEW: nothing was counted yet. LISTED: others may fold it. ENDED: the end of the thread has been told, or can't
    /// be, and each count folds. Written by its own thread, in the lock.
    enum STATE : std::uint8_t
    {
        NEW,
        LISTED,
        ENDED
    };
    STATE state = NEW;
    MEM_LOCK lock;
    /// What of `bytes` is in the total of the process.
    std::atomic<std::int64_t> folded_bytes{0};
    /// The list of the threads, in its lock.
    MEM_THREAD_COUNT *next = nullptr;
    MEM_THREAD_COUNT *previous = nullptr;

    void add(std::int64_t allocated_bytes) { set(bytes.load(std::memory_order_relaxed) + allocated_bytes); }

    /// Counts an allocation, of its own thread, if that is all there is to do.
    bool try_add(std::int64_t allocated_bytes)
    {
        std::int64_t const now = bytes.load(std::memory_order_relaxed) + allocated_bytes;
        if (now >= high_bytes.load(std::memory_order_relaxed) || suspensions != 0)
            return false;
        set(now);
        return true;
    }

    /// The same for a release.
    bool try_take(std::int64_t released_bytes)
    {
        std::int64_t const now = bytes.load(std::memory_order_relaxed) - released_bytes;
        if (now <= low_bytes.load(std::memory_order_relaxed) || suspensions != 0)
            return false;
        bytes.store(now, std::memory_order_relaxed);
        return true;
    }

private:
    void set(std::int64_t now)
    {
        bytes.store(now, std::memory_order_relaxed);
        if (now > peak_bytes.load(std::memory_order_relaxed))
            peak_bytes.store(now, std::memory_order_relaxed);
    }
};

#ifdef _WIN32
/// The record of the calling thread; null if it has none, or none any more: the caller counts elsewhere.
MEM_THREAD_COUNT *mem_os_thread_count();

/// The record of the calling thread where it is reached without a call into the library, else null.
inline MEM_THREAD_COUNT *mem_os_thread_count_in_place()
{
    return nullptr;
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

inline MEM_THREAD_COUNT *mem_os_thread_count_in_place()
{
    return &mem_thread_record;
}
#endif

/// Has `ended` called on the calling thread, with its record, when the thread ends. Destructors that run even later
/// on that thread find the record, or null. `ended` is the same function in every call. False if there can't be a
/// call; nothing is told then of threads that the system kills.
bool mem_os_watch_thread_end(void (*ended)(MEM_THREAD_COUNT &count));

#endif
