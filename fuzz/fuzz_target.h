// What the fuzz targets share.
#ifndef FUZZ_TARGET_H
#define FUZZ_TARGET_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

/// Ends the process as a finding, unless the condition holds.
inline void require(bool condition)
{
    if (!condition)
        std::abort();
}

/// The parts of an input, which are separated by a character. The last part has everything that is left; parts that
/// are missing are empty.
inline std::vector<std::string> split_input(std::uint8_t const *data, std::size_t size, char separator,
                                            std::size_t count)
{
    std::vector<std::string> parts;
    std::uint8_t const *const end = data + size;
    while (parts.size() + 1 < count) {
        std::uint8_t const *const border = std::find(data, end, static_cast<std::uint8_t>(separator));
        parts.emplace_back(data, border);
        data = border == end ? end : border + 1;
    }
    parts.emplace_back(data, end);
    return parts;
}

#endif
