#include "gen/base/gen_machine_text.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr unsigned MASK_BITS = 64;

// Takes a number off the front of a text.
bool take_number(std::string_view &text, unsigned &number)
{
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc())
        return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool take(std::string_view &text, char character)
{
    if (text.empty() || text.front() != character)
        return false;
    text.remove_prefix(1);
    return true;
}

} // namespace

bool gen_read_processor_list(std::string_view text, std::uint64_t &mask)
{
    std::uint64_t listed = 0;
    do {
        unsigned first;
        if (!take_number(text, first))
            return false;
        unsigned last = first;
        if (take(text, '-') && !take_number(text, last))
            return false;
        for (unsigned i = first; i <= last && i < MASK_BITS; ++i)
            listed |= std::uint64_t{1} << i;
    } while (take(text, ','));
    mask = listed;
    return true;
}

bool gen_read_base_frequency(std::string_view text, int &mhz)
{
    unsigned khz;
    if (!take_number(text, khz))
        return false;
    mhz = static_cast<int>(khz / 1000);
    return true;
}

bool gen_read_processor_frequency(std::string_view text, int &mhz)
{
    constexpr std::string_view NAME = "cpu MHz";
    std::size_t const name = text.find(NAME);
    if (name == std::string_view::npos)
        return false;
    text.remove_prefix(name + NAME.size());
    text.remove_prefix(std::min(text.find_first_not_of(" \t:"), text.size()));
    unsigned number;
    if (!take_number(text, number))
        return false;
    mhz = static_cast<int>(number);
    return true;
}
