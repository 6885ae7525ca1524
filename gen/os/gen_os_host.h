// Queries about the host, its user and the system itself. As in gen_os.h, a query without a result returns false and
// leaves its outputs alone.
#ifndef GEN_OS_HOST_H
#define GEN_OS_HOST_H

#include "gen/base/gen_host_text.h"

#include <cstdint>
#include <string>
#include <vector>

/// Memory of the machine.
bool gen_os_read_memory(GEN_HOST_MEMORY &memory);

/// The version of the system, and whether the system is one for workstations. Only on systems that are named by their
/// version.
struct GEN_OS_VERSION
{
    std::uint32_t m_major = 0;
    std::uint32_t m_minor = 0;
    bool m_is_workstation = false;
};
bool gen_os_read_version(GEN_OS_VERSION &version);

/// Name and version of the distribution. Only on systems that are named by their distribution.
bool gen_os_read_distribution(GEN_HOST_DISTRIBUTION &distribution);

/// The name that the suite uses for the platform.
char const *gen_os_platform_name();

bool gen_os_read_host_name(std::string &name);
bool gen_os_read_user_name(std::string &name);

/// Appends the addresses of a host in the order of the system, each in network byte order.
bool gen_os_look_up_host(char const *name, std::vector<std::vector<unsigned char>> &addresses);

/// Version of the browser that comes with the system.
bool gen_os_read_browser_version(std::string &version);

/// The file that shows whether the process runs in a container; null if the system has none.
char const *gen_os_container_file();

#endif
