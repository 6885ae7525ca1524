#include "gen/base/gen_machine_text.h"

#include "sys/sys_text.h"

#include <algorithm>

namespace {

constexpr unsigned MASK_BITS = 64;

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
        if (!sys_take_number(text, first))
            return false;
        unsigned last = first;
        if (take(text, '-') && !sys_take_number(text, last))
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
    if (!sys_take_number(text, khz))
        return false;
    mhz = static_cast<int>(khz / 1000);
    return true;
}

bool gen_read_processor_frequency(std::string_view text, int &mhz)
{
    std::string_view value;
    if (!sys_find_line(text, "cpu MHz", value))
        return false;
    value.remove_prefix(std::min(value.find_first_not_of(" \t:"), value.size()));
    unsigned number;
    if (!sys_take_number(value, number))
        return false;
    mhz = static_cast<int>(number);
    return true;
}
