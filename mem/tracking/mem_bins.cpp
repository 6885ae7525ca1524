// The open bins are kept on a stack, each with its bytes at the open and the largest bytes seen since. A boundary, that
// is an open or a close, reads two figures: the bytes now and the peak since the last boundary. The peak is given to
// the innermost bin alone, which passes its own peak on to the bin around it when it closes, so that a boundary costs
// the same at any depth:
//
//     boundary   now  peak since   stack (open, peak)       reported
//     open A      10           -   A(10, 10)
//     open B      20          50   A(10, 50)  B(20, 20)
//     close B     30          70   A(10, 70)                B: 20, 30, 70
//     close A     15          40                            A: 10, 15, 70
#include "mem/tracking/mem_bins.h"

#include "mem/os/mem_os.h"
#include "mem/tracking/mem_count.h"
#include "mem/tracking/mem_switches.h"
#include "mem/tracking/mem_timeline.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>
#include <vector>

namespace {

constexpr std::int64_t NO_PEAK = std::numeric_limits<std::int64_t>::min();

struct OpenBin
{
    std::int64_t open_bytes;
    std::int64_t peak_bytes;
    std::string name;
    std::string tag;
};

// Written by the thread of the bins alone, which makes it with its first call. The exit keeps it, since bins may close
// until the end.
struct BinsState
{
    // The entries from `count` on are those of closed bins; they keep the memory of their texts for the next ones.
    std::vector<OpenBin> bins;
    // Open bins. Larger than the number of entries if the heap gave no memory for the innermost ones.
    std::size_t count = 0;
    // The peak up to a flush, for the row of the next boundary.
    std::int64_t flushed_peak_bytes = NO_PEAK;
    // The figures of the process at the last boundary, in processes without zel::mem_new.
    std::size_t working_set = 0;
    std::size_t working_set_mark = 0;
    // The label of the time line, and whether the tags of bins replace it.
    std::string label;
    bool has_tag_labels = true;
};

BinsState &state()
{
    static BinsState *s = nullptr; // a static object has a guard, which would be tested at each boundary
    if (s == nullptr)
        s = new BinsState;
    return *s;
}

// The entry of the innermost bin; null if no bin is open or if it has no entry.
OpenBin *innermost_bin()
{
    BinsState &s = state();
    return s.count == 0 || s.count > s.bins.size() ? nullptr : &s.bins[s.count - 1];
}

void raise_innermost(std::int64_t peak_bytes)
{
    OpenBin *const bin = innermost_bin();
    if (bin != nullptr && bin->peak_bytes < peak_bytes)
        bin->peak_bytes = peak_bytes;
}

// A figure that the system doesn't give keeps its value. If the high-water mark has risen, it has done so since the
// last boundary, and so it is the peak since then.
[[gnu::noinline]] MEM_BOUNDARY process_boundary()
{
    BinsState &s = state();
    std::size_t const former_mark = s.working_set_mark;
    mem_os_working_set_and_mark(&s.working_set, &s.working_set_mark);
    std::size_t const peak = s.working_set_mark > former_mark ? s.working_set_mark : s.working_set;
    return {static_cast<std::int64_t>(s.working_set), static_cast<std::int64_t>(std::max(peak, s.working_set))};
}

MEM_BOUNDARY take_boundary()
{
    MEM_BOUNDARY boundary = mem_count_is_linked() ? mem_count_boundary() : process_boundary();
    boundary.peak_bytes = std::max(boundary.peak_bytes, std::exchange(state().flushed_peak_bytes, NO_PEAK));
    raise_innermost(boundary.peak_bytes);
    return boundary;
}

std::string path_of_innermost()
{
    BinsState const &s = state();
    std::string path;
    for (std::size_t i = 0; i < std::min(s.count, s.bins.size()); ++i)
        path += (i == 0 ? "" : "::") + s.bins[i].name;
    return path;
}

// The label of a row: the tag of the innermost bin that has one, if tags replace the label.
std::string const &label_now()
{
    BinsState const &s = state();
    if (s.has_tag_labels)
        for (std::size_t i = std::min(s.count, s.bins.size()); i > 0; --i)
            if (!s.bins[i - 1].tag.empty())
                return s.bins[i - 1].tag;
    return s.label;
}

void add_row(char const *event, MEM_BOUNDARY const &boundary)
{
    mem_timeline_add({event, boundary.now_bytes, boundary.peak_bytes, label_now(), path_of_innermost()},
                     mem_switches_has(MEM_TRACKING_SOURCES));
}

// The tag of the innermost bin; empty if a bin around it has the same tag.
std::string const &outermost_tag()
{
    static std::string const &no_tag = *new std::string; // the exit keeps it, as bins may close until the end
    BinsState const &s = state();
    std::string const &tag = s.bins[s.count - 1].tag;
    for (std::size_t i = 0; i + 1 < s.count; ++i)
        if (s.bins[i].tag == tag)
            return no_tag;
    return tag;
}

// Runs an action that records something. False if there was no memory for the record: it is dropped, and the figures
// stay right.
template <typename Action>
bool record(Action action)
{
    try {
        action();
        return true;
    } catch (std::bad_alloc const &) {
        return false;
    }
}

void add_row_if_recorded(char const *event, MEM_BOUNDARY const &boundary)
{
    if (mem_switches_has(MEM_TRACKING_TIMELINE))
        record([&] { add_row(event, boundary); });
}

void push(std::string const &name, std::string const &tag, std::int64_t now_bytes)
{
    BinsState &s = state();
    if (s.count == s.bins.size())
        record([&] { s.bins.emplace_back(); });
    ++s.count;
    OpenBin *const bin = innermost_bin();
    if (bin == nullptr)
        return;
    bin->open_bytes = bin->peak_bytes = now_bytes;
    bool const is_named = record([&] {
        bin->name = name;
        if (bin->tag != tag) // mostly both are empty, which saves a call
            bin->tag = tag;
    });
    if (!is_named) {
        bin->name.clear();
        bin->tag.clear();
    }
}

} // namespace

