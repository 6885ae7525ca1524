#include "tests/support/host_facts.h"

#include <cstdio>
#include <sys/utsname.h>
#include <unistd.h>

std::string host_facts_host_name()
{
    utsname names{};
    uname(&names);
    return names.nodename;
}

std::string host_facts_user_name()
{
    char name[256] = "";
    std::FILE *const output = popen("id -un", "r");
    if (output == nullptr || std::fscanf(output, "%255s", name) != 1)
        name[0] = '\0';
    if (output != nullptr)
        pclose(output);
    return name;
}

std::uint64_t host_facts_physical_memory()
{
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}
