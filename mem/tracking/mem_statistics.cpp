#include "mem/tracking/mem_statistics.h"

#include "mem/tracking/mem_locks.h"
#include "mem/tracking/mem_table.h"

#include <algorithm>
#include <limits>
#include <map>
#include <tuple>
#include <vector>

namespace {

struct BinTotals
{
    std::int64_t count = 0;
    std::int64_t growth_bytes = 0;
    std::int64_t rise_bytes = 0;
    std::int64_t peak_bytes = std::numeric_limits<std::int64_t>::min();
};
using TotalsByName = std::map<std::string, BinTotals>;

struct Statistics
{
    TotalsByName bins;
    TotalsByName tags;
};

// Written under the lock of the bins. The exit keeps it, since bins may close until the end.
Statistics &statistics()
{
    static Statistics &state = *new Statistics;
    return state;
}

void add(BinTotals *sum, MEM_BIN_FIGURES const &figures)
{
    ++sum->count;
    sum->growth_bytes += figures.close_bytes - figures.open_bytes;
    sum->rise_bytes = std::max(sum->rise_bytes, figures.peak_bytes - figures.open_bytes);
    sum->peak_bytes = std::max(sum->peak_bytes, figures.peak_bytes);
}

bool has_more(TotalsByName::value_type const &a, TotalsByName::value_type const &b)
{
    return std::tie(a.second.rise_bytes, a.second.peak_bytes, b.first) >
           std::tie(b.second.rise_bytes, b.second.peak_bytes, a.first);
}

std::string format_table(std::string const &heading, TotalsByName const &sums)
{
    if (sums.empty())
        return {};
    std::string text;
    for (char const *const column : {"count", "rise bytes", "peak bytes", "growth bytes"})
        text += mem_table_heading(column);
    text += heading + '\n';
    std::vector<std::pair<std::string, BinTotals>> order(sums.begin(), sums.end());
    std::sort(order.begin(), order.end(), [](auto const &a, auto const &b) { return has_more(a, b); });
    for (auto const &[name, sum] : order) {
        // A total below 0 is shown as 0.
        std::int64_t const peak_bytes = std::max<std::int64_t>(sum.peak_bytes, 0);
        for (std::int64_t const figure : {sum.count, sum.rise_bytes, peak_bytes, sum.growth_bytes})
            text += mem_table_number(figure);
        text += mem_table_text(name) + '\n';
    }
    return text;
}

} // namespace

void mem_statistics_add(std::string const &path, std::string const &tag, MEM_BIN_FIGURES const &figures)
{
    MEM_LOCK_SCOPE const lock(mem_bins_lock);
    add(&statistics().bins[path], figures);
    if (!tag.empty())
        add(&statistics().tags[tag], figures);
}

void mem_statistics_reset()
{
    MEM_LOCK_SCOPE const lock(mem_bins_lock);
    statistics() = Statistics();
}

std::string mem_statistics_table_by_bin()
{
    MEM_LOCK_SCOPE const lock(mem_bins_lock);
    return format_table("bin", statistics().bins);
}

std::string mem_statistics_table_by_tag()
{
    MEM_LOCK_SCOPE const lock(mem_bins_lock);
    return format_table("tag", statistics().tags);
}
