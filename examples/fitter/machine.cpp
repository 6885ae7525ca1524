#include "machine.h"

#include "gen_machine_sys.h"
#include "text.h"

#include <cstdint>

namespace fitter {
namespace {

void append(std::string &facts, std::string const &fact)
{
    if (!fact.empty())
        facts += (facts.empty() ? "" : ", ") + fact;
}

std::string counted(int count, char const *what)
{
    return count > 0 ? number(static_cast<std::uint64_t>(count)) + " " + what + (count == 1 ? "" : "s") : "";
}

std::string operating_system()
{
    std::string name;
    std::string version;
    if (!GEN_MACHINE_INFO::get_os_name(&name))
        GEN_MACHINE_INFO::get_platform_name(&name);
    return GEN_MACHINE_INFO::get_os_version(&version) ? name + " " + version : name;
}

} // namespace

std::string machine_facts()
{
    // The results are ignored: after a failed capture a count is 0, and then left out, or the best known value.
    int processors = 0;
    int cores = 0;
    std::uint64_t memory = 0;
    GEN_MACHINE_INFO::get_logical_cpu_count(&processors);
    GEN_MACHINE_INFO::get_core_cpu_count(&cores);
    GEN_MACHINE_INFO::get_physical_ram(&memory);
    std::string const host = gen_get_host_name();

    constexpr std::uint64_t MIB = 1 << 20;
    std::string facts;
    append(facts, counted(processors, "processor"));
    append(facts, counted(cores, "core"));
    append(facts, memory == 0 ? "" : hundredths(memory / MIB * 100 / 1024) + " GiB memory");
    append(facts, operating_system());
    append(facts, host.empty() ? "" : "host " + host);
    return facts;
}

} // namespace fitter
