#include "mem/tracking/mem_count.h"

#include "mem/os/mem_os_thread.h"
#include "mem/tracking/mem_locks.h"
#include "mem/tracking/mem_sites.h"
#include "mem_sys.h"

#include <algorithm>
#include <atomic>
#include <limits>

// Written by the first count. On another cache line than the totals: every boundary reads it, and no fold does. The
// exit keeps all state of this file, since blocks are allocated and released until the end.
alignas(64) std::atomic<bool> mem_count_linked{false};

namespace {

constexpr std::int64_t FOLD_BYTES = 65536;
constexpr std::int64_t SMALLEST = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t LARGEST = std::numeric_limits<std::int64_t>::max();

// Written by every fold, in this order, and read in the opposite order. So if a reader finds a fold in the peak, it
// finds the fold in the total too. On a cache line of their own.
struct alignas(64) Totals
{
    std::atomic<std::int64_t> bytes{0};
    // The largest sample since a boundary last took it; SMALLEST if there was none.
    std::atomic<std::int64_t> peak_bytes{SMALLEST};
};
Totals l_totals;

// True while blocks are recorded. Written under the lock of the switches.
std::atomic<bool> l_blocks_are_watched{false};

// The threads that others may fold. Written under the lock of the threads; their number is read without it.
MEM_THREAD_COUNT *l_threads = nullptr;
std::atomic<std::size_t> l_thread_count{0};

void add_to_total(std::int64_t bytes, std::int64_t rise_bytes)
{
    std::int64_t const before = l_totals.bytes.fetch_add(bytes, std::memory_order_acq_rel);
    std::int64_t const sample = before + std::max(bytes, rise_bytes);
    std::int64_t peak = l_totals.peak_bytes.load(std::memory_order_relaxed);
    while (sample > peak && !l_totals.peak_bytes.compare_exchange_weak(peak, sample, std::memory_order_acq_rel,
                                                                       std::memory_order_relaxed)) {
    }
}

// Under the lock of the record.
void set_limits(MEM_THREAD_COUNT &count)
{
    bool const all = count.state != MEM_THREAD_COUNT::LISTED || l_blocks_are_watched.load(std::memory_order_relaxed);
    std::int64_t const folded = count.folded_bytes.load(std::memory_order_relaxed);
    count.high_bytes.store(all ? SMALLEST : folded + FOLD_BYTES, std::memory_order_relaxed);
    count.low_bytes.store(all ? LARGEST : folded - FOLD_BYTES, std::memory_order_relaxed);
}

[[gnu::noinline]] void fold(MEM_THREAD_COUNT &count)
{
    MEM_LOCK_SCOPE const lock(count.lock);
    std::int64_t const bytes = count.bytes.load(std::memory_order_relaxed);
    std::int64_t const folded = count.folded_bytes.load(std::memory_order_relaxed);
    std::int64_t const rise = count.peak_bytes.load(std::memory_order_relaxed) - folded;
    count.folded_bytes.store(bytes, std::memory_order_relaxed);
    count.peak_bytes.store(bytes, std::memory_order_relaxed);
    set_limits(count);
    add_to_total(bytes - folded, rise);
}

void fold_if_moved(MEM_THREAD_COUNT &count)
{
    std::int64_t const folded = count.folded_bytes.load(std::memory_order_relaxed);
    if (count.bytes.load(std::memory_order_relaxed) != folded ||
        count.peak_bytes.load(std::memory_order_relaxed) != folded)
        fold(count);
}

[[gnu::noinline]] void fold_listed()
{
    MEM_LOCK_SCOPE const lock(mem_threads_lock);
    for (MEM_THREAD_COUNT *count = l_threads; count != nullptr; count = count->next)
        fold_if_moved(*count);
}

inline void fold_all()
{
    std::size_t others = l_thread_count.load(std::memory_order_relaxed);
    if (MEM_THREAD_COUNT *const own = mem_os_thread_count()) {
        fold_if_moved(*own);
        others -= own->state == MEM_THREAD_COUNT::LISTED ? 1 : 0;
    }
    if (others != 0)
        fold_listed();
}

void list_thread(MEM_THREAD_COUNT &count)
{
    MEM_LOCK_SCOPE const lock(mem_threads_lock);
    count.next = l_threads;
    if (l_threads != nullptr)
        l_threads->previous = &count;
    l_threads = &count;
    l_thread_count.fetch_add(1, std::memory_order_relaxed);
}

void unlist_thread(MEM_THREAD_COUNT &count)
{
    MEM_LOCK_SCOPE const lock(mem_threads_lock);
    (count.previous != nullptr ? count.previous->next : l_threads) = count.next;
    if (count.next != nullptr)
        count.next->previous = count.previous;
    l_thread_count.fetch_sub(1, std::memory_order_relaxed);
}

void set_state(MEM_THREAD_COUNT &count, MEM_THREAD_COUNT::State state)
{
    MEM_LOCK_SCOPE const lock(count.lock);
    count.state = state;
    set_limits(count);
}

void count_thread_end(MEM_THREAD_COUNT &count)
{
    unlist_thread(count);
    set_state(count, MEM_THREAD_COUNT::ENDED);
    fold(count);
}

void begin_counting(MEM_THREAD_COUNT &count)
{
    mem_count_linked.store(true, std::memory_order_relaxed);
    if (!mem_os_watch_thread_end(count_thread_end))
        return set_state(count, MEM_THREAD_COUNT::ENDED);
    // In this order: a simultaneous change of the switch either finds the record in the list or is seen by set_state().
    list_thread(count);
    set_state(count, MEM_THREAD_COUNT::LISTED);
}

[[gnu::noinline, gnu::cold]] void fold_at_limit(MEM_THREAD_COUNT &count)
{
    if (count.state == MEM_THREAD_COUNT::NEW)
        begin_counting(count);
    std::int64_t const pending =
        count.bytes.load(std::memory_order_relaxed) - count.folded_bytes.load(std::memory_order_relaxed);
    if (count.state == MEM_THREAD_COUNT::ENDED || pending >= FOLD_BYTES || pending <= -FOLD_BYTES)
        fold(count);
}

// For a thread without a record.
[[gnu::noinline, gnu::cold]] void count_at_once(std::int64_t bytes)
{
    mem_count_linked.store(true, std::memory_order_relaxed);
    add_to_total(bytes, 0);
}

// Checked after every count, since a change of the switch may not have reached the record of this thread yet.
bool is_watched(void const *block)
{
    return block != nullptr && l_blocks_are_watched.load(std::memory_order_relaxed);
}

} // namespace

