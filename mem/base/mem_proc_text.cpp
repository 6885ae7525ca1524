#include "mem/base/mem_proc_text.h"

#include <charconv>
#include <limits>

namespace {

// Removes a decimal number from the start of `text`.
bool take_number(std::string_view &text, std::uint64_t *number)
{
    std::from_chars_result const result = std::from_chars(text.data(), text.data() + text.size(), *number);
    if (result.ec != std::errc())
        return false;
    text.remove_prefix(static_cast<std::size_t>(result.ptr - text.data()));
    return true;
}

bool take_prefix(std::string_view &text, std::string_view prefix)
{
    if (text.substr(0, prefix.size()) != prefix)
        return false;
    text.remove_prefix(prefix.size());
    return true;
}

void skip_blanks(std::string_view &text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
}

// The value of a field, after the colon: "\t    6240 kB".
bool parse_kib(std::string_view text, std::uint64_t *bytes)
{
    std::uint64_t kib = 0;
    skip_blanks(text);
    if (!take_number(text, &kib) || text != " kB" || kib > std::numeric_limits<std::uint64_t>::max() / 1024)
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
        if (!take_number(text, &values[i]) || !take_prefix(text, i + 1 < FIELDS ? " " : "\n"))
            return false;
    }
    if (!text.empty())
        return false;
    *pages = values[RESIDENT];
    return true;
}

bool mem_proc_status_bytes(std::string_view text, std::string_view field, std::uint64_t *bytes)
{
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        std::string_view line = text.substr(0, end);
        if (take_prefix(line, field) && take_prefix(line, ":"))
            return parse_kib(line, bytes);
        text.remove_prefix(end + 1);
    }
    return false;
}
