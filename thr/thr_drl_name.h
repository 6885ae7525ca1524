// Which loaded object a library's name means.
#ifndef THR_DRL_NAME_H
#define THR_DRL_NAME_H

#include <string_view>

/// What stands after the last slash.
inline std::string_view thr_drl_file_name(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

/// Whether text is longer than name and goes on from it with a point and then digits and points.
///
///     "libx.so", "libx.so.1.2" -> true    "libx.so", "libx.so" -> false    "libx.so", "libx.so.old" -> false
inline bool thr_drl_is_version_of(std::string_view name, std::string_view text)
{
    if (text.size() < name.size() + 2 || text.substr(0, name.size()) != name || text[name.size()] != '.')
        return false;
    return text.find_first_not_of("0123456789.", name.size()) == std::string_view::npos;
}

/// Whether the asked name means the object that the loader knows as loaded. A name without a slash is
/// compared with the file name alone.
///
///     asked      loaded                asked            loaded
///     libx.so    /a/libx.so    yes     libx.so          /a/libx.so.1.0    yes
///     libx       /a/libx.so    no      libx.so.1        /a/libx.so.1.0    no
inline bool thr_drl_names(std::string_view asked, std::string_view loaded)
{
    constexpr std::string_view SUFFIX = ".so";
    if (asked.find('/') == std::string_view::npos)
        loaded = thr_drl_file_name(loaded);
    if (asked == loaded)
        return !asked.empty();
    bool const is_plain = asked.size() > SUFFIX.size() && asked.substr(asked.size() - SUFFIX.size()) == SUFFIX;
    return is_plain && thr_drl_is_version_of(asked, loaded);
}

#endif
