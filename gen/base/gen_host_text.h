// What a system that tells of itself in small text files says in them. Each function returns false, and leaves its
// output alone, if the text doesn't say it.
#ifndef GEN_HOST_TEXT_H
#define GEN_HOST_TEXT_H

#include <cstdint>
#include <string>
#include <string_view>

/// In bytes.
struct GEN_HOST_MEMORY
{
    std::uint64_t m_physical = 0;
    std::uint64_t m_total = 0;     ///< memory and swap space
    std::uint64_t m_available = 0; ///< of m_total
};

struct GEN_HOST_DISTRIBUTION
{
    std::string m_name;
    std::string m_version;
};

/// Lines "MemTotal:  24576000 kB"; MemTotal and MemAvailable are needed, the two of the swap space are 0 if missing.
bool gen_read_meminfo(std::string_view text, GEN_HOST_MEMORY &memory);

/// Lines NAME="Debian GNU/Linux" and VERSION_ID=12, with or without quotes; NAME is needed.
bool gen_read_os_release(std::string_view text, GEN_HOST_DISTRIBUTION &distribution);

#endif
