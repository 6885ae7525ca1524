#include "sys/sys_path_text.h"

namespace {

constexpr std::string_view SEPARATORS = "/\\";

} // namespace

// The byte before a run of bytes that can be first ones ends a character, so the run begins with a first one, and the
// bytes from there on are pairs. The byte after the run is a second one if it completes a pair.
bool sys_is_trail_byte(std::string_view text, std::size_t at)
{
    std::size_t start = at;
    while (start != 0 && sys_is_lead_byte(text[start - 1]))
        --start;
    return (at - start) % 2 != 0;
}

std::size_t sys_find_separator(std::string_view text, std::size_t start)
{
    std::size_t at = text.find_first_of(SEPARATORS, start);
    while (at != std::string_view::npos && !sys_is_separator(text, at))
        at = text.find_first_of(SEPARATORS, at + 1);
    return at;
}

std::size_t sys_find_last_separator(std::string_view text)
{
    std::size_t at = text.find_last_of(SEPARATORS);
    while (at != std::string_view::npos && !sys_is_separator(text, at))
        at = text.find_last_of(SEPARATORS, at - 1); // not at 0: a first byte lies before a second one
    return at;
}

void sys_use_forward_slashes(std::string &text)
{
    for (std::size_t at = text.find('\\'); at != std::string::npos; at = text.find('\\', at + 1))
        if (sys_is_separator(text, at))
            text[at] = '/';
}

void sys_lower_letters(std::string &text)
{
    for (std::size_t at = 0; at < text.size(); ++at)
        if (text[at] >= 'A' && text[at] <= 'Z' && !sys_is_trail_byte(text, at))
            text[at] = static_cast<char>(text[at] - 'A' + 'a');
}
