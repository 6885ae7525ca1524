#include "sys/sys_text.h"

#include <algorithm>

bool sys_find_line(std::string_view text, std::string_view key, std::string_view &rest)
{
    while (!text.empty()) {
        std::string_view const line = text.substr(0, text.find('\n'));
        if (line.substr(0, key.size()) == key) {
            rest = line.substr(key.size());
            return true;
        }
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return false;
}

std::string_view sys_whole_lines(std::string_view text)
{
    return text.substr(0, text.rfind('\n') + 1);
}

void sys_skip_blanks(std::string_view &text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
}

bool sys_find_number(std::string_view text, std::string_view key, std::uint64_t &number)
{
    std::string_view value;
    if (!sys_find_line(text, key, value))
        return false;
    sys_skip_blanks(value);
    return sys_take_number(value, number);
}
