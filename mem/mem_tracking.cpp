// The memory of the profile bins, and what is tracked.
//
// The open bins lie on a stack, each with its bytes at the open and the highest bytes seen since. A boundary, that is
// an open or a close, sees two figures: the bytes now and the peak since the boundary before. The peak goes to the
// innermost bin alone, which hands its own to the bin around it as it closes, so that a boundary costs the same at
// any depth:
//
//     boundary   now  peak since   stack (open, peak)       reported
//     open A      10           -   A(10, 10)
//     open B      20          50   A(10, 50)  B(20, 20)
//     close B     30          70   A(10, 70)                B: 20, 30, 70
//     close A     15          40                            A: 10, 15, 70
#include "mem_sys.h"

#include "mem/mem_count.h"
#include "mem/os/mem_os.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>

namespace {

struct OpenBin
{
    std::int64_t open_bytes;
    std::int64_t peak_bytes;
};

// The stack belongs to the one thread that opens and closes the bins. It only grows, by the plain heap, whose blocks
// aren't counted, and is never released: bins may close while the process exits.
OpenBin *l_bins = nullptr;
std::size_t l_bin_capacity = 0;
// May be above the capacity when the heap gave nothing: the bins up there are known by their number alone.
std::size_t l_bin_count = 0;

// The figures of the process at the last boundary, for processes without zel::mem_new. Of the same thread.
std::size_t l_working_set = 0;
std::size_t l_working_set_mark = 0;

bool grow_bins()
{
    constexpr std::size_t FIRST_CAPACITY = 64;
    std::size_t const capacity = l_bin_capacity == 0 ? FIRST_CAPACITY : 2 * l_bin_capacity;
    void *const bins = std::realloc(l_bins, capacity * sizeof(OpenBin));
    if (bins == nullptr)
        return false;
    l_bins = static_cast<OpenBin *>(bins);
    l_bin_capacity = capacity;
    return true;
}

// The innermost bin; null if none is open or if it has no place.
OpenBin *innermost_bin()
{
    return l_bin_count == 0 || l_bin_count > l_bin_capacity ? nullptr : &l_bins[l_bin_count - 1];
}

void raise_innermost(std::int64_t peak_bytes)
{
    OpenBin *const bin = innermost_bin();
    if (bin != nullptr && bin->peak_bytes < peak_bytes)
        bin->peak_bytes = peak_bytes;
}

// What the system doesn't tell stays as it was. A high-water mark that rose did so since the boundary before.
MEM_BOUNDARY process_boundary()
{
    std::size_t const former_mark = l_working_set_mark;
    mem_os_working_set_and_mark(&l_working_set, &l_working_set_mark);
    std::size_t const peak = l_working_set_mark > former_mark ? l_working_set_mark : l_working_set;
    return {static_cast<std::int64_t>(l_working_set), static_cast<std::int64_t>(std::max(peak, l_working_set))};
}

MEM_BOUNDARY take_boundary()
{
    MEM_BOUNDARY const boundary = mem_count_is_linked() ? mem_count_boundary() : process_boundary();
    raise_innermost(boundary.peak_bytes);
    return boundary;
}

std::size_t shown(std::int64_t bytes)
{
    return static_cast<std::size_t>(std::max<std::int64_t>(bytes, 0));
}

// The granularities in force, with two marks of our own above them. Any thread may write; enabling and disabling
// order nothing else.
constexpr int GRANULARITIES = MEM_TRACKING_STATISTICS | MEM_TRACKING_TIMELINE | MEM_TRACKING_SOURCES;
constexpr int KEY_READ = 0x100;
constexpr int KEY_NOT_ZERO = 0x200;
std::atomic<int> l_tracking{0};

// The word as it stands, at the first question as the key gives it.
int tracking()
{
    int current = l_tracking.load(std::memory_order_relaxed);
    if (current != 0)
        return current;
    int const key = mem_cfg_get_int_value("mem_tracking", 0);
    int const initial = (key & GRANULARITIES) | (key != 0 ? KEY_NOT_ZERO : 0) | KEY_READ;
    // Of several first questions, one sets the word; it may have been changed since.
    return l_tracking.compare_exchange_strong(current, initial, std::memory_order_relaxed) ? initial : current;
}

} // namespace

void mem_enable_tracking(MEM_TRACKING_GRANULARITY granularity)
{
    tracking();
    l_tracking.fetch_or(granularity & GRANULARITIES, std::memory_order_relaxed);
}

void mem_disable_tracking(MEM_TRACKING_GRANULARITY granularity)
{
    tracking();
    l_tracking.fetch_and(~(granularity & GRANULARITIES), std::memory_order_relaxed);
}

bool mem_tracking_is_enabled(MEM_TRACKING_GRANULARITY granularity)
{
    return (tracking() & GRANULARITIES & granularity) == granularity;
}

bool mem_get_tbb_memory_tracking_enabled()
{
    return (tracking() & KEY_NOT_ZERO) != 0;
}

void mem_open_profile_bin(std::string const & /*name*/, std::string const & /*tag*/)
{
    MEM_BOUNDARY const boundary = take_boundary();
    if (l_bin_count == l_bin_capacity)
        grow_bins();
    ++l_bin_count;
    if (OpenBin *const bin = innermost_bin())
        *bin = {boundary.now_bytes, boundary.now_bytes};
}

void mem_close_profile_bin(std::string const & /*tag*/, std::size_t *open_bytes, std::size_t *close_bytes,
                           std::size_t *peak_bytes)
{
    std::int64_t const now = take_boundary().now_bytes;
    OpenBin const *const place = innermost_bin();
    OpenBin const bin = place != nullptr ? *place : OpenBin{now, now};
    if (l_bin_count != 0)
        --l_bin_count;
    raise_innermost(bin.peak_bytes);
    *open_bytes = shown(bin.open_bytes);
    *close_bytes = shown(now);
    *peak_bytes = shown(bin.peak_bytes);
}

void mem_reset_tracking_entries() {}

void mem_tbb_tracking_flush_peak()
{
    take_boundary();
}

bool mem_dump_tbb_fileline_tracking(std::ostream & /*out*/)
{
    return false;
}

bool mem_dump_tbb_subsystem_tracking(std::ostream & /*out*/)
{
    return false;
}

bool mem_dump_tbb_profile_bin_stats_tracking(std::ostream & /*out*/)
{
    return false;
}

bool mem_dump_tbb_profile_bin_tag_stats_tracking(std::ostream & /*out*/)
{
    return false;
}

bool mem_dump_tbb_module_tracking(std::ostream & /*timeline*/, std::ostream & /*details*/)
{
    return false;
}

void mem_set_timeline_label(std::string const & /*label*/) {}

void mem_disable_profile_bin_tag_timeline_labels() {}
