#include "mem_sys.h"

#include "mem/tracking/mem_bins.h"
#include "mem/tracking/mem_count.h"
#include "mem/tracking/mem_sites.h"
#include "mem/tracking/mem_sites_table.h"
#include "mem/tracking/mem_statistics.h"
#include "mem/tracking/mem_switches.h"
#include "mem/tracking/mem_table.h"
#include "mem/tracking/mem_timeline.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace {

void start(int bits)
{
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
    if ((bits & MEM_TRACKING_TIMELINE) != 0)
        mem_bins_start_timeline();
}

// The word of the switches. The first call reads the key. If several threads make the first call at once, one of them
// sets the word.
int tracking()
{
    if (mem_switches_word.load(std::memory_order_relaxed) == 0)
        start(mem_switches_start(mem_cfg_get_int_value("mem_tracking", 0)));
    return mem_switches_word.load(std::memory_order_relaxed);
}

std::size_t shown(std::int64_t bytes)
{
    return static_cast<std::size_t>(std::max<std::int64_t>(bytes, 0));
}

// A text of this library, which isn't counted. The memory that a stream takes to hold it is the caller's and is
// counted.
class UncountedText
{
public:
    UncountedText() = default;
    ~UncountedText()
    {
        MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
        std::string().swap(m_text);
    }
    UncountedText(UncountedText const &) = delete;
    UncountedText &operator=(UncountedText const &) = delete;

    template <typename Table>
    void set(Table table)
    {
        MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
        m_text = table();
    }

    std::string const &get() const { return m_text; }

private:
    std::string m_text;
};

template <typename Table>
bool dump(std::ostream &out, Table table)
{
    try {
        UncountedText text;
        text.set(table);
        return !text.get().empty() && mem_table_write(out, text.get());
    } catch (std::exception const &) {
        return false; // no memory, or a stream that throws
    }
}

} // namespace

void mem_enable_tracking(MEM_TRACKING_GRANULARITY granularity)
{
    tracking();
    start(mem_switches_change(/*on=*/granularity, /*off=*/0));
}

void mem_disable_tracking(MEM_TRACKING_GRANULARITY granularity)
{
    tracking();
    mem_switches_change(/*on=*/0, /*off=*/granularity);
}

bool mem_tracking_is_enabled(MEM_TRACKING_GRANULARITY granularity)
{
    return (tracking() & MEM_SWITCHES_GRANULARITIES & granularity) == granularity;
}

bool mem_get_tbb_memory_tracking_enabled()
{
    return (tracking() & MEM_SWITCHES_KEY_NOT_ZERO) != 0;
}

void mem_open_profile_bin(std::string const &name, std::string const &tag)
{
    MEM_SUSPENSION const scope;
    mem_bins_open(name, tag);
}

void mem_close_profile_bin(std::string const & /*tag*/, std::size_t *open_bytes, std::size_t *close_bytes,
                           std::size_t *peak_bytes)
{
    MEM_SUSPENSION const scope;
    MEM_BIN_FIGURES const figures = mem_bins_close();
    *open_bytes = shown(figures.open_bytes);
    *close_bytes = shown(figures.close_bytes);
    *peak_bytes = shown(figures.peak_bytes);
}

void mem_reset_tracking_entries()
{
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
    mem_sites_reset();
    mem_statistics_reset();
    mem_timeline_reset();
}

void mem_tbb_tracking_flush_peak()
{
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
    mem_bins_flush_peak();
    mem_sites_begin_peak();
}

bool mem_dump_tbb_fileline_tracking(std::ostream &out)
{
    return dump(out, mem_sites_table_by_line);
}

bool mem_dump_tbb_subsystem_tracking(std::ostream &out)
{
    return dump(out, mem_sites_table_by_module);
}

bool mem_dump_tbb_profile_bin_stats_tracking(std::ostream &out)
{
    return dump(out, mem_statistics_table_by_bin);
}

bool mem_dump_tbb_profile_bin_tag_stats_tracking(std::ostream &out)
{
    return dump(out, mem_statistics_table_by_tag);
}

bool mem_dump_tbb_module_tracking(std::ostream &timeline, std::ostream &details)
{
    UncountedText modules;
    bool const is_written = dump(timeline, [&modules] {
        MEM_TIMELINE_TABLES tables = mem_timeline_tables();
        modules.set([&tables] { return std::move(tables.modules); });
        return std::move(tables.rows);
    });
    return modules.get().empty() ? is_written : dump(details, [&modules] { return modules.get(); }) && is_written;
}

void mem_set_timeline_label(std::string const &label)
{
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
    mem_bins_set_label(label);
}

void mem_disable_profile_bin_tag_timeline_labels()
{
    MEM_TBB_NO_TRACK_ALLOC_DEALLOC_UNTIL_SCOPE_EXIT const scope;
    mem_bins_disable_tag_labels();
}