void mem_count_allocation(void const *block, std::size_t bytes, void const *return_address, void const *stack)
{
    std::int64_t const change = static_cast<std::int64_t>(bytes);
    MEM_THREAD_COUNT *const count = mem_os_thread_count();
    if (count == nullptr) {
        count_at_once(change);
    } else if (!count->try_add(change)) {
        if (count->suspensions != 0)
            return;
        count->add(change);
        fold_at_limit(*count);
    }
    if (is_watched(block)) {
        MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
        mem_sites_add(block, bytes, {return_address, stack});
    }
}

void mem_count_release(void const *block, std::size_t bytes)
{
    std::int64_t const change = static_cast<std::int64_t>(bytes);
    MEM_THREAD_COUNT *const count = mem_os_thread_count();
    if (count == nullptr) {
        count_at_once(-change);
    } else if (!count->try_take(change)) {
        if (count->suspensions != 0)
            return;
        count->add(-change);
        fold_at_limit(*count);
    }
    if (is_watched(block))
        mem_sites_remove(block);
}

MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT::MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT()
{
    MEM_SUSPENSION::begin();
}

MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT::~MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT()
{
    MEM_SUSPENSION::end();
}

std::int64_t mem_count_total()
{
    fold_all();
    return l_totals.bytes.load(std::memory_order_relaxed);
}

MEM_BOUNDARY mem_count_boundary()
{
    fold_all();
    std::int64_t peak = l_totals.peak_bytes.load(std::memory_order_acquire);
    std::int64_t now = l_totals.bytes.load(std::memory_order_acquire);
    // A peak that isn't above the total now needn't be reset, since the next peak starts at that total. This saves most
    // boundaries the exchange.
    if (peak > now) {
        peak = l_totals.peak_bytes.exchange(SMALLEST, std::memory_order_acq_rel);
        now = l_totals.bytes.load(std::memory_order_acquire);
    }
    return {now, std::max(peak, now)};
}

void mem_count_watch_blocks(bool watch)
{
    l_blocks_are_watched.store(watch, std::memory_order_relaxed);
    MEM_LOCK_SCOPE const lock(mem_threads_lock);
    for (MEM_THREAD_COUNT *count = l_threads; count != nullptr; count = count->next) {
        MEM_LOCK_SCOPE const record_lock(count->lock);
        set_limits(*count);
    }
}

void mem_count_forked()
{
    MEM_THREAD_COUNT *const own = mem_os_thread_count();
    // The memory of the other threads' records may soon be reused, and their locks are in the state in which the fork
    // found them. So their bytes are added to the total now, without the locks.
    for (MEM_THREAD_COUNT *count = l_threads; count != nullptr; count = count->next)
        if (count != own)
            add_to_total(
                count->bytes.load(std::memory_order_relaxed) - count->folded_bytes.load(std::memory_order_relaxed), 0);
    bool const own_is_listed = own != nullptr && own->state == MEM_THREAD_COUNT::LISTED;
    l_threads = own_is_listed ? own : nullptr;
    l_thread_count.store(own_is_listed ? 1 : 0, std::memory_order_relaxed);
    if (own_is_listed)
        own->next = own->previous = nullptr;
}
