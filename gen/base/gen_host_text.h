// Facts of the host in the text files in which the system describes itself. Each function returns false, and leaves its
// output alone, if the text doesn't contain the fact.
#ifndef GEN_HOST_TEXT_H
#define GEN_HOST_TEXT_H

#include <cstdint>
#include <string>
#include <string_view>

/// Sizes in bytes.
struct GEN_HOST_MEMORY
{
    std::uint64_t m_physical = 0;
    std::uint64_t m_total = 0;     ///< memory and swap space
    std::uint64_t m_available = 0; ///< the part of m_total that is available
};

struct GEN_HOST_DISTRIBUTION
{
    std::string m_name;
    std::string m_version;
};

/// Reads lines of the form "MemTotal:  24576000 kB". MemTotal and MemAvailable must be there; SwapTotal and SwapFree
/// are 0 if they are missing.
bool gen_read_meminfo(std::string_view text, GEN_HOST_MEMORY &memory);

/// Reads the lines NAME="Debian GNU/Linux" and VERSION_ID=12, with or without quotes. NAME must be there; without
/// VERSION_ID the version is empty.
bool gen_read_os_release(std::string_view text, GEN_HOST_DISTRIBUTION &distribution);

#endif
