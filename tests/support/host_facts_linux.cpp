#include "tests/support/host_facts.h"

#include <cstdio>
#include <sys/utsname.h>
#include <unistd.h>

namespace {

// The first line that a command of the shell prints.
std::string output_of(char const *command)
{
    std::FILE *const output = popen(command, "r");
    if (output == nullptr)
        return {};
    char line[256] = "";
    char const *const text = std::fgets(line, sizeof line, output);
    pclose(output);
    std::string const first(text == nullptr ? "" : text);
    return first.substr(0, first.find('\n'));
}

} // namespace

std::string host_facts_host_name()
{
    utsname names{};
    uname(&names);
    return names.nodename;
}

std::string host_facts_user_name()
{
    return output_of("id -un");
}

std::string host_facts_distribution_name()
{
    return output_of(". /etc/os-release; echo \"$NAME\"");
}

std::string host_facts_distribution_version()
{
    return output_of(". /etc/os-release; echo \"$VERSION_ID\"");
}

std::uint64_t host_facts_physical_memory()
{
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

std::string host_facts_browser_version()
{
    return {};
}
