#include "gen_string_sys.h"

#include "gen/base/gen_assert.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

namespace {

struct Substitution
{
    char from;
    char to;
};

// The letters that replace characters which an identifier can't contain.
constexpr Substitution SUBSTITUTIONS[] = {
    {' ', '_'}, {'!', 'E'}, {'#', 'F'}, {'$', 'R'},  {'%', 'C'}, {'&', 'K'}, {'\'', 'T'}, {'+', 'M'},
    {'.', 'L'}, {'/', 'I'}, {':', 'U'}, {'<', 'A'},  {'=', 'D'}, {'(', 'Q'}, {')', 'P'},  {'-', 'J'},
    {'>', 'B'}, {'?', 'G'}, {'[', 'O'}, {'\\', 'H'}, {']', 'N'}, {'|', 'S'},
};

// For each byte, the byte that replaces it in a name that is hashed.
constexpr std::array<unsigned char, 256> make_name_bytes()
{
    std::array<unsigned char, 256> bytes{};
    for (std::size_t byte = 0; byte < bytes.size(); ++byte)
        bytes[byte] = static_cast<unsigned char>(byte);
    for (Substitution const &substitution : SUBSTITUTIONS)
        bytes[static_cast<unsigned char>(substitution.from)] = static_cast<unsigned char>(substitution.to);
    return bytes;
}
constexpr std::array<unsigned char, 256> NAME_BYTES = make_name_bytes();

// The library's own polynomial, lowest bit first.
constexpr std::uint32_t HASH_POLYNOMIAL = 0x48728408;

// For each low byte, the result of eight steps of the hash.
constexpr std::array<std::uint32_t, 256> make_hash_steps()
{
    std::array<std::uint32_t, 256> steps{};
    for (std::uint32_t byte = 0; byte < steps.size(); ++byte) {
        std::uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit)
            value = value >> 1 ^ ((value & 1) != 0 ? HASH_POLYNOMIAL : 0);
        steps[byte] = value;
    }
    return steps;
}
constexpr std::array<std::uint32_t, 256> HASH_STEPS = make_hash_steps();

// The largest prime below 2^k, for k from 4 to 32.
constexpr std::uint64_t HASH_SIZES[] = {
    13,       31,       61,       127,       251,       509,       1021,       2039,       4093,       8191,
    16381,    32749,    65521,    131071,    262139,    524287,    1048573,    2097143,    4194301,    8388593,
    16777213, 33554393, 67108859, 134217689, 268435399, 536870909, 1073741789, 2147483647, 4294967291,
};

} // namespace

std::uint32_t gen_crc_string_to_dword(char *name)
{
    std::size_t length = std::strlen(name);
    while (length > 0 && name[length - 1] == ' ')
        --length;
    name[length] = '\0';
    if (length == 0)
        return 0;
    std::uint32_t value = 0xffffffff;
    for (char *c = name; *c != '\0'; ++c) {
        unsigned char const byte = NAME_BYTES[static_cast<unsigned char>(*c)];
        *c = static_cast<char>(byte);
        value = value >> 8 ^ HASH_STEPS[(value ^ byte) & 0xff];
    }
    return value;
}

std::uint64_t gen_hash_next_size(std::uint64_t n)
{
    std::uint64_t const *const rval = std::lower_bound(std::begin(HASH_SIZES), std::end(HASH_SIZES), n);
    GEN_ASSERT(rval != std::end(HASH_SIZES), "rval != 0");
    return *rval;
}
