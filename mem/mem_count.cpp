#include "mem/mem_count.h"

#include "mem/os/mem_os_thread.h"
#include "mem_sys.h"

#include <algorithm>
#include <atomic>
#include <limits>

namespace {

constexpr std::int64_t FOLD_BYTES = 65536;
constexpr std::int64_t NO_SAMPLE = std::numeric_limits<std::int64_t>::min();

// Every thread writes these, in this order; a reader goes the other way, and so finds in the total whatever it has
// found in the peak. On a line of their own.
struct alignas(64) Totals
{
    std::atomic<std::int64_t> bytes{0};
    // The highest sample since it was last taken away.
    std::atomic<std::int64_t> peak_bytes{NO_SAMPLE};
};
Totals l_totals;

// Set by the first count and never cleared. Apart from the totals, as every boundary and no fold needs it.
alignas(64) std::atomic<bool> l_linked{false};

void add_to_total(std::int64_t bytes)
{
    std::int64_t const now = l_totals.bytes.fetch_add(bytes, std::memory_order_acq_rel) + bytes;
    std::int64_t peak = l_totals.peak_bytes.load(std::memory_order_relaxed);
    while (now > peak && !l_totals.peak_bytes.compare_exchange_weak(peak, now, std::memory_order_acq_rel,
                                                                    std::memory_order_relaxed)) {
    }
}

void fold_pending(MEM_THREAD_COUNT &count)
{
    std::int64_t const pending = count.pending_bytes;
    if (pending == 0)
        return;
    count.pending_bytes = 0;
    add_to_total(pending);
}

void thread_ends(MEM_THREAD_COUNT &count)
{
    count.ended = true;
    count.fold_bytes = 0;
    fold_pending(count);
}

// The first count of a thread comes here too, as it has no limit yet.
[[gnu::noinline, gnu::cold]] void fold_counted(MEM_THREAD_COUNT &count)
{
    if (count.fold_bytes == 0 && !count.ended) {
        l_linked.store(true, std::memory_order_relaxed);
        if (mem_os_watch_thread_end(thread_ends))
            count.fold_bytes = FOLD_BYTES;
    }
    fold_pending(count);
}

// For a thread without a record.
[[gnu::noinline, gnu::cold]] void count_at_once(std::int64_t bytes)
{
    l_linked.store(true, std::memory_order_relaxed);
    add_to_total(bytes);
}

} // namespace

void mem_count_allocation(std::size_t bytes)
{
    MEM_THREAD_COUNT *const count = mem_os_thread_count();
    if (count == nullptr)
        return count_at_once(static_cast<std::int64_t>(bytes));
    if (count->suspensions != 0)
        return;
    count->pending_bytes += static_cast<std::int64_t>(bytes);
    if (count->pending_bytes >= count->fold_bytes)
        fold_counted(*count);
}

void mem_count_release(std::size_t bytes)
{
    MEM_THREAD_COUNT *const count = mem_os_thread_count();
    if (count == nullptr)
        return count_at_once(-static_cast<std::int64_t>(bytes));
    if (count->suspensions != 0)
        return;
    count->pending_bytes -= static_cast<std::int64_t>(bytes);
    if (count->pending_bytes <= -count->fold_bytes)
        fold_counted(*count);
}

MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT::MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT()
{
    if (MEM_THREAD_COUNT *const count = mem_os_thread_count())
        ++count->suspensions;
}

MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT::~MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT()
{
    // There may have been no record, for want of memory, when the scope began.
    MEM_THREAD_COUNT *const count = mem_os_thread_count();
    if (count != nullptr && count->suspensions != 0)
        --count->suspensions;
}

bool mem_count_is_linked()
{
    return l_linked.load(std::memory_order_relaxed);
}

std::int64_t mem_count_total()
{
    if (MEM_THREAD_COUNT *const count = mem_os_thread_count())
        fold_pending(*count);
    return l_totals.bytes.load(std::memory_order_relaxed);
}

MEM_BOUNDARY mem_count_boundary()
{
    if (MEM_THREAD_COUNT *const count = mem_os_thread_count())
        fold_pending(*count);
    std::int64_t peak = l_totals.peak_bytes.load(std::memory_order_acquire);
    std::int64_t now = l_totals.bytes.load(std::memory_order_acquire);
    // A peak up to this boundary's figure needn't be taken away: the next peak begins at that figure anyhow. This
    // spares most boundaries the exchange.
    if (peak > now) {
        peak = l_totals.peak_bytes.exchange(NO_SAMPLE, std::memory_order_acq_rel);
        now = l_totals.bytes.load(std::memory_order_acquire);
    }
    return {now, std::max(peak, now)};
}
