#include "tests/support/gen_os_machine_fake.h"

#include <cstdio>
#include <cstdlib>

namespace {

struct MachineScript
{
    MachineDump machine;
    std::optional<int> mhz;
    std::vector<std::string> calls;
    DumpedLeaves const *leaves = nullptr; // those of the processor where the thread is; null before it was moved
    std::map<std::pair<DumpedLeaves const *, std::uint32_t>, std::size_t> query_counts;
};

// Made at the first use and kept, like the script of gen_os_fake.cpp.
MachineScript &script()
{
    static MachineScript *const the_script = [] {
        auto *const made = new MachineScript;
        made->machine.has_masks = false;
        return made;
    }();
    return *the_script;
}

void record(char const *call, std::uint64_t number)
{
    char text[40];
    std::snprintf(text, sizeof text, "%s %llx", call, static_cast<unsigned long long>(number));
    script().calls.emplace_back(text);
}

} // namespace

void gen_os_machine_fake_play(MachineDump const &machine)
{
    script().machine = machine;
    script().calls.clear();
    script().leaves = nullptr;
    script().query_counts.clear();
}

void gen_os_machine_fake_set_mhz(std::optional<int> mhz)
{
    script().mhz = mhz;
}

std::vector<std::string> &gen_os_machine_fake_calls()
{
    return script().calls;
}

bool gen_os_read_processor_count(int &count)
{
    count = script().machine.online_count;
    return true;
}

bool gen_os_read_affinity(std::uint64_t &process_mask, std::uint64_t &system_mask)
{
    MachineScript &s = script();
    s.calls.emplace_back("masks");
    if (!s.machine.has_masks)
        return false;
    process_mask = s.machine.process_mask;
    system_mask = s.machine.system_mask;
    return true;
}

bool gen_os_move_thread(std::uint32_t processor_bit)
{
    MachineScript &s = script();
    record("move", processor_bit);
    if ((s.machine.process_mask & processor_bit) == 0)
        return false;
    for (auto const &[number, leaves] : s.machine.processors)
        if (std::uint64_t{1} << number == processor_bit)
            s.leaves = &leaves;
    return true;
}

bool gen_os_release_thread(std::uint64_t process_mask)
{
    record("release", process_mask);
    script().leaves = nullptr;
    return process_mask != 0;
}

bool gen_os_cpuid(GEN_CPUID &query)
{
    MachineScript &s = script();
    record("cpuid", query.m_eax);
    if (s.leaves == nullptr || query.m_ecx != 0) {
        std::fprintf(stderr, "cpuid %x, sub-leaf %x: not on a processor of the dump, or not sub-leaf 0\n", query.m_eax,
                     query.m_ecx);
        std::abort();
    }
    auto const found = s.leaves->find(query.m_eax);
    if (found == s.leaves->end()) {
        query = {};
        return true;
    }
    std::size_t &count = s.query_counts[{s.leaves, query.m_eax}];
    std::optional<GEN_CPUID> const &answer = found->second[count++ % found->second.size()];
    if (answer)
        query = *answer;
    return answer.has_value();
}

bool gen_os_read_nominal_mhz(int &mhz)
{
    if (!script().mhz)
        return false;
    mhz = *script().mhz;
    return true;
}
