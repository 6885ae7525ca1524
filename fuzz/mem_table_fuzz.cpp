// The tables of the memory tracking. The input is a list of names, one for each line: bins are opened with them, tags
// and labels are made of them, and each table must have its form whatever the names are.
#include "mem_sys.h"

#include "fuzz_target.h"

#include <set>
#include <sstream>

namespace {

std::vector<std::string> lines_of(std::string const &text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// Each line of a table has as many tabs as its heading, and no other control character.
std::size_t check_table(std::ostringstream const &out)
{
    std::string const text = out.str();
    require(!text.empty() && text.back() == '\n');
    std::vector<std::string> const lines = lines_of(text);
    std::ptrdiff_t const tabs = std::count(lines[0].begin(), lines[0].end(), '\t');
    for (std::string const &line : lines) {
        require(std::count(line.begin(), line.end(), '\t') == tabs);
        require(std::none_of(line.begin(), line.end(),
                             [](char c) { return c != '\t' && (static_cast<unsigned char>(c) < ' ' || c == 127); }));
    }
    return lines.size() - 1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    std::vector<std::string> const names = lines_of(std::string(data, data + size));
    if (names.empty() || names.size() > 200)
        return 0;
    mem_reset_tracking_entries();
    mem_enable_tracking(static_cast<MEM_TRACKING_GRANULARITY>(MEM_TRACKING_STATISTICS | MEM_TRACKING_TIMELINE));
    std::set<std::string> tags;
    for (std::string const &name : names) {
        mem_set_timeline_label(name);
        mem_open_profile_bin(name, name);
        std::size_t open = 0;
        std::size_t close = 0;
        std::size_t peak = 0;
        mem_close_profile_bin(name, &open, &close, &peak);
        require(peak >= open && peak >= close);
        if (!name.empty())
            tags.insert(name);
    }
    std::ostringstream by_bin;
    std::ostringstream by_tag;
    std::ostringstream timeline;
    std::ostringstream details;
    require(mem_dump_tbb_profile_bin_stats_tracking(by_bin));
    require(check_table(by_bin) == std::set<std::string>(names.begin(), names.end()).size());
    require(mem_dump_tbb_profile_bin_tag_stats_tracking(by_tag) == !tags.empty());
    if (!tags.empty())
        require(check_table(by_tag) == tags.size());
    require(mem_dump_tbb_module_tracking(timeline, details) && details.str().empty());
    require(check_table(timeline) >= names.size());
    return 0;
}
