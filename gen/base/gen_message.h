// Messages of the library to the memory sibling's channels. The arguments travel in a run of 8-byte slots: integers
// sign- or zero-extended, doubles as they are, pointers as they are.
#ifndef GEN_MESSAGE_H
#define GEN_MESSAGE_H

#include "mem_sys.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

inline std::uint64_t gen_argument_slot(char const *text)
{
    return reinterpret_cast<std::uintptr_t>(text);
}
inline std::uint64_t gen_argument_slot(double value)
{
    std::uint64_t slot;
    std::memcpy(&slot, &value, sizeof slot);
    return slot;
}
template <typename INTEGER>
std::enable_if_t<std::is_integral_v<INTEGER>, std::uint64_t> gen_argument_slot(INTEGER value)
{
    if constexpr (std::is_signed_v<INTEGER>)
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
    else
        return value;
}
inline std::uint64_t gen_argument_slot(std::string const &text)
{
    return gen_argument_slot(text.c_str());
}

/// Arguments of a format, packed; lives as long as the call that reads them.
template <typename... ARGUMENTS>
class GEN_ARGUMENT_SLOTS
{
public:
    explicit GEN_ARGUMENT_SLOTS(ARGUMENTS const &...arguments) : m_slots{gen_argument_slot(arguments)..., 0} {}
    char *cursor() { return reinterpret_cast<char *>(m_slots); }

private:
    std::uint64_t m_slots[sizeof...(ARGUMENTS) + 1];
};

/// A debug message of the library, under the module "GEN".
template <typename... ARGUMENTS>
void gen_say(char const *format, ARGUMENTS const &...arguments)
{
    mem_msg_local_vdebug("GEN", format, GEN_ARGUMENT_SLOTS<ARGUMENTS...>(arguments...).cursor());
}

#endif