void mem_bins_open(std::string const &name, std::string const &tag)
{
    MEM_BOUNDARY const boundary = take_boundary();
    push(name, tag, boundary.now_bytes);
    add_row_if_recorded("open", boundary);
}

MEM_BIN_FIGURES mem_bins_close()
{
    MEM_BOUNDARY const boundary = take_boundary();
    OpenBin const *const bin = innermost_bin();
    MEM_BIN_FIGURES figures{boundary.now_bytes, boundary.now_bytes, boundary.now_bytes};
    if (bin != nullptr) {
        figures = {bin->open_bytes, boundary.now_bytes, bin->peak_bytes};
        add_row_if_recorded("close", boundary);
        if (mem_switches_has(MEM_TRACKING_STATISTICS))
            record([&] { mem_statistics_add(path_of_innermost(), outermost_tag(), figures); });
    }
    state().count -= state().count != 0 ? 1 : 0;
    raise_innermost(figures.peak_bytes);
    return figures;
}

void mem_bins_flush_peak()
{
    std::int64_t const peak_bytes = take_boundary().peak_bytes;
    state().flushed_peak_bytes = peak_bytes;
}

void mem_bins_set_label(std::string const &label)
{
    if (record([&] { state().label = label; }) && mem_switches_has(MEM_TRACKING_TIMELINE))
        add_row_if_recorded("label", take_boundary());
}

void mem_bins_disable_tag_labels()
{
    state().has_tag_labels = false;
}

void mem_bins_start_timeline()
{
    std::size_t bytes = 0;
    if (!mem_count_is_linked())
        mem_os_working_set(&bytes);
    std::int64_t const now = mem_count_is_linked() ? mem_count_total() : static_cast<std::int64_t>(bytes);
    record([&] { mem_timeline_add({"start", now, now, {}, {}}, mem_switches_has(MEM_TRACKING_SOURCES)); });
}
