#include "mem/tracking/mem_sites_table.h"

#include "err_sys.h"
#include "mem/tracking/mem_sites.h"
#include "mem/tracking/mem_table.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

namespace {

using Rows = std::map<std::string, MEM_SITE_FIGURES>;

void add(MEM_SITE_FIGURES *sum, MEM_SITE_FIGURES const &figures)
{
    sum->peak_bytes += figures.peak_bytes;
    sum->live_bytes += figures.live_bytes;
    sum->live_blocks += figures.live_blocks;
    sum->total_bytes += figures.total_bytes;
    sum->total_blocks += figures.total_blocks;
}

std::string row(std::string const &place, MEM_SITE_FIGURES const &figures)
{
    std::string text;
    for (std::uint64_t const figure :
         {figures.peak_bytes, figures.live_bytes, figures.live_blocks, figures.total_bytes, figures.total_blocks})
        text += mem_table_number(static_cast<std::int64_t>(figure));
    return text + mem_table_text(place) + '\n';
}

bool has_more(Rows::value_type const *a, Rows::value_type const *b)
{
    MEM_SITE_FIGURES const &f = a->second;
    MEM_SITE_FIGURES const &g = b->second;
    return std::tie(f.peak_bytes, f.live_bytes, f.total_bytes, b->first) >
           std::tie(g.peak_bytes, g.live_bytes, g.total_bytes, a->first);
}

std::string format_table(std::string const &heading, Rows const &rows, std::uint64_t lost_blocks)
{
    if (rows.empty() && lost_blocks == 0)
        return {};
    std::string text;
    for (char const *const column : {"peak bytes", "live bytes", "live blocks", "total bytes", "total blocks"})
        text += mem_table_heading(column);
    text += heading + '\n';

    MEM_SITE_FIGURES sum{};
    std::vector<Rows::value_type const *> order;
    for (Rows::value_type const &entry : rows) {
        add(&sum, entry.second);
        order.push_back(&entry);
    }
    std::sort(order.begin(), order.end(), has_more);
    text += row("total", sum);
    for (Rows::value_type const *const entry : order)
        text += row(entry->first, entry->second);
    if (lost_blocks != 0)
        text += "\nBlocks that could not be recorded for want of memory: " + std::to_string(lost_blocks) + '\n';
    return text;
}

std::string hexadecimal(std::uint64_t value)
{
    std::string digits;
    do
        digits.insert(digits.begin(), "0123456789abcdef"[value % 16]);
    while ((value /= 16) != 0);
    return "0x" + digits;
}

using Places = std::map<std::uintptr_t, ERR_PLACE>;

std::string raw_place(std::uintptr_t return_address, ERR_PLACE const &place)
{
    return place.object.empty() ? hexadecimal(return_address) : place.object + '+' + hexadecimal(place.object_offset);
}

std::string source_place(ERR_LINE const &line, std::uintptr_t return_address, ERR_PLACE const &place)
{
    if (line.file.empty())
        return line.function + " (" + raw_place(return_address, place) + ')';
    return line.function + " at " + line.file + ':' + std::to_string(line.line) + " (" + place.object + ')';
}

// The innermost place outside of the standard library; if there is none, the call of the operator itself.
std::string source_location_of(MEM_CALLS const &calls, Places const &places)
{
    for (std::uintptr_t const address : calls.return_addresses) {
        auto const found = places.find(address);
        if (found == places.end())
            break;
        ERR_PLACE const &place = found->second;
        if (place.lines.empty())
            return raw_place(address, place);
        auto const line = std::find_if_not(place.lines.begin(), place.lines.end(),
                                           [](ERR_LINE const &l) { return l.is_standard_library; });
        if (line != place.lines.end())
            return source_place(*line, address, place);
    }
    std::uintptr_t const first = calls.return_addresses[0];
    ERR_PLACE const &place = places.at(first);
    return source_place(place.lines.front(), first, place);
}

Places describe(std::vector<MEM_SITE> const &sites)
{
    Places places;
    for (MEM_SITE const &site : sites)
        for (std::uintptr_t const address : site.calls.return_addresses)
            if (address != 0)
                places.emplace(address, ERR_PLACE{});
    std::vector<void const *> addresses;
    for (auto const &entry : places)
        addresses.push_back(reinterpret_cast<void const *>(entry.first));
    std::vector<ERR_PLACE> described = err_describe_calls(addresses.data(), addresses.size());
    std::size_t i = 0;
    for (auto &entry : places)
        entry.second = std::move(described[i++]);
    return places;
}

} // namespace

std::string mem_sites_table_by_line()
{
    MEM_SITES const recorded = mem_sites_copy();
    Places const places = describe(recorded.sites);
    Rows rows;
    for (MEM_SITE const &site : recorded.sites)
        add(&rows[source_location_of(site.calls, places)], site.figures);
    return format_table("place", rows, recorded.lost_blocks);
}

std::string mem_sites_table_by_module()
{
    MEM_SITES const recorded = mem_sites_copy();
    std::vector<std::string> const modules = mem_sites_modules();
    Rows rows;
    for (MEM_SITE const &site : recorded.sites) {
        std::string const &module = modules[site.module];
        add(&rows[module.empty() ? "(none)" : module], site.figures);
    }
    return format_table("module", rows, recorded.lost_blocks);
}
