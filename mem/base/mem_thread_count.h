// The record in which a thread counts its allocations with plain arithmetic: no lock and no atomic addition.
//
// A record starts with limits of 0, so that the first count of the thread is sent on to mem_count.cpp, which enters the
// thread into its list and sets the limits to 64 KiB around what is folded into the total of the process:
//
//     thread allocates    bytes     low_bytes    high_bytes    folded_bytes
//     40000               40000     -65536       65536         0               try_add() counts it
//     20000               60000     -65536       65536         0               try_add() counts it
//     10000               70000     4464         135536        70000           try_add() refuses; mem_count.cpp folds
//
// The limits also send every count on while blocks are watched, and after the end of the thread was reported. These
// cases cost the fast path nothing.
#ifndef MEM_THREAD_COUNT_H
#define MEM_THREAD_COUNT_H

#include "mem/base/mem_lock.h"

#include <atomic>
#include <cstdint>

/// Its own thread alone changes `bytes`, and others read it. The other words are also changed by threads that fold,
/// under the record's lock. All of it is 0 on a new thread.
struct MEM_THREAD_COUNT
{
    /// Allocated less released.
    std::atomic<std::int64_t> bytes{0};
    /// The largest `bytes` since the last fold.
    std::atomic<std::int64_t> peak_bytes{0};
    /// An allocation after which `bytes` is not below the first limit, or a release after which it is not above the
    /// second, takes the slow path.
    std::atomic<std::int64_t> high_bytes{0};
    std::atomic<std::int64_t> low_bytes{0};
    /// Living objects of MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT. Used by its own thread alone.
    std::uint32_t suspensions = 0;

    /// NEW: the thread has not counted yet. LISTED: other threads may fold the record. ENDED: the end of the thread was
    /// reported, or can't be reported, and each count folds. Written by its own thread, under the lock.
    enum State : std::uint8_t
    {
        NEW,
        LISTED,
        ENDED
    };
    State state = NEW;
    MEM_LOCK lock;
    /// The part of `bytes` that is in the total of the process.
    std::atomic<std::int64_t> folded_bytes{0};
    /// The neighbours in the list of the threads, under the lock of that list.
    MEM_THREAD_COUNT *next = nullptr;
    MEM_THREAD_COUNT *previous = nullptr;

    void add(std::int64_t allocated_bytes) { set(bytes.load(std::memory_order_relaxed) + allocated_bytes); }

    /// The fast path of an allocation on its own thread. False, with nothing counted, if the slow path is needed.
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

#endif
