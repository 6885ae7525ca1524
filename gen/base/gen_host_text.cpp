#include "gen/base/gen_host_text.h"

#include <algorithm>
#include <charconv>

namespace {

// What stands behind `key` at the start of a line, to the line's end.
bool find_line(std::string_view text, std::string_view key, std::string_view &rest)
{
    while (!text.empty()) {
        std::string_view const line = text.substr(0, text.find('\n'));
        if (line.substr(0, key.size()) == key) {
            rest = line.substr(key.size());
            return true;
        }
        text.remove_prefix(line.size() == text.size() ? line.size() : line.size() + 1);
    }
    return false;
}

bool read_kib(std::string_view text, std::string_view key, std::uint64_t &bytes)
{
    std::string_view value;
    if (!find_line(text, key, value))
        return false;
    value.remove_prefix(std::min(value.find_first_not_of(" \t"), value.size()));
    std::uint64_t kib;
    if (std::from_chars(value.data(), value.data() + value.size(), kib).ec != std::errc())
        return false;
    bytes = kib * 1024;
    return true;
}

// A value as a shell reads a simple one: quotes are no part of it, a backslash protects what follows it.
std::string shell_value(std::string_view text)
{
    std::string value;
    char quote = '\0';
    for (std::size_t i = 0; i < text.size(); ++i) {
        char const c = text[i];
        if (c == '\\' && quote != '\'' && i + 1 < text.size())
            value += text[++i];
        else if (quote == '\0' && (c == '"' || c == '\''))
            quote = c;
        else if (quote != '\0' && c == quote)
            quote = '\0';
        else
            value += c;
    }
    return value;
}

} // namespace

bool gen_read_meminfo(std::string_view text, GEN_HOST_MEMORY &memory)
{
    std::uint64_t total;
    std::uint64_t available;
    if (!read_kib(text, "MemTotal:", total) || !read_kib(text, "MemAvailable:", available))
        return false;
    std::uint64_t swap_total = 0;
    std::uint64_t swap_free = 0;
    read_kib(text, "SwapTotal:", swap_total);
    read_kib(text, "SwapFree:", swap_free);
    memory = {total, total + swap_total, available + swap_free};
    return true;
}

bool gen_read_os_release(std::string_view text, GEN_HOST_DISTRIBUTION &distribution)
{
    std::string_view name;
    if (!find_line(text, "NAME=", name))
        return false;
    std::string_view version;
    find_line(text, "VERSION_ID=", version);
    distribution = {shell_value(name), shell_value(version)};
    return true;
}
