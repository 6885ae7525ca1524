// A run of 8-byte argument slots, as the functions with an argument cursor read it.
#ifndef TESTS_SUPPORT_ARGUMENT_SLOTS_H
#define TESTS_SUPPORT_ARGUMENT_SLOTS_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <vector>

class ArgumentSlots
{
public:
    /// One slot for each argument: whole numbers extended to 64 bits by their own sign, floating-point ones as double,
    /// pointers as they are. What pointers point at stays the caller's.
    template <typename... Values>
    explicit ArgumentSlots(Values... values)
    {
        (add(values), ...);
    }

    template <typename Value>
    void add(Value value)
    {
        if constexpr (std::is_floating_point_v<Value>)
            add_bits(static_cast<double>(value));
        else if constexpr (std::is_pointer_v<Value> || std::is_null_pointer_v<Value>)
            add_bits(static_cast<void const *>(value));
        else
            m_slots.push_back(static_cast<std::uint64_t>(value));
    }

    /// The first slot. Valid until the next add().
    char *begin() { return reinterpret_cast<char *>(m_slots.data()); }

    /// How many slots a cursor has passed.
    std::ptrdiff_t passed(char const *cursor) { return (cursor - begin()) / 8; }

private:
    template <typename Value>
    void add_bits(Value value)
    {
        static_assert(sizeof value == 8, "a slot has 8 bytes");
        std::uint64_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        m_slots.push_back(bits);
    }

    std::vector<std::uint64_t> m_slots;
};

#endif
