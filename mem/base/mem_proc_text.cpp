#include "mem/base/mem_proc_text.h"

#include "sys/sys_text.h"

#include <limits>

namespace {

bool take_prefix(std::string_view &text, std::string_view prefix)
{
    if (text.substr(0, prefix.size()) != prefix)
        return false;
    text.remove_prefix(prefix.size());
    return true;
}

// The value of a line, after its key: "\t    6240 kB".
bool parse_kib(std::string_view text, std::uint64_t *bytes)
{
    std::uint64_t kib = 0;
    sys_skip_blanks(text);
    if (!sys_take_number(text, kib) || text != " kB" || kib > std::numeric_limits<std::uint64_t>::max() / 1024)
        return false;
    *bytes = kib * 1024;
    return true;
}

} // namespace

bool mem_proc_statm_resident_pages(std::string_view text, std::uint64_t *pages)
{
    constexpr int FIELDS = 7; // size resident shared text lib data dt
    constexpr int RESIDENT = 1;
    std::uint64_t values[FIELDS] = {};
    for (int i = 0; i < FIELDS; ++i) {
        if (!sys_take_number(text, values[i]) || !take_prefix(text, i + 1 < FIELDS ? " " : "\n"))
            return false;
    }
    if (!text.empty())
        return false;
    *pages = values[RESIDENT];
    return true;
}

bool mem_proc_status_bytes(std::string_view text, std::string_view key, std::uint64_t *bytes)
{
    std::string_view value;
    return sys_find_line(sys_whole_lines(text), key, value) && parse_kib(value, bytes);
}
