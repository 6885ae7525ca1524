// What the compiler knows of the processor: its bit operations and its byte order.
#ifndef GEN_OS_COMPILER_H
#define GEN_OS_COMPILER_H

#include <cstddef>
#include <cstdint>

/// The number of bits that a value takes, without leading zeros; 1 for 0.
inline std::size_t gen_os_bit_count(std::uint64_t value)
{
    return 64 - static_cast<std::size_t>(__builtin_clzll(value | 1));
}

/// The index of the first byte, in the order of memory, that is not 0; `word` is not 0.
inline std::size_t gen_os_first_byte_set(std::uint64_t word)
{
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    return static_cast<std::size_t>(__builtin_ctzll(word)) / 8;
#else
    return static_cast<std::size_t>(__builtin_clzll(word)) / 8;
#endif
}

#endif
