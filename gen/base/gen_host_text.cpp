#include "gen/base/gen_host_text.h"

#include "sys/sys_text.h"

namespace {

// Reads the value of a line such as "MemTotal:  24576000 kB".
bool read_kib(std::string_view text, std::string_view key, std::uint64_t &bytes)
{
    std::uint64_t kib;
    if (!sys_find_number(text, key, kib))
        return false;
    bytes = kib * 1024;
    return true;
}

// The value of a shell assignment: quotes are removed, and a backslash makes the next character an ordinary one.
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
    if (!sys_find_line(text, "NAME=", name))
        return false;
    std::string_view version;
    sys_find_line(text, "VERSION_ID=", version);
    distribution = {shell_value(name), shell_value(version)};
    return true;
}
