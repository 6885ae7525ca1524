// Arguments of a format, packed into a run of 8-byte slots: integers are sign- or zero-extended, doubles and pointers
// are stored as they are.
//
//     GEN_ARGUMENT_SLOTS slots("top", 7);
//     mem_msg_local_vdebug("GEN", "%s has %d pins", slots.cursor());
#ifndef GEN_ARGUMENT_SLOTS_H
#define GEN_ARGUMENT_SLOTS_H

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
template <typename Integer>
std::enable_if_t<std::is_integral_v<Integer>, std::uint64_t> gen_argument_slot(Integer value)
{
    if constexpr (std::is_signed_v<Integer>)
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
    else
        return value;
}
inline std::uint64_t gen_argument_slot(std::string const &text)
{
    return gen_argument_slot(text.c_str());
}

/// The packed arguments of one call. It holds pointers to texts, which must outlive it.
template <typename... Arguments>
class GEN_ARGUMENT_SLOTS
{
public:
    explicit GEN_ARGUMENT_SLOTS(Arguments const &...arguments) : m_slots{gen_argument_slot(arguments)..., 0} {}
    char *cursor() { return reinterpret_cast<char *>(m_slots); }

private:
    std::uint64_t m_slots[sizeof...(Arguments) + 1];
};

#endif
