#include "mem/tracking/mem_timeline.h"

#include "mem/tracking/mem_locks.h"
#include "mem/tracking/mem_sites.h"
#include "mem/tracking/mem_table.h"
#include "mem_sys.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

struct TimedRow
{
    Clock::time_point time;
    MEM_TIMELINE_ROW row;
    std::vector<std::uint64_t> modules; // bytes of each module; empty if they were not recorded
};

// Written under the lock of the bins. The exit keeps it, since bins may close until the end.
std::vector<TimedRow> &rows()
{
    static std::vector<TimedRow> &state = *new std::vector<TimedRow>;
    return state;
}

// The seconds since the first row.
std::string seconds(TimedRow const &row, TimedRow const &first)
{
    std::string text;
    stl_sprintf(&text, "%.6f", std::chrono::duration<double>(row.time - first.time).count());
    return mem_table_heading(text);
}

std::string names(TimedRow const &row)
{
    return mem_table_text(row.row.label) + '\t' + mem_table_text(row.row.bin) + '\n';
}

std::string table_of_rows(std::vector<TimedRow> const &all)
{
    std::string text = mem_table_heading("seconds") + mem_table_heading("bytes") + mem_table_heading("peak bytes") +
                       "event\tlabel\tbin\n";
    for (TimedRow const &row : all)
        text += seconds(row, all.front()) + mem_table_number(std::max<std::int64_t>(row.row.now_bytes, 0)) +
                mem_table_number(std::max<std::int64_t>(row.row.peak_bytes, 0)) + row.row.event + '\t' + names(row);
    return text;
}

// The modules that have bytes at any row, the one with the most first.
std::vector<std::size_t> order_of_modules(std::vector<TimedRow> const &all)
{
    std::vector<std::pair<std::uint64_t, std::size_t>> largest;
    for (TimedRow const &row : all) {
        while (largest.size() < row.modules.size())
            largest.emplace_back(0, largest.size());
        for (std::size_t i = 0; i < row.modules.size(); ++i)
            largest[i].first = std::max(largest[i].first, row.modules[i]);
    }
    std::stable_sort(largest.begin(), largest.end(), [](auto const &a, auto const &b) { return a.first > b.first; });
    std::vector<std::size_t> order;
    for (auto const &[bytes, module] : largest)
        if (bytes != 0)
            order.push_back(module);
    return order;
}

std::string module_bytes(TimedRow const &row, std::size_t module)
{
    if (row.modules.empty())
        return mem_table_heading("-");
    return mem_table_number(module < row.modules.size() ? static_cast<std::int64_t>(row.modules[module]) : 0);
}

std::string table_of_modules(std::vector<TimedRow> const &all, std::vector<std::string> const &module_names)
{
    std::vector<std::size_t> const order = order_of_modules(all);
    if (order.empty())
        return {};
    std::string text = mem_table_heading("seconds");
    for (std::size_t const module : order)
        text += mem_table_heading(module_names[module].empty() ? "(none)" : mem_table_text(module_names[module]));
    text += "event\tlabel\tbin\n";
    for (TimedRow const &row : all) {
        text += seconds(row, all.front());
        for (std::size_t const module : order)
            text += module_bytes(row, module);
        text += std::string(row.row.event) + '\t' + names(row);
    }
    return text;
}

} // namespace

void mem_timeline_add(MEM_TIMELINE_ROW row, bool with_modules)
{
    std::vector<std::uint64_t> modules;
    if (with_modules)
        modules = mem_sites_module_bytes();
    MEM_LOCK_SCOPE const lock(mem_bins_lock);
    rows().push_back({Clock::now(), std::move(row), std::move(modules)});
}

void mem_timeline_reset()
{
    MEM_LOCK_SCOPE const lock(mem_bins_lock);
    rows() = std::vector<TimedRow>();
}

MEM_TIMELINE_TABLES mem_timeline_tables()
{
    MEM_LOCK_SCOPE const lock(mem_bins_lock);
    if (rows().empty())
        return {};
    return {table_of_rows(rows()), table_of_modules(rows(), mem_sites_modules())};
}
