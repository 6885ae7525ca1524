#include "sys/sys_module.h"

std::string_view sys_file_name(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

bool sys_is_version_of(std::string_view name, std::string_view text)
{
    if (text.size() < name.size() + 2 || text.substr(0, name.size()) != name || text[name.size()] != '.')
        return false;
    return text.find_first_not_of("0123456789.", name.size()) == std::string_view::npos;
}

bool sys_library_names(std::string_view asked, std::string_view loaded)
{
    constexpr std::string_view SUFFIX = ".so";
    if (asked.find('/') == std::string_view::npos)
        loaded = sys_file_name(loaded);
    if (asked == loaded)
        return !asked.empty();
    bool const is_plain = asked.size() > SUFFIX.size() && asked.substr(asked.size() - SUFFIX.size()) == SUFFIX;
    return is_plain && sys_is_version_of(asked, loaded);
}
