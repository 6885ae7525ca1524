// Facts of GEN_MACHINE_INFO that take one query to the system.
#include "gen_machine_sys.h"

#include "gen/os/gen_os_host.h"

namespace {

// All 0 if the system gives no figures.
GEN_HOST_MEMORY read_memory()
{
    GEN_HOST_MEMORY memory;
    gen_os_read_memory(memory);
    return memory;
}

// Names of systems that are named by their version. The name is in the first row whose last version is not older than
// the version of the system. So a server after 2012 has the name of a desktop system.
struct SystemName
{
    std::uint32_t m_last_major;
    std::uint32_t m_last_minor;
    char const *m_workstation;
    char const *m_server;
};
constexpr std::uint32_t ANY = 0xffffffff;
constexpr SystemName SYSTEM_NAMES[] = {
    {5, ANY, "Windows XP", "Windows XP"},   {6, 0, "Windows Vista", "Windows Vista"},
    {6, 1, "Windows 7", "Windows 7"},       {6, 2, "Windows 8", "Windows Server 2012"},
    {6, ANY, "Windows 8.1", "Windows 8.1"}, {ANY, ANY, "Windows 10", "Windows 10"},
};

char const *name_of(GEN_OS_VERSION const &version)
{
    SystemName const *row = SYSTEM_NAMES;
    while (version.m_major > row->m_last_major ||
           (version.m_major == row->m_last_major && version.m_minor > row->m_last_minor))
        ++row;
    return version.m_is_workstation ? row->m_workstation : row->m_server;
}

// A number of a version as text. Numbers from 2^31 on appear as negative ones.
std::string version_text(std::uint32_t number)
{
    return std::to_string(static_cast<std::int32_t>(number));
}

// The system by its distribution, or else by its version. False if the system gives neither.
bool read_system(GEN_HOST_DISTRIBUTION &system)
{
    GEN_OS_VERSION version;
    if (gen_os_read_distribution(system))
        return true;
    if (!gen_os_read_version(version))
        return false;
    system = {name_of(version), version_text(version.m_major) + '.' + version_text(version.m_minor)};
    return true;
}

} // namespace

bool GEN_MACHINE_INFO::get_physical_ram(std::uint64_t *bytes)
{
    *bytes = read_memory().m_physical;
    return true;
}

bool GEN_MACHINE_INFO::get_total_ram(std::uint64_t *bytes)
{
    *bytes = read_memory().m_total;
    return true;
}

bool GEN_MACHINE_INFO::get_available_ram(std::uint64_t *bytes)
{
    *bytes = read_memory().m_available;
    return true;
}

bool GEN_MACHINE_INFO::get_total_usage_ram(std::uint64_t *bytes)
{
    GEN_HOST_MEMORY const memory = read_memory();
    *bytes = memory.m_total - memory.m_available;
    return true;
}

bool GEN_MACHINE_INFO::get_virtual_ram(std::uint64_t *bytes)
{
    GEN_HOST_MEMORY const memory = read_memory();
    *bytes = memory.m_total - memory.m_physical;
    return true;
}

bool GEN_MACHINE_INFO::get_os_name(std::string *name)
{
    GEN_HOST_DISTRIBUTION system;
    if (name == nullptr || !read_system(system))
        return false;
    *name = system.m_name;
    return true;
}

bool GEN_MACHINE_INFO::get_os_version(std::string *version)
{
    GEN_HOST_DISTRIBUTION system;
    if (version == nullptr || !read_system(system) || system.m_version.empty())
        return false;
    *version = system.m_version;
    return true;
}

bool GEN_MACHINE_INFO::get_platform_name(std::string *name)
{
    if (name == nullptr)
        return false;
    *name = gen_os_platform_name();
    return true;
}

bool GEN_MACHINE_INFO::get_platform_name_with_arch(std::string *name)
{
    if (!get_platform_name(name))
        return false;
    *name += get_os_64_bit() ? "64" : "32";
    return true;
}

bool GEN_MACHINE_INFO::get_hw_name(std::string *name)
{
    if (name == nullptr)
        return false;
    // The suite runs on 64-bit systems alone, which all have this name.
    *name = "x86_64";
    return true;
}

bool GEN_MACHINE_INFO::get_os_64_bit()
{
    return true;
}
