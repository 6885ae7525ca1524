#include "tests/support/host_facts.h"

#include <cstdlib>

#include <windows.h>

namespace {

std::string variable(char const *name)
{
    char const *const value = std::getenv(name);
    return value == nullptr ? std::string() : value;
}

} // namespace

std::string host_facts_host_name()
{
    char name[256] = "";
    DWORD size = sizeof name;
    GetComputerNameExA(ComputerNamePhysicalDnsHostname, name, &size);
    return name;
}

std::string host_facts_user_name()
{
    return variable("USERNAME");
}

std::string host_facts_distribution_name()
{
    return {};
}

std::string host_facts_distribution_version()
{
    return {};
}

std::uint64_t host_facts_physical_memory()
{
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    GlobalMemoryStatusEx(&status);
    return status.ullTotalPhys;
}

std::string host_facts_browser_version()
{
    char version[30] = "";
    DWORD size = sizeof version;
    RegGetValueA(HKEY_LOCAL_MACHINE, "Software\\Microsoft\\Internet Explorer", "Version", RRF_RT_REG_SZ, nullptr,
                 version, &size);
    return version;
}
